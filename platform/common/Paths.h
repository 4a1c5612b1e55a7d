#pragma once

#include <string>

#include "platform/common/PlatformExport.h"
#include "platform/common/x_wstring.h"

namespace NS_StringUtils {

/** Joins a folder and a relative path with exactly one separator between them; an empty part adds none. */
DLP_PLATFORM_API OS::x_wstring concatPath(const OS::x_wstring& strFolder, const OS::x_wstring& strRelative);

}  // namespace NS_StringUtils

namespace OS {

/**
 * Paths may be written with backslashes. The path as given wins; when nothing stands there, the same path with slashes.
 * @param strPath UTF-8
 * @return the path to open; strPath itself when neither exists
 */
DLP_PLATFORM_API std::string ResolvePath(const std::string& strPath);

/**
 * Reads a whole file.
 * @param strPath UTF-8, resolved with ResolvePath
 * @return its bytes
 * @throws OS::CException when it cannot be opened, is a directory or cannot be read to its end
 */
DLP_PLATFORM_API std::string ReadWholeFile(const std::string& strPath);

}  // namespace OS
