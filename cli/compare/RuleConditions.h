#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "templates/MatchRule.h"

/** What one building block asks for: that a keyword list matches, or that an expression occurs so often. */
struct SCondition {
    EElementType eType = EElementType::UNKNOWN;
    std::wstring strName;
    std::int32_t iCount = 0;  ///< of expressions only; 0 always holds

    friend bool operator<(const SCondition& left, const SCondition& right) {
        return std::tie(left.eType, left.strName, left.iCount) < std::tie(right.eType, right.strName, right.iCount);
    }
    friend bool operator==(const SCondition& left, const SCondition& right) {
        return left.eType == right.eType && left.strName == right.strName && left.iCount == right.iCount;
    }
};

/** Conditions by number, in the order of their first appearance. */
class CConditions {
  public:
    std::size_t Add(const SRuleElement& element);
    std::size_t GetCount() const { return m_vecConditions.size(); }
    const SCondition& Get(std::size_t iCondition) const { return m_vecConditions[iCondition]; }

  private:
    std::vector<SCondition> m_vecConditions;
    std::map<SCondition, std::size_t> m_mapNumbers;
};

/** Something and how it is joined to what stands before it; of the first, AND. */
template <class T>
struct SJoined {
    EOperator eOperator;
    T value;

    friend bool operator==(const SJoined& left, const SJoined& right) {
        return left.eOperator == right.eOperator && left.value == right.value;
    }
};

/**
 * Rules without what says nothing: a missing operator is AND, the first one's is AND too, a rule without elements is
 * left out. Elements, and rules likewise, join from left to right without precedence; EXCEPT is "and not".
 */
using RuleText = std::vector<SJoined<std::size_t>>;
using RulesText = std::vector<SJoined<RuleText>>;

/** @param conditions learns every condition of the rules */
RulesText MakeRulesText(const std::vector<SMatchRule>& vecRules, CConditions& conditions);

/** @return whether each element may hold or not, whatever the others do: then there is none that does not matter */
bool AreIndependent(const std::vector<SMatchRule>& vecRules);

/**
 * Works out rules over whatever stands for a condition's truth.
 * @param fnOf gives it for a condition's number
 * @param fnJoin joins a second one to the first: fnJoin(first, operator, second)
 * @return the truth of all rules; none when there is no rule
 */
template <class T, class Of, class Join>
std::optional<T> WorkOut(const RulesText& rules, const Of& fnOf, const Join& fnJoin) {
    std::optional<T> all;
    for (const SJoined<RuleText>& rule : rules) {
        std::optional<T> one;
        for (const SJoined<std::size_t>& element : rule.value) {
            if (one) {
                fnJoin(*one, element.eOperator, fnOf(element.value));
            } else {
                one = fnOf(element.value);
            }
        }
        if (all) {
            fnJoin(*all, rule.eOperator, std::move(*one));
        } else {
            all = std::move(one);
        }
    }
    return all;
}
