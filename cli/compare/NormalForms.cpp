#include "cli/compare/NormalForms.h"

#include <utility>

namespace {

/** Numbers of parts: conditions are even, their negations odd, sets begin far above both. */
constexpr std::size_t FIRST_SET = std::size_t{1} << 48;
constexpr std::size_t NO_RULE = static_cast<std::size_t>(-1);

std::size_t PlainPart(std::size_t iCondition) {
    return 2 * iCondition;
}
std::size_t NegatedPart(std::size_t iCondition) {
    return 2 * iCondition + 1;
}

}  // namespace

std::size_t CNormalForms::Add(const RulesText& rules) {
    const auto fnJoin = [this](SPair& left, EOperator eOperator, SPair&& right) {
        Join(left, eOperator, std::move(right));
    };
    const std::optional<SPair> all = WorkOut<SPair>(rules, Of, fnJoin);
    return all ? NumberOf(all->plain) : NO_RULE;
}

CNormalForms::SPair CNormalForms::Of(std::size_t iCondition) {
    return {{true, {PlainPart(iCondition)}}, {true, {NegatedPart(iCondition)}}};
}

void CNormalForms::Join(SPair& left, EOperator eOperator, SPair&& right) {
    if (eOperator == EOperator::EXCEPT) {
        std::swap(right.plain, right.negated);
    }
    const bool bAll = eOperator != EOperator::OR;
    left.plain = Join(std::move(left.plain), bAll, std::move(right.plain));
    left.negated = Join(std::move(left.negated), !bAll, std::move(right.negated));
}

CNormalForms::SForm CNormalForms::Join(SForm&& left, bool bAll, SForm&& right) {
    for (SForm* pForm : {&left, &right}) {
        if (pForm->bAll != bAll) {
            *pForm = {bAll, {NumberOf(*pForm)}};
        }
    }
    left.parts.merge(right.parts);
    return std::move(left);
}

std::size_t CNormalForms::NumberOf(const SForm& form) {
    if (form.parts.size() == 1) {
        return *form.parts.begin();
    }
    std::vector<std::size_t> vecParts(form.parts.begin(), form.parts.end());
    return m_mapNumbers.try_emplace({form.bAll, std::move(vecParts)}, FIRST_SET + m_mapNumbers.size()).first->second;
}
