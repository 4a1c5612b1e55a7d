#include <gtest/gtest.h>

#include "tests/cli/ManualPage.h"
#include "tests/cli/ToolRun.h"

namespace {

/** Every command line that the page and the help show of these commands. */
class ComparePages : public CToolTest {
  protected:
    ComparePages() {
        using namespace Documents;
        const std::string strPolicy =
            Policy(Entity("card") + Entity("old card") + Dictionary("card words"),
                   Template("payments", "card", "card words") + Template("card-data", "card", "card words"));
        for (const char* pFile : {"policy.xml", "old.xml", "new.xml"}) {
            m_dir.Write(pFile, strPolicy);
        }
        Import(strPolicy);
        EXPECT_EQ(RunOn(Url("yesterday.db"), {"import", "-"}, Small()).iCode, 0);
    }

    void ExpectToRun(const std::string& strCommand, std::size_t iAtLeast) const {
        std::vector<std::string> vecLines = ManualPage::GetCommandLines(strCommand);
        EXPECT_GE(vecLines.size(), iAtLeast);
        for (const std::string& strLine : ManualPage::GetExamples(Run({strCommand, "--help"}).strOut)) {
            vecLines.push_back(strLine);
        }
        for (const std::string& strLine : vecLines) {
            const SToolRun run = CProgram::Shell("cd '" + m_dir.Path() + "' && " + ManualPage::ToShell(strLine));
            EXPECT_TRUE(run.iCode == 0 || run.iCode == 1) << strLine;
            EXPECT_EQ(run.strErr.find("dlpctl:"), std::string::npos) << strLine << '\n' << run.strErr;
            EXPECT_NE(run.strOut + run.strErr, "") << strLine;
        }
    }
};

}  // namespace

TEST_F(ComparePages, LinesOfDiffRun) {
    ExpectToRun("diff", 4);
}

TEST_F(ComparePages, LinesOfRefsRun) {
    ExpectToRun("refs", 6);
}
