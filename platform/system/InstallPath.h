#pragma once

#include <string>

#include "platform/common/PlatformExport.h"
#include "platform/common/x_wstring.h"

namespace SYS {

/**
 * The installation directory, under which config/ stands: what SetInstallPath set, else $DLP_INSTALL_PATH, else found
 * from where this library's own file lies (the source tree of a build, ../share/dlpparser of an installation, moved or
 * not), else the directory compiled in. Safe on any thread.
 */
DLP_PLATFORM_API OS::x_wstring GetInstallPath();

/** Sets the installation directory for this process; an empty text goes back to finding it. */
DLP_PLATFORM_API void SetInstallPath(const OS::x_wstring& strPath);

namespace Detail {
/** @return the installation directory that belongs to a library or program file at this absolute path */
DLP_PLATFORM_API std::string FindInstallPath(const std::string& strOwnFile);
}  // namespace Detail

}  // namespace SYS
