#include "platform/xml/FaultPoint.h"

#ifdef DLP_FAULTS

#include "platform/xml/CXMLCOMException.h"

namespace XmlFaults {

namespace {
int s_iFailAt = 0;
int s_iCount = 0;
}  // namespace

void FailAt(int iOperation) {
    s_iFailAt = iOperation;
    s_iCount = 0;
}

int GetCount() {
    return s_iCount;
}

void Step(const char*) {
    if (++s_iCount == s_iFailAt) {
        throw CXMLException(0, L"injected fault", 0);
    }
}

}  // namespace XmlFaults

#endif
