#include "platform/system/FileOwner.h"

#include <unistd.h>

#include <cerrno>

namespace {

constexpr mode_t MODE_BITS = 0777;
constexpr mode_t GROUP_BITS = 0070;
constexpr auto SAME_USER = static_cast<uid_t>(-1);

}  // namespace

int SYS::TakeOwner(int iFile, const struct stat& former) {
    const bool bGroup =
        ::fchown(iFile, former.st_uid, former.st_gid) == 0 || ::fchown(iFile, SAME_USER, former.st_gid) == 0;
    const mode_t mode = former.st_mode & (bGroup ? MODE_BITS : MODE_BITS & ~GROUP_BITS);
    return ::fchmod(iFile, mode) == 0 ? 0 : errno;
}
