#include "templates/SPreparedTemplate.h"

#include "platform/common/TextTools.h"
#include "platform/store/CSettingsRow.h"
#include "platform/xml/CXMLParser.h"
#include "platform/xml/CXMLWriter.h"
#include "templates/TemplateXml.h"
#include "xml/Vocabulary.h"

namespace {

/** Any case will do here; blanks around it will not. */
EElementType CheckedType(std::string_view strType) {
    for (const EElementType eType : {EElementType::ENTITY, EElementType::KEYWORD}) {
        if (OS::EqualsNoCase(strType, std::string_view(ElementTypeText(eType)))) {
            return eType;
        }
    }
    return EElementType::UNKNOWN;
}

void CollectChecked(const CXMLView& element, CAssetNames& names, SPreparedTemplate& prepared) {
    for (CXMLView rule = element.FirstChild(TagUtf8::MATCH_RULE); rule; rule = rule.NextSibling(TagUtf8::MATCH_RULE)) {
        CXMLView block = rule.FirstChild(TagUtf8::BUILDING_BLOCK);
        for (; block; block = block.NextSibling(TagUtf8::BUILDING_BLOCK)) {
            const std::string_view strType = block.Attribute(TagUtf8::SOURCE_TYPE);
            const EElementType eType = CheckedType(strType);
            if (eType == EElementType::UNKNOWN) {
                prepared.strUnsupportedType = strType;
                return;
            }
            prepared.vecChecked.push_back({eType, &names.Add(eType, block.Attribute(TagUtf8::SOURCE_NAME))});
        }
    }
}

void WriteRule(CXMLWriter& writer, const CXMLView& rule, CAssetNames& names, SPreparedTemplate& prepared) {
    TemplateXml::StartMatchRule(writer, TemplateXml::ReadOperation(rule));
    for (CXMLView child = rule.FirstChild(); child; child = child.NextSibling()) {
        const TemplateXml::SBuildingBlock block = TemplateXml::ReadBuildingBlock(child);
        TemplateXml::WriteBuildingBlock(writer, block);
        if (block.eType != EElementType::UNKNOWN) {
            prepared.vecReferences.push_back({block.eType, &names.Add(block.eType, block.strName)});
        }
    }
    writer.EndElement();
}

void Write(const CXMLView& element, const CSettingsRow& row, CAssetNames& names, SPreparedTemplate& prepared) {
    CXMLWriter writer(prepared.strMarkup);
    TemplateXml::StartTemplate(writer, prepared.strName, row.GetText(TemplateColumn::DISPLAY_NAME),
                               row.GetText(TemplateColumn::DESCRIPTION), row.GetFlag(TemplateColumn::PRE_DEFINED));
    for (CXMLView rule = element.FirstChild(); rule; rule = rule.NextSibling()) {
        WriteRule(writer, rule, names, prepared);
    }
    writer.EndElement();
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
            CollectChecked(element, names, prepared);
            Write(element, row, names, prepared);
        }
    } catch (const CXMLException& exception) {
        prepared.failure = exception;
    }
    return prepared;
}
