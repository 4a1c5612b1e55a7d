#include "cli/compare/OperatorOrder.h"

#include <gtest/gtest.h>

#include <random>

#include "cli/compare/RuleText.h"

namespace {

/** @return what content only matches if AND goes first; "-" when there is none */
std::string Show(const SOperatorOrder& order) {
    if (!order.example) {
        return order.bMatters ? "?" : "-";
    }
    std::string strHeld;
    for (const SCondition& condition : *order.example) {
        strHeld += (strHeld.empty() ? "" : ", ") + FormatCondition(condition);
    }
    return strHeld;
}

std::string Show(const std::wstring& strRule) {
    return Show(CompareOrders(ParseMatchRule(strRule, L"")));
}

}  // namespace

TEST(OperatorOrder, MattersWhereAnAndFollowsAnOr) {
    const std::pair<const wchar_t*, const char*> aRules[] = {
        {L"K:a", "-"},
        {L"K:a AND K:b OR K:c", "-"},
        {L"K:a OR K:b AND K:c", "K:a"},
        {L"K:a AND K:b OR K:c AND K:d", "K:a, K:b"},
        {L"K:a OR K:b AND K:a", "-"},
        {L"P:a(5) OR K:b AND P:a(3)", "-"},
        {L"K:a OR K:b EXCEPT K:c", "K:a, K:c"},
        {L"K:a OR P:b(0) AND K:c", "K:a"},
    };
    for (const auto& [pRule, pExpected] : aRules) {
        EXPECT_EQ(Show(pRule), pExpected) << FormatCondition({EElementType::KEYWORD, pRule, 0});
    }
}

TEST(OperatorOrder, RulesAreJoinedLikeElements) {
    const auto fnRules = [](const wchar_t* pSecond, const wchar_t* pThird) {
        return Show(CompareOrders(
            {ParseMatchRule(L"K:a OR K:b", L""), ParseMatchRule(L"K:c", pSecond), ParseMatchRule(L"K:d", pThird)}));
    };
    EXPECT_EQ(fnRules(L"OR", L"AND"), "K:a");
    EXPECT_EQ(fnRules(L"AND", L"OR"), "-");
    EXPECT_EQ(Show(CompareOrders(std::vector<SMatchRule>{})), "-");
}

TEST(OperatorOrder, MattersWhereItIsNotKnown) {
    std::wstring strRule = L"K:a OR K:b";
    for (int i = 0; i < 20; ++i) {
        strRule += L" AND K:" + std::to_wstring(i);
    }
    EXPECT_EQ(Show(strRule), "K:a");
    EXPECT_EQ(Show(strRule + L" AND K:a"), "?");
}

TEST(OperatorOrder, OfIndependentElementsTheSameIsSaidAsOfRules) {
    std::mt19937 random(1);
    for (int i = 0; i < 500; ++i) {
        SMatchRule rule;
        std::vector<SMatchRule> vecRules;
        std::string strShown;
        for (std::uint32_t j = 0; j <= random() % 8; ++j) {
            const EOperator eOperator = random() % 2 == 0 ? EOperator::AND : EOperator::OR;
            rule.vecElements.push_back({std::to_wstring(j), 0, eOperator, EElementType::KEYWORD});
            vecRules.push_back({{rule.vecElements.back()}, eOperator});
            strShown += eOperator == EOperator::AND ? " AND" : " OR";
        }
        EXPECT_EQ(Show(CompareOrders(rule)), Show(CompareOrders(vecRules))) << strShown;
    }
}
