#include "cli/edit/Referrers.h"

#include "cli/RecordJson.h"
#include "cli/Signals.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "platform/xml/CXMLParser.h"
#include "templates/TemplateXml.h"
#include "xml/Vocabulary.h"

namespace {

bool RefersTo(const CSettingsRow& row, EElementType eType, const std::wstring& strName) {
    for (const SMatchRule& rule : ReadRules(row)) {
        for (const SRuleElement& element : rule.vecElements) {
            if (element.eType == eType && element.strName == strName) {
                return true;
            }
        }
    }
    return false;
}

void SetAttribute(const CXMLNode& node, const std::wstring& strAttribute, const std::string& strValue) {
    node.ToElement()->SetAttribute(strAttribute, OS::WideText(strValue));
}

std::string Save(const CXMLParser& document) {
    std::string strMarkup;
    document.SaveUtf8(strMarkup);
    return strMarkup;
}

}  // namespace

EElementType GetElementType(ESettingsKind eKind) {
    return eKind == ESettingsKind::EXPRESSION ? EElementType::ENTITY
           : eKind == ESettingsKind::KEYWORD  ? EElementType::KEYWORD
                                              : EElementType::UNKNOWN;
}

std::vector<CSettingsRow> FindReferrers(ESettingsKind eKind, const std::string& strName) {
    std::vector<CSettingsRow> vecRows;
    const EElementType eType = GetElementType(eKind);
    if (eType == EElementType::UNKNOWN) {
        return vecRows;
    }
    const std::wstring strWide = OS::WideText(strName);
    CSettingsStore::Current().ReadAll(ESettingsKind::TEMPLATE, [&](CSettingsRow&& row) {
        Signals::ThrowIfCaught();
        if (RefersTo(row, eType, strWide)) {
            vecRows.push_back(std::move(row));
        }
    });
    return vecRows;
}

void RenameReferences(ESettingsKind eKind, const std::string& strOld, const std::string& strNew, CSettingsRow& row) {
    CXMLParser document;
    document.LoadUtf8(row.GetText(TemplateColumn::ELEMENT));
    for (auto pRule = document.GetRootElement()->GetFirstChild(); pRule; pRule = pRule->GetNextSibling()) {
        for (auto pBlock = pRule->GetFirstChild(); pBlock; pBlock = pBlock->GetNextSibling()) {
            const TemplateXml::SBuildingBlock block = TemplateXml::ReadBuildingBlock(pBlock->View());
            if (block.eType == GetElementType(eKind) && block.strName == strOld) {
                SetAttribute(*pBlock, Tag::SOURCE_NAME, strNew);
            }
        }
    }
    row.SetText(TemplateColumn::ELEMENT, Save(document));
}

std::string RenameElement(const std::string& strMarkup, const char* pElement, const std::string& strName) {
    CXMLParser document;
    if (!document.LoadUtf8(strMarkup) || document.RootView().Name() != pElement) {
        return strMarkup;
    }
    SetAttribute(*document.GetRootElement(), Tag::NAME, strName);
    return Save(document);
}
