#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include <nlohmann/json.hpp>

#include "cli/check/DiagnosticsPage.h"
#include "tests/cli/ToolRun.h"

namespace {

using CheckCommand = CToolTest;
using Json = nlohmann::json;

std::string WithUnknownReference() {
    return "<SAPolicy template_version=\"3.0.1000\">\n<complianceTemplates>\n\t<template name=\"t\" "
           "display_name=\"\xE5\x90\x8D\">"
           "<matchRule><buildingBlock sourceType=\"KEYWORD\" sourceName=\"wrods\"/></matchRule></template>\n"
           "</complianceTemplates>\n</SAPolicy>\n";
}

std::string WithFixes() {
    return Documents::Policy(
        R"(<entity name="e" type="general" caseSensitive="yes" display_name="E" pre-defined="no"><!-- kept -->)"
        R"(<regularExpression>\d+</regularExpression></entity>)"
        R"(<dictionary name="d" type="threshold" threshold="2x" display_name="D">)"
        R"(<keyword score="1" caseSensitive="1">a</keyword><keyword score="99999999999">b</keyword></dictionary>)",
        R"(<template name="t" display_name="T"><matchRule>)"
        R"(<buildingBlock sourceType="ENTITY" entityHits="2 or 3" sourceName="e"/>)"
        R"(<buildingBlock sourceType="KEYWORD" sourceName="d" operation="AND"/></matchRule></template>)");
}

/** @return the dump without what a fix may change: elements and the lists' texts */
Json WithoutMarkup(const std::string& strDump) {
    Json dump = Json::parse(strDump);
    for (Json& record : dump["keyword_lists"]) {
        record.erase("text");
    }
    for (Json& record : dump["templates"]) {
        record.erase("element");
    }
    return dump;
}

}  // namespace

TEST_F(CheckCommand, WhatIsFoundIsShownWithItsLineAndWhatToDo) {
    Import(Documents::Small());
    const std::string strFile = m_dir.Write("p.xml", WithUnknownReference());
    const SToolRun run = Run({"check", strFile});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strErr, "");
    EXPECT_EQ(run.strOut,
              strFile +
                  ":3:85: error: DLP030 unknown-asset: neither the document nor the store has the keyword list "
                  "\"wrods\"\n"
                  "     3 | …name=\"\xE5\x90\x8D\"><matchRule><buildingBlock "
                  "sourceType=\"KEYWORD\" "
                  "sourceName=\"wrods\"/></matchRule></template>\n"
                  "       | " +
                  std::string(58, ' ') +
                  "^\n"
                  "  did you mean \"words\"?\n"
                  "1 error in 1 file\n");
}

TEST_F(CheckCommand, NothingIsStoredAndNoStoreIsMade) {
    RemoveStore();
    Run({"check", "-"}, Documents::Small());
    EXPECT_EQ(m_dir.Read("store.db"), "");
    Import(Documents::Small());
    const std::string strBefore = Dump();
    EXPECT_EQ(Run({"check", "-"}, Documents::Policy(Documents::Entity("new"), "")).iCode, 1);
    EXPECT_EQ(Dump(), strBefore);
}

TEST_F(CheckCommand, AnotherLanguageIsToldAndTheRestIsCheckedAllTheSame) {
    std::string strDocument = WithUnknownReference();
    strDocument.insert(9, " localization_language=\"English\"");
    const Json report = Json::parse(Run({"--json", "check", "-"}, strDocument).strOut);
    ASSERT_EQ(report["files"][0]["diagnostics"].size(), 2U);
    EXPECT_EQ(report["files"][0]["diagnostics"][0]["message"],
              "the language of the document is \"English\", and none is set here");
    EXPECT_EQ(report["files"][0]["diagnostics"][1]["code"], "DLP030");
    EXPECT_EQ(Json::parse(Run({"--json", "--language", "english", "check", "-"}, strDocument).strOut)["errors"], 1);
}

TEST_F(CheckCommand, TheExitCodeFollowsTheLevelThatIsAskedFor) {
    const std::string strNote =
        Documents::Policy(Documents::Entity("one") + Documents::Entity("two") + Documents::Dictionary("words"),
                          Documents::Template("cards", "one", "words"));
    const std::string strWarning =
        Documents::Policy(Documents::Entity("one", "colour=\"red\"") + Documents::Dictionary("words"),
                          Documents::Template("cards", "one", "words"));
    struct {
        std::vector<std::string> vecOptions;
        const std::string& strDocument;
        int iCode;
    } const aRuns[] = {
        {{}, strNote, 0},
        {{"--fail-on", "warning"}, strNote, 0},
        {{"--fail-on", "note"}, strNote, 1},
        {{"--fail-on", "note", "--allow", "DLP035"}, strNote, 0},
        {{"--strict"}, strNote, 0},
        {{}, strWarning, 0},
        {{"--fail-on", "warning"}, strWarning, 1},
        {{"--strict"}, strWarning, 1},
        {{"--strict", "--allow", "Unknown-Attribute"}, strWarning, 0},
        {{"--allow", "DLP013"}, "<SAPolicy>", 2},
        {{}, "", 2},
        {{}, "no markup", 2},
        {{}, "<SAPolicy>\xFF</SAPolicy>", 2},
        {{}, "<!DOCTYPE a><a/>", 2},
        {{}, "<other/>", 1},
    };
    for (const auto& run : aRuns) {
        std::vector<std::string> vecArguments{"check", "-"};
        vecArguments.insert(vecArguments.end(), run.vecOptions.begin(), run.vecOptions.end());
        EXPECT_EQ(RunOn("memory:", vecArguments, run.strDocument).iCode, run.iCode)
            << ::testing::PrintToString(vecArguments) << run.strDocument;
    }
}

