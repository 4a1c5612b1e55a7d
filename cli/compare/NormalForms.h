#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "cli/compare/RuleConditions.h"

/**
 * Rules as nested sets of what must hold all together or at least one of, with negations at single conditions only.
 * Order, grouping and repetition leave no trace in it: equal normal forms match alike, however many conditions there
 * are. The time to make one grows as the rules do.
 */
class CNormalForms {
  public:
    /** @return a number that two rules share exactly when their normal forms are equal */
    std::size_t Add(const RulesText& rules);

  private:
    /** Conditions, or inner sets, joined by one operator; of a single part it does not matter by which. */
    struct SForm {
        bool bAll = true;
        std::set<std::size_t> parts;
    };
    /** A form and its negation, kept side by side so that none has to be turned inside out later. */
    struct SPair {
        SForm plain;
        SForm negated;
    };

    static SPair Of(std::size_t iCondition);
    void Join(SPair& left, EOperator eOperator, SPair&& right);
    SForm Join(SForm&& left, bool bAll, SForm&& right);
    std::size_t NumberOf(const SForm& form);

    std::map<std::pair<bool, std::vector<std::size_t>>, std::size_t> m_mapNumbers;
};
