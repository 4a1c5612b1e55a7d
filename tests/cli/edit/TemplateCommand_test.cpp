#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "platform/store/CSettingsStore.h"
#include "tests/cli/edit/EditRun.h"
#include "tests/support/Sanitized.h"

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

class TemplateCommand : public CEditTest {
  protected:
    TemplateCommand() {
        Import(Documents::Small());
        EXPECT_EQ(Run({"template", "set", "cards", "--region", "eu"}).strErr, "");
        ::unsetenv("VISUAL");
        ::unsetenv("EDITOR");
        fs::create_directory(m_dir.Path("tmp"));
        ::setenv("TMPDIR", m_dir.Path("tmp").c_str(), 1);
    }

    /** @param strScript what the editor does with the file "$1" */
    void SetEditor(const char* pVariable, const std::string& strScript) const {
        const std::string strFile = m_dir.Write("editor", "#!/bin/sh\n" + strScript + '\n');
        fs::permissions(strFile, fs::perms::owner_all);
        ::setenv(pVariable, strFile.c_str(), 1);
    }
    /** @return what editors have left */
    std::size_t CountKept() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(m_dir.Path("tmp")), fs::directory_iterator()));
    }
    std::string ShowRules() const { return Get({"template", "show", "cards"}); }

    /** Expects the faults of a rule, and the store as it was. */
    void ExpectFaults(const std::string& strRule, const std::string& strErr) const {
        const std::string strDump = Dump();
        const SToolRun run = Run({"template", "set", "cards", "--", strRule});
        EXPECT_EQ(run.iCode, 2) << strRule;
        EXPECT_EQ(run.strOut, "");
        EXPECT_EQ(run.strErr, strErr);
        EXPECT_EQ(Dump(), strDump);
    }
};

constexpr const char HEAD[] =
    "# One rule a line: P:EXPRESSION(COUNT) and K:KEYWORD LIST, joined by AND, OR and EXCEPT.\n"
    "# From the second rule on a line begins with the operator that joins it to those before.\n"
    "# Lines that begin with # say nothing. Without any rule nothing is changed.\n";

}  // namespace

TEST_F(TemplateCommand, RulesAreShownALineEach) {
    EXPECT_EQ(ShowRules(), "P:one(2) AND K:words\n");
    EXPECT_EQ(Run({"template", "set", "cards", "P:one(2) AND K:words OR P:two(1)", "OR K:words"}).iCode, 0);
    EXPECT_EQ(ShowRules(), "P:one(2) AND K:words OR P:two(1)\nOR K:words\n");
    EXPECT_EQ(RunJson({"template", "show", "cards"}).dump(),
              R"({"format":"dlpctl-template-show/1","verdict":"done","name":"cards","display_name":"Template cards",)"
              R"("description":"What it is for","pre_defined":false,"industries":["finance"],"regions":["eu"],)"
              R"("match_rules":[{"operation":"","blocks":[)"
              R"({"source_type":"ENTITY","entity_hits":2,"source_name":"one","operation":""},)"
              R"({"source_type":"KEYWORD","entity_hits":0,"source_name":"words","operation":"AND"},)"
              R"({"source_type":"ENTITY","entity_hits":1,"source_name":"two","operation":"OR"}]},)"
              R"({"operation":"OR","blocks":[)"
              R"({"source_type":"KEYWORD","entity_hits":0,"source_name":"words","operation":""}]}],)"
              R"("text":"P:one(2) AND K:words OR P:two(1)\nOR K:words\n"})");
}

TEST_F(TemplateCommand, WhatIsShownCanBeSet) {
    const std::string strDump = Dump();
    ExpectDone({"template", "set", "cards", "--rules-from", "-"}, "template \"cards\": nothing to change\n", "",
               ShowRules());
    EXPECT_EQ(Dump(), strDump);
}

