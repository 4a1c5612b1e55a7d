#include "cli/compare/RuleMeanings.h"

#include <cstdint>
#include <string_view>

#include "cli/compare/ConditionTables.h"
#include "platform/common/TextConversion.h"
#include "platform/common/TextHash.h"

namespace {

std::string Describe(const SCondition& condition) {
    const std::string strName = OS::Utf8Lenient(condition.strName);
    return std::string(ElementTypeText(condition.eType)) + ' ' + std::to_string(condition.iCount) + ' ' +
           std::to_string(strName.size()) + ':' + strName;
}

std::string MakeText(const CConditionTables& tables, const RulesText& rules) {
    std::string strMeaning;
    for (const SCondition& condition : tables.GetOpen()) {
        strMeaning += Describe(condition);
    }
    CTruthTable table = tables.WorkOut(rules);
    table.Join(EOperator::AND, tables.FindPossible());
    const std::vector<std::uint64_t>& vecWords = table.GetWords();
    const std::string_view strWords(reinterpret_cast<const char*>(vecWords.data()),
                                    vecWords.size() * sizeof(std::uint64_t));
    return strMeaning + ' ' + std::to_string(OS::STextHash()(strWords));
}

}  // namespace

std::string CRuleMeanings::Get(const std::vector<SMatchRule>& vecRules) {
    CConditions conditions;
    const RulesText rules = MakeRulesText(vecRules, conditions);
    const CConditionTables tables(conditions);
    if (tables.AreTooMany()) {
        return "form " + std::to_string(m_forms.Add(MakeRulesText(vecRules, m_conditions)));
    }
    return MakeText(tables.Reduce(tables.WorkOut(rules)), rules);
}
