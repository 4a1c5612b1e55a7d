// What is written for a rule is read back as that rule, for made-up rules of every shape; and, one by one, the names
// and shapes that a rule text cannot hold. DLP_PROPERTY_SEED and DLP_PROPERTY_COUNT choose other rules, and more.

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <random>

#include "platform/common/TextConversion.h"
#include "templates/MatchRule.h"

namespace {

constexpr int RULES = 20000;
constexpr std::size_t MOST_ELEMENTS = 6;
constexpr std::size_t MOST_PIECES = 8;

/** Of these names are made. No piece, and no two of them joined, make an operator's word. */
const std::wstring PIECES[] = {
    L"(",          L")",      L"(x)",    L"()",         L"(1",     L"1)",     L"((2",     L"7",       L" ",
    L"  ",         L"\t",     L"\n",     L"\r\n",       L"\x0B",   L"K:",     L"k:",      L"P:",      L"p:",
    L"P",          L"K",      L":",      L"p:x(",       L"and",    L"or",     L"except",  L"An",      L"SKIP",
    L"UNKNOWN",    L"ENTITY", L"\xA0",   L"\x85",       L"\x3000", L"\u0663", L"\u540D",  L"e\u0301", L"\u05E9",
    L"\U0001F600", L"\uFFFE", L"\xD800", L"\U0010FFFF", L"card",   L"%s%d%n", L"<&>\"'",  L"\\(1\\)", L"{0}",
    L"[a]",        L".*",     L"A",      L"N",          L"O",      L"\x01",   L"\uE000x",
};
const wchar_t* const OPERATOR_WORDS[] = {L"AND", L"OR", L"EXCEPT"};
const std::int32_t COUNTS[] = {0, 1, 2, 9, 10, 255, INT_MAX - 1, INT_MAX};
const EOperator OPERATORS[] = {EOperator::AND, EOperator::OR, EOperator::EXCEPT};

int FromEnvironment(const char* pName, int iDefault) {
    const char* pValue = std::getenv(pName);
    return pValue != nullptr ? std::atoi(pValue) : iDefault;
}

bool HasOperatorWord(const std::wstring& strName) {
    for (const wchar_t* pWord : OPERATOR_WORDS) {
        if (strName.find(pWord) != std::wstring::npos) {
            return true;
        }
    }
    return false;
}

/** @return where digits in parentheses begin that end at or behind iFrom; npos without */
std::size_t FindCount(const std::wstring& strText, std::size_t iFrom = 0) {
    const std::wstring strDigits = L"0123456789";
    for (std::size_t i = strText.find(L'(', iFrom); i != std::wstring::npos; i = strText.find(L'(', i + 1)) {
        const std::size_t iEnd = strText.find_first_not_of(strDigits, i + 1);
        if (iEnd != std::wstring::npos && iEnd > i + 1 && strText[iEnd] == L')') {
            return i;
        }
    }
    return std::wstring::npos;
}

/** An expression's count is the first in its text. */
bool IsExpressionName(const std::wstring& strName) {
    return !HasOperatorWord(strName) && FindCount(strName) == std::wstring::npos;
}

/** A keyword list's name is there, has no blank at its end and holds nothing that is read as an expression. */
bool IsKeywordName(const std::wstring& strName) {
    const std::size_t iPrefix = std::min(strName.find(L"P:"), strName.find(L"p:"));
    return !HasOperatorWord(strName) && !strName.empty() &&
           std::wstring(L" \t\n\v\f\r").find(strName.back()) == std::wstring::npos &&
           (iPrefix == std::wstring::npos || FindCount(strName, iPrefix) == std::wstring::npos);
}

/** Makes rules that a text can hold. */
class CRules {
  public:
    explicit CRules(unsigned iSeed) : m_random(iSeed) {}

    SMatchRule Rule() {
        SMatchRule rule;
        rule.eOperator = static_cast<EOperator>(Below(4));
        const std::size_t iElements = 1 + Below(MOST_ELEMENTS);
        while (rule.vecElements.size() < iElements) {
            rule.vecElements.push_back(Element(rule.vecElements.empty() ? EOperator::UNKNOWN : OPERATORS[Below(3)]));
        }
        return rule;
    }

  private:
    std::size_t Below(std::size_t iEnd) { return m_random() % iEnd; }

