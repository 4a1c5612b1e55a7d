#include "cli/compare/RuleMeanings.h"

#include <gtest/gtest.h>

#include <random>

#include "cli/compare/NeedlessParts.h"
#include "cli/compare/RuleComparison.h"

namespace {

using Texts = std::vector<std::pair<const wchar_t*, const wchar_t*>>;

/** Each with its operator. */
std::vector<SMatchRule> Rules(const Texts& vecTexts) {
    std::vector<SMatchRule> vecRules;
    for (const auto& [pOperator, pText] : vecTexts) {
        vecRules.push_back(ParseMatchRule(pText, pOperator));
    }
    return vecRules;
}

bool AreAlike(const Texts& vecLeft, const Texts& vecRight) {
    CRuleMeanings meanings;
    return meanings.Get(Rules(vecLeft)) == meanings.Get(Rules(vecRight));
}

std::string Show(const SNeedlessParts& needless) {
    std::string strText;
    for (const std::size_t iRule : needless.vecRules) {
        strText += "rule " + std::to_string(iRule) + ' ';
    }
    for (std::size_t i = 0; i < needless.vecElements.size(); ++i) {
        for (const std::size_t iElement : needless.vecElements[i]) {
            strText += std::to_string(i) + '.' + std::to_string(iElement) + ' ';
        }
    }
    return strText;
}

/** Rules over few names, of up to three elements each. */
std::vector<SMatchRule> MakeRules(std::mt19937& random) {
    const auto fnBelow = [&](int iEnd) { return std::uniform_int_distribution<int>(0, iEnd - 1)(random); };
    std::vector<SMatchRule> vecRules(static_cast<std::size_t>(1 + fnBelow(3)));
    for (SMatchRule& rule : vecRules) {
        rule.eOperator = static_cast<EOperator>(fnBelow(4));
        for (int i = fnBelow(4); i > 0; --i) {
            const bool bExpression = fnBelow(3) != 0;
            rule.vecElements.push_back({bExpression ? L"e" : L"k", fnBelow(4), static_cast<EOperator>(fnBelow(4)),
                                        bExpression ? EElementType::ENTITY : EElementType::KEYWORD});
        }
    }
    return vecRules;
}

bool MatchAlike(const std::vector<SMatchRule>& vecLeft, const std::vector<SMatchRule>& vecRight) {
    const ERelation eRelation = CompareRules(vecLeft, vecRight).eRelation;
    return eRelation == ERelation::SAME || eRelation == ERelation::REORDERED;
}

}  // namespace

TEST(RuleMeanings, RulesThatMatchAlikeShareOne) {
    EXPECT_TRUE(AreAlike({{L"", L"K:x OR K:y"}}, {{L"", L"K:y"}, {L"OR", L"K:x"}}));
    EXPECT_TRUE(AreAlike({{L"", L"P:c(2) AND P:c(1)"}}, {{L"", L"P:c(2)"}}));
    EXPECT_TRUE(AreAlike({{L"", L"P:c(1) AND P:c(3) OR P:c(2)"}}, {{L"", L"P:c(2)"}}));
    EXPECT_TRUE(AreAlike({{L"", L"K:a AND K:b OR K:a"}}, {{L"", L"K:a"}}));
    EXPECT_TRUE(AreAlike({{L"", L"P:c(0)"}}, {{L"", L"P:d(0) OR K:w"}}));
    EXPECT_FALSE(AreAlike({{L"", L"P:c(2)"}}, {{L"", L"P:c(3)"}}));
    EXPECT_FALSE(AreAlike({{L"", L"P:c(1)"}}, {{L"", L"K:c"}}));
    EXPECT_FALSE(AreAlike({{L"", L"K:a OR K:b"}}, {{L"", L"K:a AND K:b"}}));
}

