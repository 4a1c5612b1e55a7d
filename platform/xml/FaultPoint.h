#pragma once

/**
 * Faults of the XML layer, chosen by a test: the n-th operation throws, or the n-th lookup finds nothing. Work that
 * must not grow faster than the document is counted. In every build but the one for fault tests these are nothing.
 */
#ifdef DLP_FAULTS
#include <vector>

namespace XmlFaults {
/** Makes the n-th operation from now on throw CXMLCOMException<OS::CException> "injected fault"; 0: none. */
void FailAt(int iOperation);
/** @return the number of operations since FailAt */
int GetCount();
/** @return the names of the operations since FailAt, in order */
const std::vector<const char*>& GetOperations();
void Step(const char* pOperation);

/**
 * Makes the n-th lookup from now on find nothing; 0: none. A lookup is a selection by XPath, asking a document for its
 * root, an element for a child by name, and a writer or written markup for an element. Finding nothing is null, false,
 * or from XPathSelectNodes of an element an empty list.
 */
void FindNothingAt(int iLookup);
/** @return the number of lookups since FindNothingAt */
int GetLookupCount();
bool FindsNothing();

/** @return how many attributes and declarations were looked at for namespaces since the last call */
int TakeVisits();
void Visit();
}  // namespace XmlFaults
#define XML_STEP(pOperation) XmlFaults::Step(pOperation)
#define XML_FINDS_NOTHING() XmlFaults::FindsNothing()
#define XML_VISIT() XmlFaults::Visit()
#else
#define XML_STEP(pOperation) static_cast<void>(0)
#define XML_FINDS_NOTHING() false
#define XML_VISIT() static_cast<void>(0)
#endif
