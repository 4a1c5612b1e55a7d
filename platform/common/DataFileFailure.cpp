#include "platform/common/DataFileFailure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <iterator>

namespace OS {

namespace {

constexpr int NO_FAILURE[] = {0, ENOENT, ENOTDIR, EISDIR};

/** Without a destructor: there must be memory to register one. */
thread_local std::array<char, 1024> s_aFailure{};

}  // namespace

void NoteDataFileFailure(int iError, std::string_view strWhat) noexcept {
    const bool bFailure = std::find(std::begin(NO_FAILURE), std::end(NO_FAILURE), iError) == std::end(NO_FAILURE);
    if (bFailure && s_aFailure[0] == '\0') {
        strWhat.copy(s_aFailure.data(), s_aFailure.size() - 1);
    }
}

std::string TakeDataFileFailure() {
    std::string strFailure = s_aFailure.data();
    s_aFailure.fill('\0');
    return strFailure;
}

}  // namespace OS
