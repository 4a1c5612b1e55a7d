#include "platform/store/StoreBackup.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSqliteConnection.h"
#include "platform/store/CSqliteStore.h"
#include "platform/store/CWriterNote.h"
#include "platform/store/SqliteFile.h"
#include "platform/store/StoreError.h"
#include "platform/system/Synchronise.h"

namespace StoreBackup {

namespace {

namespace fs = std::filesystem;

constexpr char TEMPORARY[] = ".new-XXXXXX";
constexpr char FORMER[] = ".before-restore";
constexpr char DAMAGED[] = ".damaged";
constexpr char JOURNAL[] = "-wal";
constexpr char ROLLBACK_JOURNAL[] = "-journal";
constexpr char INDEX[] = "-shm";
constexpr const char* SIDE_FILES[] = {JOURNAL, INDEX, ROLLBACK_JOURNAL, "-writer"};
constexpr int STEP_MILLISECONDS = 25;
constexpr mode_t MODE_BITS = 0777;
constexpr mode_t GROUP_BITS = 0070;
constexpr char IN_PLACE[] = "it is in its place, but a power cut may undo that: ";
constexpr char UNFINISHED[] = "it is a store that nobody has finished making, and no backup";

[[noreturn]] void ThrowSystemError(const std::string& strPath, const char* pDoing, int iError) {
    ThrowStoreError(CSqliteStore::SCHEME + strPath, pDoing, std::generic_category().message(iError), iError);
}

/** What cannot be looked at may be there. */
bool Exists(const std::string& strPath) {
    struct stat status {};
    if (::lstat(strPath.c_str(), &status) == 0) {
        return true;
    }
    if (errno != ENOENT && errno != ENOTDIR) {
        ThrowSystemError(strPath, StoreDoing::BACKING_UP, errno);
    }
    return false;
}

/** Whether both names are of one file. */
bool IsSame(const std::string& strLeft, const std::string& strRight) {
    struct stat left {};
    struct stat right {};
    return ::lstat(strLeft.c_str(), &left) == 0 && ::lstat(strRight.c_str(), &right) == 0 &&
           left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

/** @return a path beside the store that is not taken, or that is the store's own second name */
std::string FindFreePath(const std::string& strStore, const char* pSuffix) {
    std::string strFree = strStore + pSuffix;
    for (int i = 2; Exists(strFree) && !IsSame(strFree, strStore); ++i) {
        strFree = strStore + pSuffix + '-' + std::to_string(i);
    }
    return strFree;
}

/** The folder of a file, found before the work: its end must not depend on memory that has run out. */
class CFolder {
  public:
    explicit CFolder(const std::string& strFile)
        : m_strFile(strFile), m_strFolder(fs::path(strFile).parent_path().string()) {}

    /** From now on a power cut does not undo what was done to the names in it. */
    void KeepNames(const char* pDoing, const char* pBefore = "") const {
        if (const int iError = SYS::SynchroniseFolder(m_strFolder); iError != 0) {
            ThrowStoreError(CSqliteStore::SCHEME + m_strFile, pDoing, pBefore + std::generic_category().message(iError),
                            iError);
        }
    }

  private:
    std::string m_strFile;
    std::string m_strFolder;
};

/** Names that go, or go back, in the end, unless they are kept. */
class CNewNames {
  public:
    CNewNames() { m_vecNames.reserve(MOST); }
    CNewNames(const CNewNames&) = delete;
    CNewNames& operator=(const CNewNames&) = delete;
    ~CNewNames() {
        for (auto itName = m_vecNames.rbegin(); itName != m_vecNames.rend(); ++itName) {
            if (itName->strFormer.empty()) {
                ::unlink(itName->strName.c_str());
            } else {
                ::rename(itName->strName.c_str(), itName->strFormer.c_str());
            }
        }
    }

    /** @param strFormer what the file was called before; "" when that name is to go alone */
    void Add(std::string&& strName, std::string&& strFormer = {}) noexcept {
        m_vecNames.push_back({std::move(strName), std::move(strFormer)});
    }
    void Keep() noexcept { m_vecNames.clear(); }

  private:
    static constexpr std::size_t MOST = 3;
    struct SName {
        std::string strName;
        std::string strFormer;
    };
    std::vector<SName> m_vecNames;
};

/** A file on its way to become a store beside it: gone unless it became one. */
class CTemporaryFile {
  public:
    explicit CTemporaryFile(const std::string& strTarget) : m_strPath(strTarget + TEMPORARY) {
        for (const char* pSideFile : SIDE_FILES) {
            m_vecSideFiles.push_back(m_strPath + pSideFile);
        }
        const int iFile = ::mkostemp(m_strPath.data(), O_CLOEXEC);
        if (iFile < 0) {
            ThrowSystemError(strTarget, StoreDoing::BACKING_UP, errno);
        }
        ::close(iFile);
        for (std::string& strSideFile : m_vecSideFiles) {
            strSideFile.replace(0, m_strPath.size(), m_strPath);  // of the same length: without a request for memory
        }
    }
    CTemporaryFile(const CTemporaryFile&) = delete;
    CTemporaryFile& operator=(const CTemporaryFile&) = delete;
    ~CTemporaryFile() { Remove(); }

    /** @return whether nothing of it is left */
    bool Remove() const {
        bool bGone = IsGone(m_strPath);
        for (const std::string& strSideFile : m_vecSideFiles) {
            bGone = IsGone(strSideFile) && bGone;
        }
        return bGone;
    }

    const std::string& GetPath() const { return m_strPath; }

    /**
     * The new file belongs to whom the old one belonged to, as far as this user may give it away. Where its group is
     * another one, that one may do nothing.
     */
    void TakeOwner(const std::string& strFormer) const {
        struct stat status {};
        if (::stat(strFormer.c_str(), &status) == 0) {
            constexpr auto SAME_USER = static_cast<uid_t>(-1);
            const bool bGroup = ::chown(m_strPath.c_str(), status.st_uid, status.st_gid) == 0 ||
                                ::chown(m_strPath.c_str(), SAME_USER, status.st_gid) == 0;
            ::chmod(m_strPath.c_str(), status.st_mode & (bGroup ? MODE_BITS : MODE_BITS & ~GROUP_BITS));
        }
    }

    /** Until the names in the folder are kept a power cut may undo it. */
    void Become(const std::string& strTarget) const {
        int iError = SYS::Synchronise(m_strPath);
        if (iError == 0 && ::rename(m_strPath.c_str(), strTarget.c_str()) != 0) {
            iError = errno;
        }
        if (iError != 0) {
            ThrowSystemError(strTarget, StoreDoing::BACKING_UP, iError);
        }
    }

  private:
    static bool IsGone(const std::string& strPath) { return ::unlink(strPath.c_str()) == 0 || errno == ENOENT; }

    std::string m_strPath;
    std::vector<std::string> m_vecSideFiles;  ///< removing them must not depend on memory that has run out
};

/** Runs what makes a store of a file beside it, and tells of one that could not be removed after a failure. */
template <class Work>
auto WithTemporary(const std::string& strTarget, Work&& fnWork) {
    const CTemporaryFile file(strTarget);
    try {
        return fnWork(file);
    } catch (const OS::CException& error) {
        if (file.Remove()) {
            throw;
        }
        const std::string strMessage = error.what() + ("; " + file.GetPath()) + " is left, and can be removed";
        throw OS::CException(error.GetErrorCode(), OS::WideLenient(strMessage), 0);
    }
}

/** @throws OS::CException with the first damage */
void RequireSound(CSettingsStore& store) {
    store.Check([&](const SStoreDamage& damage) {
        ThrowStoreError(store.GetInfo().strUrl, StoreDoing::CHECKING, "it is damaged: " + ToText(damage),
                        StoreCode::DAMAGED);
    });
}

Counts Copy(CSettingsStore& from, CSettingsStore& to, const Step& fnStep) {
    Counts aCounts{};
    CSettingsTransaction reading(from, EUnitOfWork::READ);
    CSettingsTransaction writing(to, EUnitOfWork::WRITE);
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        from.ReadAll(eKind, [&](CSettingsRow&& row) {
            fnStep();
            to.Save(row);
            ++aCounts[static_cast<std::size_t>(eKind)];
        });
    }
    writing.Commit();
    reading.Commit();
    return aCounts;
}

/** Makes a store of the file, with all that the other one holds, and closes it, so that the file alone is the store. */
Counts Fill(const CTemporaryFile& file, CSettingsStore& from, const Step& fnStep) {
    Counts aCounts{};
    {
        CSqliteStore store(file.GetPath());
        aCounts = Copy(from, store, fnStep);
    }
    if (Exists(file.GetPath() + JOURNAL)) {
        ThrowStoreError(CSqliteStore::SCHEME + file.GetPath(), StoreDoing::BACKING_UP, "it cannot be written whole");
    }
    Open(file.GetPath());
    return aCounts;
}

/** @return the store, when it can be opened and is sound */
std::unique_ptr<CSettingsStore> OpenSound(const std::string& strPath, EUnitOfWork eUse) {
    try {
        auto pStore = std::make_unique<CSqliteStore>(strPath, CSqliteStore::BUSY_MILLISECONDS, eUse);
        RequireSound(*pStore);
        return pStore;
    } catch (const OS::CException& error) {
        if (error.GetErrorCode() != StoreCode::DAMAGED) {
            throw;
        }
        return nullptr;
    }
}

Counts CountRecords(CSettingsStore& store) {
    Counts aCounts{};
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        aCounts[static_cast<std::size_t>(eKind)] = store.Count(eKind);
    }
    return aCounts;
}

/** Others may go on using the store: they see it before or after. */
SRestored Replace(CSettingsStore& backup, CSettingsStore& store, const std::string& strPath, bool bTry,
                  const Step& fnStep) {
    SRestored restored;
    CSettingsTransaction reading(backup, EUnitOfWork::READ);
    CSettingsTransaction writing(store, bTry ? EUnitOfWork::READ : EUnitOfWork::WRITE);
    restored.aReplaced = CountRecords(store);
    restored.aRestored = CountRecords(backup);
    if (restored.aReplaced != Counts{}) {
        restored.strFormer = FindFreePath(strPath, FORMER);
    }
    if (bTry) {
        return restored;
    }
    CNewNames names;
    if (!restored.strFormer.empty()) {
        std::string strFormer = restored.strFormer;
        Save(store, strFormer, fnStep);
        names.Add(std::move(strFormer));
    }
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        std::vector<CSettingsRow> vecRows;
        backup.ReadAll(eKind, [&](CSettingsRow&& row) {
            fnStep();
            vecRows.push_back(std::move(row));
        });
        store.ReplaceAll(eKind, vecRows);
    }
    reading.Commit();
    writing.Commit();  // last: what follows it could fail, and say so
    names.Keep();
    return restored;
}

