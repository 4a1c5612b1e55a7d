#include "cli/configuration/Configuration.h"

#include <gtest/gtest.h>

#include <set>

#include <nlohmann/json.hpp>

#include "tests/cli/ToolRun.h"
#include "tests/support/JsonSchema.h"

namespace {

using Json = nlohmann::json;

class Configuration : public CToolTest {
  protected:
    Configuration() : m_strFile(m_dir.Path("config/dlpctl/config.toml")) {}

    void WriteFile(const std::string& strText) const { m_dir.Write("config/dlpctl/config.toml", strText); }

    /** @return what the tool says of an option, by its key */
    Json GetOption(const std::string& strKey, std::vector<std::string> vecArguments = {}) const {
        vecArguments.insert(vecArguments.begin(), {"--json", "config"});
        const Json answer = Json::parse(Get(vecArguments));
        for (const Json& option : answer["options"]) {
            if (option["key"] == strKey) {
                return {option["value"], option["origin"], option["place"]};
            }
        }
        return {};
    }

    std::string m_strFile;
};

struct SRefusedFile {
    const char* pText;
    const char* pMessage;  ///< behind the file's path
};

const SRefusedFile REFUSED_FILES[] = {
    {"langauge = 'x'\n", ":1:1: there is no key \"langauge\"; did you mean \"language\"?"},
    {"json = true\n[chek]\nall = true\n", ":2:2: there is no table \"chek\"; did you mean \"check\"?"},
    {"[check]\n  indent = true\n", ":2:3: there is no key \"indent\"; dlpctl config lists what there is"},
    {"[check]\nlanguage = 'x'\n", ":2:1: there is no key \"language\"; dlpctl config lists what there is"},
    {"[something]\n", ":1:2: there is no table \"something\"; dlpctl config lists what there is"},
    {"help = true\n", ":1:1: there is no key \"help\"; dlpctl config lists what there is"},
    {"[import]\nFILE = 'x'\n", ":2:1: there is no key \"FILE\"; dlpctl config lists what there is"},
    {"json = 'yes'\n", ":1:1: json: write true or false"},
    {"language = true\n", ":1:1: language: write a text in quotes"},
    {"language = ['a', 'b']\n", ":1:1: language: write a text in quotes"},
    {"language = 2020-01-01\n", ":1:1: language: write a text in quotes"},
    {"[check]\nallow = [true]\n", ":2:1: allow: write a text in quotes, or a list of them in square brackets"},
    {"language = ''\n", ":1:1: language: the value is empty"},
    {"[check]\nformat = 'xml'\n",
     ":2:1: --format: there is no format \"xml\"; write text, json, sarif, junit or github"},
    {"[check]\nallow = ['DLP034', 'DLP00']\n", ":2:1: --allow: there is no code \"DLP00\"; did you mean \"DLP001\"?"},
    {"log-level = 'loud'\n",
     ":1:1: --log-level: there is no level \"loud\"; the levels are info, enter, leave, content, error, failure, all"},
};

}  // namespace

TEST_F(Configuration, OptionsOfTheFileCount) {
    WriteFile("language = \"French\"\nquiet = true\n[check]\nformat = \"github\"\nallow = ['DLP010', \"DLP034\"]\n");
    EXPECT_EQ(GetOption("language"), Json({"French", "file", m_strFile + ":1:1"}));
    EXPECT_EQ(GetOption("quiet"), Json({true, "file", m_strFile + ":2:1"}));
    EXPECT_EQ(GetOption("check.allow"), Json({{"DLP010", "DLP034"}, "file", m_strFile + ":5:1"}));
    const std::string strPolicy = m_dir.Write("p.xml", "<SAPolicy/>");
    EXPECT_EQ(Run({"check", strPolicy}).strOut.find("error DLP"), std::string::npos);
    EXPECT_NE(Run({"check", strPolicy}).strOut.find("::error file=" + strPolicy), std::string::npos);
}

TEST_F(Configuration, TheCommandLineCountsBeforeTheEnvironmentAndThatBeforeTheFile) {
    EXPECT_EQ(GetOption("scope"), Json({nullptr, "default", nullptr}));
    WriteFile("scope = 'of the file'\n");
    EXPECT_EQ(GetOption("scope"), Json({"of the file", "file", m_strFile + ":1:1"}));
    ::setenv("DLPCTL_SCOPE", "of the environment", 1);
    EXPECT_EQ(GetOption("scope"), Json({"of the environment", "environment", "$DLPCTL_SCOPE"}));
    EXPECT_EQ(GetOption("scope", {"--scope", "given"}), Json({"given", "command line", nullptr}));
    ::setenv("DLPCTL_SCOPE", "", 1);
    EXPECT_EQ(GetOption("scope"), Json({"of the file", "file", m_strFile + ":1:1"}));
}

