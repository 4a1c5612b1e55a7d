#pragma once

#include <optional>
#include <vector>

#include "cli/compare/RuleConditions.h"
#include "templates/MatchRule.h"

/** What rules match if AND goes before OR, compared with how they are read: from left to right. */
struct SOperatorOrder {
    bool bMatters = true;  ///< also where too many conditions that depend on each other are named
    /** What content holds, and nothing else that the rules name, that only matches if AND goes first. */
    std::optional<std::vector<SCondition>> example;
};

SOperatorOrder CompareOrders(const std::vector<SMatchRule>& vecRules);
/** The same of the elements of one rule. */
SOperatorOrder CompareOrders(const SMatchRule& rule);
