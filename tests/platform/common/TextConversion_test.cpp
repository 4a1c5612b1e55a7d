#include "platform/common/TextConversion.h"

#include <gtest/gtest.h>

#include <clocale>
#include <vector>

#include "platform/common/CException.h"

namespace {

std::wstring ErrorOf(const std::string& strUtf8) {
    try {
        OS::WideText(strUtf8);
    } catch (const OS::CException& exception) {
        return exception.GetErrorMessage();
    }
    return L"";
}

std::wstring ErrorOf(const std::wstring& strWide) {
    try {
        OS::WCharToChar(strWide);
    } catch (const OS::CException& exception) {
        return exception.GetErrorMessage();
    }
    return L"";
}

std::wstring Wide(std::initializer_list<char32_t> lstValues) {
    std::wstring strWide;
    for (const char32_t c : lstValues) {
        strWide += static_cast<wchar_t>(c);
    }
    return strWide;
}

/** Byte sequences that are not UTF-8 and the offset of the first bad one. */
struct SBadCase {
    std::string strUtf8;
    std::size_t iOffset;
};

const std::vector<SBadCase>& BadCases() {
    static const std::vector<SBadCase> s_vecCases = {
        {"\x80", 0},
        {"a\xBF", 1},
        {"\xC0\x80", 0},
        {"\xC1\xBF", 0},
        {"\xC3", 0},
        {"\xC3(", 0},
        {"\xE0\x9F\xBF", 0},
        {"\xE1\x80", 0},
        {"\xE1\x80(", 0},
        {"\xED\xA0\x80", 0},
        {"\xED\xBF\xBF", 0},
        {"\xF0\x8F\xBF\xBF", 0},
        {"\xF1\x80\x80", 0},
        {"\xF1\x80\x80(", 0},
        {"\xF4\x90\x80\x80", 0},
        {"\xF5\x80\x80\x80", 0},
        {"\xFF", 0},
        {"\xC3\xA9\xC3", 2},
        {"12345678\x80", 8},
        {"1234567\x80"
         "12345678",
         7},
        {"1234567890123456\xE4\xB8", 16},
    };
    return s_vecCases;
}

}  // namespace

TEST(TextConversion, BoundariesOfEachLengthGoBothWays) {
    const std::wstring strWide = Wide(
        {0x41, 0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFD, 0xFFFE, 0xFFFF, 0x10000, 0xFFFFF, 0x100000, 0x10FFFF});
    const std::string strUtf8 =
        "A\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD\xEF\xBF\xBE\xEF\xBF\xBF"
        "\xF0\x90\x80\x80\xF3\xBF\xBF\xBF\xF4\x80\x80\x80\xF4\x8F\xBF\xBF";
    EXPECT_EQ(OS::WCharToChar(strWide), strUtf8);
    EXPECT_EQ(OS::WideText(strUtf8), strWide);
    EXPECT_EQ(OS::FindInvalidUtf8(strUtf8), std::string_view::npos);
    EXPECT_EQ(OS::CountCodePoints(strUtf8), strWide.size());
}

TEST(TextConversion, EveryScalarValueGoesBothWaysInEveryDegree) {
    std::wstring strWide;
    for (char32_t c = 0; c <= 0x10FFFF; c += c < 0x3000 || c > 0xFF00 ? 1 : 37) {
        if (c < 0xD800 || c > 0xDFFF) {
            strWide += static_cast<wchar_t>(c);
        }
    }
    const std::string strUtf8 = OS::WCharToChar(strWide);
    EXPECT_TRUE(OS::WideText(strUtf8) == strWide);
    EXPECT_TRUE(OS::Utf8Lenient(strWide) == strUtf8);
    EXPECT_TRUE(OS::WideLenient(strUtf8) == strWide);
    EXPECT_TRUE(OS::Utf8Loose(strWide) == strUtf8);
    EXPECT_TRUE(OS::WideLoose(strUtf8) == strWide);
    EXPECT_EQ(OS::CountCodePoints(strUtf8), strWide.size());
}

TEST(TextConversion, OtherCharactersAnywhereAmongAsciiStayInPlace) {
    for (std::size_t iLength = 0; iLength < 20; ++iLength) {
        for (std::size_t iPosition = 0; iPosition <= iLength; ++iPosition) {
            std::wstring strWide(iLength, L'a');
            std::string strUtf8(iLength, 'a');
            strWide.insert(iPosition, L"\u4E2D");
            strUtf8.insert(iPosition, "\xE4\xB8\xAD");
            EXPECT_EQ(OS::WCharToChar(strWide), strUtf8);
            EXPECT_EQ(OS::WideText(strUtf8), strWide);
        }
    }
}

