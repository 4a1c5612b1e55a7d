#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

/** @return different texts of 16 bytes, to all of which the standard library's hash, which has no secret, gives one
 * value */
inline std::vector<std::string> MakeTextsOfOneHash(std::uint64_t iCount) {
    constexpr std::uint64_t FACTOR = 0xC6A4A7935BD1E995U;
    constexpr std::uint64_t SEED = 0xC70F6907U;
    constexpr std::uint64_t STATE = 1;  // in which all of them leave the hash; any other would do
    std::uint64_t iInverse = FACTOR;
    for (int i = 0; i < 6; ++i) {
        iInverse *= 2 - FACTOR * iInverse;
    }
    const auto fnMix = [](std::uint64_t iValue) { return iValue ^ (iValue >> 47U); };  // its own inverse
    std::vector<std::string> vecTexts;
    for (std::uint64_t i = 0; i < iCount; ++i) {
        const std::uint64_t iBetween = ((SEED ^ (16 * FACTOR)) ^ (fnMix(i * FACTOR) * FACTOR)) * FACTOR;
        const std::uint64_t aHalves[] = {i, fnMix((iBetween ^ (STATE * iInverse)) * iInverse) * iInverse};
        vecTexts.emplace_back(reinterpret_cast<const char*>(aHalves), sizeof aHalves);
    }
    return vecTexts;
}
