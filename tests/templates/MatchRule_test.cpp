#include "templates/MatchRule.h"

#include <gtest/gtest.h>

#include <locale>
#include <ostream>

#include "platform/common/TextConversion.h"
#include "templates/PatternMatcher.h"

namespace {

/** @return such as "AND ENTITY 2 <Card>" */
std::string Dump(const SRuleElement& element) {
    return std::string(OperatorText(element.eOperator)) + " " + ElementTypeText(element.eType) + " " +
           std::to_string(element.iCount) + " <" + OS::Utf8Lenient(element.strName) + ">";
}

/** @return the rule's operator and its elements, such as "OR: UNKNOWN KEYWORD 0 <a> | AND KEYWORD 0 <b>" */
std::string Dump(const SMatchRule& rule) {
    std::string strResult = OperatorText(rule.eOperator);
    for (const SRuleElement& element : rule.vecElements) {
        strResult += (&element == &rule.vecElements.front() ? ": " : " | ") + Dump(element);
    }
    return strResult;
}

std::string Parsed(const wchar_t* pRule, const wchar_t* pOperator = L"") {
    return Dump(ParseMatchRule(pRule, pOperator));
}

SRuleElement Element(const wchar_t* pName, std::int32_t iCount, EOperator eOperator, EElementType eType) {
    return {pName, iCount, eOperator, eType};
}

/** @return the text and the operator text of one rule, joined by " / " */
std::string Formatted(const SMatchRule& rule) {
    std::vector<OS::x_wstring> vecTexts;
    std::vector<OS::x_wstring> vecOperators;
    FormatMatchRules({rule}, vecTexts, vecOperators);
    return OS::Utf8Lenient(vecTexts.at(0)) + " / " + OS::Utf8Lenient(vecOperators.at(0));
}

/** Writes 1000 as 1'000. */
class CGrouping : public std::numpunct<wchar_t> {
    wchar_t do_thousands_sep() const override { return L'\''; }
    std::string do_grouping() const override { return "\3"; }
};

struct SCase {
    const wchar_t* pText;
    const char* pDump;
};

void PrintTo(const SCase& row, std::ostream* pOut) {
    *pOut << OS::Utf8Lenient(row.pText);
}

class MatchRuleTexts : public testing::TestWithParam<SCase> {};
class RuleElementTexts : public testing::TestWithParam<SCase> {};

}  // namespace

TEST(MatchRuleNames, EachValueHasItsText) {
    EXPECT_STREQ(ElementTypeText(static_cast<EElementType>(0)), "ENTITY");
    EXPECT_STREQ(ElementTypeText(static_cast<EElementType>(1)), "KEYWORD");
    EXPECT_STREQ(ElementTypeText(static_cast<EElementType>(2)), "UNKNOWN");
    EXPECT_STREQ(ElementTypeText(static_cast<EElementType>(3)), "UNKNOWN");
    EXPECT_STREQ(ElementTypeText(static_cast<EElementType>(7)), "UNKNOWN");
    EXPECT_STREQ(ElementTypeText(static_cast<EElementType>(-1)), "UNKNOWN");
    EXPECT_STREQ(OperatorText(static_cast<EOperator>(0)), "AND");
    EXPECT_STREQ(OperatorText(static_cast<EOperator>(1)), "OR");
    EXPECT_STREQ(OperatorText(static_cast<EOperator>(2)), "EXCEPT");
    EXPECT_STREQ(OperatorText(static_cast<EOperator>(3)), "UNKNOWN");
    EXPECT_STREQ(OperatorText(static_cast<EOperator>(4)), "UNKNOWN");
    EXPECT_STREQ(OperatorText(static_cast<EOperator>(7)), "UNKNOWN");
    EXPECT_STREQ(OperatorText(static_cast<EOperator>(-1)), "UNKNOWN");
}

TEST(MatchRuleNames, TextsAreReadWithoutCaseAndBlanksAround) {
    EXPECT_EQ(ToOperator(L"AND"), EOperator::AND);
    EXPECT_EQ(ToOperator(L" and "), EOperator::AND);
    EXPECT_EQ(ToOperator("\t\r\n\v\fOr "), EOperator::OR);
    EXPECT_EQ(ToOperator("eXcEpT"), EOperator::EXCEPT);
    EXPECT_EQ(ToElementType(L" entity"), EElementType::ENTITY);
    EXPECT_EQ(ToElementType("Keyword\n"), EElementType::KEYWORD);
}

