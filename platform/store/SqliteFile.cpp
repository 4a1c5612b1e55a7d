#include "platform/store/SqliteFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "platform/store/StoreError.h"

namespace {

constexpr mode_t FOLDER_MODE = 0700;
constexpr mode_t FILE_MODE = 0600;
constexpr const char CANNOT_READ[] = "cannot read the file";

[[noreturn]] void ThrowSystemError(const std::string& strUrl, const std::string& strWhat, int iError) {
    ThrowStoreError(strUrl, StoreDoing::OPENING, strWhat + ": " + std::generic_category().message(iError), iError);
}

void CheckRegular(const struct stat& status, const std::string& strUrl) {
    if (!S_ISREG(status.st_mode)) {
        ThrowStoreError(strUrl, StoreDoing::OPENING, S_ISDIR(status.st_mode) ? "it is a folder" : "it is no file");
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
            ::chmod(made.c_str(), FOLDER_MODE);
            continue;
        }
        const int iError = errno;
        std::error_code error;
        if (!std::filesystem::exists(made, error)) {
            ThrowSystemError(strUrl, "cannot make the folder " + made.string(), iError);
        }
    }
}

}  // namespace

bool MakeSqliteFile(const std::string& strPath, const std::string& strUrl) {
    struct stat status {};
    if (::stat(strPath.c_str(), &status) == 0) {
        CheckRegular(status, strUrl);
        if (!IsAccessible(strPath, R_OK | W_OK)) {
            ThrowSystemError(strUrl, "cannot read and write the file", errno);
        }
        return status.st_size == 0;
    }
    MakeFolders(std::filesystem::path(strPath).parent_path(), strUrl);
    const int iFile = ::open(strPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, FILE_MODE);
    if (iFile >= 0) {
        ::fchmod(iFile, FILE_MODE);
        ::close(iFile);
    } else if (errno != EEXIST) {  // another process may have been faster
        ThrowSystemError(strUrl, "cannot make the file", errno);
    }
    return true;
}

bool FindSqliteFile(const std::string& strPath, const std::string& strUrl) {
    struct stat status {};
    if (::stat(strPath.c_str(), &status) != 0) {
        ThrowSystemError(strUrl, CANNOT_READ, errno);
    }
    CheckRegular(status, strUrl);
    if (!IsAccessible(strPath, R_OK)) {
        ThrowSystemError(strUrl, CANNOT_READ, errno);
    }
    return IsAccessible(strPath, W_OK);
}
