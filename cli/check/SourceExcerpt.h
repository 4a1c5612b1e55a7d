#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/** A line of a file as a terminal shows it, and where in it a caret points. */
struct SExcerpt {
    std::string strLine;     ///< printable; cut at both ends, with an ellipsis, when it is long
    std::size_t iCaret = 0;  ///< columns of the terminal before the caret
};

/**
 * @param strBytes a whole file; what is no UTF-8 shows as U+FFFD
 * @param iOffset a byte of it, or its end
 * @return the line of that byte; takes a time that does not depend on the file's size
 */
SExcerpt MakeExcerpt(std::string_view strBytes, std::size_t iOffset);

inline constexpr const char CARET[] = "^";

/** @return two lines: the excerpt behind its line's number, and the caret */
std::string MakeExcerptLines(const SExcerpt& excerpt, std::size_t iLine, const std::string& strCaret = CARET);
