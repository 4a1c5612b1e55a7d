#include "cli/manual/ManualPages.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/manual/Roff.h"
#include "tests/cli/ManualPage.h"
#include "tests/cli/ToolRun.h"

namespace {

using Json = nlohmann::json;

class Manual : public CToolTest {
  protected:
    std::vector<std::string> ListPages() const {
        std::vector<std::string> vecPages;
        const Json answer = Json::parse(Get({"--json", "manual"}));
        for (const Json& page : answer["pages"]) {
            vecPages.push_back(page["page"]);
        }
        return vecPages;
    }

    /** Runs a program over every page, {} standing for its file, and expects that it has nothing to say. */
    void ExpectSilence(const char* pProgram, const std::string& strCommand) const {
        if (CProgram::Shell(std::string("command -v ") + pProgram).iCode != 0) {
            GTEST_SKIP() << pProgram << " is not there";
        }
        for (const std::string& strPage : ListPages()) {
            const std::string strFile = "'" + m_dir.Write(strPage, Get({"manual", strPage})) + "'";
            const SToolRun run = CProgram::Shell(std::string(strCommand).replace(strCommand.find("{}"), 2, strFile));
            EXPECT_EQ(run.iCode, 0) << strPage;
            EXPECT_EQ(run.strOut, "") << strPage;
            EXPECT_EQ(run.strErr, "") << strPage;
        }
    }
};

/** @return the first block of code in a page of docs/ that begins as a whole document does */
std::string FindDocument() {
    const SToolRun page = CProgram::Shell("cat " DLP_SOURCE_DIR "/docs/formats.md");
    const std::size_t iStart = page.strOut.find("<?xml", page.strOut.find("### A complete policy"));
    return page.strOut.substr(iStart, page.strOut.find("```", iStart) - iStart);
}

}  // namespace

TEST_F(Manual, EveryCommandHasAPageWithItsOptionsAndExamples) {
    const std::vector<std::string> vecPages = ListPages();
    for (const std::string& strCommand : ManualPage::GetCommands(Run({"--help"}).strOut)) {
        std::string strPage = "dlpctl-" + strCommand + ".1";
        std::replace(strPage.begin(), strPage.end(), ' ', '-');
        EXPECT_NE(std::find(vecPages.begin(), vecPages.end(), strPage), vecPages.end()) << strPage;
        const std::string strText = Get({"manual", strPage});
        for (const char* pPart : {".SH NAME\n", ".SH SYNOPSIS\n", "\\-\\-help", ".SH EXAMPLES\n"}) {
            EXPECT_NE(strText.find(pPart), std::string::npos) << strPage << ' ' << pPart;
        }
    }
}

TEST_F(Manual, PagesAreFoundWithAndWithoutTheirSection) {
    EXPECT_EQ(Get({"manual", "dlpctl-config"}), Get({"manual", "dlpctl-config.1"}));
    EXPECT_NE(Get({"manual", "dlpctl-config"}), Get({"manual", "dlpctl-config.5"}));
    EXPECT_EQ(Get({"manual", "dlp-policy"}).find(".TH"), Get({"manual", "dlp-policy.5"}).find(".TH"));
    EXPECT_EQ(Json::parse(Get({"--json", "manual", "dlpctl"}))["text"], Get({"manual", "dlpctl"}));
    EXPECT_EQ(Get({"manual", "check"}), Get({"manual", "dlpctl-check"}));
    EXPECT_EQ(Get({"manual", "config"}), Get({"manual", "dlpctl-config.1"}));
    EXPECT_EQ(Run({"manual", "bank"}).iCode, 3);
}

TEST_F(Manual, MandocFindsNothingWrong) {
    ExpectSilence("mandoc", "mandoc -T lint -W warning {} || true");
}

TEST_F(Manual, ManReadsPagesWithoutWarnings) {
    ExpectSilence("man", "MANWIDTH=80 LC_ALL=C.UTF-8 man --warnings -l {} | head -0");
}

TEST_F(Manual, TheCompletePolicyOfTheManualIsImportedWhole) {
    const std::string strDocument = FindDocument();
    ASSERT_NE(strDocument, "");
    const SToolRun check = Run({"--home", DLP_SOURCE_DIR, "check", "--strict", m_dir.Write("bank.xml", strDocument)});
    EXPECT_EQ(check.iCode, 0) << check.strOut;
    const Json answer = Json::parse(Get({"--json", "import", m_dir.Path("bank.xml")}));
    EXPECT_EQ(answer["items"].size(), 3U);
    EXPECT_EQ(answer["skipped"], Json::array());
    const std::string strPage = Get({"manual", "dlp-policy"});
    EXPECT_NE(strPage.find("<template name=\"customer\\-accounts\""), std::string::npos);
}

TEST(Roff, TextIsShownAsItStands) {
    EXPECT_EQ(Roff::Escape("a-b \\d 'x' `y`"), "a\\-b \\ed \\(aqx\\(aq \\(gay\\(ga");
    EXPECT_EQ(Roff::MakeBlock(".a\n\n'b\n"), ".PP\n.RS 2\n.nf\n\\&.a\n\\&\n\\(aqb\n.fi\n.RE\n");
    EXPECT_EQ(Roff::MakeEntry("--all", ".x"), ".TP\n\\fB\\-\\-all\\fR\n\\&.x\n");
}

TEST(Roff, MarkdownBecomesSections) {
    EXPECT_EQ(Roff::FromMarkdown("# Title\n\nOne `a-b` and\n**two** [three](x.md).\n\n## Head\n### Sub\n- x\n  y\n- z\n"
                                 "1. first\n\n```\n  code\n```\n"),
              ".PP\nOne \\fBa\\-b\\fR and \\fBtwo\\fR three.\n.SH HEAD\n.SS Sub\n.IP \\(bu 2\nx y\n.IP \\(bu 2\nz\n"
              ".IP 1. 3\nfirst\n.PP\n.RS 2\n.nf\n  code\n.fi\n.RE\n");
    EXPECT_EQ(
        Roff::FromMarkdown("| a | b |\n|---|---|\n| `x` | y |\n\n| a | b | c |\n|---|---|---|\n| x | y | `p|q` |\n"),
        ".TP\n\\fBx\\fR\ny\n.TP\nx\nb: y\n.br\nc: \\fBp|q\\fR\n");
}
