#include "platform/store/SqlitePageSums.h"

#include <sqlite3.h>
#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstring>
#include <initializer_list>
#include <new>

namespace SqlitePageSums {

namespace {

constexpr int HEADER_SIZE = 100;
constexpr int FIRST_PAGE_TRIES = 8;  ///< each waits a millisecond more
constexpr int HEADER_RESERVED = 20;  ///< where a file's header says how many bytes each page keeps free

sqlite3_vfs* s_pInner = nullptr;

/** Stands behind the engine's own file object, whose methods for reading and writing it takes the place of. */
struct SFile {
    const sqlite3_io_methods* pInner;
    sqlite3_io_methods methods;
    bool bSummed;
    int iFailedReads;
};

constexpr int RoundUp(int iBytes) {
    return (iBytes + static_cast<int>(alignof(SFile)) - 1) / static_cast<int>(alignof(SFile)) *
           static_cast<int>(alignof(SFile));
}

SFile& Behind(sqlite3_file* pFile) {
    return *reinterpret_cast<SFile*>(reinterpret_cast<char*>(pFile) + RoundUp(s_pInner->szOsFile));
}

bool IsPage(int iBytes, sqlite3_int64 iOffset) {
    return iBytes == PAGE_SIZE && iOffset % PAGE_SIZE == 0;
}

bool HasSum(const unsigned char* pPage, sqlite3_int64 iOffset) {
    unsigned char aSum[SUM_SIZE];
    MakeSum(pPage, iOffset, aSum);
    return std::memcmp(aSum, pPage + PAGE_SIZE - SUM_SIZE, SUM_SIZE) == 0;
}

/**
 * The engine looks at the first page before it knows of a journal, so that another process may be writing the page just
 * then: nothing locks it. @return whether it had its checksum after all
 */
bool ReadFirstAgain(sqlite3_file* pFile, void* pBytes) {
    for (int iTries = 1; iTries < FIRST_PAGE_TRIES; ++iTries) {
        sqlite3_sleep(iTries);
        if (Behind(pFile).pInner->xRead(pFile, pBytes, PAGE_SIZE, 0) == SQLITE_OK &&
            HasSum(static_cast<const unsigned char*>(pBytes), 0)) {
            return true;
        }
    }
    return false;
}

/** A disk that fails is no damage yet, for which the engine would take it: it may read the next time. */
int Read(sqlite3_file* pFile, void* pBytes, int iBytes, sqlite3_int64 iOffset) {
    SFile& behind = Behind(pFile);
    const int iCode = behind.pInner->xRead(pFile, pBytes, iBytes, iOffset);
    if (iCode != SQLITE_OK && iCode != SQLITE_IOERR_SHORT_READ) {
        ++behind.iFailedReads;
        return iCode == SQLITE_IOERR_CORRUPTFS ? SQLITE_IOERR_READ : iCode;
    }
    if (iCode != SQLITE_OK || !behind.bSummed || !IsPage(iBytes, iOffset)) {
        return iCode;
    }
    const bool bWhole =
        HasSum(static_cast<const unsigned char*>(pBytes), iOffset) || (iOffset == 0 && ReadFirstAgain(pFile, pBytes));
    return bWhole ? SQLITE_OK : SQLITE_IOERR_DATA;
}

/** The bytes that the engine keeps free are in its own buffer, which it does not look at there. */
int Write(sqlite3_file* pFile, const void* pBytes, int iBytes, sqlite3_int64 iOffset) {
    if (IsPage(iBytes, iOffset)) {
        auto* pPage = static_cast<unsigned char*>(const_cast<void*>(pBytes));
        MakeSum(pPage, iOffset, pPage + PAGE_SIZE - SUM_SIZE);
    }
    return Behind(pFile).pInner->xWrite(pFile, pBytes, iBytes, iOffset);
}

/** A file that is still empty will be made with checksums; whether there are any never changes in a file's life. */
int FindWhetherSummed(sqlite3_file* pFile, bool& bSummed) {
    unsigned char aHeader[HEADER_SIZE] = {};
    const int iCode = pFile->pMethods->xRead(pFile, aHeader, HEADER_SIZE, 0);
    sqlite3_int64 iSize = 0;
    const int iSizeCode = pFile->pMethods->xFileSize(pFile, &iSize);
    bSummed = iSize == 0 || aHeader[HEADER_RESERVED] == SUM_SIZE;
    return iCode == SQLITE_IOERR_SHORT_READ ? iSizeCode : iCode;
}

int Open(sqlite3_vfs*, const char* pName, sqlite3_file* pFile, int iFlags, int* pFlagsOut) {
    const int iCode = s_pInner->xOpen(s_pInner, pName, pFile, iFlags, pFlagsOut);
    if (iCode != SQLITE_OK) {
        return iCode;
    }
    bool bSummed = false;
    const int iReadCode = (iFlags & SQLITE_OPEN_MAIN_DB) != 0 ? FindWhetherSummed(pFile, bSummed) : SQLITE_OK;
    if (iReadCode != SQLITE_OK) {
        pFile->pMethods->xClose(pFile);
        pFile->pMethods = nullptr;
        return iReadCode;
    }
    SFile& behind = *new (&Behind(pFile)) SFile{pFile->pMethods, *pFile->pMethods, bSummed, 0};
    behind.methods.xRead = Read;
    if (bSummed) {
        behind.methods.iVersion = 2;  // without memory mapping, which would go past the checksums
        behind.methods.xWrite = Write;
    }
    pFile->pMethods = &behind.methods;
    return SQLITE_OK;
}

sqlite3_vfs MakeVfs() {
    s_pInner = sqlite3_vfs_find(nullptr);
    sqlite3_vfs vfs = *s_pInner;
    vfs.zName = "dlp-page-sums";
    vfs.pNext = nullptr;
    vfs.szOsFile = RoundUp(s_pInner->szOsFile) + static_cast<int>(sizeof(SFile));
    vfs.xOpen = Open;
    return vfs;
}

}  // namespace

const char* GetVfsName() {
    if (sqlite3_initialize() != SQLITE_OK) {
        throw std::bad_alloc();
    }
    static sqlite3_vfs s_vfs = MakeVfs();
    static const int s_iRegistered = sqlite3_vfs_register(&s_vfs, 0);
    static_cast<void>(s_iRegistered);  // fails only as the engine's start does
    return s_vfs.zName;
}

void Reserve(sqlite3* pDb) {
    int iBytes = SUM_SIZE;
    sqlite3_file_control(pDb, nullptr, SQLITE_FCNTL_RESERVE_BYTES, &iBytes);
}

int CountFailedReads(sqlite3* pDb) {
    int iCount = 0;
    for (const int iWhich : {SQLITE_FCNTL_FILE_POINTER, SQLITE_FCNTL_JOURNAL_POINTER}) {
        sqlite3_file* pFile = nullptr;
        if (sqlite3_file_control(pDb, nullptr, iWhich, &pFile) == SQLITE_OK && pFile != nullptr &&
            pFile->pMethods != nullptr && pFile->pMethods->xRead == Read) {
            iCount += Behind(pFile).iFailedReads;
        }
    }
    return iCount;
}

/** The page's number is part of it, so that no page stands for another. */
void MakeSum(const unsigned char* pPage, std::int64_t iOffset, unsigned char* pSum) {
    const auto iNumber = static_cast<std::uint64_t>(iOffset / PAGE_SIZE);
    XXH64_canonical_t canonical;
    XXH64_canonicalFromHash(&canonical, XXH3_64bits_withSeed(pPage, PAGE_SIZE - SUM_SIZE, iNumber + 1));
    std::memcpy(pSum, canonical.digest, SUM_SIZE);
}

}  // namespace SqlitePageSums
