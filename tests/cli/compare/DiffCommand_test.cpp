#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include <nlohmann/json.hpp>

#include "platform/store/CSettingsStore.h"
#include "tests/cli/ToolRun.h"
#include "tests/support/JsonSchema.h"

namespace {

using Json = nlohmann::ordered_json;
using Documents::Dictionary;
using Documents::Entity;
using Documents::Policy;
using Documents::Small;
using Documents::Template;

constexpr const char SAME[] = "The policies are the same.\n";

class DiffCommand : public CToolTest {
  protected:
    /** Runs with --json and holds the answer against its schema. */
    SToolRun RunJson(std::vector<std::string> vecArguments) const {
        vecArguments.emplace_back("--json");
        const SToolRun run = Run(vecArguments);
        EXPECT_EQ(CheckAnswer("diff", run.strOut), "");
        return run;
    }
    /** Compares two documents as files. */
    SToolRun Diff(const std::string& strBefore, const std::string& strAfter, bool bJson = false) const {
        std::vector<std::string> vecArguments{"diff", m_dir.Write("a.xml", strBefore), m_dir.Write("b.xml", strAfter)};
        return bJson ? RunJson(vecArguments) : Run(vecArguments);
    }
    void ExpectSame(const std::string& strBefore, const std::string& strAfter) const {
        const SToolRun run = Diff(strBefore, strAfter);
        EXPECT_EQ(run.iCode, 0) << strAfter;
        EXPECT_EQ(run.strOut, "") << strAfter;
        EXPECT_EQ(run.strErr.substr(run.strErr.rfind('\n', run.strErr.size() - 2) + 1), SAME) << run.strErr << strAfter;
    }
};

std::string Rules(const std::string& strRules) {
    return R"(<template name="cards" display_name="Cards" pre-defined="false">)" + strRules + "</template>";
}

std::string Rule(const std::string& strOperation, const std::string& strBlocks) {
    return "<matchRule" + (strOperation.empty() ? "" : " operation=\"" + strOperation + '"') + '>' + strBlocks +
           "</matchRule>";
}

std::string Block(const std::string& strName, const std::string& strHits, const std::string& strOperation = "") {
    return "<buildingBlock sourceType=\"" +
           std::string(strHits.empty() ? "KEYWORD" : "ENTITY\" entityHits=\"" + strHits) + "\" sourceName=\"" +
           strName + '"' + (strOperation.empty() ? "" : " operation=\"" + strOperation + '"') + "/>";
}

std::string Words(const std::string& strMore, const std::string& strKeywords) {
    return R"(<dictionary name="words" display_name="Words" )" + strMore + '>' + strKeywords + "</dictionary>";
}

std::string Word(const std::string& strWord, const std::string& strMore = "") {
    return "<keyword " + strMore + '>' + strWord + "</keyword>";
}

/** One change of every sort. */
std::string Before() {
    return Policy(Entity("gone", "validator=\"luhn\"") + Entity("one", "validator=\"luhn\"") +
                      Words(R"(type="Threshold" threshold="2")", Word("alpha", "score=\"1\"") + Word("beta")),
                  Rules(Rule("", Block("one", "2") + Block("words", "", "AND"))),
                  R"(<industries><industry name="finance"><template_id>cards</template_id></industry></industries>)");
}

std::string After() {
    return Policy(
        Entity("new") + Entity("one", "caseSensitive=\"true\"") +
            Words(R"(type="Threshold" threshold="3")",
                  Word("gamma", R"(description="third" caseSensitive="true")") + Word("alpha", "score=\"4\"")),
        Rules(Rule("", Block("one", "3") + Block("words", "", "AND"))));
}

}  // namespace

