#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>

#include <nlohmann/json.hpp>

#include "cli/check/DiagnosticsPage.h"
#include "tests/cli/ToolRun.h"
#include "tests/cli/Unprivileged.h"

namespace {

using CheckCommand = CToolTest;
using Json = nlohmann::json;

std::string WithUnknownReference() {
    return "<SAPolicy template_version=\"3.0.1000\">\n<complianceTemplates>\n\t<template name=\"t\" "
           "display_name=\"\xE5\x90\x8D\">"
           "<matchRule><buildingBlock sourceType=\"KEYWORD\" sourceName=\"wrods\"/></matchRule></template>\n"
           "</complianceTemplates>\n</SAPolicy>\n";
}

/** Values in other words than an export's, and some that are no words for what is read. */
std::string WithFixes() {
    return Documents::Policy(
        R"(<entity name="e" type="GENERIC" caseSensitive="no" display_name="E" pre-defined="no"><!-- kept -->)"
        R"(<regularExpression>\d+</regularExpression></entity>)"
        R"(<entity name="g" type="general" caseSensitive="yes" display_name="G" pre-defined="FALSE">)"
        R"(<regularExpression>\d</regularExpression></entity>)"
        R"(<dictionary name="d" type="threshold" threshold=" 2" display_name="D">)"
        R"(<keyword score="+1" caseSensitive="TRUE">a</keyword><keyword score="99999999999">b</keyword>)"
        R"(<keyword score="2x" caseSensitive="0">c</keyword></dictionary>)",
        R"(<template name="t" display_name="T" pre-defined="off"><matchRule>)"
        R"(<buildingBlock sourceType="ENTITY" entityHits="002" sourceName="e"/>)"
        R"(<buildingBlock sourceType="ENTITY" entityHits="2 or 3" sourceName="g" operation="AND"/>)"
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

/** @return line, code and severity of what is found, a row each */
std::string Rows(const std::string& strReport) {
    std::string strRows;
    const Json report = Json::parse(strReport);
    for (const Json& diagnostic : report["files"][0]["diagnostics"]) {
        strRows += std::to_string(diagnostic["line"].get<int>()) + ' ' + diagnostic["code"].get<std::string>() + ' ' +
                   diagnostic["severity"].get<std::string>() + '\n';
    }
    return strRows;
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
        {{"--fail-on", "note", "--allow", "DLP035", "--allow", "DLP047"}, strNote, 0},
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

TEST_F(CheckCommand, FolderThatCannotBeReadIsTold) {
    m_dir.Write("f/a.xml", Documents::Small());
    const std::string strFolder = m_dir.MakeFolder("f/closed");
    std::filesystem::permissions(m_dir.Path(), std::filesystem::perms(0755));
    std::filesystem::permissions(strFolder, std::filesystem::perms::none);
    const CUnprivileged unprivileged;
    const SToolRun run = Run({"check", m_dir.Path("f")});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(
        run.strOut.substr(0, run.strOut.find('\n')),
        m_dir.Path("f") +
            ": error: DLP001 unreadable: the file cannot be read: a folder's list cannot be read: Permission denied");
}

TEST_F(CheckCommand, TextEndsAfterAHundredUnlessAllIsAskedFor) {
    std::string strAssets;
    for (int i = 0; i < 1005; ++i) {
        const std::string strName = "e" + std::to_string(i);
        strAssets += "<entity name=\"" + strName + "\" kind=\"\" type=\"Generic\" display_name=\"" + strName +
                     "\"><regularExpression>" + strName + "</regularExpression></entity>";
    }
    const std::string strDocument = Documents::Policy(strAssets, "");
    const std::string strText = Run({"check", "--assets", "-"}, strDocument).strOut;
    EXPECT_NE(strText.find("\n905 more; --all shows them\n1005 warnings in 1 file\n"), std::string::npos) << strText;
    EXPECT_NE(Run({"check", "--all", "--assets", "-"}, strDocument).strOut.find("\n1005 warnings in 1 file\n"),
              std::string::npos);
    const Json report = Json::parse(Run({"--json", "check", "--assets", "-"}, strDocument).strOut);
    EXPECT_EQ(report["files"][0]["omitted"], 5);
    EXPECT_EQ(report["warnings"], 1005);
}

TEST_F(CheckCommand, AFixLeavesNothingOutHoweverManyThereAre) {
    std::string strAssets;
    for (int i = 0; i < 1005; ++i) {
        strAssets += Documents::Entity("e" + std::to_string(i), "caseSensitive=\"no\"");
    }
    const std::string strFile = m_dir.Write("p.xml", Documents::Policy(strAssets, ""));
    EXPECT_EQ(Run({"check", "--assets", "--fix", strFile}).iCode, 0);
    EXPECT_EQ(m_dir.Read("p.xml").find("\"no\""), std::string::npos);
}

TEST_F(CheckCommand, AFixChangesNoMeaningAndHidesNoMistake) {
    const std::string strFile = m_dir.Write("p.xml", WithFixes());
    RunOn(Url("before.db"), {"import", strFile});
    const std::string strPreview = RunOn("memory:", {"check", "--fix", "--dry-run", strFile}).strOut;
    EXPECT_NE(strPreview.find("\n  write it as it is read; --fix writes \"Generic\"\n"), std::string::npos)
        << strPreview;
    EXPECT_NE(strPreview.find("\n  did you mean \"Generic\"?\n"), std::string::npos) << strPreview;
    EXPECT_EQ(m_dir.Read("p.xml"), WithFixes());

    const std::string strFixed = RunOn("memory:", {"check", "--fix", "--allow", "DLP047", strFile}).strOut;
    const std::string strEnd =
        "\n10 values were fixed\n6 values that may be mistakes were left as they are: correct them by hand\n"
        "6 warnings in 1 file\n";
    EXPECT_EQ(strFixed.substr(strFixed.size() - strEnd.size()), strEnd);
    std::string strExpected = WithFixes();
    const std::pair<const char*, const char*> aReplaced[] = {
        {"GENERIC", "Generic"}, {"ive=\"no\"", "ive=\"false\""},
        {"FALSE", "false"},     {"\"threshold\"", "\"Threshold\""},
        {"\" 2\"", "\"2\""},    {"+1", "1"},
        {"TRUE", "true"},       {"ive=\"0\"", "ive=\"false\""},
        {"off", "false"},       {"002", "2"},
    };
    for (const auto& [pFrom, pTo] : aReplaced) {
        strExpected.replace(strExpected.find(pFrom), std::string(pFrom).size(), pTo);
    }
    EXPECT_EQ(m_dir.Read("p.xml"), strExpected);

    RunOn(Url("after.db"), {"import", strFile});
    EXPECT_EQ(WithoutMarkup(RunOn(Url("after.db"), {"store", "dump"}).strOut),
              WithoutMarkup(RunOn(Url("before.db"), {"store", "dump"}).strOut));
    std::string strLeft;
    const Json report = Json::parse(RunOn("memory:", {"--json", "check", strFile}).strOut);
    for (const Json& diagnostic : report["files"][0]["diagnostics"]) {
        strLeft += diagnostic["code"].get<std::string>() + ' ' + diagnostic["message"].get<std::string>() + '\n';
        EXPECT_EQ(diagnostic["replacement"], Json());
    }
    EXPECT_EQ(strLeft,
              "DLP026 pre-defined is \"no\", which is read as false\n"  // of an asset it is not false to everybody
              "DLP025 there is no type \"general\"; it is read as Generic\n"
              "DLP026 caseSensitive is \"yes\", which is read as false\n"
              "DLP027 score is \"99999999999\", which is read as 2147483647\n"
              "DLP027 score is \"2x\", which is read as 2\n"
              "DLP027 entityHits is \"2 or 3\", which is read as 2\n");
    EXPECT_EQ(RunOn("memory:", {"check", "--fix",
                                m_dir.Write("q.xml", Documents::Policy(Documents::Entity("e", "caseSensitive=\"yes\""),
                                                                       Documents::Template("t", "e", "w")))})
                      .strOut.find("\n1 value that may be a mistake was left as it is: correct it by hand\n") ==
                  std::string::npos,
              false);
}

TEST_F(CheckCommand, AFixReportsPlacesOfWhatItWrote) {
    const std::string strDocument = Documents::Policy(
        "<entity name=\"e\" kind=\"\" type=\"GENERIC\" caseSensitive=\"off\" mode=\"\" "
        "display_name=\"E\"><regularExpression>e</regularExpression></entity>",
        "");
    for (const char* pFormat : {"text", "github", "sarif", "junit", "json"}) {
        const std::string strFile = m_dir.Write("p.xml", strDocument);
        const auto fnRun = [&](std::vector<std::string> vecArguments) {
            vecArguments.insert(vecArguments.begin(), {"check", "--assets", "--format", pFormat});
            vecArguments.push_back(strFile);
            return Run(vecArguments).strOut;
        };
        const std::string strPreview = fnRun({"--fix", "--dry-run"});
        const std::string strFixing = fnRun({"--fix"});
        const std::string strAfter = fnRun({});
        EXPECT_NE(strPreview, strAfter);
        const std::string strFormat = pFormat;
        if (strFormat == "github" || strFormat == "sarif") {  // they leave out what was fixed
            EXPECT_EQ(strFixing, strAfter);
        }
        if (strFormat == "text") {
            EXPECT_NE(strFixing.find("p.xml:1:154: "), std::string::npos) << strFixing;
            EXPECT_NE(strAfter.find("p.xml:1:154: "), std::string::npos) << strAfter;
        }
    }
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

TEST_F(CheckCommand, ForeignChildrenOfATemplateAreCheckedAsWhatTheyAreReadAs) {
    Import(Documents::Small());
    EXPECT_EQ(
        Run({"check", "--format", "github", "-"},
            "<SAPolicy template_version=\"3\">\n<complianceTemplates>\n<template name=\"t\" display_name=\"T\">\n"
            "<matchrule><buildingBlock sourceType=\"ENTITY\" entityHits=\"1\" sourceName=\"tow\"/></matchrule>\n"
            "<note><x sourceType=\"KEYWORD\" sourceName=\"words\" operation=\"EXCEPT\"/></note>\n"
            "</template>\n</complianceTemplates></SAPolicy>")
            .strOut,
        "::warning file=-,line=4,col=1,title=DLP016 foreign-rule::\"matchrule\" is read as a rule: P:tow(1), whatever "
        "its name; did you mean \"matchRule\"?\n"
        "::error file=-,line=4,col=62,title=DLP030 unknown-asset::neither the document nor the store has the "
        "expression \"tow\"; did you mean \"two\"?\n"
        "::warning file=-,line=5,col=1,title=DLP016 foreign-rule::\"note\" is read as a rule: K:words, whatever its "
        "name; take it out of the template\n");
}

TEST_F(CheckCommand, WhatIsLostIsAnErrorWithTheNameThatMayBeMeant) {
    Import(Documents::Small());
    const std::string strDocument =
        "<SAPolicy template_version=\"3\">\n<digitalAssets><Entity/></digitalAssets>\n<complianceTemplates><template "
        "name=\"t\" display_name=\"T\"><matchRule><buildingBlock sourceType=\"KEYWORD\" sourceName=\"words\"/>"
        "</matchRule></template>\n<templte/></complianceTemplates>\n<notes/></SAPolicy>";
    EXPECT_EQ(
        Run({"check", "--format", "github", "-"}, strDocument).strOut,
        "::error file=-,line=2,col=16,title=DLP018 lost-element::no policy has \"Entity\" in \"digitalAssets\": an "
        "import passes it over with all that it holds; did you mean \"entity\"?\n"
        "::error file=-,line=4,col=1,title=DLP018 lost-element::no policy has \"templte\" in "
        "\"complianceTemplates\": an import passes it over with all that it holds; did you mean \"template\"?\n"
        "::error file=-,line=5,col=1,title=DLP018 lost-element::no policy has \"notes\" in \"SAPolicy\": an import "
        "passes it over with all that it holds; correct its name, or remove it\n");
    EXPECT_EQ(Run({"check", "-"}, strDocument).iCode, Run({"import", "-"}, strDocument).iCode);
}

TEST_F(CheckCommand, AKnownElementInAnotherPlaceIsToBeMoved) {
    const std::string strDocument =
        "<SAPolicy template_version=\"3\">\n<digitalAssets>\n<keyword/></digitalAssets>\n<industries>\n"
        "<template_id>t</template_id>\n<banking/></industries></SAPolicy>";
    const std::string strMove = "; move it to where it belongs, or remove it\n";
    const std::string strLost = ": an import passes it over with all that it holds";
    const std::string strKeyword =
        "::error file=-,line=3,col=1,title=DLP018 lost-element::no policy has \"keyword\" in \"digitalAssets\"" +
        strLost + strMove;
    const std::string strWrite = "; write <industry name=\"banking\"> if that is its name, or remove it\n";
    EXPECT_EQ(Run({"check", "--format", "github", "--allow", "DLP006", "-"}, strDocument).strOut,
              strKeyword +
                  "::error file=-,line=5,col=1,title=DLP018 lost-element::no policy has \"template_id\" in "
                  "\"industries\"" +
                  strLost + strMove +
                  "::error file=-,line=6,col=1,title=DLP018 lost-element::no policy has \"banking\" in "
                  "\"industries\"" +
                  strLost + strWrite);
    EXPECT_EQ(Run({"check", "--assets", "--format", "github", "-"}, strDocument).strOut,
              strKeyword +
                  "::warning file=-,line=5,col=1,title=DLP012 misplaced-element::\"template_id\" is not read here, in "
                  "\"industries\"" +
                  strMove +
                  "::warning file=-,line=6,col=1,title=DLP011 unknown-element::\"banking\" is no element of a policy" +
                  strWrite);
}

TEST_F(CheckCommand, AForgottenVersionIsToldInsteadOfWhatFollowsFromIt) {
    const std::string strDocument =
        "<SAPolicy>\n<digitalAssets><dictionary name=\"w\" type=\"any\" display_name=\"W\"><keyword score=\"1\">a"
        "</keyword></dictionary></digitalAssets>\n<complianceTemplates>\n<template name=\"t\" display_name=\"T\">"
        "<matchRule><buildingBlock sourceType=\"KEYWORD\" sourceName=\"w\"/></matchRule></template>"
        "</complianceTemplates>\n<industries><industry name=\"i\"><template_id>t</template_id></industry>"
        "</industries></SAPolicy>";
    const std::string strCause =
        "template_version is missing or empty, so the document is read as one of the older layout and nothing of it "
        "is taken; add template_version=\"3.0.1000\"";
    const SToolRun check = RunOn("memory:", {"check", "--format", "github", "--allow", "DLP034", "-"}, strDocument);
    EXPECT_EQ(check.strOut, "::error file=-,line=1,col=1,title=DLP007 older-layout::" + strCause +
                                "; the rest is told as if it were there\n"
                                "::notice file=-,line=2,col=37,title=DLP046 other-spelling::type is written \"any\", "
                                "and read as Any; write it as it is read\n");
    EXPECT_EQ(check.iCode, 1);
    const SToolRun run = RunOn("memory:", {"import", "-"}, strDocument);
    EXPECT_EQ(run.strErr.find("dlpctl: warning: -: " + strCause + '\n'), 0U) << run.strErr;
    const std::string strAdvice = "; add template_version=\"3.0.1000\"\n";
    EXPECT_NE(
        run.strOut.find("-:2:1: section \"digitalAssets\" skipped: this section of the older layout is not taken" +
                        strAdvice + "-:4:1: template \"t\" skipped: it has no displayName" + strAdvice),
        std::string::npos)
        << run.strOut;
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(RunOn("memory:", {"import", "--report", "-", "--report-format", "github", "-"}, strDocument)
                  .strOut.find("::error file=-,line=2,col=1,title=DLP008 older-section::the section \"digitalAssets\" "
                               "of a document of the older layout is not taken" +
                               strAdvice),
              0U);
}

TEST_F(CheckCommand, AFixLeavesAForgottenVersionAsItIs) {
    const std::string strDocument =
        "<SAPolicy><complianceTemplates><template name=\"t\" display_name=\"T\"/>"
        "</complianceTemplates></SAPolicy>";
    const std::string strFile = m_dir.Write("p.xml", strDocument);
    EXPECT_EQ(Run({"check", "--fix", strFile}).iCode, 1);
    EXPECT_EQ(m_dir.Read("p.xml"), strDocument);
}

TEST_F(CheckCommand, AForgottenVersionHidesNothingElse) {
    const std::string strAssets = "<SAPolicy>\n<digitalAssets/></SAPolicy>";
    EXPECT_EQ(Rows(Run({"--json", "check", "-"}, strAssets).strOut), "1 DLP007 error\n1 DLP006 error\n");
    const std::string strLanguage =
        "<SAPolicy localization_language=\"Latin\"><complianceTemplates>\n<template name=\"t\" display_name=\"T\">"
        "<matchRule>\n<buildingBlock sourceType=\"KEYWORD\" sourceName=\"none\"/></matchRule></template>"
        "</complianceTemplates></SAPolicy>";
    EXPECT_EQ(Rows(Run({"--json", "check", "-"}, strLanguage).strOut),
              "1 DLP007 error\n1 DLP005 error\n3 DLP030 error\n");
    EXPECT_EQ(Rows(Run({"--json", "check", "--allow", "DLP007", "-"}, strLanguage).strOut),
              "2 DLP021 error\n2 DLP010 warning\n3 DLP030 error\n");
}

TEST_F(CheckCommand, AnAssetInASectionThatIsNotTakenIsPointedAt) {
    const std::string strDocument =
        "<SAPolicy>\n<digitalAssets>\n<dictionary name=\"w\" type=\"Any\" display_name=\"W\"/></digitalAssets>\n"
        "<complianceTemplates><template name=\"t\" displayName=\"T\"><matchRule>\n<buildingBlock "
        "sourceType=\"KEYWORD\" sourceName=\"w\"/></matchRule></template></complianceTemplates></SAPolicy>";
    const Json report = Json::parse(Run({"--json", "check", "-"}, strDocument).strOut);
    const Json& found = report["files"][0]["diagnostics"].back();
    EXPECT_EQ(found["code"], "DLP030");
    EXPECT_EQ(found["advice"], "import it first: the one of the document is not taken");
    EXPECT_EQ(found["related"], Json::parse(R"({"message": "it stands here", "line": 3, "column": 1})"));
}

TEST_F(CheckCommand, AnUnknownTypeIsToldAlone) {
    const auto fnFind = [&](const std::string& strAsset) {
        std::string strFound;
        const Json report =
            Json::parse(Run({"--json", "check", "--assets", "-"}, Documents::Policy(strAsset, "")).strOut);
        for (const Json& diagnostic : report["files"][0]["diagnostics"]) {
            strFound += diagnostic["code"].get<std::string>() + ' ' + diagnostic["advice"].get<std::string>() + '\n';
        }
        return strFound;
    };
    const std::string strRest =
        " minLength=\"8\" maxLength=\"9\" display_name=\"E\"><regularExpression>\\d</regularExpression>"
        "<alphabetCharset>0</alphabetCharset></entity>";
    EXPECT_EQ(fnFind("<entity name=\"e\" type=\" Type 2\"" + strRest), "DLP025 did you mean \"Type 2\"?\n");
    EXPECT_EQ(fnFind("<entity name=\"e\" type=\"account\"" + strRest),
              "DLP025 write one of Generic, Type 1, Type 2, Type 3\n");
    EXPECT_EQ(fnFind("<dictionary name=\"d\" type=\"treshold\" threshold=\"1\" display_name=\"D\"><keyword "
                     "score=\"1\">a</keyword></dictionary>"),
              "DLP025 did you mean \"Threshold\"?\n");
}

TEST_F(CheckCommand, OfWhatIsNotTakenNothingElseIsTold) {
    Import(Documents::Small());
    EXPECT_EQ(
        Rows(Run({"--json", "check", "-"},
                 "<SAPolicy><complianceTemplates>\n<template name=\"b\" displayName=\"B\" builtin=\"1\" colour=\"\">"
                 "\n<matchRule><buildingBlock sourceType=\"ENTITY\" entityHits=\"x\" sourceName=\"none\"/></matchRule>"
                 "\n<matchRule/>text<note/></template>\n<template name=\"b\" displayName=\"B\"><matchRule>"
                 "<buildingBlock sourceType=\"KEYWORD\" sourceName=\"words\"/></matchRule></template>"
                 "</complianceTemplates></SAPolicy>")
                 .strOut),
        "1 DLP007 note\n2 DLP009 error\n");
    EXPECT_EQ(Rows(Run({"--json", "check", "-"},
                       Documents::Policy(Documents::Entity("e"),
                                         "<template name=\"t\" display_name=\"T\"><matchRule>\n<buildingBlock "
                                         "sourceType=\"entity\" sourceName=\"e\"/>\n<buildingBlock sourceName=\"e\" "
                                         "entityHits=\"2\" operation=\"AND\"/></matchRule></template>"))
                       .strOut),
              "2 DLP031 error\n3 DLP031 error\n");
}

TEST_F(CheckCommand, AnotherWordForANameGivesTheName) {
    const std::string strDocument =
        "<SAPolicy template_version=\"3\">\n<industry/>\n<digitalAssets><dictionary name=\"d\" type=\"Any\" "
        "display_name=\"D\">\n<word/>\n<keyword weight=\"2\" score=\"1\">a</keyword></dictionary></digitalAssets>\n"
        "<complianceTemplates>\n<complianceTemplate/>\n<template name=\"t\" display_name=\"T\"><matchRule>\n"
        "<buildingBlock type=\"KEYWORD\" hits=\"2\" sourceType=\"KEYWORD\" sourceName=\"d\"/></matchRule>\n"
        "<rule><buildingBlock sourceType=\"KEYWORD\" sourceName=\"d\"/></rule></template></complianceTemplates>"
        "</SAPolicy>";
    const Json report = Json::parse(Run({"--json", "check", "-"}, strDocument).strOut);
    std::string strAdvice;
    for (const Json& diagnostic : report["files"][0]["diagnostics"]) {
        strAdvice += std::to_string(diagnostic["line"].get<int>()) + ' ' + diagnostic["code"].get<std::string>() + ' ' +
                     diagnostic["advice"].get<std::string>() + '\n';
    }
    EXPECT_EQ(strAdvice,
              "2 DLP018 did you mean \"industries\"?\n"
              "4 DLP018 did you mean \"keyword\"?\n"
              "5 DLP013 did you mean \"score\"?\n"
              "7 DLP018 did you mean \"template\"?\n"
              "9 DLP013 did you mean \"sourceType\"?\n"
              "9 DLP013 did you mean \"entityHits\"?\n"
              "10 DLP016 did you mean \"matchRule\"?\n"
              "10 DLP063 remove it, or correct what should differ\n");
    const std::string strImported = Run({"import", "-"}, strDocument).strOut;
    EXPECT_NE(strImported.find("-:2:1: element \"industry\" skipped: no policy has it in SAPolicy; did you mean "
                               "\"industries\"?\n"),
              std::string::npos)
        << strImported;
}

TEST_F(CheckCommand, OfANameWithAPrefixTheNameIsMeant) {
    const std::string strDocument =
        "<SAPolicy template_version=\"3\" xmlns:p=\"urn:p\"><complianceTemplates><p:template name=\"t\"/>"
        "</complianceTemplates></SAPolicy>";
    const std::string strOut = Run({"check", "-"}, strDocument).strOut;
    EXPECT_NE(strOut.find("did you mean \"template\"?"), std::string::npos) << strOut;
}

TEST_F(CheckCommand, ManyUnknownNamesAreAllToldWhatIsMeant) {
    const auto fnAdvice = [&](const std::string& strAttribute, int iMost) {
        std::string strKeywords;
        for (int i = 1; i <= iMost; ++i) {
            strKeywords += "<keyword score=\"1\" " + strAttribute;
            strKeywords +=
                (strAttribute == "x" ? std::to_string(i) : "") + "=\"1\">k" + std::to_string(i) + "</keyword>";
        }
        const std::string strDocument =
            "<SAPolicy template_version=\"3\"><digitalAssets><dictionary name=\"d\" type=\"Any\" display_name=\"D\">" +
            strKeywords + "</dictionary></digitalAssets></SAPolicy>";
        std::map<std::string, int> mapAdvice;
        const Json report = Json::parse(Run({"--json", "check", "-"}, strDocument).strOut);
        for (const Json& diagnostic : report["files"][0]["diagnostics"]) {
            mapAdvice[diagnostic["code"] == "DLP013" ? diagnostic["advice"].get<std::string>() : ""] += 1;
        }
        mapAdvice.erase("");
        return mapAdvice;
    };
    using Advice = std::map<std::string, int>;
    EXPECT_EQ(fnAdvice("weight", 30), (Advice{{"did you mean \"score\"?", 30}}));
    EXPECT_EQ(fnAdvice("scores", 30), (Advice{{"did you mean \"score\"?", 30}}));
    // Of the first so many it is known that no name is near.
    EXPECT_EQ(fnAdvice("x", 30), (Advice{{"remove it", 19}, {"correct its name, or remove it", 11}}));
}

TEST_F(CheckCommand, OfASectionOfTheOlderLayoutThatIsNotTakenNothingElseIsTold) {
    Import(Documents::Small());
    EXPECT_EQ(
        Run({"check", "--format", "github", "-"},
            "<SAPolicy template_version=\"\">\n<digitalAssets><entity type=\"new\" minLength=\"x\"/><thing/>"
            "</digitalAssets>\n<complianceTemplates><template name=\"t\" displayName=\"T\"><matchRule>"
            "<buildingBlock sourceType=\"KEYWORD\" sourceName=\"words\"/></matchRule></template>"
            "</complianceTemplates></SAPolicy>")
            .strOut,
        "::warning file=-,line=1,col=1,title=DLP007 older-layout::template_version is missing or empty, so the "
        "document is read as one of the older layout; add template_version=\"3.0.1000\" if that is not what it is\n"
        "::error file=-,line=2,col=1,title=DLP008 older-section::the section \"digitalAssets\" of a document of the "
        "older layout is not taken; move it into a document of the present layout, whose root has a "
        "template_version\n");
}

TEST_F(CheckCommand, WhatIsNoXmlIsExplainedAlikeByEveryCommandAndFormat) {
    const std::string strDocument = "no markup\n<SAPolicy template_version=\"3\">\n<digitalAssets>\n</SAPolicy>";
    const std::string strFile = m_dir.Write("bad.xml", strDocument);
    const std::string strWhat =
        "the file is no XML: \"</SAPolicy>\" does not fit: \"<digitalAssets>\" of line 3 is still open";
    const std::string strAdvice = "close that with \"</digitalAssets>\" before it";
    EXPECT_EQ(Run({"check", strFile}).strOut,
              strFile + ":4:3: error: DLP003 not-xml: " + strWhat + "\n     4 | </SAPolicy>\n       |   ^\n  " +
                  strAdvice + "\n  " + strFile + ":3:1: \"<digitalAssets>\" begins here\n" + "1 error in 1 file\n");
    EXPECT_EQ(Run({"check", "--format", "github", strFile}).strOut,
              "::error file=" + strFile + ",line=4,col=3,title=DLP003 not-xml::" + strWhat + "; " + strAdvice + '\n');
    const Json diagnostic = Json::parse(Run({"--json", "check", strFile}).strOut)["files"][0]["diagnostics"][0];
    EXPECT_EQ(diagnostic["related"].dump(),
              Json({{"column", 1}, {"line", 3}, {"message", "\"<digitalAssets>\" begins here"}}).dump());
    const std::string strLine = strFile + ":4:3: " + strWhat + "; " + strAdvice;
    EXPECT_EQ(Run({"import", strFile}).strErr, "dlpctl: " + strLine + "; nothing was written\n");
    EXPECT_EQ(Run({"convert", strFile}).strErr, "dlpctl: " + strLine + '\n');
    EXPECT_EQ(Run({"fmt", strFile}).strErr, "dlpctl: " + strLine + '\n');
    Run({"import", strFile, "--report", m_dir.Path("r.sarif")});
    const Json result = Json::parse(m_dir.Read("r.sarif"))["runs"][0]["results"][0];
    EXPECT_EQ(result["relatedLocations"][0]["physicalLocation"]["region"].dump(), R"({"startColumn":1,"startLine":3})");
}

TEST_F(CheckCommand, AnEncodingThatIsDeclaredIsNamed) {
    const auto fnSaid = [this](const std::string& strDeclaration) {
        return Run({"import", "-"}, strDeclaration + "<SAPolicy>\xFC</SAPolicy>").strErr;
    };
    const std::string strSaid = "the file is not UTF-8 from here on";
    EXPECT_EQ(fnSaid("<?xml version=\"1.0\" encoding='windows-1252'?>"),
              "dlpctl: -:1:56: " + strSaid +
                  ", and declared to be windows-1252; save it as UTF-8, as iconv -f windows-1252 -t UTF-8 does, and "
                  "declare it so; nothing was written\n");
    EXPECT_EQ(fnSaid("<?xml version=\"1.0\" encoding='utf-8'?>"),
              "dlpctl: -:1:49: " + strSaid + "; save it as UTF-8; nothing was written\n");
    EXPECT_EQ(fnSaid("<?xml version='1.0'?><!-- encoding='x' -->"),
              "dlpctl: -:1:53: " + strSaid + "; save it as UTF-8; nothing was written\n");
    EXPECT_EQ(fnSaid("<?xml encoding='\x1B[31m'?>"),
              "dlpctl: -:1:35: " + strSaid + "; save it as UTF-8; nothing was written\n");
}

TEST_F(CheckCommand, Utf16IsToldToBeThat) {
    const std::string strUtf16("\xFF\xFE<\0a\0/\0>\0", 10);
    const std::string strSaid =
        "-: error: DLP002 not-utf8: the file is not UTF-8, but UTF-16\n"
        "  save it as UTF-8, as iconv -f UTF-16 -t UTF-8 does\n"
        "1 error in 1 file\n";
    EXPECT_EQ(Run({"check", "-"}, strUtf16).strOut, strSaid);
    EXPECT_EQ(Run({"check", "-"}, std::string("\0<\0a\0/\0>", 8)).strOut, strSaid);
    EXPECT_EQ(Run({"check", "-"}, "").strOut,
              "-: error: DLP003 not-xml: the file is no XML: it is empty\n  check that this is the file you meant\n1 "
              "error in 1 file\n");
}

TEST_F(CheckCommand, PatternsThatFindNothingOrNeverEndAreTold) {
    const std::string strRows = Run({"check", "--format", "github", "--assets", "-"},
                                    Documents::Policy("\n<entity name=\"a\" type=\"Generic\" display_name=\"A\">"
                                                      "<regularExpression>(?=a)</regularExpression></entity>\n"
                                                      "<entity name=\"r\" type=\"Generic\" display_name=\"R\">"
                                                      "<regularExpression>x|(?R)?a</regularExpression></entity>",
                                                      ""))
                                    .strOut;
    EXPECT_EQ(strRows,
              "::warning file=-,line=2,col=69,title=DLP042 pattern-empty::the pattern matches the empty string; make "
              "something in it mandatory\n"
              "::warning file=-,line=3,col=71,title=DLP040 pattern-refused::the pattern is refused by PCRE2: it calls "
              "itself again at the same place, without end; let it match something before it calls itself\n");
}

TEST_F(CheckCommand, PatternsThatCouldNotBeTriedAreTold) {
    std::string strAssets;
    for (int i = 0; i < 400; ++i) {
        strAssets += "\n<entity name=\"e" + std::to_string(i) +
                     "\" type=\"Generic\" display_name=\"E\">"
                     "<regularExpression>(a+)+" +
                     std::to_string(i % 390) + "$</regularExpression></entity>";
    }
    const Json report =
        Json::parse(Run({"--json", "check", "--all", "--assets", "-"}, Documents::Policy(strAssets, "")).strOut);
    std::size_t iRunaways = 0;
    Json untried;
    for (const Json& diagnostic : report["files"][0]["diagnostics"]) {
        iRunaways += diagnostic["code"] == "DLP041" ? 1 : 0;
        untried = diagnostic["code"] == "DLP043" ? diagnostic : untried;
    }
    const std::size_t iTried = 80000 / 241;
    const std::size_t iAgain = 10;  // what is written alike is tried once
    EXPECT_EQ(iRunaways, iTried + iAgain);
    EXPECT_EQ(untried["line"], iTried + 2);
    EXPECT_EQ(untried["message"], "from here on " + std::to_string(400 - iRunaways) +
                                      " patterns were not tried for backtracking: the effort for one document is used "
                                      "up");
    EXPECT_EQ(report["verdict"], "done");
    EXPECT_EQ(Run({"check", "--strict", "--allow", "DLP041", "--assets", "-"}, Documents::Policy(strAssets, "")).iCode,
              1);
}

TEST_F(CheckCommand, TemplatesThatMatchAlikeAreToldHoweverTheyAreWritten) {
    const auto fnTemplate = [](const std::string& strName, const std::string& strRules) {
        return "\n<template name=\"" + strName + "\" display_name=\"T" + strName + "\">" + strRules + "</template>";
    };
    const std::string strTogether =
        R"(<matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/>)"
        R"(<buildingBlock sourceType="ENTITY" entityHits="1" sourceName="one" operation="OR"/></matchRule>)";
    const std::string strApart =
        R"(<matchRule><buildingBlock sourceType="ENTITY" entityHits="1" sourceName="one"/></matchRule>)"
        R"(<matchRule operation="OR"><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>)";
    Import(
        Documents::Policy(Documents::Entity("one") + Documents::Dictionary("words"), fnTemplate("old", strTogether)));
    EXPECT_EQ(Run({"check", "--format", "github", "-"},
                  Documents::Policy("", fnTemplate("a", strApart) + fnTemplate("b", strTogether)))
                  .strOut,
              "::warning file=-,line=2,col=1,title=DLP062 same-template::the template \"a\" matches the same as the "
              "stored template \"old\"; remove one of them, or correct what should differ\n"
              "::warning file=-,line=3,col=1,title=DLP062 same-template::the template \"b\" matches the same as the "
              "template \"a\"; remove one of them, or correct what should differ\n");
    EXPECT_EQ(Run({"check", "-"}, Documents::Policy("", fnTemplate("old", strApart))).strOut,
              "nothing to report in 1 file\n")
        << "it replaces the stored one";
}

TEST_F(CheckCommand, RulesThatChangeNothingAreToldWhereOperationsAreMixed) {
    Import(Documents::Small());
    EXPECT_EQ(
        Run({"check", "--format", "github", "--allow", "DLP065", "-"},
            "<SAPolicy template_version=\"3\"><complianceTemplates><template name=\"t\" display_name=\"T\">\n"
            "<matchRule><buildingBlock sourceType=\"KEYWORD\" sourceName=\"words\"/></matchRule>\n"
            "<matchRule operation=\"OR\"><buildingBlock sourceType=\"KEYWORD\" sourceName=\"words\"/>"
            "<buildingBlock sourceType=\"ENTITY\" entityHits=\"1\" sourceName=\"one\" operation=\"AND\"/>"
            "</matchRule>\n"
            "<matchRule operation=\"AND\"><buildingBlock sourceType=\"KEYWORD\" sourceName=\"words\"/></matchRule>"
            "</template></complianceTemplates></SAPolicy>")
            .strOut,
        "::warning file=-,line=3,col=1,title=DLP063 rule-pointless::the rule changes nothing: without it the same is "
        "matched; remove it, or correct what should differ\n"
        "::warning file=-,line=4,col=1,title=DLP063 rule-pointless::the rule changes nothing: without it the same is "
        "matched; remove it, or correct what should differ\n");
}

TEST_F(CheckCommand, OperationsThatAreMixedAreToldOfTheRuleAndOfTheRules) {
    Import(Documents::Small());
    const auto fnRule = [](const char* pOperation, const std::vector<std::string>& vecOperations) {
        std::string strRule = std::string("\n<matchRule operation=\"") + pOperation + "\">";
        int iHits = 0;
        for (const std::string& strOperation : vecOperations) {
            strRule += "<buildingBlock sourceType=\"ENTITY\" entityHits=\"" + std::to_string(++iHits) +
                       "\" sourceName=\"one\" operation=\"" + strOperation + "\"/>";
        }
        return strRule + "</matchRule>";
    };
    const auto fnNotes = [this](const std::string& strRules) {
        return Run({"check", "--format", "github", "--allow", "DLP063", "--allow", "DLP037", "--allow", "DLP038", "-"},
                   Documents::Policy("", "\n<template name=\"t\" display_name=\"T\">" + strRules + "</template>"))
            .strOut;
    };
    const std::string strAdvice =
        " joined by AND as well as by OR: if AND went first, content with P:one(1) alone would match as well; write "
        "several rules, each joined by one operation, and join these by one as well\n";
    EXPECT_EQ(fnNotes(fnRule("", {"", "AND", "OR"})), "") << "it is read alike";
    EXPECT_EQ(
        fnNotes(fnRule("", {"", "OR", "AND"})),
        "::notice file=-,line=3,col=1,title=DLP065 mixed-operations::the building blocks of the rule are" + strAdvice);
    EXPECT_EQ(fnNotes(fnRule("", {""}) + fnRule("OR", {"", "AND"}) + fnRule("AND", {"", "AND", "AND"})),
              "::notice file=-,line=2,col=1,title=DLP065 mixed-operations::the rules of the template are" + strAdvice);
    EXPECT_EQ(fnNotes(fnRule("", {"", "AND", "AND"}) + fnRule("OR", {"OR", "AND"})), "");
    EXPECT_EQ(fnNotes(fnRule("AND", {"AND", "OR"}) + fnRule("OR", {"", "", "OR"})), "");
}

TEST_F(CheckCommand, WhatAFaultyTemplateMatchesIsNotJudged) {
    Import(Documents::Small());
    const auto fnCodes = [this](const std::string& strTemplates) {
        const Json report = Json::parse(Run({"--json", "check", "-"}, Documents::Policy("", strTemplates)).strOut);
        std::string strCodes;
        for (const Json& diagnostic : report["files"][0]["diagnostics"]) {
            strCodes += diagnostic["code"].get<std::string>() + ' ';
        }
        return strCodes;
    };
    const auto fnTemplate = [](const std::string& strName, const std::string& strBlock) {
        return "<template name=\"" + strName + "\" display_name=\"T" + strName + "\"><matchRule>" +
               "<buildingBlock sourceType=\"KEYWORD\" sourceName=\"words\"/>" +
               "<buildingBlock sourceType=\"KEYWORD\" sourceName=\"words\" operation=\"OR\"/>" + strBlock +
               "</matchRule></template>";
    };
    const auto fnBlock = [](const std::string& strAttributes) {
        return "<buildingBlock sourceType=\"ENTITY\" " + strAttributes + "/>";
    };
    const std::string strNoHits = fnBlock("sourceName=\"one\" operation=\"OR\"");
    const std::string strUnknown = fnBlock("entityHits=\"1\" sourceName=\"on\" operation=\"OR\"");
    const std::string strExcept = fnBlock("entityHits=\"1\" sourceName=\"one\" operation=\"EXCEPT\"");
    EXPECT_EQ(fnCodes(fnTemplate("a", "") + fnTemplate("b", "")), "DLP063 DLP062 DLP063 ");
    EXPECT_EQ(fnCodes(fnTemplate("a", strNoHits) + fnTemplate("b", strNoHits)), "DLP061 DLP061 ");
    EXPECT_EQ(fnCodes(fnTemplate("a", strUnknown) + fnTemplate("b", strUnknown)), "DLP030 DLP030 ");
    EXPECT_EQ(fnCodes(fnTemplate("a", strExcept) + fnTemplate("b", strExcept)), "DLP032 DLP032 ");
    EXPECT_EQ(fnCodes(fnTemplate("", "") + "<template name=\"c\"/>"), "DLP020 DLP021 ");
    EXPECT_EQ(fnCodes(fnTemplate("a", strUnknown) + fnTemplate("b", "")), "DLP030 DLP063 ");
    EXPECT_EQ(fnCodes("<template name=\"c\"><matchRule/></template>"), "DLP021 ");
}

TEST_F(CheckCommand, NumbersThatAreMissingOrMakeNoSenseAreTold) {
    const auto fnCodes = [this](const std::string& strAsset) {
        const Json report =
            Json::parse(Run({"--json", "check", "--assets", "-"}, Documents::Policy(strAsset, "")).strOut);
        std::string strCodes;
        for (const Json& diagnostic : report["files"][0]["diagnostics"]) {
            strCodes += diagnostic["code"].get<std::string>() + ' ' + diagnostic["message"].get<std::string>() + '\n';
        }
        return strCodes;
    };
    const auto fnList = [](const std::string& strAttributes, const std::string& strScore) {
        return "<dictionary name=\"d\" display_name=\"D\" " + strAttributes + "><keyword " + strScore +
               ">a</keyword><keyword score=\"1\">b</keyword></dictionary>";
    };
    const auto fnExpression = [](const std::string& strAttributes) {
        return "<entity name=\"e\" display_name=\"E\" " + strAttributes +
               "><regularExpression>x</regularExpression><alphabetCharset/></entity>";
    };
    const std::string strSense = " or more makes sense\n";
    EXPECT_EQ(fnCodes(fnList("type=\"Distance\"", "")),
              "DLP044 number is missing and read as 0\nDLP044 score is missing and read as 0\n");
    EXPECT_EQ(fnCodes(fnList("type=\"Distance\" number=\"0\"", "score=\"-1\"")),
              "DLP045 number is 0, and only 1" + strSense);
    EXPECT_EQ(fnCodes(fnList("type=\"Threshold\" threshold=\"1\"", "score=\"0\"")), "");
    EXPECT_EQ(fnCodes(fnList("type=\"All\"", "score=\"1\"")), "");
    EXPECT_EQ(fnCodes(fnExpression("type=\"Type 1\" maxLength=\"3\"")), "DLP044 minLength is missing and read as 0\n");
    EXPECT_EQ(fnCodes(fnExpression("type=\"Type 1\" minLength=\"-3\" maxLength=\"0\"")),
              "DLP045 minLength is -3, and only 0" + strSense + "DLP045 maxLength is 0, and only 1" + strSense);
    EXPECT_EQ(fnCodes(fnExpression("type=\"Type 3\" minLeftRadius=\"0\" maxLeftRadius=\"0\" maxRightRadius=\"0\"")),
              "");
}

TEST_F(CheckCommand, CategoriesWithoutANameAndEntriesThatStandTwiceAreTold) {
    Import(Documents::Small());
    EXPECT_EQ(
        Run({"check", "--format", "github", "-"},
            "<SAPolicy template_version=\"v3\"><complianceTemplates><template name=\"t\" display_name=\" \">"
            "<matchRule><buildingBlock sourceType=\"KEYWORD\" sourceName=\"words\"/></matchRule></template>"
            "</complianceTemplates>\n<industries>\n<industry><template_id>t</template_id></industry>\n"
            "<industry "
            "name=\"finance\"><template_id>t</template_id>\n<template_id>t</template_id></industry></industries>"
            "</SAPolicy>")
            .strOut,
        "::warning file=-,line=1,col=11,title=DLP019 odd-version::template_version is \"v3\", which is no version "
        "number; write 3.0.1000\n"
        "::warning file=-,line=1,col=73,title=DLP039 blank-in-name::the display_name \" \" begins or ends with a "
        "blank; remove the blank\n"
        "::error file=-,line=3,col=1,title=DLP020 no-name::the industry has no name; give it one, by which others can "
        "refer to it\n"
        "::warning file=-,line=5,col=1,title=DLP064 category-twice::the industry \"finance\" names the template \"t\" "
        "twice; "
        "remove one of the entries\n");
}

TEST_F(CheckCommand, AnOlderNameThatIsNearIsSuggested) {
    m_dir.Write("home/config/cfg_dlp_da_map.txt", "Credit Card Number\tcard\n");
    const std::string strDocument =
        "<SAPolicy><complianceTemplates><template name=\"t\" displayName=\"T\"><matchRule><buildingBlock "
        "sourceType=\"ENTITY\" entityHits=\"1\" sourceName=\"Credit Card Numbr\"/></matchRule></template>"
        "</complianceTemplates></SAPolicy>";
    const std::string strHint = "did you mean \"Credit Card Number\"?\n";
    const std::string strChecked = Run({"--home", m_dir.Path("home"), "check", "-"}, strDocument).strOut;
    EXPECT_NE(strChecked.find(strHint), std::string::npos) << strChecked;
    const std::string strImported = Run({"--home", m_dir.Path("home"), "import", "-"}, strDocument).strOut;
    EXPECT_NE(strImported.find(strHint), std::string::npos) << strImported;
}

TEST_F(CheckCommand, AnOlderNameIsToldBesideTheOneOfToday) {
    m_dir.Write("home/config/cfg_dlp_da_map.txt", "Credit Card Number\tpayment-card\nPayment Card\tpayment-card\n");
    const std::string strFile = m_dir.Write(
        "older.xml",
        "<SAPolicy><complianceTemplates>\n<template name=\"t\" displayName=\"T\"><matchRule>\n<buildingBlock "
        "sourceType=\"ENTITY\" entityHits=\"1\" sourceName=\"Credit Card Number\"/></matchRule></template>"
        "</complianceTemplates></SAPolicy>");
    const std::string strBoth = "\"payment-card\" (here by its older name, \"Credit Card Number\")";
    EXPECT_EQ(Run({"check", "--allow", "DLP007", "--format", "github", strFile}).strOut,
              "::error file=" + strFile +
                  ",line=3,col=51,title=DLP030 unknown-asset::neither the document nor the store "
                  "has the expression " +
                  strBoth + "; import or add it, or correct the name\n");
    const std::string strImported = Run({"import", strFile}).strOut;
    EXPECT_NE(strImported.find(strFile + ":2:1: template \"t\" skipped: it refers to the expression " + strBoth +
                               ", which is not stored; import that first, or correct the name\n"),
              std::string::npos)
        << strImported;
    EXPECT_EQ(Json::parse(Run({"--json", "import", strFile}).strOut)["items"][0]["reference"],
              Json({{"kind", "expression"},
                    {"name", "payment-card"},
                    {"nearest", nullptr},
                    {"older_name", "Credit Card Number"}}));
    Run({"import", "--report", m_dir.Path("r.txt"), "--report-format", "github", strFile});
    EXPECT_NE(m_dir.Read("r.txt").find(strBoth), std::string::npos) << m_dir.Read("r.txt");
}

TEST_F(CheckCommand, AnEntryOfACategoryIsToldTheTemplateThatMayBeMeant) {
    const auto fnDocument = [](const std::string& strEntry) {
        return Documents::Policy("", "<template name=\"notes\" display_name=\"N\"/>",
                                 "\n<industries><industry name=\"finance\"><template_id>" + strEntry +
                                     "</template_id></industry></industries>");
    };
    const std::pair<const char*, const char*> aEntries[] = {
        {" notes ", "did you mean \"notes\"?"},
        {"Notes", "did you mean \"notes\"?"},
        {"nots", "did you mean \"notes\"?"},
        {"cards", "correct the name or remove the entry"},
    };
    for (const auto& [pEntry, pAdvice] : aEntries) {
        const std::string strName = '"' + std::string(pEntry) + '"';
        EXPECT_EQ(Run({"check", "--allow", "DLP060", "--format", "github", "-"}, fnDocument(pEntry)).strOut,
                  "::error file=-,line=2,col=51,title=DLP033 unknown-template::\"finance\" names the template " +
                      strName + ", which is not in the document; " + pAdvice + '\n');
        const std::string strImported = Run({"import", "-"}, fnDocument(pEntry)).strOut;
        EXPECT_NE(strImported.find("no template of the document has this name: " + strName + "; " + pAdvice + '\n'),
                  std::string::npos)
            << strImported;
    }
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
            strDocument += std::string("<keyword score=\"1\" caseSensitive=\"") + (bCase ? "true" : "false") + "\">" +
                           pKeyword + "</keyword>\n";
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

TEST_F(CheckCommand, AStoreWhereAFileIsMeantIsToldApart) {
    EXPECT_EQ(Run({"check", "store"}).strOut,
              "store: error: DLP001 unreadable: the file cannot be read: No such file or directory; the store is named "
              "by --store\n"
              "  check its path and its permissions\n"
              "1 error in 1 file\n");
    EXPECT_EQ(Run({"check", "-"}, std::string("SQLite format 3\0\xff", 17)).strOut,
              "-: error: DLP003 not-xml: the file is no XML: it is a store\n"
              "  where a store can stand write it as sqlite:PATH, else name it by --store\n"
              "1 error in 1 file\n");
}

TEST_F(CheckCommand, ACleanFileIsNoNewsToAQuietCheck) {
    EXPECT_EQ(Get({"-q", "check", "--allow", "34", "--allow", "35", "--allow", "47",
                   m_dir.Write("small.xml", Documents::Small())}),
              "");
    EXPECT_NE(Run({"-q", "check", "-"}, "<a").strOut, "");
}

TEST_F(CheckCommand, ACategoryCalledAsPeopleDoIsToldItsNames) {
    const auto fnAdvice = [this](const char* pRegion) {
        const std::string strXml = Documents::Policy(
            "", "<template name=\"t\" display_name=\"T\"/>",
            std::string("<regions><region name=\"") + pRegion + "\"><template_id>t</template_id></region></regions>");
        const Json answer = Json::parse(Run({"--json", "check", m_dir.Write("t.xml", strXml)}).strOut);
        return answer["files"][0]["diagnostics"].back()["advice"].get<std::string>();
    };
    EXPECT_EQ(fnAdvice("Europe"), "did you mean \"eu\"?");
    m_dir.Write(
        "home/config/PredefinedDLPPolicy.xml",
        R"(<SAPolicy><regions><r name="east" display_name="Eastern Europe"/><r name="asia" display_name="Asia"/>)"
        R"(<r name="west-europe" display_name="West"/></regions></SAPolicy>)");
    EXPECT_EQ(fnAdvice("Europe"), "did you mean \"east\" or \"west-europe\"?");
    EXPECT_EQ(fnAdvice("Moon"), "dlpctl metadata lists them");
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
              "  </template>\n"
              "\n"
              "The examples refer to the expression \"card\" of the document or the store.\n");
    EXPECT_EQ(Json::parse(Get({"--json", "explain", "dlp061", "DLP001"}))["codes"].size(), 2U);
    EXPECT_EQ(Json::parse(Get({"--json", "explain"}))["codes"].size(), GetCodeTable().size());
    EXPECT_EQ(Get({"explain"}).find("CODE    LEVEL    NAME"), 0U);
}

TEST_F(CheckCommand, AnExplanationLeavesOutWhatMayFollowASentence) {
    const std::string strText = Get({"explain", "DLP007"});
    EXPECT_NE(strText.find("the older layout.\n"), std::string::npos) << strText;
    EXPECT_NE(strText.find("What to do: Add template_version=\"3.0.1000\".\n"), std::string::npos) << strText;
}

TEST(DiagnosticsPage, IsWhatTheTableSays) {
    std::ifstream page(DLP_SOURCE_DIR "/docs/diagnostics.md");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(page), {}), MakeDiagnosticsPage());
}
