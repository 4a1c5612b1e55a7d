#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>

#include <nlohmann/json.hpp>

#include "platform/store/CSettingsStore.h"
#include "tests/cli/ToolRun.h"

namespace {

namespace fs = std::filesystem;
using ExportCommand = CToolTest;
using Json = nlohmann::ordered_json;
using Documents::Dictionary;
using Documents::Entity;
using Documents::Policy;
using Documents::Template;

constexpr const char SMALL_EXPORT[] =
    R"(<?xml version="1.0" encoding="UTF-8"?><SAPolicy template_version="3.0.1000" localization_language="">)"
    R"(<digitalAssets command="overwrite"><entity name="one" type="Generic" caseSensitive="false" validator="" )"
    R"(display_name="Expression one" description="" pre-defined="false"><regularExpression>\d+</regularExpression>)"
    R"(<alphabetCharset/><patternForDisplay/><examples/></entity><dictionary name="words" type="Any" )"
    R"(display_name="List words" description="" pre-defined="false"><keyword description="" score="1" )"
    R"(caseSensitive="false">one</keyword><keyword description="second" score="5" caseSensitive="true">two</keyword>)"
    R"(</dictionary></digitalAssets><complianceTemplates command="overwrite"><template name="cards" )"
    R"(display_name="Template cards" description="What it is for" pre-defined="false"><matchRule>)"
    R"(<buildingBlock sourceType="ENTITY" entityHits="2" sourceName="one"/><buildingBlock sourceType="KEYWORD" )"
    R"(sourceName="words" operation="AND"/></matchRule></template></complianceTemplates><industries>)"
    R"(<industry name="finance" display_name="Finance"><template_id>cards</template_id></industry></industries>)"
    R"(<regions><region name="eu" display_name="Europe"><template_id>cards</template_id></region>)"
    R"(<region name="us" display_name=""><template_id>cards</template_id></region></regions></SAPolicy>)";

constexpr const char SMALL_COUNTS[] =
    "Exported: 1 expression, 1 keyword list, 1 template.\n"
    "In the store but not in the document: 1 expression; dlpctl assets export writes those.\n";

/** Adds a template to the store as it stands, element and all. */
void Store(const std::string& strUrl, const std::string& strSubject, const std::string& strDisplayName,
           const std::string& strElement, const char* pElementName = nullptr) {
    CSettingsRow row(ESettingsKind::TEMPLATE);
    row.SetText(TemplateColumn::SUBJECT, strSubject);
    row.SetText(TemplateColumn::DISPLAY_NAME, strDisplayName);
    row.SetText(TemplateColumn::ELEMENT, strElement);
    if (pElementName != nullptr) {
        row.SetText(TemplateColumn::ELEMENT_NAME, pElementName);
    }
    CSettingsStore::Make(strUrl)->Save(row);
}

/** A policy with more expressions than are written in one piece. */
std::string Long() {
    std::string strAssets;
    std::string strTemplates;
    for (int i = 0; i < 300; ++i) {
        const std::string strNumber = std::to_string(i);
        strAssets += Entity("e" + strNumber, "description=\"" + std::string(2000, 'x') + '"');
        strTemplates += Template("t" + strNumber, "e" + strNumber, "words");
    }
    return Policy(strAssets + Dictionary("words"), strTemplates);
}

}  // namespace

TEST_F(ExportCommand, FilesBesideTheStoreAreKept) {
    Import(Documents::Small());
    fs::create_symlink(m_dir.Path("store.db"), m_dir.Path("link.db"));
    for (const char* pSideFile : {"-wal", "-shm", "-journal", "-writer", "-maker"}) {
        const std::string strFile = m_dir.Path("store.db") + pSideFile;
        const std::string strSaid = "dlpctl: " + strFile + ": is a file of the store; name another file\n";
        EXPECT_EQ(Run({"export", "--all", "-o", strFile}).strErr, strSaid);
        EXPECT_EQ(RunOn(Url("link.db"), {"export", "--all", "-o", strFile}).strErr, strSaid);
        EXPECT_EQ(Run({"--log", strFile, "list", "templates"}).strErr, "dlpctl: --log: " + strFile + " is a store\n");
        EXPECT_EQ(Run({"store", "backup", strFile}).iCode, 3);
        EXPECT_FALSE(fs::exists(strFile));
    }
}