TEST(MatchRuleNames, AnyOtherTextIsUnknown) {
    for (const wchar_t* pText : {L"", L" ", L"SKIP", L"UNKNOWN", L"A ND", L"ANDOR", L"\u00A0AND", L"AND\u3000"}) {
        EXPECT_EQ(ToOperator(pText), EOperator::UNKNOWN) << OS::Utf8Lenient(pText);
    }
    for (const wchar_t* pText : {L"", L"UNKNOWN", L"ENT\u0131TY", L"ENTITY0", L"K"}) {
        EXPECT_EQ(ToElementType(pText), EElementType::UNKNOWN) << OS::Utf8Lenient(pText);
    }
}

TEST_P(RuleElementTexts, AreRead) {
    EXPECT_EQ(Dump(ParseRuleElement(GetParam().pText, EOperator::OR)), GetParam().pDump);
}

INSTANTIATE_TEST_SUITE_P(Elements, RuleElementTexts,
                         testing::Values(SCase{L"P:Name(3)", "OR ENTITY 3 <Name>"},               //
                                         SCase{L"p:Name(3)", "OR ENTITY 3 <Name>"},               //
                                         SCase{L"K:Name", "OR KEYWORD 0 <Name>"},                 //
                                         SCase{L"k:Name", "OR KEYWORD 0 <Name>"},                 //
                                         SCase{L"P:a(b)(2)", "OR ENTITY 2 <a(b)>"},               //
                                         SCase{L"P:a(1)(2)", "OR ENTITY 1 <a>"},                  //
                                         SCase{L"P:Name", "OR UNKNOWN 0 <>"},                     //
                                         SCase{L"P:Name()", "OR UNKNOWN 0 <>"},                   //
                                         SCase{L"P:Name(x)", "OR UNKNOWN 0 <>"},                  //
                                         SCase{L"P:Name(-1)", "OR UNKNOWN 0 <>"},                 //
                                         SCase{L"P:(3)", "OR ENTITY 3 <>"},                       //
                                         SCase{L"xK:", "OR KEYWORD 0 <>"},                        //
                                         SCase{L" xx K:abc", "OR KEYWORD 0 <abc>"},               //
                                         SCase{L"X P:n(1)", "OR ENTITY 1 <n>"},                   //
                                         SCase{L"K:", "OR UNKNOWN 0 <>"},                         //
                                         SCase{L"", "OR UNKNOWN 0 <>"},                           //
                                         SCase{L" K:", "OR KEYWORD 0 <>"},                        //
                                         SCase{L"P: n (2)", "OR ENTITY 2 < n >"},                 //
                                         SCase{L"K: abc ", "OR KEYWORD 0 < abc >"},               //
                                         SCase{L"K:a\nb", "OR KEYWORD 0 <a\nb>"},                 //
                                         SCase{L"P:a\nb(2)", "OR ENTITY 2 <a\nb>"},               //
                                         SCase{L"K:Top:x(1)", "OR ENTITY 1 <x>"},                 //
                                         SCase{L"K:x P:n(1)", "OR ENTITY 1 <n>"},                 //
                                         SCase{L"P:Brick:layer", "OR KEYWORD 0 <layer>"},         //
                                         SCase{L"P:x(1) and K:y", "OR ENTITY 1 <x>"},             //
                                         SCase{L"P:x(007)", "OR ENTITY 7 <x>"},                   //
                                         SCase{L"P:x(2147483647)", "OR ENTITY 2147483647 <x>"},   //
                                         SCase{L"P:x(2147483648)", "OR ENTITY 2147483647 <x>"},   //
                                         SCase{L"P:x(4294967297)", "OR ENTITY 2147483647 <x>"},   //
                                         SCase{L"P:x(99999999999)", "OR ENTITY 2147483647 <x>"},  //
                                         SCase{L"P:x(\u0663)", "OR UNKNOWN 0 <>"},                //
                                         SCase{L"nothing here", "OR UNKNOWN 0 <>"},               //
                                         SCase{L"K:\u00E9\U0001F600", "OR KEYWORD 0 <\xC3\xA9\xF0\x9F\x98\x80>"}));

