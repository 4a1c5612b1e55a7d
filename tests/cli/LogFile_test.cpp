#include "cli/LogFile.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <ctime>

#include <regex>
#include <sstream>

#include <sys/stat.h>
#include <unistd.h>

#include "platform/logging/DebugLog.h"
#include "tests/cli/ToolRun.h"

namespace {

using LogFile = CToolTest;

constexpr const char LOG_SOURCE[] = ".\\LogFile_test.cpp";

std::vector<std::string> Lines(const std::string& strText) {
    std::istringstream stream(strText);
    std::vector<std::string> vecLines;
    for (std::string strLine; std::getline(stream, strLine);) {
        vecLines.push_back(strLine);
    }
    return vecLines;
}

/** @return the words for the levels of the lines */
std::string Levels(const std::string& strLog) {
    std::string strLevels;
    for (const std::string& strLine : Lines(strLog)) {
        const std::size_t iStart = strLine.find(' ') + 1;
        strLevels += strLine.substr(iStart, strLine.find(' ', iStart) - iStart) + ' ';
    }
    return strLevels;
}

void LogAtEveryLevel() {
    DLP_LOG(DBG::LEVEL_INFO, L"1");
    DLP_LOG(DBG::LEVEL_ENTER, L"2");
    DLP_LOG(DBG::LEVEL_LEAVE, L"3");
    DLP_LOG(DBG::LEVEL_CONTENT, L"4");
    DLP_LOG(DBG::LEVEL_ERROR, L"5");
    DLP_LOG(DBG::LEVEL_FAILURE, L"6");
}

}  // namespace

TEST_F(LogFile, ALineHasTimeLevelSourceAndTheEscapedMessage) {
    std::ostringstream err;
    {
        const CLogFile log("", "", err);
        DLP_LOG(DBG::LEVEL_FAILURE, L"name %s", std::wstring(L"a\nb \x1b é"));
    }
    DLP_LOG(DBG::LEVEL_FAILURE, L"nobody listens any more");
    const std::regex pattern(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z failure 0x1004 \.\\LogFile_test\.cpp:\d+ )"
                             R"(name a\\u000Ab \\u001B é\n)");
    EXPECT_TRUE(std::regex_match(err.str(), pattern)) << err.str();
}

TEST_F(LogFile, TheTimeIsUtc) {
    ::setenv("TZ", "Pacific/Kiritimati", 1);  // fourteen hours ahead
    ::tzset();
    std::ostringstream err;
    const std::time_t now = std::time(nullptr);
    {
        const CLogFile log("", "", err);
        DLP_LOG(DBG::LEVEL_INFO, L"now");
    }
    char aHour[20];
    std::tm utc{};
    std::strftime(aHour, sizeof(aHour), "%Y-%m-%dT%H:", ::gmtime_r(&now, &utc));
    EXPECT_EQ(err.str().substr(0, 14), aHour);
}

TEST_F(LogFile, LevelsAreChosenByName) {
    const std::pair<const char*, const char*> aChoices[] = {
        {"", "info content error failure "},
        {"all", "info enter leave content error failure "},
        {"enter,leave", "enter leave "},
        {"failure", "failure "},
        {"info,all", "info enter leave content error failure "},
    };
    for (const auto& [pNames, pLevels] : aChoices) {
        std::ostringstream err;
        {
            const CLogFile log("", pNames, err);
            LogAtEveryLevel();
        }
        EXPECT_EQ(Levels(err.str()), pLevels);
    }
}

TEST_F(LogFile, TheToolAppendsToAFile) {
    const std::string strLog = m_dir.Path("log");
    EXPECT_EQ(Run({"--log", strLog, "import", "-"}, "<a/>").iCode, 2);
    const std::vector<std::string> vecFirst = Lines(m_dir.Read("log"));
    ASSERT_EQ(vecFirst.size(), 1U);
    EXPECT_NE(vecFirst[0].find(" failure 0x1004 .\\DLPTemplateMgr.cpp:"), std::string::npos) << vecFirst[0];
    EXPECT_EQ(Run({"--log", strLog, "import", "-"}, "<a/>").iCode, 2);
    EXPECT_EQ(Lines(m_dir.Read("log")).size(), 2U);
}

