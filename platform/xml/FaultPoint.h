#pragma once

/**
 * One operation of the XML layer. In the build for fault tests the n-th one throws, chosen by the test; in every other
 * build this is nothing.
 */
#ifdef DLP_FAULTS
namespace XmlFaults {
/** Makes the n-th operation from now on throw CXMLCOMException<OS::CException> "injected fault"; 0: none. */
void FailAt(int iOperation);
/** @return the number of operations since FailAt */
int GetCount();
void Step(const char* pOperation);
}  // namespace XmlFaults
#define XML_STEP(pOperation) XmlFaults::Step(pOperation)
#else
#define XML_STEP(pOperation) static_cast<void>(0)
#endif
