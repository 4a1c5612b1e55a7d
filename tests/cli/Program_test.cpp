#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include <sys/stat.h>

#include "platform/store/CSettingsStore.h"
#include "tests/cli/ToolRun.h"

namespace {

/** The built program, run by a shell. */
using Program = CToolTest;

}  // namespace

TEST_F(Program, RunsTheTool) {
    const std::string strFile = m_dir.Write("small.xml", Documents::Small());
    const SToolRun run = CProgram::Shell("\"$DLPCTL\" -q import '" + strFile + "' && \"$DLPCTL\" list templates");
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut,
              "NAME   DISPLAY NAME    BUILT-IN  RULES\n"
              "cards  Template cards  no        1\n");
    EXPECT_EQ(run.strErr, "");
    EXPECT_EQ(CProgram::Shell("\"$DLPCTL\"").iCode, 3);
}

#ifndef DLP_SANITIZED
TEST_F(Program, WorksWhereAddressesAreFew) {
    const std::string strFile = m_dir.Write("small.xml", Documents::Small());
    for (const char* pKilobytes : {"100000", "200000", "300000"}) {
        const SToolRun run =
            CProgram::Shell(std::string("ulimit -v ") + pKilobytes + "; \"$DLPCTL\" -q import '" + strFile + "'");
        EXPECT_EQ(run.iCode, 0) << pKilobytes;
        EXPECT_EQ(run.strErr, "") << pKilobytes;
    }
}
#endif

TEST_F(Program, PathsAreMeantWhereItWasStarted) {
    m_dir.Write("work/small.xml", Documents::Small());
    const SToolRun run = CProgram::Shell("cd '" + m_dir.Path("work") +
                                         "' && \"$DLPCTL\" -q --store sqlite:here.db --log here.log --log-level all "
                                         "--home ../home import small.xml && DLP_STORE=sqlite:here.db \"$DLPCTL\" -q "
                                         "export --all -o here.xml && \"$DLPCTL\" -q store load missing.json");
    EXPECT_EQ(run.strErr, "dlpctl: missing.json: No such file or directory\n");
    EXPECT_EQ(run.strOut, "");
    for (const char* pFile : {"work/here.db", "work/here.log", "work/here.xml"}) {
        EXPECT_NE(m_dir.Read(pFile), "") << pFile;
    }
}

TEST_F(Program, ARelativeInstallationDirectoryIsMeantWhereItWasStarted) {
    const SToolRun run = CProgram::Shell("cd '" + m_dir.Path() +
                                         "' && DLP_INSTALL_PATH=home \"$DLPCTL\" store info && "
                                         "DLP_INSTALL_PATH=home \"$DLPCTL\" metadata");
    EXPECT_EQ(run.iCode, 0) << run.strErr;
    EXPECT_NE(run.strOut.find("policy_file             " + m_dir.Path("home/config/PredefinedDLPPolicy.xml") + "\n"),
              std::string::npos)
        << run.strOut;
    EXPECT_NE(run.strOut.find("map_file                " + m_dir.Path("home/config/cfg_dlp_da_map.txt") + "\n"),
              std::string::npos)
        << run.strOut;
}

TEST_F(Program, WithoutAWorkingDirectoryARelativePathIsRefused) {
    const std::string strFolder = m_dir.MakeFolder("gone");
    const SToolRun run =
        CProgram::Shell("cd '" + strFolder + "' && rmdir '" + strFolder + "' && \"$DLPCTL\" -q import policy.xml");
    EXPECT_EQ(run.iCode, 3);
    EXPECT_EQ(run.strErr,
              "dlpctl: policy.xml: the working directory is gone; name an absolute path instead of \"policy.xml\"; "
              "nothing was written\n");
}