/**
 * The journals of the damaged file go first, for good: the new file must never stand beside them, nor in the place of
 * one that has no other name.
 */
void PutAside(const std::string& strPath, const std::string& strAside, const CFolder& folder, CNewNames& names) {
    std::string strName = strAside;
    if (!IsSame(strPath, strAside)) {
        if (::link(strPath.c_str(), strName.c_str()) != 0) {
            ThrowSystemError(strPath, StoreDoing::RESTORING, errno);
        }
        names.Add(std::move(strName));
    }
    for (const char* pJournal : {JOURNAL, ROLLBACK_JOURNAL}) {
        std::string strFormer = strPath + pJournal;
        strName = strAside + pJournal;
        if (::rename(strFormer.c_str(), strName.c_str()) == 0) {
            names.Add(std::move(strName), std::move(strFormer));
        } else if (errno != ENOENT) {
            ThrowSystemError(strPath, StoreDoing::RESTORING, errno);
        }
    }
    ::unlink((strPath + INDEX).c_str());
    folder.KeepNames(StoreDoing::RESTORING);
}

/** Keeps other restorers out, and writers who began before the store was damaged. */
void LeaveNote(CWriterNote& note, const std::string& strPath) {
    note.Leave();
    for (int iWaited = 0; !note.IsLeft(); iWaited += STEP_MILLISECONDS) {
        const std::string strWriter = note.Read();
        if (iWaited >= CSqliteStore::BUSY_MILLISECONDS || CSettingsStore::IsWaitEnded()) {
            ThrowBusy(CSqliteStore::SCHEME + strPath, StoreDoing::RESTORING, strWriter, EBUSY);
        }
        const bool bHeld = note.IsHeld();
        ::usleep(bHeld ? STEP_MILLISECONDS * 1000 : 0);
        note.Leave();
        if (!bHeld && !note.IsHeld()) {
            return;  // nobody keeps it from being left, but the folder or what stands there
        }
    }
}

