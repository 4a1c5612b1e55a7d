#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** What a pattern does with short texts. */
enum class EShortTrial {
    NOTHING_ODD,
    MATCHES_EMPTY,     ///< somewhere it matches without a character
    RECURSES_FOREVER,  ///< it calls itself where it already is
};

/** A regular expression, tried with PCRE2. */
class CPatternProbe {
  public:
    /** How many steps one attempt at a match may take; far more than any that does not try the same again and again. */
    static constexpr std::uint32_t MAX_STEPS = 200000;

    struct SRefusal {
        std::string strWhy;
        std::size_t iByte;  ///< in the pattern
    };

    /** @param strPattern UTF-8 */
    explicit CPatternProbe(std::string_view strPattern);
    CPatternProbe(const CPatternProbe&) = delete;
    CPatternProbe& operator=(const CPatternProbe&) = delete;
    ~CPatternProbe();

    /** @return why the pattern is none; nothing when it is one */
    const std::optional<SRefusal>& GetRefusal() const { return m_refusal; }
    /** @return what shows when it is tried at every place of some short texts */
    EShortTrial TryShortTexts() const;
    /**
     * @param iEffort how much may still be tried, in units of an attempt of few steps; what was used is taken off
     * @return the length in characters of a text for which MAX_STEPS were not enough; 0 when there is none; nothing
     *         when the effort ended before that was known
     */
    std::optional<std::size_t> FindRunaway(std::size_t& iEffort) const;

  private:
    struct SEngine;

    std::optional<bool> RunsAway(const std::string& strSubject, std::size_t iStart, std::size_t& iEffort) const;

    std::string m_strPattern;
    std::unique_ptr<SEngine> m_pEngine;
    std::optional<SRefusal> m_refusal;
};
