#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/cli/ToolRun.h"

namespace {

using ListCommand = CToolTest;
using ShowCommand = CToolTest;
using Json = nlohmann::ordered_json;
using Documents::Dictionary;
using Documents::Entity;
using Documents::Policy;

std::string Several() {
    return Policy(Entity("one", "pre-defined=\"true\" validator=\"luhn\"") + Entity("a&#10;b") +
                      Dictionary("words", "description=\"Words of it\""),
                  R"(<template name="cards" display_name="Cards" description="Payment" pre-defined="true">)"
                  R"(<matchRule><buildingBlock sourceType="ENTITY" entityHits="2" sourceName="one"/>)"
                  R"(<buildingBlock sourceType="KEYWORD" sourceName="words" operation="AND"/></matchRule>)"
                  R"(<matchRule operation="OR"><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>)"
                  R"(</template>)",
                  R"(<industries><industry name="finance"><template_id>cards</template_id></industry>)"
                  R"(<industry name="trade"><template_id>cards</template_id></industry></industries>)");
}

}  // namespace

TEST_F(ListCommand, EachKindHasItsColumns) {
    Import(Several());
    EXPECT_EQ(Get({"list", "expressions"}),
              "NAME      DISPLAY NAME         BUILT-IN  TYPE     VALIDATOR\n"
              "a\\u000Ab  Expression a\\u000Ab  no        Generic\n"
              "one       Expression one       yes       Generic  luhn\n");
    EXPECT_EQ(Get({"list", "keywords"}),
              "NAME   DISPLAY NAME  BUILT-IN  CONDITION  KEYWORDS\n"
              "words  List words    no        Any        2\n");
    EXPECT_EQ(Get({"list", "templates"}),
              "NAME   DISPLAY NAME  BUILT-IN  RULES\n"
              "cards  Cards         yes       2\n");
    EXPECT_EQ(Get({"list", "template"}), Get({"list", "templates"}));
}

TEST_F(ListCommand, JsonHoldsTheSameUnescaped) {
    Import(Several());
    EXPECT_EQ(
        Get({"--json", "list", "expressions"}),
        R"({"format":"dlpctl-list/1","verdict":"done","kind":"expression","items":[)"
        R"({"name":"a\nb","display_name":"Expression a\nb","pre_defined":false,"type":"Generic","validator":""},)"
        R"({"name":"one","display_name":"Expression one","pre_defined":true,"type":"Generic","validator":"luhn"}]})"
        "\n");
    EXPECT_EQ(Get({"--json", "list", "keywords"}),
              R"({"format":"dlpctl-list/1","verdict":"done","kind":"keyword","items":[{"name":"words",)"
              R"("display_name":"List words","pre_defined":false,"condition":"Any","keyword_count":2}]})"
              "\n");
    EXPECT_EQ(Get({"--json", "list", "templates"}),
              R"({"format":"dlpctl-list/1","verdict":"done","kind":"template","items":[{"name":"cards",)"
              R"("display_name":"Cards","pre_defined":true,"rule_count":2}]})"
              "\n");
}

TEST_F(ListCommand, AnEmptyStoreIsSaidToBeOne) {
    const SToolRun run = Run({"list", "keywords"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut, "");
    EXPECT_EQ(run.strErr, "The store holds no keyword lists; dlpctl import FILE reads a policy into it.\n");
    EXPECT_EQ(Run({"-q", "list", "keywords"}).strErr, "");
    EXPECT_EQ(Get({"--json", "list", "keywords"}),
              R"({"format":"dlpctl-list/1","verdict":"done","kind":"keyword","items":[]})"
              "\n");
}

TEST_F(ShowCommand, AnExpressionIsShownWithEveryField) {
    Import(Several());
    EXPECT_EQ(Get({"show", "expression", "one"}),
              "subject           ORVAL_SUB_CFG_DLP_EXPRESSIONone\n"
              "name              one\n"
              "display_name      Expression one\n"
              "description\n"
              "pre_defined       yes\n"
              "modified          no\n"
              "scope\n"
              "type              Generic\n"
              "validator         luhn\n"
              "case_sensitive    no\n"
              "min_length        0\n"
              "max_length        0\n"
              "suffix_length     0\n"
              "min_left_radius   0\n"
              "max_left_radius   0\n"
              "max_right_radius  0\n"
              "pattern           \\d+\n"
              "alphabet_charset\n"
              "display_format\n"
              "example\n");
}

TEST_F(ShowCommand, AKeywordListIsShownWithItsKeywords) {
    Import(Several());
    EXPECT_EQ(Get({"show", "keyword", "words"}),
              "subject       ORVAL_SUB_CFG_DLP_KEYWORDwords\n"
              "name          words\n"
              "display_name  List words\n"
              "description   Words of it\n"
              "pre_defined   no\n"
              "modified      no\n"
              "scope\n"
              "condition     Any\n"
              "threshold     0\n"
              "number        0\n"
              "\n"
              "KEYWORD  SCORE  CASE  DESCRIPTION\n"
              "one      1      no\n"
              "two      5      yes   second\n");
}

TEST_F(ShowCommand, ATemplateIsShownWithItsRules) {
    Import(Several());
    EXPECT_EQ(Get({"show", "templates", "cards"}),
              "subject       ORVAL_SUB_CFG_DLP_TEMPLATEcards\n"
              "name          cards\n"
              "display_name  Cards\n"
              "description   Payment\n"
              "pre_defined   yes\n"
              "scope\n"
              "industries    finance, trade\n"
              "regions\n"
              "\n"
              "OPERATOR  RULE\n"
              "          P:one(2) AND K:words\n"
              "OR        K:words\n");
}

TEST_F(ShowCommand, JsonIsTheRecordAsItIsDumped) {
    Import(Several());
    const Json dump = Json::parse(Dump());
    const std::pair<const char*, const char*> aKinds[] = {
        {"expression", "expressions"}, {"keyword", "keyword_lists"}, {"template", "templates"}};
    for (const auto& [pKind, pList] : aKinds) {
        const Json& record = dump[pList].back();
        const Json expected = {{"format", "dlpctl-show/1"}, {"verdict", "done"}, {"kind", pKind}, {"record", record}};
        const std::string strName = record["name"].get<std::string>();
        EXPECT_EQ(Json::parse(Get({"--json", "show", pKind, strName})).dump(), expected.dump());
    }
}

TEST_F(ShowCommand, AnUnknownNameNamesTheNearest) {
    Import(Several());
    const SToolRun run = Run({"show", "keyword", "word"});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut, "");
    EXPECT_EQ(run.strErr, "dlpctl: no keyword list is named \"word\"; did you mean \"words\"?\n");
    EXPECT_EQ(Run({"show", "template", "x"}).strErr,
              "dlpctl: no template is named \"x\"; dlpctl list templates lists the names\n");
    EXPECT_EQ(Run({"--json", "show", "keyword", "word"}).strOut,
              R"({"format":"dlpctl-show/1","verdict":"findings",)"
              R"("message":"no keyword list is named \"word\"; did you mean \"words\"?"})"
              "\n");
}
