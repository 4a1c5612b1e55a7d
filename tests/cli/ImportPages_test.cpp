#include <gtest/gtest.h>

#include <sstream>

#include "tests/cli/ManualPage.h"
#include "tests/cli/ToolRun.h"
#include "tests/support/FaultStore.h"
#include "tests/support/JsonSchema.h"

namespace {

using namespace Documents;

/** Every command line that the page and the help show of imports, and every answer in JSON. */
class ImportPages : public CToolTest {
  protected:
    ImportPages() {
        m_dir.Write("policy.xml",
                    Policy(Entity("card") + Dictionary("card-words"), Template("card-data", "card", "card-words")));
        m_dir.Write("assets.xml", Small());
    }

    void ExpectToRun(const std::string& strCommand, const std::vector<std::string>& vecHelp,
                     std::size_t iAtLeast) const {
        std::vector<std::string> vecLines = ManualPage::GetCommandLines(strCommand);
        EXPECT_GE(vecLines.size(), iAtLeast);
        for (const std::string& strLine : ManualPage::GetExamples(Run(vecHelp).strOut)) {
            vecLines.push_back(strLine);
        }
        for (const std::string& strLine : vecLines) {
            const SToolRun run = CProgram::Shell("cd '" + m_dir.Path() + "' && " + ManualPage::ToShell(strLine));
            EXPECT_TRUE(run.iCode == 0 || run.iCode == 1) << strLine << run.strErr;
        }
    }

    /** Holds each line against the schema. */
    void ExpectValid(const std::string& strSchema, std::vector<std::string> vecArguments,
                     const std::string& strInput) const {
        vecArguments.insert(vecArguments.begin(), "--json");
        std::istringstream lines(Run(vecArguments, strInput).strOut);
        std::size_t iLines = 0;
        for (std::string strLine; std::getline(lines, strLine); ++iLines) {
            EXPECT_EQ(CheckAnswer(strSchema, strLine), "") << strLine;
        }
        EXPECT_NE(iLines, 0U);
    }
};

/** Items of every disposition and reason that a healthy store gives. */
std::string Everything() {
    return Policy(Entity("card") + Entity("new") + Entity("") + "<entity name='x'/>" +
                      "<entity name='owned' display_name='O'><regularExpression/></entity>" +
                      "<entity name='typed' type='Type 1' display_name='T'><regularExpression/></entity>",
                  Template("a", "card", "card-words") + Template("b", "crad", "w") + Template("c", "card", "w") +
                      "<template name='d' display_name='D'><rule/><matchRule operation='EXCEPT'/></template>",
                  "<industries><industry name='i'><template_id>gone</template_id></industry></industries>");
}

constexpr const char OLDER[] =
    "<SAPolicy><digitalAssets><entity/></digitalAssets><complianceTemplates><template name='a' displayName='A'/>"
    "<template name='b' displayName='B' builtin='1'/></complianceTemplates></SAPolicy>";

}  // namespace

TEST_F(ImportPages, LinesOfImportRun) {
    ExpectToRun("import", {"import", "--help"}, 7);
}

TEST_F(ImportPages, LinesOfAssetsImportRun) {
    ExpectToRun("assets import", {"assets", "import", "--help"}, 3);
}

TEST_F(ImportPages, EveryAnswerInJsonFollowsItsSchema) {
    Import(Policy(Entity("card") + Entity("owned", "pre-defined='true'") + Dictionary("card-words"),
                  Template("cards", "card", "card-words")));
    for (const std::string strCommand : {"import", "assets import"}) {
        std::vector<std::string> vecWords{"import"};
        if (strCommand != "import") {
            vecWords.insert(vecWords.begin(), "assets");
        }
        const std::string strSchema = strCommand == "import" ? "import" : "assets-import";
        const auto fnExpect = [&](std::vector<std::string> vecMore, const std::string& strInput) {
            vecMore.insert(vecMore.begin(), vecWords.begin(), vecWords.end());
            ExpectValid(strSchema, vecMore, strInput);
        };
        fnExpect({"-"}, Everything());
        fnExpect({"-", "--dry-run", "--skip-existing", "--only", "crad", "--only", "card", "--only", "q"},
                 Everything());
        fnExpect({"-", "--fail-on-skip"}, Everything());
        fnExpect({"-"}, OLDER);
        fnExpect({"-"}, "<SAPolicy/>");
        fnExpect({"-"}, "<SAPolicy localization_language='x'/>");
        fnExpect({"-"}, "<a>");
        fnExpect({m_dir.Path("none"), m_dir.Path("policy.xml")}, "");
        fnExpect({}, "");
        fnExpect({"-", "--report-format", "json"}, "");
        fnExpect({"-", "--store", "none:"}, Small());
    }
}

TEST_F(ImportPages, AnAnswerAboutAFailingStoreFollowsTheSchema) {
    CStoreFaults faults;
    for (std::size_t i = 1; i < 12; ++i) {
        faults.FailAt(i);
        ExpectValid("import", {"import", "-"}, Small());
    }
}
