#include "cli/check/PatternProbe.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

std::optional<std::size_t> FindRunaway(const char* pPattern) {
    std::size_t iEffort = 60000;
    return CPatternProbe(pPattern).FindRunaway(iEffort);
}

}  // namespace

TEST(PatternProbe, PatternsThatBacktrackWithoutBoundAreFound) {
    for (const char* pPattern :
         {"(a+)+b", "(?:a|a)*b", "(\\d+-?)+x", "(.*)*z", "x(\\w+\\s?)+!", "(a*)*(b*)*c", "([a-z]+)*1", "^(([^@]+)+)@",
          "(?:\\p{L}+){1,99}7", "\\d+\\d+\\d+\\d+x", "(?:\xC3\xA4+)+x"}) {
        EXPECT_NE(FindRunaway(pPattern), 0U) << pPattern;
    }
}

TEST(PatternProbe, PatternsThatDoNotAreLeftAlone) {
    for (const char* pPattern :
         {"", "a+b", "\\d+\\d+x", "(?:a++)++b", "(?>a+)+b", "\\b[A-Z]{3}[JUZ][ -]?\\d{6}\\b", "(?<!\\d)\\d{13}(?!\\d)",
          "[a-z0-9.]{1,64}@(?:[a-z0-9-]{1,63}\\.){1,8}[a-z]{2,63}", "(?:cat|dog)+", "\\QA+B+\\E", "x{2}y{3,}"}) {
        EXPECT_EQ(FindRunaway(pPattern), 0U) << pPattern;
    }
}

TEST(PatternProbe, WhatIsNotTriedToItsEndForLackOfEffortIsNotCalledFine) {
    for (std::size_t iEffort : {0U, 1U, 40U, 240U}) {
        EXPECT_EQ(CPatternProbe("(a+)+b").FindRunaway(iEffort), std::nullopt);
    }
    std::size_t iEffort = 241;
    EXPECT_NE(CPatternProbe("(a+)+b").FindRunaway(iEffort), 0U);
    EXPECT_EQ(iEffort, 0U);
    EXPECT_EQ(CPatternProbe("abc").FindRunaway(iEffort), 0U);
}

TEST(PatternProbe, ARefusalNamesTheByte) {
    EXPECT_EQ(CPatternProbe("a[b").GetRefusal()->iByte, 3U);
    EXPECT_EQ(CPatternProbe("\xC3\xA4*+*").GetRefusal()->iByte, 4U);
    EXPECT_FALSE(CPatternProbe("a").GetRefusal());
    EXPECT_TRUE(CPatternProbe("a*").MatchesEmpty());
    EXPECT_FALSE(CPatternProbe("a").MatchesEmpty());
}
