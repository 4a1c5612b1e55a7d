#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "api/CDLPDigitalAssetsParser.h"
#include "tests/cli/ToolRun.h"
#include "tests/support/FaultStore.h"

namespace {

using Json = nlohmann::ordered_json;
using Documents::Dictionary;
using Documents::Entity;
using Documents::Policy;
using Documents::Small;
using Documents::Template;

/** Changes of every kind to what Small leaves: new, changed, equal, refused. */
std::string Second() {
    return Policy(
        Entity("one", "description=\"new\"") + Entity("two") + Entity("three") + Entity(""),
        Template("cards", "one", "words") + Template("other", "three", "words") + Template("bad", "on", "words"),
        "<industries><industry name=\"i\"><template_id>gone</template_id></industry></industries>");
}

constexpr const char OLDER[] =
    "<SAPolicy><digitalAssets><entity/></digitalAssets><complianceTemplates>\n"
    "<template name='a' displayName='A'/>\n<template name='b' displayName='B' builtin='1'/>\n"
    "<template name='c' displayName='C'/>\n</complianceTemplates></SAPolicy>";

class ImportOptions : public CToolTest {
  protected:
    Json Report(std::vector<std::string> vecArguments, const std::string& strDocument) const {
        vecArguments.insert(vecArguments.begin(), {"--json", "import", "-"});
        return Json::parse(Run(vecArguments, strDocument).strOut);
    }

    /** @return "kind name disposition reason" of each item, one a line */
    static std::string Items(const Json& report) {
        std::string strItems;
        for (const Json& item : report["items"]) {
            strItems += item["kind"].get<std::string>() + ' ' + item["name"].get<std::string>() + ' ' +
                        item["disposition"].get<std::string>() + ' ' + item["reason"].get<std::string>() + '\n';
        }
        return strItems;
    }
};

}  // namespace

TEST_F(ImportOptions, ADryRunTellsWhatTheImportTellsAndKeepsNothing) {
    Import(Small());
    const std::string strDump = Dump();
    for (const std::string& strDocument : {Second(), Small(), std::string(OLDER), std::string("<SAPolicy/>")}) {
        Json preview = Report({"--dry-run"}, strDocument);
        EXPECT_EQ(preview["dry_run"], true);
        EXPECT_EQ(Dump(), strDump);
        preview["dry_run"] = false;
        EXPECT_EQ(preview.dump(), Report({}, strDocument).dump());
        EXPECT_EQ(Run({"store", "load", m_dir.Write("dump.json", strDump)}).iCode, 0);
    }
}

TEST_F(ImportOptions, ADryRunSaysSo) {
    const SToolRun run = Run({"import", "--dry-run", "-"}, Small());
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut,
              "-:\n"
              "               CREATED  UPDATED  UNCHANGED  SKIPPED  FAILED\n"
              "expressions          2        0          0        0       0\n"
              "keyword lists        1        0          0        0       0\n"
              "templates            1        0          0        0       0\n"
              "nothing was kept: this was a dry run\n");
    EXPECT_EQ(run.strErr, "");
}

TEST_F(ImportOptions, ADryRunMakesNoStore) {
    RemoveStore();
    EXPECT_EQ(Run({"import", "--dry-run", "-"}, Small()).iCode, 0);
    EXPECT_EQ(Run({"assets", "import", "--dry-run", "-"}, Small()).iCode, 0);
    EXPECT_EQ(m_dir.Read("store.db"), "");
}

TEST_F(ImportOptions, AnImportThatKeepsNothingMakesNoStore) {
    RemoveStore();
    const std::string strSkipped = m_dir.Write("skipped.xml", Policy("", Template("a", "none", "none")));
    const std::string strHalf = m_dir.Write("half.xml", Policy(Entity("one"), Template("a", "none", "none")));
    EXPECT_EQ(Run({"import", strSkipped}).iCode, 1);
    EXPECT_EQ(Run({"import", "--fail-on-skip", strHalf}).iCode, 2);
    EXPECT_EQ(Run({"import", "--fail-on-skip", strHalf, strSkipped}).iCode, 2);
    EXPECT_EQ(Run({"import", "--only", "nosuch", strHalf}).iCode, 1);
    EXPECT_EQ(Run({"import", "-"}, "<SAPolicy template_version='1'/>").iCode, 2);
    EXPECT_EQ(Run({"import", "-"}, "<SAPolicy template_version='1' localization_language='x'/>").iCode, 2);
    EXPECT_EQ(Run({"assets", "import", "-"}, "<SAPolicy template_version='1'/>").iCode, 0);
    EXPECT_EQ(m_dir.Read("store.db"), "");
    EXPECT_EQ(Run({"import", "--fail-on-skip", strHalf, m_dir.Write("small.xml", Small())}).iCode, 2);
    const std::string strMade = Dump();
    EXPECT_EQ(RunOn(Url("second.db"), {"import", m_dir.Path("small.xml")}).iCode, 0);
    EXPECT_EQ(RunOn(Url("second.db"), {"store", "dump"}).strOut, strMade);
    EXPECT_EQ(Run({"store", "check"}).iCode, 0);
}

