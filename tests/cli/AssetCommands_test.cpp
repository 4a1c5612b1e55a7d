#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "platform/store/CSettingsStore.h"
#include "tests/cli/ToolRun.h"

namespace {

using AssetCommands = CToolTest;
using Json = nlohmann::ordered_json;
using Documents::Dictionary;
using Documents::Entity;
using Documents::Policy;

std::string Assets() {
    return Policy(Entity("one") + Entity("two") + Dictionary("words"), "");
}

constexpr const char NEXT[] =
    "Next: dlpctl list expressions\n"
    "      dlpctl list keywords\n"
    "      dlpctl assets export --all -o FILE\n";

constexpr const char START[] =
    R"(<?xml version="1.0" encoding="UTF-8"?><SAPolicy template_version="3.0.1000" localization_language="">)"
    R"(<digitalAssets command="overwrite">)";

}  // namespace

TEST_F(AssetCommands, ImportTellsWhatBecameOfHowManyItems) {
    const SToolRun run = Run({"assets", "import", "-"}, Assets());
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut,
              "-:\n"
              "               CREATED  UPDATED  UNCHANGED  SKIPPED  FAILED\n"
              "expressions          2        0          0        0       0\n"
              "keyword lists        1        0          0        0       0\n");
    EXPECT_EQ(run.strErr, NEXT);
}

TEST_F(AssetCommands, ImportInJsonHasTheSameMembersAsThatOfPolicies) {
    const SToolRun run = Run({"--json", "assets", "import", "-"}, Policy(Entity("one") + Entity(""), ""));
    EXPECT_EQ(run.iCode, 1);
    const Json report = Json::parse(run.strOut);
    EXPECT_EQ(report["format"], "dlpctl-assets-import/1");
    EXPECT_EQ(report["file"], "-");
    EXPECT_EQ(report["verdict"], "findings");
    EXPECT_EQ(report["result"], 0);
    EXPECT_EQ(report["imported"], Json({"Expression one"}));
    EXPECT_EQ(report["skipped"], Json::array());
    EXPECT_EQ(report["skipped_assets"], Json::array());
    EXPECT_EQ(report["items"].size(), 2U);
}

TEST_F(AssetCommands, ImportPassesTemplatesOver) {
    const SToolRun run = Run({"assets", "import", "-"}, Documents::Small());
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut,
              "-:\n"
              "               CREATED  UPDATED  UNCHANGED  SKIPPED  FAILED\n"
              "expressions          2        0          0        0       0\n"
              "keyword lists        1        0          0        0       0\n"
              "1 template passed over; dlpctl import takes them\n");
    EXPECT_EQ(Json::parse(Run({"--json", "assets", "import", "-"}, Documents::Small()).strOut)["passed_over"], 1);
    EXPECT_EQ(Get({"list", "templates"}), "");
    EXPECT_EQ(Run({"assets", "import", "-"}, "<SAPolicy/>").strOut, "-:\nnothing to import\n");
}

TEST_F(AssetCommands, ImportRefusesWhatIsNoPolicyOrOfAnotherLanguage) {
    EXPECT_EQ(Run({"assets", "import", "-"}, "<a/>").strErr,
              "dlpctl: -:1:1: no policy: the root element is \"a\", not \"SAPolicy\"; nothing was written\n");
    const SToolRun run = Run({"assets", "import", "-"}, "<SAPolicy localization_language='Latin'/>");
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(
        run.strErr,
        "dlpctl: -:1:1: the document's language is \"Latin\", and none is set here; --language \"Latin\" takes it; "
        "nothing was written\n");
}

TEST_F(AssetCommands, ExportWritesWhatIsNamedInThatOrder) {
    ASSERT_EQ(Run({"assets", "import", "-"}, Assets()).iCode, 0);
    const SToolRun run = Run({"assets", "export", "--expression", "two", "--keyword", "words", "--expression", "one"});
    EXPECT_EQ(run.iCode, 0);
    const auto fnEntity = [](const std::string& strName) {
        return "<entity name=\"" + strName +
               R"(" type="Generic" caseSensitive="false" validator="" display_name="Expression )" + strName +
               R"(" description="" pre-defined="false"><regularExpression>\d+</regularExpression><alphabetCharset/>)"
               R"(<patternForDisplay/><examples/></entity>)";
    };
    EXPECT_EQ(run.strOut,
              START + fnEntity("two") + fnEntity("one") +
                  R"(<dictionary name="words" type="Any" display_name="List words" description="" pre-defined="false">)"
                  R"(<keyword description="" score="1" caseSensitive="false">one</keyword>)"
                  R"(<keyword description="second" score="5" caseSensitive="true">two</keyword></dictionary>)"
                  "</digitalAssets></SAPolicy>");
    EXPECT_EQ(run.strErr, "Exported: 2 expressions, 1 keyword list.\n");
}

TEST_F(AssetCommands, ExportOfAllGoesRoundWithoutLoss) {
    ASSERT_EQ(Run({"assets", "import", "-"}, Assets()).iCode, 0);
    const std::string strFirst = Get({"assets", "export", "--all"});
    EXPECT_EQ(RunOn(Url("other.db"), {"assets", "import", "-"}, strFirst).iCode, 0);
    EXPECT_EQ(RunOn(Url("other.db"), {"assets", "export", "--all"}).strOut, strFirst);
    const std::string strIndented = Get({"assets", "export", "--all", "--indent"});
    EXPECT_EQ(RunOn(Url("third.db"), {"assets", "import", "-"}, strIndented).iCode, 0);
    EXPECT_EQ(RunOn(Url("third.db"), {"assets", "export", "--all"}).strOut, strFirst);
}

TEST_F(AssetCommands, ExportNamesWhatIsNotStored) {
    ASSERT_EQ(Run({"assets", "import", "-"}, Assets()).iCode, 0);
    const std::string strFile = m_dir.Path("out.xml");
    const SToolRun run = Run({"--json", "assets", "export", "--expression", "ones", "--keyword", "gone", "--keyword",
                              "words", "-o", strFile});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strErr,
              "dlpctl: warning: expression \"ones\" is left out: it is not stored; did you mean \"one\"?\n"
              "dlpctl: warning: keyword list \"gone\" is left out: it is not stored; dlpctl list keywords lists the "
              "names\n");
    const Json report = Json::parse(run.strOut);
    EXPECT_EQ(report["format"], "dlpctl-assets-export/1");
    EXPECT_EQ(report["verdict"], "findings");
    EXPECT_EQ(report["exported"], Json({{"expressions", 0}, {"keyword_lists", 1}}));
    EXPECT_EQ(report["not_carried"], Json({{"expressions", 2}, {"keyword_lists", 0}}));
    ASSERT_EQ(report["left_out"].size(), 2U);
    EXPECT_EQ(report["left_out"][1]["kind"], "keyword");
    EXPECT_EQ(report["left_out"][1]["reason"], "not-stored");
}

TEST_F(AssetCommands, ExportOverADamagedRecordNamesIt) {
    ASSERT_EQ(Run({"assets", "import", "-"}, Assets()).iCode, 0);
    CSettingsRow row(ESettingsKind::KEYWORD);
    row.SetText(KeywordColumn::TEXT, "no markup");
    row.SetText(AssetColumn::SUBJECT, "K1");
    CSettingsStore::Make(Url("store.db"))->Save(row);
    const SToolRun run = Run({"assets", "export", "--all", "-o", m_dir.Path("out.xml")});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.strErr.find("dlpctl: K1 cannot be written: "), 0U) << run.strErr;
    EXPECT_EQ(m_dir.Read("out.xml"), "");
}
