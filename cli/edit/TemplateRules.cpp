#include "cli/edit/TemplateRules.h"

#include <utility>

#include "cli/Verdict.h"
#include "platform/common/TextConversion.h"
#include "platform/xml/CXMLParser.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"
#include "templates/DLPTemplate.h"
#include "templates/TemplateXml.h"

namespace {

constexpr const char NO_XML[] = "the template holds a character that XML cannot carry";

OS::x_wstring Wide(const CSettingsRow& row, std::size_t iColumn) {
    return OS::WideText(row.GetText(iColumn));
}

}  // namespace

void SetTemplateRules(const std::vector<SMatchRule>& vecRules, CSettingsRow& row) {
    std::vector<OS::x_wstring> vecTexts;
    std::vector<OS::x_wstring> vecOperators;
    FormatMatchRules(vecRules, vecTexts, vecOperators);
    const CComplianceTemplates written(Wide(row, TemplateColumn::ELEMENT_NAME), Wide(row, TemplateColumn::DISPLAY_NAME),
                                       Wide(row, TemplateColumn::DESCRIPTION), vecTexts, vecOperators);
    CXMLParser document;
    if (!document.LoadXML(written.ToXmlString())) {
        throw CToolError(EVerdict::INVALID, NO_XML);
    }
    CCfgSettingDLPFilterTemplate record(std::move(row));
    const std::vector<std::string> vecIndustries = record.Row().GetList(TemplateColumn::INDUSTRIES);
    const std::vector<std::string> vecRegions = record.Row().GetList(TemplateColumn::REGIONS);
    TemplateXml::ReadTemplate(document.RootView(), vecIndustries, vecRegions, record);
    row = record.Row();
}
