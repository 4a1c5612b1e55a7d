// Loaded before the C library, it sets the clock of a program back again and again:
//   DLP_FAULT_CLOCK=SECONDS   each look at it shows that much less than the one before
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>

namespace {

long StepBack() {
    static const char* const s_pSeconds = std::getenv("DLP_FAULT_CLOCK");
    static const long s_iSeconds = s_pSeconds == nullptr ? 0 : std::atol(s_pSeconds);
    static long s_iBack = 0;
    return s_iBack += s_iSeconds;
}

}  // namespace

/** Only the time of day can be set. */
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t iClock, timespec* pTime) noexcept {
    const long iResult = ::syscall(SYS_clock_gettime, iClock, pTime);
    if (iResult == 0 && iClock == CLOCK_REALTIME) {
        pTime->tv_sec -= StepBack();
    }
    return static_cast<int>(iResult);
}

extern "C" __attribute__((visibility("default"))) int gettimeofday(timeval* pTime, void*) noexcept {
    timespec now{};
    const int iResult = clock_gettime(CLOCK_REALTIME, &now);
    pTime->tv_sec = now.tv_sec;
    pTime->tv_usec = now.tv_nsec / 1000;
    return iResult;
}

extern "C" __attribute__((visibility("default"))) std::time_t time(std::time_t* pTime) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (pTime != nullptr) {
        *pTime = now.tv_sec;
    }
    return now.tv_sec;
}
