#include <cstddef>
#include <cstdint>

#include "fuzz/Targets.h"

/** One program for each target; its name is compiled in. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t iSize) {
    static const Fuzz::STarget* const s_pTarget = Fuzz::FindTarget(DLP_FUZZ_TARGET);
    s_pTarget->fnRun({reinterpret_cast<const char*>(pData), iSize});
    return 0;
}
