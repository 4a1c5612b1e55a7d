#pragma once

#include <cstddef>
#include <string_view>

// What stands in a text that is no XML, as far as that can be said of it.

namespace FaultyText {

inline constexpr std::string_view SPACE = " \t\r\n";
inline constexpr std::string_view QUOTES = "\"'";

/** @return whether the character may stand in a name or in the number of a character */
bool IsNameCharacter(char c);
/** @return the name that the text begins with */
std::string_view TakeName(std::string_view strText);
/** @return whether the text begins with a name, "=" and a quotation mark */
bool IsAttribute(std::string_view strText);
std::string_view SkipSpace(std::string_view strText);
std::string_view TrimEnd(std::string_view strText);

struct SLastValue {
    std::size_t iQuote = 0;  ///< where it begins, in the tag
    bool bOpen = false;
};
/** @return the last value in what a tag begins with */
SLastValue FindLastValue(std::string_view strTag);
/** @return whether what a tag begins with ends in a value */
bool IsInValue(std::string_view strTag);

}  // namespace FaultyText
