#include "templates/SPreparedTemplate.h"

#include "platform/common/TextTools.h"
#include "platform/store/CSettingsRow.h"
#include "platform/xml/CXMLParser.h"
#include "platform/xml/CXMLWriter.h"
#include "templates/TemplateXml.h"
#include "xml/Vocabulary.h"

namespace {

/** Any case will do for the reference check; blanks around the type will not. */
bool IsSupported(std::string_view strType) {
    return OS::EqualsNoCase(strType, std::string_view(ElementTypeText(EElementType::ENTITY))) ||
           OS::EqualsNoCase(strType, std::string_view(ElementTypeText(EElementType::KEYWORD)));
}

void WriteBlock(CXMLWriter& writer, const CXMLView& node, bool bChecked, CAssetNames& names,
                SPreparedTemplate& prepared) {
    const TemplateXml::SBuildingBlock block = TemplateXml::ReadBuildingBlock(node);
    TemplateXml::WriteBuildingBlock(writer, block);
    bChecked = bChecked && !prepared.strUnsupportedType;
    if (const std::string_view strType = node.Attribute(TagUtf8::SOURCE_TYPE); bChecked && !IsSupported(strType)) {
        prepared.strUnsupportedType = strType;
        bChecked = false;
    }
    if (block.eType != EElementType::UNKNOWN) {
        prepared.vecReferences.push_back({block.eType, &names.Add(block.eType, block.strName), bChecked});
    }
}

/** Every child is read as a block, but the check looks at building blocks of match rules alone. */
void WriteRule(CXMLWriter& writer, const CXMLView& rule, CAssetNames& names, SPreparedTemplate& prepared) {
    const bool bMatchRule = rule.Name() == TagUtf8::MATCH_RULE;
    TemplateXml::StartMatchRule(writer, TemplateXml::ReadOperation(rule));
    for (CXMLView child = rule.FirstChild(); child; child = child.NextSibling()) {
        WriteBlock(writer, child, bMatchRule && child.Name() == TagUtf8::BUILDING_BLOCK, names, prepared);
    }
    writer.EndElement();
}

/** The rules first: their references are wanted even when the record's own texts cannot be written. */
void Write(const CXMLView& element, const CSettingsRow& row, CAssetNames& names, SPreparedTemplate& prepared) {
    std::string strRules;
    CXMLWriter rules(strRules);
    for (CXMLView rule = element.FirstChild(); rule; rule = rule.NextSibling()) {
        WriteRule(rules, rule, names, prepared);
    }
    CXMLWriter writer(prepared.strMarkup);
    TemplateXml::StartTemplate(writer, prepared.strName, row.GetText(TemplateColumn::DISPLAY_NAME),
                               row.GetText(TemplateColumn::DESCRIPTION), row.GetFlag(TemplateColumn::PRE_DEFINED));
    writer.Raw(strRules);
    writer.EndElement();
    prepared.strMarkup.shrink_to_fit();  // all of them are held at once
}

}  // namespace

SPreparedTemplate SPreparedTemplate::Make(const CSettingsRow& row, CAssetNames& names) {
    SPreparedTemplate prepared;
    prepared.strSubject = row.GetSubject();
    prepared.vecIndustries = row.GetList(TemplateColumn::INDUSTRIES);
    prepared.vecRegions = row.GetList(TemplateColumn::REGIONS);
    try {
        CXMLParser document;
        document.LoadUtf8(row.GetText(TemplateColumn::ELEMENT));
        const CXMLView element = document.RootView();
        prepared.bTemplate = element.Name() == TagUtf8::TEMPLATE;
        if (prepared.bTemplate) {
            prepared.strName = element.Attribute(TagUtf8::NAME);
            Write(element, row, names, prepared);
        }
    } catch (const CXMLException& exception) {
        prepared.failure = exception;
    }
    return prepared;
}