TEST_F(TemplateCommand, RulesThatTextCannotSayAreFound) {
    const std::string aBlocks[] = {
        R"(<buildingBlock sourceType="KEYWORD" sourceName="BRAND"/>)",
        R"(<buildingBlock sourceType="KEYWORD" sourceName="a&#10;b"/>)",
        R"(<buildingBlock sourceType="KEYWORD" sourceName="a&#9;b"/>)",
        R"(<buildingBlock sourceType="KEYWORD" sourceName="a&#x200F;b"/>)",
        R"(<buildingBlock sourceType="FILE" sourceName="a"/>)",
        R"(<buildingBlock sourceType="ENTITY" entityHits="-1" sourceName="a"/>)",
        "",
    };
    for (const std::string& strBlocks : aBlocks) {
        CSettingsRow row(ESettingsKind::TEMPLATE);
        row.SetText(TemplateColumn::SUBJECT, "S");
        row.SetText(TemplateColumn::ELEMENT_NAME, "odd");
        row.SetText(TemplateColumn::ELEMENT,
                    "<template name=\"odd\"><matchRule>" + strBlocks + "</matchRule></template>");
        CSettingsStore::Make(Url("store.db"))->Save(row);
        const SToolRun run = Run({"template", "show", "odd"});
        EXPECT_EQ(run.iCode, 1) << strBlocks;
        EXPECT_EQ(run.strErr,
                  "dlpctl: warning: template \"odd\": the rules cannot be written as text that is read as the same "
                  "again; see dlpctl show\n");
        EXPECT_EQ(RunJson({"template", "show", "odd"})["verdict"], "findings");
        ::setenv("EDITOR", "false", 1);
        ExpectRefused({"template", "edit", "odd"}, 1,
                      "template \"odd\": the rules cannot be written as text that is read as the same again; see "
                      "dlpctl show");
    }
}

TEST_F(TemplateCommand, SetReplacesAllRules) {
    const std::string strOut =
        "~ template \"cards\": stricter\n"
        "-   rule: P:one(2) AND K:words\n"
        "+   rule: P:one(3) AND K:words\n"
        "    no longer matches content with P:one(2), K:words alone\n";
    Json expected = DumpJson();
    Json& cards = expected["templates"][0];
    cards["match_rules"][0]["blocks"][0]["entity_hits"] = 3;
    cards["element"] = R"(<template name="cards"><matchRule><buildingBlock sourceType="ENTITY" entityHits="3" )"
                       R"(sourceName="one"/><buildingBlock sourceType="KEYWORD" sourceName="words" operation="AND"/>)"
                       R"(</matchRule></template>)";
    ExpectSameDry({"template", "set", "cards", "p:one(3)  AND\tk:words"}, strOut);
    ExpectDone({"template", "set", "cards", "p:one(3)  AND\tk:words"}, strOut);
    EXPECT_EQ(DumpJson(), expected);
}

TEST_F(TemplateCommand, FieldsAreSetWithoutTheRules) {
    ExpectDone({"template", "set", "cards", "--display-name", "Cards", "--description", "", "--region", "",
                "--industry", "finance", "--industry", "health"},
               "~ template \"cards\"\n"
               "-   display_name: Template cards\n+   display_name: Cards\n"
               "-   description: What it is for\n+   description:\n"
               "-   industries: finance\n+   industries: finance, health\n"
               "-   regions: eu\n+   regions:\n",
               "dlpctl: warning: template \"cards\": DLP034 unknown-category: the predefined lists have no industry "
               "\"health\"; dlpctl metadata lists them\n");
    EXPECT_EQ(ShowRules(), "P:one(2) AND K:words\n");
}

TEST_F(TemplateCommand, NewOneIsWhatAnImportMakes) {
    const std::vector<std::string> vecNew = {"template",   "new",     "leaks",         "P:one(1)", "OR K:words",
                                             "--industry", "finance", "--description", "d"};
    ExpectSameDry(vecNew, "+ template \"leaks\"\n");
    ExpectDone(vecNew, "+ template \"leaks\"\n");
    const std::string strDump = Dump();
    EXPECT_EQ(Run({"delete", "template", "leaks"}).iCode, 0);
    Import(Documents::Policy(
        "",
        R"(<template name="leaks" display_name="leaks" description="d" pre-defined="false"><matchRule>)"
        R"(<buildingBlock sourceType="ENTITY" entityHits="1" sourceName="one"/></matchRule><matchRule operation="OR">)"
        R"(<buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule></template>)",
        R"(<industries><industry name="finance"><template_id>leaks</template_id></industry></industries>)"));
    EXPECT_EQ(Dump(), strDump);
}