    SRuleElement Element(EOperator eOperator) {
        switch (static_cast<EElementType>(Below(3))) {
            case EElementType::ENTITY:
                return {Name(IsExpressionName), Count(), eOperator, EElementType::ENTITY};
            case EElementType::KEYWORD:
                return {Name(IsKeywordName), 0, eOperator, EElementType::KEYWORD};
            default:
                return {L"", 0, eOperator, EElementType::UNKNOWN};
        }
    }

    std::int32_t Count() {
        return Below(2) == 0 ? COUNTS[Below(std::size(COUNTS))] : static_cast<std::int32_t>(m_random() >> 1);
    }

    std::wstring Name(bool (*fnIsName)(const std::wstring&)) {
        std::wstring strName;
        do {
            strName.clear();
            for (std::size_t i = Below(MOST_PIECES + 1); i > 0; --i) {
                strName += PIECES[Below(std::size(PIECES))];
            }
        } while (!fnIsName(strName));
        return strName;
    }

    std::mt19937 m_random;
};

std::string Dump(const SMatchRule& rule) {
    std::string strDump = OperatorText(rule.eOperator);
    for (const SRuleElement& element : rule.vecElements) {
        strDump += std::string(" | ") + OperatorText(element.eOperator) + " " + ElementTypeText(element.eType) + " " +
                   std::to_string(element.iCount) + " <" + OS::Utf8Loose(element.strName) + ">";
    }
    return strDump;
}

std::wstring Written(const SMatchRule& rule, std::wstring& strOperator) {
    std::vector<OS::x_wstring> vecTexts;
    std::vector<OS::x_wstring> vecOperators;
    FormatMatchRules({rule}, vecTexts, vecOperators);
    strOperator = vecOperators.at(0);
    return vecTexts.at(0);
}

SMatchRule Reread(const SMatchRule& rule) {
    std::wstring strOperator;
    const std::wstring strText = Written(rule, strOperator);
    return ParseMatchRule(strText, strOperator);
}

/** @return what a rule of elements reads back as, without the rule's operator */
std::string Reread(std::vector<SRuleElement> vecElements) {
    return Dump(Reread(SMatchRule{std::move(vecElements), EOperator::UNKNOWN})).substr(sizeof("UNKNOWN | ") - 1);
}

SRuleElement Expression(const wchar_t* pName, std::int32_t iCount = 1, EOperator eOperator = EOperator::UNKNOWN) {
    return {pName, iCount, eOperator, EElementType::ENTITY};
}

SRuleElement Keyword(const wchar_t* pName, EOperator eOperator = EOperator::UNKNOWN) {
    return {pName, 0, eOperator, EElementType::KEYWORD};
}

}  // namespace

TEST(RuleTextProperties, RuleIsReadBackAsItWasWritten) {
    const auto iSeed = static_cast<unsigned>(FromEnvironment("DLP_PROPERTY_SEED", 1));
    const int iCount = FromEnvironment("DLP_PROPERTY_COUNT", RULES);
    CRules rules(iSeed);
    for (int i = 0; i < iCount; ++i) {
        const SMatchRule rule = rules.Rule();
        ASSERT_EQ(Dump(rule), Dump(Reread(rule))) << "rule " << i << " of seed " << iSeed;
    }
}

/** Whatever was typed: once read, writing and reading changes it no more. */
TEST(RuleTextProperties, WhatAnyTextGaveIsReadBackAsItWasWritten) {
    std::mt19937 random(static_cast<unsigned>(FromEnvironment("DLP_PROPERTY_SEED", 1)));
    const int iCount = FromEnvironment("DLP_PROPERTY_COUNT", RULES);
    for (int i = 0; i < iCount; ++i) {
        std::wstring strText;
        for (std::size_t iPieces = random() % 12; iPieces > 0; --iPieces) {
            strText += random() % 4 == 0 ? OPERATOR_WORDS[random() % 3] : PIECES[random() % std::size(PIECES)];
        }
        SMatchRule rule = ParseMatchRule(strText, OPERATOR_WORDS[random() % 3]);
        for (SRuleElement& element : rule.vecElements) {
            if (element.eType == EElementType::KEYWORD && element.strName.empty()) {
                element.eType = EElementType::UNKNOWN;  // see KeywordListWithoutNameBecomesUnknown
            }
        }
        ASSERT_EQ(Dump(rule), Dump(Reread(rule))) << OS::Utf8Loose(strText);
    }
}

