// Loaded before the C library, it counts what a program takes from the heap while main runs and lets one request fail:
//   DLP_FAULT_MEMORY=N         the N-th request gives nothing (counted from 1)
//   DLP_FAULT_LASTING=1        and neither does any later one
//   DLP_FAULT_MEMORY_COUNT=F   the number of requests is written to F
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>

extern "C" void* __libc_malloc(std::size_t iSize) noexcept;
extern "C" void* __libc_calloc(std::size_t iCount, std::size_t iSize) noexcept;
extern "C" void* __libc_realloc(void* pBlock, std::size_t iSize) noexcept;

namespace {

long s_iFailing = 0;
bool s_bLasting = false;
bool s_bCounts = false;
long s_iRequests = 0;
int (*s_fnMain)(int, char**, char**) = nullptr;

bool Fails() {
    if (!s_bCounts) {
        return false;
    }
    ++s_iRequests;
    const bool bFails = s_iFailing != 0 && (s_iRequests == s_iFailing || (s_bLasting && s_iRequests > s_iFailing));
    if (bFails) {
        errno = ENOMEM;
    }
    return bFails;
}

void WriteCount(const char* pFile) {
    char aDigits[24];
    char* pEnd = aDigits + sizeof(aDigits);
    char* pStart = pEnd;
    for (long iRest = s_iRequests; iRest != 0 || pStart == pEnd; iRest /= 10) {
        *--pStart = static_cast<char>('0' + iRest % 10);
    }
    const long iFile = syscall(SYS_openat, AT_FDCWD, pFile, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    syscall(SYS_write, iFile, pStart, pEnd - pStart);
    syscall(SYS_close, iFile);
}

/** Before main there is nobody to tell. */
int CountedMain(int iArguments, char** apArguments, char** apEnvironment) {
    if (const char* pFailing = std::getenv("DLP_FAULT_MEMORY")) {
        s_iFailing = std::atol(pFailing);
    }
    s_bLasting = std::getenv("DLP_FAULT_LASTING") != nullptr;
    s_bCounts = true;
    const int iCode = s_fnMain(iArguments, apArguments, apEnvironment);
    s_bCounts = false;
    if (const char* pFile = std::getenv("DLP_FAULT_MEMORY_COUNT")) {
        WriteCount(pFile);
    }
    return iCode;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void* malloc(std::size_t iSize) noexcept {
    return Fails() ? nullptr : __libc_malloc(iSize);
}
extern "C" __attribute__((visibility("default"))) void* calloc(std::size_t iCount, std::size_t iSize) noexcept {
    return Fails() ? nullptr : __libc_calloc(iCount, iSize);
}
extern "C" __attribute__((visibility("default"))) void* realloc(void* pBlock, std::size_t iSize) noexcept {
    return Fails() ? nullptr : __libc_realloc(pBlock, iSize);
}

extern "C" __attribute__((visibility("default"))) int __libc_start_main(int (*fnMain)(int, char**, char**),
                                                                        int iArguments, char** apArguments,
                                                                        void (*fnStart)(), void (*fnEnd)(),
                                                                        void (*fnLoaderEnd)(), void* pStackEnd) {
    using Start = int(int (*)(int, char**, char**), int, char**, void (*)(), void (*)(), void (*)(), void*);
    s_fnMain = fnMain;
    auto* const fnNext = reinterpret_cast<Start*>(dlsym(RTLD_NEXT, "__libc_start_main"));
    return fnNext(&CountedMain, iArguments, apArguments, fnStart, fnEnd, fnLoaderEnd, pStackEnd);
}
