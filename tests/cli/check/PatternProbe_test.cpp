#include "cli/check/PatternProbe.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pcre2.h>

#include <new>
#include <optional>

namespace {

bool s_bMemoryLacks = false;

/** @return the engine's function behind the one of that name here */
template <class Function>
Function* Next(Function*, const char* pName) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, pName));
}

std::optional<std::size_t> FindRunaway(const char* pPattern) {
    std::size_t iEffort = 60000;
    return CPatternProbe(pPattern).FindRunaway(iEffort);
}

}  // namespace

// They stand before those of the engine.
extern "C" pcre2_code* pcre2_compile(PCRE2_SPTR pPattern, PCRE2_SIZE iSize, std::uint32_t iOptions, int* pError,
                                     PCRE2_SIZE* pOffset, pcre2_compile_context* pContext) {
    if (s_bMemoryLacks) {
        *pError = PCRE2_ERROR_HEAP_FAILED;
        return nullptr;
    }
    static auto* const s_fnNext = Next(&pcre2_compile, "pcre2_compile_8");
    return s_fnNext(pPattern, iSize, iOptions, pError, pOffset, pContext);
}

extern "C" int pcre2_match(const pcre2_code* pCode, PCRE2_SPTR pText, PCRE2_SIZE iSize, PCRE2_SIZE iStart,
                           std::uint32_t iOptions, pcre2_match_data* pMatch, pcre2_match_context* pContext) {
    static auto* const s_fnNext = Next(&pcre2_match, "pcre2_match_8");
    return s_bMemoryLacks ? PCRE2_ERROR_NOMEMORY : s_fnNext(pCode, pText, iSize, iStart, iOptions, pMatch, pContext);
}

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
    for (const char* pPattern :
         {"", "a*", "(?=a)", "(?!x)", "\\b", "(?<=\\d)", "^", "$", "(?<=foo)", "(?=foo)bar|(?=foo)", "a\\K", "x|\\B",
          "(?=\\d{16})", "(?<=\\d)(?=x)", "(?<=\xC3\xA4)(?=\xC3\xB6)", "(?=(?:\\d{4}-){3}\\d{4})", "(?<=[A-Z]{2})"}) {
        EXPECT_EQ(CPatternProbe(pPattern).TryShortTexts(), EShortTrial::MATCHES_EMPTY) << pPattern;
    }
    for (const char* pPattern : {"(?R)", "(?R)?a", "(?:a|(?R)b)", "(?<x>(?&x))"}) {
        EXPECT_EQ(CPatternProbe(pPattern).TryShortTexts(), EShortTrial::RECURSES_FOREVER) << pPattern;
    }
    for (const char* pPattern : {"a", "\\ba\\b", "(?=a)\\w", "\\((?:[^()]|(?R))*\\)", "^.$", "(?<!\\d)\\d{3}(?!\\d)",
                                 "(?:\\d{4}-){3}", "(?=x{900})x"}) {
        EXPECT_EQ(CPatternProbe(pPattern).TryShortTexts(), EShortTrial::NOTHING_ODD) << pPattern;
    }
}

TEST(PatternProbe, LackOfMemoryIsNoFaultOfThePattern) {
    const CPatternProbe probe("(a+)+b");
    std::size_t iEffort = 60000;
    s_bMemoryLacks = true;
    EXPECT_THROW(CPatternProbe("a"), std::bad_alloc);
    EXPECT_THROW(probe.TryShortTexts(), std::bad_alloc);
    EXPECT_THROW(probe.FindRunaway(iEffort), std::bad_alloc);
    s_bMemoryLacks = false;
    EXPECT_FALSE(CPatternProbe("a").GetRefusal());
    EXPECT_EQ(probe.TryShortTexts(), EShortTrial::NOTHING_ODD);
    EXPECT_NE(probe.FindRunaway(iEffort), 0U);
}