TEST(TextConversion, LongTextIsConvertedWholeWhereverItsSequencesStand) {
    for (std::size_t iPosition = 490; iPosition < 530; ++iPosition) {
        std::wstring strWide(1100, L'a');
        std::string strUtf8(1100, 'a');
        strWide.insert(iPosition, L"\u4E2D\U0001F600");
        strUtf8.insert(iPosition, "\xE4\xB8\xAD\xF0\x9F\x98\x80");
        EXPECT_EQ(OS::WCharToChar(strWide), strUtf8);
        EXPECT_EQ(OS::WideText(strUtf8), strWide);
        strWide[iPosition] = static_cast<wchar_t>(-1);
        EXPECT_EQ(OS::WideLoose(OS::Utf8Loose(strWide)), strWide);
    }
}

TEST(TextConversion, ZeroIsACharacterLikeAnother) {
    const std::string strUtf8("a\0b", 3);
    const std::wstring strWide(L"a\0b", 3);
    EXPECT_EQ(OS::UTF8CharToWChar(strUtf8.data(), strUtf8.size()), strWide);
    EXPECT_EQ(OS::WCharToChar(strWide, 0), strUtf8);
}

TEST(TextConversion, LengthAndNotAZeroEndsTheBytes) {
    EXPECT_EQ(OS::UTF8CharToWChar("abcdef", 3, 0), L"abc");
    EXPECT_EQ(OS::UTF8CharToWChar(nullptr, 0, 0), L"");
}

TEST(TextConversion, BadUtf8IsRefusedWithItsByteOffset) {
    for (const SBadCase& row : BadCases()) {
        EXPECT_EQ(ErrorOf(row.strUtf8), L"the text is not UTF-8 at byte offset " + std::to_wstring(row.iOffset));
        EXPECT_EQ(OS::FindInvalidUtf8(row.strUtf8), row.iOffset);
        EXPECT_EQ(OS::FindInvalidUtf8(row.strUtf8 + "abcdefgh"), row.iOffset);
    }
}

TEST(TextConversion, ValueThatIsNoCharacterIsRefusedWithItsPosition) {
    struct SCase {
        char32_t iValue;
        const wchar_t* pName;
    };
    const SCase aCases[] = {{0xD800, L"U+D800"},         {0xDFFF, L"U+DFFF"},         {0x110000, L"U+110000"},
                            {0x7FFFFFFF, L"U+7FFFFFFF"}, {0x80000000, L"U+80000000"}, {0xFFFFFFFF, L"U+FFFFFFFF"}};
    for (const SCase& row : aCases) {
        EXPECT_EQ(
            ErrorOf(L"abcdefghij" + Wide({row.iValue})),
            std::wstring(L"cannot write the text as UTF-8: ") + row.pName + L" at position 10 is no Unicode character");
    }
}

TEST(TextConversion, LenientPutsTheReplacementForEachBadByteOrValue) {
    EXPECT_EQ(OS::WideLenient("a\xFFz"), L"a\uFFFDz");
    EXPECT_EQ(OS::WideLenient("\xED\xA0\x80"), L"\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(OS::WideLenient("\xE4\xB8"), L"\uFFFD\uFFFD");
    EXPECT_EQ(OS::WideLenient("12345678\xC3"), L"12345678\uFFFD");
    EXPECT_EQ(OS::Utf8Lenient(L"a" + Wide({0xD800, 0x110000, 0xFFFFFFFF}) + L"z"),
              "a\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBDz");
}

TEST(TextConversion, LooseGivesBackEveryValue) {
    const std::wstring strWide = Wide({0xD800, 0xDC00, 0xDFFF, 0x110000, 0x1FFFFF, 0x200000, 0x3FFFFFF, 0x4000000,
                                       0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0, 'a'});
    const std::string strLoose = OS::Utf8Loose(strWide);
    EXPECT_EQ(OS::WideLoose(strLoose), strWide);
    EXPECT_EQ(strLoose.substr(0, 3), "\xED\xA0\x80");
    EXPECT_NE(OS::FindInvalidUtf8(strLoose), std::string_view::npos);
}

TEST(TextConversion, LooseReadsBytesThatItNeverWroteAsReplacements) {
    EXPECT_EQ(OS::WideLoose("a\x80z"), L"a\uFFFDz");
    EXPECT_EQ(OS::WideLoose("\xFF"), L"\uFFFD");
    EXPECT_EQ(OS::WideLoose("\xFE\x80\x80"), L"\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(OS::WideLoose("\xE4(z"), L"\uFFFD(z");
}

TEST(TextConversion, CountsCodePointsOfWellFormedText) {
    EXPECT_EQ(OS::CountCodePoints(""), 0U);
    EXPECT_EQ(OS::CountCodePoints("abc"), 3U);
    EXPECT_EQ(OS::CountCodePoints("\xC3\xA9\xE4\xB8\xAD\xF0\x90\x80\x80"), 3U);
}

TEST(TextConversion, HeedsNoLocale) {
    for (const char* pLocale : {"C", "C.UTF-8", "POSIX"}) {
        std::setlocale(LC_ALL, pLocale);
        EXPECT_EQ(OS::WCharToChar(L"\u4E2D"), "\xE4\xB8\xAD") << pLocale;
        EXPECT_EQ(OS::WideText("\xE4\xB8\xAD"), L"\u4E2D") << pLocale;
    }
}
