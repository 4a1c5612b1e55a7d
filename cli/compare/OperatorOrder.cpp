#include "cli/compare/OperatorOrder.h"

#include <algorithm>
#include <iterator>

#include "cli/compare/ConditionTables.h"

namespace {

/** What is joined by AND goes before what is joined by OR; EXCEPT goes with AND. */
CTruthTable WorkOutAndFirst(const RulesText& rules, const CConditionTables& tables) {
    std::optional<CTruthTable> whole;
    std::optional<CTruthTable> group;
    const auto fnEndGroup = [&] {
        if (whole) {
            whole->Join(EOperator::OR, *group);
        } else {
            whole = group;
        }
    };
    for (const auto& rule : rules) {
        const CTruthTable table = tables.WorkOut({rule});
        if (group && rule.eOperator != EOperator::OR) {
            group->Join(rule.eOperator, table);
            continue;
        }
        if (group) {
            fnEndGroup();
        }
        group = table;
    }
    fnEndGroup();
    return *whole;
}

bool HasExcept(const SMatchRule& rule) {
    return std::any_of(rule.vecElements.begin(), rule.vecElements.end(),
                       [](const SRuleElement& element) { return element.eOperator == EOperator::EXCEPT; });
}

/**
 * With AND first, what holds one group joined by AND is enough. From left to right it is lost at any AND behind the
 * group, and kept where there is none.
 */
SOperatorOrder CompareIndependent(const std::vector<SRuleElement>& vecElements) {
    const auto fnIsAnd = [](const SRuleElement& element) { return element.eOperator != EOperator::OR; };
    const auto fnIsOr = [](const SRuleElement& element) { return element.eOperator == EOperator::OR; };
    const auto itBehindLast = std::find_if(vecElements.rbegin(), vecElements.rend(), fnIsAnd).base();
    auto itFewest = vecElements.end();
    auto itFewestEnd = vecElements.end();
    for (auto itGroup = vecElements.begin(); itGroup != vecElements.end();) {
        const auto itEnd = std::find_if(itGroup + 1, vecElements.end(), fnIsOr);
        const bool bFewer = itFewest == vecElements.end() || itEnd - itGroup < itFewestEnd - itFewest;
        if (itEnd < itBehindLast && bFewer) {
            itFewest = itGroup;
            itFewestEnd = itEnd;
        }
        itGroup = itEnd;
    }
    if (itFewest == vecElements.end()) {
        return {false, {}};
    }
    CConditions conditions;
    SOperatorOrder order{true, std::vector<SCondition>()};
    std::transform(itFewest, itFewestEnd, std::back_inserter(*order.example),
                   [&](const SRuleElement& element) { return conditions.Get(conditions.Add(element)); });
    return order;
}

}  // namespace

SOperatorOrder CompareOrders(const std::vector<SMatchRule>& vecRules) {
    CConditions conditions;
    const RulesText rules = MakeRulesText(vecRules, conditions);
    const CConditionTables tables(conditions);
    if (rules.empty() || tables.AreTooMany()) {
        return {!rules.empty(), {}};
    }
    CTruthTable more = tables.FindPossible();
    more.Join(EOperator::AND, WorkOutAndFirst(rules, tables));
    more.Join(EOperator::EXCEPT, tables.WorkOut(rules));
    std::optional<std::vector<SCondition>> example = tables.FindExample(more);
    const bool bMatters = example.has_value();
    return {bMatters, std::move(example)};
}

SOperatorOrder CompareOrders(const SMatchRule& rule) {
    if (!HasExcept(rule) && AreIndependent({rule})) {
        return CompareIndependent(rule.vecElements);
    }
    std::vector<SMatchRule> vecRules;
    for (const SRuleElement& element : rule.vecElements) {
        vecRules.push_back({{element}, element.eOperator});
    }
    return CompareOrders(vecRules);
}
