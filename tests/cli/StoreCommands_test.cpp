#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "platform/store/CSettingsStore.h"
#include "tests/cli/ToolRun.h"
#include "tests/support/StoreDump.h"

namespace {

using StoreCommands = CToolTest;
using Json = nlohmann::ordered_json;

constexpr const char EMPTY_DUMP[] =
    "{\n"
    "  \"format\": \"dlpctl-dump/1\",\n"
    "  \"expressions\": [],\n"
    "  \"keyword_lists\": [],\n"
    "  \"templates\": []\n"
    "}\n";

/** A store with values that a careless dump would lose. */
void FillAwkwardly(const std::string& strUrl) {
    const std::unique_ptr<CSettingsStore> pStore = CSettingsStore::Make(strUrl);
    const char* const aTexts[] = {"", "\x01\t\r\n\"\\/", "é€𐍈\xef\xbf\xbf", "</script>&amp;", " "};
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        const STable& table = GetSettingsTable(eKind);
        for (std::size_t i = 0; i < std::size(aTexts); ++i) {
            CSettingsRow row(eKind);
            for (std::size_t j = 0; j < table.iColumns; ++j) {
                const std::string strText = aTexts[(i + j) % std::size(aTexts)];
                switch (table.pColumns[j].eType) {
                    case EColumnType::TEXT:
                        row.SetText(j, strText);
                        break;
                    case EColumnType::NULLABLE_TEXT:
                        break;
                    case EColumnType::NUMBER:
                        row.SetNumber(j, i % 2 == 0 ? -2147483647 - 1 : 2147483647);
                        break;
                    case EColumnType::FLAG:
                        row.SetFlag(j, i % 2 == 0);
                        break;
                    case EColumnType::TEXT_LIST:
                        row.SetList(j, std::vector<std::string>(i, strText));
                        break;
                }
            }
            row.SetText(0, "subject " + std::to_string(i));
            pStore->Save(row);
        }
    }
    CSettingsRow named(ESettingsKind::TEMPLATE);
    named.SetText(TemplateColumn::SUBJECT, "named");
    named.SetText(TemplateColumn::ELEMENT_NAME, "a\nb");
    named.SetText(TemplateColumn::ELEMENT, "<template name=\"a&#10;b\"/>");
    pStore->Save(named);
}

}  // namespace

TEST_F(StoreCommands, AnEmptyStoreHasThreeEmptyLists) {
    EXPECT_EQ(Dump(), EMPTY_DUMP);
}

TEST_F(StoreCommands, ADumpHoldsEachFieldInItsPlace) {
    Import(Documents::Small());
    const Json dump = Json::parse(Dump());
    EXPECT_EQ(dump["expressions"][0].dump(),
              R"({"subject":"ORVAL_SUB_CFG_DLP_EXPRESSIONone","name":"one","display_name":"Expression one",)"
              R"("description":"","pre_defined":false,"modified":false,"scope":"","type":"Generic","validator":"",)"
              R"("case_sensitive":false,"min_length":0,"max_length":0,"suffix_length":0,"min_left_radius":0,)"
              R"("max_left_radius":0,"max_right_radius":0,"pattern":"\\d+","alphabet_charset":"","display_format":"",)"
              R"("example":""})");
    Json keywords = dump["keyword_lists"][0];
    EXPECT_EQ(keywords["keywords"].dump(),
              R"([{"keyword":"one","description":"","score":1,"case_sensitive":false},)"
              R"({"keyword":"two","description":"second","score":5,"case_sensitive":true}])");
    EXPECT_EQ(keywords["text"].get<std::string>().find("<dictionary name=\"words\""), 0U);
    keywords.erase("text");
    keywords.erase("keywords");
    EXPECT_EQ(keywords.dump(),
              R"({"subject":"ORVAL_SUB_CFG_DLP_KEYWORDwords","name":"words","display_name":"List words",)"
              R"("description":"","pre_defined":false,"modified":false,"scope":"","condition":"Any","threshold":0,)"
              R"("number":0})");
    EXPECT_EQ(dump["templates"][0].dump(),
              R"({"subject":"ORVAL_SUB_CFG_DLP_TEMPLATEcards","name":"cards","display_name":"Template cards",)"
              R"("description":"What it is for","pre_defined":false,"scope":"","industries":["finance"],)"
              R"("regions":["eu","us"],"element":"<template name=\"cards\"><matchRule><buildingBlock )"
              R"(sourceType=\"ENTITY\" entityHits=\"2\" sourceName=\"one\"/><buildingBlock sourceType=\"KEYWORD\" )"
              R"(sourceName=\"words\" operation=\"AND\"/></matchRule></template>","match_rules":[{"operation":"",)"
              R"("blocks":[{"source_type":"ENTITY","entity_hits":2,"source_name":"one","operation":""},)"
              R"({"source_type":"KEYWORD","entity_hits":0,"source_name":"words","operation":"AND"}]}]})");
}

TEST_F(StoreCommands, ADumpIsLaidOutForComparison) {
    CSettingsRow row(ESettingsKind::TEMPLATE);
    row.SetText(TemplateColumn::SUBJECT, "é");
    row.SetList(TemplateColumn::REGIONS, {"a\nb"});
    CSettingsStore::Make(Url("store.db"))->Save(row);
    EXPECT_EQ(Dump(), R"({
  "format": "dlpctl-dump/1",
  "expressions": [],
  "keyword_lists": [],
  "templates": [
    {
      "subject": "é",
      "name": "",
      "display_name": "",
      "description": "",
      "pre_defined": false,
      "scope": "",
      "industries": [],
      "regions": [
        "a\nb"
      ],
      "element": "",
      "match_rules": []
    }
  ]
}
)");
}

