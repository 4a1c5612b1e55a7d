#include <gtest/gtest.h>

#include "platform/store/CSettingsStore.h"
#include "tests/cli/edit/EditRun.h"
#include "tests/support/Sanitized.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char HEAD[] = "keyword,score,case_sensitive,description\r\n";

class KeywordsCommand : public CEditTest {
  protected:
    KeywordsCommand() { Import(Documents::Small()); }

    std::string Show() const { return Get({"keywords", "show", "words"}); }
    std::string StoredText() const { return DumpJson()["keyword_lists"][0]["text"]; }
    /** @return the list's markup with these keywords */
    static std::string Markup(const std::string& strKeywords) {
        return R"(<dictionary name="words" type="Any" display_name="List words" description="" pre-defined="false">)" +
               strKeywords + "</dictionary>";
    }
    static std::string One() { return R"(<keyword description="" score="1" caseSensitive="false">one</keyword>)"; }
    static std::string Two() { return R"(<keyword description="second" score="5" caseSensitive="true">two</keyword>)"; }

    void ExpectNoTable(const std::string& strTable, const std::string& strWhy, const std::string& strFormat = "csv") {
        ExpectRefused({"keywords", "import", "words", "-", "--format", strFormat}, 2, "-:" + strWhy, strTable);
    }
};

}  // namespace

TEST_F(KeywordsCommand, ListIsShownAsATable) {
    EXPECT_EQ(Show(),
              "KEYWORD  SCORE  CASE  DESCRIPTION\n"
              "one      1      no\n"
              "two      5      yes   second\n");
    EXPECT_EQ(RunJson({"keywords", "show", "words"}).dump(),
              R"({"format":"dlpctl-keywords-show/1","verdict":"done","name":"words","condition":"Any","threshold":0,)"
              R"("number":0,"keywords":[{"keyword":"one","description":"","score":1,"case_sensitive":false},)"
              R"({"keyword":"two","description":"second","score":5,"case_sensitive":true}]})");
}

TEST_F(KeywordsCommand, NewListIsWhatAnImportMakes) {
    const std::vector<std::string> vecNew = {"keywords",  "new",         "codes", "a & b",         "c", "--type",
                                             "threshold", "--threshold", "2",     "--description", "d"};
    ExpectSameDry(vecNew, "+ keyword list \"codes\"\n");
    ExpectDone(vecNew, "+ keyword list \"codes\"\n");
    const std::string strDump = Dump();
    EXPECT_EQ(Run({"delete", "keyword", "codes"}).iCode, 0);
    Import(Documents::Policy(
        R"(<dictionary name="codes" type="Threshold" threshold="2" display_name="codes" description="d" )"
        R"(pre-defined="false"><keyword description="" score="1" caseSensitive="false">a &amp; b</keyword>)"
        R"(<keyword description="" score="1" caseSensitive="false">c</keyword></dictionary>)",
        R"(<template name="x" display_name="X"/>)"));
    EXPECT_EQ(Run({"delete", "template", "x"}).iCode, 0);
    EXPECT_EQ(Dump(), strDump);
}

TEST_F(KeywordsCommand, NewListMayGetItsKeywordsLater) {
    ExpectDone({"keywords", "new", "later"}, "+ keyword list \"later\"\n",
               "dlpctl: warning: keyword list \"later\": DLP050 list-empty: the keyword list \"later\" has no keyword; "
               "add one, or remove the list\n");
    EXPECT_EQ(RunJson({"keywords", "show", "later"})["condition"], "All");
    ExpectDone({"keywords", "import", "later", "-"}, "~ keyword list \"later\"\n+   keyword \"x\", score 1\n", "",
               "keyword\nx\n");
}

