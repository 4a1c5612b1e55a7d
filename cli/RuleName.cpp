#include "cli/RuleName.h"

#include <string_view>

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

/** @return whether nothing in the name can be taken for a part of a rule, so that it need not be tried */
bool IsPlain(std::string_view strName) {
    constexpr std::string_view PLAIN = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-.";
    const auto fnHolds = [strName](EOperator eOperator) {
        return strName.find(OperatorText(eOperator)) != std::string_view::npos;
    };
    return !strName.empty() && strName.find_first_not_of(PLAIN) == std::string_view::npos && !fnHolds(EOperator::AND) &&
           !fnHolds(EOperator::OR) && !fnHolds(EOperator::EXCEPT);
}

bool IsSame(const SMatchRule& rule, EElementType eType, const std::wstring& strName) {
    return rule.vecElements.size() == 2 && rule.vecElements.front().strName == strName &&
           rule.vecElements.front().eType == eType;
}

}  // namespace

bool SurvivesRuleText(EElementType eType, const std::string& strName) {
    if (IsPlain(strName)) {
        return true;
    }
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
