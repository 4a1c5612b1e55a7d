#pragma once

#include <string>
#include <string_view>

#include "platform/common/PlatformExport.h"

/**
 * The library goes on without a data file (texts by number, the map of asset names, the predefined lists) that it cannot
 * read, as it does without one that is missing. Who must not go on with less than there is asks here.
 */
namespace OS {

/**
 * Keeps the first failure since the last TakeDataFileFailure on this thread.
 * @param iError the system's number; that a file is not there is no failure, nor is what the system has not reported (0)
 */
DLP_PLATFORM_API void NoteDataFileFailure(int iError, std::string_view strWhat) noexcept;

/** @return the message of the failure that was kept, its first kilobyte at most; it is forgotten. Empty when none was */
DLP_PLATFORM_API std::string TakeDataFileFailure();

}  // namespace OS
