#include <gtest/gtest.h>

#include "platform/store/CSettingsStore.h"
#include "tests/cli/edit/EditRun.h"

namespace {

using Json = nlohmann::ordered_json;

class RenameCommand : public CEditTest {
  protected:
    RenameCommand() { Import(Documents::Small()); }
};

}  // namespace

TEST_F(RenameCommand, TemplatesFollowAnExpression) {
    const std::string strOut = "~ expression \"one\" is now \"uno & <1>\"\n~   template \"cards\" follows\n";
    ExpectSameDry({"rename", "expression", "one", "uno & <1>"}, strOut);
    Json expected = DumpJson();
    expected["expressions"][0]["subject"] = "ORVAL_SUB_CFG_DLP_EXPRESSIONuno & <1>";
    expected["expressions"][0]["name"] = "uno & <1>";
    std::swap(expected["expressions"][0], expected["expressions"][1]);
    Json& cards = expected["templates"][0];
    cards["match_rules"][0]["blocks"][0]["source_name"] = "uno & <1>";
    cards["element"] =
        R"(<template name="cards"><matchRule><buildingBlock sourceType="ENTITY" entityHits="2" )"
        R"(sourceName="uno &amp; &lt;1&gt;"/><buildingBlock sourceType="KEYWORD" sourceName="words" operation="AND"/>)"
        R"(</matchRule></template>)";
    ExpectDone({"rename", "expression", "one", "uno & <1>"}, strOut);
    EXPECT_EQ(DumpJson(), expected);
}

TEST_F(RenameCommand, KeywordListKeepsItsNameInItsMarkupToo) {
    ExpectDone({"rename", "keyword", "words", "terms"},
               "~ keyword list \"words\" is now \"terms\"\n~   template \"cards\" follows\n");
    const Json list = DumpJson()["keyword_lists"][0];
    EXPECT_EQ(list["subject"], "ORVAL_SUB_CFG_DLP_KEYWORDterms");
    EXPECT_EQ(list["name"], "terms");
    EXPECT_EQ(list["text"].get<std::string>().find("<dictionary name=\"terms\" type=\"Any\""), 0U);
    EXPECT_EQ(list["keywords"].size(), 2U);
    EXPECT_EQ(DumpJson()["templates"][0]["match_rules"][0]["blocks"][1]["source_name"], "terms");
}

TEST_F(RenameCommand, TemplateKeepsAllElse) {
    Json expected = DumpJson();
    Json& cards = expected["templates"][0];
    cards["subject"] = "ORVAL_SUB_CFG_DLP_TEMPLATEBRAND";
    cards["name"] = "BRAND";
    std::string strElement = cards["element"];
    cards["element"] = strElement.replace(strElement.find("cards"), 5, "BRAND");
    ExpectDone({"rename", "template", "cards", "BRAND"}, "~ template \"cards\" is now \"BRAND\"\n");
    EXPECT_EQ(DumpJson(), expected);
}

TEST_F(RenameCommand, ReferencesAreThoseThatAnExportFinds) {
    CSettingsRow row(ESettingsKind::TEMPLATE);
    row.SetText(TemplateColumn::SUBJECT, "S");
    row.SetText(TemplateColumn::ELEMENT_NAME, "odd");
    row.SetText(TemplateColumn::ELEMENT,
                R"(<template name="odd" severity="1"><rule operation="x"><!-- c --><block sourceType=" entity " )"
                R"(sourceName="one"/><block sourceType="KEYWORD" sourceName="one"/><block sourceType="ENTITY" )"
                R"(sourceName="One"/></rule></template>)");
    CSettingsStore::Make(Url("store.db"))->Save(row);
    ExpectDone({"rename", "expression", "one", "uno"},
               "~ expression \"one\" is now \"uno\"\n~   template \"cards\" follows\n~   template \"odd\" follows\n");
    EXPECT_EQ(DumpJson()["templates"][1]["element"],
              R"(<template name="odd" severity="1"><rule operation="x"><!-- c --><block sourceType=" entity " )"
              R"(sourceName="uno"/><block sourceType="KEYWORD" sourceName="one"/><block sourceType="ENTITY" )"
              R"(sourceName="One"/></rule></template>)");
}