TEST_F(TemplateCommand, RulesMayComeFromAFile) {
    const std::string strRules = "# comment\n\n  P:one(2) AND K:words  \r\n\t# more\nEXCEPT P:two(1)";
    ExpectDone({"template", "new", "x", "--rules-from", m_dir.Write("rules", strRules)}, "+ template \"x\"\n",
               "dlpctl: warning: template \"x\": EXCEPT can be stored and exported, but no import takes it\n");
    EXPECT_EQ(Get({"template", "show", "x"}), "P:one(2) AND K:words\nEXCEPT P:two(1)\n");
    ExpectRefused({"template", "set", "x", "--rules-from", m_dir.Path("none")}, 2,
                  m_dir.Path("none") + ": No such file or directory");
    ExpectRefused({"template", "set", "x", "--rules-from", "-"}, 2, "-: there are no rules in it", "# nothing\n");
    ExpectRefused({"template", "set", "x", "--rules-from", "-", "K:words"}, 3,
                  "write rules, --rules-from or --edit, only one of them");
}

TEST_F(TemplateCommand, FaultsAreToldWithACaret) {
    ExpectFaults("P:one(2) AND K:wrods",
                 "dlpctl: rules:1:16: no keyword list is named \"wrods\"; did you mean \"words\"?\n"
                 "     1 | P:one(2) AND K:wrods\n"
                 "       |                ^\n");
    ExpectFaults("K:BRAND words",
                 "dlpctl: rules:1:5: AND joins parts of a rule wherever it stands: put blanks around it; a name that "
                 "holds it cannot stand in a rule\n"
                 "     1 | K:BRAND words\n"
                 "       |     ^\n");
    ExpectFaults("P:one(02)",
                 "dlpctl: rules:1:7: this is read as \"P:one(2)\"; write it so\n"
                 "     1 | P:one(02)\n"
                 "       |       ^\n");
    ExpectFaults("P:words(1) AND P:one(x)\nOR K:one(2) AND K:one",
                 "dlpctl: rules:1:3: no expression is named \"words\"; the keyword list of that name is written "
                 "\"K:words\"\n"
                 "     1 | P:words(1) AND P:one(x)\n"
                 "       |   ^\n"
                 "dlpctl: rules:1:16: the count is missing: write \"P:one(1)\", or a greater one\n"
                 "     1 | P:words(1) AND P:one(x)\n"
                 "       |                ^\n"
                 "dlpctl: rules:2:6: no keyword list is named \"one(2)\"; the expression of that name is written "
                 "\"P:one(1)\"\n"
                 "     2 | OR K:one(2) AND K:one\n"
                 "       |      ^\n"
                 "dlpctl: rules:2:19: no keyword list is named \"one\"; the expression of that name is written "
                 "\"P:one(1)\"\n"
                 "     2 | OR K:one(2) AND K:one\n"
                 "       |                   ^\n");
    ExpectFaults("P:one OR K:words\nOR\nxx K:words",
                 "dlpctl: rules:1:1: the count is missing: write \"P:one(1)\", or a greater one\n"
                 "     1 | P:one OR K:words\n"
                 "       | ^\n"
                 "dlpctl: rules:2:3: an expression as P:NAME(COUNT) or a keyword list as K:NAME is needed here\n"
                 "     2 | OR\n"
                 "       |   ^\n"
                 "dlpctl: rules:3:1: an expression as P:NAME(COUNT) or a keyword list as K:NAME is needed here\n"
                 "     3 | xx K:words\n"
                 "       | ^\n");
    ExpectFaults("K:words AND Not P:one(1)\nOR (P:one(1) AND K:words",
                 "dlpctl: rules:1:13: there is no NOT: EXCEPT comes before what must not be found, as in P:a(1) EXCEPT "
                 "K:b\n"
                 "     1 | K:words AND Not P:one(1)\n"
                 "       |             ^\n"
                 "dlpctl: rules:2:4: there are no parentheses: write one rule a line, which begins with AND, OR or "
                 "EXCEPT to join the lines before it\n"
                 "     2 | OR (P:one(1) AND K:words\n"
                 "       |    ^\n");
    ExpectFaults("K:words AND",
                 "dlpctl: rules:1:12: an expression as P:NAME(COUNT) or a keyword list as K:NAME is needed here\n"
                 "     1 | K:words AND\n"
                 "       |            ^\n");
    ExpectFaults("P:\xE5\x90\x8D(1)",
                 "dlpctl: rules:1:3: no expression is named \"\xE5\x90\x8D\"; dlpctl list expressions lists the names\n"
                 "     1 | P:\xE5\x90\x8D(1)\n"
                 "       |   ^\n");
    const SToolRun run = Run({"template", "new", "x", "--rules-from", "-"}, "K:words\xFF");
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.strErr,
              "dlpctl: -:1:8: not UTF-8: save the file in that encoding\n"
              "     1 | K:words\xEF\xBF\xBD\n"
              "       |        ^\n");
}