TEST_F(Configuration, WhatTheOptionSaysIsDone) {
    Import(Documents::Small());
    const std::string strPlain = Get({"export", "--all"});
    const std::string strIndented = Get({"export", "--all", "--indent"});
    ASSERT_NE(strPlain, strIndented);
    WriteFile("[export]\nindent = true\n");
    EXPECT_EQ(Get({"export", "--all"}), strIndented);
    EXPECT_EQ(Get({"export", "--all", "--indent=false"}), strPlain);
    ::setenv("DLPCTL_EXPORT_INDENT", "Off", 1);
    EXPECT_EQ(Get({"export", "--all"}), strPlain);
    ::setenv("DLPCTL_ASSETS_EXPORT_EXPRESSION", "one\ntwo", 1);
    EXPECT_EQ(Get({"assets", "export"}), Get({"assets", "export", "--expression", "one", "--expression", "two"}));
    ::setenv("DLPCTL_JSON", "1", 1);
    EXPECT_EQ(Json::parse(Get({"list", "templates"}))["format"], "dlpctl-list/1");
}

TEST_F(Configuration, ValuesAreTakenAsTheyStand) {
    WriteFile("[assets-export]\nexpression = [\"[a]\", \"a,b\", \"\\u0001x\", 'it''s']\n");
    EXPECT_EQ(Run({"assets", "export"}).iCode, 3);
    WriteFile("[assets-export]\nexpression = [\"[a]\", \"a,b\", \"--x=\"]\n");
    EXPECT_EQ(Run({"assets", "export", "-q"}).strErr,
              "dlpctl: warning: expression \"[a]\" is left out: it is not stored; dlpctl list expressions lists the "
              "names\n"
              "dlpctl: warning: expression \"a,b\" is left out: it is not stored; dlpctl list expressions lists the "
              "names\n"
              "dlpctl: warning: expression \"--x=\" is left out: it is not stored; dlpctl list expressions lists the "
              "names\n");
}

TEST_F(Configuration, TheStoreOfTheEnvironmentCountsBeforeThatOfTheFile) {
    WriteFile("store = '" + Url("file.db") + "'\n");
    EXPECT_EQ(GetOption("store"), Json({Url("store.db"), "environment", "$DLP_STORE"}));
    ::unsetenv("DLP_STORE");
    EXPECT_EQ(GetOption("store"), Json({Url("file.db"), "file", m_strFile + ":1:1"}));
    Import(Documents::Small());
    EXPECT_NE(Get({"list", "templates", "--store", Url("file.db")}), "");
    EXPECT_EQ(Get({"list", "templates", "--store", Url("store.db")}), "");
}

TEST_F(Configuration, AFaultOfTheFileIsSaidWithItsPlace) {
    const std::string strPolicy = m_dir.Write("p.xml", Documents::Small());
    for (const SRefusedFile& refused : REFUSED_FILES) {
        WriteFile(refused.pText);
        const SToolRun run = Run({"check", strPolicy});
        EXPECT_EQ(run.iCode, 3) << refused.pText;
        EXPECT_EQ(run.strErr, "dlpctl: " + m_strFile + refused.pMessage + '\n');
        EXPECT_EQ(run.strOut, "");
    }
}

TEST_F(Configuration, AFaultThatShowsLateIsSaidWithItsPlaceToo) {
    ::unsetenv("DLP_INSTALL_PATH");
    WriteFile("# where\nhome = '/dev/null/x'\n");
    EXPECT_EQ(Run({"metadata"}).strErr,
              "dlpctl: " + m_strFile + ":2:1: --home: there is no directory \"/dev/null/x\"\n");
    EXPECT_EQ(Run({"metadata", "--home", "/dev/null/y"}).strErr,
              "dlpctl: --home: there is no directory \"/dev/null/y\"\n");
}

TEST_F(Configuration, AFileThatIsNoTomlIsRefused) {
    for (const char* pText : {"[check\n", "x = \n", "language = 'a'\nlanguage = 'b'\n", "\xff = 1\n"}) {
        WriteFile(pText);
        const SToolRun run = Run({"--json", "list", "templates"});
        EXPECT_EQ(run.iCode, 3) << pText;
        EXPECT_EQ(run.strErr.find("dlpctl: " + m_strFile + ':'), 0U) << run.strErr;
        EXPECT_EQ(Json::parse(run.strOut)["verdict"], "usage");
    }
    m_dir.MakeFolder("other/dlpctl/config.toml");
    ::setenv("XDG_CONFIG_HOME", m_dir.Path("other").c_str(), 1);
    EXPECT_EQ(Run({"list", "templates"}).strErr,
              "dlpctl: " + m_dir.Path("other/dlpctl/config.toml") + ": Is a directory\n");
}

