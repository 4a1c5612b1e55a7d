#include "cli/compare/PolicyFileReader.h"

#include <optional>
#include <utility>

#include "cli/CommandContext.h"
#include "cli/ImportRefusal.h"
#include "cli/InputFile.h"
#include "cli/Kinds.h"
#include "cli/Progress.h"
#include "cli/Signals.h"
#include "cli/check/MeantName.h"
#include "cli/layout/OlderLayout.h"
#include "digital_assets/AssetFormat.h"
#include "digital_assets/DigitalAssets.h"
#include "platform/common/TextConversion.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"
#include "templates/DLPTemplateMgr.h"
#include "templates/STemplateFinding.h"
#include "templates/TemplateReport.h"
#include "templates/TemplateXml.h"
#include "xml/CPolicyDocument.h"
#include "xml/Vocabulary.h"

namespace {

SImportItem MakeItem(EItemKind eKind, const CXMLView& element, EReason eReason, std::size_t iOffset) {
    SImportItem item;
    item.eKind = eKind;
    item.strName = element.Attribute(TagUtf8::NAME);
    item.strDisplayName = element.Attribute(TagUtf8::DISPLAY_NAME);
    item.eDisposition = EDisposition::SKIPPED;
    item.eReason = eReason;
    item.iOffset = iOffset;
    return item;
}

OS::x_wstring SubjectOf(ESettingsKind eKind, std::string_view strName) {
    return GetKind(eKind).pSubject + OS::WideText(strName);
}

std::vector<std::string> CategoriesOf(const CTemplateMgr::CategoryIndex& categories, const std::string& strName) {
    const auto itEntry = categories.find(strName);
    return itEntry == categories.end() ? std::vector<std::string>() : itEntry->second;
}

/** @return what of the rules no import takes, whatever is stored */
std::optional<STemplateFinding> FindFault(const CXMLView& element) {
    const std::string strName(element.Attribute(TagUtf8::NAME));
    for (CXMLView rule = element.FirstChild(TagUtf8::MATCH_RULE); rule; rule = rule.NextSibling(TagUtf8::MATCH_RULE)) {
        for (CXMLView block = rule.FirstChild(TagUtf8::BUILDING_BLOCK); block;
             block = block.NextSibling(TagUtf8::BUILDING_BLOCK)) {
            if (TemplateXml::ReadExactType(block) == EElementType::UNKNOWN) {
                return STemplateFinding{strName, 0, ETemplateFault::SOURCE_TYPE, block};
            }
            if (!TemplateXml::IsOperationAccepted(block)) {
                return STemplateFinding{strName, 0, ETemplateFault::BLOCK_OPERATION, block};
            }
        }
        if (!TemplateXml::IsOperationAccepted(rule)) {
            return STemplateFinding{strName, 0, ETemplateFault::RULE_OPERATION, rule};
        }
    }
    return std::nullopt;
}

}  // namespace

struct CPolicyFileReader::SCategories {
    CTemplateMgr::CategoryIndex industries;
    CTemplateMgr::CategoryIndex regions;
};

CPolicyFileReader::CPolicyFileReader(CCommandContext& context, SPolicy& policy)
    : m_context(context), m_policy(policy) {}

void CPolicyFileReader::Read() {
    m_file = ReadPolicy(m_context, m_policy.strPlace);
    CPolicyDocument document(m_file.Text());
    const CXMLView root = ParsePolicy(m_policy.strPlace, m_file, document);
    if (root.Name() != TagUtf8::SA_POLICY) {
        throw CInputError(m_policy.strPlace, ExplainRefusal(root, CTemplateMgr::RESULT_NO_POLICY));
    }
    if (IsOlderLayout(root)) {
        m_older = LookAtOlder(root);
        ReadOlder(document);
    } else {
        ReadItems(document);
    }
    Arrange(m_policy.vecLeftOut);
    Arrange(m_policy.vecRefused);
}

void CPolicyFileReader::ReadOlder(CPolicyDocument& document) {
    CPolicyDocument standard(ConvertOlder(m_context, m_policy.strPlace, document, this));
    ReadItems(standard);
}

void CPolicyFileReader::ReadItems(CPolicyDocument& document) {
    const CXMLView root = document.Load().RootView();
    CProgress::Expect(CountItems(root));
    ReadAssets(DigitalAssets::EXPRESSION_FORMAT, ESettingsKind::EXPRESSION, root);
    ReadAssets(DigitalAssets::KEYWORD_FORMAT, ESettingsKind::KEYWORD, root);
    ReadTemplates(document);
    DigitalAssets::TellUnknownElements(document, this);
    TemplateReport::TellUnknownElements(document, this);
}

