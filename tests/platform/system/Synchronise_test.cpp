#include "platform/system/Synchronise.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "tests/support/TempDir.h"

namespace {

int SynchroniseAt(const std::string& strPath) {
    const int iFile = ::open(strPath.c_str(), O_RDONLY | O_CLOEXEC);
    const int iError = SYS::Synchronise(iFile);
    ::close(iFile);
    return iError;
}

TEST(Synchronise, SaysWhatTheSystemSaysAgainstIt) {
    const CTempDir folder;
    folder.Write("file", "text");
    EXPECT_EQ(0, SynchroniseAt(folder.Path("file")));
    EXPECT_EQ(EBADF, SynchroniseAt(folder.Path("none")));
    EXPECT_EQ(0, SYS::SynchroniseFolder(folder.Path()));
    EXPECT_EQ(0, SYS::SynchroniseFolder(""));
    EXPECT_EQ(ENOENT, SYS::SynchroniseFolder(folder.Path("none")));
}

TEST(Synchronise, FolderWhoseFileSystemCannotIsNoFailure) {
    EXPECT_EQ(EINVAL, SynchroniseAt("/proc"));
    EXPECT_EQ(0, SYS::SynchroniseFolder("/proc"));
}

}  // namespace
