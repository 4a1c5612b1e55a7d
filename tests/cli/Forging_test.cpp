#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <regex>

#include <nlohmann/json.hpp>

#include "platform/common/TextConversion.h"
#include "tests/cli/ToolRun.h"
#include "tests/support/MisleadingCharacters.h"

// Names and texts that would be something else where they are shown: lines of a log, orders to a terminal, statements
// of a database, places in the file system.

namespace {

using Json = nlohmann::ordered_json;

/** What XML can carry of it: line ends, the C1 controls that begin and end a terminal's orders, marks that turn text.
 */
constexpr const char NAME_IN_XML[] =
    "x&#10;2026-01-01T00:00:00.000Z error&#9;&#x9B;31m&#x85;&#x2028;&#x202E;&#x2066;'; DROP TABLE expressions; --"
    "&lt;b>&quot;../../up %s%n";
const std::string NAME =
    "x\n2026-01-01T00:00:00.000Z error\t\u009b31m\u0085\u2028\u202e\u2066'; DROP TABLE expressions; --<b>\"../../up "
    "%s%n";

class Forging : public CToolTest {
  protected:
    Forging() {
        const std::string strAttributes =
            std::string("description=\"") + NAME_IN_XML + "\" validator=\"" + NAME_IN_XML + "\"";
        m_strDocument = Documents::Policy(
            Documents::Entity(NAME_IN_XML, strAttributes) + Documents::Dictionary(NAME_IN_XML, strAttributes),
            Documents::Template(NAME_IN_XML, NAME_IN_XML, NAME_IN_XML) +
                Documents::Template(std::string(NAME_IN_XML) + "2", std::string("no") + NAME_IN_XML, NAME_IN_XML),
            std::string("<industries><industry name=\"") + NAME_IN_XML + "\"><template_id>" + NAME_IN_XML +
                "</template_id></industry></industries>");
        m_strFile = m_dir.Write("a\nb\x1b[31m.xml", m_strDocument);
    }

    std::string m_strDocument;
    std::string m_strFile;
};

/** Ends of lines are the tool's own. */
bool IsPrintable(const std::string& strText) {
    const std::wstring strWide = OS::WideText(strText);
    return std::none_of(strWide.begin(), strWide.end(), [](wchar_t c) { return IsMisleading(c) && c != L'\n'; });
}

std::ptrdiff_t CountLines(const std::string& strText) {
    return std::count(strText.begin(), strText.end(), '\n');
}

}  // namespace

TEST_F(Forging, NothingThatIsShownOrdersATerminal) {
    EXPECT_EQ(Run({"import", m_strFile}).iCode, 1);
    const std::vector<std::string> aCommands[] = {
        {"import", m_strFile},
        {"assets", "import", m_strFile},
        {"check", m_strFile},
        {"diff", m_strFile, "store"},
        {"diff", m_strFile, "memory:"},
        {"refs"},
        {"refs", m_strFile},
        {"list", "expressions"},
        {"list", "keywords"},
        {"list", "templates"},
        {"show", "expression", NAME},
        {"show", "keyword", NAME},
        {"show", "template", NAME},
        {"show", "template", NAME + "nowhere"},
        {"export", NAME + "nowhere"},
        {"import", m_strFile + "nowhere"},
        {"store", "load", m_strFile},
        {NAME},
        {"--" + NAME},
    };
    for (const std::vector<std::string>& vecCommand : aCommands) {
        const SToolRun run = Run(vecCommand);
        EXPECT_TRUE(IsPrintable(run.strOut)) << vecCommand[0] << ":\n" << run.strOut;
        EXPECT_TRUE(IsPrintable(run.strErr)) << vecCommand[0] << ":\n" << run.strErr;
        EXPECT_NE(run.strOut + run.strErr, "") << vecCommand[0];
        std::vector<std::string> vecJson = vecCommand;
        vecJson.insert(vecJson.begin(), "--json");
        const SToolRun json = Run(vecJson);
        EXPECT_TRUE(IsPrintable(json.strOut)) << vecCommand[0] << ":\n" << json.strOut;
        EXPECT_TRUE(IsPrintable(json.strErr)) << vecCommand[0] << ":\n" << json.strErr;
    }
}

