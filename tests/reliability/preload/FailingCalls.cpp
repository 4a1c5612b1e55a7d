// Loaded before the C library (LD_PRELOAD), it counts the calls of a program to the system and lets one of them fail:
//   DLP_FAULT_CALL=N      the N-th call fails (counted from 1)
//   DLP_FAULT_ERROR=E     with the number of an error, or "short": it carries half of what it was given
//   DLP_FAULT_MOVED=FILE  instead of failing it finds FILE gone to FILE.moved, and FILE.other, if there is one, as
//   FILE;
//                         if there is a FILE.other-wal, FILE-wal goes and comes with them
//   DLP_FAULT_LASTING=1   and so does every later call of the same function
//   DLP_FAULT_TRACE=FILE  every call is appended to FILE: function, tab, path or descriptor
// The headers that declare these functions are left out, since some of them define them as well.
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "NextFunction.h"

extern "C" long syscall(long iNumber, ...) noexcept;

namespace {

constexpr int SHORT = -1;
constexpr int NO_FAULT = 0;

struct SPlan {
    long iCall = 0;
    int iError = NO_FAULT;
    const char* pMoved = nullptr;
    bool bLasting = false;
    int iTrace = -1;
};

SPlan ReadPlan() {
    constexpr int WRITE_APPEND_CREATE_CLOEXEC = 01 | 02000 | 0100 | 02000000;
    constexpr int HERE = -100;
    SPlan plan;
    const int iErrorBefore = errno;
    if (const char* pCall = std::getenv("DLP_FAULT_CALL")) {
        plan.iCall = std::atol(pCall);
    }
    if (const char* pError = std::getenv("DLP_FAULT_ERROR")) {
        plan.iError = std::strcmp(pError, "short") == 0 ? SHORT : std::atoi(pError);
    }
    plan.pMoved = std::getenv("DLP_FAULT_MOVED");
    plan.bLasting = std::getenv("DLP_FAULT_LASTING") != nullptr;
    unsetenv("LD_PRELOAD");  // programs that this one starts are left alone
    if (const char* pTrace = std::getenv("DLP_FAULT_TRACE")) {
        plan.iTrace = static_cast<int>(syscall(SYS_openat, HERE, pTrace, WRITE_APPEND_CREATE_CLOEXEC, 0600));
    }
    errno = iErrorBefore;
    return plan;
}

const SPlan& GetPlan() {
    static const SPlan plan = ReadPlan();
    return plan;
}

long s_iCalls = 0;
const char* s_pFailing = nullptr;  ///< the function that has failed

void Trace(int iFile, const char* pFunction, const char* pDetail) {
    const int iErrorBefore = errno;
    char aLine[4096];
    std::size_t iSize = 0;
    for (const char* pPart : {pFunction, "\t", pDetail, "\n"}) {
        for (; *pPart != '\0' && iSize + 2 < sizeof(aLine); ++pPart) {
            aLine[iSize++] = *pPart;
        }
    }
    aLine[iSize - 1] = '\n';
    syscall(SYS_write, iFile, aLine, iSize);
    errno = iErrorBefore;
}

struct SName {
    SName(const char* pFile, const char* pSuffix, const char* pEnd) {
        std::size_t iSize = 0;
        for (const char* pPart : {pFile, pSuffix, pEnd}) {
            for (; *pPart != '\0' && iSize + 1 < sizeof(aText); ++pPart) {
                aText[iSize++] = *pPart;
            }
        }
    }

