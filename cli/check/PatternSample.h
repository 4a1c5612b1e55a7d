#pragma once

#include <string>
#include <string_view>
#include <vector>

/** A rough reading of a regular expression: what texts that almost match it could be made of. */
struct SPatternSample {
    std::vector<std::string> vecCharacters;  ///< one character for each part that stands for one, in its order
    bool bCanRunAway = false;                ///< has repetitions that could share characters
};

/** @param strPattern UTF-8 that the engine takes */
SPatternSample SamplePattern(std::string_view strPattern);
