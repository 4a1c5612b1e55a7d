// Loaded before the C library (LD_PRELOAD), it records in order what a program does to files:
//   DLP_RECORD_FILE=FILE   each call that succeeded is appended to FILE: function, two numbers, two paths and a size,
//                          with tabs between them, a line end, and that many bytes
// The headers that declare these functions are left out, since some of them define them as well.
#include <sys/syscall.h>

#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>

#include "NextFunction.h"

extern "C" long syscall(long iNumber, ...) noexcept;

namespace {

int OpenRecord() {
    constexpr int WRITE_APPEND_CREATE_CLOEXEC = 01 | 02000 | 0100 | 02000000;
    constexpr int HERE = -100;
    const char* const pRecord = std::getenv("DLP_RECORD_FILE");
    unsetenv("LD_PRELOAD");  // programs that this one starts are left alone
    return pRecord == nullptr ? -1
                              : static_cast<int>(syscall(SYS_openat, HERE, pRecord, WRITE_APPEND_CREATE_CLOEXEC, 0600));
}

void Append(std::string& strLine, long iNumber) {
    char aDigits[24];
    strLine.append(aDigits, std::to_chars(aDigits, aDigits + sizeof(aDigits), iNumber).ptr).push_back('\t');
}

void Record(const char* pFunction, long iFirst, long iSecond, const char* pPath, const char* pOther = "",
            const void* pBytes = nullptr, long iSize = 0) {
    const int iErrorBefore = errno;
    static const int s_iRecord = OpenRecord();
    std::string strLine = pFunction;
    strLine.push_back('\t');
    Append(strLine, iFirst);
    Append(strLine, iSecond);
    strLine.append(pPath).append("\t").append(pOther).append("\t");
    Append(strLine, iSize);
    strLine.back() = '\n';
    if (pBytes != nullptr) {
        strLine.append(static_cast<const char*>(pBytes), static_cast<std::size_t>(iSize));
    }
    syscall(SYS_write, s_iRecord, strLine.data(), strLine.size());
    errno = iErrorBefore;
}

/** As writev has it. */
struct SPart {
    const void* pBytes;
    std::size_t iSize;
};

std::string Join(const SPart* pParts, int iParts, long iSize) {
    std::string strBytes;
    for (int i = 0; i < iParts; ++i) {
        strBytes.append(static_cast<const char*>(pParts[i].pBytes), pParts[i].iSize);
    }
    return strBytes.substr(0, static_cast<std::size_t>(iSize));
}

/** Where the next write to the file goes; less than 0 when it has no places. */
long Tell(int iFile) {
    constexpr int FROM_HERE = 1;
    const int iErrorBefore = errno;
    const long iPlace = syscall(SYS_lseek, iFile, 0L, FROM_HERE);
    errno = iErrorBefore;
    return iPlace;
}

}  // namespace

/** A function, and what is recorded when its result is not less than 0. */
#define RECORDED(result, name, parameters, arguments, ...)                     \
    extern "C" __attribute__((visibility("default"))) result name parameters { \
        NEXT(name);                                                            \
        const result iResult = fnNext arguments;                               \
        if (iResult >= 0) {                                                    \
            Record(__VA_ARGS__);                                               \
        }                                                                      \
        return iResult;                                                        \
    }

using ISize = long;
using IOffset = long;

RECORDED(int, open, (const char* pPath, int iFlags, unsigned iMode), (pPath, iFlags, iMode), "open", iResult, iFlags,
         pPath)
RECORDED(int, open64, (const char* pPath, int iFlags, unsigned iMode), (pPath, iFlags, iMode), "open", iResult, iFlags,
         pPath)
RECORDED(int, __open_2, (const char* pPath, int iFlags), (pPath, iFlags), "open", iResult, iFlags, pPath)
RECORDED(int, openat, (int iFolder, const char* pPath, int iFlags, unsigned iMode), (iFolder, pPath, iFlags, iMode),
         "open", iResult, iFlags, pPath)
RECORDED(int, mkostemp, (char* pPath, int iFlags), (pPath, iFlags), "mkostemp", iResult, iFlags, pPath)
RECORDED(int, mkdir, (const char* pPath, unsigned iMode), (pPath, iMode), "mkdir", 0, 0, pPath)
RECORDED(int, unlink, (const char* pPath), (pPath), "unlink", 0, 0, pPath)
RECORDED(int, remove, (const char* pPath), (pPath), "unlink", 0, 0, pPath)
RECORDED(int, link, (const char* pFrom, const char* pTo), (pFrom, pTo), "link", 0, 0, pFrom, pTo)
RECORDED(int, rename, (const char* pFrom, const char* pTo), (pFrom, pTo), "rename", 0, 0, pFrom, pTo)
RECORDED(int, renameat2, (int iFrom, const char* pFrom, int iTo, const char* pTo, unsigned iFlags),
         (iFrom, pFrom, iTo, pTo, iFlags), "rename", 0, 0, pFrom, pTo)
RECORDED(int, close, (int iFile), (iFile), "close", iFile, 0, "")
RECORDED(int, fsync, (int iFile), (iFile), "sync", iFile, 0, "")
RECORDED(int, fdatasync, (int iFile), (iFile), "sync", iFile, 0, "")
RECORDED(int, ftruncate, (int iFile, IOffset iTo), (iFile, iTo), "length", iFile, iTo, "")
RECORDED(int, ftruncate64, (int iFile, IOffset iTo), (iFile, iTo), "length", iFile, iTo, "")
RECORDED(ISize, write, (int iFile, const void* pBytes, std::size_t iSize), (iFile, pBytes, iSize), "write", iFile,
         Tell(iFile) - iResult, "", "", pBytes, iResult)
RECORDED(ISize, pwrite, (int iFile, const void* pBytes, std::size_t iSize, IOffset iTo), (iFile, pBytes, iSize, iTo),
         "write", iFile, iTo, "", "", pBytes, iResult)
RECORDED(ISize, pwrite64, (int iFile, const void* pBytes, std::size_t iSize, IOffset iTo), (iFile, pBytes, iSize, iTo),
         "write", iFile, iTo, "", "", pBytes, iResult)
RECORDED(ISize, writev, (int iFile, const SPart* pParts, int iParts), (iFile, pParts, iParts), "write", iFile,
         Tell(iFile) - iResult, "", "", Join(pParts, iParts, iResult).c_str(), iResult)
