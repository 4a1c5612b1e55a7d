#include "platform/store/CTemporaryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <utility>

#include "platform/store/CSqliteStore.h"
#include "platform/store/SqliteFile.h"
#include "platform/store/StoreError.h"
#include "platform/system/FileOwner.h"
#include "platform/system/Synchronise.h"

namespace {

namespace fs = std::filesystem;

constexpr char TEMPORARY[] = ".new-";
constexpr char PATTERN[] = "XXXXXX";
constexpr int MOST_TRIES = 5;
constexpr char TAKEN[] = "somebody has removed or replaced the file that was to come into its place, ";

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

/**
 * A file system that cannot rename where nothing may be replaced is asked before, which leaves others a moment.
 * @return 0, or the number of the error
 */
int Rename(const char* pPath, const char* pTarget, bool bReplacing) {
    if (!bReplacing) {
        if (::renameat2(AT_FDCWD, pPath, AT_FDCWD, pTarget, RENAME_NOREPLACE) == 0) {
            return 0;
        }
        if (errno != EINVAL && errno != ENOSYS) {
            return errno;
        }
        struct stat status {};
        if (::lstat(pTarget, &status) == 0) {
            return EEXIST;
        }
    }
    return ::rename(pPath, pTarget) == 0 ? 0 : errno;
}

}  // namespace

/** From here on what was made is removed, also when the making fails. */
CTemporaryFile::CTemporaryFile(const std::string& strTarget, const char* pDoing) : CTemporaryFile(pDoing) {
    RemoveLeft(strTarget);
    Make(strTarget);
}

CTemporaryFile::~CTemporaryFile() {
    Close();
    Remove();
}

void CTemporaryFile::Close() {
    if (m_iFile >= 0) {
        ::close(std::exchange(m_iFile, -1));
    }
}

/**
 * Whoever removes what is left may have come between the file and its note. While others hold the note they may be
 * about to remove the file.
 */
void CTemporaryFile::Make(const std::string& strTarget) {
    for (int iTries = 0; iTries < MOST_TRIES; ++iTries) {
        m_strPath = strTarget + TEMPORARY + PATTERN;
        m_vecSideFiles = SideFilesOf(m_strPath);
        m_iFile = ::mkostemp(m_strPath.data(), O_CLOEXEC);
        if (m_iFile < 0) {
            const int iError = errno;
            m_strPath.clear();
            m_vecSideFiles.clear();
            ThrowSystemError(strTarget, m_pDoing, iError);
        }
        for (std::string& strSideFile : m_vecSideFiles) {
            strSideFile.replace(0, m_strPath.size(), m_strPath);  // of the same length: without a request for memory
        }
        m_optNote.emplace(m_strPath, SqliteSuffix::MAKER_NOTE);
        m_optNote->Leave();
        const bool bOthers = !m_optNote->IsLeft() && m_optNote->IsHeld();
        if (!bOthers && ::fstat(m_iFile, &m_status) == 0 && Look() == 0) {
            return;
        }
        Close();
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

/** @return 0, or the number of why the file is not known to be at its path; ENOENT when it is not there */
int CTemporaryFile::Look() const {
    struct stat status {};
    if (::lstat(m_strPath.c_str(), &status) != 0) {
        return errno;
    }
    return status.st_dev == m_status.st_dev && status.st_ino == m_status.st_ino ? 0 : ENOENT;
}

void CTemporaryFile::TakeOwner(const std::string& strFormer) const {
    struct stat status {};
    if (::lstat(strFormer.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
        SYS::TakeOwner(m_iFile, strFormer, status);  // where it cannot be given away it stays its maker's alone
    }
}

void CTemporaryFile::Keep(const std::string& strTarget) const {
    if (const int iError = SYS::Synchronise(m_iFile); iError != 0) {
        ThrowSystemError(strTarget, m_pDoing, iError);
    }
}

/** It is closed before it has its name: who opens it by that would lose their locks when this process closes it. */
bool CTemporaryFile::Become(const std::string& strTarget, bool bReplacing) {
    int iError = Look();
    Close();
    if (iError == 0) {
        iError = Rename(m_strPath.c_str(), strTarget.c_str(), bReplacing);
    }
    if (iError == ENOENT) {
        ThrowStoreError(CSqliteStore::SCHEME + strTarget, m_pDoing, TAKEN + m_strPath + "; " + StoreWritten::NOTHING,
                        iError);
    }
    if (iError != 0 && (bReplacing || iError != EEXIST)) {
        ThrowSystemError(strTarget, m_pDoing, iError);
    }
    return iError == 0;
}
