#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "digital_assets/ImportObserver.h"
#include "platform/xml/CXMLView.h"
#include "templates/MatchRule.h"
#include "templates/STemplateFinding.h"

class CPolicyDocument;

/** What an observer of an import is told about templates. */
namespace TemplateReport {

/** @return the rules of a template as they are read: whatever its children and theirs are called */
std::vector<SMatchRule> ReadRules(const CXMLView& element);
/** @return the children of a template, and of its match rules, that go by another name and yet are read as such */
std::vector<SForeignChild> FindForeignChildren(const CXMLView& element);
/**
 * Tells of each industry and region without a name, and of each entry of one that names no template.
 * @param setTemplates names of the document's templates, taken or not
 */
void TellCategories(const CXMLView& root, const std::unordered_set<std::string>& setTemplates,
                    CImportObserver& observer);
/** Tells of what stands among templates, categories or their entries and is none. @param pObserver may be null */
void TellUnknownElements(CPolicyDocument& document, CImportObserver* pObserver);
/** Of a template that was rewritten only the place of the whole is known. */
void MoveForeignChildren(SImportItem& item);
/** Says in the item's detail which building block or rule is to blame, and which reference is unknown. */
void Describe(const STemplateFinding& finding, SImportItem& item);

}  // namespace TemplateReport