TEST_F(StoreCommands, LoadBringsBackWhatWasDumped) {
    FillAwkwardly(Url("store.db"));
    const std::string strDump = Dump();
    Import(Documents::Small());
    const SToolRun run = Run({"store", "load", "-"}, strDump);
    EXPECT_EQ(run.iCode, 0) << run.strErr;
    EXPECT_EQ(run.strOut,
              "               REPLACED  LOADED\n"
              "expressions           7       5\n"
              "keyword lists         6       5\n"
              "templates             7       6\n");
    EXPECT_EQ(Dump(), strDump);
    EXPECT_EQ(RunOn(Url("other.db"), {"store", "load", "-"}, strDump).iCode, 0);
    EXPECT_EQ(DumpStore(*CSettingsStore::Make(Url("other.db"))), DumpStore(*CSettingsStore::Make(Url("store.db"))));
}

TEST_F(StoreCommands, LoadTellsInJsonWhatItReplaced) {
    Import(Documents::Small());
    const std::string strFile = m_dir.Write("empty.json", EMPTY_DUMP);
    EXPECT_EQ(Get({"--json", "store", "load", strFile}),
              R"({"format":"dlpctl-store-load/1","file":")" + strFile +
                  R"(","verdict":"done","replaced":{"expressions":2,"keyword_lists":1,"templates":1},)"
                  R"("loaded":{"expressions":0,"keyword_lists":0,"templates":0}})"
                  "\n");
    EXPECT_EQ(Dump(), EMPTY_DUMP);
}

TEST_F(StoreCommands, LoadReadsNothingThatFollowsFromOtherFields) {
    Import(Documents::Small());
    const std::string strDump = Dump();
    Json dump = Json::parse(strDump);
    dump["templates"][0]["match_rules"] = "whatever";
    dump["keyword_lists"][0]["keywords"] = 1;
    EXPECT_EQ(Run({"store", "load", "-"}, dump.dump()).iCode, 0);
    EXPECT_EQ(Dump(), strDump);
}

