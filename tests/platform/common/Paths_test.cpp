#include "platform/common/Paths.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "tests/support/TempDir.h"

using NS_StringUtils::concatPath;

namespace {

std::string ErrorOf(const std::string& strPath) {
    try {
        OS::ReadWholeFile(strPath);
    } catch (const OS::CException& exception) {
        return exception.what();
    }
    return "";
}

}  // namespace

TEST(ConcatPath, PutsExactlyOneSeparator) {
    EXPECT_EQ(concatPath(L"/opt/dlp", L"config\\a.xml"), L"/opt/dlp/config\\a.xml");
    EXPECT_EQ(concatPath(L"/opt/dlp/", L"a.xml"), L"/opt/dlp/a.xml");
    EXPECT_EQ(concatPath(L"/opt/dlp", L"/a.xml"), L"/opt/dlp/a.xml");
    EXPECT_EQ(concatPath(L"/opt/dlp//", L"\\a.xml"), L"/opt/dlp/a.xml");
    EXPECT_EQ(concatPath(L"dlp\\", L"a.xml"), L"dlp/a.xml");
    EXPECT_EQ(concatPath(L"/", L"a.xml"), L"/a.xml");
}

TEST(ConcatPath, EmptyPartAddsNoSeparator) {
    EXPECT_EQ(concatPath(L"", L"a.xml"), L"a.xml");
    EXPECT_EQ(concatPath(L"/opt/dlp", L""), L"/opt/dlp");
    EXPECT_EQ(concatPath(L"", L""), L"");
}

TEST(ResolvePath, PathAsGivenWins) {
    const CTempDir folder;
    folder.Write("config\\a.xml", "as given");
    folder.Write("config/a.xml", "with slashes");
    EXPECT_EQ(OS::ResolvePath(folder.Path("config\\a.xml")), folder.Path("config\\a.xml"));
    EXPECT_EQ(OS::ReadWholeFile(folder.Path("config\\a.xml")), "as given");
}

TEST(ResolvePath, BackslashesBecomeSlashesWhenNothingStandsThere) {
    const CTempDir folder;
    folder.Write("config/sub/a.xml", "with slashes");
    EXPECT_EQ(OS::ResolvePath(folder.Path("config\\sub\\a.xml")), folder.Path("config/sub/a.xml"));
    EXPECT_EQ(OS::ReadWholeFile(folder.Path("config\\sub\\a.xml")), "with slashes");
}

TEST(ResolvePath, PathStaysWhenNeitherExists) {
    const CTempDir folder;
    EXPECT_EQ(OS::ResolvePath(folder.Path("config\\a.xml")), folder.Path("config\\a.xml"));
}

TEST(ReadWholeFile, GivesEveryByte) {
    const CTempDir folder;
    std::string strBytes;
    for (int i = 0; i < 300000; ++i) {
        strBytes += static_cast<char>(i * 7);
    }
    EXPECT_TRUE(OS::ReadWholeFile(folder.Write("bytes", strBytes)) == strBytes);
    EXPECT_EQ(OS::ReadWholeFile(folder.Write("empty", "")), "");
    EXPECT_EQ(OS::ReadWholeFile(folder.Write("\xC3\xBC.xml", "name in UTF-8")), "name in UTF-8");
}

TEST(ReadWholeFile, ReadsWhatHasNoSizeBeforehand) {
    EXPECT_NE(OS::ReadWholeFile("/proc/self/status").find("\nPid:\t" + std::to_string(::getpid()) + "\n"),
              std::string::npos);
    EXPECT_EQ(OS::ReadWholeFile("/dev/null"), "");

    int aPipe[2];
    ASSERT_EQ(::pipe(aPipe), 0);
    ASSERT_EQ(::write(aPipe[1], "through a pipe", 14), 14);
    ::close(aPipe[1]);
    EXPECT_EQ(OS::ReadWholeFile("/proc/self/fd/" + std::to_string(aPipe[0])), "through a pipe");
    ::close(aPipe[0]);
}

TEST(ReadWholeFile, MissingFileIsNamedWithTheReason) {
    const CTempDir folder;
    EXPECT_EQ(ErrorOf(folder.Path("none.xml")),
              "cannot read " + folder.Path("none.xml") + ": No such file or directory");
    EXPECT_EQ(ErrorOf(""), "cannot read : No such file or directory");
}

TEST(ReadWholeFile, DirectoryIsNoFile) {
    const CTempDir folder;
    EXPECT_EQ(ErrorOf(folder.Path()), "cannot read " + folder.Path() + ": Is a directory");
}

TEST(ReadWholeFile, UnreadableFileIsNamedWithTheReason) {
    EXPECT_EQ(ErrorOf("/proc/self/mem"), "cannot read /proc/self/mem: Input/output error");
}

TEST(ReadWholeFile, FileThatEndsBeforeItsSizeIsRefused) {
    // The kernel states a page for these and gives less.
    const std::string strPath = "/sys/kernel/mm/transparent_hugepage/enabled";
    std::error_code error;
    if (std::filesystem::file_size(strPath, error) != 4096) {
        GTEST_SKIP() << "no file of that kind here";
    }
    EXPECT_EQ(ErrorOf(strPath).rfind("cannot read " + strPath + ": it ended after ", 0), 0U) << ErrorOf(strPath);
}

TEST(ReadWholeFile, ZeroByteDoesNotCutThePath) {
    const CTempDir folder;
    const std::string strPath = folder.Write("a.xml", "x");
    EXPECT_NE(ErrorOf(strPath + std::string("\0b", 2)), "");
}
