#include "cli/check/PatternSample.h"

#include <gtest/gtest.h>

TEST(PatternSample, TheFirstCallOfAPatternIsFound) {
    const std::pair<const char*, std::size_t> aPatterns[] = {
        {"(?R)?a", 0},
        {"x|(?R)?a", 2},
        {"(a|(?1)b)", 3},
        {"(?<n>a|(?&n)b)", 7},
        {"(?P<n>a|(?P>n)b)", 8},
        {"(a|(?-1)b)", 3},
        {"(a|(?+1)b)(c)", 3},
        {R"((a|\g<1>b))", 3},
        {R"(\(?1[(?1)\](?1)](?-i)(?:a)(?0))", 26},
        {"[](?R)](?R)?a", 7},
        {"[^](?R)](?R)?a", 8},
        {"[[:digit:](?R)](?R)?a", 15},
        {"[[:](?R)?a", 4},
        {R"([\Q](?R)\E(?R)](?R)?a)", 15},
        {R"(\Q(?R)[\E(?R)?a)", 9},
        {"(?#[)(?R)?a", 5},
        {"no call", 0},
        {"(?", 0},
        {"(?-", 0},
    };
    for (const auto& [pPattern, iCall] : aPatterns) {
        EXPECT_EQ(FindPatternCall(pPattern), iCall) << pPattern;
    }
}