TEST_F(Program, ReadsAndWritesStandardStreamsAndPipes) {
    const std::string strFile = m_dir.Write("small.xml", Documents::Small());
    const std::string strPipe = m_dir.Path("pipe");
    ASSERT_EQ(::mkfifo(strPipe.c_str(), 0600), 0);
    const SToolRun run = CProgram::Shell("\"$DLPCTL\" -q import - <'" + strFile + "' && { cat '" + strFile + "' >'" +
                                         strPipe + "' & \"$DLPCTL\" -q import '" + strPipe + "'; } && cat '" + strFile +
                                         "' | \"$DLPCTL\" -q import /dev/stdin");
    EXPECT_EQ(run.iCode, 0) << run.strErr;
    EXPECT_EQ(run.strErr, "");
    const std::string strExport = Get({"export", "--all"});
    EXPECT_EQ(CProgram::Shell("\"$DLPCTL\" -q export --all -o /dev/stdout").strOut, strExport);
    EXPECT_EQ(
        CProgram::Shell("{ cat '" + strPipe + "' & \"$DLPCTL\" -q export --all -o '" + strPipe + "'; wait; }").strOut,
        strExport);
    EXPECT_TRUE(std::filesystem::is_fifo(strPipe));
}

TEST_F(Program, DumpAndLoadMakeAPipeline) {
    Import(Documents::Small());
    const SToolRun run =
        CProgram::Shell("\"$DLPCTL\" store dump | \"$DLPCTL\" --store '" + Url("copy.db") +
                        "' store load - >/dev/null && \"$DLPCTL\" --store '" + Url("copy.db") + "' store dump");
    EXPECT_EQ(run.iCode, 0) << run.strErr;
    EXPECT_EQ(run.strOut, Dump());
}

TEST_F(Program, ASignalEndsItAlsoWhileItWaitsForInput) {
    for (const auto& [pSignal, iCode] : {std::pair("HUP", 129), std::pair("INT", 130), std::pair("TERM", 143)}) {
        // A shell lets background jobs ignore SIGINT, and nohup SIGHUP; env sets them back.
        const SToolRun run = CProgram::Shell(
            "mkfifo '" + m_dir.Path("in") + "'; exec 9<>'" + m_dir.Path("in") +
            "'; env --default-signal=HUP,INT \"$DLPCTL\" import - <&9 & sleep 0.5; kill -" + pSignal + " $!; wait $!");
        EXPECT_EQ(run.iCode, iCode);
        EXPECT_EQ(run.strOut, "");
        EXPECT_EQ(run.strErr, "dlpctl: -: interrupted; nothing was written\n");
        std::filesystem::remove(m_dir.Path("in"));
    }
}

TEST_F(Program, ASignalThatItsCallerIgnoresEndsNothing) {
    const std::string strFile = m_dir.Write("small.xml", Documents::Small());
    for (const std::string strSignal : {"HUP", "INT", "TERM"}) {
        const SToolRun run =
            CProgram::Shell("(sleep 1; cat '" + strFile + "') | (trap '' " + strSignal +
                            "; exec \"$DLPCTL\" -q import -) & sleep 0.5; kill -" + strSignal + " $!; wait $!");
        EXPECT_EQ(run.iCode, 0) << strSignal;
        EXPECT_EQ(run.strErr, "") << strSignal;
        EXPECT_NE(Dump().find("cards"), std::string::npos) << strSignal;
        RemoveStore();
    }
}

/** Closing any descriptor of a file gives up every lock that the process has on it. */
TEST_F(Program, StoreAmongItsInputsKeepsItsLocks) {
    const std::string strStore = m_dir.Path("store.db");
    m_dir.Write("first.xml", Documents::Policy(Documents::Entity("first"), ""));
    m_dir.Write("second.xml", Documents::Policy(Documents::Entity("second"), ""));
    for (const char* pInput : {"store.db", "store.db-shm", "./store.db"}) {
        const SToolRun run = CProgram::Shell(
            "cd '" + m_dir.Path() + "' && mkfifo pipe && { \"$DLPCTL\" -q assets import first.xml " + pInput +
            " pipe 2>told & exec 9>pipe; \"$DLPCTL\" list expressions >/dev/null; ls store.db-wal; cat second.xml >&9; "
            "exec 9>&-; wait $!; echo $?; cat told; rm pipe; }");
        const std::string strWhat = std::strstr(pInput, "shm") == nullptr ? "a store" : "a file of the store";
        EXPECT_EQ(run.strOut, "store.db-wal\n2\ndlpctl: " + (pInput + (":1:1: the file is no XML: it is " + strWhat)) +
                                  "; where a store can stand write it as sqlite:PATH, else name it by --store; nothing "
                                  "was written\n");
        EXPECT_EQ(Get({"list", "expressions"}).find("second") != std::string::npos, true);
        RemoveStore();
    }
}