TEST_F(ImportOptions, InADryRunEachFileFindsWhatTheOnesBeforeItLeft) {
    const std::string strAssets = m_dir.Write("assets.xml", Small());
    const std::string strBad = m_dir.Write("bad.xml", "<SAPolicy template_version='1'/>");
    const std::string strSecond = m_dir.Write("second.xml", Policy("", Template("next", "one", "words")));
    const SToolRun preview = Run({"--json", "import", "--dry-run", strAssets, strBad, strSecond});
    const SToolRun run = Run({"--json", "import", strAssets, strBad, strSecond});
    EXPECT_EQ(preview.iCode, 2);
    EXPECT_EQ(run.iCode, 2);
    std::string strExpected = run.strOut;
    for (std::size_t i = strExpected.find("\"dry_run\":false"); i != std::string::npos;
         i = strExpected.find("\"dry_run\":false")) {
        strExpected.replace(i, 15, "\"dry_run\":true");
    }
    EXPECT_EQ(preview.strOut, strExpected);
    EXPECT_NE(run.strOut.find(R"("name":"next","display_name":"Template next","disposition":"created")"),
              std::string::npos);
}

TEST_F(ImportOptions, ADryRunLeavesTheVersionOfTheProcessAsItWas) {
    Run({"import", "--dry-run", "-"}, "<SAPolicy template_version='9'/>");
    EXPECT_EQ(CDLPDigitalAssetsParser::GetVersion(), L"3.0.1000");
    Run({"import", "-"}, "<SAPolicy template_version='9'/>");
    EXPECT_EQ(CDLPDigitalAssetsParser::GetVersion(), L"9");
}

TEST_F(ImportOptions, ADryRunOverAFailingStoreIsAFailure) {
    Import(Small());
    const std::string strDump = Dump();
    CStoreFaults faults;
    bool bReached = true;
    for (std::size_t i = 1; bReached; ++i) {
        faults.FailAt(i);
        const SToolRun run = Run({"import", "--dry-run", "-"}, Second());
        bReached = faults.IsReached();
        // What undoes everything at the end cannot fail.
        const bool bFailed = bReached && faults.GetOperations()[i - 1] != "Rollback";
        EXPECT_EQ(run.iCode, bFailed ? 4 : 1) << i;
        faults.CountOnly();
        EXPECT_EQ(Dump(), strDump);
    }
}

TEST_F(ImportOptions, SkipExistingTakesOnlyWhatIsNew) {
    Import(Small());
    const Json before = Json::parse(Dump());
    const Json report = Report({"--skip-existing"}, Second());
    EXPECT_EQ(report["verdict"], "findings");
    EXPECT_EQ(Items(report),
              "expression one skipped existing\n"
              "expression two skipped existing\n"
              "expression three created \n"
              "expression  skipped no-name\n"
              "template cards skipped existing\n"
              "template other created \n"
              "template bad skipped unsupported-assets\n"
              "category i skipped unknown-template\n");
    EXPECT_EQ(report["imported"], Json({"Template other"}));
    EXPECT_EQ(report["skipped"], Json({"Template cards", "Template bad"}));
    EXPECT_EQ(report["skipped_assets"], Json({"Expression one", "Expression two"}));
    const Json after = Json::parse(Dump());
    EXPECT_EQ(after["expressions"][0], before["expressions"][0]);
    EXPECT_EQ(after["templates"][0], before["templates"][0]);
    EXPECT_EQ(after["expressions"].size(), 3U);
}

TEST_F(ImportOptions, SkipExistingKeepsTheFirstOfTwo) {
    EXPECT_EQ(Items(Report({"--skip-existing"},
                           Policy(Entity("e") + Entity("e", "description=\"2\""), Template("t", "e", "e")))),
              "expression e created \nexpression e skipped existing\ntemplate t skipped unsupported-assets\n");
}

TEST_F(ImportOptions, SkipExistingSaysWhatToDo) {
    Import(Small());
    EXPECT_EQ(Run({"assets", "import", "--skip-existing", "-"}, Policy(Entity("one"), "")).strOut,
              "-:\n"
              "             CREATED  UPDATED  UNCHANGED  SKIPPED  FAILED\n"
              "expressions        0        0          0        1       0\n"
              "-:1:92: expression \"one\" skipped: an item of this name is stored already; import without "
              "--skip-existing to replace it\n");
}

