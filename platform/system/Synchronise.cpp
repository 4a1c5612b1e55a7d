#include "platform/system/Synchronise.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace {

constexpr int MOST_TRIES = 10;
constexpr int IMPOSSIBLE[] = {EACCES, EPERM, EINVAL, EROFS, ENOTSUP};

/** Beyond that many interruptions somebody keeps it from being done. */
template <class Work>
int TryAgain(Work&& fnWork) {
    int iError = fnWork();
    for (int iTries = 1; iError == EINTR && iTries < MOST_TRIES; ++iTries) {
        iError = fnWork();
    }
    return iError;
}

int TryFolder(const char* pPath) {
    const int iFolder = ::open(pPath, O_RDONLY | O_CLOEXEC);
    if (iFolder < 0) {
        return errno;
    }
    const int iError = ::fsync(iFolder) == 0 ? 0 : errno;
    ::close(iFolder);
    return iError;
}

}  // namespace

int SYS::Synchronise(int iFile) {
    return TryAgain([&] { return ::fsync(iFile) == 0 ? 0 : errno; });
}

/** Without a request for memory: it comes after what it makes last. */
int SYS::SynchroniseFolder(const std::string& strFolder) {
    const int iError = TryAgain([&] { return TryFolder(strFolder.empty() ? "." : strFolder.c_str()); });
    const bool bImpossible = std::find(std::begin(IMPOSSIBLE), std::end(IMPOSSIBLE), iError) != std::end(IMPOSSIBLE);
    return bImpossible ? 0 : iError;
}
