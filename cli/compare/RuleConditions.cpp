#include "cli/compare/RuleConditions.h"

#include <algorithm>
#include <set>

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

bool AreIndependent(const std::vector<SMatchRule>& vecRules) {
    std::set<std::pair<EElementType, std::wstring>> setNames;
    const auto fnNew = [&](const SRuleElement& element) {
        const bool bOpen =
            element.eType == EElementType::KEYWORD || (element.eType == EElementType::ENTITY && element.iCount > 0);
        return bOpen && setNames.emplace(element.eType, element.strName).second;
    };
    return std::all_of(vecRules.begin(), vecRules.end(), [&](const SMatchRule& rule) {
        return std::all_of(rule.vecElements.begin(), rule.vecElements.end(), fnNew);
    });
}
