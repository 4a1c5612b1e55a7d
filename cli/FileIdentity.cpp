#include "cli/FileIdentity.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

#include <unistd.h>

#include "platform/store/SqliteFile.h"

namespace {

namespace fs = std::filesystem;

constexpr int MAX_LINKS = 40;
/** SQLite's file format, 1.3 The Database Header: the first sixteen bytes, a zero among them. */
constexpr std::string_view DATABASE_HEADER("SQLite format 3\0", 16);

/** Two paths of one file that is not there yet have one place. */
fs::path FindPlace(const std::string& strPath) {
    std::error_code error;
    const fs::path place = fs::weakly_canonical(FollowLinks(strPath), error);
    return error ? fs::path(strPath) : place;
}

}  // namespace

int GetDescriptor(const fs::path& path) {
    std::error_code error;
    const fs::path folder = fs::canonical(path.parent_path(), error);
    const bool bDescriptors = !error && folder.filename() == "fd" && folder.parent_path().parent_path() == "/proc";
    return bDescriptors ? std::atoi(path.filename().c_str()) : -1;
}

fs::path FollowLinks(fs::path path, const std::function<void(const fs::path& link)>& fnLink) {
    std::error_code error;
    for (int i = 0; i < MAX_LINKS && fs::is_symlink(path, error) && GetDescriptor(path) < 0; ++i) {
        if (fnLink) {
            fnLink(path);
        }
        const fs::path target = fs::read_symlink(path, error);
        path = target.is_absolute() ? target : path.parent_path() / target;
    }
    return path;
}

bool IsForeign(const struct stat& status, const fs::path& folder) {
    struct stat folderStatus {};
    return ::stat(folder.c_str(), &folderStatus) == 0 && (folderStatus.st_mode & S_IWOTH) != 0 &&
           status.st_uid != ::geteuid() && status.st_uid != folderStatus.st_uid;
}

bool IsSameFile(const std::string& strLeft, const std::string& strRight) {
    std::error_code error;
    return strLeft == strRight || fs::equivalent(strLeft, strRight, error) || FindPlace(strLeft) == FindPlace(strRight);
}

bool IsOfStore(const std::string& strPath, const std::string& strStore) {
    if (strStore.empty()) {
        return false;
    }
    const fs::path place = FindPlace(strPath);
    const std::string strTarget = FindPlace(strStore).string();
    return IsSameFile(strPath, strStore) ||
           std::any_of(std::begin(SqliteSuffix::ALL), std::end(SqliteSuffix::ALL), [&](const char* pSideFile) {
               return place == strTarget + pSideFile || strPath == strStore + pSideFile;
           });
}

bool IsBesideDatabase(const std::string& strPath) {
    const std::string strPlace = FindPlace(strPath).string();
    return std::any_of(std::begin(SqliteSuffix::ALL), std::end(SqliteSuffix::ALL), [&](std::string_view strSideFile) {
        return strPlace.ends_with(strSideFile) && IsDatabase(strPlace.substr(0, strPlace.size() - strSideFile.size()));
    });
}

bool IsDatabase(const std::string& strPath) {
    std::error_code error;
    std::array<char, DATABASE_HEADER.size()> aHeader{};
    // Nothing but a regular file is opened: a pipe would lose what is read from it.
    return fs::is_regular_file(strPath, error) &&
           std::ifstream(strPath, std::ios::binary).read(aHeader.data(), aHeader.size()) &&
           std::string_view(aHeader.data(), aHeader.size()) == DATABASE_HEADER;
}