TEST_F(ExportCommand, FilesBesideAnotherStoreAreKept) {
    Import(Documents::Small());
    ASSERT_EQ(Run({"store", "backup", m_dir.Path("other.db")}).iCode, 0);
    for (const char* pSideFile : {"-wal", "-shm", "-journal", "-writer", "-maker"}) {
        const std::string strFile = m_dir.Path("other.db") + pSideFile;
        const std::string strLink = m_dir.Path("link");
        fs::create_symlink(strFile, strLink);
        EXPECT_EQ(Run({"export", "--all", "-o", strFile}).strErr,
                  "dlpctl: " + strFile + ": is a file of a store; name another file\n");
        EXPECT_EQ(Run({"export", "--all", "-o", strLink}).strErr,
                  "dlpctl: " + strLink + ": is a file of a store; name another file\n");
        EXPECT_EQ(Run({"--log", strFile, "list", "templates"}).strErr, "dlpctl: --log: " + strFile + " is a store\n");
        EXPECT_EQ(Run({"store", "backup", strFile}).iCode, 3);
        EXPECT_FALSE(fs::exists(strFile));
        fs::remove(strLink);
    }
    EXPECT_EQ(Run({"-q", "export", "--all", "-o", m_dir.Path("none-wal")}).iCode, 0);
}

TEST_F(ExportCommand, FilesBesideTheStoreAreKeptFromLinksThatLeadNowhere) {
    Import(Documents::Small());
    const std::string strPolicy = m_dir.Write("policy.xml", Documents::Small());
    const std::string strLink = m_dir.Path("link");
    const std::vector<std::vector<std::string>> vecCommands = {
        {"export", "--all", "-o", strLink},
        {"assets", "export", "--all", "-o", strLink},
        {"fmt", "-o", strLink, strPolicy},
        {"convert", "-o", strLink, strPolicy},
        {"import", "--report", strLink, strPolicy},
        {"store", "dump", "-o", strLink},
        {"store", "backup", strLink},
        {"--log", strLink, "list", "templates"},
    };
    for (const char* pSideFile : {"-wal", "-shm", "-journal", "-writer", "-maker"}) {
        fs::create_symlink(std::string("store.db") + pSideFile, m_dir.Path("hop"));
        fs::create_symlink("hop", strLink);
        for (const std::vector<std::string>& vecCommand : vecCommands) {
            EXPECT_EQ(Run(vecCommand).iCode, 3) << vecCommand.front() << pSideFile;
            EXPECT_FALSE(fs::exists(strLink)) << vecCommand.front() << pSideFile;
        }
        EXPECT_EQ(Run(vecCommands.front()).strErr,
                  "dlpctl: " + strLink + ": is a file of the store; name another file\n");
        fs::remove(strLink);
        fs::remove(m_dir.Path("hop"));
    }
}

TEST_F(ExportCommand, StoreToBeMadeIsNoOutputThroughALink) {
    RemoveStore();
    const std::string strPolicy = m_dir.Write("policy.xml", Documents::Small());
    const std::string strLink = m_dir.Path("link");
    fs::create_symlink("store.db", strLink);
    EXPECT_EQ(Run({"import", "--report", strLink, strPolicy}).strErr,
              "dlpctl: " + strLink + ": is the store itself; name another file\n");
    EXPECT_EQ(Run({"--log", strLink, "import", strPolicy}).strErr, "dlpctl: --log: " + strLink + " is a store\n");
    EXPECT_FALSE(fs::exists(strLink));
}

