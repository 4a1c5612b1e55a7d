#include <gtest/gtest.h>

#include <filesystem>

#include <csignal>

#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "cli/Signals.h"
#include "platform/store/CForwardingStore.h"
#include "tests/cli/ToolRun.h"
#include "tests/cli/Unprivileged.h"

namespace {

using ImportCommand = CToolTest;
using Json = nlohmann::ordered_json;
using Documents::Dictionary;
using Documents::Entity;
using Documents::Policy;
using Documents::Small;
using Documents::Template;

constexpr const char NEXT[] =
    "Next: dlpctl list templates\n"
    "      dlpctl export --all -o FILE\n";

/** Written for the places in it. */
constexpr const char WITH_FINDINGS[] = R"(<SAPolicy template_version="3.0.1000">
  <digitalAssets>
    <entity name="" display_name="nameless"/>
    <entity name="x"/>
    <entity name="owned" display_name="Owned" pre-defined="false"><regularExpression/></entity>
    <!-- é --><entity name="typed" type="Type 1" display_name="Typed"><regularExpression/></entity>
    <entity name="card-number" display_name="Card"><regularExpression/></entity>
    <dictionary name="words" display_name="Words"/>
  </digitalAssets>
  <complianceTemplates>
    <template name="a" display_name="A"><matchRule><buildingBlock sourceType="ENTITY" sourceName="card-numbr"/></matchRule></template>
    <template name="b" display_name="B"><matchRule><buildingBlock sourceType="KEYWORD" sourceName="nothing like it"/></matchRule></template>
    <template name="c" display_name="C"><matchRule operation="EXCEPT"/></template>
    <template name="" display_name="D"/>
    <template name="e"/>
    <template name="f" display_name="F"><matchRule/><industries/><regions/></template>
  </complianceTemplates>
  <industries><industry name="finance"><template_id>f</template_id><template_id>gone</template_id></industry></industries>
</SAPolicy>)";

constexpr const char OLDER[] = R"(<SAPolicy>
  <digitalAssets><entity name="lost"/></digitalAssets>
  <complianceTemplates>
    <template name="own" displayName="Own"><matchRule><buildingBlock sourceType="ENTITY" sourceName="Old One"/></matchRule></template>
    <template name="theirs" displayName="Theirs" builtin="1"/>
  </complianceTemplates>
  <industries><industry name="lost"/></industries>
  <regions/>
</SAPolicy>)";

}  // namespace

TEST_F(ImportCommand, TellsWhatBecameOfHowManyItems) {
    const std::string strFile = m_dir.Write("small.xml", Small());
    const SToolRun first = Run({"import", strFile});
    EXPECT_EQ(first.iCode, 0);
    EXPECT_EQ(first.strOut, strFile + ":\n" +
                                "               CREATED  UPDATED  UNCHANGED  SKIPPED  FAILED\n"
                                "expressions          2        0          0        0       0\n"
                                "keyword lists        1        0          0        0       0\n"
                                "templates            1        0          0        0       0\n");
    EXPECT_EQ(first.strErr, NEXT);
}

TEST_F(ImportCommand, ASecondTimeEveryItemIsUnchanged) {
    Import(Small());
    const std::string strDump = Dump();
    const SToolRun run = Run({"import", "-"}, Small());
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut,
              "-:\n"
              "               CREATED  UPDATED  UNCHANGED  SKIPPED  FAILED\n"
              "expressions          0        0          2        0       0\n"
              "keyword lists        0        0          1        0       0\n"
              "templates            0        0          1        0       0\n");
    EXPECT_EQ(run.strErr, NEXT);
    EXPECT_EQ(Dump(), strDump);
}

TEST_F(ImportCommand, QuietTellsOnlyWhatWasNotTaken) {
    const auto fnQuiet = [this](const std::string& strDocument, const std::string& strOption = "-q") {
        return Run({"import", "-", "--quiet", strOption}, strDocument);
    };
    const SToolRun done = fnQuiet(Small());
    EXPECT_EQ(done.iCode, 0);
    EXPECT_EQ(done.strOut + done.strErr, "");
    const std::string strFaulty = Policy("", Template("t", "nothing", "words"));
    const std::string strFinding = "-:1:" + std::to_string(strFaulty.find("<template ") + 1) +
                                   ": template \"t\" skipped: it refers to the expression \"nothing\", which is not "
                                   "stored; import that first, or correct the name\n";
    const SToolRun findings = fnQuiet(strFaulty);
    EXPECT_EQ(findings.iCode, 1);
    EXPECT_EQ(findings.strOut, strFinding);
    EXPECT_EQ(findings.strErr, "");
    EXPECT_EQ(fnQuiet(strFaulty, "--dry-run").strOut, strFinding);
    EXPECT_EQ(fnQuiet(strFaulty, "--fail-on-skip").strOut, strFinding);
    EXPECT_EQ(fnQuiet("<x/>").strErr.find("dlpctl: -:1:1: "), 0U);
}

