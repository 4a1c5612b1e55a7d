#include "platform/store/CTemporaryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "platform/store/SqliteFile.h"
#include "platform/store/StoreError.h"
#include "platform/system/Synchronise.h"

namespace {

constexpr char TEMPORARY[] = ".new-XXXXXX";
constexpr mode_t MODE_BITS = 0777;
constexpr mode_t GROUP_BITS = 0070;

bool IsGone(const std::string& strPath) {
    return ::unlink(strPath.c_str()) == 0 || errno == ENOENT;
}

}  // namespace

CTemporaryFile::CTemporaryFile(const std::string& strTarget, const char* pDoing)
    : m_pDoing(pDoing), m_strPath(strTarget + TEMPORARY) {
    for (const char* pSideFile : SqliteSuffix::ALL) {
        m_vecSideFiles.push_back(m_strPath + pSideFile);
    }
    const int iFile = ::mkostemp(m_strPath.data(), O_CLOEXEC);
    if (iFile < 0) {
        ThrowSystemError(strTarget, m_pDoing, errno);
    }
    ::close(iFile);
    for (std::string& strSideFile : m_vecSideFiles) {
        strSideFile.replace(0, m_strPath.size(), m_strPath);  // of the same length: without a request for memory
    }
}

bool CTemporaryFile::Remove() const {
    bool bGone = IsGone(m_strPath);
    for (const std::string& strSideFile : m_vecSideFiles) {
        bGone = IsGone(strSideFile) && bGone;
    }
    return bGone;
}

void CTemporaryFile::TakeOwner(const std::string& strFormer) const {
    struct stat status {};
    if (::stat(strFormer.c_str(), &status) == 0) {
        constexpr auto SAME_USER = static_cast<uid_t>(-1);
        const bool bGroup = ::chown(m_strPath.c_str(), status.st_uid, status.st_gid) == 0 ||
                            ::chown(m_strPath.c_str(), SAME_USER, status.st_gid) == 0;
        ::chmod(m_strPath.c_str(), status.st_mode & (bGroup ? MODE_BITS : MODE_BITS & ~GROUP_BITS));
    }
}

void CTemporaryFile::Become(const std::string& strTarget) const {
    int iError = SYS::Synchronise(m_strPath);
    if (iError == 0 && ::rename(m_strPath.c_str(), strTarget.c_str()) != 0) {
        iError = errno;
    }
    if (iError != 0) {
        ThrowSystemError(strTarget, m_pDoing, iError);
    }
}
