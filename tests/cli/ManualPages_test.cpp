#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <regex>
#include <sstream>

#include "tests/cli/ManualPage.h"
#include "tests/cli/ToolRun.h"

namespace {

namespace fs = std::filesystem;

/** Every command line that docs/dlpctl.md and the help show, each run in a fresh folder with what they name. */
class ManualPages : public CToolTest {
  protected:
    ManualPages() {
        using namespace Documents;
        const std::string strPolicy =
            Policy(Entity("card") + Entity("old-card") + Dictionary("card-words"),
                   Template("payments", "card", "card-words") + Template("card-data", "card", "card-words"));
        for (const char* pFile : {"policy.xml", "old.xml", "new.xml", "a.xml", "b.xml", "policies/one.xml"}) {
            m_dir.Write(std::string("work/") + pFile, strPolicy);
        }
        m_dir.Write("work/assets.xml", Small());
        fs::copy(DLP_SOURCE_DIR "/examples", m_dir.Path("work/examples"));
        fs::copy(DLP_SOURCE_DIR "/examples/older-layout.xml", m_dir.Path("work/older.xml"));
        EXPECT_EQ(Run({"import", DLP_SOURCE_DIR "/examples/starter-policy.xml"}).iCode, 0);
        Import(strPolicy);
        m_dir.Write("work/store.json", Dump());
        EXPECT_EQ(Run({"store", "backup", m_dir.Path("work/backup.db")}).iCode, 0);
        for (const char* pStore : {"work/yesterday.db", "work/copy.db"}) {
            EXPECT_EQ(RunOn(Url(pStore), {"import", "-"}, Small()).iCode, 0);
        }
    }

    void ExpectToRun(const std::vector<std::string>& vecLines) const {
        static const std::regex s_error("(^|\n)dlpctl: (?!warning: )");
        for (const std::string& strLine : vecLines) {
            const CTempDir dir;
            fs::copy(m_dir.Path("work"), dir.Path("work"), fs::copy_options::recursive);
            fs::copy(m_dir.Path("store.db"), dir.Path("store.db"));
            // A shell of its own, since a line may end in a comment.
            const SToolRun run = CProgram::Shell("PATH=$(dirname \"$DLPCTL\"):$PATH; cd '" + dir.Path("work") +
                                                 "'; export EDITOR=true DLP_STORE=sqlite:../store.db; " + strLine);
            EXPECT_TRUE(run.iCode == 0 || run.iCode == 1) << strLine << '\n' << run.strErr;
            EXPECT_FALSE(std::regex_search(run.strErr, s_error)) << strLine << '\n' << run.strErr;
            EXPECT_TRUE(run.strOut + run.strErr != "" || strLine.find('>') != std::string::npos) << strLine;
        }
    }
};

}  // namespace

TEST_F(ManualPages, EveryLineOfThePageRuns) {
    const std::vector<std::string> vecLines = ManualPage::GetCommandLines();
    EXPECT_GE(vecLines.size(), 24U);
    ExpectToRun(vecLines);
}

TEST_F(ManualPages, EveryExampleOfTheHelpRuns) {
    const std::vector<std::string> vecCommands = ManualPage::GetCommands(Run({"--help"}).strOut);
    EXPECT_GE(vecCommands.size(), 15U);
    for (const std::string& strCommand : vecCommands) {
        std::istringstream words(strCommand + " --help");
        const std::vector<std::string> vecWords{std::istream_iterator<std::string>(words), {}};
        const std::vector<std::string> vecExamples = ManualPage::GetExamples(Run(vecWords).strOut);
        EXPECT_GE(vecExamples.size(), 1U) << strCommand;
        ExpectToRun(vecExamples);
    }
}