TEST_F(DiffCommand, EachItemIsShownWithWhatDiffers) {
    const SToolRun run = Diff(Before(), After());
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut,
              "- expression \"gone\"\n"
              "+ expression \"new\"\n"
              "~ expression \"one\"\n"
              "-   validator: luhn\n"
              "+   validator:\n"
              "-   case_sensitive: no\n"
              "+   case_sensitive: yes\n"
              "~ keyword list \"words\"\n"
              "-   threshold: 2\n"
              "+   threshold: 3\n"
              "-   keyword \"alpha\", score 1\n"
              "+   keyword \"alpha\", score 4\n"
              "-   keyword \"beta\", score 0\n"
              "+   keyword \"gamma\", score 0, case matters: third\n"
              "~ template \"cards\": stricter\n"
              "-   industries: finance\n"
              "+   industries:\n"
              "-   rule: P:one(2) AND K:words\n"
              "+   rule: P:one(3) AND K:words\n"
              "    no longer matches content with P:one(2), K:words alone\n");
    EXPECT_EQ(run.strErr, "1 added, 1 removed, 3 changed.\n");
}

TEST_F(DiffCommand, JsonSaysTheSame) {
    const SToolRun run = Diff(Before(), After(), true);
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strErr, "");
    const Json found = Json::parse(run.strOut);
    EXPECT_EQ(found["before"],
              Json({{"policy", m_dir.Path("a.xml")}, {"left_out", Json::array()}, {"refused", Json::array()}}));
    EXPECT_EQ(found["after"],
              Json({{"policy", m_dir.Path("b.xml")}, {"left_out", Json::array()}, {"refused", Json::array()}}));
    EXPECT_EQ(found["verdict"], "findings");
    EXPECT_EQ(
        found["items"].dump(),
        R"([{"kind":"expression","name":"gone","change":"removed","fields":[],"keywords":[],"rules":null},)"
        R"({"kind":"expression","name":"new","change":"added","fields":[],"keywords":[],"rules":null},)"
        R"({"kind":"expression","name":"one","change":"changed","fields":[)"
        R"({"field":"validator","before":"luhn","after":""},{"field":"case_sensitive","before":false,"after":true}],)"
        R"("keywords":[],"rules":null},)"
        R"({"kind":"keyword","name":"words","change":"changed","fields":[{"field":"threshold","before":2,"after":3}],)"
        R"("keywords":[{"keyword":"alpha","before":{"description":"","score":1,"case_sensitive":false},)"
        R"("after":{"description":"","score":4,"case_sensitive":false}},)"
        R"({"keyword":"beta","before":{"description":"","score":0,"case_sensitive":false},"after":null},)"
        R"({"keyword":"gamma","before":null,"after":{"description":"third","score":0,"case_sensitive":true}}],)"
        R"("rules":null},)"
        R"({"kind":"template","name":"cards","change":"changed","fields":[)"
        R"({"field":"industries","before":["finance"],"after":[]}],"keywords":[],)"
        R"("rules":{"relation":"stricter","before":["P:one(2) AND K:words"],"after":["P:one(3) AND K:words"],)"
        R"("now_matches":null,"no_longer_matches":[)"
        R"({"source_type":"ENTITY","entity_hits":2,"source_name":"one"},)"
        R"({"source_type":"KEYWORD","entity_hits":0,"source_name":"words"}]}}])");
}

TEST_F(DiffCommand, APolicyIsTheSameAsItself) {
    ExpectSame(Before(), Before());
    EXPECT_EQ(Diff(Before(), Before(), true).strOut,
              R"({"format":"dlpctl-diff/1","verdict":"done","before":{"policy":")" + m_dir.Path("a.xml") +
                  R"(","left_out":[],"refused":[]},"after":{"policy":")" + m_dir.Path("b.xml") +
                  R"(","left_out":[],"refused":[]},"items":[]})" + '\n');
}

