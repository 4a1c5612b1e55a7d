#pragma once

#include <string>
#include <vector>

#include "cli/compare/NormalForms.h"
#include "cli/compare/RuleConditions.h"
#include "templates/MatchRule.h"

/** Knows rules that match alike by one and the same text. */
class CRuleMeanings {
  public:
    /**
     * @return a text that rules share when they match alike, and hardly ever else; of rules with more conditions than
     *         a truth table is made of, when they are alike but for order, grouping and repetition
     */
    std::string Get(const std::vector<SMatchRule>& vecRules);

  private:
    CConditions m_conditions;  ///< of all rules that are too long for a truth table
    CNormalForms m_forms;
};
