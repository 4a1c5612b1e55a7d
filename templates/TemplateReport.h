#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "digital_assets/ImportObserver.h"
#include "platform/common/TextHash.h"
#include "platform/xml/CXMLView.h"
#include "templates/MatchRule.h"
#include "templates/STemplateFinding.h"
#include "templates/TemplateXml.h"
#include "xml/Vocabulary.h"

class CPolicyDocument;

/** What an observer of an import is told about templates. */
namespace TemplateReport {

/** @return the rules of a template as they are read: whatever its children and theirs are called */
std::vector<SMatchRule> ReadRules(const CXMLView& element);
/** Calls fnChild(node, whether as a rule) for the children of a template, and of its match rules, that go by another
 * name and yet are read as such. */
template <class F>
void ForEachForeignChild(const CXMLView& element, const F& fnChild) {
    for (CXMLView rule = element.FirstChild(); rule; rule = rule.NextSibling()) {
        if (rule.Name() != TagUtf8::MATCH_RULE) {
            fnChild(rule, true);
            continue;
        }
        for (CXMLView block = rule.FirstChild(); block; block = block.NextSibling()) {
            if (block.Name() != TagUtf8::BUILDING_BLOCK) {
                fnChild(block, false);
            }
        }
    }
}

/** Calls fnReference(node, building block) for what a foreign child is read to refer to. */
template <class F>
void ForEachReference(const CXMLView& child, bool bRule, const F& fnReference) {
    const auto fnBlock = [&](const CXMLView& block) {
        const TemplateXml::SBuildingBlock read = TemplateXml::ReadBuildingBlock(block);
        if (read.eType != EElementType::UNKNOWN) {
            fnReference(block, read);
        }
    };
    if (!bRule) {
        fnBlock(child);
        return;
    }
    for (CXMLView block = child.FirstChild(); block; block = block.NextSibling()) {
        fnBlock(block);
    }
}

SForeignChild ReadForeignChild(const CXMLView& child, bool bRule);
/** Tells an item of its foreign children. */
void FindForeignChildren(const CXMLView& element, SImportItem& item);
/**
 * Tells of each industry and region without a name, and of each entry of one that names no template.
 * @param setTemplates names of the document's templates, taken or not
 */
void TellCategories(const CXMLView& root, const OS::TextSet<std::string>& setTemplates, CImportObserver& observer);
/** Tells of what stands among templates, categories or their entries and is none. @param pObserver may be null */
void TellUnknownElements(CPolicyDocument& document, CImportObserver* pObserver);
/** Says in the item's detail which building block or rule is to blame, and which reference is unknown. */
void Describe(const STemplateFinding& finding, SImportItem& item);

}  // namespace TemplateReport
