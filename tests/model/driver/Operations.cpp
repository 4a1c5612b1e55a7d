#include "tests/model/driver/Operations.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "api/CDLPDigitalAssetsParser.h"
#include "api/CDLPSubKeywordFormater.h"
#include "api/CDLPTemplateParse.h"
#include "api/DLPMetaDataLoaderImpl.h"
#include "cli/RecordJson.h"
#include "platform/store/CSettingsStore.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"
#include "templates/DLPTemplateMgr.h"
#include "templates/DLPXmlNormalizer.h"
#include "tests/model/driver/JsonText.h"

namespace {

using Texts = std::vector<OS::x_wstring>;

/** @return the row of a table of names; throws when the name is none of it */
template <class Value>
const Value& Choose(const std::map<std::string, Value>& table, const Json& name) {
    const auto it = table.find(name.get<std::string>());
    if (it == table.end()) {
        throw std::invalid_argument("no such name: " + name.dump());
    }
    return it->second;
}

void SetVersion(const Json& operation, Json&) {
    CDLPDigitalAssetsParser::SetVersion(WideOf(operation.at("value")));
}

void SetLanguage(const Json& operation, Json&) {
    CDLPDigitalAssetsParser::SetLanguage(WideOf(operation.at("value")));
}

void Import(const Json& operation, Json& result) {
    Texts vecImported;
    Texts vecSkipped;
    Texts vecSkippedAssets;
    result["result"] = CDLPTemplateParse(OS::x_wstring())
                           .DoTemplateImport(WideOf(operation.at("scope")), WideOf(operation.at("text")), vecImported,
                                             vecSkipped, vecSkippedAssets);
    result["imported"] = JsonListOf(vecImported);
    result["skipped"] = JsonListOf(vecSkipped);
    result["skipped_assets"] = JsonListOf(vecSkippedAssets);
}

/** The file lies in the working directory and is gone afterwards; without bytes there is none. */
void ImportFile(const Json& operation, Json& result) {
    OS::x_wstring strPath = L"policy.xml";
    if (!operation.at("bytes").is_null()) {
        std::ofstream("policy.xml", std::ios::binary) << BytesOf({{"hex", operation.at("bytes")}});
    }
    result["returned"] = CDLPTemplateParse(OS::x_wstring()).ImportDLPTemplateFromFile(strPath);
    std::filesystem::remove("policy.xml");
}

void Export(const Json& operation, Json& result) {
    OS::x_wstring strText;
    boost::shared_ptr<std::set<std::wstring>> pExpressions;
    boost::shared_ptr<std::set<std::wstring>> pKeywords;
    CDLPTemplateParse(OS::x_wstring())
        .DoTemplateExport(OS::x_wstring(), WideListOf(operation.at("names")), strText, pExpressions, pKeywords);
    result["text"] = JsonOf(strText);
    result["expressions"] = JsonListOf(*pExpressions);
    result["keywords"] = JsonListOf(*pKeywords);
}

void ImportAssets(const Json& operation, Json& result) {
    static const std::map<std::string, decltype(&CDLPDigitalAssetsParser::ImportKeyword)> KINDS = {
        {"all", &CDLPDigitalAssetsParser::ImportDigitalAssets},
        {"expressions", &CDLPDigitalAssetsParser::ImportExpression},
        {"keywords", &CDLPDigitalAssetsParser::ImportKeyword},
    };
    Texts vecSkipped;
    CDLPDigitalAssetsParser parser;
    result["result"] = (parser.*Choose(KINDS, operation.at("which")))(WideOf(operation.at("scope")),
                                                                      WideOf(operation.at("text")), vecSkipped);
    result["skipped"] = JsonListOf(vecSkipped);
}

/** Runs a writer of a text; the text is null when the writer left it as it was. */
void RunWriter(const std::function<bool(std::wstring&)>& fnWrite, Json& result) {
    const std::wstring strBefore = L"as it was";
    std::wstring strText = strBefore;
    result["returned"] = fnWrite(strText);
    result["text"] = strText == strBefore ? Json() : JsonOf(strText);
}

void ExportAssets(const Json& operation, Json& result) {
    static const std::map<std::string, decltype(&CDLPDigitalAssetsParser::ExportDigitalAssets)> KINDS = {
        {"document", &CDLPDigitalAssetsParser::ExportDigitalAssets},
        {"assets", &CDLPDigitalAssetsParser::GenerateDigitalAssetsXML},
    };
    const auto fnExport = Choose(KINDS, operation.at("which"));
    RunWriter(
        [&](std::wstring& strText) {
            return (CDLPDigitalAssetsParser().*fnExport)(OS::x_wstring(), WideListOf(operation.at("expressions")),
                                                         WideListOf(operation.at("keywords")), strText);
        },
        result);
}

void Root(const Json&, Json& result) {
    RunWriter([](std::wstring& strText) { return CDLPDigitalAssetsParser().GenerateRootXML(strText); }, result);
}

std::vector<CDLPSubKeyword> KeywordsOf(const Json& keywords) {
    std::vector<CDLPSubKeyword> vecKeywords;
    for (const Json& keyword : keywords) {
        vecKeywords.emplace_back(WideOf(keyword[0]), WideOf(keyword[1]), WideOf(keyword[2]), WideOf(keyword[3]));
    }
    return vecKeywords;
}

void KeywordsToXml(const Json& operation, Json& result) {
    std::vector<CDLPSubKeyword> vecKeywords = KeywordsOf(operation.at("keywords"));
    result["text"] = JsonOf(CDLPSubKeywordFormater::ToXmlFormat(vecKeywords));
}

void KeywordsFromXml(const Json& operation, Json& result) {
    std::vector<CDLPSubKeyword> vecKeywords = KeywordsOf(operation.at("keywords"));
    CDLPSubKeywordFormater::ToUIFormat(WideOf(operation.at("text")), vecKeywords);
    Json& list = result["keywords"] = Json::array();
    for (const CDLPSubKeyword& keyword : vecKeywords) {
        list.push_back({JsonOf(keyword.m_strKeyword), JsonOf(keyword.m_strDescription), JsonOf(keyword.m_strScore),
                        JsonOf(keyword.m_strCaseSensitive)});
    }
}

void TemplateToRules(const Json& operation, Json& result) {
    Texts vecRules = WideListOf(operation.at("rules"));
    Texts vecOperators = WideListOf(operation.at("operators"));
    result["returned"] = CDLPTemplateParse(WideOf(operation.at("text"))).ParseContent(vecRules, vecOperators);
    result["rules"] = JsonListOf(vecRules);
    result["operators"] = JsonListOf(vecOperators);
}

void RulesToTemplate(const Json& operation, Json& result) {
    CDLPTemplateParse parse(WideOf(operation.at("before")));
    OS::x_wstring strText;
    result["returned"] = parse.SaveToXMLStr(WideListOf(operation.at("rules")), WideListOf(operation.at("operators")),
                                            WideOf(operation.at("name")), WideOf(operation.at("display_name")),
                                            WideOf(operation.at("description")));
    parse.GetXMLContent(strText);
    result["text"] = JsonOf(strText);
}

void Check(const Json& operation, Json& result) {
    Texts vecImported;
    Texts vecInvalid;
    result["result"] =
        CTemplateMgr(OS::x_wstring()).CheckImportTemplate(WideOf(operation.at("text")), vecImported, vecInvalid);
    result["invalid"] = JsonListOf(vecInvalid);
}

void Format(const Json& operation, Json& result) {
    bool bConvert = false;
    result["result"] = CTemplateMgr(OS::x_wstring()).CheckFormat(WideOf(operation.at("text")), bConvert);
    result["convert"] = bConvert;
}

/** As an import does: the map is filled first. */
void Normalize(const Json& operation, Json& result) {
    CDLPXmlNormalizer normalizer;
    OS::x_wstring strText;
    normalizer.InitDigitalAssetsMappingTable();
    result["result"] = normalizer.NormailzeXml(WideOf(operation.at("text")), strText);
    result["text"] = JsonOf(strText);
}

void Categories(const Json& operation, Json& result) {
    CTemplateMgr::CategoryMap categories;
    result["result"] = CTemplateMgr(OS::x_wstring())
                           .MakeCategoryMap(WideOf(operation.at("text")), WideOf(operation.at("container")),
                                            WideOf(operation.at("item")), categories);
    Json& map = result["map"] = Json::object();
    for (const auto& [strTemplate, vecCategories] : categories) {
        map[OS::Utf8Lenient(strTemplate)] = JsonListOf(vecCategories);
    }
}

ESettingsKind KindOf(const Json& operation) {
    static const std::map<std::string, ESettingsKind> KINDS = {{"expression", ESettingsKind::EXPRESSION},
                                                               {"keyword", ESettingsKind::KEYWORD},
                                                               {"template", ESettingsKind::TEMPLATE}};
    return Choose(KINDS, operation.at("kind"));
}

/** @return the name that the element of a template gives it */
std::string ElementName(const Json& element) {
    CCfgSettingDLPFilterTemplate record((OS::x_wstring()));
    record.SetElement(WideOf(element));
    return record.Row().GetText(TemplateColumn::ELEMENT_NAME);
}

/** Fields that the record leaves out have their empty value. */
void Put(const Json& operation, Json&) {
    const ESettingsKind eKind = KindOf(operation);
    Json record = RecordToJson(CSettingsRow(eKind));
    record.update(operation.at("record"));
    if (eKind == ESettingsKind::TEMPLATE) {
        record["name"] = ElementName(record.at("element"));
    }
    CSettingsStore::Current().Save(RecordFromJson(eKind, record, std::string()));
}

void Remove(const Json& operation, Json&) {
    CSettingsStore::Current().Remove(KindOf(operation), operation.at("subject").get<std::string>());
}

void Find(const Json& operation, Json& result) {
    CTemplateMgr::Record pFound;
    result["returned"] = CTemplateMgr(OS::x_wstring())
                             .FindTemplate(operation.at("field").get<int>(), WideOf(operation.at("value")), pFound);
    result["subject"] = pFound ? Json(pFound->Row().GetSubject()) : Json();
}

void Metadata(const Json& operation, Json& result) {
    static const std::map<std::string, decltype(&DLPMetaDataLoaderImpl::GetRegions)> LISTS = {
        {"validators", &DLPMetaDataLoaderImpl::GetValidators},
        {"expression_types", &DLPMetaDataLoaderImpl::GetExpressionTypes},
        {"keyword_conditions", &DLPMetaDataLoaderImpl::GetKeywordConditions},
        {"industries", &DLPMetaDataLoaderImpl::GetIndustries},
        {"regions", &DLPMetaDataLoaderImpl::GetRegions},
    };
    Texts vecNames;
    Texts vecDisplayNames;
    DLPMetaDataLoaderImpl loader;
    result["returned"] = (loader.*Choose(LISTS, operation.at("list")))(vecNames, vecDisplayNames);
    result["names"] = JsonListOf(vecNames);
    result["display_names"] = JsonListOf(vecDisplayNames);
}

const std::map<std::string, void (*)(const Json&, Json&)> OPERATIONS = {
    {"set_version", SetVersion},
    {"set_language", SetLanguage},
    {"import", Import},
    {"import_file", ImportFile},
    {"export", Export},
    {"assets_import", ImportAssets},
    {"assets_export", ExportAssets},
    {"root", Root},
    {"keywords_to_xml", KeywordsToXml},
    {"keywords_from_xml", KeywordsFromXml},
    {"template_to_rules", TemplateToRules},
    {"rules_to_template", RulesToTemplate},
    {"check", Check},
    {"format", Format},
    {"normalize", Normalize},
    {"categories", Categories},
    {"put", Put},
    {"remove", Remove},
    {"find", Find},
    {"metadata", Metadata},
};

}  // namespace

void Operations::Run(const Json& operation, Json& result) {
    Choose(OPERATIONS, operation.at("op"))(operation, result);
}