TEST_F(StoreCommands, LoadRefusesWhatIsNoDumpAndNamesThePlace) {
    Import(Documents::Small());
    const std::string strDump = Dump();
    const Json good = Json::parse(strDump);
    const auto fnChanged = [&](const auto& fnChange) {
        Json changed = good;
        fnChange(changed);
        return changed.dump();
    };
    const std::pair<std::string, const char*> aBad[] = {
        {"[]", "/format: \"dlpctl-dump/1\" is needed here; dlpctl store dump writes such files"},
        {"{}", "/format: \"dlpctl-dump/1\" is needed here; dlpctl store dump writes such files"},
        {fnChanged([](Json& dump) { dump["format"] = "dlpctl-dump/2"; }),
         "/format: \"dlpctl-dump/1\" is needed here; dlpctl store dump writes such files"},
        {fnChanged([](Json& dump) { dump.erase("templates"); }), "/templates: a list of records is needed here"},
        {fnChanged([](Json& dump) { dump["templates"] = Json::object(); }),
         "/templates: a list of records is needed here"},
        {fnChanged([](Json& dump) { dump["expressions"][1] = 1; }), "/expressions/1: a record is needed here"},
        {fnChanged([](Json& dump) { dump["expressions"][1].erase("pattern"); }),
         "/expressions/1: the field \"pattern\" is missing"},
        {fnChanged([](Json& dump) { dump["expressions"][0]["pattern"] = nullptr; }),
         "/expressions/0/pattern: a text is needed here"},
        {fnChanged([](Json& dump) { dump["templates"][0]["name"] = 1; }), "/templates/0/name: a text is needed here"},
        {fnChanged([](Json& dump) { dump["expressions"][0]["pre_defined"] = 1; }),
         "/expressions/0/pre_defined: true or false is needed here"},
        {fnChanged([](Json& dump) { dump["keyword_lists"][0]["number"] = 1.5; }),
         "/keyword_lists/0/number: a whole number of 32 bits is needed here"},
        {fnChanged([](Json& dump) { dump["keyword_lists"][0]["number"] = 2147483648; }),
         "/keyword_lists/0/number: a whole number of 32 bits is needed here"},
        {fnChanged([](Json& dump) { dump["keyword_lists"][0]["number"] = -2147483649; }),
         "/keyword_lists/0/number: a whole number of 32 bits is needed here"},
        {fnChanged([](Json& dump) { dump["templates"][0]["regions"] = "eu"; }),
         "/templates/0/regions: a list of texts is needed here"},
        {fnChanged([](Json& dump) { dump["templates"][0]["regions"][0] = false; }),
         "/templates/0/regions: a list of texts is needed here"},
        {fnChanged([](Json& dump) { dump["expressions"][1]["subject"] = dump["expressions"][0]["subject"]; }),
         "/expressions/1/subject: another record of the list has this subject"},
    };
    for (const auto& [strBytes, pReason] : aBad) {
        const std::string strFile = m_dir.Write("bad.json", strBytes);
        const SToolRun run = Run({"store", "load", strFile});
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.strOut, "");
        EXPECT_EQ(run.strErr, "dlpctl: " + strFile + ": " + pReason + '\n');
        EXPECT_EQ(Dump(), strDump);
    }
}

TEST_F(StoreCommands, LoadRefusesTextsThatNoStoreKeeps) {
    Json dump = Json::parse(EMPTY_DUMP);
    Import(Documents::Small());
    dump["expressions"].push_back(Json::parse(Dump())["expressions"][0]);
    dump["expressions"][0]["pattern"] = std::string("a\0b", 3);
    const SToolRun run = Run({"store", "load", "-"}, dump.dump());
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.strErr.find("dlpctl: -: /expressions/0: "), 0U) << run.strErr;
    EXPECT_NE(run.strErr.find("pattern"), std::string::npos) << run.strErr;
}

TEST_F(StoreCommands, LoadTakesWhatOnlyAProgramCanHaveStored) {
    CSettingsRow row(ESettingsKind::EXPRESSION);
    row.SetText(AssetColumn::NAME, "\x01");
    row.SetText(ExpressionColumn::PATTERN,
                "a\x01\xEF\xBF\xBE"
                "b");
    CSettingsStore::Make(Url("store.db"))->Save(row);
    const std::string strDump = Dump();
    EXPECT_EQ(Run({"export", "--all"}).iCode, 0);  // it has no template that would need the expression
    EXPECT_EQ(Run({"assets", "export", "--all"}).iCode, 2);
    EXPECT_EQ(RunOn(Url("copy.db"), {"-q", "store", "load", "-"}, strDump).strErr, "");
    EXPECT_EQ(RunOn(Url("copy.db"), {"store", "dump"}).strOut, strDump);
}

TEST_F(StoreCommands, LoadRefusesATemplateWhoseElementHasAnotherName) {
    Import(Documents::Small());
    Json dump = Json::parse(Dump());
    dump["templates"][0]["name"] = "bills";
    const SToolRun run = RunOn(Url("copy.db"), {"store", "load", "-"}, dump.dump());
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.strErr, "dlpctl: -: /templates/0/name: the element's name is \"cards\"; write the same here\n");
}