TEST_F(Program, FilesAreReadWhereNoStoreCanBeNamed) {
    const std::string strFile = m_dir.Write("small.xml", Documents::Small());
    for (const std::string& strCommand : std::vector<std::string>{"fmt", "diff '" + strFile + "'"}) {
        const SToolRun run = CProgram::Shell("env -u HOME -u XDG_DATA_HOME -u DLP_STORE \"$DLPCTL\" " + strCommand + " '" +
                                             strFile + "' >/dev/null");
        EXPECT_EQ(run.iCode, 0) << strCommand;
        EXPECT_EQ(run.strErr.find("dlpctl: "), std::string::npos) << run.strErr;
    }
}

TEST_F(Program, ASignalEndsItAlsoWhileARestoreWaitsForAnotherWriter) {
    Import(Documents::Small());
    Get({"store", "backup", m_dir.Path("backup.db")});
    const auto pWriter = CSettingsStore::Make(Url("store.db"));
    pWriter->Begin(EUnitOfWork::WRITE);
    const SToolRun run = CProgram::Shell("timeout -s KILL 15 \"$DLPCTL\" store restore '" + m_dir.Path("backup.db") +
                                         "' & sleep 0.5; pkill -TERM -P $!; wait $!");
    EXPECT_EQ(run.iCode, 143);
    EXPECT_EQ(run.strErr, "dlpctl: interrupted\n");
    pWriter->Rollback();
}

TEST_F(Program, ThereIsNoColourOrProgressWithoutATerminal) {
    const SToolRun run = CProgram::Shell("\"$DLPCTL\" nope");
    EXPECT_EQ(run.strErr, "dlpctl: there is no command \"nope\"; dlpctl --help lists the commands\n");
}

TEST_F(Program, OnATerminalErrorsAreRedUnlessNoColorIsSet) {
    if (CProgram::Shell("command -v script").iCode != 0) {
        GTEST_SKIP() << "script(1) is not there to make a terminal";
    }
    const auto fnOnTerminal = [](const std::string& strCommand) {
        return CProgram::Shell("script -qec '" + strCommand + "' /dev/null").strOut;
    };
    EXPECT_EQ(fnOnTerminal("\"$DLPCTL\" nope"),
              "dlpctl: \x1b[31mthere is no command \"nope\"; dlpctl --help lists the commands\x1b[0m\r\n");
    EXPECT_EQ(fnOnTerminal("NO_COLOR=1 \"$DLPCTL\" nope"),
              "dlpctl: there is no command \"nope\"; dlpctl --help lists the commands\r\n");
}

TEST_F(Program, NoFileTakesThePlaceOfAClosedStream) {
    Import(Documents::Small());
    const std::string strLog = m_dir.Path("stream.log");
    const SToolRun run =
        CProgram::Shell("\"$DLPCTL\" --log '" + strLog + "' --store " + Url("store.db") + " export --all >&-; echo $?");
    EXPECT_EQ(run.strOut, "4\n");
    EXPECT_EQ(run.strErr, "dlpctl: cannot write standard output: Bad file descriptor\n");
    EXPECT_EQ(m_dir.Read("stream.log").find("<?xml version=\"1.0\" encoding=\"UTF-8\"?><SAPolicy"), std::string::npos);
}
