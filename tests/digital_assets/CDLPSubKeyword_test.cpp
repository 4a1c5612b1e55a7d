#include "api/CDLPSubKeyword.h"

#include <gtest/gtest.h>

namespace {

bool HasValues(const CDLPSubKeyword& keyword, const wchar_t* pKeyword, const wchar_t* pDescription,
               const wchar_t* pScore, const wchar_t* pCaseSensitive) {
    return keyword.m_strKeyword == pKeyword && keyword.m_strDescription == pDescription &&
           keyword.m_strScore == pScore && keyword.m_strCaseSensitive == pCaseSensitive;
}

CDLPSubKeyword Keyword(const wchar_t* pKeyword) {
    return {pKeyword, L"", L"", L""};
}

}  // namespace

TEST(SubKeyword, DefaultIsEmptyWithScoreZeroAndNoCase) {
    EXPECT_TRUE(HasValues(CDLPSubKeyword(), L"", L"", L"0", L"false"));
}

TEST(SubKeyword, ValuesStandInTheOrderOfTheConstructor) {
    const CDLPSubKeyword keyword(L"k", L"d", L"7", L"true");
    EXPECT_TRUE(HasValues(keyword, L"k", L"d", L"7", L"true"));
    const CDLPSubKeyword copy(keyword);
    EXPECT_TRUE(HasValues(copy, L"k", L"d", L"7", L"true"));
    CDLPSubKeyword assigned;
    assigned = copy;
    EXPECT_TRUE(HasValues(assigned, L"k", L"d", L"7", L"true"));
}

TEST(SubKeyword, OrderLooksAtTheKeywordAlone) {
    EXPECT_TRUE(CDLPSubKeyword(L"a", L"z", L"9", L"true") < CDLPSubKeyword(L"b", L"a", L"0", L"false"));
    EXPECT_FALSE(CDLPSubKeyword(L"b", L"a", L"0", L"false") < CDLPSubKeyword(L"a", L"z", L"9", L"true"));
}

TEST(SubKeyword, OrderIsOrdinal) {
    EXPECT_TRUE(Keyword(L"B") < Keyword(L"a"));
    EXPECT_FALSE(Keyword(L"a") < Keyword(L"B"));
    EXPECT_TRUE(Keyword(L"") < Keyword(L"a"));
    EXPECT_TRUE(Keyword(L"z") < Keyword(L"\u00e4"));
}

TEST(SubKeyword, EqualKeywordsAreLessBothWays) {
    const CDLPSubKeyword left(L"same", L"1", L"1", L"true");
    const CDLPSubKeyword right(L"same", L"2", L"2", L"false");
    EXPECT_TRUE(left < right);
    EXPECT_TRUE(right < left);
}