TEST_F(ExportCommand, WhatNoImportTakesIsWarnedOf) {
    Import(Documents::Small());
    const std::string strSafe = Get({"export", "--all"});
    EXPECT_EQ(Json::parse(Get({"--json", "export", "--all", "-o", m_dir.Path("safe.xml")}))["warnings"], Json::array());
    Get({"template", "set", "cards", "P:one(2) EXCEPT K:words"});
    const std::string strWarning =
        "template \"cards\" holds EXCEPT, which no import takes: an import of the document "
        "skips it; dlpctl store dump and load carry it";
    const SToolRun run = Run({"-q", "export", "cards"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strErr, "dlpctl: warning: " + strWarning + '\n');
    const Json answer = Json::parse(Get({"--json", "export", "--all", "-o", m_dir.Path("out.xml")}));
    EXPECT_EQ(answer["warnings"], Json::array({strWarning}));
    EXPECT_EQ(m_dir.Read("out.xml"), run.strOut);
    EXPECT_NE(run.strOut, strSafe);
    EXPECT_EQ(RunOn("memory:", {"import", m_dir.Path("out.xml")}).iCode, 1);
}

TEST_F(ExportCommand, WritesTheDocumentAndNothingElseToStandardOutput) {
    Import(Documents::Small());
    const SToolRun run = Run({"export", "cards"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut, SMALL_EXPORT);
    EXPECT_EQ(run.strErr, SMALL_COUNTS);
    EXPECT_EQ(Run({"-q", "export", "--all"}).strErr, "");
    EXPECT_EQ(Run({"export", "--all", "-o", "-"}).strOut, SMALL_EXPORT);
}

TEST_F(ExportCommand, JsonTellsOfTheFileItWrote) {
    Import(Documents::Small());
    const std::string strFile = m_dir.Path("out.xml");
    const SToolRun run = Run({"--json", "export", "cards", "gone", "--output", strFile});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(m_dir.Read("out.xml"), SMALL_EXPORT);
    const Json expected = {{"format", "dlpctl-export/1"},
                           {"output", strFile},
                           {"verdict", "findings"},
                           {"exported", {{"expressions", 1}, {"keyword_lists", 1}, {"templates", 1}}},
                           {"not_carried", {{"expressions", 1}, {"keyword_lists", 0}, {"templates", 0}}},
                           {"left_out",
                            {{{"kind", "template"},
                              {"name", "gone"},
                              {"reason", "not-stored"},
                              {"message", "it is not stored; dlpctl list templates lists the names"}}}},
                           {"warnings", Json::array()}};
    EXPECT_EQ(Json::parse(run.strOut), expected);
    EXPECT_EQ(Json::parse(Run({"--json", "export", "cards", "-o", strFile}).strOut)["verdict"], "done");
}

TEST_F(ExportCommand, AnotherStoreIsNoOutputFileEither) {
    Import(Documents::Small());
    const std::string strDump = Dump();
    ASSERT_EQ(RunOn(Url("other.db"), {"store", "load", "-"}, strDump).iCode, 0);
    const std::string strBytes = m_dir.Read("other.db");
    const std::string strOther = m_dir.Path("other.db");
    for (const std::vector<std::string>& vecCommand :
         {std::vector<std::string>{"export", "--all", "-o", strOther}, {"store", "dump", "-o", strOther}}) {
        const SToolRun run = Run(vecCommand);
        EXPECT_EQ(run.iCode, 3);
        EXPECT_EQ(run.strErr, "dlpctl: " + strOther + ": is a store; name another file\n");
        EXPECT_EQ(m_dir.Read("other.db"), strBytes);
    }
}

TEST_F(ExportCommand, TheAnswerInJsonNeverSharesTheDocumentsFile) {
    const std::string strDocument = m_dir.Path("small.xml");
    m_dir.Write("small.xml", Documents::Small());
    const std::string strTool = "\"$DLPCTL\" --store " + Url("own.db") + ' ';
    ASSERT_EQ(CProgram::Shell(strTool + "-q import " + strDocument + " >/dev/null").iCode, 0);
    for (const std::string& strPipe : {std::string(" | cat"), " > " + m_dir.Path("both.json")}) {
        const SToolRun run =
            CProgram::Shell("{ " + strTool + "--json export --all -o /dev/stdout; echo $? >&2; }" + strPipe);
        EXPECT_EQ(run.strErr,
                  "dlpctl: --json needs -o FILE here: the document and the answer cannot share standard output\n3\n");
    }
    EXPECT_EQ(CProgram::Shell(strTool + "--json export --all -o /dev/null >/dev/null").iCode, 0);
}

TEST_F(ExportCommand, TheStoreItselfIsNoOutputFile) {
    Import(Documents::Small());
    const std::string strDump = Dump();
    const std::string strStore = m_dir.Path("own.db");
    EXPECT_EQ(RunOn(Url("own.db"), {"store", "load", "-"}, strDump).iCode, 0);
    for (const std::vector<std::string>& vecCommand :
         {std::vector<std::string>{"export", "--all", "-o", strStore}, {"store", "dump", "-o", strStore}}) {
        const SToolRun run = RunOn(Url("own.db"), vecCommand);
        EXPECT_EQ(run.iCode, 3);
        EXPECT_EQ(run.strErr, "dlpctl: " + strStore + ": is the store itself; name another file\n");
        EXPECT_EQ(RunOn(Url("own.db"), {"store", "dump"}).strOut, strDump);
    }
}

TEST_F(ExportCommand, IndentedItMeansTheSame) {
    Import(Documents::Small());
    const std::string strIndented = Get({"export", "--all", "--indent"});
    EXPECT_NE(strIndented.find("\n    <entity name=\"one\""), std::string::npos) << strIndented;
    const std::string strPlain = Get({"export", "--all"});
    EXPECT_EQ(RunOn(Url("plain.db"), {"import", "-"}, strPlain).iCode, 0);
    EXPECT_EQ(RunOn(Url("indented.db"), {"import", "-"}, strIndented).iCode, 0);
    EXPECT_EQ(RunOn(Url("indented.db"), {"store", "dump"}).strOut, RunOn(Url("plain.db"), {"store", "dump"}).strOut);
}

TEST_F(ExportCommand, TheOrderIsThatOfTheRequestOrOfTheStore) {
    Import(Policy(Entity("one") + Dictionary("words"),
                  Template("c", "one", "words") + Template("a", "one", "words") + Template("b", "one", "words")));
    const auto fnOrder = [](const std::string& strDocument) {
        std::string strOrder;
        for (std::size_t i = strDocument.find("<template name="); i != std::string::npos;
             i = strDocument.find("<template name=", i + 1)) {
            strOrder += strDocument[i + 16];
        }
        return strOrder;
    };
    EXPECT_EQ(fnOrder(Get({"export", "--all"})), "abc");
    EXPECT_EQ(fnOrder(Get({"export", "c", "a", "c"})), "cac");
}

TEST_F(ExportCommand, EachTemplateThatIsNotInTheDocumentIsNamedWithTheReason) {
    Import(Documents::Small());
    Store(Url("store.db"), "T1", "Bad reference",
          "<template name=\"bad\"><matchRule><buildingBlock sourceType=\"KEYWORD\" sourceName=\"x\"/></matchRule>"
          "</template>",
          "bad");
    Store(Url("store.db"), "T2", "No template", "<other/>");
    Store(Url("store.db"), "T3", "Twin", "<template name=\"cards\"/>", "cards");
    const SToolRun run = Run({"export", "--all", "-q"});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut, SMALL_EXPORT);
    EXPECT_EQ(
        run.strErr,
        "dlpctl: warning: template \"\" is left out: its element has no name to ask for; its display name is \"No "
        "template\"\n"
        "dlpctl: warning: template \"cards\" is left out: another template of this name comes first in the "
        "store: \"Twin\"\n"
        "dlpctl: warning: template \"bad\" is left out: a rule refers to what is not stored: KEYWORD \"x\"\n");
    EXPECT_EQ(Run({"-q", "export", "card"}).strErr,
              "dlpctl: warning: template \"card\" is left out: it is not stored; did you mean \"cards\"?\n");
}

TEST_F(ExportCommand, ATemplateThatRefersToNothingBesideItsRulesIsNamedWithIt) {
    Import(Documents::Small());
    Run({"import", "-"}, Documents::Policy("",
                                           "<template name=\"t\" display_name=\"T\"><note><x sourceType=\"KEYWORD\" "
                                           "sourceName=\"nope\"/></note></template>"));
    const SToolRun run = Run({"export", "--all"});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.strErr,
              "dlpctl: the template \"t\" cannot be exported: it refers to the keyword list \"nope\", which is not "
              "stored; import that first, or correct the name; nothing was written\n");
    EXPECT_EQ(Run({"export", "cards"}).iCode, 0);
}