TEST_F(KeywordsCommand, NewListThatCannotBeIsRefused) {
    const auto fnNew = [](const std::vector<std::string>& vecMore) {
        std::vector<std::string> vecArguments = {"keywords", "new", "x", "word"};
        vecArguments.insert(vecArguments.end(), vecMore.begin(), vecMore.end());
        return vecArguments;
    };
    ExpectRefused(fnNew({"--type", "Some"}), 3,
                  "--type: there is no type \"Some\"; write one of \"All\", \"Any\", \"Threshold\", \"Distance\"");
    ExpectRefused(fnNew({"--type", "Any", "--threshold", "2"}), 2,
                  "--threshold: type \"Any\" of keyword lists does not have it");
    ExpectRefused(fnNew({"--type", "threshold"}), 3, "--threshold: type \"Threshold\" of keyword lists needs it");
    ExpectRefused(fnNew({"--type", "Distance"}), 3, "--distance: type \"Distance\" of keyword lists needs it");
    ExpectRefused(fnNew({"--type", "Distance", "--distance", "near"}), 3,
                  "--distance: \"near\" is no whole number of 32 bits");
    ExpectRefused(fnNew({"--display-name", ""}), 2,
                  "--display-name: no import takes an item whose display name is empty");
    ExpectRefused(fnNew({" "}), 2, "the keyword is blank");
    ExpectRefused({"keywords", "new", "words", "x"}, 1, "keyword list \"words\" is stored already");
    ExpectRefused({"keywords", "new", "BRAND", "x"}, 2,
                  "the name \"BRAND\" cannot stand in the text of a rule: it holds AND, which joins parts of a rule");
}

TEST_F(KeywordsCommand, FieldsOfAListAreSetAndItsKeywordsStay) {
    const std::vector<std::string> vecSet = {"keywords", "set", "words", "--type", "threshold", "--threshold", "2"};
    const std::string strOut =
        "~ keyword list \"words\"\n-   condition: Any\n+   condition: Threshold\n-   threshold: 0\n+   threshold: 2\n";
    ExpectSameDry(vecSet, strOut);
    ExpectDone(vecSet, strOut);
    ExpectDone({"keywords", "set", "words", "--threshold", "3", "--description", "d", "--display-name", "W"},
               "~ keyword list \"words\"\n-   display_name: List words\n+   display_name: W\n-   description:\n"
               "+   description: d\n-   threshold: 2\n+   threshold: 3\n");
    ExpectDone({"keywords", "set", "words", "--threshold", "3"}, "keyword list \"words\": nothing to change\n");
    EXPECT_EQ(StoredText(), R"(<dictionary name="words" type="Threshold" threshold="3" display_name="W" )"
                            R"(description="d" pre-defined="false">)" +
                                One() + Two() + "</dictionary>");
    const std::string strDump = Dump();
    EXPECT_EQ(Run({"assets", "export", "--keyword", "words", "-o", m_dir.Path("words.xml")}).iCode, 0);
    EXPECT_EQ(Run({"assets", "import", m_dir.Path("words.xml")}).iCode, 0);
    EXPECT_EQ(Dump(), strDump);
}

TEST_F(KeywordsCommand, NumbersGoWithTheTypeOfAList) {
    EXPECT_EQ(Run({"keywords", "set", "words", "--type", "Distance", "--distance", "9"}).iCode, 0);
    ExpectDone({"keywords", "set", "words", "--type", "All"},
               "~ keyword list \"words\"\n-   condition: Distance\n+   condition: All\n-   number: 9\n+   number: 0\n");
    EXPECT_EQ(RunJson({"keywords", "set", "words", "--type", "all"}).dump(),
              R"({"format":"dlpctl-keywords-set/1","verdict":"done","dry_run":false,"change":{"kind":"keyword",)"
              R"("name":"words","change":"same","fields":[],"keywords":[],"rules":null},"warnings":[]})");
    ExpectRefused({"keywords", "set", "words", "--type", "Threshold"}, 3,
                  "--threshold: type \"Threshold\" of keyword lists needs it");
    ExpectRefused({"keywords", "set", "words", "--distance", "2"}, 2,
                  "--distance: type \"All\" of keyword lists does not have it");
}

TEST_F(KeywordsCommand, FieldThatCannotBeIsNotSet) {
    ExpectRefused({"keywords", "set", "words"}, 3,
                  "nothing is to be changed; dlpctl keywords set --help lists the fields");
    ExpectRefused({"keywords", "set", "words", "--type", "Some"}, 3,
                  "--type: there is no type \"Some\"; write one of \"All\", \"Any\", \"Threshold\", \"Distance\"");
    ExpectRefused({"keywords", "set", "words", "--display-name", ""}, 2,
                  "--display-name: no import takes an item whose display name is empty");
    ExpectRefused({"keywords", "set", "words", "--threshold", "two"}, 3,
                  "--threshold: \"two\" is no whole number of 32 bits");
    ExpectRefused({"keywords", "set", "word", "--type", "All"}, 1,
                  "no keyword list is named \"word\"; did you mean \"words\"?");
    ExpectDone({"keywords", "set", "words", "--type", "Threshold", "--threshold", "9"},
               "~ keyword list \"words\"\n-   condition: Any\n+   condition: Threshold\n-   threshold: 0\n"
               "+   threshold: 9\n",
               "dlpctl: warning: keyword list \"words\": DLP053 threshold-unreachable: the threshold is 9, and all "
               "keywords together come to 6; lower the threshold, or add keywords\n");
}