    char aText[4096] = {};
};

void Move(const char* pFile) {
    const int iErrorBefore = errno;
    const auto fnMove = [pFile](const char* pEnd) {
        const SName other(pFile, ".other", pEnd);
        syscall(SYS_rename, SName(pFile, "", pEnd).aText, SName(pFile, ".moved", pEnd).aText);
        syscall(SYS_rename, other.aText, SName(pFile, "", pEnd).aText);
    };
    constexpr int TO_READ = 4;
    if (syscall(SYS_access, SName(pFile, ".other", "-wal").aText, TO_READ) == 0) {
        fnMove("-wal");
        syscall(SYS_unlink, SName(pFile, "", "-shm").aText);
    }
    fnMove("");
    errno = iErrorBefore;
}

/** @return whether they are one function to the system, such as stat and stat64 */
bool IsSameFunction(const char* pLeft, const char* pRight) {
    while (*pLeft != '\0' && *pLeft == *pRight) {
        ++pLeft;
        ++pRight;
    }
    const auto fnEnds = [](const char* pRest) { return *pRest == '\0' || std::strcmp(pRest, "64") == 0; };
    return fnEnds(pLeft) && fnEnds(pRight);
}

/** @return the fault of this call */
int NextFault(const char* pFunction, const char* pDetail) {
    const SPlan& plan = GetPlan();
    if (plan.iTrace >= 0) {
        Trace(plan.iTrace, pFunction, pDetail);
    }
    if (++s_iCalls == plan.iCall && plan.pMoved != nullptr) {
        Move(plan.pMoved);
    } else if (s_iCalls == plan.iCall) {
        s_pFailing = pFunction;
        return plan.iError;
    }
    return plan.bLasting && s_pFailing != nullptr && IsSameFunction(s_pFailing, pFunction) ? plan.iError : NO_FAULT;
}

class CDetail {
  public:
    explicit CDetail(const char* pPath) : m_pText(pPath == nullptr ? "" : pPath) {}
    explicit CDetail(int iFile) {
        char* pEnd = m_aText + sizeof(m_aText) - 1;
        unsigned iRest = static_cast<unsigned>(iFile < 0 ? -iFile : iFile);
        do {
            *--pEnd = static_cast<char>('0' + iRest % 10);
            iRest /= 10;
        } while (iRest != 0);
        m_pText = pEnd;
    }
    explicit CDetail(const void*) {}
    const char* Get() const { return m_pText; }

  private:
    char m_aText[16] = {};
    const char* m_pText = "";
};

/** A call that cannot be cut short passes. */
bool Fails(const char* pFunction, const CDetail& detail) {
    const int iFault = NextFault(pFunction, detail.Get());
    if (iFault > NO_FAULT) {
        errno = iFault;
    }
    return iFault > NO_FAULT;
}

/** @return whether the call fails; else the size may have become less */
bool FailsOrCuts(const char* pFunction, const CDetail& detail, std::size_t& iSize) {
    const int iFault = NextFault(pFunction, detail.Get());
    if (iFault > NO_FAULT) {
        errno = iFault;
    } else if (iFault == SHORT && iSize > 1) {
        iSize /= 2;
    }
    return iFault > NO_FAULT;
}

}  // namespace

/** A function whose first argument that tells something is named; failed: what it returns then. */
#define FAILING(result, name, parameters, arguments, detail, failed)           \
    extern "C" __attribute__((visibility("default"))) result name parameters { \
        NEXT(name);                                                            \
        if (Fails(NAME, CDetail(detail))) {                                    \
            return failed;                                                     \
        }                                                                      \
        return fnNext arguments;                                               \
    }

/** The same for what carries bytes. */
#define CARRYING(result, name, parameters, arguments, detail, failed)          \
    extern "C" __attribute__((visibility("default"))) result name parameters { \
        NEXT(name);                                                            \
        if (FailsOrCuts(NAME, CDetail(detail), iSize)) {                       \
            return failed;                                                     \
        }                                                                      \
        return fnNext arguments;                                               \
    }

using PVoid = void*;
using PChar = char*;
using IOffset = long;
using ISize = long;

FAILING(int, open, (const char* pPath, int iFlags, unsigned iMode), (pPath, iFlags, iMode), pPath, -1)
FAILING(int, open64, (const char* pPath, int iFlags, unsigned iMode), (pPath, iFlags, iMode), pPath, -1)
FAILING(int, __open_2, (const char* pPath, int iFlags), (pPath, iFlags), pPath, -1)
FAILING(int, openat, (int iFolder, const char* pPath, int iFlags, unsigned iMode), (iFolder, pPath, iFlags, iMode),
        pPath, -1)
