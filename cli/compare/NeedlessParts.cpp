#include "cli/compare/NeedlessParts.h"

#include <deque>
#include <optional>
#include <utility>

#include "cli/compare/ConditionTables.h"

namespace {

/** A rule or an element of one, how it is joined to what stands before it, and its number. */
struct SPart {
    EOperator eOperator;
    CTruthTable table;
    std::size_t iNumber;
};

void Join(std::optional<CTruthTable>& all, const SPart& part) {
    if (all) {
        all->Join(part.eOperator, part.table);
    } else {
        all = part.table;
    }
}

/** Tries to do without each part, the last one first. */
std::vector<std::size_t> FindNeedless(const std::vector<SPart>& vecParts, const CTruthTable& possible) {
    std::vector<std::optional<CTruthTable>> vecBefore(1);
    for (const SPart& part : vecParts) {
        vecBefore.push_back(vecBefore.back());
        Join(vecBefore.back(), part);
    }
    CTruthTable whole = possible;
    whole.Join(EOperator::AND, vecBefore.back().value_or(possible));
    std::vector<std::size_t> vecNeedless;
    std::deque<const SPart*> lstKept;
    for (std::size_t i = vecParts.size(); i-- > 0;) {
        std::optional<CTruthTable> without = vecBefore[i];
        for (const SPart* pKept : lstKept) {
            Join(without, *pKept);
        }
        if (without) {
            without->Join(EOperator::AND, possible);
        }
        if (without && *without == whole) {
            vecNeedless.push_back(vecParts[i].iNumber);
        } else {
            lstKept.push_front(&vecParts[i]);
        }
    }
    return vecNeedless;
}

}  // namespace

SNeedlessParts FindNeedlessParts(const std::vector<SMatchRule>& vecRules) {
    SNeedlessParts needless;
    needless.vecElements.resize(vecRules.size());
    if (AreIndependent(vecRules)) {
        return needless;
    }
    CConditions conditions;
    MakeRulesText(vecRules, conditions);
    const CConditionTables tables(conditions);
    if (tables.AreTooMany()) {
        return needless;
    }
    const CTruthTable possible = tables.FindPossible();
    std::vector<SPart> vecWhole;
    for (std::size_t iRule = 0; iRule < vecRules.size(); ++iRule) {
        std::vector<SPart> vecParts;
        std::optional<CTruthTable> rule;
        for (const SRuleElement& element : vecRules[iRule].vecElements) {
            vecParts.push_back({element.eOperator, tables.Of(conditions.Add(element)), vecParts.size()});
            Join(rule, vecParts.back());
        }
        if (rule) {
            needless.vecElements[iRule] = FindNeedless(vecParts, possible);
            vecWhole.push_back({vecRules[iRule].eOperator, std::move(*rule), iRule});
        }
    }
    needless.vecRules = FindNeedless(vecWhole, possible);
    return needless;
}