TEST_F(ImportOptions, OnlyTakesATemplateWithWhatItRefersTo) {
    const Json report = Report({"--only", "other"}, Second() + "<!-- -->");
    EXPECT_EQ(report["verdict"], "findings");  // its keyword list is neither in the document nor stored
    EXPECT_EQ(Items(report), "expression three created \ntemplate other skipped unsupported-assets\n");
    EXPECT_EQ(report["passed_over"], 6);
    EXPECT_EQ(report["not_found"], Json::array());
    EXPECT_EQ(Get({"list", "templates"}), "");
}

TEST_F(ImportOptions, OnlyTakesAssetsByTheirNames) {
    const SToolRun run = Run({"import", "--only", "one", "-", "--only", "words"}, Small());
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut,
              "-:\n"
              "               CREATED  UPDATED  UNCHANGED  SKIPPED  FAILED\n"
              "expressions          1        0          0        0       0\n"
              "keyword lists        1        0          0        0       0\n"
              "2 items not chosen\n");
}

TEST_F(ImportOptions, OnlyInTheOlderLayoutTakesTemplates) {
    const Json report = Report({"--only", "c"}, OLDER);
    EXPECT_EQ(report["verdict"], "done");
    EXPECT_EQ(Items(report), "template c created \n");
    EXPECT_EQ(report["passed_over"], 3);
    EXPECT_EQ(Items(Report({"--only", "b"}, OLDER)), "template b skipped older-built-in\n");
}

TEST_F(ImportOptions, OnlyOfANameThatTheDocumentLacksIsAFinding) {
    const SToolRun run = Run({"import", "--only", "crads", "--only", "none of them", "--only", "two", "-"}, Small());
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut,
              "-:\n"
              "             CREATED  UPDATED  UNCHANGED  SKIPPED  FAILED\n"
              "expressions        1        0          0        0       0\n"
              "-: no item has the name \"crads\"; did you mean \"cards\"?\n"
              "-: no item has the name \"none of them\"\n"
              "3 items not chosen\n");
    const Json report = Report({"--only", "crads", "--only", "none of them"}, Small());
    EXPECT_EQ(report["not_found"],
              Json({{{"name", "crads"}, {"nearest", "cards"}}, {{"name", "none of them"}, {"nearest", nullptr}}}));
    EXPECT_EQ(report["items"], Json::array());
    EXPECT_EQ(report["verdict"], "findings");
}

TEST_F(ImportOptions, OnlyForAssetsTakesThoseOfATemplate) {
    const SToolRun run = Run({"assets", "import", "--only", "cards", "-"}, Small());
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut,
              "-:\n"
              "               CREATED  UPDATED  UNCHANGED  SKIPPED  FAILED\n"
              "expressions          1        0          0        0       0\n"
              "keyword lists        1        0          0        0       0\n"
              "1 item not chosen\n"
              "1 template passed over; dlpctl import takes them\n");
}

TEST_F(ImportOptions, FailOnSkipTakesNothingOfAFileWithAFinding) {
    Import(Small());
    const std::string strDump = Dump();
    const SToolRun run = Run({"import", "--fail-on-skip", "-"}, Second());
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.strErr, "dlpctl: -: 3 items cannot be taken, and --fail-on-skip is given; nothing was written\n");
    EXPECT_EQ(run.strOut.substr(0, run.strOut.find('\n')).substr(run.strOut.find(": ")),
              ": expression \"\" skipped: it has no name; give it one");
    EXPECT_EQ(Dump(), strDump);
    const Json report = Report({"--fail-on-skip"}, Second());
    EXPECT_EQ(report["verdict"], "invalid");
    EXPECT_EQ(report["result"], 0);
    EXPECT_EQ(report["imported"], Json::array());
    EXPECT_EQ(report["message"], "3 items cannot be taken, and --fail-on-skip is given");
    EXPECT_EQ(Items(report),
              "expression one skipped undone\n"
              "expression two skipped undone\n"
              "expression three skipped undone\n"
              "expression  skipped no-name\n"
              "template cards skipped undone\n"
              "template other skipped undone\n"
              "template bad skipped unsupported-assets\n"
              "category i skipped unknown-template\n");
    EXPECT_EQ(Run({"import", "--fail-on-skip", "-", "--only", "none"}, Small()).iCode, 2);
    EXPECT_EQ(Dump(), strDump);
}

TEST_F(ImportOptions, FailOnSkipGoesOnWithTheNextFile) {
    const std::string strBad = m_dir.Write("bad.xml", Second());
    const std::string strGood = m_dir.Write("good.xml", Small());
    EXPECT_EQ(Run({"import", "--fail-on-skip", strBad, strGood}).iCode, 2);
    EXPECT_NE(Get({"list", "templates"}), "");
}

TEST_F(ImportOptions, FailOnSkipMindsNoItemThatIsSkippedByRequest) {
    Import(Small());
    const SToolRun run = Run({"import", "--skip-existing", "--fail-on-skip", "-"}, Small());
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strErr, "");
}
