#include "templates/PatternMatcher.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "platform/common/TextConversion.h"
#include "templates/CResultException.h"

namespace {

/** @return where the first match is and its groups, such as "1-4 [b][-]"; "none" without a match */
std::string Find(const wchar_t* pPattern, std::wstring_view strText, std::size_t iStart = 0) {
    const CPattern pattern(pPattern);
    CPatternMatcher matcher(pattern, strText);
    if (!matcher.Search(iStart)) {
        return "none";
    }
    std::string strResult = std::to_string(matcher.GetMatch().iStart) + "-" + std::to_string(matcher.GetMatch().iEnd);
    for (std::size_t i = 0; i < pattern.GetGroupCount(); ++i) {
        strResult += i == 0 ? " " : "";
        try {
            strResult += "[" + OS::Utf8Lenient(matcher.Text(matcher.GetGroup(i))) + "]";
        } catch (const CResultException&) {
            strResult += "[-]";
        }
    }
    return strResult;
}

std::optional<std::uint32_t> ResultOf(const std::function<void()>& fnTested) {
    try {
        fnTested();
    } catch (const CResultException& exception) {
        return exception.GetResult();
    }
    return std::nullopt;
}

struct SCase {
    const wchar_t* pPattern;
    const wchar_t* pText;
    const char* pFound;
};

void PrintTo(const SCase& row, std::ostream* pOut) {
    *pOut << OS::Utf8Lenient(row.pPattern) << " in " << OS::Utf8Lenient(row.pText);
}

class PatternDialect : public testing::TestWithParam<SCase> {};

}  // namespace

TEST_P(PatternDialect, FindsTheLeftmostMatch) {
    EXPECT_EQ(Find(GetParam().pPattern, GetParam().pText), GetParam().pFound);
}

INSTANTIATE_TEST_SUITE_P(Characters, PatternDialect,
                         testing::Values(SCase{L"b", L"abab", "1-2"},                  //
                                         SCase{L"b", L"ABAB", "none"},                 //
                                         SCase{L"abc", L"ababc", "2-5"},               //
                                         SCase{L"", L"ab", "0-0"},                     //
                                         SCase{L"a", L"", "none"},                     //
                                         SCase{L"a.c", L"abc", "0-3"},                 //
                                         SCase{L"a.c", L"a\nc", "0-3"},                //
                                         SCase{L".", L"", "none"},                     //
                                         SCase{L"^a$", L"a", "none"},                  //
                                         SCase{L"^a$", L"x^a$", "1-4"},                //
                                         SCase{L"\u20AC", L"5\u20AC", "1-2"},          //
                                         SCase{L"\U0001F600", L"x\U0001F600", "1-2"},  //
                                         SCase{L"]", L"a]", "1-2"}));

INSTANTIATE_TEST_SUITE_P(Repetition, PatternDialect,
                         testing::Values(SCase{L"ab*c", L"ac", "0-2"},           //
                                         SCase{L"ab*c", L"abbbc", "0-5"},        //
                                         SCase{L"{a*}", L"aaa", "0-3 [aaa]"},    //
                                         SCase{L"{a*?}", L"aaa", "0-0 []"},      //
                                         SCase{L"{a*?}b", L"aab", "0-3 [aa]"},   //
                                         SCase{L"{a+}", L"baa", "1-3 [aa]"},     //
                                         SCase{L"{a+?}", L"baa", "1-2 [a]"},     //
                                         SCase{L"a+", L"b", "none"},             //
                                         SCase{L"{a?}a", L"aa", "0-2 [a]"},      //
                                         SCase{L"{a?}a", L"a", "0-1 []"},        //
                                         SCase{L"{a??}a", L"aa", "0-1 []"},      //
                                         SCase{L"{.*}b", L"abab", "0-4 [aba]"},  //
                                         SCase{L"{.*?}b", L"abab", "0-2 [a]"},   //
                                         SCase{L"(ab)+", L"xababa", "1-5"},      //
                                         SCase{L"{ab}+", L"abab", "0-4 [ab]"},   //
                                         SCase{L"(a*)*b", L"aaab", "0-4"},       //
                                         SCase{L"(a*)+", L"b", "0-0"},           //
                                         SCase{L"(a?b?)*c", L"abbac", "0-5"},    //
                                         SCase{L"[ab]+?c", L"ababc", "0-5"}));