TEST_F(ImportCommand, JsonHoldsEveryItemWithItsPlace) {
    const std::string strFile = m_dir.Write("small.xml", Small());
    const SToolRun run = Run({"--json", "import", strFile});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strErr, "");
    EXPECT_EQ(run.strOut.find('\n'), run.strOut.size() - 1);
    const auto fnItem = [](const char* pKind, const char* pName, const char* pDisplayName) {
        const std::size_t iColumn = Small().find(std::string(" name=\"") + pName) + 1;
        const std::size_t iStart = Small().rfind('<', iColumn) + 1;
        return Json{{"kind", pKind},
                    {"name", pName},
                    {"display_name", pDisplayName},
                    {"disposition", "created"},
                    {"reason", ""},
                    {"line", 1},
                    {"column", iStart},
                    {"detail", ""},
                    {"cause", nullptr},
                    {"reference", nullptr},
                    {"foreign_children", Json::array()},
                    {"unknown_references", Json::array()}};
    };
    const Json expected = {
        {"format", "dlpctl-import/1"},
        {"file", strFile},
        {"verdict", "done"},
        {"result", 0},
        {"imported", {"Template cards"}},
        {"skipped", Json::array()},
        {"skipped_assets", Json::array()},
        {"items",
         {fnItem("expression", "one", "Expression one"), fnItem("expression", "two", "Expression two"),
          fnItem("keyword", "words", "List words"), fnItem("template", "cards", "Template cards")}},
        {"dry_run", false},
        {"passed_over", 0},
        {"not_found", Json::array()}};
    EXPECT_EQ(Json::parse(run.strOut).dump(1), expected.dump(1));
}

TEST_F(ImportCommand, WhatIsNotTakenIsListedWithPlaceReasonAndAdvice) {
    Import(Policy(Entity("owned", "pre-defined=\"true\""), "<template name=\"z\" display_name=\"Z\"/>"));
    const std::string strFile = m_dir.Write("findings.xml", WITH_FINDINGS);
    const SToolRun run = Run({"import", strFile});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strErr, NEXT);
    std::string strExpected =
        "FILE:\n"
        "                  CREATED  UPDATED  UNCHANGED  SKIPPED  FAILED\n"
        "expressions             1        0          0        4       0\n"
        "keyword lists           1        0          0        0       0\n"
        "templates               1        0          0        5       0\n"
        "category entries        0        0          0        1       0\n"
        "FILE:3:5: expression \"\" skipped: it has no name; give it one\n"
        "FILE:4:5: expression \"x\" skipped: it has no display_name; give it one\n"
        "FILE:5:5: expression \"owned\" skipped: the stored one is built in and this one is not; give it another name, "
        "or set pre-defined=\"true\" to replace the built-in one\n"
        "FILE:6:15: expression \"typed\" skipped: a child element is missing: alphabetCharset; add it\n"
        "FILE:11:5: template \"a\" skipped: it refers to the expression \"card-numbr\", which is not stored; did you "
        "mean \"card-number\"?\n"
        "FILE:12:5: template \"b\" skipped: it refers to the keyword list \"nothing like it\", which is not stored; "
        "import that first, or correct the name\n"
        "FILE:13:5: template \"c\" skipped: a rule cannot be imported: matchRule operation=\"EXCEPT\"; write AND or "
        "OR\n"
        "FILE:14:5: template \"\" skipped: it has no name; give it one\n"
        "FILE:15:5: template \"e\" skipped: it has no display_name; give it one\n"
        "FILE:16:53: template \"f\": the child element \"industries\" is read as a rule that refers to nothing\n"
        "FILE:16:66: template \"f\": the child element \"regions\" is read as a rule that refers to nothing\n"
        "FILE:18:68: category entry \"finance\" skipped: no template of the document has this name: \"gone\"; correct "
        "the name or remove the entry\n";
    for (std::size_t i = strExpected.find("FILE"); i != std::string::npos; i = strExpected.find("FILE", i)) {
        strExpected.replace(i, 4, strFile);
    }
    EXPECT_EQ(run.strOut, strExpected);
}

