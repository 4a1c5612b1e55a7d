#include "cli/compare/RuleText.h"

#include <nlohmann/json.hpp>

#include "platform/common/TextConversion.h"

std::string FormatCondition(const SCondition& condition) {
    const SRuleElement element{condition.strName, condition.iCount, EOperator::UNKNOWN, condition.eType};
    std::vector<OS::x_wstring> vecTexts;
    std::vector<OS::x_wstring> vecOperators;
    FormatMatchRules({{{element}, EOperator::UNKNOWN}}, vecTexts, vecOperators);
    return OS::Utf8Lenient(vecTexts.front());
}

nlohmann::ordered_json ConditionToJson(const SCondition& condition) {
    return {{"source_type", ElementTypeText(condition.eType)},
            {"entity_hits", condition.iCount},
            {"source_name", OS::Utf8Lenient(condition.strName)}};
}
