#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/check/CFindings.h"

/** A text with its replacements, and where what stood in it stands now. */
class CFixedText {
  public:
    /** @param findings with replacements that are apart from each other, in the order of the text */
    CFixedText(std::string_view strText, const CFindings& findings);

    const std::string& GetText() const { return m_strText; }
    std::string TakeText() { return std::move(m_strText); }
    /** @return where a byte of the text before stands now; within what was replaced, not behind its replacement */
    std::size_t Find(std::size_t iOffset) const;

  private:
    struct SReplaced {
        std::size_t iBefore;
        std::size_t iBehindBefore;
        std::size_t iNow;
        std::size_t iBehindNow;
    };

    std::string m_strText;
    std::vector<SReplaced> m_vecReplaced;
};
