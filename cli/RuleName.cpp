#include "cli/RuleName.h"

#include "cli/Text.h"
#include "platform/common/TextConversion.h"

namespace {

/** A rule of this name and another element, written as text and read again. */
SMatchRule ReadBack(EElementType eType, const std::wstring& strName) {
    const SRuleElement named{strName, eType == EElementType::ENTITY ? 1 : 0, EOperator::UNKNOWN, eType};
    const SRuleElement other{L"x", 0, EOperator::AND, EElementType::KEYWORD};
    std::vector<OS::x_wstring> vecTexts;
    std::vector<OS::x_wstring> vecOperators;
    FormatMatchRules({{{named, other}}}, vecTexts, vecOperators);
    return ParseMatchRule(vecTexts.front(), vecOperators.front());
}

bool IsSame(const SMatchRule& rule, EElementType eType, const std::wstring& strName) {
    return rule.vecElements.size() == 2 && rule.vecElements.front().strName == strName &&
           rule.vecElements.front().eType == eType;
}

}  // namespace

bool SurvivesRuleText(EElementType eType, const std::string& strName) {
    const std::wstring strWide = OS::WideText(strName);
    return IsSame(ReadBack(eType, strWide), eType, strWide);
}

std::string ExplainRuleName(EElementType eType, const std::string& strName) {
    if (SurvivesRuleText(eType, strName)) {
        return {};
    }
    const SMatchRule rule = ReadBack(eType, OS::WideText(strName));
    const std::string strWhy = "the name " + Text::Quoted(strName) + " cannot stand in the text of a rule: ";
    return rule.vecElements.size() > 2
               ? strWhy + "it holds " + OperatorText(rule.vecElements[1].eOperator) + ", which joins parts of a rule"
               : strWhy + "it would be read as " + Text::Quoted(OS::Utf8Lenient(rule.vecElements.front().strName));
}