TEST_F(ImportCommand, JsonNamesEachReasonByItsCode) {
    Import(Policy(Entity("owned", "pre-defined=\"true\""), "<template name=\"z\" display_name=\"Z\"/>"));
    const SToolRun run = Run({"--json", "import", "-"}, WITH_FINDINGS);
    EXPECT_EQ(run.iCode, 1);
    const Json report = Json::parse(run.strOut);
    EXPECT_EQ(report["verdict"], "findings");
    EXPECT_EQ(report["result"], 0);
    EXPECT_EQ(report["imported"], Json({"F"}));
    EXPECT_EQ(report["skipped"], Json({"A", "B", "C", "D", ""}));
    EXPECT_EQ(report["skipped_assets"], Json({"Owned", "Typed"}));
    std::string strItems;
    for (const Json& item : report["items"]) {
        strItems += item["kind"].get<std::string>() + ' ' + item["name"].get<std::string>() + ' ' +
                    item["disposition"].get<std::string>() + ' ' + item["reason"].get<std::string>() + ' ' +
                    item["line"].dump() + ':' + item["column"].dump() + '\n';
    }
    EXPECT_EQ(strItems,
              "expression  skipped no-name 3:5\n"
              "expression x skipped no-display-name 4:5\n"
              "expression owned skipped built-in 5:5\n"
              "expression typed skipped missing-child 6:15\n"
              "expression card-number created  7:5\n"
              "keyword words created  8:5\n"
              "template a skipped unsupported-assets 11:5\n"
              "template b skipped unsupported-assets 12:5\n"
              "template c skipped unsupported-assets 13:5\n"
              "template  skipped no-name 14:5\n"
              "template e skipped no-display-name 15:5\n"
              "template f created  16:5\n"
              "category finance skipped unknown-template 18:68\n");
}

TEST_F(ImportCommand, JsonSaysWhatOfARuleCannotBeImported) {
    Import(Policy(Entity("card"), "<template name=\"z\" display_name=\"Z\"/>"));
    const std::pair<std::string, Json> aRules[] = {
        {R"(<matchRule><buildingBlock sourceType="ENTITY" sourceName="crad"/></matchRule>)",
         {"unknown-expression",
          {{"kind", "expression"}, {"name", "crad"}, {"nearest", "card"}, {"older_name", nullptr}},
          0}},
        {R"(<matchRule><buildingBlock sourceType="KEYWORD" sourceName="w"/></matchRule>)",
         {"unknown-keyword", {{"kind", "keyword"}, {"name", "w"}, {"nearest", nullptr}, {"older_name", nullptr}}, 0}},
        {R"(<matchRule><buildingBlock sourceType="Entity" sourceName="card"/></matchRule>)",
         {"source-type", nullptr, 0}},
        {R"(<matchRule><buildingBlock sourceType="ENTITY" sourceName="card" operation="EXCEPT"/></matchRule>)",
         {"block-operation", nullptr, 0}},
        {R"(<rule/><matchRule operation="NOT"/>)", {"rule-operation", nullptr, 1}},
    };
    for (const auto& [strRules, expected] : aRules) {
        const SToolRun run = Run({"--json", "import", "-"},
                                 Policy("", "<template name=\"t\" display_name=\"T\">" + strRules + "</template>"));
        const Json item = Json::parse(run.strOut)["items"][0];
        EXPECT_EQ(Json({item["cause"], item["reference"], item["foreign_children"].size()}), expected) << strRules;
    }
}

TEST_F(ImportCommand, TheOlderLayoutIsConvertedAndWhatItLosesIsSaid) {
    Import(Policy(Entity("one"), "<template name=\"z\" display_name=\"Z\"/>"));
    const SToolRun run = Run({"--json", "import", "-"}, OLDER);
    EXPECT_EQ(run.iCode, 1);
    const Json report = Json::parse(run.strOut);
    EXPECT_EQ(report["imported"], Json({"Own"}));
    std::string strItems;
    for (const Json& item : report["items"]) {
        strItems += item["kind"].get<std::string>() + ' ' + item["name"].get<std::string>() + ' ' +
                    item["disposition"].get<std::string>() + ' ' + item["reason"].get<std::string>() + ' ' +
                    item["line"].dump() + ':' + item["column"].dump() + '\n';
    }
    EXPECT_EQ(strItems,
              "section digitalAssets skipped older-section 2:3\n"
              "template own created  4:5\n"
              "template theirs skipped older-built-in 5:5\n"
              "section industries skipped older-section 7:3\n");
}

