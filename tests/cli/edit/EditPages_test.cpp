#include <gtest/gtest.h>

#include "tests/cli/ManualPage.h"
#include "tests/cli/edit/EditRun.h"

namespace {

/** Every command line that the page and the help show of these commands, each in a store of its own. */
class EditPages : public CEditTest {
  protected:
    static std::string MakePolicy() {
        using namespace Documents;
        return Policy(Entity("card") + Entity("old card") + Dictionary("card words") + Dictionary("project names"),
                      Template("payments", "card", "card words") + Template("card-data", "card", "card words"));
    }

    /** @param vecCommands their words, as a heading of the page or below one that they share */
    void ExpectToRun(const std::string& strHeading, const std::vector<std::vector<std::string>>& vecCommands,
                     std::size_t iAtLeast) {
        std::vector<std::string> vecLines = ManualPage::GetCommandLines(strHeading);
        EXPECT_GE(vecLines.size(), iAtLeast);
        for (std::vector<std::string> vecWords : vecCommands) {
            vecWords.emplace_back("--help");
            for (const std::string& strLine : ManualPage::GetExamples(Run(vecWords).strOut)) {
                vecLines.push_back(strLine);
            }
        }
        for (const std::string& strLine : vecLines) {
            ExpectToRun(strLine);
        }
    }

    void ExpectToRun(const std::string& strLine) {
        const CTempDir folder;
        const std::string strStore = "sqlite:" + folder.Path("store.db");
        EXPECT_EQ(RunOn(strStore, {"import", "-"}, MakePolicy()).iCode, 0);
        const SToolRun run = CProgram::Shell("cd '" + folder.Path() + "' && DLP_STORE='" + strStore + "' && " +
                                             "export DLP_STORE && " + ManualPage::ToShell(strLine));
        EXPECT_EQ(run.iCode, 0) << strLine << '\n' << run.strErr;
        EXPECT_NE(run.strOut + run.strErr, "") << strLine;
    }
};

}  // namespace

TEST_F(EditPages, LinesOfDeleteRun) {
    ExpectToRun("delete", {{"delete"}}, 3);
}

TEST_F(EditPages, LinesOfRenameRun) {
    ExpectToRun("rename", {{"rename"}}, 2);
}
