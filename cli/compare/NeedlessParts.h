#pragma once

#include <cstddef>
#include <vector>

#include "templates/MatchRule.h"

/** Parts of rules that can be left out, all of them together, without a change of what is matched. */
struct SNeedlessParts {
    std::vector<std::size_t> vecRules;
    std::vector<std::vector<std::size_t>> vecElements;  ///< of each rule, as if it stood alone
};

/**
 * Of parts that say the same the earlier ones stay. Rules without elements are left out of account.
 * @return nothing for rules with more conditions than a truth table is made of
 */
SNeedlessParts FindNeedlessParts(const std::vector<SMatchRule>& vecRules);