TEST_F(LogFile, IsItsOwnersAlone) {
    namespace fs = std::filesystem;
    const std::string strLog = m_dir.Path("log");
    ASSERT_EQ(Run({"--log", strLog, "list", "templates"}).iCode, 0);
    EXPECT_EQ(fs::status(strLog).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    fs::permissions(strLog, fs::perms::others_read, fs::perm_options::add);
    ASSERT_EQ(Run({"--log", strLog, "list", "templates"}).iCode, 0);
    EXPECT_NE(fs::status(strLog).permissions() & fs::perms::others_read, fs::perms::none);
}

TEST_F(LogFile, WhatALinkNamesIsMadeItsOwnersAlone) {
    namespace fs = std::filesystem;
    fs::create_symlink("target", m_dir.Path("log"));
    ASSERT_EQ(Run({"--log", m_dir.Path("log"), "list", "templates"}).iCode, 0);
    EXPECT_TRUE(fs::is_symlink(m_dir.Path("log")));
    EXPECT_EQ(fs::status(m_dir.Path("target")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(LogFile, AnotherUsersLinkWhereEverybodyMayWriteIsNoWay) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make another user's link";
    }
    m_dir.Write("victim", "kept");
    const std::string strLink = m_dir.MakeFolder("open") + "/log";
    std::filesystem::create_symlink("../victim", strLink);
    ASSERT_EQ(0, ::lchown(strLink.c_str(), 65534, 65534));
    ASSERT_EQ(0, ::chmod(m_dir.Path("open").c_str(), 01777));
    const SToolRun run = Run({"--log", strLink, "--log-level", "all", "import", "-"}, Documents::Small());
    EXPECT_EQ(run.iCode, 3);
    EXPECT_EQ(run.strErr, "dlpctl: --log: cannot write " + strLink +
                              ": another user's link in a folder where everybody may write is not followed\n");
    EXPECT_EQ(m_dir.Read("victim"), "kept");
}

TEST_F(LogFile, AnotherUsersFileWhereEverybodyMayWriteIsGivenNothing) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make another user's file";
    }
    const std::string strLog = m_dir.Write("open/log", "");
    ASSERT_EQ(0, ::chown(strLog.c_str(), 65534, 65534));
    ASSERT_EQ(0, ::chmod(m_dir.Path("open").c_str(), 01777));
    std::filesystem::create_symlink("open/log", m_dir.Path("link"));
    for (const std::string& strPath : {strLog, m_dir.Path("link")}) {
        const SToolRun run = Run({"--log", strPath, "--log-level", "all", "import", "-"}, Documents::Small());
        EXPECT_EQ(run.iCode, 3);
        EXPECT_EQ(run.strErr, "dlpctl: --log: cannot write " + strPath +
                                  ": another user's file in a folder where everybody may write is given nothing\n");
    }
    EXPECT_EQ(m_dir.Read("open/log"), "");
    ASSERT_EQ(0, ::chown(strLog.c_str(), 0, 0));
    ASSERT_EQ(0, ::chmod(strLog.c_str(), 0600));
    EXPECT_EQ(Run({"-q", "--log", strLog, "list", "templates"}).strErr, "");
}

TEST_F(LogFile, ThatOthersReadIsWarnedOf) {
    const std::string strLog = m_dir.Write("log", "");
    const struct {
        mode_t mode;
        const char* pWhat;
    } aOpen[] = {{0604, "read"}, {0606, "change"}, {0602, "change"}};
    for (const auto& open : aOpen) {
        ASSERT_EQ(0, ::chmod(strLog.c_str(), open.mode));
        const SToolRun run = Run({"-q", "--log", strLog, "list", "templates"});
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.strErr, std::string("dlpctl: warning: everybody may ") + open.pWhat +
                                  " the log; take that away: chmod o= " + strLog + '\n');
    }
    ASSERT_EQ(0, ::chmod(strLog.c_str(), 0660));
    EXPECT_EQ(Run({"-q", "--log", strLog, "list", "templates"}).strErr, "");
    EXPECT_EQ(Run({"-q", "--log", "/dev/null", "list", "templates"}).strErr, "");
}

TEST_F(LogFile, ThatBelongsToAnotherUserIsWarnedOf) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make another user's file";
    }
    const std::string strLog = m_dir.Write("log", "");
    ASSERT_EQ(0, ::chmod(strLog.c_str(), 0600));
    ASSERT_EQ(0, ::chown(strLog.c_str(), 65534, 65534));
    const SToolRun run = Run({"-q", "--log", strLog, "list", "templates"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strErr, "dlpctl: warning: the log belongs to another user, who may read it; name another file than " +
                              strLog + '\n');
}

