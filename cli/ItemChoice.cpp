#include "cli/ItemChoice.h"

#include <algorithm>

#include "cli/NearestName.h"
#include "digital_assets/AssetFormat.h"
#include "templates/TemplateXml.h"
#include "xml/Vocabulary.h"

CItemChoice::CItemChoice(const std::vector<std::string>& vecNames, const CXMLView& root)
    : m_setWanted(vecNames.begin(), vecNames.end()) {
    AddNames(root, TagUtf8::DIGITAL_ASSETS, DigitalAssets::EXPRESSION_FORMAT.pElement);
    AddNames(root, TagUtf8::DIGITAL_ASSETS, DigitalAssets::KEYWORD_FORMAT.pElement);
    AddNames(root, TagUtf8::COMPLIANCE_TEMPLATES, TagUtf8::TEMPLATE);
}

bool CItemChoice::Holds(EItemKind eKind, std::string_view strName) const {
    const bool bItem = eKind == EItemKind::EXPRESSION || eKind == EItemKind::KEYWORD || eKind == EItemKind::TEMPLATE;
    return bItem && (m_setWanted.count(strName) != 0 || m_setReferences.count({eKind, std::string(strName)}) != 0);
}

std::vector<SMissingName> CItemChoice::FindMissing() const {
    std::vector<SMissingName> vecMissing;
    for (const std::string& strWanted : m_setWanted) {
        if (std::find(m_vecNames.begin(), m_vecNames.end(), strWanted) == m_vecNames.end()) {
            vecMissing.push_back({strWanted, FindNearestName(strWanted, m_vecNames)});
        }
    }
    return vecMissing;
}

void CItemChoice::AddNames(const CXMLView& root, const char* pSection, const char* pElement) {
    for (CXMLView section = root.FirstChild(pSection); section; section = section.NextSibling(pSection)) {
        for (CXMLView element = section.FirstChild(pElement); element; element = element.NextSibling(pElement)) {
            m_vecNames.emplace_back(element.Attribute(TagUtf8::NAME));
            if (element.Name() == TagUtf8::TEMPLATE && m_setWanted.count(m_vecNames.back()) != 0) {
                AddReferences(element);
            }
        }
    }
}

void CItemChoice::AddReferences(const CXMLView& element) {
    for (CXMLView rule = element.FirstChild(TagUtf8::MATCH_RULE); rule; rule = rule.NextSibling(TagUtf8::MATCH_RULE)) {
        for (CXMLView block = rule.FirstChild(TagUtf8::BUILDING_BLOCK); block;
             block = block.NextSibling(TagUtf8::BUILDING_BLOCK)) {
            const EElementType eType = TemplateXml::ReadExactType(block);
            if (eType != EElementType::UNKNOWN) {
                m_setReferences.emplace(eType == EElementType::ENTITY ? EItemKind::EXPRESSION : EItemKind::KEYWORD,
                                        block.Attribute(TagUtf8::SOURCE_NAME));
            }
        }
    }
}
