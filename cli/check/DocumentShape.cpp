#include "cli/check/DocumentShape.h"

#include <algorithm>

#include "digital_assets/AssetFormat.h"
#include "templates/DLPXmlNormalizer.h"
#include "xml/Vocabulary.h"

namespace {

SShape MakeShape(const DigitalAssets::SAssetFormat& format) {
    SShape shape{format.pElement, {}, {}};
    for (const DigitalAssets::SAttribute& attribute : format.aAttributes) {
        if (attribute.pName != nullptr) {
            shape.vecAttributes.emplace_back(attribute.pName);
        }
    }
    for (const DigitalAssets::SType& type : format.aTypes) {
        for (const DigitalAssets::SNumber& number : type.aNumbers) {
            shape.vecAttributes.emplace_back(number.pName);
        }
    }
    for (const DigitalAssets::SChild& child : format.aChildren) {
        shape.vecChildren.emplace_back(child.pName);
    }
    return shape;
}

}  // namespace

CDocumentShape::CDocumentShape(bool bOlder)
    : m_vecShapes{
          {TagUtf8::SA_POLICY,
           {TagUtf8::TEMPLATE_VERSION, TagUtf8::LOCALIZATION_LANGUAGE},
           {TagUtf8::DIGITAL_ASSETS, TagUtf8::COMPLIANCE_TEMPLATES, TagUtf8::INDUSTRIES, TagUtf8::REGIONS}},
          {TagUtf8::DIGITAL_ASSETS, {TagUtf8::COMMAND}, {TagUtf8::ENTITY, TagUtf8::DICTIONARY}},
          {TagUtf8::KEYWORD, {TagUtf8::DESCRIPTION, TagUtf8::SCORE, TagUtf8::CASE_SENSITIVE}, {}, true},
          {TagUtf8::COMPLIANCE_TEMPLATES, {TagUtf8::COMMAND}, {TagUtf8::TEMPLATE}},
          {TagUtf8::TEMPLATE,
           {TagUtf8::NAME, TagUtf8::DISPLAY_NAME, TagUtf8::DESCRIPTION, TagUtf8::PRE_DEFINED, TagUtf8::SEVERITY},
           {TagUtf8::MATCH_RULE}},
          {TagUtf8::MATCH_RULE, {TagUtf8::OPERATION}, {TagUtf8::BUILDING_BLOCK}},
          {TagUtf8::BUILDING_BLOCK,
           {TagUtf8::SOURCE_TYPE, TagUtf8::ENTITY_HITS, TagUtf8::SOURCE_NAME, TagUtf8::OPERATION},
           {}},
          {TagUtf8::INDUSTRIES, {}, {TagUtf8::INDUSTRY}},
          {TagUtf8::INDUSTRY, {TagUtf8::NAME, TagUtf8::DISPLAY_NAME}, {TagUtf8::TEMPLATE_ID}},
          {TagUtf8::REGIONS, {}, {TagUtf8::REGION}},
          {TagUtf8::REGION, {TagUtf8::NAME, TagUtf8::DISPLAY_NAME}, {TagUtf8::TEMPLATE_ID}},
          {TagUtf8::TEMPLATE_ID, {}, {}, true}} {
    SShape list = MakeShape(DigitalAssets::KEYWORD_FORMAT);
    list.vecChildren.emplace_back(TagUtf8::KEYWORD);
    SShape expression = MakeShape(DigitalAssets::EXPRESSION_FORMAT);
    expression.bChildrenOnce = true;
    for (const std::string& strChild : expression.vecChildren) {
        m_vecShapes.push_back({strChild, {}, {}, true});
    }
    m_vecShapes.push_back(std::move(expression));
    m_vecShapes.push_back(std::move(list));
    for (SShape& shape : m_vecShapes) {
        m_vecNames.push_back(shape.strName);
        if (bOlder && shape.strName == TagUtf8::TEMPLATE) {
            shape.vecAttributes.insert(shape.vecAttributes.end(),
                                       {CDLPXmlNormalizer::OLDER_DISPLAY_NAME, CDLPXmlNormalizer::OLDER_BUILT_IN});
        }
    }
}

const SShape* CDocumentShape::Find(std::string_view strElement) const {
    const std::size_t iShape = IndexOf(m_vecNames, strElement);
    return iShape == m_vecShapes.size() ? nullptr : &m_vecShapes[iShape];
}

const SShape* CDocumentShape::FindOwner(std::string_view strAttribute) const {
    const auto itOwner = std::find_if(m_vecShapes.begin(), m_vecShapes.end(), [&](const SShape& shape) {
        return IndexOf(shape.vecAttributes, strAttribute) != shape.vecAttributes.size();
    });
    return itOwner == m_vecShapes.end() ? nullptr : &*itOwner;
}

std::size_t CDocumentShape::IndexOf(const std::vector<std::string>& vecNames, std::string_view strName) {
    return static_cast<std::size_t>(std::find(vecNames.begin(), vecNames.end(), strName) - vecNames.begin());
}