TEST_F(DiffCommand, OrderIndentationAndDefaultsMakeNoDifference) {
    const std::string strCategories = R"(<regions><region name="eu"><template_id>cards</template_id></region>)"
                                      R"(<region name="us"><template_id>cards</template_id></region></regions>)";
    const std::string strTurned = R"(<regions><region name="us"><template_id>cards</template_id></region>)"
                                  R"(<region name="eu"><template_id>cards</template_id></region></regions>)";
    const std::string strTemplate = Rules(Rule("", Block("one", "2")));
    const std::pair<std::string, std::string> aPairs[] = {
        {Policy(Entity("a") + Entity("b"), ""), Policy(Entity("b") + Entity("a"), "")},
        {Policy(Entity("a"), ""),
         Policy("\n    " + Entity("a", "\n  caseSensitive=\"no\" validator=\"\" minLength=\"7\"\n"), "")},
        {Policy(Words("", Word("x") + Word("y") + Word("x")), ""),
         Policy(Words("type=\"ALL\"",
                      "\n" + Word("x", "score=\"0\"") + Word("x") + "<!-- -->" + Word("y", "description=\"\"")),
                "")},
        {Policy("", strTemplate, strCategories), Policy("", "\n" + strTemplate, strTurned)},
        {Policy("", Rules(Rule("", Block("a", "") + Block("b", "")))),
         Policy("", R"(<template severity="high" pre-defined="no" display_name="Cards" name="cards">)" +
                        Rule("SKIP", "\n" + Block("a", "", "x") + Block("b", "")) + "</template>")},
    };
    for (const auto& [strBefore, strAfter] : aPairs) {
        ExpectSame(strBefore, strAfter);
    }
}

TEST_F(DiffCommand, RulesWrittenOtherwiseAreShownAndMakeNoDifference) {
    const SToolRun run =
        Diff(Policy("", Rules(Rule("", Block("a", "") + Block("b", "", "AND")) + Rule("OR", Block("c", "")))),
             Policy("", Rules(Rule("", Block("b", "") + Block("a", "")) + Rule("OR", Block("c", "")))));
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut,
              "= template \"cards\": reordered\n"
              "-   rule: K:a AND K:b\n"
              "+   rule: K:b K:a\n"
              "    rule: OR K:c\n");
    EXPECT_EQ(run.strErr, SAME);
    const SToolRun json = RunJson({"diff", m_dir.Path("a.xml"), m_dir.Path("b.xml")});
    EXPECT_EQ(json.iCode, 0);
    EXPECT_EQ(Json::parse(json.strOut)["items"][0]["change"], "same");
    EXPECT_EQ(Json::parse(json.strOut)["items"][0]["rules"]["relation"], "reordered");
}

TEST_F(DiffCommand, ExampleOfContentThatMatchesOtherwise) {
    const SToolRun run = Diff(Policy("", Rules(Rule("", Block("a", "")) + Rule("EXCEPT", Block("b", "")))),
                              Policy("", Rules(Rule("", Block("x", "0")) + Rule("EXCEPT", Block("b", "")))));
    EXPECT_EQ(run.strOut,
              "~ template \"cards\": looser\n"
              "-   rule: K:a\n"
              "+   rule: P:x(0)\n"
              "    rule: EXCEPT K:b\n"
              "    now matches content with none of what the rules name\n");
}

TEST_F(DiffCommand, TheLaterOfTwoElementsCountsAsInAnImport) {
    const std::string strBuiltIn = "pre-defined=\"true\"";
    const std::string strOwn = "pre-defined=\"false\" validator=\"luhn\"";
    ExpectSame(Policy(Entity("a") + Entity("a", "validator=\"luhn\""), ""),
               Policy(Entity("a", "validator=\"luhn\""), ""));
    const SToolRun run =
        Diff(Policy(Entity("a", strBuiltIn) + Entity("a", strOwn), ""), Policy(Entity("a", strBuiltIn), ""));
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut, "");
    EXPECT_EQ(run.strErr,
              "dlpctl: warning: " + m_dir.Path("a.xml") +
                  ":1:222: expression \"a\" skipped: the stored one is built in and this one is not; give it "
                  "another name, or set pre-defined=\"true\" to replace the built-in one\n" +
                  SAME);
}