TEST_F(RenameCommand, TheResultImportsToTheSame) {
    EXPECT_EQ(Run({"rename", "expression", "one", "uno"}).iCode, 0);
    EXPECT_EQ(Run({"rename", "keyword", "words", "terms"}).iCode, 0);
    EXPECT_EQ(Run({"rename", "template", "cards", "payments"}).iCode, 0);
    EXPECT_EQ(Run({"export", "--all", "-q", "-o", m_dir.Path("out.xml")}).iCode, 0);
    const std::string strDump = Dump();
    EXPECT_EQ(Run({"import", m_dir.Path("out.xml")}).iCode, 0);
    Json before = Json::parse(strDump);
    Json after = DumpJson();
    for (Json* pDump : {&before, &after}) {
        (*pDump)["keyword_lists"][0].erase("text");
    }
    EXPECT_EQ(before, after);
}

TEST_F(RenameCommand, NamesThatRulesCannotCarryAreRefused) {
    ExpectRefused({"rename", "keyword", "words", "BRAND"}, 2,
                  "the name \"BRAND\" cannot stand in the text of a rule: it holds AND, which joins parts of a rule");
    ExpectRefused(
        {"rename", "expression", "one", "no EXCEPTIONS"}, 2,
        "the name \"no EXCEPTIONS\" cannot stand in the text of a rule: it holds EXCEPT, which joins parts of "
        "a rule");
    ExpectRefused({"rename", "keyword", "words", "words "}, 2,
                  "the name \"words \" cannot stand in the text of a rule: it would be read as \"words\"");
    ExpectRefused({"rename", "expression", "one", "one(2)"}, 2,
                  "the name \"one(2)\" cannot stand in the text of a rule: it would be read as \"one\"");
    ExpectRefused({"rename", "template", "cards", "\x01"}, 2,
                  "the name \"\\u0001\" cannot be written: the character U+0001 cannot be written in XML");
}

TEST_F(RenameCommand, ANameThatACheckWouldWarnOfIsWarnedOf) {
    const std::string strWarning =
        " \" x\": DLP039 blank-in-name: the name \" x\" begins or ends with a blank; remove the blank\n";
    EXPECT_EQ(Run({"-q", "rename", "template", "cards", " x", "--dry-run"}).strErr,
              "dlpctl: warning: template" + strWarning);
    EXPECT_EQ(Run({"-q", "rename", "keyword", "words", " x"}).strErr, "dlpctl: warning: keyword list" + strWarning);
    EXPECT_EQ(Run({"-q", "expression", "new", " x", "--pattern", "a", "--display-name", "X"}).strErr,
              "dlpctl: warning: expression" + strWarning);
}

TEST_F(RenameCommand, TakenAndUnknownNamesAreRefused) {
    ExpectRefused({"rename", "expression", "one", "two"}, 1, "expression \"two\" is stored already");
    ExpectRefused({"rename", "expression", "one", "one"}, 1, "expression \"one\" is stored already");
    ExpectRefused({"rename", "template", "card", "x"}, 1, "no template is named \"card\"; did you mean \"cards\"?");
    CSettingsRow row(ESettingsKind::EXPRESSION);
    row.SetText(AssetColumn::SUBJECT, "ORVAL_SUB_CFG_DLP_EXPRESSIONthree");
    CSettingsStore::Make(Url("store.db"))->Save(row);
    ExpectRefused({"rename", "expression", "one", "three"}, 1, "expression \"three\" is stored already");
}

TEST_F(RenameCommand, BuiltInOnesKeepTheirNamesButFollow) {
    Import(Documents::Policy(
        Documents::Entity("base", "pre-defined=\"true\""),
        R"(<template name="built" display_name="B" pre-defined="true"><matchRule><buildingBlock sourceType="ENTITY" )"
        R"(entityHits="1" sourceName="two"/></matchRule></template>)"));
    ExpectRefused({"rename", "expression", "base", "x"}, 1,
                  "expression \"base\" is built in; only an import changes it");
    ExpectDone({"rename", "expression", "two", "dos"},
               "~ expression \"two\" is now \"dos\"\n~   template \"built\" follows\n");
    EXPECT_EQ(DumpJson()["templates"][0]["pre_defined"], true);
}

TEST_F(RenameCommand, JsonSaysWhatFollowed) {
    EXPECT_EQ(RunJson({"rename", "expression", "one", "uno"}).dump(),
              R"({"format":"dlpctl-rename/1","verdict":"done","dry_run":false,"kind":"expression","name":"one",)"
              R"("new_name":"uno","followed":["cards"],"warnings":[]})");
    EXPECT_EQ(RunJson({"rename", "expression", "uno", "two"}).dump(),
              R"({"format":"dlpctl-rename/1","verdict":"findings","message":"expression \"two\" is stored already"})");
}
