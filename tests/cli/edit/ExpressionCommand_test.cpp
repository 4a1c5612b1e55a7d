#include <gtest/gtest.h>

#include "tests/cli/edit/EditRun.h"

namespace {

using Json = nlohmann::ordered_json;

class ExpressionCommand : public CEditTest {
  protected:
    ExpressionCommand() { Import(Documents::Small()); }

    Json Stored(const std::string& strName) const { return RunJson({"expression", "show", strName})["expression"]; }
};

}  // namespace

TEST_F(ExpressionCommand, ItIsShownWithAllItsFields) {
    EXPECT_EQ(Get({"expression", "show", "one"}), Get({"show", "expression", "one"}));
    EXPECT_EQ(Stored("one"), DumpJson()["expressions"][0]);
    ExpectRefused({"expression", "show", "onee"}, 1, "no expression is named \"onee\"; did you mean \"one\"?");
    EXPECT_EQ(RunJson({"expression", "show", "onee"})["verdict"], "findings");
}

TEST_F(ExpressionCommand, NewOneIsWhatAnImportMakes) {
    const std::vector<std::string> vecNew = {"expression", "new", "iban", "--pattern", "[A-Z]{2}\\d+"};
    ExpectSameDry(vecNew, "+ expression \"iban\"\n");
    ExpectDone(vecNew, "+ expression \"iban\"\n");
    const std::string strDump = Dump();
    EXPECT_EQ(Run({"delete", "expression", "iban"}).iCode, 0);
    Import(Documents::Policy(R"(<entity name="iban" display_name="iban" type="Generic">)"
                             R"(<regularExpression>[A-Z]{2}\d+</regularExpression></entity>)",
                             R"(<template name="x" display_name="X"/>)"));
    EXPECT_EQ(Run({"delete", "template", "x"}).iCode, 0);
    EXPECT_EQ(Dump(), strDump);
}

TEST_F(ExpressionCommand, EveryFieldCanBeSet) {
    ExpectDone({"expression", "new",
                "n",          "--pattern",
                "a+",         "--display-name",
                "N",          "--description",
                "d",          "--type",
                "type 3",     "--validator",
                "luhn",       "--case-sensitive",
                "true",       "--min-left-radius",
                "1",          "--max-left-radius",
                "2",          "--max-right-radius",
                "3",          "--alphabet-charset",
                "abc",        "--display-format",
                "A",          "--example",
                "aaa"},
               "+ expression \"n\"\n");
    EXPECT_EQ(Stored("n").dump(),
              R"({"subject":"ORVAL_SUB_CFG_DLP_EXPRESSIONn","name":"n","display_name":"N","description":"d",)"
              R"("pre_defined":false,"modified":false,"scope":"","type":"Type 3","validator":"luhn",)"
              R"("case_sensitive":true,"min_length":0,"max_length":0,"suffix_length":0,"min_left_radius":1,)"
              R"("max_left_radius":2,"max_right_radius":3,"pattern":"a+","alphabet_charset":"abc",)"
              R"("display_format":"A","example":"aaa"})");
    ExpectDone({"expression", "set", "n", "--type", "Type 2", "--suffix-length", "4", "--max-length", "9"},
               "~ expression \"n\"\n"
               "-   type: Type 3\n+   type: Type 2\n"
               "-   max_length: 0\n+   max_length: 9\n"
               "-   suffix_length: 0\n+   suffix_length: 4\n"
               "-   min_left_radius: 1\n+   min_left_radius: 0\n"
               "-   max_left_radius: 2\n+   max_left_radius: 0\n"
               "-   max_right_radius: 3\n+   max_right_radius: 0\n");
    ExpectDone({"expression", "set", "n", "--type", "generic", "--display-format", ""},
               "~ expression \"n\"\n"
               "-   type: Type 2\n+   type: Generic\n"
               "-   max_length: 9\n+   max_length: 0\n"
               "-   suffix_length: 4\n+   suffix_length: 0\n"
               "-   alphabet_charset: abc\n+   alphabet_charset:\n"
               "-   display_format: A\n+   display_format:\n");
}

TEST_F(ExpressionCommand, PatternMayComeFromAFile) {
    ExpectDone({"expression", "set", "two", "--pattern-from", "-"},
               "~ expression \"two\"\n-   pattern: \\d+\n+   pattern: -x$\n", "", "-x$\r\n");
    ExpectDone({"expression", "set", "two", "--pattern-from", m_dir.Write("p", "b")},
               "~ expression \"two\"\n-   pattern: -x$\n+   pattern: b\n");
    ExpectRefused({"expression", "set", "two", "--pattern-from", m_dir.Write("zero", std::string("a\nb\0c", 5))}, 2,
                  m_dir.Path("zero") + ":2:2: a pattern cannot hold U+0000");
    ExpectRefused({"expression", "set", "two", "--pattern-from", m_dir.Path("none")}, 2,
                  m_dir.Path("none") + ": No such file or directory");
    ExpectRefused({"expression", "set", "two", "--pattern-from", "-"}, 2,
                  "-:1:2: not UTF-8: save the file in that encoding", "a\xFF");
    ExpectRefused({"expression", "set", "two", "--pattern-from", "-", "--pattern", "x"}, 3,
                  "write either --pattern or --pattern-from, not both");
}