TEST_F(StoreCommands, LoadRefusesWhatIsNoJsonWithItsPlace) {
    const std::pair<const char*, const char*> aBad[] = {
        {"",
         ":1:1: no JSON: syntax error while parsing value - unexpected end of input; expected '[', '{', or a literal"},
        {"{\n  \"é\": x", ":2:8: no JSON: syntax error while parsing value - invalid literal; last read: '\"é\": x'"},
        {"{} {}", ":1:4: no JSON: syntax error while parsing value - unexpected '{'; expected end of input"},
        {"{\"a\": \"\xff\"}",
         ":1:8: no JSON: syntax error while parsing value - invalid string: ill-formed UTF-8 byte; last read: "
         "'\"\xEF\xBF\xBD'"},
        {R"({"format": "a", "format": "b"})", ": the member \"format\" stands twice in one object"},
        {R"([{"a": {}, "b": {"a": 1}, "c": {"d": 1, "d": 1}}])", ": the member \"d\" stands twice in one object"},
    };
    for (const auto& [pBytes, pSaid] : aBad) {
        const SToolRun run = Run({"store", "load", "-"}, pBytes);
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.strErr.find(std::string("dlpctl: -") + pSaid), 0U) << run.strErr;
        EXPECT_EQ(run.strErr.find('\n'), run.strErr.size() - 1) << run.strErr;
    }
    EXPECT_EQ(Run({"store", "load", m_dir.Path("none")}).strErr,
              "dlpctl: " + m_dir.Path("none") + ": No such file or directory\n");
    EXPECT_EQ(Run({"--json", "store", "load", m_dir.Path("none")}).strOut,
              R"({"format":"dlpctl-store-load/1","verdict":"invalid","message":")" + m_dir.Path("none") +
                  R"(: No such file or directory"})"
                  "\n");
    EXPECT_EQ(RunOn(Url("not-made.db"), {"store", "load", m_dir.Path("none")}).iCode, 2);
    EXPECT_EQ(m_dir.Read("not-made.db"), "");
}

TEST_F(StoreCommands, ManyMembersAreRefusedBeforeTheyCostTime) {
    const auto fnMembers = [](int iMembers) {
        std::string strObject = "{";
        for (int i = 0; i < iMembers; ++i) {
            strObject += (i == 0 ? "\"k" : ",\"k") + std::to_string(i) + "\":1";
        }
        return strObject + '}';
    };
    const std::string strSaid = "dlpctl: -: an object has more than 256 members\n";
    EXPECT_EQ(Run({"store", "load", "-"}, fnMembers(1000000)).strErr, strSaid);
    EXPECT_EQ(Run({"store", "load", "-"}, fnMembers(257)).strErr, strSaid);
    EXPECT_NE(Run({"store", "load", "-"}, fnMembers(256)).strErr, strSaid);
}

TEST_F(StoreCommands, DeepJsonIsRefusedWithoutRecursion) {
    constexpr std::size_t DEEP = 1000000;
    const auto fnNested = [](std::size_t iLevels) { return std::string(iLevels, '[') + std::string(iLevels, ']'); };
    std::string strNested;
    for (std::size_t i = 0; i < DEEP; ++i) {
        strNested += "{\"a\":";
    }
    const std::string strSaid = "dlpctl: -: values are nested more than 256 deep\n";
    for (const std::string& strDump :
         {std::string(DEEP, '['), fnNested(DEEP), fnNested(257), strNested, "{\"a\":" + fnNested(DEEP) + ",\"b\":1}"}) {
        const SToolRun run = Run({"store", "load", "-"}, strDump);
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.strErr, strSaid);
    }
    EXPECT_NE(Run({"store", "load", "-"}, fnNested(256)).strErr, strSaid);
}