TEST_P(MatchRuleTexts, AreSplit) {
    EXPECT_EQ(Parsed(GetParam().pText), std::string("UNKNOWN: ") + GetParam().pDump);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, MatchRuleTexts,
    testing::Values(SCase{L"P:Credit card number(2) AND K:Card words",
                          "UNKNOWN ENTITY 2 <Credit card number> | AND KEYWORD 0 <Card words>"},
                    SCase{L"P:a(1)\tOR\tK:b\tEXCEPT\tK:c",
                          "UNKNOWN ENTITY 1 <a> | OR KEYWORD 0 <b> | EXCEPT KEYWORD 0 <c>"},
                    SCase{L"", "UNKNOWN UNKNOWN 0 <>"},                        //
                    SCase{L" \t\r\n ", "UNKNOWN UNKNOWN 0 <>"},                //
                    SCase{L"AND", "UNKNOWN UNKNOWN 0 <> | AND UNKNOWN 0 <>"},  //
                    SCase{L"K:a AND AND K:b", "UNKNOWN KEYWORD 0 <a> | AND UNKNOWN 0 <> | AND KEYWORD 0 <b>"},
                    SCase{L"K:a AND K: OR K:b", "UNKNOWN KEYWORD 0 <a> | AND UNKNOWN 0 <> | OR KEYWORD 0 <b>"},
                    SCase{L"K:BRAND", "UNKNOWN KEYWORD 0 <BR> | AND UNKNOWN 0 <>"},                    //
                    SCase{L"K:aANDK:b", "UNKNOWN KEYWORD 0 <a> | AND KEYWORD 0 <b>"},                  //
                    SCase{L"K:WORD", "UNKNOWN KEYWORD 0 <W> | OR UNKNOWN 0 <>"},                       //
                    SCase{L"P:x(1) and K:y", "UNKNOWN ENTITY 1 <x>"},                                  //
                    SCase{L"\v K: a \f AND \tP:n(1)\n", "UNKNOWN KEYWORD 0 < a> | AND ENTITY 1 <n>"},  //
                    SCase{L"K:a  AND  K:b \t", "UNKNOWN KEYWORD 0 <a> | AND KEYWORD 0 <b>"},           //
                    SCase{L"\u00A0K:a\u3000AND K:b", "UNKNOWN KEYWORD 0 <a\xE3\x80\x80> | AND KEYWORD 0 <b>"},
                    SCase{L"K:a EXCEPTION", "UNKNOWN KEYWORD 0 <a> | EXCEPT UNKNOWN 0 <>"}));

TEST(MatchRule, OperatorTextOfTheRuleIsConverted) {
    EXPECT_EQ(Parsed(L"K:a", L" and "), "AND: UNKNOWN KEYWORD 0 <a>");
    EXPECT_EQ(Parsed(L"K:a", L"OR"), "OR: UNKNOWN KEYWORD 0 <a>");
    EXPECT_EQ(Parsed(L"K:a", L"SKIP"), "UNKNOWN: UNKNOWN KEYWORD 0 <a>");
    EXPECT_EQ(Parsed(L"K:a", L"whatever"), "UNKNOWN: UNKNOWN KEYWORD 0 <a>");
}

TEST(MatchRule, ZeroCharacterIsLikeAnyOther) {
    const std::wstring strRule = {L'K', L':', L'a', L'\0', L'b', L' ', L'A', L'N', L'D', L' ', L'\0', L'K', L':'};
    const SMatchRule rule = ParseMatchRule(strRule, std::wstring_view(L"OR\0", 3));
    ASSERT_EQ(rule.vecElements.size(), 2U);
    EXPECT_EQ(rule.eOperator, EOperator::UNKNOWN);
    EXPECT_EQ(rule.vecElements[0].strName, std::wstring(L"a\0b", 3));
    EXPECT_EQ(Dump(rule.vecElements[1]), "AND KEYWORD 0 <>");
}

TEST(MatchRule, StepsGrowWithTheTextAlone) {
    for (const wchar_t* pPart : {L"P:", L"P:x(", L"AND", L"K:aAND", L"P:x(1)OR"}) {
        const auto Steps = [&](int iParts) {
            std::wstring strRule;
            for (int i = 0; i < iParts; ++i) {
                strRule += pPart;
            }
            const std::uint64_t iBefore = CPatternMatcher::GetStepCount();
            ParseMatchRule(strRule, L"");
            return static_cast<double>(CPatternMatcher::GetStepCount() - iBefore);
        };
        EXPECT_LE(Steps(10000) / Steps(5000), 2.1) << OS::Utf8Lenient(pPart);
    }
}

TEST(MatchRuleFormat, ElementsAreJoinedByTheirOperators) {
    SMatchRule rule;
    rule.eOperator = EOperator::OR;
    rule.vecElements = {Element(L"Card", 2, EOperator::UNKNOWN, EElementType::ENTITY),
                        Element(L"Words", 0, EOperator::AND, EElementType::KEYWORD),
                        Element(L"More", -3, EOperator::EXCEPT, EElementType::ENTITY)};
    EXPECT_EQ(Formatted(rule), "P:Card(2)\tAND\tK:Words\tEXCEPT\tP:More(-3) / OR");
}