TEST(RuleTextExceptions, OperatorWordInANameSplitsIt) {
    EXPECT_EQ("UNKNOWN KEYWORD 0 <BR> | AND UNKNOWN 0 <>", Reread({Keyword(L"BRAND")}));
    EXPECT_EQ("UNKNOWN UNKNOWN 0 <> | OR UNKNOWN 0 <>", Reread({Expression(L"FORD")}));
    EXPECT_EQ("UNKNOWN UNKNOWN 0 <> | EXCEPT UNKNOWN 0 <>", Reread({Expression(L"EXCEPTION")}));
}

TEST(RuleTextExceptions, ExpressionNameEndsBeforeItsFirstCount) {
    EXPECT_EQ("UNKNOWN ENTITY 1 <a>", Reread({Expression(L"a(1)", 7)}));
    EXPECT_EQ("UNKNOWN ENTITY 2147483647 <>", Reread({Expression(L"(99999999999)b", 7)}));
}

TEST(RuleTextExceptions, NegativeCountIsNoCount) {
    EXPECT_EQ("UNKNOWN UNKNOWN 0 <>", Reread({Expression(L"a", -1)}));
    EXPECT_EQ("UNKNOWN UNKNOWN 0 <>", Reread({Expression(L"a", INT_MIN)}));
    EXPECT_EQ("UNKNOWN KEYWORD 0 <b(-1)>", Reread({Expression(L"K:b", -1)}));
}

TEST(RuleTextExceptions, KeywordListThatLooksLikeAnExpressionIsReadAsOne) {
    EXPECT_EQ("UNKNOWN ENTITY 1 <x>", Reread({Keyword(L"P:x(1)")}));
    EXPECT_EQ("UNKNOWN ENTITY 2 <:y>", Reread({Keyword(L"Top::y(2) z")}));
}

TEST(RuleTextExceptions, KeywordListLosesTheBlanksAtItsEnd) {
    EXPECT_EQ("UNKNOWN KEYWORD 0 < a>", Reread({Keyword(L" a \t\r\n")}));
    EXPECT_EQ("UNKNOWN KEYWORD 0 <a> | AND KEYWORD 0 <b>", Reread({Keyword(L"a "), Keyword(L"b", EOperator::AND)}));
}

TEST(RuleTextExceptions, KeywordListWithoutNameBecomesUnknown) {
    EXPECT_EQ("UNKNOWN UNKNOWN 0 <>", Reread({Keyword(L"")}));
    EXPECT_EQ("UNKNOWN UNKNOWN 0 <>", Reread({Keyword(L" ")}));
}

TEST(RuleTextExceptions, OnlyExpressionsKeepACount) {
    EXPECT_EQ("UNKNOWN KEYWORD 0 <a>", Reread({{L"a", 3, EOperator::UNKNOWN, EElementType::KEYWORD}}));
    EXPECT_EQ("UNKNOWN UNKNOWN 0 <>", Reread({{L"", 3, EOperator::UNKNOWN, EElementType::UNKNOWN}}));
}

TEST(RuleTextExceptions, UnknownElementKeepsNoName) {
    EXPECT_EQ("UNKNOWN KEYWORD 0 <a>", Reread({{L"a", 0, EOperator::UNKNOWN, EElementType::UNKNOWN}}));
}

TEST(RuleTextExceptions, FirstElementShowsNoOperatorAndTheOthersNeedOne) {
    EXPECT_EQ("UNKNOWN KEYWORD 0 <a>", Reread({Keyword(L"a", EOperator::EXCEPT)}));
    EXPECT_EQ("UNKNOWN KEYWORD 0 <aK:b>", Reread({Keyword(L"a"), Keyword(L"b")}));
    EXPECT_EQ("UNKNOWN ENTITY 1 <a>", Reread({Expression(L"a"), Expression(L"b")}));
}

TEST(RuleTextExceptions, RuleWithoutElementsReadsBackWithAnUnknownOne) {
    EXPECT_EQ("UNKNOWN UNKNOWN 0 <>", Reread(std::vector<SRuleElement>{}));
}