TEST_F(TemplateCommand, OperatorsThatDoNotJoinAreTold) {
    ExpectFaults("P:one(2) and K:words",
                 "dlpctl: rules:1:10: \"and\" joins nothing: operators are written in capitals, here AND\n"
                 "     1 | P:one(2) and K:words\n"
                 "       |          ^\n");
    ExpectFaults("K:words Or K:words\nOR P:one(1) except",
                 "dlpctl: rules:1:9: \"Or\" joins nothing: operators are written in capitals, here OR\n"
                 "     1 | K:words Or K:words\n"
                 "       |         ^\n"
                 "dlpctl: rules:2:13: \"except\" joins nothing: operators are written in capitals, here EXCEPT\n"
                 "     2 | OR P:one(1) except\n"
                 "       |             ^\n");
    ExpectFaults("P:one(2) K:words",
                 "dlpctl: rules:1:10: AND, OR or EXCEPT is missing before this part\n"
                 "     1 | P:one(2) K:words\n"
                 "       |          ^\n");
    ExpectFaults("K:words P:one(2)P:two(1)",
                 "dlpctl: rules:1:9: AND, OR or EXCEPT is missing before this part\n"
                 "     1 | K:words P:one(2)P:two(1)\n"
                 "       |         ^\n"
                 "dlpctl: rules:1:17: AND, OR or EXCEPT is missing before this part\n"
                 "     1 | K:words P:one(2)P:two(1)\n"
                 "       |                 ^\n");
    ExpectFaults("or K:words and K:words",
                 "dlpctl: rules:1:1: \"or\" joins nothing: operators are written in capitals, here OR\n"
                 "     1 | or K:words and K:words\n"
                 "       | ^\n"
                 "dlpctl: rules:1:12: \"and\" joins nothing: operators are written in capitals, here AND\n"
                 "     1 | or K:words and K:words\n"
                 "       |            ^\n");
}

TEST_F(TemplateCommand, NoRuleIsOfferedThatSaysLess) {
    constexpr const char NOT_READ[] =
        "from here on nothing is read: a part is P:NAME(COUNT), where COUNT is a number of 32 bits, or K:NAME\n";
    for (const auto& [strRule, iColumn] : std::vector<std::pair<std::string, std::size_t>>{
             {"P:one(2) more", 9}, {"P:one(99999999999)", 7}, {"P:one(2)(3)", 9}}) {
        const std::string strStart = "rules:1:" + std::to_string(iColumn) + ": ";
        ExpectFaults(strRule, "dlpctl: " + strStart + NOT_READ + "     1 | " + strRule + "\n       | " +
                                  std::string(iColumn - 1, ' ') + "^\n");
    }
}

