#pragma once

#include <cstddef>

#include "digital_assets/ImportObserver.h"
#include "platform/xml/CXMLView.h"
#include "templates/STemplateFinding.h"

/** What an observer of an import is told about templates. */
namespace TemplateReport {

/** @return how many child elements of a template are no match rules and yet are read as such, empty ones */
std::size_t CountForeignChildren(const CXMLView& element);
/** Says in the item's detail which building block or rule is to blame, and which reference is unknown. */
void Describe(const STemplateFinding& finding, SImportItem& item);

}  // namespace TemplateReport
