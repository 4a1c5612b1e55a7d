#pragma once

/** What terminals take as the beginning and the end of coloured text. */
namespace Colours {

inline constexpr const char RED[] = "\x1b[31m";
inline constexpr const char GREEN[] = "\x1b[32m";
inline constexpr const char YELLOW[] = "\x1b[33m";
inline constexpr const char CYAN[] = "\x1b[36m";
inline constexpr const char PLAIN[] = "\x1b[0m";

}  // namespace Colours