TEST_F(KeywordsCommand, NewKeywordsComeLast) {
    const std::string strOut =
        "~ keyword list \"words\"\n+   keyword \"a & b\", score 1\n+   keyword \"three\", score 1\n";
    ExpectSameDry({"keywords", "add", "words", "three", "a & b"}, strOut);
    ExpectDone({"keywords", "add", "words", "three", "a & b"}, strOut);
    EXPECT_EQ(StoredText(),
              Markup(One() + Two() + R"(<keyword description="" score="1" caseSensitive="false">three</keyword>)" +
                     R"(<keyword description="" score="1" caseSensitive="false">a &amp; b</keyword>)"));
}

TEST_F(KeywordsCommand, KeywordThatIsThereKeepsWhatIsNotGiven) {
    ExpectDone({"keywords", "add", "words", "two", "--score", "-7"},
               "~ keyword list \"words\"\n"
               "-   keyword \"two\", score 5, case matters: second\n"
               "+   keyword \"two\", score -7, case matters: second\n");
    ExpectDone({"keywords", "add", "words", "two", "--case-sensitive", "false", "--description", ""},
               "~ keyword list \"words\"\n"
               "-   keyword \"two\", score -7, case matters: second\n"
               "+   keyword \"two\", score -7\n");
}

TEST_F(KeywordsCommand, WhatIsThereAlreadyChangesNothing) {
    const std::string strDump = Dump();
    ExpectDone({"keywords", "add", "words", "two"}, "keyword list \"words\": nothing to change\n");
    EXPECT_EQ(Dump(), strDump);
    EXPECT_EQ(RunJson({"keywords", "add", "words", "one"}).dump(),
              R"({"format":"dlpctl-keywords-add/1","verdict":"done","dry_run":false,"change":{"kind":"keyword",)"
              R"("name":"words","change":"same","fields":[],"keywords":[],"rules":null},"warnings":[]})");
}

TEST_F(KeywordsCommand, KeywordsAreRemovedAllOrNone) {
    ExpectRefused({"keywords", "remove", "words", "one", "tow"}, 1,
                  "keyword list \"words\" has no keyword \"tow\"; did you mean \"two\"?");
    ExpectRefused({"keywords", "remove", "words", "entirely"}, 1,
                  "keyword list \"words\" has no keyword \"entirely\"; dlpctl keywords show lists them");
    ExpectRefused({"keywords", "remove", "words", "one", "one"}, 1,
                  "keyword list \"words\" has no keyword \"one\"; dlpctl keywords show lists them");
    ExpectDone({"keywords", "remove", "words", "one"}, "~ keyword list \"words\"\n-   keyword \"one\", score 1\n");
    EXPECT_EQ(StoredText(), Markup(Two()));
    EXPECT_EQ(RunJson({"keywords", "remove", "words", "x"})["verdict"], "findings");
}

TEST_F(KeywordsCommand, WhatCheckFindsIsWarnedOf) {
    ExpectDone({"keywords", "remove", "words", "one", "two"},
               "~ keyword list \"words\"\n-   keyword \"one\", score 1\n-   keyword \"two\", score 5, case matters: "
               "second\n",
               "dlpctl: warning: keyword list \"words\": DLP050 list-empty: the keyword list \"words\" has no keyword; "
               "add one, or remove the list\n");
    const Json answer = RunJson({"keywords", "add", "words", "a", "A", "--dry-run"});
    ASSERT_EQ(answer["warnings"].size(), 1U);
    EXPECT_EQ(answer["warnings"][0].get<std::string>().find("keyword list \"words\": DLP052 keyword-twice: "), 0U);
}

