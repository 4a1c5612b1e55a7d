#include "platform/system/FileOwner.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace {

constexpr mode_t MODE_BITS = 0777;
constexpr mode_t GROUP_BITS = 0070;
constexpr auto SAME_USER = static_cast<uid_t>(-1);
constexpr char ACCESS_LIST[] = "system.posix_acl_access";

/** @return the file's access list; nothing when it has none @param bHas whether it has one, which may be unreadable */
std::vector<char> ReadAccessList(const std::string& strPath, bool& bHas) {
    ssize_t iSize = ::lgetxattr(strPath.c_str(), ACCESS_LIST, nullptr, 0);
    bHas = iSize >= 0 || (errno != ENODATA && errno != ENOTSUP);
    std::vector<char> vecList(iSize > 0 ? static_cast<std::size_t>(iSize) : 0);
    iSize = vecList.empty() ? 0 : ::lgetxattr(strPath.c_str(), ACCESS_LIST, vecList.data(), vecList.size());
    vecList.resize(iSize > 0 ? static_cast<std::size_t>(iSize) : 0);
    return vecList;
}

}  // namespace

/** Where there is a list, the group's bits of the mode are the most that anybody in it may do, not what the group may.
 */
int SYS::TakeOwner(int iFile, const std::string& strFormer, const struct stat& former) {
    bool bList = false;
    const std::vector<char> vecList = ReadAccessList(strFormer, bList);
    const bool bGroup =
        ::fchown(iFile, former.st_uid, former.st_gid) == 0 || ::fchown(iFile, SAME_USER, former.st_gid) == 0;
    ::fremovexattr(iFile, ACCESS_LIST);  // what the folder hands on to new files
    const mode_t mode = former.st_mode & (bGroup && !bList ? MODE_BITS : MODE_BITS & ~GROUP_BITS);
    if (::fchmod(iFile, mode) != 0) {
        return errno;
    }
    if (bGroup && !vecList.empty()) {
        ::fsetxattr(iFile, ACCESS_LIST, vecList.data(), vecList.size(), 0);  // without it the group may do nothing
    }
    return 0;
}