TEST_F(Configuration, AFileThatTheParserCannotBearIsRefused) {
    std::string strKey = "a";
    for (int i = 0; i < 5000; ++i) {
        strKey += ".a";
    }
    WriteFile(strKey + " = 1\n");
    EXPECT_EQ(Run({"list", "templates"}).strErr,
              "dlpctl: " + m_strFile + ":1:1: there is no table \"a\"; dlpctl config lists what there is\n");
    WriteFile(strKey + ".a = 1\n");
    EXPECT_EQ(Run({"list", "templates"}).strErr,
              "dlpctl: " + m_strFile + ": it has more than 5,000 dots, and settings have not\n");
    WriteFile("quiet = true\n" + std::string(1 << 20, '#'));
    EXPECT_EQ(Run({"list", "templates"}).strErr,
              "dlpctl: " + m_strFile + ": it is larger than 1 MiB, and settings are not\n");
    WriteFile("quiet = true\n" + std::string(1 << 19, '#'));
    EXPECT_EQ(GetOption("quiet")[0], true);
}

TEST_F(Configuration, DotsAreNoFault) {
    std::string strUp;
    for (int i = 0; i < 17; ++i) {
        strUp += "../";
    }
    const std::string strRule = "# " + std::string(40, '.') + '\n';
    for (const char* pQuote : {"'", "\"", "\"\"\""}) {
        WriteFile(strRule + "quiet = true " + strRule + "scope = " + pQuote + strUp + pQuote + '\n' + strRule);
        EXPECT_EQ(GetOption("quiet")[0], true) << pQuote;
        EXPECT_EQ(GetOption("scope")[0], strUp) << pQuote;
    }
}

TEST_F(Configuration, HelpNeedsNoSoundFile) {
    WriteFile("nonsense");
    EXPECT_EQ(Run({"config", "--help"}).iCode, 0);
    EXPECT_EQ(Run({"--version"}).iCode, 0);
    EXPECT_EQ(Run({"nope"}).strErr, "dlpctl: there is no command \"nope\"; dlpctl --help lists the commands\n");
}

TEST_F(Configuration, AFaultOfTheEnvironmentIsSaidWithItsVariable) {
    ::setenv("DLPCTL_QUIET", "perhaps", 1);
    EXPECT_EQ(Run({"metadata"}).strErr, "dlpctl: $DLPCTL_QUIET: \"perhaps\" is neither true nor false\n");
    ::setenv("DLPCTL_QUIET", "no", 1);
    ::setenv("DLPCTL_LOG_LEVEL", "loud", 1);
    EXPECT_EQ(Run({"metadata"}).strErr,
              "dlpctl: $DLPCTL_LOG_LEVEL: --log-level: there is no level \"loud\"; the levels are info, enter, leave, "
              "content, error, failure, all\n");
    ::setenv("DLPCTL_LOG_LEVEL", "\xff", 1);
    EXPECT_EQ(Run({"metadata"}).strErr, "dlpctl: $DLPCTL_LOG_LEVEL: its value is not UTF-8\n");
}

TEST_F(Configuration, AnUnreadableCommandLineIsAnsweredAsTheFileAsks) {
    WriteFile("json = true\n");
    const SToolRun run = Run({"list"});
    EXPECT_EQ(run.iCode, 3);
    EXPECT_EQ(Json::parse(run.strOut)["verdict"], "usage");
}

TEST_F(Configuration, NoFileAndNoHomeAreFine) {
    ::unsetenv("XDG_CONFIG_HOME");
    ::unsetenv("HOME");
    const Json answer = Json::parse(Get({"--json", "config"}));
    EXPECT_EQ(answer["file"], nullptr);
    EXPECT_EQ(answer["found"], false);
    ::setenv("HOME", m_dir.Path("me").c_str(), 1);
    EXPECT_EQ(Json::parse(Get({"--json", "config"}))["file"], m_dir.Path("me/.config/dlpctl/config.toml"));
    m_dir.Write("me/.config/dlpctl/config.toml", "scope = 'mine'\n");
    EXPECT_EQ(GetOption("scope")[0], "mine");
    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    EXPECT_EQ(GetOption("scope")[0], "mine");
}

TEST_F(Configuration, EveryOptionIsListedUnderNamesOfItsOwn) {
    const Json answer = Json::parse(Get({"--json", "config"}));
    EXPECT_EQ(CheckAnswer("config", answer.dump()), "");
    std::set<std::string> lstVariables;
    std::set<std::string> lstKeys;
    for (const Json& option : answer["options"]) {
        EXPECT_TRUE(lstVariables.insert(option["variable"].get<std::string>()).second) << option;
        EXPECT_TRUE(lstKeys.insert(option["key"].get<std::string>()).second) << option;
    }
    for (const char* pVariable : {"DLP_STORE", "DLP_INSTALL_PATH", "DLPCTL_JSON", "DLPCTL_STORE_DUMP_OUTPUT",
                                  "DLPCTL_CHECK_FAIL_ON", "DLPCTL_CONFIG_ORIGIN"}) {
        EXPECT_EQ(lstVariables.count(pVariable), 1U) << pVariable;
    }
    EXPECT_EQ(lstVariables.count("DLPCTL_HELP"), 0U);
    EXPECT_EQ(lstVariables.count("DLPCTL_VERSION"), 0U);
}