TEST_F(KeywordsCommand, MarkupOfOtherKeywordsStays) {
    CSettingsRow row =
        *CSettingsStore::Make(Url("store.db"))->FindOne(ESettingsKind::KEYWORD, AssetColumn::NAME, "words");
    row.SetText(KeywordColumn::TEXT, "<dictionary><keyword score=' 5x' more='1'><b>o</b>ne</keyword></dictionary>");
    CSettingsStore::Make(Url("store.db"))->Save(row);
    EXPECT_EQ(Run({"keywords", "add", "words", "two"}).iCode, 0);
    EXPECT_EQ(StoredText(), Markup(R"(<keyword score=" 5x" more="1"><b>o</b>ne</keyword>)"
                                   R"(<keyword description="" score="1" caseSensitive="false">two</keyword>)"));
}

TEST_F(KeywordsCommand, TableIsWrittenAndReadBack) {
    EXPECT_EQ(Run({"keywords", "add", "words", "=1+1", "a,\"b\"", "-", "'@", "--description", "+x\n"}).iCode, 0);
    const std::string strTable = Get({"keywords", "export", "words"});
    EXPECT_EQ(strTable, std::string(HEAD) +
                            "one,1,false,\r\ntwo,5,true,second\r\n'=1+1,1,false,\"'+x\n\"\r\n"
                            "\"a,\"\"b\"\"\",1,false,\"'+x\n\"\r\n'-,1,false,\"'+x\n\"\r\n''@,1,false,\"'+x\n\"\r\n");
    const std::string strDump = Dump();
    for (const char* pFile : {"words.csv", "words.tsv"}) {
        EXPECT_EQ(Run({"keywords", "export", "words", "-o", m_dir.Path(pFile)}).iCode, 0);
        ExpectDone({"keywords", "import", "words", m_dir.Path(pFile), "--replace"},
                   "keyword list \"words\": nothing to change\n");
        EXPECT_EQ(Dump(), strDump);
    }
    EXPECT_EQ(m_dir.Read("words.csv"), strTable);
    EXPECT_EQ(m_dir.Read("words.tsv").find("keyword\tscore\tcase_sensitive\tdescription\r\none\t1\tfalse\t\r\n"), 0U);
    EXPECT_EQ(RunJson({"keywords", "export", "words", "-o", m_dir.Path("x")}).dump(),
              R"({"format":"dlpctl-keywords-export/1","verdict":"done","name":"words","output":")" + m_dir.Path("x") +
                  R"(","keywords":6})");
}

TEST_F(KeywordsCommand, TableAddsAndChanges) {
    const std::string strTable = "\xEF\xBB\xBFScore,KEYWORD\n,one\n9,two\n3,\"'=x\"\n";
    const std::string strOut =
        "~ keyword list \"words\"\n"
        "+   keyword \"=x\", score 3\n"
        "-   keyword \"two\", score 5, case matters: second\n"
        "+   keyword \"two\", score 9, case matters: second\n";
    ExpectSameDry({"keywords", "import", "words", "-"}, strOut, strTable);
    ExpectDone({"keywords", "import", "words", "-"}, strOut, "", strTable);
    EXPECT_EQ(Show(),
              "KEYWORD  SCORE  CASE  DESCRIPTION\n"
              "one      1      no\n"
              "two      9      yes   second\n"
              "=x       3      no\n");
}

TEST_F(KeywordsCommand, TableReplaces) {
    ExpectDone({"keywords", "import", "words", "-", "--replace", "--format", "tsv"},
               "~ keyword list \"words\"\n"
               "-   keyword \"one\", score 1\n"
               "+   keyword \"three\", score 1\n",
               "", "keyword\nthree\ntwo\n");
    EXPECT_EQ(StoredText(),
              Markup(R"(<keyword description="" score="1" caseSensitive="false">three</keyword>)" + Two()));
}