TEST_F(CheckCommand, FoldersAreSearchedInTheOrderOfTheirPaths) {
    m_dir.Write("f/b/two.XML", Documents::Small());
    m_dir.Write("f/a.xml", "<x/>");
    m_dir.Write("f/notes.txt", "none");
    m_dir.MakeFolder("empty");
    const Json report = Json::parse(Run({"--json", "check", m_dir.Path("f"), m_dir.Path("empty")}).strOut);
    ASSERT_EQ(report["files"].size(), 3U);
    EXPECT_EQ(report["files"][0]["file"], m_dir.Path("f/a.xml"));
    EXPECT_EQ(report["files"][1]["file"], m_dir.Path("f/b/two.XML"));
    EXPECT_EQ(report["files"][2]["diagnostics"][0]["message"], "the file cannot be read: no .xml file is below it");
    EXPECT_EQ(report["verdict"], "invalid");
}

TEST_F(CheckCommand, TextEndsAfterAHundredUnlessAllIsAskedFor) {
    std::string strAssets;
    for (int i = 0; i < 1005; ++i) {
        strAssets += "<entity name=\"e" + std::to_string(i) +
                     "\" kind=\"\" type=\"Generic\" display_name=\"E\">"
                     "<regularExpression>x</regularExpression></entity>";
    }
    const std::string strDocument = Documents::Policy(strAssets, "");
    const std::string strText = Run({"check", "--assets", "-"}, strDocument).strOut;
    EXPECT_NE(strText.find("\n905 more; --all shows them\n1000 warnings in 1 file\n"), std::string::npos) << strText;
    EXPECT_NE(Run({"check", "--all", "--assets", "-"}, strDocument).strOut.find("\n1005 warnings in 1 file\n"),
              std::string::npos);
    const Json report = Json::parse(Run({"--json", "check", "--assets", "-"}, strDocument).strOut);
    EXPECT_EQ(report["files"][0]["omitted"], 5);
}

TEST_F(CheckCommand, AFixChangesNoMeaning) {
    const std::string strFile = m_dir.Write("p.xml", WithFixes());
    RunOn(Url("before.db"), {"import", strFile});
    const std::string strPreview = RunOn("memory:", {"check", "--fix", "--dry-run", strFile}).strOut;
    EXPECT_NE(strPreview.find("\n  write one of Generic, Type 1, Type 2, Type 3; --fix writes \"Generic\"\n"),
              std::string::npos)
        << strPreview;
    EXPECT_NE(strPreview.find("\n7 warnings in 1 file\n"), std::string::npos) << strPreview;
    EXPECT_EQ(m_dir.Read("p.xml"), WithFixes());

    const SToolRun run = RunOn("memory:", {"--json", "check", "--fix", strFile});
    EXPECT_EQ(run.iCode, 0);
    const Json report = Json::parse(run.strOut);
    EXPECT_EQ(report["warnings"], 1) << run.strOut;  // pre-defined="no" of an asset is not false to everybody
    std::string strExpected = WithFixes();
    const std::pair<const char*, const char*> aReplaced[] = {
        {"general", "Generic"},           {"\"yes\"", "\"false\""},      {"2x", "2"},
        {"tive=\"1\"", "tive=\"false\""}, {"99999999999", "2147483647"}, {"2 or 3", "2"},
    };
    for (const auto& [pFrom, pTo] : aReplaced) {
        strExpected.replace(strExpected.find(pFrom), std::string(pFrom).size(), pTo);
    }
    EXPECT_EQ(m_dir.Read("p.xml"), strExpected);

    RunOn(Url("after.db"), {"import", strFile});
    EXPECT_EQ(WithoutMarkup(RunOn(Url("after.db"), {"store", "dump"}).strOut),
              WithoutMarkup(RunOn(Url("before.db"), {"store", "dump"}).strOut));
    EXPECT_EQ(Json::parse(RunOn("memory:", {"--json", "check", strFile}).strOut)["warnings"], 1);
}