TEST_F(DiffCommand, ABuiltInTemplateIsReplacedByABuiltInOneOnly) {
    const auto fnTemplate = [](const std::string& strDescription, const std::string& strPreDefined) {
        return "\n<template name=\"t\" display_name=\"T\" description=\"" + strDescription + "\" pre-defined=\"" +
               strPreDefined + "\"/>";
    };
    const std::string strFirst = Policy("", fnTemplate("first", "true"));
    ExpectSame(Policy("", fnTemplate("older", "true") + fnTemplate("first", "TRUE")), strFirst);
    const SToolRun run = Diff(Policy("", fnTemplate("first", "true") + fnTemplate("own", "no")), strFirst);
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut, "");
    EXPECT_EQ(run.strErr, "dlpctl: warning: " + m_dir.Path("a.xml") +
                              ":3:1: template \"t\" skipped: the stored one is built in and this one is not; give it "
                              "another name, or set pre-defined=\"true\" to replace the built-in one\n" +
                              SAME);
}

TEST_F(DiffCommand, WhatImportWouldNotTakeIsLeftOutAndSaid) {
    const SToolRun run =
        Diff(Policy("<entity name=\"a\" display_name=\"A\"/>\n<dictionary name=\"\" display_name=\"W\"/>",
                    "\n<template name=\"t\"/>"),
             Policy("", ""));
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut, "");
    const std::string strStart = "dlpctl: warning: " + m_dir.Path("a.xml");
    EXPECT_EQ(run.strErr,
              strStart + ":1:92: expression \"a\" skipped: a child element is missing: regularExpression; add it\n" +
                  strStart + ":2:1: keyword list \"\" skipped: it has no name; give it one\n" + strStart +
                  ":3:1: template \"t\" skipped: it has no display_name; give it one\n" + SAME);
    const Json found = Json::parse(RunJson({"diff", m_dir.Path("a.xml"), m_dir.Path("b.xml")}).strOut);
    EXPECT_EQ(found["verdict"], "findings");
    EXPECT_EQ(found["before"]["left_out"][2].dump(),
              R"({"kind":"template","name":"t","display_name":"","disposition":"skipped","reason":"no-display-name",)"
              R"("line":3,"column":1,"detail":""})");
}

TEST_F(DiffCommand, TemplatesThatNoImportTakesAreComparedAndWarnedOf) {
    const std::string strBefore = Policy("", "\n" + Rules(Rule("", Block("w", "") + Block("v", "", "EXCEPT"))));
    const SToolRun run = Diff(strBefore, strBefore);
    EXPECT_EQ(run.iCode, 0);
    const std::string strWhy =
        ":2:1: template \"cards\" is taken as it stands, but no import takes it: a rule cannot be imported: "
        "buildingBlock "
        "sourceType=\"KEYWORD\" sourceName=\"v\" operation=\"EXCEPT\"; write AND or OR\n";
    EXPECT_EQ(run.strErr, "dlpctl: warning: " + m_dir.Path("a.xml") + strWhy +
                              "dlpctl: warning: " + m_dir.Path("b.xml") + strWhy + SAME);
    const Json found = Json::parse(RunJson({"diff", m_dir.Path("a.xml"), m_dir.Path("b.xml")}).strOut);
    EXPECT_EQ(found["before"]["refused"][0]["reason"], "unsupported-assets");
    EXPECT_EQ(found["before"]["left_out"], Json::array());
}

TEST_F(DiffCommand, WhatIsNoItemAndWhatNamesNoTemplateIsLeftOutToo) {
    const SToolRun run = Diff(Policy("\n<Entity/>", "\n<templte name=\"t\"/>",
                                     "\n<regions><region name=\"r\"><template_id>t</template_id></region></regions>"),
                              Policy("", ""));
    EXPECT_EQ(run.iCode, 1);
    const std::string strStart = "dlpctl: warning: " + m_dir.Path("a.xml");
    EXPECT_EQ(
        run.strErr,
        strStart + ":2:1: element \"Entity\" skipped: no policy has it in digitalAssets; did you mean \"entity\"?\n" +
            strStart +
            ":3:1: element \"templte\" skipped: no policy has it in complianceTemplates; did you mean \"template\"?\n" +
            strStart +
            ":4:27: category entry \"r\" skipped: no template of the document has this name: \"t\"; correct the "
            "name or remove the entry\n" +
            SAME);
    EXPECT_EQ(Json::parse(RunJson({"diff", m_dir.Path("a.xml"), m_dir.Path("b.xml")}).strOut)["verdict"], "findings");
}

