#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "platform/common/PlatformExport.h"

/** A place in a text; both numbers count from 1, columns in code points. */
struct SPlace {
    std::size_t iLine = 0;  ///< 0: there is no such place
    std::size_t iColumn = 0;
};

/** Finds the line and column of offsets in one text, each in a time that does not grow with the text's length. */
class DLP_PLATFORM_API CSourcePlaces {
  public:
    /** @param strText must outlive this object; bytes that are no UTF-8 are fine */
    explicit CSourcePlaces(std::string_view strText);

    /** @return the place of a byte; none for an offset beyond the text's end */
    SPlace Find(std::size_t iOffset) const;

    /** @return how many code points stand before a byte, which must not lie beyond the text's end */
    std::size_t CountCodePoints(std::size_t iOffset) const;

  private:
    std::string_view m_strText;
    std::vector<std::size_t> m_vecLines;   ///< offset of each line's first byte
    std::vector<std::size_t> m_vecBlocks;  ///< code points before each block
};