TEST_F(TemplateCommand, NamesMayHoldOperatorsInSmallLetters) {
    Import(Documents::Policy(Documents::Entity("one and two") + Documents::Dictionary("a or K:b"),
                             Documents::Template("names", "one and two", "a or K:b")));
    EXPECT_EQ(Get({"template", "show", "names"}), "P:one and two(2) AND K:a or K:b\n");
    ExpectDone({"template", "set", "names", "P:one and two(2) AND K:a or K:b"},
               "template \"names\": nothing to change\n");
}

TEST_F(TemplateCommand, MissingOperatorIsShownAsWhatItCountsAs) {
    CSettingsRow row(ESettingsKind::TEMPLATE);
    row.SetText(TemplateColumn::SUBJECT, "S");
    row.SetText(TemplateColumn::ELEMENT_NAME, "bare");
    row.SetText(TemplateColumn::DISPLAY_NAME, "Bare");
    row.SetText(TemplateColumn::ELEMENT,
                R"(<template name="bare"><matchRule><buildingBlock sourceType="ENTITY" entityHits="1" )"
                R"(sourceName="one"/><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule></template>)");
    CSettingsStore::Make(Url("store.db"))->Save(row);
    const std::string strNote =
        "dlpctl: warning: template \"bare\": a part of a rule has no operator; it counts as AND and is shown so\n";
    ExpectDone({"template", "show", "bare"}, "P:one(1) AND K:words\n", strNote);
    EXPECT_EQ(RunJson({"template", "show", "bare"})["match_rules"][0]["blocks"][1]["operation"], "");
    const std::string strDump = Dump();
    SetEditor("EDITOR", "true");
    EXPECT_EQ(Run({"template", "edit", "bare"}).strOut, "template \"bare\": nothing to change\n");
    EXPECT_EQ(Dump(), strDump);
    SetEditor("EDITOR", "sed -i 's/one(1)/one(2)/' \"$1\"");
    ExpectDone({"template", "edit", "bare"},
               "~ template \"bare\": stricter\n"
               "-   rule: P:one(1) K:words\n"
               "+   rule: P:one(2) AND K:words\n"
               "    no longer matches content with P:one(1), K:words alone\n",
               strNote);
}

TEST_F(TemplateCommand, FaultsAreToldInJsonToo) {
    EXPECT_EQ(
        RunJson({"template", "set", "cards", "P:one", "K:x"}).dump(),
        R"({"format":"dlpctl-template-set/1","verdict":"invalid","message":"rules:1:1: the count is )"
        R"(missing: write \"P:one(1)\", or a greater one","faults":[{"line":1,"column":1,)"
        R"("message":"the count is missing: write \"P:one(1)\", or a greater one"},)"
        R"({"line":2,"column":3,"message":"no keyword list is named \"x\"; dlpctl list keywords lists the names"}]})");
    EXPECT_EQ(RunJson({"template", "set", "cards", "P:one(2)"})["change"]["rules"]["relation"], "looser");
}

TEST_F(TemplateCommand, HowMixedOperatorsAreReadIsSaid) {
    const std::string strStart = "dlpctl: warning: template \"cards\": DLP065 mixed-operations: the ";
    const std::string strEnd =
        " are joined by AND as well as by OR: if AND went first, content with P:one(1) alone would match as well; they "
        "join from left to right: A OR B AND C asks for C, and for A or B\n";
    const std::string strMixed = "P:one(1) OR K:words AND P:two(1)";
    const std::string strSaid = strStart + "building blocks of the rule" + strEnd;
    EXPECT_EQ(Run({"template", "set", "cards", strMixed}).strErr, strSaid);
    const std::string strErr = Run({"template", "set", "cards", strMixed, "OR " + strMixed}).strErr;
    EXPECT_EQ(strErr.find(strSaid), strErr.rfind(strSaid)) << strErr;
    EXPECT_EQ(Run({"template", "new", "more", "P:one(1)", "OR K:words", "AND P:two(1)"}).strErr,
              "dlpctl: warning: template \"more\": DLP065 mixed-operations: the rules of the template" + strEnd);
    EXPECT_EQ(Run({"template", "set", "cards", "P:one(1) AND K:words", "OR P:two(1) AND K:words"}).strErr, "");
    EXPECT_EQ(Run({"template", "set", "cards", "P:one(1) AND K:words OR P:two(1)"}).strErr, "") << "it is read alike";
}

