#include "platform/store/StoreBackup.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/common/CException.h"
#include "platform/store/CSqliteStore.h"
#include "platform/store/StoreError.h"

namespace StoreBackup {

namespace {

namespace fs = std::filesystem;

constexpr char TEMPORARY[] = ".new-XXXXXX";
constexpr char FORMER[] = ".before-restore";
constexpr char DAMAGED[] = ".damaged";
constexpr char JOURNAL[] = "-wal";
constexpr char ROLLBACK_JOURNAL[] = "-journal";
constexpr const char* SIDE_FILES[] = {JOURNAL, "-shm", ROLLBACK_JOURNAL, "-writer"};
constexpr mode_t MODE_BITS = 0777;

[[noreturn]] void ThrowSystemError(const std::string& strPath, const char* pDoing, int iError) {
    ThrowStoreError(CSqliteStore::SCHEME + strPath, pDoing, std::generic_category().message(iError), iError);
}

bool Exists(const std::string& strPath) {
    struct stat status {};
    return ::lstat(strPath.c_str(), &status) == 0;
}

/** @return a path beside the store that is not taken */
std::string FindFreePath(const std::string& strPath) {
    std::string strFree = strPath;
    for (int i = 2; Exists(strFree); ++i) {
        strFree = strPath + '-' + std::to_string(i);
    }
    return strFree;
}

/** Waits until the disk holds the file, or the folder's list of files. */
bool Synchronise(const std::string& strPath) {
    const int iFile = ::open(strPath.c_str(), O_RDONLY | O_CLOEXEC);
    const bool bDone = iFile >= 0 && ::fsync(iFile) == 0;
    if (iFile >= 0) {
        ::close(iFile);
    }
    return bDone;
}

/** A file on its way to become a store beside it: gone unless it became one. */
class CTemporaryFile {
  public:
    explicit CTemporaryFile(const std::string& strTarget) : m_strPath(strTarget + TEMPORARY) {
        const int iFile = ::mkostemp(m_strPath.data(), O_CLOEXEC);
        if (iFile < 0) {
            ThrowSystemError(strTarget, StoreDoing::BACKING_UP, errno);
        }
        ::close(iFile);
    }
    CTemporaryFile(const CTemporaryFile&) = delete;
    CTemporaryFile& operator=(const CTemporaryFile&) = delete;
    ~CTemporaryFile() {
        ::unlink(m_strPath.c_str());
        for (const char* pSideFile : SIDE_FILES) {
            ::unlink((m_strPath + pSideFile).c_str());
        }
    }

    const std::string& GetPath() const { return m_strPath; }

    /** The new file belongs to whom the old one belonged to, as far as this user may give it away. */
    void TakeOwner(const std::string& strFormer) const {
        struct stat status {};
        if (::stat(strFormer.c_str(), &status) == 0) {
            ::chmod(m_strPath.c_str(), status.st_mode & MODE_BITS);
            [[maybe_unused]] const int iGiven = ::chown(m_strPath.c_str(), status.st_uid, status.st_gid);
        }
    }

    void Become(const std::string& strTarget) const {
        if (!Synchronise(m_strPath) || ::rename(m_strPath.c_str(), strTarget.c_str()) != 0) {
            ThrowSystemError(strTarget, StoreDoing::BACKING_UP, errno);
        }
        Synchronise(fs::path(strTarget).parent_path().string());
    }

  private:
    std::string m_strPath;
};

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
        restored.strFormer = FindFreePath(strPath + FORMER);
    }
    if (bTry) {
        return restored;
    }
    if (!restored.strFormer.empty()) {
        Save(store, restored.strFormer, fnStep);
    }
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        std::vector<CSettingsRow> vecRows;
        backup.ReadAll(eKind, [&](CSettingsRow&& row) {
            fnStep();
            vecRows.push_back(std::move(row));
        });
        store.ReplaceAll(eKind, vecRows);
    }
    writing.Commit();
    reading.Commit();
    return restored;
}

/**
 * The journals of the damaged file go first: the new file must never stand beside it. A failure between leaves the
 * damaged store as it was, in two places.
 */
void PutAside(const std::string& strPath, const std::string& strAside) {
    if (::link(strPath.c_str(), strAside.c_str()) != 0) {
        ThrowSystemError(strPath, StoreDoing::RESTORING, errno);
    }
    for (const char* pJournal : {JOURNAL, ROLLBACK_JOURNAL}) {
        if (::rename((strPath + pJournal).c_str(), (strAside + pJournal).c_str()) != 0 && errno != ENOENT) {
            ThrowSystemError(strPath, StoreDoing::RESTORING, errno);
        }
    }
    for (const char* pSideFile : SIDE_FILES) {
        ::unlink((strPath + pSideFile).c_str());
    }
}

SRestored ReplaceDamaged(CSettingsStore& backup, const std::string& strPath, bool bTry, const Step& fnStep) {
    SRestored restored;
    restored.bDamaged = true;
    restored.strFormer = FindFreePath(strPath + DAMAGED);
    restored.aRestored = CountRecords(backup);
    if (!bTry) {
        const CTemporaryFile file(strPath);
        Fill(file, backup, fnStep);
        file.TakeOwner(strPath);
        PutAside(strPath, restored.strFormer);
        file.Become(strPath);
    }
    return restored;
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
    const CTemporaryFile file(strPath);
    const Counts aCounts = Fill(file, store, fnStep);
    file.Become(strPath);
    return aCounts;
}

std::unique_ptr<CSettingsStore> Open(const std::string& strPath) {
    auto pBackup = CSettingsStore::Make(CSqliteStore::SCHEME + strPath, EUnitOfWork::READ);
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
    if (const auto pStore = OpenSound(strStore, bTry ? EUnitOfWork::READ : EUnitOfWork::WRITE)) {
        return Replace(backup, *pStore, strStore, bTry, fnStep);
    }
    return ReplaceDamaged(backup, strStore, bTry, fnStep);
}

}  // namespace StoreBackup
