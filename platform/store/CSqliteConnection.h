#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/store/CSettingsStore.h"

struct sqlite3;

/** One open database file that holds a settings store of this version. */
class CSqliteConnection {
  public:
    /**
     * Opens the file; to WRITE, making it with its folders when it is missing or empty. A file of another kind, of
     * another program or of a newer version is refused and left as it is.
     * @param strPath absolute
     * @param iBusyMilliseconds how long to wait for another writer
     * @throws OS::CException
     */
    CSqliteConnection(const std::string& strPath, int iBusyMilliseconds, EUnitOfWork eUse);
    CSqliteConnection(const CSqliteConnection&) = delete;
    CSqliteConnection& operator=(const CSqliteConnection&) = delete;

    sqlite3* Get() const { return m_pDb.get(); }
    /** The store's URL. */
    const std::string& GetUrl() const { return m_strUrl; }
    /** Whether the engine has a transaction open; after a failure it may have undone the one that was begun. */
    bool IsInTransaction() const;
    /**
     * Throws what the result code of the engine's last call stands for.
     * @param pDoing one of StoreDoing
     * @throws OS::CException, std::bad_alloc when the engine ran out of memory
     */
    [[noreturn]] void Throw(int iCode, const char* pDoing) const;

  private:
    struct SClose {
        void operator()(sqlite3* pDb) const noexcept;
    };

    void CheckHeader() const;
    void CheckOwner(std::int64_t iApplication, std::int64_t iVersion) const;
    void Open(const std::string& strPath, int iFlags);
    void CheckOwner();
    void CreateSchema();
    void ChangeJournal(int iBusyMilliseconds);
    void Execute(const std::string& strSql);
    std::int64_t Number(const std::string& strSql);
    [[noreturn]] void Refuse(const std::string& strWhy) const;

    std::string m_strUrl;
    std::unique_ptr<sqlite3, SClose> m_pDb;
};