TEST_F(TemplateCommand, WhatCheckFindsIsWarnedOf) {
    EXPECT_EQ(Run({"template", "set", "cards", "P:one(0)"}).strErr,
              "dlpctl: warning: template \"cards\": DLP061 hits-below-one: 0 hits of the expression are asked for; "
              "write (1) or more\n");
    EXPECT_EQ(Run({"template", "set", "cards", "K:words", "P:one(1)"}).strErr,
              "dlpctl: warning: template \"cards\": DLP037 missing-operation: nothing says how this rule is joined to "
              "the one before it; it counts as AND; write AND or OR before it\n");
    EXPECT_EQ(Run({"expression", "set", "one", "--pattern", "(x"}).iCode, 0);
    EXPECT_EQ(Run({"template", "set", "cards", "P:one(1)"}).strErr, "");
}

TEST_F(TemplateCommand, WhatCannotBeIsRefused) {
    ExpectRefused({"template", "new", "cards", "K:words"}, 1, "template \"cards\" is stored already");
    ExpectRefused({"template", "new", "x"}, 3, "there are no rules; write them, or --rules-from or --edit");
    ExpectRefused({"template", "new", "x", "K:words", "--edit"}, 3,
                  "write rules, --rules-from or --edit, only one of them");
    ExpectRefused({"template", "new", "x", "K:words", "--display-name", ""}, 2,
                  "--display-name: no import takes an item whose display name is empty");
    ExpectRefused({"template", "new", "x", "K:words", "--description", "\x01"}, 2,
                  "the template holds a character that XML cannot carry");
    ExpectRefused({"template", "set", "cards"}, 3,
                  "nothing is to be changed; dlpctl template set --help shows what can be");
    ExpectRefused({"template", "set", "card", "K:words"}, 1, "no template is named \"card\"; did you mean \"cards\"?");
    ExpectRefused({"template", "show", "card"}, 1, "no template is named \"card\"; did you mean \"cards\"?");
    Import(Documents::Policy("", R"(<template name="base" display_name="B" pre-defined="true"/>)"));
    ExpectRefused({"template", "set", "base", "K:words"}, 1,
                  "template \"base\" is built in; only an import changes it");
    ExpectRefused({"template", "edit", "base"}, 1, "template \"base\" is built in; only an import changes it");
}

TEST_F(TemplateCommand, EditorIsVisualBeforeEditor) {
    ExpectRefused({"template", "edit", "cards"}, 3, "no editor is set; set VISUAL or EDITOR");
    ::setenv("EDITOR", "false", 1);
    SetEditor("VISUAL", "cp \"$1\" " + m_dir.Path("seen") + "; sed -i 's/one(2)/one(1)/' \"$1\"");
    ExpectDone({"template", "edit", "cards"},
               "~ template \"cards\": looser\n"
               "-   rule: P:one(2) AND K:words\n"
               "+   rule: P:one(1) AND K:words\n"
               "    now matches content with K:words, P:one(1) alone\n");
    EXPECT_EQ(m_dir.Read("seen"), HEAD + std::string("P:one(2) AND K:words\n"));
    EXPECT_EQ(ShowRules(), "P:one(1) AND K:words\n");
    EXPECT_EQ(CountKept(), 0U);
}

TEST_F(TemplateCommand, EditorMayBeAWholeCommand) {
    ::setenv("EDITOR", "sed -i 's/ AND K:words//'", 1);
    EXPECT_EQ(Run({"template", "edit", "cards"}).iCode, 0);
    EXPECT_EQ(ShowRules(), "P:one(2)\n");
}

TEST_F(TemplateCommand, ManyPartsOfOneRuleTakeTimeByTheirNumber) {
    // By the square of the number it would take longer than a case may.
    constexpr int PARTS = SANITIZED ? 40000 : 400000;
    std::string strRule = "P:one(1)";
    for (int i = 1; i < PARTS; ++i) {
        strRule += " AND P:one(1)";
    }
    EXPECT_EQ(Run({"template", "set", "cards", "--rules-from", "-"}, strRule).iCode, 0);
}

