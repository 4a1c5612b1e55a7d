#include "cli/compare/RuleComparison.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

#include "cli/compare/NormalForms.h"
#include "cli/compare/TruthTable.h"

namespace {

/** In the order of ERelation. */
constexpr const char* RELATION_NAMES[] = {"same", "reordered", "stricter", "looser", "different", "unknown"};

bool AlwaysHolds(const SCondition& condition) {
    return condition.eType == EElementType::ENTITY && condition.iCount == 0;
}

/** Tables over the conditions that can fail; the others have no bit of their own. */
class CTables {
  public:
    explicit CTables(const CConditions& conditions) : m_conditions(conditions) {
        for (std::size_t i = 0; i < conditions.GetCount(); ++i) {
            m_vecBits.push_back(m_vecOpen.size());
            if (!AlwaysHolds(conditions.Get(i))) {
                m_vecOpen.push_back(i);
            }
        }
    }

    bool AreTooMany() const { return m_vecOpen.size() > CTruthTable::MAX_CONDITIONS; }

    CTruthTable WorkOut(const RulesText& rules) const {
        const auto fnOf = [this](std::size_t iCondition) { return Of(iCondition); };
        const auto fnJoin = [](CTruthTable& left, EOperator eOperator, const CTruthTable& right) {
            left.Join(eOperator, right);
        };
        return ::WorkOut<CTruthTable>(rules, fnOf, fnJoin).value_or(CTruthTable(m_vecOpen.size(), false));
    }

    /** @return the ways that can be: who asks for more of an expression asks for less of it as well */
    CTruthTable FindPossible() const {
        std::map<SCondition, std::size_t> mapOrdered;
        for (const std::size_t iCondition : m_vecOpen) {
            mapOrdered.emplace(m_conditions.Get(iCondition), iCondition);
        }
        CTruthTable possible(m_vecOpen.size(), true);
        const std::pair<const SCondition, std::size_t>* pLess = nullptr;
        for (const auto& more : mapOrdered) {
            if (pLess != nullptr && pLess->first.eType == more.first.eType &&
                pLess->first.strName == more.first.strName) {
                CTruthTable impossible = Of(more.second);
                impossible.Join(EOperator::EXCEPT, Of(pLess->second));
                possible.Join(EOperator::EXCEPT, impossible);
            }
            pLess = &more;
        }
        return possible;
    }

    /** @return what holds in the simplest way of a table, of each expression the highest count; none if it has none */
    std::optional<std::vector<SCondition>> FindExample(const CTruthTable& table) const {
        const std::optional<std::uint32_t> way = table.FindFewest();
        if (!way) {
            return std::nullopt;
        }
        std::vector<SCondition> vecHolding;
        std::map<std::pair<EElementType, std::wstring>, std::size_t> mapPlaces;
        for (std::size_t i = 0; i < m_vecOpen.size(); ++i) {
            if ((*way >> i & 1U) == 0) {
                continue;
            }
            const SCondition& condition = m_conditions.Get(m_vecOpen[i]);
            const auto [itPlace, bNew] = mapPlaces.try_emplace({condition.eType, condition.strName}, vecHolding.size());
            if (bNew) {
                vecHolding.push_back(condition);
            } else if (vecHolding[itPlace->second] < condition) {
                vecHolding[itPlace->second] = condition;
            }
        }
        return vecHolding;
    }

  private:
    CTruthTable Of(std::size_t iCondition) const {
        return AlwaysHolds(m_conditions.Get(iCondition)) ? CTruthTable(m_vecOpen.size(), true)
                                                         : CTruthTable::Of(m_vecOpen.size(), m_vecBits[iCondition]);
    }

    const CConditions& m_conditions;
    std::vector<std::size_t> m_vecBits;
    std::vector<std::size_t> m_vecOpen;
};

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
    const CTables tables(conditions);
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