INSTANTIATE_TEST_SUITE_P(Alternation, PatternDialect,
                         testing::Values(SCase{L"P|p:", L"p:", "0-2"},             //
                                         SCase{L"P|p:", L"P:", "0-2"},             //
                                         SCase{L"P|p:", L"P", "none"},             //
                                         SCase{L"ab|cd", L"abd", "0-3"},           //
                                         SCase{L"ab|cd", L"acd", "0-3"},           //
                                         SCase{L"ab|cd", L"ab", "none"},           //
                                         SCase{L"ab|cd", L"cd", "none"},           //
                                         SCase{L"a|b|c", L"c", "0-1"},             //
                                         SCase{L"{a|(ab)}", L"ab", "0-1 [a]"},     //
                                         SCase{L"{(ab)|a}", L"ab", "0-2 [ab]"},    //
                                         SCase{L"{a|(ab)}c", L"abc", "0-3 [ab]"},  //
                                         SCase{L"a+|b", L"aab", "0-2"},            //
                                         SCase{L"xa|b*y", L"xbby", "0-4"},         //
                                         SCase{L"[0-9]|\\cz", L"qz", "0-2"},       //
                                         SCase{L"{a}|{b}", L"b", "0-1 [-][b]"},    //
                                         SCase{L".|a{b}", L"xb", "0-2 [b]"}));

INSTANTIATE_TEST_SUITE_P(Groups, PatternDialect,
                         testing::Values(SCase{L"(a)b", L"ab", "0-2"},                   //
                                         SCase{L"{a}{b}", L"ab", "0-2 [a][b]"},          //
                                         SCase{L"{a{b}}{c}", L"abc", "0-3 [ab][b][c]"},  //
                                         SCase{L"a{}b", L"ab", "0-2 []"},                //
                                         SCase{L"a()b", L"ab", "0-2"},                   //
                                         SCase{L"{a}?b", L"b", "0-1 [-]"},               //
                                         SCase{L"({a}|{b})+", L"ab", "0-2 [a][b]"}));

INSTANTIATE_TEST_SUITE_P(Escapes, PatternDialect,
                         testing::Values(SCase{L"\\(\\)", L"()", "0-2"},        //
                                         SCase{L"\\*\\|\\\\", L"*|\\", "0-3"},  //
                                         SCase{L"\\r\\t", L"rt", "0-2"},        //
                                         SCase{L"\\r", L"\r", "none"},          //
                                         SCase{L"\\A", L"xA", "1-2"}));

INSTANTIATE_TEST_SUITE_P(Abbreviations, PatternDialect,
                         testing::Values(SCase{L"\\a\\a\\a", L"-aZ9", "1-4"},            //
                                         SCase{L"\\a", L"-_\u00E9", "none"},             //
                                         SCase{L"\\b\\b", L"a \t", "1-3"},               //
                                         SCase{L"\\b", L"\n", "none"},                   //
                                         SCase{L"\\c\\c", L"1aZ", "1-3"},                //
                                         SCase{L"\\c", L"1", "none"},                    //
                                         SCase{L"\\d", L"a0", "1-2"},                    //
                                         SCase{L"\\d", L"\u0663", "none"},               //
                                         SCase{L"\\h\\h\\h", L"g9aF", "1-4"},            //
                                         SCase{L"\\h", L"gG", "none"},                   //
                                         SCase{L"{\\n}", L"a\r\n", "1-2 [\r]"},          //
                                         SCase{L"{\\n}", L"a\n", "1-2 [\n]"},            //
                                         SCase{L"\\n\\n", L"\r\n", "0-2"},               //
                                         SCase{L"{\\q}", L"x\"a'b\"", "1-6 [\"a'b\"]"},  //
                                         SCase{L"{\\q}", L"x'a\"b'", "1-6 ['a\"b']"},    //
                                         SCase{L"{\\q}", L"\"\"", "0-2 [\"\"]"},         //
                                         SCase{L"\\q", L"\"a'", "none"},                 //
                                         SCase{L"x|\\q!", L"'a'!", "0-4"},               //
                                         SCase{L"\\w", L"1ab2", "1-3"},                  //
                                         SCase{L"\\w?1", L"1", "0-1"},                   //
                                         SCase{L"\\z", L"a123b", "1-4"},                 //
                                         SCase{L"\\z|\\wx", L"1x", "0-2"}));

