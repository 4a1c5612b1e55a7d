#include "platform/store/CTemporaryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>

#include "platform/store/CSqliteStore.h"
#include "platform/store/SqliteFile.h"
#include "platform/store/StoreError.h"
#include "platform/system/Synchronise.h"

namespace {

namespace fs = std::filesystem;

constexpr char TEMPORARY[] = ".new-";
constexpr char PATTERN[] = "XXXXXX";
constexpr int MOST_TRIES = 5;
constexpr mode_t MODE_BITS = 0777;
constexpr mode_t GROUP_BITS = 0070;

bool IsGone(const std::string& strPath) {
    return ::unlink(strPath.c_str()) == 0 || errno == ENOENT;
}

/** The maker's note comes last: what it tells of is gone by then. */
std::vector<std::string> SideFilesOf(const std::string& strPath) {
    std::vector<std::string> vecPaths;
    for (const char* pSideFile : SqliteSuffix::ALL) {
        vecPaths.push_back(strPath + pSideFile);
    }
    return vecPaths;
}

/** @return the files on their way to become the target that have a note beside them */
std::vector<std::string> FindNoted(const std::string& strTarget) {
    std::vector<std::string> vecPaths;
    const std::string strStart = strTarget + TEMPORARY;
    const std::size_t iSize = strStart.size() + sizeof(PATTERN) - 1;
    for (const auto& entry : fs::directory_iterator(fs::path(strTarget).parent_path())) {
        const std::string strPath = entry.path().string();
        if (strPath.compare(0, strStart.size(), strStart) == 0 && strPath.size() > iSize &&
            strPath.compare(iSize, std::string::npos, SqliteSuffix::MAKER_NOTE) == 0) {
            vecPaths.push_back(strPath.substr(0, iSize));
        }
    }
    return vecPaths;
}

/** A folder that may not be read keeps what is left. */
void RemoveLeft(const std::string& strTarget) {
    try {
        for (const std::string& strPath : FindNoted(strTarget)) {
            CWriterNote note(strPath, SqliteSuffix::MAKER_NOTE);
            note.TakeOver();
            if (!note.IsLeft()) {
                continue;  // its maker lives, or nobody says that one has made it
            }
            ::unlink(strPath.c_str());
            for (const std::string& strSideFile : SideFilesOf(strPath)) {
                ::unlink(strSideFile.c_str());
            }
        }
    } catch (const std::exception&) {
        // The next one removes it.
    }
}

}  // namespace

/** From here on what was made is removed, also when the making fails. */
CTemporaryFile::CTemporaryFile(const std::string& strTarget, const char* pDoing) : CTemporaryFile(pDoing) {
    RemoveLeft(strTarget);
    Make(strTarget);
}

/**
 * Whoever removes what is left may have come between the file and its note. While others hold the note they may be
 * about to remove the file.
 */
void CTemporaryFile::Make(const std::string& strTarget) {
    for (int iTries = 0; iTries < MOST_TRIES; ++iTries) {
        m_strPath = strTarget + TEMPORARY + PATTERN;
        m_vecSideFiles = SideFilesOf(m_strPath);
        const int iFile = ::mkostemp(m_strPath.data(), O_CLOEXEC);
        if (iFile < 0) {
            const int iError = errno;
            m_strPath.clear();
            m_vecSideFiles.clear();
            ThrowSystemError(strTarget, m_pDoing, iError);
        }
        ::close(iFile);
        for (std::string& strSideFile : m_vecSideFiles) {
            strSideFile.replace(0, m_strPath.size(), m_strPath);  // of the same length: without a request for memory
        }
        m_optNote.emplace(m_strPath, SqliteSuffix::MAKER_NOTE);
        m_optNote->Leave();
        const bool bOthers = !m_optNote->IsLeft() && m_optNote->IsHeld();
        if (!bOthers && ::access(m_strPath.c_str(), F_OK) == 0) {
            return;
        }
        Remove();
    }
    ThrowBusy(CSqliteStore::SCHEME + strTarget, m_pDoing, {}, EBUSY);
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