TEST_F(ExportCommand, ARecordThatCannotBeWrittenIsNamedAndNothingIsWritten) {
    Import(Documents::Small());
    CSettingsRow row(ESettingsKind::TEMPLATE);
    row.SetText(TemplateColumn::SUBJECT, "T\x01");
    row.SetText(TemplateColumn::DISPLAY_NAME, "a\x01z");
    row.SetText(TemplateColumn::ELEMENT, "<template name=\"damaged\"/>");
    row.SetText(TemplateColumn::ELEMENT_NAME, "damaged");
    CSettingsStore::Make(Url("store.db"))->Save(row);
    const std::string strFile = m_dir.Write("out.xml", "old");
    const SToolRun run = Run({"export", "--all", "-o", strFile});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.strErr.find("dlpctl: T\\u0001 cannot be written: "), 0U) << run.strErr;
    EXPECT_NE(run.strErr.find("U+0001"), std::string::npos) << run.strErr;
    EXPECT_NE(run.strErr.find("; nothing was written\n"), std::string::npos) << run.strErr;
    EXPECT_EQ(m_dir.Read("out.xml"), "old");
    const Json report = Json::parse(Run({"--json", "export", "--all", "-o", strFile}).strOut);
    EXPECT_EQ(report["format"], "dlpctl-export/1");
    EXPECT_EQ(report["verdict"], "invalid");
}

