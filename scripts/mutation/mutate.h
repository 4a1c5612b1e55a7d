#pragma once

#include <atomic>
#include <cstdio>
#include <cstdlib>

// Included into every file of a mutated build: says which mutant of the build is the one in force.
//   DLP_MUTANT=17       the seventeenth
//   DLP_MUTANT_TRACE=F  none; the numbers of those that are reached are appended to F, each once per process

namespace mutate {

constexpr int NONE = 0;
constexpr int TRACING = -1;
constexpr int UNKNOWN = -2;

inline std::atomic<int> s_iChosen{UNKNOWN};
inline std::atomic<bool> s_aReached[1 << 16];

[[gnu::noinline]] inline bool Ask(int iMutant) noexcept {
    const char* pTrace = std::getenv("DLP_MUTANT_TRACE");
    if (s_iChosen == UNKNOWN) {
        const char* pChosen = std::getenv("DLP_MUTANT");
        s_iChosen = pTrace != nullptr ? TRACING : pChosen != nullptr ? std::atoi(pChosen) : NONE;
    }
    if (s_iChosen == TRACING && pTrace != nullptr && !s_aReached[iMutant].exchange(true)) {
        if (std::FILE* pFile = std::fopen(pTrace, "a")) {
            std::fprintf(pFile, "%d\n", iMutant);
            std::fclose(pFile);
        }
    }
    return s_iChosen == iMutant;
}

inline bool Is(int iMutant) noexcept {
    const int iChosen = s_iChosen.load(std::memory_order_relaxed);
    return iChosen == iMutant || (iChosen < NONE && Ask(iMutant));
}

}  // namespace mutate
