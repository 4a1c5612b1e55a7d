#include "platform/common/TextTools.h"

#include <gtest/gtest.h>

#include <climits>

TEST(TextTools, SpaceIsTheSixAsciiCharacters) {
    std::wstring strSpaces;
    for (wchar_t c = 0; c < 0x3100; ++c) {
        if (OS::IsSpace(c)) {
            strSpaces += c;
        }
    }
    EXPECT_EQ(strSpaces, L"\t\n\v\f\r ");
}

TEST(TextTools, TrimTakesBothEnds) {
    EXPECT_EQ(OS::Trim(L" \t a b\r\n"), L"a b");
    EXPECT_EQ(OS::Trim(L" \v\f"), L"");
    EXPECT_EQ(OS::Trim(L""), L"");
    EXPECT_EQ(OS::Trim(L"\u00A0a\u3000"), L"\u00A0a\u3000");
    EXPECT_EQ(OS::Trim(" \t a b\r\n"), "a b");
    EXPECT_EQ(OS::Trim("\xC2\xA0"), "\xC2\xA0");
}

TEST(TextTools, ToUpperChangesAsciiLettersOnly) {
    EXPECT_EQ(OS::ToUpper(L"azAZ09_{`\u00E9\u0131\u00DF"), L"AZAZ09_{`\u00E9\u0131\u00DF");
}

TEST(TextTools, EqualsNoCaseFoldsAsciiLettersOnly) {
    EXPECT_TRUE(OS::EqualsNoCase("True", "tRUE"));
    EXPECT_TRUE(OS::EqualsNoCase(L"True", L"tRUE"));
    EXPECT_TRUE(OS::EqualsNoCase("", ""));
    EXPECT_FALSE(OS::EqualsNoCase("true", "tru"));
    EXPECT_FALSE(OS::EqualsNoCase("tru", "true"));
    EXPECT_FALSE(OS::EqualsNoCase("[", "{"));
    EXPECT_FALSE(OS::EqualsNoCase(L"\u00E9", L"\u00C9"));
    EXPECT_FALSE(OS::EqualsNoCase("\xC3\xA9", "\xC3\x89"));
}

TEST(TextTools, NumberIsReadAsFarAsItGoes) {
    struct SCase {
        const char* pText;
        int iNumber;
    };
    const SCase aCases[] = {
        {"", 0},
        {"0", 0},
        {"12", 12},
        {"-12", -12},
        {"+12", 12},
        {" \t\n12", 12},
        {" -7 ", -7},
        {"12abc", 12},
        {"12 34", 12},
        {"0x10", 0},
        {"- 5", 0},
        {"--5", 0},
        {"+-5", 0},
        {"-", 0},
        {"abc", 0},
        {"007", 7},
        {"1.9", 1},
        {"2147483647", INT_MAX},
        {"2147483648", INT_MAX},
        {"99999999999999999999999999", INT_MAX},
        {"-2147483648", INT_MIN},
        {"-2147483649", INT_MIN},
        {"-99999999999999999999999999", INT_MIN},
    };
    for (const SCase& row : aCases) {
        const std::string strText = row.pText;
        EXPECT_EQ(OS::TextToInt(strText), row.iNumber) << strText;
        EXPECT_EQ(OS::WideToInt(std::wstring(strText.begin(), strText.end())), row.iNumber) << strText;
    }
}

TEST(TextTools, NumberHasAsciiDigitsOnly) {
    EXPECT_EQ(OS::WideToInt(L"\u0661\u0662"), 0);
    EXPECT_EQ(OS::WideToInt(L"1\uFF12"), 1);
    EXPECT_EQ(OS::WideToInt(L"\u00A012"), 0);
}