void CPolicyFileReader::ReadAssets(const DigitalAssets::SAssetFormat& format, ESettingsKind eKind,
                                   const CXMLView& root) {
    constexpr const char* SECTION = TagUtf8::DIGITAL_ASSETS;
    for (CXMLView section = root.FirstChild(SECTION); section; section = section.NextSibling(SECTION)) {
        for (CXMLView element = section.FirstChild(format.pElement); element;
             element = element.NextSibling(format.pElement)) {
            CProgress::Step();
            Signals::ThrowIfCaught();
            ReadAsset(format, eKind, element);
        }
    }
}

void CPolicyFileReader::ReadAsset(const DigitalAssets::SAssetFormat& format, ESettingsKind eKind,
                                  const CXMLView& element) {
    SPolicy::Items& items = m_policy.Of(eKind);
    SImportItem item = MakeItem(format.eKind, element, DigitalAssets::CheckNames(element), element.Offset());
    const auto itEarlier = items.find(item.strName);
    if (itEarlier != items.end() && DigitalAssets::IsBuiltInKept(itEarlier->second, element)) {
        item.eReason = EReason::BUILT_IN;
    }
    CSettingsRow row(eKind);
    row.SetText(AssetColumn::SUBJECT, OS::Utf8Lenient(SubjectOf(eKind, item.strName)));
    if (item.eReason == EReason::NONE) {
        if (const DigitalAssets::SChild* pMissing = DigitalAssets::ReadElement(format, element, row)) {
            item.eReason = EReason::MISSING_CHILD;
            item.strDetail = pMissing->pName;
        }
    }
    if (item.eReason != EReason::NONE) {
        OnItem(item);
        return;
    }
    items.insert_or_assign(item.strName, std::move(row));
}

void CPolicyFileReader::ReadTemplates(CPolicyDocument& document) {
    CTemplateMgr manager{OS::x_wstring()};
    SCategories categories;
    manager.MakeCategoryMap(document, Tag::INDUSTRIES, Tag::INDUSTRY, categories.industries);
    manager.MakeCategoryMap(document, Tag::REGIONS, Tag::REGION, categories.regions);
    const CXMLView root = document.Load().RootView();
    constexpr const char* SECTION = TagUtf8::COMPLIANCE_TEMPLATES;
    for (CXMLView section = root.FirstChild(SECTION); section; section = section.NextSibling(SECTION)) {
        for (CXMLView element = section.FirstChild(TagUtf8::TEMPLATE); element;
             element = element.NextSibling(TagUtf8::TEMPLATE)) {
            CProgress::Step();
            Signals::ThrowIfCaught();
            m_setTemplates.emplace(element.Attribute(TagUtf8::NAME));
            ReadTemplate(element, categories);
        }
    }
    TemplateReport::TellCategories(root, m_setTemplates, *this);
}

void CPolicyFileReader::ReadTemplate(const CXMLView& element, const SCategories& categories) {
    SPolicy::Items& items = m_policy.Of(ESettingsKind::TEMPLATE);
    SImportItem item = MakeItem(EItemKind::TEMPLATE, element, DigitalAssets::CheckNames(element), element.Offset());
    const auto itEarlier = items.find(item.strName);
    if (itEarlier != items.end() && itEarlier->second.GetFlag(TemplateColumn::PRE_DEFINED) &&
        !TemplateXml::IsPreDefined(element)) {
        item.eReason = EReason::BUILT_IN;
    }
    if (item.eReason != EReason::NONE) {
        OnItem(item);
        return;
    }
    CCfgSettingDLPFilterTemplate record(SubjectOf(ESettingsKind::TEMPLATE, item.strName));
    TemplateXml::ReadTemplate(element, CategoriesOf(categories.industries, item.strName),
                              CategoriesOf(categories.regions, item.strName), record);
    items.insert_or_assign(item.strName, record.Row());
    if (const std::optional<STemplateFinding> fault = FindFault(element)) {
        item.eReason = EReason::UNSUPPORTED_ASSETS;
        TemplateReport::Describe(*fault, item);
        m_policy.vecRefused.emplace_back(item);
    }
}

void CPolicyFileReader::OnItem(const SImportItem& item) {
    m_policy.vecLeftOut.emplace_back(item);
}

/** Into the order of the file, each with its place and what was most likely meant. */
void CPolicyFileReader::Arrange(ReportItems& vecItems) const {
    if (vecItems.empty()) {
        return;
    }
    SortByPlace(vecItems);
    const CSourcePlaces places(m_file.strBytes);
    CMeantNames meant;
    for (SReportItem& item : vecItems) {
        item.older = m_older;
        if (item.eReason == EReason::UNKNOWN_ELEMENT) {
            item.EditDetails().strNearest = meant.FindElement(item.Details().strDetail, item.strName);
        }
        if (item.iOffset != std::string::npos) {
            item.place = places.Find(m_file.iStart + item.iOffset);
        }
    }
}
