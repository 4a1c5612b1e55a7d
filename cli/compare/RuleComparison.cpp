#include "cli/compare/RuleComparison.h"

#include <cstddef>

#include "cli/compare/ConditionTables.h"
#include "cli/compare/NormalForms.h"

namespace {

/** In the order of ERelation. */
constexpr const char* RELATION_NAMES[] = {"same", "reordered", "stricter", "looser", "different", "unknown"};

ERelation GetRelation(bool bGained, bool bLost) {
    if (bGained) {
        return bLost ? ERelation::DIFFERENT : ERelation::LOOSER;
    }
    return bLost ? ERelation::STRICTER : ERelation::SAME;
}

}  // namespace

const char* GetRelationName(ERelation eRelation) {
    return RELATION_NAMES[static_cast<std::size_t>(eRelation)];
}

SRuleComparison CompareRules(const std::vector<SMatchRule>& vecBefore, const std::vector<SMatchRule>& vecAfter) {
    CConditions conditions;
    const RulesText before = MakeRulesText(vecBefore, conditions);
    const RulesText after = MakeRulesText(vecAfter, conditions);
    if (before == after) {
        return {};
    }
    CNormalForms forms;
    if (forms.Add(before) == forms.Add(after)) {
        return {ERelation::REORDERED, {}, {}};
    }
    const CConditionTables tables(conditions);
    if (tables.AreTooMany()) {
        return {ERelation::UNKNOWN, {}, {}};
    }
    const CTruthTable earlier = tables.WorkOut(before);
    const CTruthTable later = tables.WorkOut(after);
    CTruthTable gained = tables.FindPossible();
    CTruthTable lost = gained;
    gained.Join(EOperator::AND, later);
    gained.Join(EOperator::EXCEPT, earlier);
    lost.Join(EOperator::AND, earlier);
    lost.Join(EOperator::EXCEPT, later);
    SRuleComparison comparison{ERelation::SAME, tables.FindExample(gained), tables.FindExample(lost)};
    comparison.eRelation = GetRelation(comparison.gained.has_value(), comparison.lost.has_value());
    return comparison;
}
