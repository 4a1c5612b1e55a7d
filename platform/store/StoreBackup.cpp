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
#include "platform/common/TextConversion.h"
#include "platform/store/CSqliteConnection.h"
#include "platform/store/CSqliteStore.h"
#include "platform/store/SqliteFile.h"
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

    /** The new file belongs to whom the old one belonged to, as far as this user may give it away. */
    void TakeOwner(const std::string& strFormer) const {
        struct stat status {};
        if (::stat(strFormer.c_str(), &status) == 0) {
            ::chmod(m_strPath.c_str(), status.st_mode & MODE_BITS);
            constexpr auto SAME_USER = static_cast<uid_t>(-1);
            [[maybe_unused]] const bool bGiven = ::chown(m_strPath.c_str(), status.st_uid, status.st_gid) == 0 ||
                                                 ::chown(m_strPath.c_str(), SAME_USER, status.st_gid) == 0;
        }
    }

    void Become(const std::string& strTarget) const {
        if (!Synchronise(m_strPath) || ::rename(m_strPath.c_str(), strTarget.c_str()) != 0) {
            ThrowSystemError(strTarget, StoreDoing::BACKING_UP, errno);
        }
        Synchronise(fs::path(strTarget).parent_path().string());
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
        restored.strFormer = FindFreePath(strPath + FORMER);
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
    writing.Commit();
    names.Keep();
    reading.Commit();
    return restored;
}

/** The journals of the damaged file go first: the new file must never stand beside them. */
void PutAside(const std::string& strPath, const std::string& strAside, CNewNames& names) {
    std::string strName = strAside;
    if (::link(strPath.c_str(), strName.c_str()) != 0) {
        ThrowSystemError(strPath, StoreDoing::RESTORING, errno);
    }
    names.Add(std::move(strName));
    for (const char* pJournal : {JOURNAL, ROLLBACK_JOURNAL}) {
        std::string strFormer = strPath + pJournal;
        strName = strAside + pJournal;
        if (::rename(strFormer.c_str(), strName.c_str()) == 0) {
            names.Add(std::move(strName), std::move(strFormer));
        } else if (errno != ENOENT) {
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
        WithTemporary(strPath, [&](const CTemporaryFile& file) {
            Fill(file, backup, fnStep);
            file.TakeOwner(strPath);
            CNewNames names;
            PutAside(strPath, restored.strFormer, names);
            file.Become(strPath);
            names.Keep();
        });
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
    if (Exists(strPath) && !IsSqliteFileEmpty(strPath) && !CSqliteConnection::IsStore(strPath)) {
        ThrowStoreError(CSqliteStore::SCHEME + strPath, StoreDoing::BACKING_UP,
                        "it is no settings store, and is left as it is; name another file");
    }
    return WithTemporary(strPath, [&](const CTemporaryFile& file) {
        const Counts aCounts = Fill(file, store, fnStep);
        file.Become(strPath);
        return aCounts;
    });
}

void Renew(CSettingsStore& records, const std::string& strPath, const std::function<void()>& fnLook) {
    WithTemporary(strPath, [&](const CTemporaryFile& file) {
        Fill(file, records, [] {});
        file.TakeOwner(strPath);
        fnLook();
        file.Become(strPath);
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
    if (const auto pStore = OpenSound(strStore, bTry ? EUnitOfWork::READ : EUnitOfWork::WRITE)) {
        return Replace(backup, *pStore, strStore, bTry, fnStep);
    }
    return ReplaceDamaged(backup, strStore, bTry, fnStep);
}

}  // namespace StoreBackup
