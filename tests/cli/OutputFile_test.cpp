#include "cli/OutputFile.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/Verdict.h"
#include "tests/cli/Unprivileged.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;

void Write(const std::string& strPath, const std::string& strText) {
    COutputFile file(strPath, "FILE");
    file.Write(strText);
    file.Commit();
}

/** @return the message with which writing fails */
std::string Refusal(const std::string& strPath) {
    try {
        Write(strPath, "text");
    } catch (const CToolError& error) {
        EXPECT_EQ(error.GetVerdict(), EVerdict::OUTPUT);
        return error.what();
    }
    return "written";
}

std::size_t CountEntries(const std::string& strFolder) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(strFolder), fs::directory_iterator()));
}

mode_t GetMode(const std::string& strPath) {
    struct stat status {};
    ::stat(strPath.c_str(), &status);
    return status.st_mode & 07777;
}

/** While it lives, a test that runs as root is user 1002 of a group of that number and of these. */
class COtherUser {
  public:
    explicit COtherUser(const std::vector<gid_t>& vecGroups) {
        EXPECT_EQ(0, ::setgroups(vecGroups.size(), vecGroups.data()));
        EXPECT_EQ(0, ::setegid(1002));
        EXPECT_EQ(0, ::seteuid(1002));
    }
    COtherUser(const COtherUser&) = delete;
    COtherUser& operator=(const COtherUser&) = delete;
    ~COtherUser() {
        EXPECT_EQ(0, ::seteuid(0));
        EXPECT_EQ(0, ::setegid(0));
        EXPECT_EQ(0, ::setgroups(0, nullptr));
    }
};

/** @return owner, group and mode of a file of user 1001 and group 2000 once user 1002 has written it */
std::string Rewritten(const std::vector<gid_t>& vecGroups, mode_t mode) {
    const CTempDir dir;
    const std::string strPath = dir.Write("file", "old");
    EXPECT_EQ(0, ::chown(dir.Path().c_str(), 1002, 1002));
    EXPECT_EQ(0, ::chown(strPath.c_str(), 1001, 2000));
    ::chmod(strPath.c_str(), mode);
    {
        const COtherUser user(vecGroups);
        Write(strPath, "new");
    }
    EXPECT_EQ(dir.Read("file"), "new");
    struct stat status {};
    EXPECT_EQ(0, ::stat(strPath.c_str(), &status));
    char aText[40];
    std::snprintf(aText, sizeof(aText), "%u:%u %04o", status.st_uid, status.st_gid, status.st_mode & 07777);
    return aText;
}

}  // namespace

TEST(OutputFile, ANewFileGetsTheModeOfNewFiles) {
    const CTempDir dir;
    ::umask(027);
    Write(dir.Path("new"), "text");
    EXPECT_EQ(dir.Read("new"), "text");
    EXPECT_EQ(GetMode(dir.Path("new")), 0640U);
    EXPECT_EQ(CountEntries(dir.Path()), 1U);
}

TEST(OutputFile, ALongTextInPiecesOfAnySizeIsKeptAsItIs) {
    const CTempDir dir;
    std::string strWhole;
    {
        COutputFile file(dir.Path("long"), "FILE");
        for (std::size_t i = 0; strWhole.size() < 5000000; ++i) {
            const std::string strPiece(i * i % 700001, static_cast<char>('a' + i % 26));
            file.Write(strPiece);
            strWhole += strPiece;
        }
        file.Commit();
    }
    EXPECT_TRUE(dir.Read("long") == strWhole);
}

TEST(OutputFile, AnOldFileIsReplacedWholeAndKeepsItsMode) {
    const CTempDir dir;
    const std::string strPath = dir.Write("old", "a much longer text than the new one");
    ::chmod(strPath.c_str(), 0604);
    Write(strPath, "new");
    EXPECT_EQ(dir.Read("old"), "new");
    EXPECT_EQ(GetMode(strPath), 0604U);
    EXPECT_EQ(CountEntries(dir.Path()), 1U);
}

TEST(OutputFile, AFileOfAnotherUserKeepsItsGroup) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "takes a user who may become others";
    }
    EXPECT_EQ(Rewritten({2000}, 0660), "1002:2000 0660");
}

TEST(OutputFile, AnotherGroupThanTheOldFilesMayDoNothing) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "takes a user who may become others";
    }
    EXPECT_EQ(Rewritten({}, 0666), "1002:1002 0606");
}

TEST(OutputFile, AnotherUsersFileWhereEverybodyMayWriteIsGivenNothing) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make another user's file";
    }
    const CTempDir dir;
    const std::string strPath = dir.Write("open/file", "old");
    EXPECT_EQ(0, ::chown(strPath.c_str(), 65534, 65534));
    EXPECT_EQ(0, ::chmod(dir.Path("open").c_str(), 01777));
    EXPECT_EQ(Refusal(strPath),
              "cannot write FILE: another user's file in a folder where everybody may write is given nothing");
    EXPECT_EQ(dir.Read("open/file"), "old");
    EXPECT_EQ(0, ::chown(strPath.c_str(), ::geteuid(), ::getegid()));
    Write(strPath, "new");
    EXPECT_EQ(dir.Read("open/file"), "new");
}

TEST(OutputFile, WhatAnOldFileRanAsIsNotTakenOver) {
    const CTempDir dir;
    const std::string strPath = dir.Write("old", "old");
    ::chmod(strPath.c_str(), 06755);
    Write(strPath, "new");
    EXPECT_EQ(GetMode(strPath), 0755U);
}

