#include "cli/FileIdentity.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

namespace {

/** SQLite's file format, 1.3 The Database Header: the first sixteen bytes, a zero among them. */
constexpr std::string_view DATABASE_HEADER("SQLite format 3\0", 16);

constexpr const char* SIDE_FILES[] = {"-wal", "-shm", "-journal", "-writer"};

}  // namespace

bool IsSameFile(const std::string& strLeft, const std::string& strRight) {
    std::error_code error;
    return strLeft == strRight || std::filesystem::equivalent(strLeft, strRight, error);
}

bool IsOfStore(const std::string& strPath, const std::string& strStore) {
    if (strStore.empty()) {
        return false;
    }
    std::error_code error;
    const std::string strPlace = std::filesystem::weakly_canonical(strPath, error).string();
    const std::string strTarget = std::filesystem::weakly_canonical(strStore, error).string();
    return IsSameFile(strPath, strStore) ||
           std::any_of(std::begin(SIDE_FILES), std::end(SIDE_FILES), [&](const char* pSideFile) {
               return strPlace == strTarget + pSideFile || strPath == strStore + pSideFile;
           });
}

bool IsDatabase(const std::string& strPath) {
    std::error_code error;
    std::array<char, DATABASE_HEADER.size()> aHeader{};
    // Nothing but a regular file is opened: a pipe would lose what is read from it.
    return std::filesystem::is_regular_file(strPath, error) &&
           std::ifstream(strPath, std::ios::binary).read(aHeader.data(), aHeader.size()) &&
           std::string_view(aHeader.data(), aHeader.size()) == DATABASE_HEADER;
}
