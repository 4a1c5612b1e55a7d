#pragma once

#include <sys/stat.h>

#include <string>

#include "platform/common/PlatformExport.h"

namespace SYS {

/**
 * Gives a file that is to take another one's place that one's owner, group and permissions, as far as this user may
 * give it away: at least its group. Where the group stays another one, that one may do nothing with the file, since
 * those in it may never have had a right to what it holds. So it is, too, where the former file has an access list
 * (ACL) that cannot be kept. What the former file ran as (set-user-ID and the like) is not taken over.
 * @param iFile open, and nobody's but its owner's until now
 * @param strFormer the former file's path, with all links followed, and its status
 * @return 0, or the number of the error when the permissions cannot be set
 */
DLP_PLATFORM_API int TakeOwner(int iFile, const std::string& strFormer, const struct stat& former);

}  // namespace SYS
