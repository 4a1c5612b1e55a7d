#pragma once

#include <algorithm>
#include <iterator>

struct SCharacters {
    wchar_t cFirst;
    wchar_t cLast;
};

/**
 * The C0 and C1 controls, the separators of lines and the marks of direction and annotations, and what the Unicode
 * Standard says may be left out of what is shown (Default_Ignorable_Code_Point).
 */
inline constexpr SCharacters MISLEADING[] = {
    {0x0000, 0x001F},    // controls
    {0x007F, 0x009F},    // controls
    {0x00AD, 0x00AD},    // soft hyphen
    {0x034F, 0x034F},    // combining grapheme joiner
    {0x061C, 0x061C},    // Arabic letter mark
    {0x115F, 0x1160},    // Hangul fillers
    {0x17B4, 0x17B5},    // Khmer inherent vowels
    {0x180B, 0x180F},    // Mongolian selectors and separator
    {0x200B, 0x200F},    // of no width, joiners, marks
    {0x2028, 0x2029},    // line and paragraph
    {0x202A, 0x202E},    // embeddings and overrides
    {0x2060, 0x206F},    // word joiner, invisible operators, isolates, shapes
    {0x3164, 0x3164},    // Hangul filler
    {0xFE00, 0xFE0F},    // variations
    {0xFEFF, 0xFEFF},    // byte order mark
    {0xFFA0, 0xFFA0},    // Hangul filler of half width
    {0xFFF0, 0xFFF8},    // not given yet
    {0xFFF9, 0xFFFB},    // annotations
    {0x1BCA0, 0x1BCA3},  // of shorthand
    {0x1D173, 0x1D17A},  // of music
    {0xE0000, 0xE0FFF},  // tags and more variations
};

inline bool IsMisleading(wchar_t c) {
    return std::any_of(std::begin(MISLEADING), std::end(MISLEADING),
                       [c](const SCharacters& some) { return c >= some.cFirst && c <= some.cLast; });
}
