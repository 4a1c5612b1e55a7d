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

int TryAgain(const char* pPath) {
    int iError = Try(pPath);
    for (int iTries = 1; iError == EINTR && iTries < MOST_TRIES; ++iTries) {
        iError = Try(pPath);
    }
    return iError;
}

}  // namespace

int SYS::Synchronise(const std::string& strFile) {
    return TryAgain(strFile.c_str());
}

/** Without a request for memory: it comes after what it makes last. */
int SYS::SynchroniseFolder(const std::string& strFolder) {
    const int iError = TryAgain(strFolder.empty() ? "." : strFolder.c_str());
    const bool bImpossible = std::find(std::begin(IMPOSSIBLE), std::end(IMPOSSIBLE), iError) != std::end(IMPOSSIBLE);
    return bImpossible ? 0 : iError;
}
