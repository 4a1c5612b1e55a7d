#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/common/x_wstring.h"

/** What a rule element refers to. */
enum class EElementType : std::int32_t { ENTITY = 0, KEYWORD, UNKNOWN };

/** How an element is joined to the one before it, or a rule to the others of its template. */
enum class EOperator : std::int32_t { AND = 0, OR, EXCEPT, UNKNOWN };

/** One reference to an expression or a keyword list. */
struct SRuleElement {
    std::wstring strName;
    std::int32_t iCount = 0;  ///< occurrences required; of expressions only
    EOperator eOperator = EOperator::UNKNOWN;
    EElementType eType = EElementType::UNKNOWN;
};

/** One match rule of a template. */
struct SMatchRule {
    std::vector<SRuleElement> vecElements;
    EOperator eOperator = EOperator::UNKNOWN;
};

/** @return "ENTITY", "KEYWORD", or "UNKNOWN" for any other value */
const char* ElementTypeText(EElementType eType);
/** Reads the texts above without regard to white space around them and the case of letters; any other is UNKNOWN. */
EElementType ToElementType(std::string_view strText);
EElementType ToElementType(std::wstring_view strText);

/** @return "AND", "OR", "EXCEPT", or "UNKNOWN" for any other value */
const char* OperatorText(EOperator eOperator);
/** As ToElementType. */
EOperator ToOperator(std::string_view strText);
EOperator ToOperator(std::wstring_view strText);

/**
 * Splits a rule text such as P:Card number(2) AND K:Card words. The words AND, OR and EXCEPT in capitals split it
 * wherever they stand, inside names too.
 * @return a rule of one element at least; the first one has no operator
 */
SMatchRule ParseMatchRule(std::wstring_view strRule, std::wstring_view strOperator);
/** The same. @param vecTexts receives the part of strRule that each element was read from */
SMatchRule ParseMatchRule(std::wstring_view strRule, std::wstring_view strOperator,
                          std::vector<std::wstring_view>& vecTexts);

/**
 * Reads one element: P:name(count) anywhere in the text, else K:name, else an UNKNOWN element without name. The name is
 * taken as it stands, blanks included.
 */
SRuleElement ParseRuleElement(std::wstring_view strElement, EOperator eOperator);

/** Appends one text per rule, and beside it the rule's operator text, "SKIP" when it has none. */
void FormatMatchRules(const std::vector<SMatchRule>& vecRules, std::vector<OS::x_wstring>& vecRuleTexts,
                      std::vector<OS::x_wstring>& vecOperatorTexts);
