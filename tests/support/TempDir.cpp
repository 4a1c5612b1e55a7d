#include "tests/support/TempDir.h"

#include <stdlib.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace fs = std::filesystem;

CTempDir::CTempDir() : m_strPath(fs::temp_directory_path() / "dlpparser-test-XXXXXX") {
    if (::mkdtemp(m_strPath.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), m_strPath);
    }
}

CTempDir::~CTempDir() {
    std::error_code error;
    fs::remove_all(m_strPath, error);
}

std::string CTempDir::Path(const std::string& strRelative) const {
    return strRelative.empty() ? m_strPath : m_strPath + "/" + strRelative;
}

std::string CTempDir::Write(const std::string& strRelative, const std::string& strContent) const {
    const fs::path path = Path(strRelative);
    fs::create_directories(path.parent_path());
    std::ofstream file;
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.open(path, std::ios::binary);
    file << strContent << std::flush;
    return path;
}

std::string CTempDir::MakeFolder(const std::string& strRelative) const {
    fs::create_directories(Path(strRelative));
    return Path(strRelative);
}

std::string CTempDir::Read(const std::string& strRelative) const {
    std::ifstream file(Path(strRelative), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
