#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/** A policy file, read whole. The text begins at its first "<"; what stands before it is passed over. */
struct SPolicyFile {
    std::string strBytes;    ///< the file as it is on disk
    std::size_t iStart = 0;  ///< offset of the first "<"; the size of the file when there is none

    std::string_view Text() const { return std::string_view(strBytes).substr(iStart); }
};

/**
 * Reads a policy file, as every file import does, and makes sure that its text is UTF-8.
 * @param strPath UTF-8; backslashes may stand for slashes
 * @throws std::runtime_error "Open DLP template policy file failed!" when it cannot be opened or read whole
 * @throws OS::CException with the byte offset in the text when that is not UTF-8
 */
SPolicyFile ReadPolicyFile(const std::string& strPath);
