#include "platform/common/x_wstring.h"

#include <gtest/gtest.h>

#include <clocale>

using OS::x_astring;
using OS::x_wstring;

TEST(WString, ConvertsToAndFromStandardText) {
    const std::wstring strStandard = L"abc";
    const x_wstring strText = strStandard;
    const std::wstring strBack = strText;
    EXPECT_EQ(strBack, L"abc");
    EXPECT_EQ(x_wstring(strText + L"d"), L"abcd");
    EXPECT_EQ(x_astring(std::string("abc")), "abc");
}

TEST(WString, EscapesTheFiveSpecialCharacters) {
    EXPECT_EQ(x_wstring(L"a&b<c>d\"e'f").EscapeSpecialCharacters(), L"a&amp;b&lt;c&gt;d&quot;e&apos;f");
    EXPECT_EQ(x_wstring(L"").EscapeSpecialCharacters(), L"");
    EXPECT_EQ(x_wstring(L"plain \u00E9\u4E2D").EscapeSpecialCharacters(), L"plain \u00E9\u4E2D");
}

TEST(WString, EscapingEscapedTextEscapesAgain) {
    EXPECT_EQ(x_wstring(L"R&amp;D").EscapeSpecialCharacters(), L"R&amp;amp;D");
}

TEST(WString, EscapingLeavesTheTextItself) {
    const x_wstring strText = L"<";
    static_cast<void>(strText.EscapeSpecialCharacters());
    EXPECT_EQ(strText, L"<");
}

TEST(WString, CompareNoCaseFoldsAsciiLettersOnly) {
    EXPECT_EQ(x_wstring(L"True").CompareNoCase(L"tRUE"), 0);
    EXPECT_EQ(x_wstring(L"").CompareNoCase(L""), 0);
    EXPECT_LT(x_wstring(L"abc").CompareNoCase(L"ABD"), 0);
    EXPECT_GT(x_wstring(L"ABD").CompareNoCase(L"abc"), 0);
    EXPECT_LT(x_wstring(L"ab").CompareNoCase(L"ABC"), 0);
    EXPECT_NE(x_wstring(L"\u00E9").CompareNoCase(L"\u00C9"), 0);
    EXPECT_NE(x_wstring(L"[").CompareNoCase(L"{"), 0);
    EXPECT_NE(x_wstring(L"@").CompareNoCase(L"`"), 0);
    EXPECT_NE(x_wstring(L"i").CompareNoCase(L"\u0130"), 0);
}

TEST(WString, CompareNoCaseHeedsNoLocale) {
    if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) {
        GTEST_SKIP() << "no locale C.UTF-8 here";
    }
    EXPECT_NE(x_wstring(L"\u00E9").CompareNoCase(L"\u00C9"), 0);
}

TEST(WString, TrimRightRemovesAsciiWhiteSpaceAtTheEnd) {
    EXPECT_EQ(x_wstring(L" a b \t\n\v\f\r").TrimRight(), L" a b");
    EXPECT_EQ(x_wstring(L" \t").TrimRight(), L"");
    EXPECT_EQ(x_wstring(L"").TrimRight(), L"");
    EXPECT_EQ(x_wstring(L"a\u00A0").TrimRight(), L"a\u00A0");
    EXPECT_EQ(x_wstring(L"a\u3000").TrimRight(), L"a\u3000");
    EXPECT_EQ(x_wstring(std::wstring(L"a\0", 2)).TrimRight().size(), 2U);
}

TEST(WString, TrimRightChangesTheTextInPlace) {
    x_wstring strText = L"a ";
    EXPECT_EQ(&strText.TrimRight(), &strText);
    EXPECT_EQ(strText, L"a");
}