FAILING(PVoid, fopen, (const char* pPath, const char* pMode), (pPath, pMode), pPath, nullptr)
FAILING(PVoid, fopen64, (const char* pPath, const char* pMode), (pPath, pMode), pPath, nullptr)
FAILING(int, mkostemp, (char* pPath, int iFlags), (pPath, iFlags), static_cast<const char*>(pPath), -1)
FAILING(PChar, mkdtemp, (char* pPath), (pPath), static_cast<const char*>(pPath), nullptr)
FAILING(int, mkdir, (const char* pPath, unsigned iMode), (pPath, iMode), pPath, -1)
FAILING(int, chdir, (const char* pPath), (pPath), pPath, -1)
FAILING(int, chmod, (const char* pPath, unsigned iMode), (pPath, iMode), pPath, -1)
FAILING(int, chown, (const char* pPath, unsigned iUser, unsigned iGroup), (pPath, iUser, iGroup), pPath, -1)
FAILING(int, access, (const char* pPath, int iMode), (pPath, iMode), pPath, -1)
FAILING(int, faccessat, (int iFolder, const char* pPath, int iMode, int iFlags), (iFolder, pPath, iMode, iFlags), pPath,
        -1)
FAILING(int, stat, (const char* pPath, void* pStatus), (pPath, pStatus), pPath, -1)
FAILING(int, stat64, (const char* pPath, void* pStatus), (pPath, pStatus), pPath, -1)
FAILING(int, lstat, (const char* pPath, void* pStatus), (pPath, pStatus), pPath, -1)
FAILING(int, lstat64, (const char* pPath, void* pStatus), (pPath, pStatus), pPath, -1)
FAILING(int, statfs, (const char* pPath, void* pStatus), (pPath, pStatus), pPath, -1)
FAILING(PVoid, opendir, (const char* pPath), (pPath), pPath, nullptr)
FAILING(PVoid, fdopendir, (int iFile), (iFile), iFile, nullptr)
FAILING(PVoid, readdir, (void* pFolder), (pFolder), pFolder, nullptr)
FAILING(int, unlinkat, (int iFolder, const char* pPath, int iFlags), (iFolder, pPath, iFlags), pPath, -1)
FAILING(int, rmdir, (const char* pPath), (pPath), pPath, -1)
FAILING(int, unlink, (const char* pPath), (pPath), pPath, -1)
FAILING(int, remove, (const char* pPath), (pPath), pPath, -1)
FAILING(int, link, (const char* pFrom, const char* pTo), (pFrom, pTo), pTo, -1)
FAILING(int, rename, (const char* pFrom, const char* pTo), (pFrom, pTo), pTo, -1)
FAILING(int, renameat2, (int iFrom, const char* pFrom, int iTo, const char* pTo, unsigned iFlags),
        (iFrom, pFrom, iTo, pTo, iFlags), pTo, -1)
FAILING(ISize, readlink, (const char* pPath, char* pText, std::size_t iSize), (pPath, pText, iSize), pPath, -1)
FAILING(PChar, realpath, (const char* pPath, char* pText), (pPath, pText), pPath, nullptr)
FAILING(PChar, getcwd, (char* pText, std::size_t iSize), (pText, iSize), "", nullptr)
FAILING(int, gethostname, (char* pText, std::size_t iSize), (pText, iSize), "", -1)

FAILING(int, fstat, (int iFile, void* pStatus), (iFile, pStatus), iFile, -1)
FAILING(int, fstat64, (int iFile, void* pStatus), (iFile, pStatus), iFile, -1)
FAILING(int, fchmod, (int iFile, unsigned iMode), (iFile, iMode), iFile, -1)
FAILING(int, fchown, (int iFile, unsigned iUser, unsigned iGroup), (iFile, iUser, iGroup), iFile, -1)
FAILING(int, fcntl, (int iFile, int iCommand, void* pArgument), (iFile, iCommand, pArgument), iFile, -1)
FAILING(int, fcntl64, (int iFile, int iCommand, void* pArgument), (iFile, iCommand, pArgument), iFile, -1)
FAILING(int, flock, (int iFile, int iOperation), (iFile, iOperation), iFile, -1)
FAILING(int, ioctl, (int iFile, unsigned long iRequest, void* pArgument), (iFile, iRequest, pArgument), iFile, -1)
FAILING(int, isatty, (int iFile), (iFile), iFile, 0)
FAILING(int, fsync, (int iFile), (iFile), iFile, -1)
FAILING(int, fdatasync, (int iFile), (iFile), iFile, -1)
FAILING(int, sync_file_range, (int iFile, IOffset iFrom, IOffset iCount, unsigned iHow), (iFile, iFrom, iCount, iHow),
        iFile, -1)
