#include "platform/store/SqliteFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

#include "platform/store/StoreError.h"
#include "platform/system/Synchronise.h"

namespace {

constexpr mode_t FOLDER_MODE = 0700;
constexpr mode_t FILE_MODE = 0600;
constexpr int MOST_LINKS = 40;
constexpr int MOST_TRIES = 10;
constexpr std::string_view JOURNAL_MAGIC = "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7";
constexpr std::size_t JOURNAL_PAGES = 16;  ///< where a journal says how many pages the file had before
constexpr std::size_t JOURNAL_HEADER_SIZE = 20;
constexpr const char CANNOT_READ[] = "cannot read the file";
constexpr const char CANNOT_MAKE[] = "cannot make the file";
constexpr const char CANNOT_MAKE_FOLDER[] = "cannot make the folder ";
constexpr const char NO_TARGET[] = "it is a symbolic link that leads to no file";
constexpr const char CUT[] = "it is damaged: it was cut to no bytes, and the journal beside it is not empty";

/** File systems over which the write-ahead log does not hold: its index is memory that all processes must share. */
struct SNetwork {
    long iKind;  ///< see statfs(2)
    const char* pName;
};
constexpr SNetwork NETWORKS[] = {
    {0x6969, "NFS"},       {0x517B, "SMB"},      {0xFF534D42, "CIFS"}, {0xFE534D42, "SMB2"},   {0x73757245, "Coda"},
    {0x5346414F, "AFS"},   {0x6B414653, "kAFS"}, {0x00C36400, "Ceph"}, {0x0BD00BD0, "Lustre"}, {0x01161970, "GFS2"},
    {0x7461636F, "OCFS2"}, {0x564C, "NCP"},      {0x47504653, "GPFS"}, {0x20030528, "OrangeFS"},
    {0x19830326, "BeeGFS"}, {0x786F4256, "vboxsf"}, {0xBACBACBC, "vmhgfs"},
};

long AskSystem(const std::string& strPath) {
    struct statfs status {};
    int iResult = ::statfs(strPath.c_str(), &status);
    for (int iTries = 1; iResult != 0 && errno == EINTR && iTries < MOST_TRIES; ++iTries) {
        iResult = ::statfs(strPath.c_str(), &status);
    }
    if (iResult != 0) {
        return errno == ENOSYS ? 0 : UNKNOWN_FILE_SYSTEM;
    }
    return static_cast<long>(status.f_type);
}

FileSystemProbe& GetProbe() {
    static FileSystemProbe s_fnProbe = AskSystem;
    return s_fnProbe;
}

[[noreturn]] void RefuseFor(const std::string& strUrl, const std::string& strWhat, int iError) {
    ThrowStoreError(strUrl, StoreDoing::OPENING, strWhat + ": " + std::generic_category().message(iError), iError);
}

/** A file that is a mount point has another name elsewhere, as with a hard link, and nothing can take its place. */
bool IsMountedAlone(const std::string& strPath) {
    struct statx status {};
    return ::statx(AT_FDCWD, strPath.c_str(), 0, STATX_TYPE, &status) == 0 &&
           (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

/** The engine takes an empty file for a new one, and throws away the journal of what was there. */
void CheckFile(const struct stat& status, const std::string& strPath, const std::string& strUrl) {
    if (!S_ISREG(status.st_mode)) {
        ThrowStoreError(strUrl, StoreDoing::OPENING, S_ISDIR(status.st_mode) ? "it is a folder" : "it is no file");
    }
    if (status.st_nlink > 1) {
        ThrowStoreError(strUrl, StoreDoing::OPENING,
                        "it has other names (hard links), and under each a journal of its own would stand; remove "
                        "those, or copy it");
    }
    if (IsMountedAlone(strPath)) {
        ThrowStoreError(strUrl, StoreDoing::OPENING,
                        "it is mounted as a single file, and its journal would stand beside it here alone; mount the "
                        "folder that it is in");
    }
    if (IsSqliteFileCut(strPath)) {
        ThrowStoreError(strUrl, StoreDoing::OPENING, std::string(CUT) + StoreAdvice::DAMAGED, StoreCode::DAMAGED);
    }
}

/** A file that is still to be made will be where the nearest folder above it is. */
void RefuseNetwork(const std::string& strPath, const std::string& strUrl) {
    std::filesystem::path place = strPath;
    std::error_code error;
    while (!std::filesystem::exists(place, error) && place.has_relative_path()) {
        place = place.parent_path();
    }
    const long iAnswer = GetProbe()(place.string());
    const int iError = errno;
    if (iAnswer == UNKNOWN_FILE_SYSTEM) {
        RefuseFor(strUrl, "cannot tell whether it is on a network file system", iError);
    }
    // The numbers have 32 bits, but for their sign.
    const long iKind = iAnswer & 0xFFFFFFFFL;
    const auto* pNetwork = std::find_if(std::begin(NETWORKS), std::end(NETWORKS),
                                        [&](const SNetwork& network) { return network.iKind == iKind; });
    if (pNetwork != std::end(NETWORKS)) {
        ThrowStoreError(strUrl, StoreDoing::OPENING,
                        std::string("it is on a network file system (") + pNetwork->pName +
                            "), where several processes would damage it; name a place on a local disk");
    }
}

bool IsAccessible(const std::string& strPath, int iMode) {
    return ::faccessat(AT_FDCWD, strPath.c_str(), iMode, AT_EACCESS) == 0;
}

void MakeFolders(const std::filesystem::path& folder, const std::string& strUrl) {
    std::filesystem::path made;
    for (const std::filesystem::path& part : folder) {
        made /= part;
        if (::mkdir(made.c_str(), FOLDER_MODE) == 0) {
            // Others may have put a link in its place. What fails here keeps the file from being made.
            [[maybe_unused]] const int iResult = ::fchmodat(AT_FDCWD, made.c_str(), FOLDER_MODE, AT_SYMLINK_NOFOLLOW);
            if (const int iSyncError = SYS::SynchroniseFolder(made.parent_path().string()); iSyncError != 0) {
                RefuseFor(strUrl, CANNOT_MAKE_FOLDER + made.string(), iSyncError);
            }
            continue;
        }
        const int iError = errno;
        std::error_code error;
        if (!std::filesystem::exists(made, error)) {
            RefuseFor(strUrl, CANNOT_MAKE_FOLDER + made.string(), iError);
        }
    }
}

bool HoldsBytes(const std::string& strPath) {
    struct stat status {};
    return ::stat(strPath.c_str(), &status) == 0 && status.st_size > 0;
}

}  // namespace

/** Whoever could put a link into somebody's folder could else choose the file that is written. */
std::string FollowSqliteLinks(const std::string& strPath, const std::string& strUrl) {
    std::filesystem::path place = strPath;
    struct stat status {};
    for (int i = 0; i < MOST_LINKS && ::lstat(place.c_str(), &status) == 0 && S_ISLNK(status.st_mode); ++i) {
        if (status.st_uid != ::geteuid() && status.st_uid != 0) {
            ThrowStoreError(strUrl, StoreDoing::OPENING,
                            "it is another user's symbolic link, which is not followed; name the file itself");
        }
        if (::stat(place.c_str(), &status) != 0) {
            RefuseFor(strUrl, NO_TARGET, errno);
        }
        std::error_code error;
        place = place.parent_path() / std::filesystem::read_symlink(place, error);
        // What stands for an open descriptor may name a file that is gone.
        struct stat target {};
        if (::stat(place.c_str(), &target) != 0) {
            RefuseFor(strUrl, NO_TARGET, errno);
        }
        if (target.st_dev != status.st_dev || target.st_ino != status.st_ino) {
            RefuseFor(strUrl, NO_TARGET, ENOENT);
        }
    }
    // A link among the folders may be turned while the store is open; what stands beside it must not follow.
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::weakly_canonical(place.parent_path(), error);
    return (error ? place : folder / place.filename()).string();
}

bool MakeSqliteFile(const std::string& strPath, const std::string& strUrl) {
    RefuseNetwork(strPath, strUrl);
    struct stat status {};
    if (::stat(strPath.c_str(), &status) == 0) {
        CheckFile(status, strPath, strUrl);
        if (!IsAccessible(strPath, R_OK | W_OK)) {
            RefuseFor(strUrl, "cannot read and write the file", errno);
        }
        return status.st_size == 0;
    }
    const std::filesystem::path folder = std::filesystem::path(strPath).parent_path();
    MakeFolders(folder, strUrl);
    const int iFile = ::open(strPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, FILE_MODE);
    if (iFile >= 0) {
        ::fchmod(iFile, FILE_MODE);
        ::close(iFile);
        // The engine does that too, but is silent when it fails.
        if (const int iSyncError = SYS::SynchroniseFolder(folder.string()); iSyncError != 0) {
            RefuseFor(strUrl, CANNOT_MAKE, iSyncError);
        }
    } else if (errno != EEXIST) {  // another process may have been faster
        RefuseFor(strUrl, CANNOT_MAKE, errno);
    }
    return true;
}

void CheckSqlitePlace(const std::string& strPath, const std::string& strUrl) {
    RefuseNetwork(strPath, strUrl);
    std::filesystem::path made = FollowSqliteLinks(strPath, strUrl);
    std::error_code error;
    bool bFolder = false;
    while (made.has_relative_path() && !std::filesystem::exists(made.parent_path(), error)) {
        made = made.parent_path();
        bFolder = true;
    }
    if (!IsAccessible((made.parent_path() / ".").string(), W_OK | X_OK)) {
        RefuseFor(strUrl, bFolder ? CANNOT_MAKE_FOLDER + made.string() : CANNOT_MAKE, errno);
    }
}

bool FindSqliteFile(const std::string& strPath, const std::string& strUrl) {
    RefuseNetwork(strPath, strUrl);
    struct stat status {};
    if (::stat(strPath.c_str(), &status) != 0) {
        RefuseFor(strUrl, CANNOT_READ, errno);
    }
    CheckFile(status, strPath, strUrl);
    if (!IsAccessible(strPath, R_OK)) {
        RefuseFor(strUrl, CANNOT_READ, errno);
    }
    return IsAccessible(strPath, W_OK);
}

bool IsSqliteFileFixed(const std::string& strPath) {
    const std::string strFolder = std::filesystem::path(strPath).parent_path().string();
    return !IsAccessible(strFolder, W_OK) && !IsAccessible(strPath + SqliteSuffix::JOURNAL, F_OK);
}

bool IsSqliteFileReplaceable(const std::string& strPath) {
    const std::string strFolder = std::filesystem::path(strPath).parent_path().string();
    return IsAccessible(strPath, W_OK) && IsAccessible(strFolder, W_OK | X_OK);
}

bool IsSqliteFileAnothersToReplace(const std::string& strPath) {
    const std::string strFolder = std::filesystem::path(strPath).parent_path().string();
    struct stat folder {};
    struct stat file {};
    return ::stat(strFolder.c_str(), &folder) == 0 && (folder.st_mode & S_ISVTX) != 0 &&
           ::stat(strPath.c_str(), &file) == 0 && ::geteuid() != 0 && ::geteuid() != file.st_uid &&
           ::geteuid() != folder.st_uid;
}

void RequireOwnSideFiles(const std::string& strPath, const std::string& strUrl) {
    struct stat folder {};
    if (::stat(std::filesystem::path(strPath).parent_path().c_str(), &folder) != 0 ||
        (folder.st_mode & S_IWOTH) == 0) {
        return;
    }
    struct stat file {};
    if (::stat(strPath.c_str(), &file) != 0) {
        file.st_uid = ::geteuid();  // who makes it
    }
    for (const char* pSuffix : {SqliteSuffix::JOURNAL, SqliteSuffix::INDEX, SqliteSuffix::ROLLBACK_JOURNAL}) {
        struct stat side {};
        if (::lstat((strPath + pSuffix).c_str(), &side) != 0) {
            continue;
        }
        const bool bOwn = side.st_uid == ::geteuid() || side.st_uid == file.st_uid || side.st_uid == 0;
        const bool bGroups = (file.st_mode & S_IWGRP) != 0 && side.st_gid == file.st_gid;
        if (!bOwn && !bGroups && (file.st_mode & S_IWOTH) == 0) {
            ThrowStoreError(strUrl, StoreDoing::OPENING,
                            "beside it, where everybody may write, stands another user's " + strPath + pSuffix +
                                ", which would be taken for a part of it; have that removed, or move the store into a "
                                "folder of its own");
        }
    }
}

bool IsSqliteFileEmpty(const std::string& strPath) {
    struct stat status {};
    return ::stat(strPath.c_str(), &status) == 0 && status.st_size == 0;
}

bool IsSqliteFileCut(const std::string& strPath) {
    std::error_code error;
    const std::string strTarget = std::filesystem::canonical(strPath, error).string();  // beside which the journal is
    return IsSqliteFileEmpty(strPath) && HoldsBytes(strTarget + SqliteSuffix::JOURNAL);
}

bool HasSqliteJournal(const std::string& strPath) {
    return HoldsBytes(strPath + SqliteSuffix::JOURNAL) || HoldsBytes(strPath + SqliteSuffix::ROLLBACK_JOURNAL);
}

bool WasSqliteFileEmpty(const std::string& strPath) {
    std::array<char, JOURNAL_HEADER_SIZE> aHeader{};
    std::ifstream journal(strPath + SqliteSuffix::ROLLBACK_JOURNAL, std::ios::binary);
    return journal.read(aHeader.data(), aHeader.size()) &&
           std::equal(JOURNAL_MAGIC.begin(), JOURNAL_MAGIC.end(), aHeader.begin()) &&
           std::all_of(aHeader.begin() + JOURNAL_PAGES, aHeader.end(), [](char c) { return c == '\0'; });
}

FileState GetSqliteFileState(const std::string& strPath) {
    struct stat status {};
    if (::stat(strPath.c_str(), &status) != 0) {
        return {};
    }
    return {status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

std::vector<std::string> FindSqliteFileDangers(const std::string& strNamed) {
    std::vector<std::string> vecDangers;
    std::error_code error;
    const std::filesystem::path target = std::filesystem::canonical(strNamed, error);
    const std::string strPath = error ? strNamed : target.string();
    struct stat status {};
    if (::stat(strPath.c_str(), &status) == 0 && (status.st_mode & S_IRWXO) != 0) {
        vecDangers.push_back(std::string("everybody may ") + ((status.st_mode & S_IWOTH) != 0 ? "change" : "read") +
                             " the store; take that away: chmod o= " + strPath);
    }
    const std::string strFolder = std::filesystem::path(strPath).parent_path().string();
    if (::stat(strFolder.c_str(), &status) == 0 && (status.st_mode & S_IWOTH) != 0 && (status.st_mode & S_ISVTX) == 0) {
        vecDangers.push_back("everybody may replace the store in its folder; take that away: chmod o-w " + strFolder);
    }
    return vecDangers;
}

void SetFileSystemProbe(FileSystemProbe fnProbe) {
    GetProbe() = fnProbe ? std::move(fnProbe) : AskSystem;
}