TEST_F(DiffCommand, StoresAreReadAndLeftAsTheyAre) {
    Import(Small());
    EXPECT_EQ(RunOn(Url("other.db"), {"import", "-"}, Small()).iCode, 0);
    EXPECT_EQ(Run({"diff", "store", Url("other.db")}).strErr, SAME);
    EXPECT_EQ(Run({"diff", m_dir.Write("small.xml", Small()), "store"}).strErr, SAME);
    EXPECT_EQ(Run({"diff", "store", "-"}, Small()).strErr, SAME);
    EXPECT_EQ(Run({"diff", "memory:", "store"}).strErr, "4 added.\n");
    for (const char* pFile : {"other.db-wal", "other.db-shm", "store.db-wal", "store.db-shm"}) {
        EXPECT_FALSE(std::filesystem::exists(m_dir.Path(pFile))) << pFile;
    }
}

TEST_F(DiffCommand, AnExportIsTheSameAsTheStore) {
    Import(Small());
    CSettingsRow expression =
        *CSettingsStore::Make(Url("store.db"))->FindOne(ESettingsKind::EXPRESSION, AssetColumn::NAME, "one");
    expression.SetText(ExpressionColumn::TYPE, "type 3");
    expression.SetText(ExpressionColumn::ALPHABET_CHARSET, "abc");
    expression.SetNumber(ExpressionColumn::MIN_LENGTH, 4);
    expression.SetNumber(ExpressionColumn::MAX_LEFT_RADIUS, 5);
    expression.SetText(AssetColumn::SCOPE, "scope");
    expression.SetFlag(AssetColumn::MODIFIED, true);
    CSettingsStore::Make(Url("store.db"))->Save(expression);
    EXPECT_EQ(Run({"export", "--all", "-o", m_dir.Path("out.xml"), "-q"}).iCode,
              0);  // without "two", to which nothing refers
    const SToolRun run = Run({"diff", "store", m_dir.Path("out.xml")});
    EXPECT_EQ(run.strOut, "- expression \"two\"\n");
    EXPECT_EQ(run.strErr, "1 removed.\n");
}

TEST_F(DiffCommand, APolicyIsTheSameOnItsWayThroughAStore) {
    const std::string strPolicy = DLP_SOURCE_DIR "/examples/starter-policy.xml";
    EXPECT_EQ(Run({"import", strPolicy}).iCode, 0);
    EXPECT_EQ(Run({"diff", strPolicy, "store"}).strErr, SAME);
    EXPECT_EQ(Run({"export", "--all", "--indent", "-o", m_dir.Path("out.xml")}).iCode, 0);
    EXPECT_EQ(Run({"diff", "store", m_dir.Path("out.xml")}).strErr, SAME);
}

TEST_F(DiffCommand, ItemsWithAnotherNameAreToldAsRenamed) {
    const std::string strBefore = Policy(Entity("one") + Entity("two", "validator=\"luhn\"") + Dictionary("words"),
                                         Template("cards", "one", "words") + Template("mail", "two", "words"));
    const std::string strAfter = Policy(Entity("uno") + Entity("two", "validator=\"luhn\"") + Dictionary("terms"),
                                        Template("cards", "uno", "terms") + Template("post", "two", "terms"));
    const SToolRun run = Diff(strBefore, strAfter);
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut,
              "~ expression \"one\": renamed to \"uno\"\n"
              "-   display_name: Expression one\n"
              "+   display_name: Expression uno\n"
              "~ keyword list \"words\": renamed to \"terms\"\n"
              "-   display_name: List words\n"
              "+   display_name: List terms\n"
              "~ template \"mail\": renamed to \"post\"\n"
              "-   display_name: Template mail\n"
              "+   display_name: Template post\n");
    EXPECT_EQ(run.strErr, "3 renamed.\n");
    EXPECT_EQ(Json::parse(Diff(strBefore, strAfter, true).strOut)["items"][0].dump(),
              R"({"kind":"expression","name":"one","change":"renamed","fields":[{"field":"display_name",)"
              R"("before":"Expression one","after":"Expression uno"}],"keywords":[],"rules":null,"new_name":"uno"})");
}

