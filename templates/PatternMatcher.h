#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "templates/Pattern.h"

/**
 * Searches one text for a pattern, again and again. What failed once is not tried again, in one search or a later one,
 * so the time of all searches together grows linearly with the text. One thread at a time.
 */
class CPatternMatcher {
  public:
    /** A part of the text, from its start to before its end. */
    struct SSpan {
        std::size_t iStart = 0;
        std::size_t iEnd = 0;
    };

    /** @param pattern, strText must outlive the matcher */
    CPatternMatcher(const CPattern& pattern, std::wstring_view strText);

    /** Finds the leftmost match that begins at iStart or later. @return whether there is one */
    bool Search(std::size_t iStart);

    /** @return where the last match was */
    SSpan GetMatch() const { return m_match; }
    /**
     * @return where the group matched, for the last time if it was repeated
     * @throws CResultException INVALID_ARGUMENT when the pattern has no such group, FAIL when it took no part
     */
    SSpan GetGroup(std::size_t iGroup) const;
    std::wstring_view Text(SSpan span) const { return m_strText.substr(span.iStart, span.iEnd - span.iStart); }

    /** @return the steps that all matchers of this thread have made so far; shows what a search costs */
    static std::uint64_t GetStepCount();

  private:
    static constexpr std::size_t NOWHERE = static_cast<std::size_t>(-1);
    static constexpr std::size_t TRY = static_cast<std::size_t>(-1);

    /** To be done when the way taken fails: go on at another step, or put the end of a group back. */
    struct SPending {
        std::size_t iStep;      ///< TRY: from here
        std::size_t iSlot;      ///< TRY, or which end of which group
        std::size_t iPosition;  ///< in the text
    };

    bool MatchAt(std::size_t iStart);
    bool Follow(std::size_t iStep, std::size_t iPosition);
    bool IsTried(std::size_t iStep, std::size_t iPosition);
    void ForgetAt(std::size_t iPosition);

    const CPattern& m_pattern;
    std::wstring_view m_strText;
    std::vector<bool> m_vecTried;  ///< per position and step
    std::vector<SPending> m_vecPending;
    std::vector<std::size_t> m_vecSlots;  ///< start and end per group
    std::size_t m_iTrusted = 0;           ///< what m_vecTried says of earlier positions is of no use
    SSpan m_match;
};
