#include "templates/MatchRule.h"

#include <array>
#include <cstddef>

#include "platform/common/TextConversion.h"
#include "platform/common/TextTools.h"
#include "templates/PatternMatcher.h"

namespace {

// In the order of the enumerations; the last one stands for every value outside them.
constexpr std::array<const char*, 3> ELEMENT_TYPES = {"ENTITY", "KEYWORD", "UNKNOWN"};
constexpr std::array<const char*, 4> OPERATORS = {"AND", "OR", "EXCEPT", "UNKNOWN"};

constexpr wchar_t OPERATOR_PATTERN[] = L"{(AND)|(OR)|(EXCEPT)}";
constexpr wchar_t EXPRESSION_PATTERN[] = L"P|p:{.*?}\\({\\z}\\)";
constexpr wchar_t KEYWORD_PATTERN[] = L"K|k:{.*}";

constexpr wchar_t NO_RULE_OPERATOR[] = L"SKIP";
constexpr std::size_t SHORTEST_ELEMENT = 3;

template <class E, std::size_t N>
const char* ToText(E eValue, const std::array<const char*, N>& aTexts) {
    const auto iValue = static_cast<std::size_t>(eValue);
    return iValue < N ? aTexts[iValue] : aTexts[N - 1];
}

template <class E, std::size_t N>
E FromText(std::string_view strText, const std::array<const char*, N>& aTexts) {
    strText = OS::Trim(strText);
    std::size_t iValue = 0;
    while (iValue < N - 1 && !OS::EqualsNoCase(strText, std::string_view(aTexts[iValue]))) {
        ++iValue;
    }
    return static_cast<E>(iValue);
}

void AppendElement(std::wstring& strText, const SRuleElement& element, bool bFirst) {
    if (!bFirst && element.eOperator != EOperator::UNKNOWN) {
        strText += L'\t' + OS::WideText(OperatorText(element.eOperator)) + L'\t';
    }
    if (element.eType == EElementType::ENTITY) {
        strText += L"P:" + element.strName + L'(' + std::to_wstring(element.iCount) + L')';
    } else {
        strText += L"K:" + element.strName;
    }
}

}  // namespace

const char* ElementTypeText(EElementType eType) {
    return ToText(eType, ELEMENT_TYPES);
}

EElementType ToElementType(std::string_view strText) {
    return FromText<EElementType>(strText, ELEMENT_TYPES);
}

EElementType ToElementType(std::wstring_view strText) {
    return ToElementType(OS::Utf8Loose(strText));
}

const char* OperatorText(EOperator eOperator) {
    return ToText(eOperator, OPERATORS);
}

EOperator ToOperator(std::string_view strText) {
    return FromText<EOperator>(strText, OPERATORS);
}

EOperator ToOperator(std::wstring_view strText) {
    return ToOperator(OS::Utf8Loose(strText));
}

SMatchRule ParseMatchRule(std::wstring_view strRule, std::wstring_view strOperator) {
    std::vector<std::wstring_view> vecTexts;
    return ParseMatchRule(strRule, strOperator, vecTexts);
}

SMatchRule ParseMatchRule(std::wstring_view strRule, std::wstring_view strOperator,
                          std::vector<std::wstring_view>& vecTexts) {
    static const CPattern s_pattern(OPERATOR_PATTERN);
    SMatchRule rule;
    rule.eOperator = ToOperator(strOperator);
    CPatternMatcher matcher(s_pattern, strRule);
    EOperator ePending = EOperator::UNKNOWN;
    std::size_t iPosition = 0;
    const auto fnAppend = [&](std::wstring_view strElement) {
        vecTexts.push_back(OS::Trim(strElement));
        rule.vecElements.push_back(ParseRuleElement(vecTexts.back(), ePending));
    };
    while (matcher.Search(iPosition)) {
        const CPatternMatcher::SSpan word = matcher.GetGroup(0);
        fnAppend(strRule.substr(iPosition, word.iStart - iPosition));
        ePending = ToOperator(matcher.Text(word));
        iPosition = matcher.GetMatch().iEnd;
    }
    fnAppend(strRule.substr(iPosition));
    return rule;
}

SRuleElement ParseRuleElement(std::wstring_view strElement, EOperator eOperator) {
    static const CPattern s_expression(EXPRESSION_PATTERN);
    static const CPattern s_keyword(KEYWORD_PATTERN);
    SRuleElement element;
    element.eOperator = eOperator;
    if (strElement.size() < SHORTEST_ELEMENT) {
        return element;
    }
    CPatternMatcher expression(s_expression, strElement);
    if (expression.Search(0)) {
        element.eType = EElementType::ENTITY;
        element.strName = expression.Text(expression.GetGroup(0));
        element.iCount = OS::WideToInt(expression.Text(expression.GetGroup(1)));
        return element;
    }
    CPatternMatcher keyword(s_keyword, strElement);
    if (keyword.Search(0)) {
        element.eType = EElementType::KEYWORD;
        element.strName = keyword.Text(keyword.GetGroup(0));
    }
    return element;
}

void FormatMatchRules(const std::vector<SMatchRule>& vecRules, std::vector<OS::x_wstring>& vecRuleTexts,
                      std::vector<OS::x_wstring>& vecOperatorTexts) {
    for (const SMatchRule& rule : vecRules) {
        OS::x_wstring strText;
        for (const SRuleElement& element : rule.vecElements) {
            AppendElement(strText, element, &element == &rule.vecElements.front());
        }
        vecRuleTexts.push_back(std::move(strText));
        vecOperatorTexts.push_back(rule.eOperator == EOperator::UNKNOWN ? OS::x_wstring(NO_RULE_OPERATOR)
                                                                        : OS::WideText(OperatorText(rule.eOperator)));
    }
}
