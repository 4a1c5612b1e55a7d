#pragma once

#include <string>

#include "platform/common/PlatformExport.h"

namespace SYS {

/** Waits until the disk holds the open file. @return 0, or the number of what the system says against it */
DLP_PLATFORM_API int Synchronise(int iFile);

/**
 * Waits until the disk holds the names that were made, changed and removed in the folder: until then a power cut undoes
 * any of them.
 * @param strFolder "" is the working directory
 * @return 0, or the number of the error; 0 also where nobody can do it: the folder may not be read, or its file system
 * knows no such request
 */
DLP_PLATFORM_API int SynchroniseFolder(const std::string& strFolder);

}  // namespace SYS
