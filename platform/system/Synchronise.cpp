#include "platform/system/Synchronise.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace {

constexpr int MOST_TRIES = 10;
constexpr int IMPOSSIBLE[] = {EACCES, EPERM, EINVAL, EROFS, ENOTSUP};

int Try(const char* pPath) {
    const int iFile = ::open(pPath, O_RDONLY | O_CLOEXEC);
    if (iFile < 0) {
        return errno;
    }
    const int iError = ::fsync(iFile) == 0 ? 0 : errno;
    ::close(iFile);
    return iError;
}

}  // namespace

int SYS::Synchronise(const std::string& strFile) {
    int iError = Try(strFile.c_str());
    for (int iTries = 1; iError == EINTR && iTries < MOST_TRIES; ++iTries) {
        iError = Try(strFile.c_str());
    }
    return iError;
}

int SYS::SynchroniseFolder(const std::string& strFolder) {
    const int iError = Synchronise(strFolder.empty() ? "." : strFolder);
    const bool bImpossible = std::find(std::begin(IMPOSSIBLE), std::end(IMPOSSIBLE), iError) != std::end(IMPOSSIBLE);
    return bImpossible ? 0 : iError;
}