TEST_F(DiffCommand, RenamingARecordIsToldAsSuch) {
    Import(Small());
    std::filesystem::copy(m_dir.Path("store.db"), m_dir.Path("before.db"));
    EXPECT_EQ(Run({"rename", "expression", "one", "uno"}).iCode, 0);
    EXPECT_EQ(Run({"rename", "template", "cards", "payments"}).iCode, 0);
    const SToolRun renamed = Run({"diff", Url("before.db"), "store"});
    EXPECT_EQ(renamed.strOut,
              "~ expression \"one\": renamed to \"uno\"\n"
              "~ template \"cards\": renamed to \"payments\"\n");
    EXPECT_EQ(renamed.strErr, "2 renamed.\n");
    EXPECT_EQ(Run({"template", "set", "payments", "P:uno(9)"}).iCode, 0);
    const SToolRun changed = Run({"diff", Url("before.db"), "store"});
    EXPECT_EQ(changed.strOut,
              "~ expression \"one\": renamed to \"uno\"\n"
              "- template \"cards\"\n"
              "+ template \"payments\"\n");
    EXPECT_EQ(changed.strErr, "1 added, 1 removed, 1 renamed.\n");
}

TEST_F(DiffCommand, RulesThatChangedBesideARenameAreComparedUnderTheNewName) {
    const SToolRun run = Diff(Policy(Entity("one") + Dictionary("words"), Template("cards", "one", "words")),
                              Policy(Entity("uno") + Dictionary("words"), Rules(Rule("", Block("uno", "1")))));
    EXPECT_EQ(run.strOut,
              "~ expression \"one\": renamed to \"uno\"\n"
              "-   display_name: Expression one\n"
              "+   display_name: Expression uno\n"
              "~ template \"cards\": looser\n"
              "-   display_name: Template cards\n"
              "+   display_name: Cards\n"
              "-   description: What it is for\n"
              "+   description:\n"
              "-   rule: P:uno(2) AND K:words\n"
              "+   rule: P:uno(1)\n"
              "    now matches content with P:uno(1) alone\n");
}

TEST_F(DiffCommand, ARuleThatStillHasTheEarlierNameRefersToNothing) {
    const std::string strRules = Rules(Rule("", Block("one", "2")));
    const std::string strText =
        "~ expression \"one\": renamed to \"uno\"\n"
        "-   display_name: Expression one\n"
        "+   display_name: Expression uno\n"
        "~ template \"cards\": different\n"
        "-   rule: P:uno(2)\n"
        "+   rule: P:one(2)\n"
        "    now matches content with P:one(2) alone\n"
        "    no longer matches content with P:uno(2) alone\n";
    EXPECT_EQ(Diff(Policy(Entity("one"), strRules), Policy(Entity("uno"), strRules)).strOut, strText);
    const std::string strOtherwise = Rules(Rule("", Block("one", "2", "AND")));
    EXPECT_EQ(Diff(Policy(Entity("one"), strRules), Policy(Entity("uno"), strOtherwise)).strOut, strText);
}

TEST_F(DiffCommand, NoRenameIsClaimedWhereSeveralWouldDo) {
    const auto fnEntity = [](const std::string& strName, const std::string& strDisplayName) {
        return R"(<entity type="Generic" name=")" + strName + R"(" display_name=")" + strDisplayName +
               R"("><regularExpression>x</regularExpression></entity>)";
    };
    const auto fnDiff = [&](const std::string& strBefore, const std::string& strAfter) {
        return Diff(Policy(strBefore, ""), Policy(strAfter, "")).strErr;
    };
    EXPECT_EQ(fnDiff(fnEntity("a", "A"), fnEntity("b", "B")), "1 renamed.\n");
    EXPECT_EQ(fnDiff(fnEntity("a", "A") + fnEntity("b", "B"), fnEntity("c", "C")), "1 added, 2 removed.\n");
    EXPECT_EQ(fnDiff(fnEntity("a", "A"), fnEntity("b", "B") + fnEntity("c", "C")), "2 added, 1 removed.\n");
    EXPECT_EQ(fnDiff(fnEntity("a", "A"), fnEntity("b", "B") + fnEntity("c", "A")), "1 added, 1 renamed.\n");
    EXPECT_EQ(fnDiff(fnEntity("a", "A") + fnEntity("b", "B"), fnEntity("c", "A") + fnEntity("d", "D")), "2 renamed.\n");
    EXPECT_EQ(fnDiff(fnEntity("a", "A") + fnEntity("b", "A"), fnEntity("c", "A")), "1 added, 2 removed.\n");
}

