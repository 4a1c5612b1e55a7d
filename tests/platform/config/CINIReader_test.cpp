#include "platform/config/CINIReader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "platform/common/TextConversion.h"
#include "tests/support/TempDir.h"

namespace {

/** Writes down all it is told; stops after a line "stop". */
class CLineLog : public CINIReader::CIterateEachLineCallback {
  public:
    void OnBegin() override { m_vecEvents.push_back("begin"); }
    void OnEnd() override { m_vecEvents.push_back("end"); }
    bool OnLine(int iIndex, const std::wstring& strLine) override {
        m_vecEvents.push_back(std::to_string(iIndex) + ":" + OS::Utf8Lenient(strLine));
        return strLine != L"stop";
    }
    void OnBadLine(int iIndex) override { m_vecEvents.push_back(std::to_string(iIndex) + " is bad"); }

    std::vector<std::string> m_vecEvents;
};

/** Writes down the fields of one line; stops after a field "stop". */
class CFieldLog : public CINIReader::CIterateEachTokenCallback {
  public:
    using CIterateEachTokenCallback::CIterateEachTokenCallback;
    bool OnToken(int iIndex, const std::wstring& strToken) override {
        m_strFields += std::to_wstring(iIndex) + L"[" + strToken + L"]";
        return strToken != L"stop";
    }

    std::wstring m_strFields;
};

std::vector<std::string> LinesOf(const std::string& strContent) {
    const CTempDir folder;
    CINIReader reader;
    EXPECT_TRUE(reader.Parse(OS::WideText(folder.Write("map.txt", strContent)).c_str(), L"r"));
    CLineLog lines;
    reader.Enumerate(lines);
    return lines.m_vecEvents;
}

std::wstring FieldsOf(const std::wstring& strLine, const std::wstring& strDelimiter = L"\t\n") {
    CFieldLog fields(strLine, strDelimiter);
    CLineLog lines;
    lines.Enumerate(fields);
    return fields.m_strFields;
}

using CLines = std::vector<std::string>;

}  // namespace

TEST(INIReader, HandsOverEachLine) {
    EXPECT_EQ(LinesOf("a\tb\nc\n"), (CLines{"begin", "0:a\tb", "1:c", "end"}));
}

TEST(INIReader, LastLineNeedsNoNewline) {
    EXPECT_EQ(LinesOf("a\nb"), (CLines{"begin", "0:a", "1:b", "end"}));
}

TEST(INIReader, EmptyLinesAreLines) {
    EXPECT_EQ(LinesOf("\na\n\n"), (CLines{"begin", "0:", "1:a", "2:", "end"}));
    EXPECT_EQ(LinesOf(""), (CLines{"begin", "end"}));
}

TEST(INIReader, CarriageReturnStaysInTheLine) {
    EXPECT_EQ(LinesOf("a\r\nb\rc"), (CLines{"begin", "0:a\r", "1:b\rc", "end"}));
}

TEST(INIReader, ByteOrderMarkIsDroppedAtTheBeginningOnly) {
    EXPECT_EQ(LinesOf("\xEF\xBB\xBF"
                      "a\n\xEF\xBB\xBF"
                      "b"),
              (CLines{"begin", "0:a",
                      "1:\xEF\xBB\xBF"
                      "b",
                      "end"}));
}

TEST(INIReader, LineThatIsNotUtf8IsLeftOutAndCounted) {
    EXPECT_EQ(LinesOf("a\n\xFF\n\xC3\xA9"), (CLines{"begin", "0:a", "1 is bad", "2:\xC3\xA9", "end"}));
}

TEST(INIReader, BadLineIsPassedOverByDefault) {
    struct CCount : CINIReader::CIterateEachLineCallback {
        bool OnLine(int, const std::wstring&) override { return ++m_iLines > 0; }
        int m_iLines = 0;
    } count;
    const CTempDir folder;
    CINIReader reader;
    ASSERT_TRUE(reader.Parse(OS::WideText(folder.Write("map.txt", "a\n\xFF\nb")).c_str(), L"r"));
    reader.Enumerate(count);
    EXPECT_EQ(count.m_iLines, 2);
}

TEST(INIReader, CallbackStopsTheLines) {
    EXPECT_EQ(LinesOf("a\nstop\nb\n"), (CLines{"begin", "0:a", "1:stop", "end"}));
}

