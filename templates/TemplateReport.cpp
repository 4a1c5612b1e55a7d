#include "templates/TemplateReport.h"

#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "platform/common/TextConversion.h"
#include "xml/CPolicyDocument.h"

namespace {

/** In the order of ETemplateFault. */
constexpr const char* FAULTY_ATTRIBUTES[] = {TagUtf8::SOURCE_NAME, TagUtf8::SOURCE_NAME, TagUtf8::SOURCE_TYPE,
                                             TagUtf8::OPERATION, TagUtf8::OPERATION};

struct SCategoryPlace {
    const char* pSection;
    const char* pItem;
};
constexpr SCategoryPlace CATEGORIES[] = {{TagUtf8::INDUSTRIES, TagUtf8::INDUSTRY}, {TagUtf8::REGIONS, TagUtf8::REGION}};

SRuleElement ReadElement(const TemplateXml::SBuildingBlock& block) {
    return {OS::WideText(block.strName), block.iCount, block.eOperator, block.eType};
}

std::string FormatElement(const SRuleElement& element) {
    std::vector<OS::x_wstring> vecTexts;
    std::vector<OS::x_wstring> vecOperators;
    FormatMatchRules({SMatchRule{{element}, EOperator::UNKNOWN}}, vecTexts, vecOperators);
    return OS::Utf8Lenient(vecTexts.front());
}

/** A missing operator counts as AND. */
std::string FormatRule(const SMatchRule& rule) {
    std::string strRule;
    for (const SRuleElement& element : rule.vecElements) {
        const EOperator eOperator = element.eOperator == EOperator::UNKNOWN ? EOperator::AND : element.eOperator;
        strRule += strRule.empty() ? "" : std::string(" ") + OperatorText(eOperator) + ' ';
        strRule += FormatElement(element);
    }
    return strRule;
}

void TellCategory(const CXMLView& category, EReason eReason, std::size_t iOffset, std::string strDetail,
                  CImportObserver& observer) {
    SImportItem item;
    item.eKind = EItemKind::CATEGORY;
    item.strName = category.Attribute(TagUtf8::NAME);
    if (observer.PassesOver(item.eKind, item.strName)) {
        return;
    }
    item.strDisplayName = category.Attribute(TagUtf8::DISPLAY_NAME);
    item.eDisposition = EDisposition::SKIPPED;
    item.eReason = eReason;
    item.strDetail = std::move(strDetail);
    item.iOffset = iOffset;
    observer.OnItem(item);
}

}  // namespace

namespace TemplateReport {

std::vector<SMatchRule> ReadRules(const CXMLView& element) {
    std::vector<SMatchRule> vecRules;
    for (CXMLView node = element.FirstChild(); node; node = node.NextSibling()) {
        SMatchRule& rule = vecRules.emplace_back();
        rule.eOperator = TemplateXml::ReadOperation(node);
        for (CXMLView block = node.FirstChild(); block; block = block.NextSibling()) {
            rule.vecElements.push_back(ReadElement(TemplateXml::ReadBuildingBlock(block)));
        }
    }
    return vecRules;
}

SForeignChild ReadForeignChild(const CXMLView& child, bool bRule) {
    SForeignChild foreign{std::string(child.Name()), bRule, {}, child.Offset(), {}};
    SMatchRule rule;
    ForEachReference(child, bRule, [&](const CXMLView& block, const TemplateXml::SBuildingBlock& read) {
        rule.vecElements.push_back(ReadElement(read));
        foreign.vecReferences.push_back(
            {read.eType == EElementType::ENTITY ? EItemKind::EXPRESSION : EItemKind::KEYWORD, std::string(read.strName),
             block.Offset()});
    });
    foreign.strReadAs = FormatRule(rule);
    return foreign;
}

void FindForeignChildren(const CXMLView& element, SImportItem& item) {
    std::set<std::pair<EElementType, std::string_view>> setReferences;
    ForEachForeignChild(element, [&](const CXMLView& child, bool bRule) {
        bool bNew = false;
        ForEachReference(child, bRule, [&](const CXMLView&, const TemplateXml::SBuildingBlock& read) {
            bNew = setReferences.emplace(read.eType, read.strName).second || bNew;
        });
        if (bNew || item.vecForeign.size() < MAX_FOREIGN_CHILDREN) {
            item.vecForeign.push_back(ReadForeignChild(child, bRule));
        } else {
            ++item.iUntoldForeign;
        }
    });
}

void TellCategories(const CXMLView& root, const OS::TextSet<std::string>& setTemplates, CImportObserver& observer) {
    const auto fnTell = [&](const CXMLView& category) {
        if (category.Attribute(TagUtf8::NAME).empty()) {
            TellCategory(category, EReason::NO_NAME, category.Offset(), {}, observer);
        }
        for (CXMLView entry = category.FirstChild(TagUtf8::TEMPLATE_ID); entry;
             entry = entry.NextSibling(TagUtf8::TEMPLATE_ID)) {
            std::string strTemplate = entry.Text();
            if (setTemplates.count(strTemplate) == 0) {
                TellCategory(category, EReason::UNKNOWN_TEMPLATE, entry.Offset(), std::move(strTemplate), observer);
            }
        }
    };
    for (const auto& [pSection, pItem] : CATEGORIES) {
        for (CXMLView section = root.FirstChild(pSection); section; section = section.NextSibling(pSection)) {
            for (CXMLView category = section.FirstChild(pItem); category; category = category.NextSibling(pItem)) {
                fnTell(category);
            }
        }
    }
}

void TellUnknownElements(CPolicyDocument& document, CImportObserver* pObserver) {
    const CXMLView root = document.Load().RootView();
    struct SSection {
        const char* pSection;
        const char* pItem;
        bool bEntries;
    };
    constexpr SSection SECTIONS[] = {{TagUtf8::COMPLIANCE_TEMPLATES, TagUtf8::TEMPLATE, false},
                                     {TagUtf8::INDUSTRIES, TagUtf8::INDUSTRY, true},
                                     {TagUtf8::REGIONS, TagUtf8::REGION, true}};
    for (const auto& [pSection, pItem, bEntries] : SECTIONS) {
        for (CXMLView section = root.FirstChild(pSection); section; section = section.NextSibling(pSection)) {
            ::TellUnknownElements(document, section, {pItem}, pObserver);
            for (CXMLView item = section.FirstChild(pItem); bEntries && item; item = item.NextSibling(pItem)) {
                ::TellUnknownElements(document, item, {TagUtf8::TEMPLATE_ID}, pObserver);
            }
        }
    }
}

void Describe(const STemplateFinding& finding, SImportItem& item) {
    item.strDetail = finding.node.Name();
    for (const char* pName : {TagUtf8::SOURCE_TYPE, TagUtf8::SOURCE_NAME, TagUtf8::OPERATION}) {
        if (finding.node.HasAttribute(pName)) {
            item.strDetail.append(" ").append(pName).append("=\"").append(finding.node.Attribute(pName)).append("\"");
        }
    }
    item.fault = finding.eFault;
    item.strFaulty = finding.node.Attribute(FAULTY_ATTRIBUTES[static_cast<std::size_t>(finding.eFault)]);
}

}  // namespace TemplateReport