/** A file in whose place another one is put: whoever had it open goes on, and nobody else opens it meanwhile. */
class CReservedFile {
  public:
    explicit CReservedFile(const std::string& strPath) : m_strUrl(CSqliteStore::SCHEME + strPath) {
        sqlite3* pDb = nullptr;
        const int iCode = sqlite3_open_v2(strPath.c_str(), &pDb, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
        m_pDb.reset(pDb);
        if (iCode != SQLITE_OK) {
            ThrowStoreError(m_strUrl, StoreDoing::RESTORING, sqlite3_errstr(iCode), iCode);
        }
        sqlite3_file_control(pDb, nullptr, SQLITE_FCNTL_FILE_POINTER, &m_pFile);
    }

    /**
     * Waits for whoever has reserved the file.
     * @return false when another file stands in its place by then
     */
    bool Reserve() {
        for (int iWaited = 0; !TryToReserve(); iWaited += STEP_MILLISECONDS) {
            if (iWaited >= CSqliteStore::BUSY_MILLISECONDS || CSettingsStore::IsWaitEnded()) {
                ThrowBusy(m_strUrl, StoreDoing::RESTORING, "", SQLITE_BUSY);
            }
            m_pFile->pMethods->xUnlock(m_pFile, SQLITE_LOCK_NONE);
            ::usleep(STEP_MILLISECONDS * 1000);
        }
        // When others have it open this fails, but keeps those out who would open it from now on.
        m_pFile->pMethods->xLock(m_pFile, SQLITE_LOCK_EXCLUSIVE);
        int iMoved = 1;
        sqlite3_file_control(m_pDb.get(), nullptr, SQLITE_FCNTL_HAS_MOVED, &iMoved);
        return iMoved == 0;
    }

  private:
    struct SClose {
        void operator()(sqlite3* pDb) const noexcept { sqlite3_close(pDb); }
    };

    bool TryToReserve() {
        for (const int iLock : {SQLITE_LOCK_SHARED, SQLITE_LOCK_RESERVED}) {
            const int iCode = m_pFile->pMethods->xLock(m_pFile, iLock);
            if (iCode != SQLITE_OK && (iCode & 0xFF) != SQLITE_BUSY) {
                ThrowStoreError(m_strUrl, StoreDoing::RESTORING, sqlite3_errstr(iCode), iCode);
            }
            if (iCode != SQLITE_OK) {
                return false;
            }
        }
        return true;
    }

    std::string m_strUrl;
    std::unique_ptr<sqlite3, SClose> m_pDb;
    sqlite3_file* m_pFile = nullptr;
};

/** Whether restoring has begun to put the file aside, and was cut short. */
bool IsHalfAside(const std::string& strPath) {
    return IsSame(FindFreePath(strPath, DAMAGED), strPath);
}

/** @return the store, when it can be opened and is sound, and nobody has begun to put it aside */
std::unique_ptr<CSettingsStore> OpenWhole(const std::string& strPath, EUnitOfWork eUse) {
    return IsHalfAside(strPath) ? nullptr : OpenSound(strPath, eUse);
}

/** @return nothing when the store is not damaged by now */
std::optional<SRestored> ReplaceDamaged(CSettingsStore& backup, const std::string& strPath, bool bTry,
                                        const Step& fnStep) {
    SRestored restored;
    restored.bDamaged = true;
    restored.aRestored = CountRecords(backup);
    if (bTry) {
        restored.strFormer = FindFreePath(strPath, DAMAGED);
        return restored;
    }
    const bool bReplaced = WithTemporary(strPath, [&](const CTemporaryFile& file) {
        Fill(file, backup, fnStep);
        CWriterNote note(strPath);
        LeaveNote(note, strPath);
        if (OpenWhole(strPath, EUnitOfWork::WRITE) != nullptr) {
            return false;
        }
        CReservedFile former(strPath);
        if (!former.Reserve()) {
            return false;
        }
        const CFolder folder(strPath);
        file.TakeOwner(strPath);
        restored.strFormer = FindFreePath(strPath, DAMAGED);
        CNewNames names;
        PutAside(strPath, restored.strFormer, folder, names);
        file.Become(strPath);
        names.Keep();
        folder.KeepNames(StoreDoing::RESTORING, IN_PLACE);
        return true;
    });
    return bReplaced ? std::optional(std::move(restored)) : std::nullopt;
}

}  // namespace

