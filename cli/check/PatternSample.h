#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/** A rough reading of a regular expression: what texts that almost match it could be made of. */
struct SPatternSample {
    std::vector<std::string> vecCharacters;  ///< one character for each part that stands for one, in its order
    std::string strText;                     ///< the same with what is repeated as often as it must be, to a bound
    bool bCanRunAway = false;                ///< has repetitions that could share characters
};

/** @param strPattern UTF-8 that the engine takes */
SPatternSample SamplePattern(std::string_view strPattern);

/** @return where a pattern first calls itself or a part of itself; its beginning when it does not */
std::size_t FindPatternCall(std::string_view strPattern);
