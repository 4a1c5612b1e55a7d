#pragma once

#include <string>
#include <vector>

#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "platform/xml/CXMLWriter.h"
#include "settings/CCfgSettingDLPFilterExpression.h"
#include "settings/CCfgSettingDLPFilterKeyword.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"
#include "tests/support/StoreDump.h"

/** Fills the process's store for tests of templates. Texts are UTF-8. */
namespace TemplateStore {

inline constexpr char MEMORY[] = "memory:";

/** A template to be stored. */
struct STemplateRow {
    std::string strName;  ///< the element's, and what its subject identifier ends in unless strKey is given
    std::string strDisplayName = {};
    std::string strRules = {};  ///< markup below the template element
    bool bPreDefined = false;
    std::vector<std::string> vecIndustries = {};
    std::vector<std::string> vecRegions = {};
    std::string strDescription = {};
    std::string strKey = {};
};

inline std::string Subject(const wchar_t* pPrefix, const std::string& strName) {
    return OS::Utf8Lenient(pPrefix) + strName;
}

inline void AddExpression(const std::string& strName, bool bPreDefined = false) {
    CCfgSettingDLPFilterExpression record(OS::WideText(Subject(SUBJECT_EXPRESSION, strName)));
    record.SetInternalName(OS::WideText(strName));
    record.SetUniqueName(L"", OS::WideText(strName));
    record.SetType(L"Generic");
    record.SetPattern(L"stored");
    record.SetIsBuildIn(bPreDefined);
    record.SaveThis();
}

inline void AddKeyword(const std::string& strName, bool bPreDefined = false) {
    CCfgSettingDLPFilterKeyword record(OS::WideText(Subject(SUBJECT_KEYWORD, strName)));
    record.SetInternalName(OS::WideText(strName));
    record.SetUniqueName(L"", OS::WideText(strName));
    record.SetCondition(L"All");
    record.SetSubkeywordList(L"<dictionary><keyword>stored</keyword></dictionary>");
    record.SetIsBuildIn(bPreDefined);
    record.SaveThis();
}

/** Stores a template whose element is the text given. */
inline void AddElement(const std::string& strKey, const std::string& strElement) {
    CCfgSettingDLPFilterTemplate record(OS::WideText(Subject(SUBJECT_TEMPLATE, strKey)));
    record.SetElement(OS::WideText(strElement));
    record.SaveThis();
}

inline void AddTemplate(const STemplateRow& row) {
    const std::string strKey = row.strKey.empty() ? row.strName : row.strKey;
    CCfgSettingDLPFilterTemplate record(OS::WideText(Subject(SUBJECT_TEMPLATE, strKey)));
    std::string strElement = "<template name=\"";
    AppendEscaped(strElement, row.strName, true);
    record.SetElement(OS::WideText(strElement + "\">" + row.strRules + "</template>"));
    CSettingsRow& stored = record.EditRow();
    stored.SetText(TemplateColumn::DISPLAY_NAME, row.strDisplayName);
    stored.SetText(TemplateColumn::DESCRIPTION, row.strDescription);
    stored.SetFlag(TemplateColumn::PRE_DEFINED, row.bPreDefined);
    stored.SetList(TemplateColumn::INDUSTRIES, row.vecIndustries);
    stored.SetList(TemplateColumn::REGIONS, row.vecRegions);
    record.SaveThis();
}

/** @return a match rule with these blocks and, unless it is empty, this operation */
inline std::string Rule(const std::string& strBlocks, const std::string& strOperation = "") {
    return (strOperation.empty() ? "<matchRule>" : "<matchRule operation=\"" + strOperation + "\">") + strBlocks +
           "</matchRule>";
}

inline std::string Block(const std::string& strType, const std::string& strName, const std::string& strOperation = "") {
    return "<buildingBlock sourceType=\"" + strType + "\" sourceName=\"" + strName + "\"" +
           (strOperation.empty() ? "/>" : " operation=\"" + strOperation + "\"/>");
}

/** @return a document of the standard layout with this markup below its root */
inline std::string Policy(const std::string& strTemplates, const std::string& strSections = "") {
    return "<SAPolicy template_version=\"3.0.1000\">" + strSections + "<complianceTemplates>" + strTemplates +
           "</complianceTemplates></SAPolicy>";
}

inline std::string Dump() {
    return DumpStore(CSettingsStore::Current());
}

}  // namespace TemplateStore
