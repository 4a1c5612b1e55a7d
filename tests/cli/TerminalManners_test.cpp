#include <gtest/gtest.h>

#include <sstream>

#include "tests/cli/ToolRun.h"

namespace {

class TerminalManners : public CToolTest {
  protected:
    TerminalManners() {
        if (CProgram::Shell("command -v script").iCode != 0) {
            m_bTerminal = false;
        }
    }

    /** @return what the command shows on a terminal */
    static std::string OnTerminal(const std::string& strCommand) {
        return CProgram::Shell(Terminal(strCommand)).strOut;
    }
    static std::string Terminal(const std::string& strCommand) { return "script -qec '" + strCommand + "' /dev/null"; }

    /** @return the beginning of a command line: a folder, its store, and pipes */
    std::string In(const std::string& strFolder) const {
        return "cd " + m_dir.Path(strFolder) + "; export DLP_STORE=" + Url(strFolder + "/store.db") +
               "; mkfifo log in 2>/dev/null; ";
    }

    bool m_bTerminal = true;  ///< script(1) is there to make one
};

constexpr const char NO_TERMINAL[] = "script(1) is not there to make a terminal";

/** A command line whose work takes more than a second, since it waits for something, and what its bar is called. */
struct SLongWork {
    const char* pCommand;
    const char* pBar;
};
constexpr SLongWork LONG_WORK[] = {
    {"(sleep 1.8; cat) <log >/dev/null & \"$DLPCTL\" --log log --log-level all import big.xml", "big.xml"},
    {"(sleep 1.8; cat) <log >/dev/null & \"$DLPCTL\" --log log --log-level all check big.xml", "big.xml"},
    {"(sleep 1.8; cat) <log >/dev/null & \"$DLPCTL\" --log log --log-level all export --all -o out.xml", "export"},
    {"(exec 3>in; sleep 1.8; cat big.xml >&3) & \"$DLPCTL\" diff in store", "in"},
    {"\"$DLPCTL\" store dump | (head -c 1; sleep 1.8; cat) >/dev/null", "dump"},
    {"(exec 3>in; sleep 1.8; cat dump.json >&3) & \"$DLPCTL\" store load in", "load"},
};

/** So many items that a pipe is full before all are done. */
std::string Big() {
    std::string strAssets;
    std::string strTemplates;
    for (int i = 0; i < 500; ++i) {
        const std::string strNumber = std::to_string(i);
        strAssets += Documents::Entity("e" + strNumber) + Documents::Dictionary("k" + strNumber);
        strTemplates += Documents::Template("t" + strNumber, "e" + strNumber, "k" + strNumber);
    }
    return Documents::Policy(strAssets, strTemplates);
}

}  // namespace

TEST_F(TerminalManners, LongWorkShowsHowFarItIs) {
    if (!m_bTerminal) {
        GTEST_SKIP() << NO_TERMINAL;
    }
    Import(Big());
    const std::string strDump = Dump();
    for (const char* pFolder : {"shown", "quiet"}) {
        m_dir.Write(std::string(pFolder) + "/big.xml", Big());
        m_dir.Write(std::string(pFolder) + "/dump.json", strDump);
        RunOn(Url(std::string(pFolder) + "/store.db"), {"store", "load", "-"}, strDump);
    }
    for (const SLongWork& work : LONG_WORK) {
        // At the same time, since each waits.
        const std::string strShown =
            CProgram::Shell(Terminal("export DLPCTL_QUIET=1; " + In("quiet") + work.pCommand) + " >" +
                            m_dir.Path("quiet.out") + " & " + Terminal(In("shown") + work.pCommand) + "; wait")
                .strOut;
        const std::size_t iBar = strShown.find(std::string("\r\x1b[K") + work.pBar + " [");
        ASSERT_NE(iBar, std::string::npos) << work.pCommand << '\n' << strShown;
        EXPECT_NE(strShown.find("\r\x1b[K", strShown.rfind("%")), std::string::npos) << work.pCommand << strShown;
        const std::string strQuiet = m_dir.Read("quiet.out");
        EXPECT_EQ(strQuiet.find("\x1b[K"), std::string::npos) << work.pCommand << '\n' << strQuiet;
    }
}

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
    if (!m_bTerminal) {
        GTEST_SKIP() << NO_TERMINAL;
    }
    Import(Documents::Small());
    const std::string strNarrow =
        "NAME   DISPLAY \xe2\x80\xa6  BUILT-IN  RULES\r\n"
        "cards  Template\xe2\x80\xa6  no        1\r\n";
    EXPECT_EQ(OnTerminal("COLUMNS=33 \"$DLPCTL\" list templates"), strNarrow);
    EXPECT_EQ(OnTerminal("stty cols 33; unset COLUMNS; \"$DLPCTL\" list templates"), strNarrow);
    EXPECT_EQ(OnTerminal("COLUMNS=33 \"$DLPCTL\" list templates | cat").find("\xe2\x80\xa6"), std::string::npos);
}

TEST_F(TerminalManners, WhatMayNotBeLostIsBrokenIntoLines) {
    if (!m_bTerminal) {
        GTEST_SKIP() << NO_TERMINAL;
    }
    Import(Documents::Policy(
        Documents::Entity("e") + Documents::Dictionary("k"),
        Documents::Template("first-template", "e", "k") + Documents::Template("second-template", "e", "k")));
    EXPECT_EQ(OnTerminal("COLUMNS=52 \"$DLPCTL\" refs"),
              "KIND          NAME  STATE  USED BY\r\n"
              "expression    e     used   first-template,\r\n"
              "                           second-template\r\n"
              "keyword list  k     used   first-template,\r\n"
              "                           second-template\r\n");
    std::istringstream help(OnTerminal("COLUMNS=60 \"$DLPCTL\" import --help"));
    std::string strWords;
    for (std::string strLine; std::getline(help, strLine, '\r') && strLine != "\nExamples:";) {
        EXPECT_LE(strLine.size(), 64U) << strLine;  // some characters are several bytes
        const std::size_t iWord = strLine.find_first_not_of("\n ");
        strWords += iWord == std::string::npos ? "" : strLine.substr(iWord) + ' ';
    }
    EXPECT_NE(strWords.find("Its digital assets come first, then its templates;"), std::string::npos) << strWords;
}

TEST_F(TerminalManners, DiagnosticsAreColouredOnATerminalOnly) {
    if (!m_bTerminal) {
        GTEST_SKIP() << NO_TERMINAL;
    }
    m_dir.Write("faulty.xml", "<SAPolicy template_version=\"3\" lang=\"x\"/>");
    const std::string strCommand = "\"$DLPCTL\" check --no-store " + m_dir.Path("faulty.xml");
    const std::string strShown = OnTerminal(strCommand);
    EXPECT_NE(strShown.find(": \x1b[31merror\x1b[0m: DLP0"), std::string::npos) << strShown;
    EXPECT_NE(strShown.find(": \x1b[33mwarning\x1b[0m: DLP013 "), std::string::npos) << strShown;
    EXPECT_NE(strShown.find(" | \x1b[31m^\x1b[0m\r\n"), std::string::npos) << strShown;
    EXPECT_EQ(OnTerminal("NO_COLOR=1 " + strCommand).find('\x1b'), std::string::npos);
    EXPECT_EQ(OnTerminal(strCommand + " | cat").find('\x1b'), std::string::npos);
    EXPECT_EQ(OnTerminal(strCommand + " --format json").find('\x1b'), std::string::npos);
}
