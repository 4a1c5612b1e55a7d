#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

/** A place in a text; both numbers count from 1, columns in code points. */
struct SPlace {
    std::size_t iLine = 0;  ///< 0: there is no such place
    std::size_t iColumn = 0;
};

/** Finds the line and column of offsets in one text, each in a time that does not grow with the text's length. */
class CSourcePlaces {
  public:
    /** @param strText must outlive this object; bytes that are no UTF-8 are fine */
    explicit CSourcePlaces(std::string_view strText);

    /** @return the place of a byte; none for an offset beyond the text's end */
    SPlace Find(std::size_t iOffset) const;

  private:
    std::size_t CountBefore(std::size_t iOffset) const;

    std::string_view m_strText;
    std::vector<std::size_t> m_vecLines;   ///< offset of each line's first byte
    std::vector<std::size_t> m_vecBlocks;  ///< code points before each block
};
