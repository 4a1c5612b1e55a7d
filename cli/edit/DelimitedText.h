#pragma once

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/** Tables as text: rows end with CR LF or LF, cells are quoted as RFC 4180 has it, whatever separates them. */
namespace DelimitedText {

struct SCell {
    std::string_view strText;
    std::size_t iOffset = 0;  ///< where it begins, its quotation mark included
};

struct SRow {
    std::vector<SCell> vecCells;  ///< the first ones, as many as were asked for
    std::size_t iCells = 0;       ///< how many there are
};

/** A text that is no such table. */
class CFault : public std::runtime_error {
  public:
    CFault(const std::string& strWhy, std::size_t iOffset) : std::runtime_error(strWhy), m_iOffset(iOffset) {}
    std::size_t GetOffset() const { return m_iOffset; }

  private:
    std::size_t m_iOffset;
};

/**
 * Hands over every row, one at a time; lines with nothing in them are no rows.
 * @param iStart where the table begins in the text, from whose start places count
 * @param iMost no more cells of a row are handed over
 * @param fnRow what it is given is valid until it returns; what it throws passes
 * @throws CFault
 */
void Read(std::string_view strText, std::size_t iStart, char cSeparator, std::size_t iMost,
          const std::function<void(const SRow&)>& fnRow);

/**
 * @return one row with its end, CR LF; between commas, cells with a semicolon or a tab are quoted too, which others
 * take for separators
 */
std::string Write(const std::vector<std::string>& vecCells, char cSeparator);

/**
 * A spreadsheet runs a cell that begins with one of = + - @, in some languages their wide forms too (U+FF1D, U+FF0B,
 * U+FF0D, U+FF20), or a control character as a formula. An apostrophe before it makes it text; one that stands there
 * already gets another, so that nothing is lost on the way back.
 */
std::string Disarm(const std::string& strText);
/** @return the text that Disarm was given */
std::string_view Rearm(std::string_view strText);

}  // namespace DelimitedText
