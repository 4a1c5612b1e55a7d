#include "cli/compare/ConditionTables.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace {

// In the place of a condition's bit.
constexpr std::size_t ALWAYS = static_cast<std::size_t>(-1);
constexpr std::size_t NEVER = static_cast<std::size_t>(-2);

bool AlwaysHolds(const SCondition& condition) {
    return condition.eType == EElementType::ENTITY && condition.iCount == 0;
}

bool AreOfOne(const SCondition& left, const SCondition& right) {
    return left.eType == right.eType && left.strName == right.strName;
}

}  // namespace

CConditionTables::CConditionTables(const CConditions& conditions) : m_pConditions(&conditions) {
    for (std::size_t i = 0; i < conditions.GetCount(); ++i) {
        const bool bAlways = AlwaysHolds(conditions.Get(i));
        m_vecBits.push_back(bAlways ? ALWAYS : m_vecOpen.size());
        if (!bAlways) {
            m_vecOpen.push_back(i);
        }
    }
}

CTruthTable CConditionTables::WorkOut(const RulesText& rules) const {
    const auto fnOf = [this](std::size_t iCondition) { return Of(iCondition); };
    const auto fnJoin = [](CTruthTable& left, EOperator eOperator, const CTruthTable& right) {
        left.Join(eOperator, right);
    };
    return ::WorkOut<CTruthTable>(rules, fnOf, fnJoin).value_or(CTruthTable(m_vecOpen.size(), false));
}

CTruthTable CConditionTables::FindPossible() const {
    std::map<SCondition, std::size_t> mapOrdered;
    for (const std::size_t iCondition : m_vecOpen) {
        mapOrdered.emplace(m_pConditions->Get(iCondition), iCondition);
    }
    CTruthTable possible(m_vecOpen.size(), true);
    const std::pair<const SCondition, std::size_t>* pLess = nullptr;
    for (const auto& more : mapOrdered) {
        if (pLess != nullptr && AreOfOne(pLess->first, more.first)) {
            CTruthTable impossible = Of(more.second);
            impossible.Join(EOperator::EXCEPT, Of(pLess->second));
            possible.Join(EOperator::EXCEPT, impossible);
        }
        pLess = &more;
    }
    return possible;
}

std::optional<std::vector<SCondition>> CConditionTables::FindExample(const CTruthTable& table) const {
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
        const SCondition& condition = m_pConditions->Get(m_vecOpen[i]);
        const auto [itPlace, bNew] = mapPlaces.try_emplace({condition.eType, condition.strName}, vecHolding.size());
        if (bNew) {
            vecHolding.push_back(condition);
        } else if (vecHolding[itPlace->second] < condition) {
            vecHolding[itPlace->second] = condition;
        }
    }
    return vecHolding;
}

CConditionTables CConditionTables::Reduce(const CTruthTable& table) const {
    CConditionTables reduced = *this;
    reduced.m_vecOpen.clear();
    const CTruthTable possible = FindPossible();
    for (std::size_t i = 0; i < m_vecOpen.size(); ++i) {
        if (table.DependsOn(i, possible)) {
            reduced.m_vecOpen.push_back(m_vecOpen[i]);
        }
    }
    std::sort(reduced.m_vecOpen.begin(), reduced.m_vecOpen.end(), [this](std::size_t iLeft, std::size_t iRight) {
        return m_pConditions->Get(iLeft) < m_pConditions->Get(iRight);
    });
    for (const std::size_t iCondition : m_vecOpen) {
        reduced.m_vecBits[iCondition] = reduced.FindStandIn(iCondition);
    }
    return reduced;
}

/** Of the counts between two that matter the lowest stands for all: it asks for no more than the next one that does. */
std::size_t CConditionTables::FindStandIn(std::size_t iCondition) const {
    const SCondition& condition = m_pConditions->Get(iCondition);
    const auto itNext = std::find_if(m_vecOpen.begin(), m_vecOpen.end(), [&](std::size_t iOpen) {
        const SCondition& open = m_pConditions->Get(iOpen);
        return AreOfOne(open, condition) && !(open < condition);
    });
    return itNext == m_vecOpen.end() ? NEVER : static_cast<std::size_t>(itNext - m_vecOpen.begin());
}

std::vector<SCondition> CConditionTables::GetOpen() const {
    std::vector<SCondition> vecConditions;
    for (const std::size_t iCondition : m_vecOpen) {
        vecConditions.push_back(m_pConditions->Get(iCondition));
    }
    return vecConditions;
}

CTruthTable CConditionTables::Of(std::size_t iCondition) const {
    const std::size_t iBit = m_vecBits[iCondition];
    return iBit == ALWAYS || iBit == NEVER ? CTruthTable(m_vecOpen.size(), iBit == ALWAYS)
                                           : CTruthTable::Of(m_vecOpen.size(), iBit);
}