TEST_F(TemplateCommand, TextThatIsLeftAsItWasChangesNothing) {
    const std::string strDump = Dump();
    SetEditor("EDITOR", "true");
    ExpectDone({"template", "edit", "cards"}, "template \"cards\": nothing to change\n");
    EXPECT_EQ(Dump(), strDump);
    EXPECT_EQ(CountKept(), 0U);
}

TEST_F(TemplateCommand, TextThatIsNotTakenIsKept) {
    SetEditor("EDITOR", "echo 'OR K:wrods' >> \"$1\"");
    const std::string strDump = Dump();
    const SToolRun run = Run({"template", "edit", "cards"});
    EXPECT_EQ(run.iCode, 2);
    ASSERT_EQ(CountKept(), 1U);
    const std::string strKept = fs::directory_iterator(m_dir.Path("tmp"))->path().string() + "/template.rules";
    EXPECT_EQ(run.strErr, "dlpctl: warning: the text is kept in " + strKept + "\ndlpctl: " + strKept +
                              ":5:6: no keyword list is named \"wrods\"; did you mean \"words\"?\n"
                              "     5 | OR K:wrods\n"
                              "       |      ^\n");
    EXPECT_EQ(Dump(), strDump);
    SetEditor("EDITOR", ": > \"$1\"");
    EXPECT_EQ(Run({"template", "edit", "cards"}).iCode, 2);
    EXPECT_EQ(CountKept(), 2U);
    SetEditor("EDITOR", "sed -i 's/one(2)/one(5)/' \"$1\"");
    EXPECT_EQ(Run({"template", "edit", "cards", "--dry-run"}).iCode, 0);
    EXPECT_EQ(CountKept(), 3U);
    EXPECT_EQ(Dump(), strDump);
}

TEST_F(TemplateCommand, EditorThatFailsChangesNothing) {
    ::setenv("EDITOR", "false", 1);
    ExpectRefused({"template", "edit", "cards"}, 1, "the editor ended with an error; nothing was changed");
    ::setenv("EDITOR", "/nonexistent/editor", 1);
    const SToolRun run = Run({"template", "edit", "cards"});
    EXPECT_EQ(run.iCode, 3);
    EXPECT_EQ(run.strErr, "dlpctl: the editor \"/nonexistent/editor\" cannot be run\n");
    EXPECT_EQ(CountKept(), 0U);
    ::setenv("TMPDIR", m_dir.Path("none").c_str(), 1);
    EXPECT_EQ(Run({"template", "edit", "cards"}).strErr,
              "dlpctl: the folder for temporary files cannot be used: No such file or directory\n");
}

TEST_F(TemplateCommand, ChangeOfAnotherMeanwhileIsNotOverwritten) {
    EXPECT_EQ(CProgram::Shell("true").iCode, 0);  // sets $DLPCTL
    SetEditor("EDITOR", "echo 'OR K:words' >> \"$1\"; DLP_STORE='" + Url("store.db") +
                            "' \"$DLPCTL\" template set cards 'P:two(1)' >/dev/null");
    const SToolRun run = Run({"template", "edit", "cards"});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_NE(run.strErr.find("dlpctl: template \"cards\" was changed meanwhile\n"), std::string::npos) << run.strErr;
    EXPECT_EQ(ShowRules(), "P:two(1)\n");
    EXPECT_EQ(CountKept(), 1U);
}

TEST_F(TemplateCommand, NewOneCanBeWrittenInAnEditor) {
    SetEditor("EDITOR", "cp \"$1\" " + m_dir.Path("seen") + "; echo 'K:words' >> \"$1\"");
    ExpectDone({"template", "new", "x", "--edit"}, "+ template \"x\"\n");
    EXPECT_EQ(m_dir.Read("seen"), HEAD);
    EXPECT_EQ(Get({"template", "show", "x"}), "K:words\n");
}
