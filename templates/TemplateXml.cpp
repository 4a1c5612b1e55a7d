#include "templates/TemplateXml.h"

#include <iterator>
#include <utility>

#include "platform/common/TextTools.h"
#include "platform/store/SettingsSchema.h"
#include "platform/xml/CXMLWriter.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"
#include "xml/Vocabulary.h"
#include "xml/XmlHelpers.h"

namespace TemplateXml {

namespace {

/** Attributes that the record keeps in fields of its own, and its element therefore not. */
constexpr const char* RECORD_ATTRIBUTES[] = {TagUtf8::DISPLAY_NAME, TagUtf8::DESCRIPTION, TagUtf8::PRE_DEFINED};

void WriteOperation(CXMLWriter& writer, EOperator eOperator) {
    if (eOperator != EOperator::UNKNOWN) {
        writer.Attribute(TagUtf8::OPERATION, OperatorText(eOperator));
    }
}

}  // namespace

EOperator ReadOperation(const CXMLView& node) {
    return ToOperator(node.Attribute(TagUtf8::OPERATION));
}

SBuildingBlock ReadBuildingBlock(const CXMLView& node) {
    SBuildingBlock block;
    block.eType = ToElementType(node.Attribute(TagUtf8::SOURCE_TYPE));
    block.iCount = OS::TextToInt(node.Attribute(TagUtf8::ENTITY_HITS));
    block.strName = node.Attribute(TagUtf8::SOURCE_NAME);
    block.eOperator = ReadOperation(node);
    return block;
}

bool IsPreDefined(const CXMLView& element) {
    return OS::EqualsNoCase(element.Attribute(TagUtf8::PRE_DEFINED), Value::TRUE_TEXT);
}

void ReadTemplate(const CXMLView& element, std::vector<std::string> vecIndustries, std::vector<std::string> vecRegions,
                  CCfgSettingDLPFilterTemplate& record) {
    std::string strElement;
    element.AppendMarkup(strElement, RECORD_ATTRIBUTES, std::size(RECORD_ATTRIBUTES));
    record.SetElementMarkup(std::move(strElement), std::string(element.Attribute(TagUtf8::NAME)));
    CSettingsRow& row = record.EditRow();
    row.SetText(TemplateColumn::DISPLAY_NAME, std::string(element.Attribute(TagUtf8::DISPLAY_NAME)));
    row.SetText(TemplateColumn::DESCRIPTION, std::string(element.Attribute(TagUtf8::DESCRIPTION)));
    row.SetFlag(TemplateColumn::PRE_DEFINED, IsPreDefined(element));
    row.SetList(TemplateColumn::INDUSTRIES, std::move(vecIndustries));
    row.SetList(TemplateColumn::REGIONS, std::move(vecRegions));
}

EElementType ReadExactType(const CXMLView& block) {
    const std::string_view strType = block.Attribute(TagUtf8::SOURCE_TYPE);
    for (const EElementType eType : {EElementType::ENTITY, EElementType::KEYWORD}) {
        if (strType == ElementTypeText(eType)) {
            return eType;
        }
    }
    return EElementType::UNKNOWN;
}

bool IsOperationAccepted(const CXMLView& node) {
    const EOperator eOperator = ReadOperation(node);
    return eOperator == EOperator::AND || eOperator == EOperator::OR || node.Attribute(TagUtf8::OPERATION).empty();
}

void StartTemplate(CXMLWriter& writer, std::string_view strName, std::string_view strDisplayName,
                   std::string_view strDescription, bool bPreDefined) {
    writer.StartElement(TagUtf8::TEMPLATE);
    writer.Attribute(TagUtf8::NAME, strName);
    writer.Attribute(TagUtf8::DISPLAY_NAME, strDisplayName);
    writer.Attribute(TagUtf8::DESCRIPTION, strDescription);
    writer.Attribute(TagUtf8::PRE_DEFINED, XmlHelpers::FlagText(bPreDefined));
}

void StartMatchRule(CXMLWriter& writer, EOperator eOperator) {
    writer.StartElement(TagUtf8::MATCH_RULE);
    WriteOperation(writer, eOperator);
}

void WriteBuildingBlock(CXMLWriter& writer, const SBuildingBlock& block) {
    writer.StartElement(TagUtf8::BUILDING_BLOCK);
    writer.Attribute(TagUtf8::SOURCE_TYPE, ElementTypeText(block.eType));
    if (block.eType == EElementType::ENTITY) {
        writer.Attribute(TagUtf8::ENTITY_HITS, block.iCount);
    }
    writer.Attribute(TagUtf8::SOURCE_NAME, block.strName);
    WriteOperation(writer, block.eOperator);
    writer.EndElement();
}

}  // namespace TemplateXml