TEST_F(ImportCommand, WithoutTheMapTheOlderNamesStayAndAWarningSaysWhere) {
    m_dir.MakeFolder("empty");
    Import(Policy(Entity("one"), "<template name=\"z\" display_name=\"Z\"/>"));
    const SToolRun run = Run({"--home", m_dir.Path("empty"), "import", "-"}, OLDER);
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strErr,
              "dlpctl: warning: " + m_dir.Path("empty/config/PredefinedDLPPolicy.xml") +
                  " is missing: industries and regions are exported without display names; --home DIR or "
                  "$DLP_INSTALL_PATH sets the installation directory\n"
                  "dlpctl: warning: " +
                  m_dir.Path("empty/config/cfg_dlp_da_map.txt") +
                  " is missing: names of assets in documents of the older layout are taken as they stand; "
                  "--home DIR or $DLP_INSTALL_PATH sets the installation directory\n"
                  "dlpctl: warning: -: template_version is missing or empty, so the document is read as one "
                  "of the older layout; add template_version=\"3.0.1000\" if that is not what it is\n");
    EXPECT_NE(run.strOut.find("template \"own\" skipped: it refers to the expression \"Old One\", which is not stored"),
              std::string::npos)
        << run.strOut;
}

namespace {

struct SRefused {
    const char* pDocument;
    std::vector<std::string> vecOptions;
    int iResult;
    const char* pReason;
};

const SRefused REFUSED[] = {
    {"<other/>", {}, 1, "no policy: the root element is \"other\", not \"SAPolicy\""},
    {"<SAPolicy template_version='1' localization_language='Klingon'/>",
     {},
     2,
     "the document's language is \"Klingon\", and none is set here; --language \"Klingon\" takes it"},
    {"<SAPolicy template_version='1' localization_language='Klingon'/>",
     {"--language", "Latin"},
     2,
     "the document's language is \"Klingon\", and here it is \"Latin\"; --language \"Klingon\" takes it"},
    {"<SAPolicy template_version='1'/>", {}, 3, "the document holds no template"},
    {"<SAPolicy/>", {}, 3, "the document holds no template"},
    {"<SAPolicy template_version='1'><digitalAssets><entity name='n' display_name='N'><regularExpression/></entity>"
     "</digitalAssets></SAPolicy>",
     {},
     3,
     "the document holds no template, only digital assets; dlpctl assets import FILE takes them"},
    {"<SAPolicy><complianceTemplates><template name='a' displayName='A' builtin='1'/></complianceTemplates></SAPolicy>",
     {},
     3,
     "every template of the document is built in, and none of the older layout is taken that is"},
};

}  // namespace

TEST_F(ImportCommand, ARefusedDocumentIsUndoneAndItsReasonNamed) {
    Import(Small());
    const std::string strDump = Dump();
    for (const SRefused& refused : REFUSED) {
        std::vector<std::string> vecArguments = refused.vecOptions;
        vecArguments.insert(vecArguments.end(), {"import", "-"});
        const SToolRun run = Run(vecArguments, refused.pDocument);
        EXPECT_EQ(run.iCode, 2) << refused.pReason;
        EXPECT_EQ(run.strOut, "");
        EXPECT_EQ(run.strErr, std::string("dlpctl: -:1:1: ") + refused.pReason + "; nothing was written\n");
        vecArguments.emplace_back("--json");
        const Json report = Json::parse(Run(vecArguments, refused.pDocument).strOut);
        EXPECT_EQ(report["verdict"], "invalid");
        EXPECT_EQ(report["result"], refused.iResult);
        EXPECT_EQ(report["message"], refused.pReason);
        EXPECT_EQ(report["line"], 1);
        EXPECT_EQ(report["column"], 1);
        EXPECT_EQ(report["imported"], Json::array());
        EXPECT_EQ(Dump(), strDump);
    }
}