FAILING(int, ftruncate, (int iFile, IOffset iTo), (iFile, iTo), iFile, -1)
FAILING(int, ftruncate64, (int iFile, IOffset iTo), (iFile, iTo), iFile, -1)
FAILING(IOffset, lseek, (int iFile, IOffset iTo, int iFrom), (iFile, iTo, iFrom), iFile, -1)
FAILING(IOffset, lseek64, (int iFile, IOffset iTo, int iFrom), (iFile, iTo, iFrom), iFile, -1)
FAILING(int, fallocate, (int iFile, int iMode, IOffset iFrom, IOffset iCount), (iFile, iMode, iFrom, iCount), iFile, -1)
FAILING(PVoid, mmap, (void* pAt, std::size_t iCount, int iUse, int iFlags, int iFile, IOffset iFrom),
        (pAt, iCount, iUse, iFlags, iFile, iFrom), iFile, reinterpret_cast<void*>(-1))
FAILING(PVoid, mmap64, (void* pAt, std::size_t iCount, int iUse, int iFlags, int iFile, IOffset iFrom),
        (pAt, iCount, iUse, iFlags, iFile, iFrom), iFile, reinterpret_cast<void*>(-1))
FAILING(int, munmap, (void* pAt, std::size_t iCount), (pAt, iCount), pAt, -1)
FAILING(int, fflush, (void* pFile), (pFile), pFile, -1)

CARRYING(ISize, read, (int iFile, void* pBytes, std::size_t iSize), (iFile, pBytes, iSize), iFile, -1)
CARRYING(ISize, write, (int iFile, const void* pBytes, std::size_t iSize), (iFile, pBytes, iSize), iFile, -1)
CARRYING(ISize, pread, (int iFile, void* pBytes, std::size_t iSize, IOffset iFrom), (iFile, pBytes, iSize, iFrom),
         iFile, -1)
CARRYING(ISize, pread64, (int iFile, void* pBytes, std::size_t iSize, IOffset iFrom), (iFile, pBytes, iSize, iFrom),
         iFile, -1)
CARRYING(ISize, pwrite, (int iFile, const void* pBytes, std::size_t iSize, IOffset iTo), (iFile, pBytes, iSize, iTo),
         iFile, -1)
CARRYING(ISize, pwrite64, (int iFile, const void* pBytes, std::size_t iSize, IOffset iTo), (iFile, pBytes, iSize, iTo),
         iFile, -1)
CARRYING(std::size_t, fread, (void* pBytes, std::size_t iUnit, std::size_t iSize, void* pFile),
         (pBytes, iUnit, iSize, pFile), pFile, 0)
CARRYING(std::size_t, fwrite, (const void* pBytes, std::size_t iUnit, std::size_t iSize, void* pFile),
         (pBytes, iUnit, iSize, pFile), pFile, 0)

/** Half of the pieces, where there are more than one. */
extern "C" __attribute__((visibility("default"))) ISize writev(int iFile, const void* pPieces, int iPieces) {
    NEXT(writev);
    std::size_t iSize = static_cast<std::size_t>(iPieces);
    if (FailsOrCuts(NAME, CDetail(iFile), iSize)) {
        return -1;
    }
    return fnNext(iFile, pPieces, static_cast<int>(iSize));
}

/** What is closed is closed, even if it fails. */
extern "C" __attribute__((visibility("default"))) int close(int iFile) {
    NEXT(close);
    const bool bFails = Fails(NAME, CDetail(iFile));
    const int iError = errno;
    const int iResult = fnNext(iFile);
    if (bFails) {
        errno = iError;
    }
    return bFails ? -1 : iResult;
}

/** What keeps failing is not waited for: a lock that is refused for good would take half a minute. */
extern "C" __attribute__((visibility("default"))) int usleep(unsigned iMicroseconds) {
    NEXT(usleep);
    return GetPlan().bLasting && s_pFailing != nullptr ? 0 : fnNext(iMicroseconds);
}