TEST_F(Forging, ARecordIsOneLineOfAList) {
    ASSERT_EQ(Run({"import", m_strFile}).iCode, 1);
    for (const char* pKind : {"expressions", "keywords", "templates"}) {
        EXPECT_EQ(CountLines(Run({"list", pKind}).strOut), 2) << pKind;
    }
}

TEST_F(Forging, ALineOfTheLogIsOneEvent) {
    const std::string strLog = m_dir.Path("log");
    EXPECT_EQ(Run({"--log", strLog, "--log-level", "all", "import", m_strFile}).iCode, 1);
    const std::regex line(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z [a-z]* 0x[0-9a-f]+ \S+:\d+ .*)");
    std::istringstream stream(m_dir.Read("log"));
    int iLines = 0;
    int iNamed = 0;
    for (std::string strLine; std::getline(stream, strLine); ++iLines) {
        EXPECT_TRUE(std::regex_match(strLine, line)) << strLine;
        EXPECT_NE(strLine.find("2026-01-01"), 0U) << strLine;
        EXPECT_TRUE(IsPrintable(strLine)) << strLine;
        iNamed += strLine.find("DROP TABLE") != std::string::npos ? 1 : 0;
    }
    EXPECT_GT(iLines, 10);
    EXPECT_GT(iNamed, 1);
}

TEST_F(Forging, AJsonAnswerIsOneLineThatHoldsTheNameItself) {
    ASSERT_EQ(Run({"import", m_strFile}).iCode, 1);
    const SToolRun run = Run({"--json", "show", "expression", NAME});
    EXPECT_EQ(CountLines(run.strOut), 1);
    EXPECT_NE(Json::parse(run.strOut).dump().find(Json(NAME).dump()), std::string::npos) << run.strOut;
}

TEST_F(Forging, AJsonAnswerEscapesWhatItNeedNot) {
    const std::string strTag = "\U000E0041";
    ASSERT_EQ(Run({"expression", "new", strTag + "-\u00fc", "--pattern", "x\u009b"}).iCode, 0);
    const SToolRun run = Run({"--json", "expression", "show", strTag + "-\u00fc"});
    EXPECT_NE(run.strOut.find("\"name\":\"\\uDB40\\uDC41-\u00fc\""), std::string::npos) << run.strOut;
    EXPECT_NE(run.strOut.find("\"pattern\":\"x\\u009B\""), std::string::npos) << run.strOut;
    EXPECT_NE(Json::parse(run.strOut).dump().find(Json("x\u009b").dump()), std::string::npos);
}

TEST_F(Forging, AStatementInANameIsAName) {
    ASSERT_EQ(Run({"import", m_strFile}).iCode, 1);
    const std::string strDump = Dump();
    EXPECT_EQ(Run({"show", "expression", "x' OR '1'='1"}).iCode, 1);
    EXPECT_EQ(Run({"export", "%"}).iCode, 1);
    EXPECT_EQ(Dump(), strDump);
    const Json dump = Json::parse(strDump);
    ASSERT_EQ(dump["expressions"].size(), 1U);
    EXPECT_EQ(dump["expressions"][0]["name"], NAME);
}

TEST_F(Forging, ANameIsNoPlaceInTheFileSystem) {
    m_dir.MakeFolder("work");
    ASSERT_EQ(Run({"import", m_strFile}).iCode, 1);
    ASSERT_EQ(Run({"export", NAME, "-o", m_dir.Path("work/out.xml")}).iCode, 0);
    std::vector<std::string> vecFound;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_dir.Path())) {
        vecFound.push_back(entry.path().filename().string());
    }
    std::sort(vecFound.begin(), vecFound.end());
    EXPECT_EQ(vecFound, (std::vector<std::string>{"PredefinedDLPPolicy.xml", "a\nb\x1b[31m.xml", "cfg_dlp_da_map.txt",
                                                  "config", "home", "out.xml", "store.db", "work"}));
}

TEST_F(Forging, AnArgumentThatIsNotUtf8IsRefused) {
    EXPECT_EQ(Run({"import", "a\xff\x1b[31m"}).strErr, "dlpctl: argument 2 is not UTF-8\n");
}