TEST_F(ExportCommand, ALongDocumentIsTheSameWhereverItGoes) {
    Import(Long());
    const std::string strDocument = Run({"export", "--all"}).strOut;
    ASSERT_GT(strDocument.size(), 500000U);
    const std::string strFile = m_dir.Write("out.xml", "old");
    EXPECT_EQ(Run({"export", "--all", "-o", strFile}).iCode, 0);
    EXPECT_TRUE(m_dir.Read("out.xml") == strDocument);
    EXPECT_EQ(Run({"--json", "export", "--all", "-o", strFile}).iCode, 0);
    EXPECT_TRUE(m_dir.Read("out.xml") == strDocument);
    EXPECT_EQ(Run({"--log", m_dir.Path("log"), "--log-level", "all", "export", "--all", "-o", strFile}).iCode, 0);
    EXPECT_TRUE(m_dir.Read("out.xml") == strDocument);
    const std::string strLog = m_dir.Read("log");
    const std::size_t iLogged = strLog.find("returns <" + strDocument.substr(0, strDocument.find('\\')));
    ASSERT_NE(iLogged, std::string::npos);
    EXPECT_GE(strLog.find('\n', iLogged), iLogged + strDocument.size());
    EXPECT_EQ(Run({"export", "--all", "--indent", "-o", strFile}).iCode, 0);
    EXPECT_TRUE(m_dir.Read("out.xml") == Run({"fmt", "-"}, strDocument).strOut);
    EXPECT_TRUE(CProgram::Shell("\"$DLPCTL\" export --all -o /dev/stdout | cat").strOut == strDocument);
    EXPECT_EQ(Run({"assets", "export", "--all", "-o", strFile}).iCode, 0);
    EXPECT_TRUE(m_dir.Read("out.xml") == Run({"assets", "export", "--all"}).strOut);
}

TEST_F(ExportCommand, ALongDocumentThatFailsLateLeavesNothing) {
    Import(Long());
    CSettingsRow row(ESettingsKind::KEYWORD);
    row.SetText(AssetColumn::SUBJECT, "Keyword words");
    {
        const auto pStore = CSettingsStore::Make(Url("store.db"));
        row = *pStore->FindOne(ESettingsKind::KEYWORD, AssetColumn::NAME, "words");
        row.SetText(KeywordColumn::TEXT, "none");
        pStore->Save(row);
    }
    const std::string strFile = m_dir.Write("new/out.xml", "old");
    for (const std::vector<std::string>& vecCommand : {std::vector<std::string>{"export"}, {"assets", "export"}}) {
        std::vector<std::string> vecArguments = vecCommand;
        vecArguments.insert(vecArguments.end(), {"--all", "-o"});
        for (const std::string& strTarget : {strFile, std::string("/dev/stdout"), std::string("-")}) {
            vecArguments.push_back(strTarget);
            const SToolRun run = Run(vecArguments);
            vecArguments.pop_back();
            EXPECT_EQ(run.iCode, 2) << strTarget;
            EXPECT_EQ(run.strOut, "") << strTarget;
            EXPECT_NE(run.strErr.find("; nothing was written\n"), std::string::npos) << run.strErr;
        }
        EXPECT_EQ(m_dir.Read("new/out.xml"), "old");
        EXPECT_EQ(std::distance(fs::directory_iterator(m_dir.Path("new")), fs::directory_iterator()), 1);
    }
}

