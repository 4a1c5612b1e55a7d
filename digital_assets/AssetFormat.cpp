#include "digital_assets/AssetFormat.h"

#include <algorithm>
#include <string>

#include "platform/common/TextTools.h"
#include "platform/xml/CXMLWriter.h"
#include "xml/Vocabulary.h"
#include "xml/XmlHelpers.h"

namespace DigitalAssets {

namespace {

constexpr SNumber LENGTHS[] = {
    {TagUtf8::MIN_LENGTH, ExpressionColumn::MIN_LENGTH},
    {TagUtf8::MAX_LENGTH, ExpressionColumn::MAX_LENGTH},
    {TagUtf8::SUFFIX_LENGTH, ExpressionColumn::SUFFIX_LENGTH},
};
constexpr SNumber RADII[] = {
    {TagUtf8::MIN_LEFT_RADIUS, ExpressionColumn::MIN_LEFT_RADIUS},
    {TagUtf8::MAX_LEFT_RADIUS, ExpressionColumn::MAX_LEFT_RADIUS},
    {TagUtf8::MAX_RIGHT_RADIUS, ExpressionColumn::MAX_RIGHT_RADIUS},
};
constexpr SType EXPRESSION_TYPES[] = {
    {"Generic", {}},
    {"Type 1", {LENGTHS, 2}},
    {"Type 2", LENGTHS},
    {"Type 3", RADII},
};
constexpr SAttribute EXPRESSION_ATTRIBUTES[] = {
    {EAttribute::TEXT, TagUtf8::NAME, AssetColumn::NAME},
    {EAttribute::TYPE, TagUtf8::TYPE, ExpressionColumn::TYPE},
    {EAttribute::FLAG, TagUtf8::CASE_SENSITIVE, ExpressionColumn::CASE_SENSITIVE},
    {EAttribute::TEXT, TagUtf8::VALIDATOR, ExpressionColumn::VALIDATOR},
    {EAttribute::NUMBERS, nullptr, 0},
    {EAttribute::TEXT, TagUtf8::DISPLAY_NAME, AssetColumn::DISPLAY_NAME},
    {EAttribute::TEXT, TagUtf8::DESCRIPTION, AssetColumn::DESCRIPTION},
    {EAttribute::FLAG, TagUtf8::PRE_DEFINED, AssetColumn::PRE_DEFINED},
};
constexpr SChild EXPRESSION_CHILDREN[] = {
    {TagUtf8::REGULAR_EXPRESSION, ExpressionColumn::PATTERN, ENeed::EVERY_TYPE},
    {TagUtf8::ALPHABET_CHARSET, ExpressionColumn::ALPHABET_CHARSET, ENeed::TYPED},
    {TagUtf8::PATTERN_FOR_DISPLAY, ExpressionColumn::DISPLAY_FORMAT, ENeed::NO_TYPE},
    {TagUtf8::EXAMPLES, ExpressionColumn::EXAMPLE, ENeed::NO_TYPE},
};

constexpr SNumber THRESHOLD[] = {{TagUtf8::THRESHOLD, KeywordColumn::THRESHOLD}};
constexpr SNumber DISTANCE[] = {{TagUtf8::NUMBER, KeywordColumn::NUMBER}};
constexpr SType KEYWORD_CONDITIONS[] = {
    {"All", {}},
    {"Any", {}},
    {"Threshold", THRESHOLD},
    {"Distance", DISTANCE},
};
constexpr SAttribute KEYWORD_ATTRIBUTES[] = {
    {EAttribute::TEXT, TagUtf8::NAME, AssetColumn::NAME},
    {EAttribute::TYPE, TagUtf8::TYPE, KeywordColumn::CONDITION},
    {EAttribute::NUMBERS, nullptr, 0},
    {EAttribute::TEXT, TagUtf8::DISPLAY_NAME, AssetColumn::DISPLAY_NAME},
    {EAttribute::TEXT, TagUtf8::DESCRIPTION, AssetColumn::DESCRIPTION},
    {EAttribute::FLAG, TagUtf8::PRE_DEFINED, AssetColumn::PRE_DEFINED},
};

const SType* FindType(const SAssetFormat& format, std::string_view strName, bool bCaseMatters) {
    for (const SType& type : format.aTypes) {
        if (bCaseMatters ? strName == type.pName : OS::EqualsNoCase(strName, type.pName)) {
            return &type;
        }
    }
    return nullptr;
}

bool IsChildRead(const SAssetFormat& format, const SType& type, const SChild& child) {
    return child.eNeed != ENeed::TYPED || &type != &format.aTypes.front();
}

void ReadNumbers(const SAssetFormat& format, const SType& type, const CXMLView& element, CSettingsRow& row) {
    for (const SType& other : format.aTypes) {
        for (const SNumber& number : other.aNumbers) {
            row.SetNumber(number.iColumn, 0);
        }
    }
    for (const SNumber& number : type.aNumbers) {
        row.SetNumber(number.iColumn, OS::TextToInt(element.Attribute(number.pName)));
    }
}

void ReadAttribute(const SAssetFormat& format, const SAttribute& attribute, const SType& type, const CXMLView& element,
                   CSettingsRow& row) {
    switch (attribute.eForm) {
        case EAttribute::TEXT:
            row.SetText(attribute.iColumn, std::string(element.Attribute(attribute.pName)));
            break;
        case EAttribute::FLAG:
            row.SetFlag(attribute.iColumn, OS::EqualsNoCase(element.Attribute(attribute.pName), Value::TRUE_TEXT));
            break;
        case EAttribute::TYPE:
            row.SetText(attribute.iColumn, type.pName);
            break;
        case EAttribute::NUMBERS:
            ReadNumbers(format, type, element, row);
            break;
    }
}

}  // namespace

constexpr SAssetFormat EXPRESSION_FORMAT = {
    .eKind = EItemKind::EXPRESSION,
    .pElement = TagUtf8::ENTITY,
    .aAttributes = EXPRESSION_ATTRIBUTES,
    .iTypeColumn = ExpressionColumn::TYPE,
    .aTypes = EXPRESSION_TYPES,
    .bTypeCaseMatters = false,
    .aChildren = EXPRESSION_CHILDREN,
    .iMarkupColumn = AssetColumn::SUBJECT,
};

constexpr SAssetFormat KEYWORD_FORMAT = {
    .eKind = EItemKind::KEYWORD,
    .pElement = TagUtf8::DICTIONARY,
    .aAttributes = KEYWORD_ATTRIBUTES,
    .iTypeColumn = KeywordColumn::CONDITION,
    .aTypes = KEYWORD_CONDITIONS,
    .bTypeCaseMatters = true,
    .aChildren = {},
    .iMarkupColumn = KeywordColumn::TEXT,
};

const SChild* ReadElement(const SAssetFormat& format, const CXMLView& element, CSettingsRow& row) {
    const SChild* pMissing = ReadFields(format, element, row);
    if (pMissing == nullptr && format.iMarkupColumn != AssetColumn::SUBJECT) {
        std::string strMarkup;
        element.AppendMarkup(strMarkup);
        row.SetText(format.iMarkupColumn, std::move(strMarkup));
    }
    return pMissing;
}

const SChild* ReadFields(const SAssetFormat& format, const CXMLView& element, CSettingsRow& row) {
    const SType* pType = FindType(format, element.Attribute(TagUtf8::TYPE), false);
    const SType& type = pType != nullptr ? *pType : format.aTypes.front();
    for (const SAttribute& attribute : format.aAttributes) {
        ReadAttribute(format, attribute, type, element, row);
    }
    for (const SChild& child : format.aChildren) {
        const bool bRead = IsChildRead(format, type, child);
        const CXMLView node = bRead ? element.FirstChild(child.pName) : CXMLView();
        if (bRead && !node && child.eNeed != ENeed::NO_TYPE) {
            return &child;
        }
        row.SetText(child.iColumn, node.Text());
    }
    return nullptr;
}

EReason CheckNames(const CXMLView& element) {
    if (element.Attribute(TagUtf8::NAME).empty()) {
        return EReason::NO_NAME;
    }
    return element.Attribute(TagUtf8::DISPLAY_NAME).empty() ? EReason::NO_DISPLAY_NAME : EReason::NONE;
}

bool IsBuiltInKept(const CSettingsRow& stored, const CXMLView& element) {
    return stored.GetFlag(AssetColumn::PRE_DEFINED) &&
           OS::EqualsNoCase(element.Attribute(TagUtf8::PRE_DEFINED), Value::FALSE_TEXT);
}

const SType* FindStoredType(const SAssetFormat& format, const CSettingsRow& row) {
    return FindType(format, row.GetText(format.iTypeColumn), format.bTypeCaseMatters);
}

void WriteAttributes(const SAssetFormat& format, const CSettingsRow& row, const SType* pType, CXMLWriter& writer) {
    for (const SAttribute& attribute : format.aAttributes) {
        switch (attribute.eForm) {
            case EAttribute::TEXT:
            case EAttribute::TYPE:
                writer.Attribute(attribute.pName, row.GetText(attribute.iColumn));
                break;
            case EAttribute::FLAG:
                writer.Attribute(attribute.pName, XmlHelpers::FlagText(row.GetFlag(attribute.iColumn)));
                break;
            case EAttribute::NUMBERS:
                for (const SNumber& number : pType != nullptr ? pType->aNumbers : std::span<const SNumber>()) {
                    writer.Attribute(number.pName, row.GetNumber(number.iColumn));
                }
                break;
        }
    }
}

void WriteChildren(const SAssetFormat& format, const CSettingsRow& row, CXMLWriter& writer) {
    for (const SChild& child : format.aChildren) {
        writer.TextElement(child.pName, row.GetText(child.iColumn));
    }
}

void Normalise(const SAssetFormat& format, CSettingsRow& row) {
    const SType* pType = FindStoredType(format, row);
    if (pType == nullptr) {
        return;
    }
    row.SetText(format.iTypeColumn, pType->pName);
    for (const SType& other : format.aTypes) {
        for (const SNumber& number : other.aNumbers) {
            const bool bOwn = std::any_of(pType->aNumbers.begin(), pType->aNumbers.end(),
                                          [&](const SNumber& own) { return own.iColumn == number.iColumn; });
            if (!bOwn) {
                row.SetNumber(number.iColumn, 0);
            }
        }
    }
    for (const SChild& child : format.aChildren) {
        if (!IsChildRead(format, *pType, child)) {
            row.SetText(child.iColumn, std::string());
        }
    }
}

}  // namespace DigitalAssets