Counts Save(CSettingsStore& store, const std::string& strPath, const Step& fnStep) {
    if (Exists(strPath + JOURNAL)) {
        ThrowStoreError(CSqliteStore::SCHEME + strPath, StoreDoing::BACKING_UP,
                        "it is a store that is in use; name another file");
    }
    std::error_code error;
    if (fs::exists(strPath, error) && !fs::is_regular_file(strPath, error)) {
        ThrowStoreError(CSqliteStore::SCHEME + strPath, StoreDoing::BACKING_UP, "it is no file; name another");
    }
    if (Exists(strPath) && !IsSqliteFileEmpty(strPath) && !CSqliteConnection::IsStore(strPath)) {
        ThrowStoreError(CSqliteStore::SCHEME + strPath, StoreDoing::BACKING_UP,
                        "it is no settings store, and is left as it is; name another file");
    }
    return WithTemporary(strPath, [&](const CTemporaryFile& file) {
        const CFolder folder(strPath);
        const Counts aCounts = Fill(file, store, fnStep);
        file.Become(strPath);
        folder.KeepNames(StoreDoing::BACKING_UP, IN_PLACE);
        return aCounts;
    });
}

void Renew(CSettingsStore& records, const std::string& strPath, const std::function<void()>& fnLook) {
    WithTemporary(strPath, [&](const CTemporaryFile& file) {
        const CFolder folder(strPath);
        Fill(file, records, [] {});
        file.TakeOwner(strPath);
        fnLook();
        file.Become(strPath);
        folder.KeepNames(StoreDoing::OPENING, IN_PLACE);
    });
}

std::unique_ptr<CSettingsStore> Open(const std::string& strPath) {
    auto pBackup = CSettingsStore::Make(CSqliteStore::SCHEME + strPath, EUnitOfWork::READ);
    if (IsSqliteFileEmpty(strPath)) {
        ThrowStoreError(CSqliteStore::SCHEME + strPath, StoreDoing::OPENING, UNFINISHED, StoreCode::DAMAGED);
    }
    RequireSound(*pBackup);
    return pBackup;
}

SRestored Restore(CSettingsStore& backup, const std::string& strPath, bool bTry, const Step& fnStep) {
    std::error_code error;
    const std::string strTarget = fs::weakly_canonical(strPath, error).string();
    const std::string& strStore = error ? strPath : strTarget;
    if (bTry && !Exists(strStore)) {
        return {{}, CountRecords(backup), false, {}};
    }
    while (true) {
        if (const auto pStore = OpenWhole(strStore, bTry ? EUnitOfWork::READ : EUnitOfWork::WRITE)) {
            return Replace(backup, *pStore, strStore, bTry, fnStep);
        }
        if (auto restored = ReplaceDamaged(backup, strStore, bTry, fnStep)) {
            return std::move(*restored);
        }
    }
}

}  // namespace StoreBackup
