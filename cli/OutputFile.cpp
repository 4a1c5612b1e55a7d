#include "cli/OutputFile.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/FileIdentity.h"
#include "cli/Signals.h"
#include "cli/Verdict.h"
#include "platform/system/FileOwner.h"
#include "platform/system/Synchronise.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t KEPT_STEP = 1 << 20;
constexpr const char TEMPORARY[] = ".XXXXXX";
constexpr const char SHORT_NAME[] = ".dlpctl";
constexpr mode_t NEW_FILE_MODE = 0666;
constexpr const char UNSURE[] = " is written, but a power cut may undo that: ";
constexpr const char FOREIGN_LINK[] = ": another user's link in a folder where everybody may write is not followed";

/** @return a name beside the target, hidden, for mkostemp: after the target's, where that leaves room for more */
std::string MakeTemplate(const fs::path& target) {
    const std::string strName = "." + target.filename().string();
    const bool bFits = strName.size() + std::strlen(TEMPORARY) <= NAME_MAX;
    return (target.parent_path() / ((bFits ? strName : SHORT_NAME) + TEMPORARY)).string();
}

/** Another user's link may lead anywhere. */
bool IsTrap(const fs::path& link) {
    struct stat status {};
    return ::lstat(link.c_str(), &status) == 0 && IsForeign(status, link.parent_path());
}

/** @return 0, or the number of the error */
int SetNewFileMode(int iFile) {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return ::fchmod(iFile, NEW_FILE_MODE & ~mask) == 0 ? 0 : errno;
}

/** @param target behind all links */
bool IsRegularOrNone(const fs::path& target) {
    std::error_code error;
    const fs::file_type eType = fs::status(target, error).type();
    return GetDescriptor(target) < 0 && (eType == fs::file_type::regular || eType == fs::file_type::not_found);
}

}  // namespace

void ThrowOutputError(const std::string& strName, int iError) {
    throw CToolError(
        EVerdict::OUTPUT,
        iError == EPIPE ? std::string() : "cannot write " + strName + ": " + std::generic_category().message(iError));
}

COutputFile::COutputFile(std::string strName) : m_strName(std::move(strName)) {}

// Once the other constructor has run, the destructor cleans up whatever this one began.
COutputFile::COutputFile(const std::string& strPath, std::string strName) : COutputFile(std::move(strName)) {
    m_strTarget = FindTarget(strPath, m_strName);
    struct stat status {};
    if (GetDescriptor(m_strTarget) < 0 && ::stat(m_strTarget.c_str(), &status) == 0 &&
        IsForeign(status, fs::path(m_strTarget).parent_path())) {
        throw CToolError(EVerdict::OUTPUT, "cannot write " + m_strName + FOREIGN_FILE);
    }
    if (const int iDescriptor = GetDescriptor(m_strTarget); iDescriptor >= 0) {
        m_iFile = ::fcntl(iDescriptor, F_DUPFD_CLOEXEC, 0);
    } else if (IsRegularOrNone(m_strTarget)) {
        OpenTemporary();
    } else {
        m_iFile = ::open(m_strTarget.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    }
    if (m_iFile < 0) {
        Fail(errno);
    }
}

bool COutputFile::IsReplaced(const std::string& strPath, const std::string& strName) {
    return IsRegularOrNone(FindTarget(strPath, strName));
}

std::string COutputFile::FindTarget(const std::string& strPath, const std::string& strName) {
    const fs::path target = FollowLinks(strPath, [&](const fs::path& link) {
        if (IsTrap(link)) {
            throw CToolError(EVerdict::OUTPUT, "cannot write " + strName + FOREIGN_LINK);
        }
    });
    return target.string();
}

COutputFile::~COutputFile() {
    if (m_iFile >= 0) {
        ::close(m_iFile);
    }
    if (!m_strTemporary.empty()) {
        ::unlink(m_strTemporary.c_str());
    }
}

void COutputFile::OpenTemporary() {
    struct stat old {};
    const bool bExists = ::stat(m_strTarget.c_str(), &old) == 0;
    if (bExists && ::faccessat(AT_FDCWD, m_strTarget.c_str(), W_OK, AT_EACCESS) != 0) {
        Fail(errno);
    }
    std::string strTemplate = MakeTemplate(m_strTarget);
    m_iFile = ::mkostemp(strTemplate.data(), O_CLOEXEC);
    if (m_iFile < 0) {
        Fail(errno);
    }
    m_strTemporary = strTemplate;
    if (const int iError = bExists ? SYS::TakeOwner(m_iFile, m_strTarget, old) : SetNewFileMode(m_iFile); iError != 0) {
        Fail(iError);
    }
}

void COutputFile::Write(std::string_view strText) {
    while (!strText.empty()) {
        const ssize_t iWritten = ::write(m_iFile, strText.data(), strText.size());
        if (iWritten >= 0) {
            strText.remove_prefix(static_cast<std::size_t>(iWritten));
            BeginToKeep(iWritten);
        } else if (errno == EINTR) {
            Signals::ThrowIfCaught();
        } else {
            Fail(errno);
        }
    }
}

/** The disk takes what was written while the rest is made; what it tells only later, the end of the file waits for. */
void COutputFile::BeginToKeep(std::int64_t iWritten) {
    m_iWritten += iWritten;
    if (m_strTemporary.empty() || m_iWritten - m_iBegun < KEPT_STEP) {
        return;
    }
    const int iResult = ::sync_file_range(m_iFile, m_iBegun, m_iWritten - m_iBegun, SYNC_FILE_RANGE_WRITE);
    if (iResult != 0 && (errno == EIO || errno == ENOSPC || errno == EDQUOT)) {
        Fail(errno);
    }
    m_iBegun = m_iWritten;
}

void COutputFile::Commit() {
    if (m_strTemporary.empty()) {
        if (::close(std::exchange(m_iFile, -1)) != 0) {
            Fail(errno);
        }
        return;
    }
    const std::string strFolder = fs::path(m_strTarget).parent_path().string();
    if (::fsync(m_iFile) != 0 || ::close(std::exchange(m_iFile, -1)) != 0 ||
        std::rename(m_strTemporary.c_str(), m_strTarget.c_str()) != 0) {
        Fail(errno);
    }
    m_strTemporary.clear();
    if (const int iError = SYS::SynchroniseFolder(strFolder); iError != 0) {
        throw CToolError(EVerdict::OUTPUT, m_strName + UNSURE + std::generic_category().message(iError));
    }
}

void COutputFile::Fail(int iError) const {
    Signals::ThrowIfCaught();
    ThrowOutputError(m_strName, iError);
}