TEST_F(ExportCommand, WhereItGoesIsLookedAtBeforeWhatItHolds) {
    for (const std::string& strDocument : {std::string(Documents::Small()), Long()}) {
        Import(strDocument);
        {
            const auto pStore = CSettingsStore::Make(Url("store.db"));
            CSettingsRow row = *pStore->FindOne(ESettingsKind::KEYWORD, AssetColumn::NAME, "words");
            row.SetText(KeywordColumn::TEXT, "none");
            pStore->Save(row);
        }
        const SToolRun missing = Run({"assets", "export", "--all", "-o", m_dir.Path("none/out.xml")});
        EXPECT_EQ(missing.iCode, 4);
        EXPECT_EQ(missing.strErr,
                  "dlpctl: cannot write " + m_dir.Path("none/out.xml") + ": No such file or directory\n");
        const SToolRun store = Run({"assets", "export", "--all", "-o", m_dir.Path("store.db")});
        EXPECT_EQ(store.iCode, 3);
        EXPECT_EQ(store.strErr, "dlpctl: " + m_dir.Path("store.db") + ": is the store itself; name another file\n");
        // Nobody reads it, and it is not waited for.
        const std::string strPipe = m_dir.Path("pipe");
        ::mkfifo(strPipe.c_str(), 0600);
        EXPECT_EQ(Run({"assets", "export", "--all", "-o", strPipe}).iCode, 2);
    }
}

TEST_F(ExportCommand, AnOutputThatCannotBeWrittenIsFourAndNothingIsLeft) {
    Import(Documents::Small());
    const SToolRun run = Run({"export", "--all", "-o", m_dir.Path("none/out.xml")});
    EXPECT_EQ(run.iCode, 4);
    EXPECT_EQ(run.strErr, "dlpctl: cannot write " + m_dir.Path("none/out.xml") + ": No such file or directory\n");
    const Json report = Json::parse(Run({"--json", "export", "--all", "-o", m_dir.Path("none/out.xml")}).strOut);
    EXPECT_EQ(report["verdict"], "output");
    EXPECT_EQ(CProgram::Shell("\"$DLPCTL\" export --all >/dev/full").strErr,
              "dlpctl: cannot write standard output: No space left on device\n");
}

TEST_F(ExportCommand, AClosedPipeIsFourWithoutAWord) {
    Import(Documents::Small());
    const SToolRun run =
        CProgram::Shell("{ sleep 0.3; \"$DLPCTL\" export --all; echo $? >'" + m_dir.Path("code") + "'; } | true");
    EXPECT_EQ(run.strErr, "");
    EXPECT_EQ(m_dir.Read("code"), "4\n");
}

TEST_F(ExportCommand, AnEmptyStoreGivesAnEmptyPolicy) {
    const SToolRun run = Run({"export", "--all"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut,
              R"(<?xml version="1.0" encoding="UTF-8"?><SAPolicy template_version="3.0.1000" localization_language="">)"
              R"(<digitalAssets command="overwrite"/><complianceTemplates command="overwrite"/><industries/><regions/>)"
              R"(</SAPolicy>)");
    EXPECT_EQ(run.strErr, "Exported: 0 expressions, 0 keyword lists, 0 templates.\n");
}

TEST_F(ExportCommand, TheLanguageStandsInTheDocument) {
    EXPECT_NE(Get({"--language", "Latin", "export", "--all"}).find("localization_language=\"Latin\""),
              std::string::npos);
}

TEST_F(ExportCommand, WithoutThePredefinedListsAWarningSaysWhere) {
    m_dir.MakeFolder("empty");
    const SToolRun run = Run({"-q", "--home", m_dir.Path("empty"), "export", "--all"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strErr, "dlpctl: warning: " + m_dir.Path("empty/config/PredefinedDLPPolicy.xml") +
                              " is missing: industries and regions are exported without display names; --home DIR or "
                              "$DLP_INSTALL_PATH sets the installation directory\n");
}