TEST_F(ImportCommand, ADocumentOfAnotherLanguageIsTakenWhenItIsNamed) {
    std::string strDocument = Small();
    strDocument.insert(strDocument.find(" template_version"), " localization_language=\"Latin\"");
    EXPECT_EQ(Run({"import", "-"}, strDocument).iCode, 2);
    EXPECT_EQ(Run({"--language", "LATIN", "import", "-"}, strDocument).iCode, 0);
}

TEST_F(ImportCommand, ADocumentWithoutTemplatesHasAFateForEachItem) {
    const SToolRun run = Run({"import", "--json", "-"},
                             "<SAPolicy template_version='1'><digitalAssets><entity name=''/><entity name='n' "
                             "display_name='N'><regularExpression/></entity></digitalAssets></SAPolicy>");
    const Json report = Json::parse(run.strOut);
    ASSERT_EQ(report["items"].size(), 2U);
    EXPECT_EQ(report["items"][0]["reason"], "no-name");
    EXPECT_EQ(report["items"][1]["reason"], "undone");
}

namespace {

/** A file that gives no document: its bytes and what is said of it after its name. */
struct SBadFile {
    std::string strBytes;
    std::string strSaid;
};

std::string Nested(int iDepth) {
    std::string strText;
    for (int i = 0; i < iDepth; ++i) {
        strText += "<a>";
    }
    return strText;
}

constexpr const char UTF16[] =
    ": the file is not UTF-8, but UTF-16; save it as UTF-8, as iconv -f UTF-16 -t UTF-8 does";

const SBadFile BAD_FILES[] = {
    {"", ": the file is no XML: it is empty; check that this is the file you meant"},
    {"no markup at all", ": the file is no XML: there is no \"<\" in it; check that this is the file you meant"},
    {"xx\n<a>\n\xe9\xff</a>", ":3:1: the file is not UTF-8 from here on; save it as UTF-8"},
    {std::string("SQLite format 3\0<a/>", 20),
     ": the file is no XML: it is a store; where a store can stand write it as sqlite:PATH, else name it by --store"},
    {std::string("\xff\xfe<\0a\0/\0>\0", 10), UTF16},
    {std::string("\xfe\xff\0<\0a\0/\0>", 10), UTF16},
    {std::string("<\0a\0/\0>\0", 8), UTF16},
    {std::string("\0<\0a\0/\0>", 8), UTF16},
};

}  // namespace

TEST_F(ImportCommand, AStoreWhereAFileIsMeantIsToldApart) {
    const SToolRun run = Run({"import", "sqlite:bank.db"});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.strErr,
              "dlpctl: sqlite:bank.db: No such file or directory; the store is named by --store; nothing "
              "was written\n");
    EXPECT_EQ(Run({"fmt", "store"}).strErr,
              "dlpctl: store: No such file or directory; the store is named by --store\n");
}

TEST_F(ImportCommand, NothingIsNextAfterAStoreInMemory) {
    EXPECT_EQ(RunOn("memory:", {"import", m_dir.Write("small.xml", Small())}).strErr, "");
}

TEST_F(ImportCommand, AFileThatGivesNoDocumentIsSaidInOneLineAndNoStoreIsMade) {
    RemoveStore();
    for (const SBadFile& bad : BAD_FILES) {
        const std::string strFile = m_dir.Write("bad.xml", bad.strBytes);
        const SToolRun run = Run({"import", strFile});
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.strOut, "");
        EXPECT_EQ(run.strErr, "dlpctl: " + strFile + bad.strSaid + "; nothing was written\n");
        EXPECT_EQ(Run({"import", "-"}, bad.strBytes).strErr, "dlpctl: -" + bad.strSaid + "; nothing was written\n");
    }
    EXPECT_EQ(m_dir.Read("store.db"), "");
}

TEST_F(ImportCommand, XmlThatIsRefusedIsSaidWithItsPlaceInTheFile) {
    RemoveStore();
    const std::pair<std::string, const char*> aFiles[] = {
        {"\xef\xbb\xbfnoise\n<a>\n  é<b></a>", ":3:9:"},  // a wrong end tag
        {"<a>&nbsp;</a>", ":1:4:"},                       // an entity that is not defined
        {"<!DOCTYPE a><a/>", ":1:1:"},
        {"x<a/>\n<b/>", ":2:1:"},  // two roots
        {"<a>", ":1:4:"},          // cut short
        {"<a b='1' b='2'/>", ":1:10:"},
        {std::string("<a>\0</a>", 8), ":1:4:"},
        {Nested(257), ":1:769:"},
    };
    for (const auto& [strBytes, pPlace] : aFiles) {
        const std::string strFile = m_dir.Write("bad.xml", strBytes);
        const SToolRun run = Run({"import", strFile});
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.strOut, "");
        EXPECT_EQ(run.strErr.find("dlpctl: " + strFile + pPlace + ' '), 0U) << run.strErr << pPlace;
        EXPECT_EQ(run.strErr.find('\n'), run.strErr.size() - 1) << run.strErr;
        const Json report = Json::parse(Run({"--json", "import", strFile}).strOut);
        EXPECT_EQ(report["verdict"], "invalid");
        EXPECT_TRUE(report["result"].is_null());
        EXPECT_EQ(':' + report["line"].dump() + ':' + report["column"].dump() + ':', pPlace);
    }
    EXPECT_EQ(m_dir.Read("store.db"), "");
}

