#include <gtest/gtest.h>

#include "tests/cli/ToolRun.h"

namespace {

using TerminalManners = CToolTest;

}  // namespace

TEST_F(TerminalManners, VerboseSaysWhatIsOpenedAndHowLongItTook) {
    const std::string strFile = m_dir.Write("small.xml", Documents::Small());
    const SToolRun run = Run({"-v", "diff", strFile, "store"});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strErr.find("dlpctl: detail: reading " + strFile + "\ndlpctl: detail: store " + Url("store.db") +
                              ", to read\n"),
              0U)
        << run.strErr;
    EXPECT_NE(run.strErr.find("\ndlpctl: detail: findings after 0."), std::string::npos) << run.strErr;
    EXPECT_NE(Run({"-v", "import", strFile}).strErr.find(" info"), std::string::npos);
    EXPECT_EQ(Run({"import", strFile}).strErr.find("detail"), std::string::npos);
}

TEST_F(TerminalManners, PagesOfTheManualAreMarkupOnATerminalToo) {
    const std::string strTold = "This is what man reads: dlpctl manual PAGE | man -l - shows it.";
    EXPECT_NE(CProgram::Shell("script -qec 'stty cols 80; unset COLUMNS; \"$DLPCTL\" manual check' /dev/null")
                  .strOut.find(strTold),
              std::string::npos);
    EXPECT_EQ(Run({"manual", "check"}).strErr, "");
}

TEST_F(TerminalManners, TablesFitTheTerminal) {
    if (CProgram::Shell("command -v script").iCode != 0) {
        GTEST_SKIP() << "script(1) is not there to make a terminal";
    }
    Import(Documents::Small());
    const auto fnOnTerminal = [](const std::string& strCommand) {
        return CProgram::Shell("script -qec '" + strCommand + "' /dev/null").strOut;
    };
    const std::string strNarrow =
        "NAME   DISPLAY \xe2\x80\xa6  BUILT-IN  RULES\r\n"
        "cards  Template\xe2\x80\xa6  no        1\r\n";
    EXPECT_EQ(fnOnTerminal("COLUMNS=33 \"$DLPCTL\" list templates"), strNarrow);
    EXPECT_EQ(fnOnTerminal("stty cols 33; unset COLUMNS; \"$DLPCTL\" list templates"), strNarrow);
    EXPECT_EQ(fnOnTerminal("COLUMNS=33 \"$DLPCTL\" list templates | cat").find("\xe2\x80\xa6"), std::string::npos);
}
