#include "cli/FileIdentity.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace {

/** SQLite's file format, 1.3 The Database Header: the first sixteen bytes, a zero among them. */
constexpr std::string_view DATABASE_HEADER("SQLite format 3\0", 16);

}  // namespace

bool IsSameFile(const std::string& strLeft, const std::string& strRight) {
    std::error_code error;
    return strLeft == strRight || std::filesystem::equivalent(strLeft, strRight, error);
}

bool IsDatabase(const std::string& strPath) {
    std::error_code error;
    std::array<char, DATABASE_HEADER.size()> aHeader{};
    // Nothing but a regular file is opened: a pipe would lose what is read from it.
    return std::filesystem::is_regular_file(strPath, error) &&
           std::ifstream(strPath, std::ios::binary).read(aHeader.data(), aHeader.size()) &&
           std::string_view(aHeader.data(), aHeader.size()) == DATABASE_HEADER;
}
