#include "cli/TextWidth.h"

#include <gtest/gtest.h>

#include <string>

TEST(TextWidth, WideCharactersTakeTwoColumnsAndMarksNone) {
    struct {
        std::wstring strText;
        std::size_t iWidth;
    } const aTexts[] = {
        {L"", 0},       {L"plain", 5},        {L"\u00E9", 1},     {L"e\u0301", 1},    {L"\u540D\u524D", 4},
        {L"\uAC00", 2}, {L"\uFF21", 2},       {L"\uFF71", 1},     {L"\U0001F600", 2}, {L"a\u200Bb", 2},
        {L"\u2026", 1}, {L"\u0E01\u0E31", 1}, {L"\U000E0100", 0}, {L"\U0003FFFD", 1},
    };
    for (const auto& text : aTexts) {
        EXPECT_EQ(GetTextWidth(text.strText), text.iWidth) << ::testing::PrintToString(text.strText);
    }
}
