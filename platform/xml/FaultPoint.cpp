#include "platform/xml/FaultPoint.h"

#ifdef DLP_FAULTS

#include <utility>

#include "platform/xml/CXMLCOMException.h"

namespace XmlFaults {

namespace {
int s_iFailAt = 0;
std::vector<const char*> s_vecOperations;
int s_iFindNothingAt = 0;
int s_iLookups = 0;
int s_iVisits = 0;
}  // namespace

void FailAt(int iOperation) {
    s_iFailAt = iOperation;
    s_vecOperations.clear();
}

int GetCount() {
    return static_cast<int>(s_vecOperations.size());
}

const std::vector<const char*>& GetOperations() {
    return s_vecOperations;
}

void Step(const char* pOperation) {
    s_vecOperations.push_back(pOperation);
    if (GetCount() == s_iFailAt) {
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

int TakeVisits() {
    return std::exchange(s_iVisits, 0);
}

void Visit() {
    ++s_iVisits;
}

}  // namespace XmlFaults

#endif