TEST_F(DiffCommand, RecordsWithoutANameOfTheirOwnGoByTheirSubject) {
    const std::unique_ptr<CSettingsStore> pStore = CSettingsStore::Make(Url("store.db"));
    for (const char* pSubject : {"A", "B"}) {
        CSettingsRow row(ESettingsKind::EXPRESSION);
        row.SetText(AssetColumn::SUBJECT, pSubject);
        row.SetText(AssetColumn::NAME, "x");
        pStore->Save(row);
    }
    CSettingsRow row(ESettingsKind::TEMPLATE);
    row.SetText(TemplateColumn::SUBJECT, "T");
    row.SetText(TemplateColumn::ELEMENT, "no element");
    pStore->Save(row);
    EXPECT_EQ(Run({"diff", "memory:", "store"}).strOut, "+ expression \"B\"\n+ expression \"x\"\n+ template \"T\"\n");
}

TEST_F(DiffCommand, OlderLayoutIsComparedAfterConversion) {
    const std::string strOlder = R"(<SAPolicy><complianceTemplates><template name="t" displayName="T" builtin="0">)" +
                                 Rule("", Block("Old One", "1")) +
                                 R"(</template><template name="b" displayName="B" builtin="1"/>)" +
                                 "</complianceTemplates></SAPolicy>";
    const std::string strPresent =
        Policy("", R"(<template name="t" display_name="T">)" + Rule("", Block("one", "1")) + "</template>");
    const SToolRun run = Diff(strOlder, strPresent);
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut, "");
    EXPECT_EQ(run.strErr,
              "dlpctl: warning: " + m_dir.Path("a.xml") +
                  ":1:185: template \"b\" skipped: built-in templates of the older layout are not taken; set "
                  "builtin=\"0\" to import it as one of your own\n" +
                  SAME);
}

TEST_F(DiffCommand, AnyLanguageWillDo) {
    std::string strGerman = Small();
    strGerman.replace(strGerman.find(" template_version"), 1, " localization_language=\"German\" ");
    ExpectSame(Small(), strGerman);
}

TEST_F(DiffCommand, BadInputIsInvalid) {
    const std::string strGood = m_dir.Write("good.xml", Small());
    const std::pair<std::string, std::string> aFiles[] = {
        {m_dir.Path("missing.xml"), ": No such file or directory"},
        {m_dir.MakeFolder("folder"), ": Is a directory"},
        {m_dir.Write("empty.xml", ""), ": the file is no XML: it is empty; check that this is the file you meant"},
        {m_dir.Write("text.xml", "text"),
         ": the file is no XML: there is no \"<\" in it; check that this is the file you meant"},
        {m_dir.Write("latin.xml", "<a>\n\xe9</a>"), ":2:1: the file is not UTF-8 from here on; save it as UTF-8"},
        {m_dir.Write("other.xml", "<other/>"), ": no policy: the root element is \"other\", not \"SAPolicy\""},
    };
    for (const auto& [strFile, strWhy] : aFiles) {
        for (const std::vector<std::string>& vecPlaces : {std::vector{strFile, strGood}, {strGood, strFile}}) {
            const SToolRun run = Run({"diff", vecPlaces[0], vecPlaces[1]});
            EXPECT_EQ(run.iCode, 2) << strFile;
            EXPECT_EQ(run.strOut, "");
            EXPECT_EQ(run.strErr, "dlpctl: " + strFile + strWhy + '\n');
        }
        const Json failure = Json::parse(RunJson({"diff", strFile, strGood}).strOut);
        EXPECT_EQ(failure.dump(),
                  Json({{"format", "dlpctl-diff/1"}, {"verdict", "invalid"}, {"message", strFile + strWhy}}).dump());
    }
    const SToolRun run = Run({"diff", m_dir.Write("cut.xml", "<SAPolicy>\n<a"), strGood});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.strErr.find("dlpctl: " + m_dir.Path("cut.xml") + ":2:"), 0U) << run.strErr;
    std::string strDeep;
    for (int i = 0; i < 300; ++i) {
        strDeep += "<a>";
    }
    EXPECT_EQ(Run({"diff", m_dir.Write("deep.xml", strDeep), strGood}).iCode, 2);
}

