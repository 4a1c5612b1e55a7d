#include "platform/common/TextHash.h"

#define XXH_INLINE_ALL
#include <sys/random.h>
#include <unistd.h>
#include <xxhash.h>

#include <ctime>

namespace {

/** Where things lie is different in each process, and no moment comes again. */
std::uint64_t MakeSecret() noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const std::uint64_t aDiffers[] = {static_cast<std::uint64_t>(now.tv_sec), static_cast<std::uint64_t>(now.tv_nsec),
                                      static_cast<std::uint64_t>(getpid()), reinterpret_cast<std::uintptr_t>(&now),
                                      reinterpret_cast<std::uintptr_t>(&MakeSecret)};
    return XXH3_64bits(aDiffers, sizeof aDiffers);
}

}  // namespace

namespace OS {

std::uint64_t DrawSecret() noexcept {
    std::uint64_t iSecret = 0;
    const bool bDrawn = getrandom(&iSecret, sizeof iSecret, GRND_NONBLOCK) == sizeof iSecret;
    return bDrawn ? iSecret : MakeSecret();
}

std::uint64_t ProcessSecret() noexcept {
    static const std::uint64_t s_iSecret = DrawSecret();
    return s_iSecret;
}

std::uint64_t HashText(std::string_view strText, std::uint64_t iSecret) noexcept {
    return XXH3_64bits_withSeed(strText.data(), strText.size(), iSecret);
}

}  // namespace OS