TEST(OutputFile, WithoutCommitTheOldFileStaysAndNothingIsLeftBehind) {
    const CTempDir dir;
    const std::string strPath = dir.Write("old", "old");
    {
        COutputFile file(strPath, "FILE");
        file.Write("new");
        COutputFile other(dir.Path("other"), "FILE");
        other.Write("new");
    }
    EXPECT_EQ(dir.Read("old"), "old");
    EXPECT_EQ(CountEntries(dir.Path()), 1U);
}

TEST(OutputFile, ALinkStaysAndItsTargetIsReplaced) {
    const CTempDir dir;
    dir.Write("folder/target", "old");
    fs::create_symlink("folder/target", dir.Path("link"));
    fs::create_symlink("link", dir.Path("chain"));
    Write(dir.Path("chain"), "new");
    EXPECT_TRUE(fs::is_symlink(dir.Path("link")));
    EXPECT_TRUE(fs::is_symlink(dir.Path("chain")));
    EXPECT_EQ(dir.Read("folder/target"), "new");
    EXPECT_EQ(CountEntries(dir.Path("folder")), 1U);
}

TEST(OutputFile, AnotherUsersLinkWhereEverybodyMayWriteIsNoWay) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make another user's link";
    }
    const CTempDir dir;
    dir.Write("victim", "kept");
    const std::string strLink = dir.MakeFolder("open") + "/out.xml";
    fs::create_symlink("../victim", strLink);
    ASSERT_EQ(0, ::lchown(strLink.c_str(), 65534, 65534));
    EXPECT_EQ(Refusal(strLink), "written");
    dir.Write("victim", "kept");
    ASSERT_EQ(0, ::chmod(dir.Path("open").c_str(), 01777));
    EXPECT_EQ(Refusal(strLink),
              "cannot write FILE: another user's link in a folder where everybody may write is not followed");
    EXPECT_EQ(dir.Read("victim"), "kept");
}

TEST(OutputFile, ALinkIntoNothingMakesItsTarget) {
    const CTempDir dir;
    fs::create_symlink("target", dir.Path("link"));
    Write(dir.Path("link"), "new");
    EXPECT_TRUE(fs::is_symlink(dir.Path("link")));
    EXPECT_EQ(dir.Read("target"), "new");
}

TEST(OutputFile, DevicesAndPipesAreWrittenDirectly) {
    const CTempDir dir;
    Write("/dev/null", "text");
    const std::string strPipe = dir.Path("pipe");
    ASSERT_EQ(::mkfifo(strPipe.c_str(), 0600), 0);
    const int iReader = ::open(strPipe.c_str(), O_RDONLY | O_NONBLOCK);
    Write(strPipe, "text");
    char aRead[8] = {};
    EXPECT_EQ(::read(iReader, aRead, sizeof(aRead)), 4);
    EXPECT_STREQ(aRead, "text");
    EXPECT_TRUE(fs::is_fifo(strPipe));
    ::close(iReader);
}

TEST(OutputFile, AnOpenDescriptorIsWrittenWhereItStands) {
    const CTempDir dir;
    dir.Write("file", "begin ");
    const int iFile = ::open(dir.Path("file").c_str(), O_WRONLY | O_APPEND);
    Write("/dev/fd/" + std::to_string(iFile), "middle ");
    Write("/proc/self/fd/" + std::to_string(iFile), "end");
    ::close(iFile);
    EXPECT_EQ(dir.Read("file"), "begin middle end");
}

TEST(OutputFile, WhatCannotBeWrittenIsSaidWithItsReason) {
    const CTempDir dir;
    EXPECT_EQ(Refusal(dir.Path()), "cannot write FILE: Is a directory");
    EXPECT_EQ(Refusal(dir.Path("none/file")), "cannot write FILE: No such file or directory");
    EXPECT_EQ(Refusal(dir.Write("file", "") + "/file"), "cannot write FILE: Not a directory");
    EXPECT_EQ(Refusal("/dev/full"), "cannot write FILE: No space left on device");
    EXPECT_EQ(Refusal("/dev/fd/99"), "cannot write FILE: Bad file descriptor");
    fs::create_symlink("loop", dir.Path("loop"));
    EXPECT_EQ(Refusal(dir.Path("loop")), "cannot write FILE: Too many levels of symbolic links");
    EXPECT_EQ(CountEntries(dir.Path()), 2U);
}

TEST(OutputFile, ANameMayBeAsLongAsTheSystemTakesIt) {
    for (const std::size_t iLength : {247U, 248U, 249U, 255U}) {
        const CTempDir dir;
        const std::string strName(iLength, 'x');
        Write(dir.Path(strName), "text");
        EXPECT_EQ(dir.Read(strName), "text");
        EXPECT_EQ(CountEntries(dir.Path()), 1U) << iLength;
    }
    const CTempDir dir;
    EXPECT_EQ(Refusal(dir.Path(std::string(256, 'x'))), "cannot write FILE: File name too long");
    EXPECT_EQ(CountEntries(dir.Path()), 0U);
}

TEST(OutputFile, AFileThatMayNotBeWrittenIsNotReplaced) {
    const CTempDir dir;
    const std::string strPath = dir.Write("file", "old");
    ::chmod(dir.Path().c_str(), 0777);
    ::chmod(strPath.c_str(), 0444);
    {
        const CUnprivileged unprivileged;
        EXPECT_EQ(Refusal(strPath), "cannot write FILE: Permission denied");
    }
    EXPECT_EQ(dir.Read("file"), "old");
}