TEST_F(ExpressionCommand, WhatCheckFindsIsWarnedOf) {
    const Json answer = RunJson({"expression", "set", "two", "--pattern", "(a", "--validator", "lun"});
    EXPECT_EQ(answer["verdict"], "done");
    ASSERT_EQ(answer["warnings"].size(), 2U);
    EXPECT_EQ(answer["warnings"][0].get<std::string>().find("expression \"two\": DLP029 unknown-validator: "), 0U);
    EXPECT_EQ(answer["warnings"][1].get<std::string>().find("expression \"two\": DLP040 pattern-refused: "), 0U);
    const SToolRun run = Run({"expression", "set", "two", "--pattern", "(a+)+b"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strErr.find("dlpctl: warning: expression \"two\": DLP029 unknown-validator: "), 0U) << run.strErr;
    EXPECT_NE(run.strErr.find("\ndlpctl: warning: expression \"two\": DLP041 pattern-backtracks: "), std::string::npos);
}

TEST_F(ExpressionCommand, WhatCannotBeIsRefused) {
    const std::vector<std::string> vecNew = {"expression", "new", "x", "--pattern", "a"};
    const auto fnNew = [&](const std::vector<std::string>& vecMore) {
        std::vector<std::string> vecArguments = vecNew;
        vecArguments.insert(vecArguments.end(), vecMore.begin(), vecMore.end());
        return vecArguments;
    };
    ExpectRefused(fnNew({"--type", "Type 4"}), 3,
                  "--type: there is no type \"Type 4\"; write one of \"Generic\", \"Type 1\", \"Type 2\", \"Type 3\"");
    ExpectRefused(fnNew({"--min-length", "2"}), 2, "--min-length: type \"Generic\" of expressions does not have it");
    ExpectRefused(fnNew({"--type", "type 1", "--max-right-radius", "2"}), 2,
                  "--max-right-radius: type \"Type 1\" of expressions does not have it");
    ExpectRefused(fnNew({"--type", "Type 1", "--min-length", "12abc"}), 3,
                  "--min-length: \"12abc\" is no whole number of 32 bits");
    ExpectRefused(fnNew({"--case-sensitive", "1"}), 3, "--case-sensitive: \"1\" is neither true nor false");
    ExpectRefused(fnNew({"--display-name", ""}), 2,
                  "--display-name: no import takes an item whose display name is empty");
    ExpectRefused(fnNew({"--description", "\x01"}), 2,
                  "expression \"x\" could not be exported: attribute description of element entity: the character "
                  "U+0001 cannot be written in XML");
    ExpectRefused({"expression", "new", "x"}, 3, "there is no pattern; write --pattern or --pattern-from");
    ExpectRefused({"expression", "new", "one", "--pattern", "a"}, 1, "expression \"one\" is stored already");
    ExpectRefused(
        {"expression", "new", "STANDARD", "--pattern", "a"}, 2,
        "the name \"STANDARD\" cannot stand in the text of a rule: it holds AND, which joins parts of a rule");
    ExpectRefused({"expression", "set", "one"}, 3,
                  "nothing is to be changed; dlpctl expression set --help lists the fields");
    ExpectRefused({"expression", "set", "oen", "--pattern", "a"}, 1,
                  "no expression is named \"oen\"; did you mean \"one\"?");
}

TEST_F(ExpressionCommand, BuiltInOnesAreNotChanged) {
    Import(Documents::Policy(Documents::Entity("base", "pre-defined=\"true\""),
                             R"(<template name="x" display_name="X"/>)"));
    ExpectRefused({"expression", "set", "base", "--pattern", "a"}, 1,
                  "expression \"base\" is built in; only an import changes it");
}

TEST_F(ExpressionCommand, JsonSaysWhatChanged) {
    EXPECT_EQ(RunJson({"expression", "set", "two", "--case-sensitive", "TRUE", "--dry-run"}).dump(),
              R"({"format":"dlpctl-expression-set/1","verdict":"done","dry_run":true,"change":{"kind":"expression",)"
              R"("name":"two","change":"changed","fields":[{"field":"case_sensitive","before":false,"after":true}],)"
              R"("keywords":[],"rules":null},"warnings":[]})");
    EXPECT_EQ(RunJson({"expression", "new", "x", "--pattern", "a"})["change"]["change"], "added");
}

TEST_F(ExpressionCommand, ScopeIsKeptWithWhatIsWritten) {
    EXPECT_EQ(Run({"--scope", "gateway", "expression", "new", "x", "--pattern", "a"}).iCode, 0);
    EXPECT_EQ(Stored("x")["scope"], "gateway");
}
