#include "cli/compare/OperatorOrder.h"

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
    std::vector<SMatchRule> vecRules;
    for (const SRuleElement& element : rule.vecElements) {
        vecRules.push_back({{element}, element.eOperator});
    }
    return CompareOrders(vecRules);
}
