#include "platform/store/StoreBackup.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CFolder.h"
#include "platform/store/CNewNames.h"
#include "platform/store/CReservedFile.h"
#include "platform/store/CSqliteConnection.h"
#include "platform/store/CSqliteStore.h"
#include "platform/store/CTemporaryFile.h"
#include "platform/store/CWriterNote.h"
#include "platform/store/SqliteFile.h"
#include "platform/store/StoreError.h"

namespace StoreBackup {

namespace {

namespace fs = std::filesystem;

constexpr char FORMER[] = ".before-restore";
constexpr char DAMAGED[] = ".damaged";
constexpr int STEP_MILLISECONDS = 25;
/** What one of them says the engine does to the file beside it, whichever that is by then. */
constexpr const char* JOURNALS[] = {SqliteSuffix::JOURNAL, SqliteSuffix::ROLLBACK_JOURNAL};
constexpr char IN_PLACE[] = "it is in its place, but a power cut may undo that: ";
constexpr char IN_USE[] = "it is a store that is in use; name another file";
constexpr char UNFINISHED[] = "it is a store that nobody has finished making, and no backup";

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

/**
 * @param bAlone nobody has the file at the path open: an empty journal is nobody's then
 * @throws OS::CException when the file has a journal, or would take one for its own
 */
void RequireNoJournal(const std::string& strPath, bool bAlone = false) {
    for (const char* pJournal : JOURNALS) {
        if (Exists(strPath + pJournal) && !(bAlone && IsSqliteFileEmpty(strPath + pJournal))) {
            ThrowStoreError(CSqliteStore::SCHEME + strPath, StoreDoing::BACKING_UP, IN_USE);
        }
    }
}

/** @return whether nothing stands at the path, or an empty file */
bool IsVacant(const std::string& strPath) {
    std::error_code error;
    if (fs::exists(strPath, error) && !fs::is_regular_file(strPath, error)) {
        ThrowStoreError(CSqliteStore::SCHEME + strPath, StoreDoing::BACKING_UP, "it is no file; name another");
    }
    return !Exists(strPath) || IsSqliteFileEmpty(strPath);
}

void RequireStore(bool bStore, const std::string& strPath) {
    if (!bStore) {
        ThrowStoreError(CSqliteStore::SCHEME + strPath, StoreDoing::BACKING_UP,
                        "it is no settings store, and is left as it is; name another file");
    }
}

/**
 * Looks whether a backup may come to the path.
 * @return what keeps others from opening the store there that the backup replaces; nothing where there is none, or
 * where it may only be read, so that nobody but its owner can come to use it
 */
std::unique_ptr<CReservedFile> ReservePlace(const std::string& strPath) {
    while (!IsVacant(strPath) && IsSqliteFileReplaceable(strPath)) {
        auto pReserved = std::make_unique<CReservedFile>(strPath, StoreDoing::BACKING_UP);
        RequireStore(pReserved->HoldsStore(), strPath);
        if (pReserved->Reserve()) {
            RequireNoJournal(strPath, pReserved->IsAlone());
            return pReserved;
        }
    }
    RequireNoJournal(strPath);
    RequireStore(IsVacant(strPath) || CSqliteConnection::IsStore(strPath), strPath);
    return nullptr;
}

bool IsFree(const std::string& strPath) {
    return !Exists(strPath) && std::none_of(std::begin(SqliteSuffix::ALL), std::end(SqliteSuffix::ALL),
                                            [&](const char* pSideFile) { return Exists(strPath + pSideFile); });
}

/** @return a path beside the store that is not taken, or that is the store's own second name */
std::string FindFreePath(const std::string& strStore, const char* pSuffix) {
    std::string strFree = strStore + pSuffix;
    for (int i = 2; !IsSame(strFree, strStore) && !IsFree(strFree); ++i) {
        strFree = strStore + pSuffix + '-' + std::to_string(i);
    }
    return strFree;
}

/** Runs what makes a store of a file beside it, and tells of one that could not be removed after a failure. */
template <class Work>
auto WithTemporary(const std::string& strTarget, const char* pDoing, Work&& fnWork) {
    CTemporaryFile file(strTarget, pDoing);
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
    if (Exists(file.GetPath() + SqliteSuffix::JOURNAL)) {
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

/** @param names which stay as soon as what was written is kept, wherever its file is by then */
void CommitLast(CSettingsTransaction& writing, CNewNames& names) {
    try {
        writing.Commit();
        names.Keep();
    } catch (const OS::CException& error) {
        if (error.GetErrorCode() == StoreCode::WRITTEN_ELSEWHERE) {
            names.Keep();
        }
        throw;
    }
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
    CommitLast(writing, names);  // what follows it could fail, and say so
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
        folder.KeepNames(StoreDoing::RESTORING);  // by the second name its journals are found after a power cut
    }
    for (const char* pJournal : JOURNALS) {
        std::string strFormer = strPath + pJournal;
        strName = strAside + pJournal;
        if (::rename(strFormer.c_str(), strName.c_str()) == 0) {
            names.Add(std::move(strName), std::move(strFormer));
        } else if (errno != ENOENT) {
            ThrowSystemError(strPath, StoreDoing::RESTORING, errno);
        }
    }
    ::unlink((strPath + SqliteSuffix::INDEX).c_str());
    folder.KeepNames(StoreDoing::RESTORING);
}

/** What came to the path meanwhile is nobody's to replace, and must not get the journals of the damaged file. */
void RequireAside(const std::string& strPath, const std::string& strAside, CNewNames& names) {
    struct stat there {};
    struct stat aside {};
    const bool bBoth = ::lstat(strPath.c_str(), &there) == 0 && ::lstat(strAside.c_str(), &aside) == 0;
    if (!bBoth && errno != ENOENT) {
        ThrowSystemError(strPath, StoreDoing::RESTORING, errno);
    }
    if (bBoth && there.st_dev == aside.st_dev && there.st_ino == aside.st_ino) {
        return;
    }
    names.Keep();
    ThrowStoreError(
        CSqliteStore::SCHEME + strPath, StoreDoing::RESTORING,
        std::string(StoreWritten::MOVED) + "the damaged one is kept as " + strAside + "; " + StoreWritten::NOTHING);
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
    if (IsSqliteFileAnothersToReplace(strPath)) {  // whose second name could not be taken back either
        ThrowSystemError(strPath, StoreDoing::RESTORING, EPERM);
    }
    SRestored restored;
    restored.bDamaged = true;
    restored.aRestored = CountRecords(backup);
    if (bTry) {
        restored.strFormer = FindFreePath(strPath, DAMAGED);
        return restored;
    }
    const bool bReplaced = WithTemporary(strPath, StoreDoing::RESTORING, [&](CTemporaryFile& file) {
        Fill(file, backup, fnStep);
        CWriterNote note(strPath);
        LeaveNote(note, strPath);
        if (OpenWhole(strPath, EUnitOfWork::WRITE) != nullptr) {
            return false;
        }
        CReservedFile former(strPath, StoreDoing::RESTORING);
        if (!former.Reserve()) {
            return false;
        }
        const CFolder folder(strPath);
        file.TakeOwner(strPath);
        file.Keep(strPath);
        restored.strFormer = FindFreePath(strPath, DAMAGED);
        CNewNames names;
        PutAside(strPath, restored.strFormer, folder, names);
        RequireAside(strPath, restored.strFormer, names);
        file.Become(strPath);
        names.Keep();
        folder.KeepNames(StoreDoing::RESTORING, IN_PLACE);
        return true;
    });
    return bReplaced ? std::optional(std::move(restored)) : std::nullopt;
}

}  // namespace

Counts Save(CSettingsStore& store, const std::string& strPath, const Step& fnStep) {
    ReservePlace(strPath);  // before the work is done for nothing
    return WithTemporary(strPath, StoreDoing::BACKING_UP, [&](CTemporaryFile& file) {
        const CFolder folder(strPath);
        const Counts aCounts = Fill(file, store, fnStep);
        file.Keep(strPath);
        for (bool bDone = false; !bDone;) {
            const bool bThere = Exists(strPath);  // else what comes meanwhile is looked at first
            const auto pReserved = ReservePlace(strPath);
            bDone = file.Become(strPath, bThere);
        }
        folder.KeepNames(StoreDoing::BACKING_UP, IN_PLACE);
        return aCounts;
    });
}

void Renew(CSettingsStore& records, const std::string& strPath, const std::function<void()>& fnLook) {
    WithTemporary(strPath, StoreDoing::OPENING, [&](CTemporaryFile& file) {
        const CFolder folder(strPath);
        Fill(file, records, [] {});
        file.TakeOwner(strPath);
        file.Keep(strPath);
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
    const std::string strPlace = FollowSqliteLinks(strPath, CSqliteStore::SCHEME + strPath);
    std::error_code error;
    const std::string strTarget = fs::weakly_canonical(strPlace, error).string();
    const std::string& strStore = error ? strPlace : strTarget;
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
