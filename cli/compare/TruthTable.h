#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "templates/MatchRule.h"

/** The truth of something for every way in which a few conditions can hold: bit i of a way's number is condition i. */
class CTruthTable {
  public:
    static constexpr std::size_t MAX_CONDITIONS = 16;

    /** @param iConditions at most MAX_CONDITIONS @param bTrue always, or never */
    CTruthTable(std::size_t iConditions, bool bTrue);
    /** True where that condition holds. */
    static CTruthTable Of(std::size_t iConditions, std::size_t iCondition);

    /** Joins another table of as many conditions; EXCEPT is "and not", UNKNOWN is AND. */
    void Join(EOperator eOperator, const CTruthTable& other);
    /** @return whether it changes anywhere with that condition alone, where it is possible with it and without */
    bool DependsOn(std::size_t iCondition, const CTruthTable& possible) const;
    /** Of two tables over as many conditions. */
    friend bool operator==(const CTruthTable& left, const CTruthTable& right) {
        return left.m_vecWords == right.m_vecWords;
    }
    /** The truth of all ways, a bit each. */
    const std::vector<std::uint64_t>& GetWords() const { return m_vecWords; }
    /** @return a true way in which the fewest conditions hold; none when it is never true */
    std::optional<std::uint32_t> FindFewest() const;

  private:
    std::size_t m_iWays;
    std::vector<std::uint64_t> m_vecWords;
};
