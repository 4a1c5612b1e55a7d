#include "platform/xml/FaultPoint.h"

#ifdef DLP_FAULTS

#include "platform/xml/CXMLCOMException.h"

namespace XmlFaults {

namespace {
int s_iFailAt = 0;
int s_iCount = 0;
int s_iFindNothingAt = 0;
int s_iLookups = 0;
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

void FindNothingAt(int iLookup) {
    s_iFindNothingAt = iLookup;
    s_iLookups = 0;
}

int GetLookupCount() {
    return s_iLookups;
}

bool FindsNothing() {
    return ++s_iLookups == s_iFindNothingAt;
}

}  // namespace XmlFaults

#endif