TEST_F(DiffCommand, StoresThatCannotBeReadAreNeverMade) {
    const std::pair<std::string, std::string> aUrls[] = {
        {Url("none.db"), "cannot read the file: No such file or directory"},
        {Url("none/none.db"), "cannot read the file: No such file or directory"},
        {Url("home"), "it is a folder"},
        {"sqlite:" + m_dir.Write("text.db", "text"),
         "it is no settings store, or a damaged one, and is left as it is; name another path, or bring back a backup "
         "(\"dlpctl store restore\")"},
        {"sqlite:" + m_dir.Write("empty.db", ""),
         "it is empty: nobody has finished making it, or it was cut to nothing; the next import makes it, or bring back "
         "a backup (\"dlpctl store restore\")"},
    };
    for (const auto& [strUrl, strWhy] : aUrls) {
        const SToolRun run = Run({"diff", strUrl, "memory:"});
        EXPECT_EQ(run.iCode, 4);
        EXPECT_EQ(run.strErr, "dlpctl: settings store " + strUrl + ", opening it: " + strWhy + '\n');
    }
    EXPECT_FALSE(std::filesystem::exists(m_dir.Path("none.db")));
    EXPECT_FALSE(std::filesystem::exists(m_dir.Path("none")));
    EXPECT_EQ(m_dir.Read("empty.db"), "");
}

TEST_F(DiffCommand, StoresAreMeantWhereTheToolWasStarted) {
    Import(Small());
    const SToolRun run = CProgram::Shell("cd '" + m_dir.Path() + "' && \"$DLPCTL\" diff sqlite:store.db store");
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strErr, SAME);
}

TEST_F(DiffCommand, ColoursAreForTerminalsOnly) {
    const std::string strCommand =
        "\\\"$DLPCTL\\\" -q diff '" + m_dir.Write("a.xml", Before()) + "' '" + m_dir.Write("b.xml", After()) + "'";
    const auto fnRun = [&](const std::string& strVariables) {
        return CProgram::Shell(strVariables + " script -qec \"" + strCommand + "\" /dev/null </dev/null").strOut;
    };
    const std::string strColoured = fnRun("NO_COLOR=");
    EXPECT_NE(strColoured.find("\x1b[31m- expression \"gone\"\x1b[0m\r\n\x1b[32m+ expression \"new\"\x1b[0m\r\n"
                               "\x1b[33m~ expression \"one\"\x1b[0m\r\n"),
              std::string::npos)
        << strColoured;
    const std::string strPlain = fnRun("NO_COLOR=1");
    EXPECT_NE(strPlain.find("- expression \"gone\"\r\n+ expression \"new\"\r\n"), std::string::npos) << strPlain;
    EXPECT_EQ(strPlain.find('\x1b'), std::string::npos);
    EXPECT_EQ(std::regex_replace(strColoured, std::regex("\x1b\\[[0-9]*m"), ""), strPlain);
}

TEST_F(DiffCommand, AClosedPipeEndsQuietly) {
    const std::string strDiff =
        "\"$DLPCTL\" diff '" + m_dir.Write("a.xml", Before()) + "' '" + m_dir.Write("b.xml", After()) + "'";
    const SToolRun run = CProgram::Shell("{ sleep 0.2; " + strDiff + "; echo $? >&2; } | :");
    EXPECT_EQ(run.strErr, "4\n");
}
