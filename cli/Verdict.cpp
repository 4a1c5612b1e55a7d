#include "cli/Verdict.h"

#include <cstddef>

#include "cli/Signals.h"

namespace {

struct SVerdict {
    const char* pName;
    int iExitCode;  ///< below 0: that of the signal
};

constexpr SVerdict VERDICTS[] = {
    {"done", 0},  {"findings", 1}, {"invalid", 2}, {"usage", 3},
    {"store", 4}, {"output", 4},   {"memory", 4},  {"interrupted", -1},
};

const SVerdict& Row(EVerdict eVerdict) {
    return VERDICTS[static_cast<std::size_t>(eVerdict)];
}

}  // namespace

const char* GetVerdictName(EVerdict eVerdict) {
    return Row(eVerdict).pName;
}

int GetExitCode(EVerdict eVerdict) {
    const int iExitCode = Row(eVerdict).iExitCode;
    return iExitCode < 0 ? Signals::GetExitCode() : iExitCode;
}

EVerdict GetWorse(EVerdict eFirst, EVerdict eSecond) {
    return GetExitCode(eSecond) > GetExitCode(eFirst) ? eSecond : eFirst;
}
