#include "platform/system/Synchronise.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "tests/support/TempDir.h"

namespace {

TEST(Synchronise, SaysWhatTheSystemSaysAgainstIt) {
    const CTempDir folder;
    folder.Write("file", "text");
    EXPECT_EQ(0, SYS::Synchronise(folder.Path("file")));
    EXPECT_EQ(ENOENT, SYS::Synchronise(folder.Path("none")));
    EXPECT_EQ(0, SYS::SynchroniseFolder(folder.Path()));
    EXPECT_EQ(0, SYS::SynchroniseFolder(""));
    EXPECT_EQ(ENOENT, SYS::SynchroniseFolder(folder.Path("none")));
}

TEST(Synchronise, FolderWhoseFileSystemCannotIsNoFailure) {
    EXPECT_EQ(EINVAL, SYS::Synchronise("/proc"));
    EXPECT_EQ(0, SYS::SynchroniseFolder("/proc"));
}

}  // namespace
