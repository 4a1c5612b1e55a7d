#include "cli/check/SourceExcerpt.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct SCase {
    std::string strBytes;
    std::size_t iOffset;
    const char* pLine;
    std::size_t iCaret;
};

const std::string LONG(300, 'x');

const SCase CASES[] = {
    {"one\ntwo\r\nthree", 4, "two", 0},
    {"one\ntwo\r\nthree", 7, "two", 3},
    {"one\rtwo", 5, "two", 1},
    {"one", 3, "one", 3},
    {"one", 99, "one", 3},
    {"", 0, "", 0},
    {"\tx", 1, "    x", 4},
    {"\x01x", 1, "\\u0001x", 6},
    {"\xE5\x90\x8D\xE5\x89\x8Dx", 6, "\xE5\x90\x8D\xE5\x89\x8Dx", 4},
    {"e\xCC\x81x", 3, "e\xCC\x81x", 1},
    {"\xEF\xBB\xBFx", 3, "x", 0},
    {"a\xFFx", 2, "a\xEF\xBF\xBDx", 2},
};

}  // namespace

TEST(SourceExcerpt, TheCaretStandsBelowWhatItMeans) {
    for (const SCase& row : CASES) {
        const SExcerpt excerpt = MakeExcerpt(row.strBytes, row.iOffset);
        EXPECT_EQ(excerpt.strLine, row.pLine);
        EXPECT_EQ(excerpt.iCaret, row.iCaret) << row.strBytes;
    }
}

TEST(SourceExcerpt, LongLinesAreCutAroundTheCaret) {
    const SExcerpt middle = MakeExcerpt(LONG + "HERE" + LONG, 300);
    EXPECT_EQ(middle.strLine, "…" + std::string(48, 'x') + "HERE" + std::string(48, 'x') + "…");
    EXPECT_EQ(middle.iCaret, 49U);
    EXPECT_EQ(MakeExcerpt(LONG, 300).strLine, "…" + std::string(100, 'x'));
    EXPECT_EQ(MakeExcerpt(std::string(100, 'x'), 90).strLine, std::string(100, 'x'));
    EXPECT_EQ(MakeExcerpt(LONG, 0).strLine, std::string(52, 'x') + "…");
    // Cut between bytes of one character, far from the caret.
    std::string strWide;
    for (int i = 0; i < 600; ++i) {
        strWide += "\xE5\x90\x8D";
    }
    EXPECT_EQ(MakeExcerpt(strWide, 900).iCaret, 49U);
    EXPECT_EQ(MakeExcerpt(strWide, 900).strLine.find("\xEF\xBF\xBD"), std::string::npos);
}
