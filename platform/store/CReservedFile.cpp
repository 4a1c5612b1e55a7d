#include "platform/store/CReservedFile.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/store/CSqliteConnection.h"
#include "platform/store/CSqliteStore.h"
#include "platform/store/StoreError.h"

namespace {

constexpr int STEP_MILLISECONDS = 25;

}  // namespace

CReservedFile::CReservedFile(const std::string& strPath, const char* pDoing)
    : m_strUrl(CSqliteStore::SCHEME + strPath), m_pDoing(pDoing) {
    sqlite3* pDb = nullptr;
    const int iCode = sqlite3_open_v2(strPath.c_str(), &pDb, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    m_pDb.reset(pDb);
    if (iCode != SQLITE_OK) {
        ThrowStoreError(m_strUrl, m_pDoing, sqlite3_errstr(iCode), iCode);
    }
    sqlite3_file_control(pDb, nullptr, SQLITE_FCNTL_FILE_POINTER, &m_pFile);
}

bool CReservedFile::HoldsStore() const {
    return CSqliteConnection::IsStore(m_pFile);
}

bool CReservedFile::Reserve() {
    for (int iWaited = 0; !TryToReserve(); iWaited += STEP_MILLISECONDS) {
        if (iWaited >= CSqliteStore::BUSY_MILLISECONDS || CSettingsStore::IsWaitEnded()) {
            ThrowBusy(m_strUrl, m_pDoing, "", SQLITE_BUSY);
        }
        m_pFile->pMethods->xUnlock(m_pFile, SQLITE_LOCK_NONE);
        ::usleep(STEP_MILLISECONDS * 1000);
    }
    // When others have it open this fails, but keeps those out who would open it from now on.
    m_bAlone = m_pFile->pMethods->xLock(m_pFile, SQLITE_LOCK_EXCLUSIVE) == SQLITE_OK;
    int iMoved = 1;
    sqlite3_file_control(m_pDb.get(), nullptr, SQLITE_FCNTL_HAS_MOVED, &iMoved);
    struct stat status {};
    if (iMoved != 0 && ::stat(sqlite3_db_filename(m_pDb.get(), "main"), &status) != 0 && errno != ENOENT) {
        ThrowStoreError(m_strUrl, m_pDoing, std::generic_category().message(errno), errno);  // nobody can tell
    }
    return iMoved == 0;
}

void CReservedFile::SClose::operator()(sqlite3* pDb) const noexcept {
    sqlite3_close(pDb);
}

bool CReservedFile::TryToReserve() {
    for (const int iLock : {SQLITE_LOCK_SHARED, SQLITE_LOCK_RESERVED}) {
        const int iCode = m_pFile->pMethods->xLock(m_pFile, iLock);
        if (iCode != SQLITE_OK && (iCode & 0xFF) != SQLITE_BUSY) {
            ThrowStoreError(m_strUrl, m_pDoing, sqlite3_errstr(iCode), iCode);
        }
        if (iCode != SQLITE_OK) {
            return false;
        }
    }
    return true;
}
