#include "cli/compare/RuleConditions.h"

#include <algorithm>

namespace {

EOperator Joining(EOperator eOperator, bool bFirst) {
    return bFirst || eOperator == EOperator::UNKNOWN ? EOperator::AND : eOperator;
}

}  // namespace

std::size_t CConditions::Add(const SRuleElement& element) {
    const bool bCounted = element.eType == EElementType::ENTITY;
    const SCondition condition{element.eType, element.strName, bCounted ? std::max(element.iCount, 0) : 0};
    const auto [itNumber, bNew] = m_mapNumbers.try_emplace(condition, m_vecConditions.size());
    if (bNew) {
        m_vecConditions.push_back(condition);
    }
    return itNumber->second;
}

RulesText MakeRulesText(const std::vector<SMatchRule>& vecRules, CConditions& conditions) {
    RulesText rules;
    for (const SMatchRule& rule : vecRules) {
        RuleText text;
        for (const SRuleElement& element : rule.vecElements) {
            text.push_back({Joining(element.eOperator, text.empty()), conditions.Add(element)});
        }
        if (!text.empty()) {
            rules.push_back({Joining(rule.eOperator, rules.empty()), std::move(text)});
        }
    }
    return rules;
}