TEST_F(Configuration, TheListSaysWhereValuesComeFrom) {
    WriteFile("[check]\nallow = ['DLP010', 'DLP034']\n");
    ::setenv("DLPCTL_CHEKC_ALL", "1", 1);
    const SToolRun run = Run({"config", "--origin", "--language", "French"});
    EXPECT_EQ(run.strErr,
              "dlpctl: warning: $DLPCTL_CHEKC_ALL is the variable of no option; did you mean \"DLPCTL_CHECK_ALL\"?\n");
    EXPECT_EQ(run.strOut.find("OPTION "), 0U) << run.strOut;
    for (const auto& [strOption, strValue, strOrigin] : std::vector<std::tuple<std::string, std::string, std::string>>{
             {"--store", Url("store.db"), "$DLP_STORE"},
             {"--language", "French", "command line"},
             {"--scope", "", "default"},
             {"check --allow", "DLP010, DLP034", m_strFile + ":2:1"}}) {
        const std::size_t iStart = run.strOut.find('\n' + strOption + ' ');
        ASSERT_NE(iStart, std::string::npos) << strOption;
        const std::string strLine = run.strOut.substr(iStart + 1, run.strOut.find('\n', iStart + 1) - iStart - 1);
        EXPECT_NE(strLine.find(strValue), std::string::npos) << strLine;
        EXPECT_EQ(strLine.substr(strLine.size() - strOrigin.size()), strOrigin);
    }
    EXPECT_EQ(Run({"config", "-q"}).strOut.find("ORIGIN"), std::string::npos);
}

TEST_F(Configuration, VariablesThatAreNotReadAreWarnedOf) {
    ::setenv("DLPCTL_STORE", "sqlite:x.db", 1);
    ::setenv("DLPCTL_HOME", "", 1);
    const std::string strStore = "dlpctl: warning: $DLPCTL_STORE is not read; the variable of --store is DLP_STORE\n";
    EXPECT_EQ(Run({"list", "keywords"}).strErr,
              strStore + "The store holds no keyword lists; dlpctl import FILE reads a policy into it.\n");
    ::setenv("DLPCTL_HOME", "/opt", 1);
    EXPECT_EQ(Run({"config"}).strErr,
              strStore + "dlpctl: warning: $DLPCTL_HOME is not read; the variable of --home is DLP_INSTALL_PATH\n");
}

TEST_F(Configuration, ValuesThatTheirCommandWouldRefuseAreWarnedOf) {
    WriteFile("[check]\nformat = 'xml'\nallow = ['DLP034', 'DLP00']\n");
    ::setenv("DLPCTL_KEYWORDS_NEW_THRESHOLD", "few", 1);
    ::setenv("DLPCTL_KEYWORDS_NEW_TYPE", "any", 1);
    ::setenv("DLPCTL_CHECK_FAIL_ON", "note", 1);
    const SToolRun run = Run({"config"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strErr,
              "dlpctl: warning: " + m_strFile +
                  ":3:1: dlpctl check does not take \"DLP00\" for --allow\n"
                  "dlpctl: warning: " +
                  m_strFile +
                  ":2:1: dlpctl check does not take \"xml\" for --format\n"
                  "dlpctl: warning: $DLPCTL_KEYWORDS_NEW_THRESHOLD: dlpctl keywords new does not take \"few\" for "
                  "--threshold\n");
}

TEST_F(Configuration, ValuesAreLookedAtAsTheirCommandDoes) {
    const auto fnWarning = [this](const char* pPlace, const char* pValue, const char* pOption) {
        return "dlpctl: warning: " + m_strFile + pPlace + ": dlpctl check does not take \"" + pValue + "\" for --" +
               pOption + '\n';
    };
    WriteFile("[check]\nallow = ['DLP003', 'dlp034']\nfail-on = 'Warning'\nformat = 'JSON'\n");
    ::setenv("DLPCTL_KEYWORDS_NEW_TYPE", "any", 1);
    ::setenv("DLPCTL_KEYWORDS_ADD_CASE_SENSITIVE", "True", 1);
    ::setenv("DLPCTL_KEYWORDS_IMPORT_FORMAT", "CSV", 1);
    EXPECT_EQ(Run({"config"}).strErr, fnWarning(":2:1", "DLP003", "allow") + fnWarning(":3:1", "Warning", "fail-on") +
                                          fnWarning(":4:1", "JSON", "format"));
}