TEST_F(LogFile, ThatCannotBeOpenedIsSaidWithItsReason) {
    const SToolRun run = Run({"--log", m_dir.MakeFolder("folder"), "list", "templates"});
    EXPECT_EQ(run.iCode, 3);
    EXPECT_EQ(run.strErr, "dlpctl: --log: cannot write " + m_dir.Path("folder") + ": Is a directory\n");
    std::filesystem::create_symlink("loop", m_dir.Path("loop"));
    EXPECT_EQ(Run({"--log", m_dir.Path("loop"), "list", "templates"}).strErr,
              "dlpctl: --log: cannot write " + m_dir.Path("loop") + ": Too many levels of symbolic links\n");
}

TEST_F(LogFile, AnOpenDescriptorIsWrittenWhereItStands) {
    const SToolRun run = CProgram::Shell("{ echo begin; \"$DLPCTL\" --log /dev/fd/9 --log-level leave import - <'" +
                                         m_dir.Write("none.xml", "<a/>") + "' 9>&1 2>/dev/null; echo end; } >'" +
                                         m_dir.Path("log") + "'; cat '" + m_dir.Path("log") + "'");
    const std::vector<std::string> vecLines = Lines(run.strOut);
    ASSERT_EQ(vecLines.size(), 3U) << run.strOut;
    EXPECT_EQ(vecLines[0], "begin");
    EXPECT_NE(vecLines[1].find(" leave 0x111 "), std::string::npos);
    EXPECT_EQ(vecLines[2], "end");
}

TEST_F(LogFile, HasAFileOfItsOwn) {
    m_dir.Write("policy.xml", Documents::Small());
    const std::string strPolicy = m_dir.Path("policy.xml");
    ASSERT_EQ(0, ::chmod(strPolicy.c_str(), 0600));
    ASSERT_EQ(RunOn(Url("own.db"), {"import", strPolicy}).iCode, 0);
    const std::string strStore = m_dir.Path("own.db");
    const std::string strBytes = m_dir.Read("own.db");
    const struct {
        std::vector<std::string> vecArguments;
        std::string strMessage;
    } aRefused[] = {
        {{"--log", strStore, "list", "templates"}, "--log: " + strStore + " is a store"},
        {{"--log", m_dir.Path("new.db"), "--store", Url("new.db"), "list", "templates"},
         "--log: " + m_dir.Path("new.db") + " is a store"},
        {{"--log", strPolicy, "import", strPolicy},
         strPolicy + ": --log: " + strPolicy +
             " has another use in this command; name another file; nothing was written"},
        {{"--log", strPolicy, "export", "--all", "-q", "-o", strPolicy},
         "--log: " + strPolicy + " has another use in this command; name another file"},
        {{"--log", m_dir.Path("no/log"), "list", "templates"},
         "--log: the folder of " + m_dir.Path("no/log") + " does not exist; make it first"},
    };
    for (const auto& refused : aRefused) {
        const SToolRun run = Run(refused.vecArguments);
        EXPECT_EQ(run.iCode, 3);
        EXPECT_EQ(run.strErr, "dlpctl: " + refused.strMessage + '\n');
    }
    EXPECT_EQ(m_dir.Read("own.db"), strBytes);
    EXPECT_EQ(m_dir.Read("policy.xml").substr(0, Documents::Small().size()), Documents::Small());
}

TEST_F(LogFile, ADashIsStandardError) {
    const SToolRun run = Run({"--log", "-", "--log-level", "leave", "import", "-"}, "<a/>");
    const std::vector<std::string> vecLines = Lines(run.strErr);
    ASSERT_EQ(vecLines.size(), 2U) << run.strErr;
    EXPECT_NE(vecLines[0].find(" leave 0x111 "), std::string::npos);
    EXPECT_EQ(vecLines[1].find("dlpctl: -:1:1: no policy"), 0U);
}

TEST_F(LogFile, ALevelAloneGoesToStandardError) {
    EXPECT_EQ(Lines(Run({"--log-level", "leave", "import", "-"}, "<a/>").strErr).size(), 2U);
}

TEST_F(LogFile, ThatCannotBeWrittenIsSaidOnceAndStopsNothing) {
    const SToolRun run = Run({"-q", "--log", "/dev/full", "--log-level", "all", "import", "-"}, Documents::Small());
    EXPECT_EQ(run.iCode, 0);
    const std::vector<std::string> vecLines = Lines(run.strErr);
    ASSERT_EQ(vecLines.size(), 1U) << run.strErr;
    EXPECT_EQ(vecLines[0].find("dlpctl: the log cannot be written: "), 0U) << run.strErr;
    EXPECT_NE(vecLines[0].find("No space left on device"), std::string::npos) << run.strErr;
}
