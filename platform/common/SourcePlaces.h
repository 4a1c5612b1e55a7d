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
    /** What a byte is behind. */
    struct SPassed {
        std::size_t iCodePoints = 0;
        std::size_t iLines = 0;      ///< ends of lines
        std::size_t iLineStart = 0;  ///< offset of the first byte of its line
    };

    void Pass(std::size_t iFrom, std::size_t iBehind, SPassed& passed) const;
    SPassed GetPassed(std::size_t iOffset) const;

    std::string_view m_strText;
    std::vector<SPassed> m_vecBlocks;  ///< of the first byte of each block
};
