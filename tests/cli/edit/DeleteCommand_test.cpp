#include <gtest/gtest.h>

#include "platform/store/CSettingsStore.h"
#include "tests/cli/edit/EditRun.h"

namespace {

using Json = nlohmann::ordered_json;

class DeleteCommand : public CEditTest {
  protected:
    DeleteCommand() { Import(Documents::Small()); }
};

}  // namespace

TEST_F(DeleteCommand, RecordIsGoneAndTheOthersStay) {
    Json expected = DumpJson();
    expected["expressions"].erase(1);
    ExpectSameDry({"delete", "expression", "two"}, "- expression \"two\"\n");
    ExpectDone({"delete", "expressions", "two"}, "- expression \"two\"\n");
    EXPECT_EQ(DumpJson(), expected);
    expected["templates"] = Json::array();
    ExpectDone({"delete", "template", "cards"}, "- template \"cards\"\n");
    EXPECT_EQ(DumpJson(), expected);
}

TEST_F(DeleteCommand, WhatTemplatesReferToIsKept) {
    Import(Documents::Policy("", Documents::Template("other", "two", "words")));
    ExpectRefused({"delete", "expression", "one"}, 1,
                  "expression \"one\" is in use: template \"cards\" refers to it; --force deletes it all the same");
    ExpectRefused(
        {"delete", "keyword", "words"}, 1,
        "keyword list \"words\" is in use: templates \"cards\", \"other\" refer to it; --force deletes it all "
        "the same");
    EXPECT_EQ(RunJson({"delete", "keyword", "words"}).dump(),
              R"({"format":"dlpctl-delete/1","verdict":"findings","kind":"keyword","name":"words",)"
              R"("used_by":["cards","other"],"message":"keyword list \"words\" is in use: templates \"cards\", )"
              R"(\"other\" refer to it; --force deletes it all the same"})");
}

TEST_F(DeleteCommand, ReferencesCountByTheirKindAlone) {
    Import(Documents::Policy(Documents::Dictionary("one"), Documents::Template("cards", "one", "words")));
    ExpectDone({"delete", "keyword", "one"}, "- keyword list \"one\"\n");
}

TEST_F(DeleteCommand, ForceDeletesAndWarns) {
    ExpectDone({"delete", "expression", "one", "--force"}, "- expression \"one\"\n",
               "dlpctl: warning: expression \"one\" is in use: template \"cards\" refers to it\n");
    EXPECT_EQ(DumpJson()["expressions"].size(), 1U);
    EXPECT_EQ(
        RunJson({"delete", "keyword", "words", "--force", "--dry-run"}).dump(),
        R"({"format":"dlpctl-delete/1","verdict":"done","dry_run":true,"kind":"keyword","name":"words",)"
        R"("used_by":["cards"],"warnings":["keyword list \"words\" is in use: template \"cards\" refers to it"]})");
    EXPECT_EQ(DumpJson()["keyword_lists"].size(), 1U);
}

TEST_F(DeleteCommand, BuiltInOnesAreKept) {
    Import(Documents::Policy(Documents::Entity("base", "pre-defined=\"true\""),
                             R"(<template name="built" display_name="B" pre-defined="true"/>)"));
    ExpectRefused({"delete", "expression", "base"}, 1,
                  "expression \"base\" is built in; --force deletes it all the same");
    ExpectRefused({"delete", "template", "built"}, 1,
                  "template \"built\" is built in; --force deletes it all the same");
    ExpectDone({"delete", "template", "built", "--force"}, "- template \"built\"\n",
               "dlpctl: warning: template \"built\" is built in\n");
}

TEST_F(DeleteCommand, UnknownNamesNameTheNearest) {
    ExpectRefused({"delete", "template", "card"}, 1, "no template is named \"card\"; did you mean \"cards\"?");
    ExpectRefused({"delete", "keyword", "one"}, 1,
                  "no keyword list is named \"one\"; dlpctl list keywords lists the names");
    EXPECT_EQ(RunJson({"delete", "keyword", "one"})["verdict"], "findings");
}

TEST_F(DeleteCommand, StoredElementsThatAreNoTemplateReferToNothing) {
    CSettingsRow row(ESettingsKind::TEMPLATE);
    row.SetText(TemplateColumn::SUBJECT, "S");
    row.SetText(TemplateColumn::ELEMENT, "no element");
    CSettingsStore::Make(Url("store.db"))->Save(row);
    ExpectDone({"delete", "expression", "two"}, "- expression \"two\"\n");
}