INSTANTIATE_TEST_SUITE_P(Classes, PatternDialect,
                         testing::Values(SCase{L"[abc]", L"xb", "1-2"},         //
                                         SCase{L"[a-c]+", L"xabcd", "1-4"},     //
                                         SCase{L"[^a-c]", L"abcd", "3-4"},      //
                                         SCase{L"[^a]", L"a\n", "1-2"},         //
                                         SCase{L"[^a]", L"", "none"},           //
                                         SCase{L"[a^]", L"^", "0-1"},           //
                                         SCase{L"[a-]", L"-", "0-1"},           //
                                         SCase{L"[a-]b", L"a-b", "1-3"},        //
                                         SCase{L"[-a]", L"-", "0-1"},           //
                                         SCase{L"[a-c-e]+", L"-e", "0-2"},      //
                                         SCase{L"[.*(|{]+", L"x.*(|{", "1-6"},  //
                                         SCase{L"[\\]]", L"]", "0-1"},          //
                                         SCase{L"[\\d]", L"d5", "0-1"},         //
                                         SCase{L"[]", L"a", "none"},            //
                                         SCase{L"[^]", L"a", "0-1"},            //
                                         SCase{L"[\u0430-\u044F]", L"a\u0436", "1-2"}));

TEST(Pattern, NoneOfTheDialectIsRefused) {
    for (const wchar_t* pPattern : {L"*",  L"+a",   L"?",    L"a**",  L"(",  L"{", L")",   L"}",  L"(a}", L"{a)", L"a|",
                                    L"|a", L"a||b", L"(a|)", L"(|a)", L"[a", L"[", L"[a-", L"\\", L"[\\", L"a|*"}) {
        EXPECT_EQ(ResultOf([&] { CPattern pattern(pPattern); }), CResultException::INVALID_ARGUMENT)
            << OS::Utf8Lenient(pPattern);
    }
}

TEST(PatternMatcher, SearchBeginsWhereItIsTold) {
    EXPECT_EQ(Find(L"a", L"abab", 1), "2-3");
    EXPECT_EQ(Find(L"a", L"abab", 3), "none");
    EXPECT_EQ(Find(L"b*", L"ab", 2), "2-2");
}

TEST(PatternMatcher, SearchesGoOnAtTheEndOfAMatch) {
    const CPattern pattern(L"a+");
    CPatternMatcher matcher(pattern, L"aabaca");
    std::string strEnds;
    for (std::size_t iStart = 0; matcher.Search(iStart); iStart = matcher.GetMatch().iEnd) {
        strEnds += std::to_string(matcher.GetMatch().iStart) + "-" + std::to_string(matcher.GetMatch().iEnd) + " ";
    }
    EXPECT_EQ(strEnds, "0-2 3-4 5-6 ");
}

TEST(PatternMatcher, EarlierSearchesDoNotSpoilLaterOnes) {
    const CPattern pattern(L"{(a*)*}{b?}");
    CPatternMatcher matcher(pattern, L"aaab");
    for (const std::size_t iStart : {0U, 2U, 4U, 3U, 0U, 1U}) {
        ASSERT_TRUE(matcher.Search(iStart));
        EXPECT_EQ(matcher.GetMatch().iStart, iStart);
        EXPECT_EQ(matcher.GetMatch().iEnd, 4U);
        EXPECT_EQ(matcher.Text(matcher.GetGroup(1)), iStart == 4 ? L"" : L"b");
    }
}