TEST(MatchRuleFormat, FirstElementNeverShowsItsOperator) {
    SMatchRule rule;
    rule.vecElements = {Element(L"a", 0, EOperator::AND, EElementType::KEYWORD)};
    EXPECT_EQ(Formatted(rule), "K:a / SKIP");
}

TEST(MatchRuleFormat, UnknownOperatorWritesNothingBetween) {
    SMatchRule rule;
    rule.eOperator = EOperator::EXCEPT;
    rule.vecElements = {Element(L"a", 1, EOperator::UNKNOWN, EElementType::ENTITY),
                        Element(L"b", 0, EOperator::UNKNOWN, EElementType::KEYWORD)};
    EXPECT_EQ(Formatted(rule), "P:a(1)K:b / EXCEPT");
}

TEST(MatchRuleFormat, UnknownTypeIsWrittenAsKeyword) {
    SMatchRule rule;
    rule.eOperator = EOperator::AND;
    rule.vecElements = {Element(L"", 0, EOperator::UNKNOWN, EElementType::UNKNOWN)};
    EXPECT_EQ(Formatted(rule), "K: / AND");
}

TEST(MatchRuleFormat, ValuesOutsideTheTablesAreWrittenAsUnknown) {
    SMatchRule rule;
    rule.eOperator = static_cast<EOperator>(7);
    rule.vecElements = {Element(L"a", 0, EOperator::UNKNOWN, EElementType::KEYWORD),
                        Element(L"b", 9, static_cast<EOperator>(7), static_cast<EElementType>(7))};
    EXPECT_EQ(Formatted(rule), "K:a\tUNKNOWN\tK:b / UNKNOWN");
}

TEST(MatchRuleFormat, RuleWithoutElementsGivesAnEmptyText) {
    EXPECT_EQ(Formatted(SMatchRule()), " / SKIP");
}

TEST(MatchRuleFormat, ListsAreAppendedTo) {
    std::vector<OS::x_wstring> vecTexts = {L"before"};
    std::vector<OS::x_wstring> vecOperators = {L"op"};
    FormatMatchRules({}, vecTexts, vecOperators);
    EXPECT_EQ(vecTexts.size(), 1U);
    FormatMatchRules({ParseMatchRule(L"K:a", L"AND"), ParseMatchRule(L"K:b", L"")}, vecTexts, vecOperators);
    EXPECT_EQ(vecTexts, (std::vector<OS::x_wstring>{L"before", L"K:a", L"K:b"}));
    EXPECT_EQ(vecOperators, (std::vector<OS::x_wstring>{L"op", L"AND", L"SKIP"}));
}

TEST(MatchRuleFormat, NumbersDoNotDependOnTheLocale) {
    SMatchRule rule;
    rule.vecElements = {Element(L"a", 2147483647, EOperator::UNKNOWN, EElementType::ENTITY),
                        Element(L"b", -2147483647 - 1, EOperator::AND, EElementType::ENTITY)};
    const std::locale before = std::locale::global(std::locale(std::locale(), new CGrouping));
    EXPECT_EQ(Formatted(rule), "P:a(2147483647)\tAND\tP:b(-2147483648) / SKIP");
    std::locale::global(before);
}

TEST(MatchRuleFormat, WhatIsWrittenIsReadBack) {
    for (const wchar_t* pRule : {L"P:Card number(2)\tAND\tK:Card words", L"K:a\tOR\tP:b(0)\tEXCEPT\tK:c", L"K: a",
                                 L"P: a (3)", L"K:\u00E9\u3000"}) {
        const SMatchRule rule = ParseMatchRule(pRule, L"OR");
        EXPECT_EQ(Formatted(rule), OS::Utf8Lenient(pRule) + " / OR");
    }
}

TEST(MatchRule, EachElementTellsTheTextItWasReadFrom) {
    constexpr std::wstring_view RULE = L" P:a(1) AND \t OR xK:b ";
    std::vector<std::wstring_view> vecTexts;
    EXPECT_EQ(ParseMatchRule(RULE, L"", vecTexts).vecElements.size(), 3U);
    EXPECT_EQ(vecTexts, (std::vector<std::wstring_view>{L"P:a(1)", L"", L"xK:b"}));
    EXPECT_EQ(vecTexts.back().data(), RULE.data() + 17);
}