TEST_F(StoreCommands, ADumpToAFileIsAnsweredInJson) {
    Import(Documents::Small());
    const std::string strFile = m_dir.Path("dump.json");
    EXPECT_EQ(Json::parse(Get({"--json", "store", "dump", "-o", strFile})),
              Json({{"format", "dlpctl-dump/1"},
                    {"output", strFile},
                    {"verdict", "done"},
                    {"dumped", {{"expressions", 2}, {"keyword_lists", 1}, {"templates", 1}}}}));
    EXPECT_EQ(m_dir.Read("dump.json"), Dump());
    EXPECT_EQ(Get({"--json", "store", "dump"}), Dump());
    EXPECT_EQ(Get({"--json", "store", "dump", "-o", "-"}), Dump());
}

TEST_F(StoreCommands, ADumpGoesToAFileWholeOrNotAtAll) {
    EXPECT_EQ(Get({"store", "dump", "-o", m_dir.Path("dump.json")}), "");
    EXPECT_EQ(m_dir.Read("dump.json"), EMPTY_DUMP);
    EXPECT_EQ(Run({"store", "dump", "-o", m_dir.Path("none/dump.json")}).iCode, 4);
}

TEST_F(StoreCommands, InfoShowsWhatIsInUse) {
    Import(Documents::Small());
    const std::string strHome = m_dir.Path("home");
    EXPECT_EQ(Json::parse(Get({"--language", "Latin", "--json", "store", "info"})),
              Json({{"format", "dlpctl-store-info/1"},
                    {"verdict", "done"},
                    {"store", Url("store.db")},
                    {"engine", CSettingsStore::Make("sqlite:" + m_dir.Path("store.db"))->GetInfo().strEngine},
                    {"schema", SETTINGS_SCHEMA_VERSION},
                    {"expressions", 2},
                    {"keyword_lists", 1},
                    {"templates", 1},
                    {"installation_directory", strHome},
                    {"policy_file", {{"path", strHome + "/config/PredefinedDLPPolicy.xml"}, {"found", true}}},
                    {"map_file", {{"path", strHome + "/config/cfg_dlp_da_map.txt"}, {"found", true}}},
                    {"language", "Latin"},
                    {"document_version", "3.0.1000"},
                    {"tool_version", "0.1.0"}}));
    m_dir.MakeFolder("empty");
    const std::string strEmpty = m_dir.Path("empty");
    const SToolRun run = RunOn("memory:", {"--home", strEmpty, "store", "info"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut,
              "store                   memory:\n"
              "engine                  memory\n"
              "schema                  3\n"
              "expressions             0\n"
              "keyword_lists           0\n"
              "templates               0\n"
              "installation_directory  " +
                  strEmpty +
                  "\n"
                  "policy_file             " +
                  strEmpty +
                  "/config/PredefinedDLPPolicy.xml (missing)\n"
                  "map_file                " +
                  strEmpty +
                  "/config/cfg_dlp_da_map.txt (missing)\n"
                  "language\n"
                  "document_version        3.0.1000\n"
                  "tool_version            0.1.0\n");
}

TEST_F(StoreCommands, AStoreThatCannotBeOpenedIsFour) {
    const std::string strFile = m_dir.Write("no.db", "this is no database, and long enough to be looked at as one");
    for (const std::string& strUrl : {"sqlite:" + strFile, std::string("sqlite:/dev/null/x.db")}) {
        for (const std::vector<std::string>& vecCommand : {std::vector<std::string>{"list", "templates"},
                                                           {"store", "info"},
                                                           {"store", "dump"},
                                                           {"export", "--all"}}) {
            const SToolRun run = RunOn(strUrl, vecCommand);
            EXPECT_EQ(run.iCode, 4);
            EXPECT_EQ(run.strOut, "");
            EXPECT_EQ(run.strErr.find("dlpctl: settings store "), 0U) << run.strErr;
            EXPECT_EQ(run.strErr.find('\n'), run.strErr.size() - 1) << run.strErr;
        }
    }
    EXPECT_EQ(Json::parse(RunOn("sqlite:" + strFile, {"--json", "list", "templates"}).strOut)["verdict"], "store");
}

TEST_F(StoreCommands, WithoutAnyStoreOrHomeTheConfigurationIsWanting) {
    ::unsetenv("DLP_STORE");
    ::unsetenv("XDG_DATA_HOME");
    ::unsetenv("HOME");
    const SToolRun run = Run({"list", "templates"});
    EXPECT_EQ(run.iCode, 3);
    EXPECT_NE(run.strErr.find("DLP_STORE"), std::string::npos) << run.strErr;
}