TEST_F(ImportCommand, JsonHoldsTheOtherPlaceThatARefusalSpeaksOf) {
    const Json report = Json::parse(Run({"--json", "import", "-"}, "<a>\n <b>\n</a>").strOut);
    EXPECT_EQ(report["related"], Json::parse(R"({"message": "\"<b>\" begins here", "line": 2, "column": 2})"));
    EXPECT_EQ(Json::parse(Run({"--json", "import", "-"}, "<a/>").strOut)["related"], Json());
}

TEST_F(ImportCommand, AFileThatCannotBeReadIsSaidInTheSystemsWords) {
    EXPECT_EQ(Run({"import", m_dir.Path("none")}).strErr,
              "dlpctl: " + m_dir.Path("none") + ": No such file or directory; nothing was written\n");
    EXPECT_EQ(Run({"import", m_dir.Path()}).strErr,
              "dlpctl: " + m_dir.Path() + ": Is a directory; nothing was written\n");
    EXPECT_EQ(Run({"import", "/proc/self/mem"}).iCode, 2);
    const Json report = Json::parse(Run({"import", m_dir.Path("none"), "--json"}).strOut);
    EXPECT_EQ(report, Json({{"format", "dlpctl-import/1"},
                            {"file", m_dir.Path("none")},
                            {"verdict", "invalid"},
                            {"result", nullptr},
                            {"imported", Json::array()},
                            {"skipped", Json::array()},
                            {"skipped_assets", Json::array()},
                            {"items", Json::array()},
                            {"dry_run", false},
                            {"passed_over", 0},
                            {"not_found", Json::array()},
                            {"message", "No such file or directory"},
                            {"line", nullptr},
                            {"column", nullptr},
                            {"related", nullptr}}));
}

TEST_F(ImportCommand, AnInputThatIsTooLargeIsNotRead) {
    const std::string strFile = m_dir.Write("large", "<");
    std::filesystem::resize_file(strFile, (std::uintmax_t{512} << 20U) + 1);
    const std::string strSaid = "dlpctl: " + strFile + ": it is larger than 512 MiB, and more is not read";
    EXPECT_EQ(Run({"import", strFile}).strErr, strSaid + "; nothing was written\n");
    for (const std::vector<std::string>& vecCommand :
         {std::vector<std::string>{"fmt"}, {"convert"}, {"store", "load"}, {"assets", "import"}}) {
        std::vector<std::string> vecWords = vecCommand;
        vecWords.push_back(strFile);
        const SToolRun run = Run(vecWords);
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.strErr.substr(0, strSaid.size()), strSaid);
    }
}

TEST_F(ImportCommand, AFileThatMayNotBeReadIsSaid) {
    const std::string strFile = m_dir.Write("secret.xml", Documents::Small());
    ::chmod(m_dir.Path().c_str(), 0755);
    ::chmod(strFile.c_str(), 0);
    const CUnprivileged unprivileged;
    EXPECT_EQ(Run({"import", strFile}).strErr, "dlpctl: " + strFile + ": Permission denied; nothing was written\n");
}

TEST_F(ImportCommand, NamesInMessagesCannotForgeLines) {
    const std::string strFile = m_dir.Write("a\nb.xml", "");
    EXPECT_EQ(Run({"import", strFile}).strErr,
              "dlpctl: " + m_dir.Path("a\\u000Ab.xml") +
                  ": the file is no XML: it is empty; check that this is the file you meant; nothing was written\n");
}

