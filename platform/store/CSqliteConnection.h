#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/store/CSettingsStore.h"
#include "platform/store/CWriterNote.h"
#include "platform/store/SqliteFile.h"

struct sqlite3;
struct sqlite3_file;

/** One open database file that holds a settings store of this version. */
class CSqliteConnection {
  public:
    /**
     * Opens the file; to WRITE, making it with its folders when it is missing or empty. One that was cut short while it
     * was made holds nothing. A file of another kind, of another program or of a newer version is refused and left as
     * it is; in the place of one of an older version, which nobody else may have open, comes one of this version. To
     * READ, such a one is left as it is too, and is brought up in memory: what others write from then on is not seen.
     * @param strPath absolute
     * @param iBusyMilliseconds how long to wait for another writer
     * @throws OS::CException
     */
    CSqliteConnection(const std::string& strPath, int iBusyMilliseconds, EUnitOfWork eUse);
    /**
     * Has the engine keep no count of the memory that it takes, which costs a lock at every piece. It holds for the
     * whole process: for a program to call, not a library, before the first store is opened.
     */
    static void LeaveMemoryUncounted() noexcept;
    /** @return whether the file's header says that it is a settings store, of whatever version, damaged or not */
    static bool IsStore(const std::string& strPath);
    /** As above, of a file that the engine has open: whoever has locked it keeps the lock. */
    static bool IsStore(sqlite3_file* pFile);
    CSqliteConnection(const CSqliteConnection&) = delete;
    CSqliteConnection& operator=(const CSqliteConnection&) = delete;

    sqlite3* Get() const { return m_pDb.get(); }
    /** The store's URL. */
    const std::string& GetUrl() const { return m_strUrl; }
    /** Whether another file, or none, stands at the path by now: what is written to the open one is lost to all others.
     */
    bool HasMoved() const;
    /** Whether the system tells what stands at the path; else HasMoved says yes without knowing. */
    bool CanLook() const;
    /**
     * A file that this user cannot lock is read without a lock, so another user may have written it meanwhile.
     * @throws OS::CException when that is so
     */
    void RequireUnchanged(const char* pDoing) const;
    /** Who writes, for those who wait. */
    CWriterNote& GetWriterNote() { return m_note; }
    /** The version of the schema that the file has, also where it was brought up in memory. */
    int GetSchemaVersion() const { return m_iVersion; }
    /** Runs statements that give nothing. */
    void Execute(const std::string& strSql);
    /** @return the first number that the statement gives */
    std::int64_t Number(const std::string& strSql);
    /** Whether the engine has a transaction open; after a failure it may have undone the one that was begun. */
    bool IsInTransaction() const;
    /**
     * After a commit that was refused: what of it is in the journal, whole perhaps, must not be found there once every
     * process that knows better has ended. Where this fails too, the next unit of whoever writes does it.
     */
    void OverwriteRefused() noexcept;
    /**
     * Throws what the result code of the engine's last call stands for.
     * @param pDoing one of StoreDoing
     * @throws OS::CException, std::bad_alloc when the engine ran out of memory
     */
    [[noreturn]] void Throw(int iCode, const char* pDoing) const;

  private:
    struct SClose {
        void operator()(sqlite3* pDb) const noexcept;

        bool bOwnJournal;  ///< the journal that the engine has open is known to be that of the file
    };

    static int Wait(void* pConnection, int iTries) noexcept;
    int ReadFirstPage(std::vector<unsigned char>& vecPage) const;
    bool HasNoHeader() const;
    /** @return the version of the schema */
    int CheckHeader() const;
    bool IsToBeReplaced(int iVersion) const;
    void RequireReplaceable() const;
    void BringUp();
    void OpenJournal();
    bool HasOwnJournal() const;
    void OpenAnew();
    bool ShutOthersOut();
    void GiveUpFile() noexcept;
    void CheckOwner(std::int64_t iApplication) const;
    void CheckVersion(std::int64_t iVersion) const;
    void Open(const std::string& strName, int iFlags);
    bool OpenStore(bool bEmpty, bool bAgain);
    void OpenSchema();
    bool IsAnotherThere() const;
    void RequireStillThere() const;
    void CreateSchema(CSettingsStore* pRecords = nullptr);
    void CopyOlder();
    void ChangeJournal();
    [[noreturn]] void Refuse(const std::string& strWhy) const;

    std::string m_strUrl;
    std::string m_strPath;             ///< of the file itself
    std::optional<FileState> m_fixed;  ///< of a file that is read without a lock: when it was opened
    CWriterNote m_note;
    int m_iBusyMilliseconds;
    bool m_bRead;
    int m_iFlags = 0;  ///< with which the file was opened
    std::unique_ptr<sqlite3, SClose> m_pDb{nullptr, SClose{false}};
    int m_iVersion = 0;
    int m_iWaited = 0;  ///< milliseconds, for the lock that is wanted now
};