TEST_F(CheckCommand, ABrokenPatternIsShownInTheFileThroughReferencesAndSections) {
    const std::string strDocument = Documents::Policy(
        "<entity name=\"e\" type=\"Generic\" display_name=\"E\"><regularExpression>\n&lt;&#x1F600;<!-- c "
        "--><![CDATA[a\xC3\xA4]]>[b"
        "</regularExpression></entity>",
        "");
    const Json report = Json::parse(Run({"--json", "check", "--assets", "-"}, strDocument).strOut);
    ASSERT_EQ(report["files"][0]["diagnostics"].size(), 1U) << report.dump();
    EXPECT_EQ(report["files"][0]["diagnostics"][0]["code"], "DLP040");
    EXPECT_EQ(report["files"][0]["diagnostics"][0]["line"], 2);
    EXPECT_EQ(report["files"][0]["diagnostics"][0]["column"], 40);
}

TEST_F(CheckCommand, KeywordsAreTheSameInAnyCaseUnlessBothMindIt) {
    struct {
        std::vector<std::pair<const char*, bool>> vecKeywords;  ///< and whether case matters
        std::vector<int> vecTwice;                              ///< which of them are told, from 0
    } const aLists[] = {
        {{{"a", true}, {"A", true}, {"b", true}}, {}},
        {{{"a", true}, {"a", true}}, {1}},
        {{{"a", false}, {"A", true}}, {1}},
        {{{"a", true}, {"A", false}, {"A", true}}, {1, 2}},
        {{{"ab", true}, {"aB", true}, {"Ab", false}, {"AB", true}}, {2, 3}},
        {{{"a", true}, {"a ", true}}, {}},
    };
    for (const auto& list : aLists) {
        std::string strDocument =
            "<SAPolicy template_version=\"3\"><digitalAssets><dictionary name=\"d\" type=\"Any\" "
            "display_name=\"D\">\n";
        for (const auto& [pKeyword, bCase] : list.vecKeywords) {
            strDocument += std::string("<keyword caseSensitive=\"") + (bCase ? "true" : "false") + "\">" + pKeyword +
                           "</keyword>\n";
        }
        const Json report = Json::parse(
            Run({"--json", "check", "--assets", "-"}, strDocument + "</dictionary></digitalAssets></SAPolicy>").strOut);
        std::vector<int> vecTwice;
        for (const Json& diagnostic : report["files"][0]["diagnostics"]) {
            EXPECT_EQ(diagnostic["code"], "DLP052");
            vecTwice.push_back(diagnostic["line"].get<int>() - 2);
        }
        EXPECT_EQ(vecTwice, list.vecTwice) << strDocument;
    }
}

TEST_F(CheckCommand, TheStoreThatCannotBeOpenedEndsTheCheck) {
    m_dir.Write("none.db", "this is no database of anything, and long enough to be told apart from an empty file");
    const SToolRun run = RunOn(Url("none.db"), {"check", "-"}, Documents::Small());
    EXPECT_EQ(run.iCode, 4);
    EXPECT_EQ(run.strOut, "");
    EXPECT_EQ(RunOn(Url("none.db"), {"check", "--no-store", "-"}, Documents::Small()).iCode, 0);
}

TEST(CheckProgram, AClosedPipeEndsQuietly) {
    const SToolRun run = CProgram::Shell(
        "\"$DLPCTL\" explain --markdown | head -1; \"$DLPCTL\" --store memory: check /dev/null >/dev/full");
    EXPECT_EQ(run.iCode, 4);
    EXPECT_EQ(run.strOut, "# Diagnostics\n");
}

TEST_F(CheckCommand, ExplainShowsOneCodeWhole) {
    EXPECT_EQ(Get({"explain", "hits-below-one"}),
              "DLP061 hits-below-one (warning)\n"
              "\n"
              "… hits of the expression are asked for.\n"
              "\n"
              "Without entityHits it is 0. Whether 0 hits are found everywhere or nowhere depends on the engine.\n"
              "\n"
              "What to do: Write entityHits=\"1\" or more.\n"
              "\n"
              "Wrong:\n"
              "\n"
              "  <template name=\"notes\" display_name=\"Notes\">\n"
              "    <matchRule><buildingBlock sourceType=\"ENTITY\" sourceName=\"card\"/></matchRule>\n"
              "  </template>\n"
              "\n"
              "Right:\n"
              "\n"
              "  <template name=\"notes\" display_name=\"Notes\">\n"
              "    <matchRule><buildingBlock sourceType=\"ENTITY\" entityHits=\"1\" sourceName=\"card\"/></matchRule>\n"
              "  </template>\n");
    EXPECT_EQ(Json::parse(Get({"--json", "explain", "dlp061", "DLP001"}))["codes"].size(), 2U);
    EXPECT_EQ(Json::parse(Get({"--json", "explain"}))["codes"].size(), GetCodeTable().size());
    EXPECT_EQ(Get({"explain"}).find("CODE    LEVEL    NAME"), 0U);
}

TEST(DiagnosticsPage, IsWhatTheTableSays) {
    std::ifstream page(DLP_SOURCE_DIR "/docs/diagnostics.md");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(page), {}), MakeDiagnosticsPage());
}