TEST_F(KeywordsCommand, TablesThatAreNoneAreRefusedWithTheirPlace) {
    ExpectNoTable("", " the file is empty; its first line must name the columns, such as keyword");
    ExpectNoTable("score\n1\n", "1:1: no column is named keyword; the first line names the columns");
    ExpectNoTable("keyword,weight\n",
                  "1:9: there is no column \"weight\"; write keyword, score, case_sensitive or description");
    ExpectNoTable("keyword,keyword\n", "1:9: the column \"keyword\" stands twice");
    ExpectNoTable("keyword,score\na\n", "2:1: 2 cells are needed in this line, not 1");
    ExpectNoTable("keyword\na,b\n", "2:1: 1 cell is needed in this line, not 2");
    ExpectNoTable("keyword,score\na,1\n\xC3\xA4,5x\n", "3:3: a whole number of 32 bits is needed here");
    ExpectNoTable("keyword,score\na,2147483648\n", "2:3: a whole number of 32 bits is needed here");
    ExpectNoTable("keyword,case_sensitive\na,yes\n", "2:3: true or false is needed here");
    ExpectNoTable("keyword,score\n ,1\n", "2:1: the keyword is blank");
    ExpectNoTable("keyword\n\"a\n", "2:1: this quotation mark is not closed");
    ExpectNoTable("keyword\n\xFF\n", "2:1: not UTF-8: save the file in that encoding");
}

TEST_F(KeywordsCommand, BadInputIsToldWithItsName) {
    ExpectRefused({"keywords", "import", "words", m_dir.Path("none.csv")}, 2,
                  m_dir.Path("none.csv") + ": No such file or directory");
    ExpectRefused({"keywords", "import", "words", m_dir.Path("home")}, 2, m_dir.Path("home") + ": Is a directory");
    ExpectRefused({"keywords", "add", "words", " "}, 2, "the keyword is blank");
    ExpectRefused({"keywords", "add", "words", "\x01"}, 2,
                  "text of element keyword: the character U+0001 cannot be written in XML");
    ExpectRefused({"keywords", "add", "word", "x"}, 1, "no keyword list is named \"word\"; did you mean \"words\"?");
    ExpectRefused({"keywords", "show", "word"}, 1, "no keyword list is named \"word\"; did you mean \"words\"?");
    ExpectRefused({"keywords", "add", "words", "x", "--score", "1.5"}, 3,
                  "--score: \"1.5\" is no whole number of 32 bits");
    ExpectRefused({"keywords", "add", "words", "x", "--case-sensitive", "no"}, 3,
                  "--case-sensitive: \"no\" is neither true nor false");
    ExpectRefused({"keywords", "export", "words", "--format", "xls"}, 3,
                  "--format: there is no format \"xls\"; write csv or tsv");
    EXPECT_EQ(Run({"keywords", "export", "words", "--json"}).iCode, 3);
    EXPECT_EQ(Run({"keywords", "export", "words", "-o", m_dir.Path("store.db")}).iCode, 3);
}

TEST_F(KeywordsCommand, BuiltInListsAreShownButNotChanged) {
    Import(Documents::Policy(Documents::Dictionary("base", "pre-defined=\"true\""),
                             R"(<template name="x" display_name="X"/>)"));
    EXPECT_EQ(Run({"keywords", "show", "base"}).iCode, 0);
    for (const std::vector<std::string>& vecArguments : {std::vector<std::string>{"keywords", "add", "base", "x"},
                                                         {"keywords", "remove", "base", "one"},
                                                         {"keywords", "set", "base", "--type", "All"}}) {
        ExpectRefused(vecArguments, 1, "keyword list \"base\" is built in; only an import changes it");
    }
    ExpectRefused({"keywords", "import", "base", "-"}, 1,
                  "keyword list \"base\" is built in; only an import changes it", "keyword\nx\n");
}

TEST_F(KeywordsCommand, ScopeIsKeptWithWhatIsWritten) {
    EXPECT_EQ(Run({"--scope", "gateway", "keywords", "add", "words", "x"}).iCode, 0);
    EXPECT_EQ(DumpJson()["keyword_lists"][0]["scope"], "gateway");
    EXPECT_EQ(Run({"keywords", "add", "words", "y"}).iCode, 0);
    EXPECT_EQ(DumpJson()["keyword_lists"][0]["scope"], "gateway");
}

TEST_F(KeywordsCommand, ManyKeywordsTakeTheirTimeOnce) {
    constexpr unsigned WORDS = SANITIZED ? 4000 : 20000;
    std::string strTable = "keyword\n";
    for (unsigned i = 0; i < WORDS; ++i) {
        strTable += "word " + std::to_string(i) + '\n';
    }
    const SToolRun run = Run({"keywords", "import", "words", "-"}, strTable);
    EXPECT_EQ(run.iCode, 0) << run.strErr;
    EXPECT_EQ(DumpJson()["keyword_lists"][0]["keywords"].size(), WORDS + 2U);
}
