#include "platform/store/CWriterNote.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <climits>
#include <ctime>
#include <exception>

namespace {

constexpr mode_t OWN_MODE = 0600;
constexpr mode_t SHARED_BITS = 0666;
constexpr int TRIES = 10;
constexpr unsigned TRY_MICROSECONDS = 500;
constexpr off_t LONGEST_NOTE = 512;
constexpr char BEGINNING[] = "process ";

std::string MakeNote() {
    std::array<char, HOST_NAME_MAX + 1> aHost{};
    ::gethostname(aHost.data(), aHost.size() - 1);
    const std::time_t iNow = std::time(nullptr);
    std::tm now{};
    ::gmtime_r(&iNow, &now);
    std::array<char, 32> aTime{};
    std::strftime(aTime.data(), aTime.size(), "%Y-%m-%dT%H:%M:%SZ", &now);
    return BEGINNING + std::to_string(::getpid()) + " on " + aHost.data() + ", since " + aTime.data();
}

/** @return the text of a file of notes; empty when there is none */
std::string ReadNote(int iFile) {
    std::string strNote(LONGEST_NOTE, '\0');
    const ssize_t iBytes = ::pread(iFile, strNote.data(), strNote.size(), 0);
    strNote.resize(iBytes > 0 ? static_cast<std::size_t>(iBytes) : 0);
    return strNote;
}

/** Whoever may write to the folder may have written it. */
bool IsPlain(const std::string& strNote) {
    return !strNote.empty() && std::all_of(strNote.begin(), strNote.end(), [](unsigned char c) {
        return std::isalnum(c) != 0 || c == ' ' || c == ',' || c == '.' || c == ':' || c == '-' || c == '_';
    });
}

/** @return whether a writer left the text; what anybody else wrote stays */
bool IsNote(const std::string& strText) {
    return strText.rfind(BEGINNING, 0) == 0 && IsPlain(strText);
}

/** Of a note a power cut may leave the length without the text. */
bool IsWithoutText(const std::string& strText) {
    return strText.find_first_not_of('\0') == std::string::npos;
}

}  // namespace

std::string CWriterNote::GetPath() const {
    return m_strStorePath + m_pSuffix;
}

/**
 * The lock on the note goes with the process, however it ends: that tells a note that counts from one left behind.
 * @param bAnew to write it anew; else it must have its text, which proves whose file it is
 * @return the open file; -1 when another process has it
 */
int CWriterNote::Take(bool bAnew) const {
    const int iFlags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | (bAnew ? O_CREAT : 0);
    const int iFile = ::open(GetPath().c_str(), iFlags, OWN_MODE);
    if (iFile < 0) {
        return -1;
    }
    struct stat status {};
    if (::flock(iFile, LOCK_EX | LOCK_NB) == 0 && ::fstat(iFile, &status) == 0 && S_ISREG(status.st_mode) &&
        status.st_nlink == 1) {
        const std::string strText = ReadNote(iFile);
        const bool bWhole = strText.size() == static_cast<std::size_t>(status.st_size);
        if (bWhole && (IsNote(strText) || (bAnew && IsWithoutText(strText)))) {
            return iFile;
        }
    }
    ::close(iFile);
    return -1;
}

void CWriterNote::Leave() noexcept {
    try {
        const std::string strNote = MakeNote();
        // The writer before may be about to remove its own.
        for (int iTries = 0; m_iFile < 0 && iTries < TRIES; ++iTries) {
            ::usleep(iTries == 0 ? 0 : TRY_MICROSECONDS);
            m_iFile = Take(true);
        }
        if (m_iFile < 0) {
            return;
        }
        struct stat status {};
        if (::stat(m_strStorePath.c_str(), &status) == 0) {
            ::fchmod(m_iFile, status.st_mode & SHARED_BITS);
        }
        [[maybe_unused]] const bool bLeft =
            ::ftruncate(m_iFile, 0) == 0 && ::write(m_iFile, strNote.data(), strNote.size()) > 0;
    } catch (const std::exception&) {
        // Without memory there is no note.
    }
}

void CWriterNote::TakeOver() noexcept {
    try {
        m_iFile = Take(false);
    } catch (const std::exception&) {
        // Without memory it stays.
    }
}

void CWriterNote::Remove() noexcept {
    if (m_iFile < 0) {
        return;
    }
    try {
        ::unlink(GetPath().c_str());
    } catch (const std::exception&) {
        // The next writer takes the file over.
    }
    ::close(m_iFile);
    m_iFile = -1;
}

std::string CWriterNote::Read() const {
    const int iFile = ::open(GetPath().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (iFile < 0) {
        return {};
    }
    const bool bLeftBehind = ::flock(iFile, LOCK_SH | LOCK_NB) == 0;
    const std::string strNote = bLeftBehind ? std::string() : ReadNote(iFile);
    ::close(iFile);
    return IsNote(strNote) ? strNote : std::string();
}

bool CWriterNote::IsHeld() const {
    const int iFile = ::open(GetPath().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (iFile < 0) {
        return false;
    }
    const bool bHeld = ::flock(iFile, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    ::close(iFile);
    return bHeld;
}