TEST(RuleMeanings, RulesTooLongForATableAreComparedByForm) {
    std::wstring strForth = L"K:0";
    std::wstring strBack = L"K:19";
    for (int i = 1; i < 20; ++i) {
        strForth += L" AND K:" + std::to_wstring(i);
        strBack += L" AND K:" + std::to_wstring(19 - i);
    }
    EXPECT_TRUE(AreAlike({{L"", strForth.c_str()}}, {{L"", strBack.c_str()}}));
    EXPECT_FALSE(AreAlike({{L"", strForth.c_str()}}, {{L"", (strBack + L" AND K:x").c_str()}}));
    EXPECT_EQ(Show(FindNeedlessParts(Rules({{L"", (strForth + L" OR K:0").c_str()}}))), "");
}

TEST(RuleMeanings, AreSharedExactlyWhenComparisonSaysSo) {
    std::mt19937 random(5);
    CRuleMeanings meanings;
    int iAlike = 0;
    for (int i = 0; i < 4000; ++i) {
        const std::vector<SMatchRule> vecLeft = MakeRules(random);
        const std::vector<SMatchRule> vecRight = MakeRules(random);
        const bool bAlike = MatchAlike(vecLeft, vecRight);
        iAlike += bAlike ? 1 : 0;
        ASSERT_EQ(meanings.Get(vecLeft) == meanings.Get(vecRight), bAlike) << i;
    }
    EXPECT_GT(iAlike, 100);
}

TEST(NeedlessParts, AreThoseWithoutWhichTheSameIsMatched) {
    EXPECT_EQ(Show(FindNeedlessParts(Rules({{L"", L"K:k"}, {L"OR", L"K:k AND K:l"}, {L"AND", L"K:k"}}))),
              "rule 2 rule 1 ");
    EXPECT_EQ(Show(FindNeedlessParts(Rules({{L"", L"K:a AND K:b OR K:a"}}))), "0.1 0.0 ");
    EXPECT_EQ(Show(FindNeedlessParts(Rules({{L"", L"P:x(2) OR P:x(3) AND K:w"}}))), "0.1 ");
    EXPECT_EQ(Show(FindNeedlessParts(Rules({{L"", L"K:a OR K:b AND K:c"}}))), "");
    EXPECT_EQ(Show(FindNeedlessParts({})), "");
}

TEST(NeedlessParts, CanBeLeftOutTogether) {
    std::mt19937 random(6);
    int iNeedless = 0;
    for (int i = 0; i < 4000; ++i) {
        const std::vector<SMatchRule> vecRules = MakeRules(random);
        std::vector<SMatchRule> vecLess = vecRules;
        for (const std::size_t iRule : FindNeedlessParts(vecRules).vecRules) {
            vecLess.erase(vecLess.begin() + static_cast<std::ptrdiff_t>(iRule));
            ++iNeedless;
        }
        ASSERT_TRUE(MatchAlike(vecRules, vecLess)) << i;
    }
    EXPECT_GT(iNeedless, 100);
}

TEST(NeedlessParts, ThereAreNoneWhereEachElementIsOfItsOwn) {
    std::mt19937 random(7);
    int iTried = 0;
    for (int i = 0; i < 2000; ++i) {
        std::vector<SMatchRule> vecRules = MakeRules(random);
        std::size_t iName = 0;
        for (SMatchRule& rule : vecRules) {
            for (SRuleElement& element : rule.vecElements) {
                element.strName = std::to_wstring(++iName);
                element.iCount = 1;
            }
        }
        ASSERT_EQ(Show(FindNeedlessParts(vecRules)), "") << i;
        for (std::size_t iRule = 0; iName > 1 && iRule < vecRules.size(); ++iRule) {
            std::vector<SMatchRule> vecLess = vecRules;
            if (!vecLess[iRule].vecElements.empty()) {
                vecLess[iRule].vecElements.pop_back();
                ASSERT_FALSE(MatchAlike(vecRules, vecLess)) << i;
                ++iTried;
            }
        }
    }
    EXPECT_GT(iTried, 100);
}
