#include "platform/system/FileOwner.h"

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "tests/support/TempDir.h"

namespace {

constexpr char ACCESS_LIST[] = "system.posix_acl_access";

/** @return an entry of a list, as the system stores it */
std::string Entry(std::uint16_t iTag, std::uint16_t iRights, std::uint32_t iWho = UINT32_MAX) {
    std::string strEntry;
    for (const std::uint32_t iPart : {iTag | static_cast<std::uint32_t>(iRights) << 16, iWho}) {
        for (int iByte = 0; iByte < 4; ++iByte) {
            strEntry += static_cast<char>(iPart >> (8 * iByte) & 0xFF);
        }
    }
    return strEntry;
}

/** User 1003 may read and write, the group nothing. */
std::string SomeList() {
    return std::string("\x02\0\0\0", 4) + Entry(1, 6) + Entry(2, 6, 1003) + Entry(4, 0) + Entry(16, 6) + Entry(32, 0);
}

std::string ListOf(const std::string& strPath) {
    std::string strList(1000, '\0');
    const ssize_t iSize = ::getxattr(strPath.c_str(), ACCESS_LIST, strList.data(), strList.size());
    strList.resize(iSize > 0 ? static_cast<std::size_t>(iSize) : 0);
    return strList;
}

class FileOwner : public testing::Test {
  protected:
    FileOwner() {
        ::chmod(m_strFormer.c_str(), 0640);
        ::chmod(m_strNew.c_str(), 0600);
    }

    bool GiveList(const std::string& strPath, const char* pName = ACCESS_LIST) const {
        const std::string strList = SomeList();
        return ::setxattr(strPath.c_str(), pName, strList.data(), strList.size(), 0) == 0;
    }
    /** @return owner, group and mode of the new file */
    std::string Taken(const std::string& strNew) const {
        struct stat status {};
        EXPECT_EQ(0, ::stat(m_strFormer.c_str(), &status));
        const int iFile = ::open(strNew.c_str(), O_RDWR | O_CLOEXEC);
        EXPECT_EQ(0, SYS::TakeOwner(iFile, m_strFormer, status));
        EXPECT_EQ(0, ::fstat(iFile, &status));
        ::close(iFile);
        char aText[40];
        std::snprintf(aText, sizeof(aText), "%u:%u %04o", status.st_uid, status.st_gid, status.st_mode & 07777);
        return aText;
    }

    CTempDir m_folder;
    const std::string m_strFormer = m_folder.Write("former", "");
    const std::string m_strNew = m_folder.Write("new", "");
};

std::string Mine(const char* pMode) {
    return std::to_string(::geteuid()) + ':' + std::to_string(::getegid()) + ' ' + pMode;
}

TEST_F(FileOwner, AccessListIsTakenOver) {
    if (!GiveList(m_strFormer)) {
        GTEST_SKIP() << "the file system knows no access lists";
    }
    EXPECT_EQ(Mine("0660"), Taken(m_strNew));
    EXPECT_EQ(SomeList(), ListOf(m_strNew));
}

TEST_F(FileOwner, AccessListThatTheFolderHandsOnIsNot) {
    if (!GiveList(m_folder.Path(), "system.posix_acl_default")) {
        GTEST_SKIP() << "the file system knows no access lists";
    }
    const std::string strNew = m_folder.Write("handed", "");
    EXPECT_NE("", ListOf(strNew));
    EXPECT_EQ(Mine("0640"), Taken(strNew));
    EXPECT_EQ("", ListOf(strNew));
}

TEST_F(FileOwner, GroupMayDoNothingWhereTheAccessListCannotBeKept) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "takes a user who may become others";
    }
    ASSERT_EQ(0, ::chown(m_strFormer.c_str(), 1001, 2000));
    ASSERT_EQ(0, ::chown(m_strNew.c_str(), 1002, 1002));
    if (!GiveList(m_strFormer)) {
        GTEST_SKIP() << "the file system knows no access lists";
    }
    ::chmod(m_folder.Path().c_str(), 0755);
    ASSERT_EQ(0, ::setgroups(0, nullptr));
    ASSERT_EQ(0, ::setegid(1002));
    ASSERT_EQ(0, ::seteuid(1002));
    EXPECT_EQ("1002:1002 0600", Taken(m_strNew));
    EXPECT_EQ("", ListOf(m_strNew));
    ASSERT_EQ(0, ::seteuid(0));  // who removes the folder
    ASSERT_EQ(0, ::setegid(0));
}

}  // namespace