TEST(INIReader, EnumeratesAgainFromTheFirstLine) {
    const CTempDir folder;
    CINIReader reader;
    ASSERT_TRUE(reader.Parse(OS::WideText(folder.Write("map.txt", "a")).c_str(), L"r"));
    CLineLog lines;
    reader.Enumerate(lines);
    reader.Enumerate(lines);
    EXPECT_EQ(lines.m_vecEvents, (CLines{"begin", "0:a", "end", "begin", "0:a", "end"}));
}

TEST(INIReader, UnreadableFileYieldsNoLineAndForgetsTheOneBefore) {
    const CTempDir folder;
    CINIReader reader;
    ASSERT_TRUE(reader.Parse(OS::WideText(folder.Write("map.txt", "a")).c_str(), L"r"));
    EXPECT_FALSE(reader.Parse(OS::WideText(folder.Path("none.txt")).c_str(), L"r"));
    CLineLog lines;
    reader.Enumerate(lines);
    EXPECT_EQ(lines.m_vecEvents, (CLines{"begin", "end"}));
    EXPECT_FALSE(reader.Parse(OS::WideText(folder.Path()).c_str(), L"r"));
}

TEST(INIReader, PathThatIsNoTextIsNotFound) {
    const wchar_t aPath[] = {L'a', static_cast<wchar_t>(0xD800), 0};
    EXPECT_FALSE(CINIReader().Parse(aPath, L"r"));
}

TEST(INIReader, ReadsOnly) {
    const CTempDir folder;
    CINIReader reader;
    EXPECT_FALSE(reader.Parse(OS::WideText(folder.Write("map.txt", "a")).c_str(), L"w"));
    EXPECT_EQ(folder.Read("map.txt"), "a");
}

TEST(INIReader, PathWithBackslashesIsRelativeToTheCurrentDirectory) {
    const CTempDir folder;
    folder.Write("config/map.txt", "a");
    std::filesystem::current_path(folder.Path());
    CINIReader reader;
    ASSERT_TRUE(reader.Parse(L"config\\map.txt", L"r"));
    CLineLog lines;
    reader.Enumerate(lines);
    EXPECT_EQ(lines.m_vecEvents, (CLines{"begin", "0:a", "end"}));
    std::filesystem::current_path("/");
}

TEST(INIReaderTokens, EachDelimiterEndsAField) {
    EXPECT_EQ(FieldsOf(L"a\tb"), L"0[a]1[b]");
    EXPECT_EQ(FieldsOf(L"a\t\tb"), L"0[a]1[]2[b]");
    EXPECT_EQ(FieldsOf(L"\ta\nb\t"), L"0[]1[a]2[b]3[]");
    EXPECT_EQ(FieldsOf(L"a b,c"), L"0[a b,c]");
    EXPECT_EQ(FieldsOf(L"a b,c", L" ,"), L"0[a]1[b]2[c]");
    EXPECT_EQ(FieldsOf(L""), L"0[]");
}

TEST(INIReaderTokens, FieldsKeepTheirBlanks) {
    EXPECT_EQ(FieldsOf(L" a \t b \r"), L"0[ a ]1[ b \r]");
}

TEST(INIReaderTokens, CallbackStopsTheFields) {
    EXPECT_EQ(FieldsOf(L"a\tstop\tb"), L"0[a]1[stop]");
}

TEST(INIReaderTokens, CommentIsAFieldThatBeginsWithTheMarker) {
    const CFieldLog fields(L"", L"\t");
    EXPECT_TRUE(fields.IsComment(L"#", L"#"));
    EXPECT_TRUE(fields.IsComment(L"# text", L"#"));
    EXPECT_FALSE(fields.IsComment(L" #text", L"#"));
    EXPECT_FALSE(fields.IsComment(L"a#", L"#"));
    EXPECT_FALSE(fields.IsComment(L"", L"#"));
    EXPECT_TRUE(fields.IsComment(L"//text", L"//"));
    EXPECT_FALSE(fields.IsComment(L"/text", L"//"));
}

TEST(INIReaderTokens, CallbackGivesItsLineAndDelimiters) {
    const CFieldLog fields(L"line", L"\t\n");
    EXPECT_EQ(fields.GetLineContent(), L"line");
    EXPECT_EQ(fields.GetDelimiter(), L"\t\n");
}