TEST(PatternMatcher, LaterSearchesDoNotTryAgainWhatFailed) {
    const CPattern pattern(L"(a.*b)|a");
    const auto Steps = [&](std::size_t iLength) {
        const std::wstring strText(iLength, L'a');
        CPatternMatcher matcher(pattern, strText);
        const std::uint64_t iBefore = CPatternMatcher::GetStepCount();
        for (std::size_t iStart = 0; matcher.Search(iStart); iStart = matcher.GetMatch().iEnd) {
        }
        return static_cast<double>(CPatternMatcher::GetStepCount() - iBefore);
    };
    EXPECT_LE(Steps(2000) / Steps(1000), 2.1);
}

TEST(PatternMatcher, SearchBeforeAMatchsEndIsNotTriedAgainEither) {
    const CPattern pattern(L"ab");
    CPatternMatcher matcher(pattern, L"abaaaa");
    const auto Steps = [&](std::size_t iStart) {
        const std::uint64_t iBefore = CPatternMatcher::GetStepCount();
        matcher.Search(iStart);
        return CPatternMatcher::GetStepCount() - iBefore;
    };
    EXPECT_EQ(3U, Steps(0));   // a, b and the end
    EXPECT_EQ(10U, Steps(1));  // a at each position, b behind each a
    EXPECT_EQ(6U, Steps(1));   // known to fail at each position
}

TEST(PatternMatcher, FailedSearchCanBeRepeated) {
    const CPattern pattern(L"a+b");
    CPatternMatcher matcher(pattern, L"aaa");
    EXPECT_FALSE(matcher.Search(0));
    EXPECT_FALSE(matcher.Search(0));
    EXPECT_FALSE(matcher.Search(2));
}

TEST(PatternMatcher, MissingGroupsAreErrors) {
    const CPattern pattern(L"{a}|{b}");
    CPatternMatcher matcher(pattern, L"b");
    ASSERT_TRUE(matcher.Search(0));
    EXPECT_EQ(matcher.Text(matcher.GetGroup(1)), L"b");
    EXPECT_EQ(ResultOf([&] { matcher.GetGroup(0); }), 0x80004005U);
    EXPECT_EQ(ResultOf([&] { matcher.GetGroup(2); }), 0x80070057U);
}

TEST(PatternMatcher, GroupsOfAnEarlierMatchAreForgotten) {
    const CPattern pattern(L"{a}|{b}");
    CPatternMatcher matcher(pattern, L"ab");
    ASSERT_TRUE(matcher.Search(0));
    EXPECT_EQ(matcher.Text(matcher.GetGroup(0)), L"a");
    ASSERT_TRUE(matcher.Search(1));
    EXPECT_EQ(matcher.Text(matcher.GetGroup(1)), L"b");
    EXPECT_EQ(ResultOf([&] { matcher.GetGroup(0); }), CResultException::FAIL);
}

TEST(PatternMatcher, EmptyGroupIsNoMissingGroup) {
    const CPattern pattern(L"a{b*}");
    CPatternMatcher matcher(pattern, L"a");
    ASSERT_TRUE(matcher.Search(0));
    EXPECT_EQ(matcher.GetGroup(0).iStart, 1U);
    EXPECT_EQ(matcher.GetGroup(0).iEnd, 1U);
}

TEST(PatternMatcher, LongTextNeedsNoDeepStack) {
    const std::wstring strText(1000000, L'a');
    EXPECT_EQ(Find(L"{.*}b|a", strText), "0-1000000 [" + std::string(999999, 'a') + "]");
    EXPECT_EQ(Find(L"(a|b)*c", strText), "none");
}

TEST(PatternMatcher, StepsGrowWithTheTextAlone) {
    for (const wchar_t* pPattern : {L"(a*)*b", L"{a+}+c", L"a*a*a*b", L"(a|(aa))+b", L"P|p:{.*?}\\({\\z}\\)"}) {
        const CPattern pattern(pPattern);
        const auto Steps = [&](std::size_t iLength) {
            const std::wstring strText(iLength, L'a');
            const std::uint64_t iBefore = CPatternMatcher::GetStepCount();
            CPatternMatcher(pattern, strText).Search(0);
            return static_cast<double>(CPatternMatcher::GetStepCount() - iBefore);
        };
        EXPECT_LE(Steps(20000) / Steps(10000), 2.1) << OS::Utf8Lenient(pPattern);
    }
}
