#pragma once

#include <cstddef>
#include <string>

#include "cli/check/DiagnosticCodes.h"

class CXMLView;

/** @return how many expressions, keyword lists and templates a document holds */
std::size_t CountItems(const CXMLView& root);
/** @return how many of them are templates */
std::size_t CountTemplates(const CXMLView& root);
/** @return whether this is the root of a policy of the older layout, whose root has no version */
bool IsOlderLayout(const CXMLView& root);
/** @return in words why the library answered a document with that result, which is not 0, and what to do */
std::string ExplainRefusal(const CXMLView& root, int iResult);
/** @return the code of such an answer */
ECode GetRefusalCode(const CXMLView& root, int iResult);