TEST_F(ImportCommand, OtherFilesGoOnAndTheHighestExitCodeWins) {
    const std::string strBad = m_dir.Write("bad.xml", "");
    const std::string strGood = m_dir.Write("good.xml", Small());
    const std::string strOlder = m_dir.Write("older.xml", OLDER);
    const SToolRun run = Run({"--json", "import", strBad, strGood, strOlder});
    EXPECT_EQ(run.iCode, 2);
    std::istringstream lines(run.strOut);
    std::vector<Json> vecReports;
    for (std::string strLine; std::getline(lines, strLine);) {
        vecReports.push_back(Json::parse(strLine));
    }
    ASSERT_EQ(vecReports.size(), 3U);
    EXPECT_EQ(vecReports[0]["verdict"], "invalid");
    EXPECT_EQ(vecReports[1]["verdict"], "done");
    EXPECT_EQ(vecReports[2]["verdict"], "findings");
    EXPECT_EQ(Run({"import", strGood, strOlder}).iCode, 1);
}

TEST_F(ImportCommand, TheScopeIsKeptWithEachRecord) {
    EXPECT_EQ(Run({"--scope", "gateway", "import", "-"}, Small()).iCode, 0);
    const Json dump = Json::parse(Dump());
    for (const char* pList : {"expressions", "keyword_lists", "templates"}) {
        for (const Json& record : dump[pList]) {
            EXPECT_EQ(record["scope"], "gateway");
        }
    }
}

TEST_F(ImportCommand, AnOutputThatTakesNothingUndoesTheFile) {
    Import(Small());
    const std::string strDump = Dump();
    for (const char* pForm : {"import", "--json import"}) {
        const SToolRun run = CProgram::Shell(
            "printf '%s' '<SAPolicy template_version=\"1\"><complianceTemplates>"
            "<template name=\"n\" display_name=\"N\"/></complianceTemplates></SAPolicy>'"
            " | \"$DLPCTL\" " +
            std::string(pForm) + " - >/dev/full");
        EXPECT_EQ(run.iCode, 4);
        EXPECT_EQ(run.strErr,
                  "dlpctl: -: cannot write standard output: No space left on device; nothing was written\n");
        EXPECT_EQ(Dump(), strDump);
    }
}

namespace {

/** Sends a signal to this very process at its n-th saved record. */
class CSignallingStore : public CForwardingStore {
  public:
    CSignallingStore(std::unique_ptr<CSettingsStore> pInner, int iSignal, int iSaves)
        : CForwardingStore(std::move(pInner)), m_iSignal(iSignal), m_iSaves(iSaves) {}
    void Save(const CSettingsRow& row) override {
        CForwardingStore::Save(row);
        if (--m_iSaves == 0) {
            std::raise(m_iSignal);
        }
    }

  private:
    int m_iSignal;
    int m_iSaves;
};

/** And that the next file was not even tried. */
void ExpectUndone(const SToolRun& run, int iCode) {
    EXPECT_EQ(run.iCode, iCode);
    const Json report = Json::parse(run.strOut);
    EXPECT_EQ(report["verdict"], "interrupted");
    EXPECT_EQ(report["imported"], Json::array());
    for (const Json& item : report["items"]) {
        EXPECT_EQ(item["reason"], "undone") << item;
    }
    EXPECT_EQ(run.strErr, "dlpctl: -: interrupted; nothing was written\n");
}

}  // namespace

TEST_F(ImportCommand, AnInterruptionAtAnAssetUndoesTheFile) {
    const std::string strDump = Dump();
    Signals::Watch();
    CSettingsStore::SetWrapper([](std::unique_ptr<CSettingsStore> pInner) {
        return std::make_unique<CSignallingStore>(std::move(pInner), SIGINT, 1);
    });
    ExpectUndone(Run({"--json", "import", "-", m_dir.Path("none")}, Small()), 130);
    EXPECT_EQ(CProgram::Shell("\"$DLPCTL\" store dump").strOut, strDump);
}

TEST_F(ImportCommand, AnInterruptionAtATemplateUndoesTheFile) {
    const std::string strDump = Dump();
    Signals::Watch();
    CSettingsStore::SetWrapper([](std::unique_ptr<CSettingsStore> pInner) {
        return std::make_unique<CSignallingStore>(std::move(pInner), SIGTERM, 4);
    });
    ExpectUndone(Run({"--json", "import", "-", m_dir.Path("none")}, Small()), 143);
    EXPECT_EQ(CProgram::Shell("\"$DLPCTL\" store dump").strOut, strDump);
}
