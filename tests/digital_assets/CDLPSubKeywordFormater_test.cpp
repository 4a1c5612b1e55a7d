#include "api/CDLPSubKeywordFormater.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/common/TextConversion.h"
#include "tests/support/LogRecorder.h"

using testing::ElementsAre;

namespace {

constexpr char NO_NODE[] =
    "0x1004 util_ParseDLPDigitalAssets.cpp CDLPSubKeywordFormater::ToUIFormat() Unable to find node "
    "/dictionary/keyword.                    The xml file format is incompatible.";
constexpr char UI_ENTERED[] = "0x110 util_ParseDLPDigitalAssets.cpp CDLPSubKeywordFormater::ToUIFormat()";

std::string ToXml(std::vector<CDLPSubKeyword> vecKeywords) {
    return OS::Utf8Lenient(CDLPSubKeywordFormater::ToXmlFormat(vecKeywords));
}

/** @return one "keyword|description|score|caseSensitive" per entry */
std::vector<std::string> Texts(const std::vector<CDLPSubKeyword>& vecKeywords) {
    std::vector<std::string> vecTexts;
    for (const CDLPSubKeyword& keyword : vecKeywords) {
        vecTexts.push_back(OS::Utf8Lenient(keyword.m_strKeyword + L"|" + keyword.m_strDescription + L"|" +
                                           keyword.m_strScore + L"|" + keyword.m_strCaseSensitive));
    }
    return vecTexts;
}

std::vector<std::string> ToUI(const std::string& strXml, std::vector<CDLPSubKeyword> vecKeywords = {}) {
    CDLPSubKeywordFormater::ToUIFormat(OS::WideText(strXml), vecKeywords);
    return Texts(vecKeywords);
}

}  // namespace

TEST(SubKeywordToXml, EmptyListGivesAnEmptyDictionary) {
    EXPECT_EQ(ToXml({}), "<dictionary/>");
}

TEST(SubKeywordToXml, EntriesKeepTheirOrderAndTheirTexts) {
    EXPECT_EQ(ToXml({{L"b", L"second letter", L"10", L"true"}, {L"a", L"", L"", L"TRUE"}, CDLPSubKeyword()}),
              "<dictionary><keyword description=\"second letter\" score=\"10\" caseSensitive=\"true\">b</keyword>"
              "<keyword description=\"\" score=\"\" caseSensitive=\"TRUE\">a</keyword>"
              "<keyword description=\"\" score=\"0\" caseSensitive=\"false\"/></dictionary>");
}

TEST(SubKeywordToXml, ListIsNotChanged) {
    std::vector<CDLPSubKeyword> vecKeywords{{L"b", L"", L"1", L"false"}, {L"a", L"", L"2", L"true"}};
    CDLPSubKeywordFormater::ToXmlFormat(vecKeywords);
    EXPECT_THAT(Texts(vecKeywords), ElementsAre("b||1|false", "a||2|true"));
}

TEST(SubKeywordToXml, StepsAreLogged) {
    CLogRecorder log;
    ToXml({{L"a", L"d", L"1", L"true"}});
    EXPECT_THAT(log.Lines(),
                ElementsAre("0x110 util_ParseDLPDigitalAssets.cpp CDLPSubKeywordFormater::ToXmlFormat()",
                            "0x111 util_ParseDLPDigitalAssets.cpp CDLPSubKeywordFormater::ToXmlFormat() xml =\n "
                            "<dictionary><keyword description=\"d\" score=\"1\" caseSensitive=\"true\">a</keyword>"
                            "</dictionary>"));
    EXPECT_EQ(log.Records().at(0).strSource, ".\\util_ParseDLPDigitalAssets.cpp");
}

TEST(SubKeywordToXml, CharacterThatXmlCannotCarryGivesAnEmptyText) {
    const CDLPSubKeyword fine(L"a", L"", L"0", L"false");
    for (const std::wstring& strBad :
         {std::wstring(L"x\x01"), std::wstring(L"x\0y", 3), std::wstring(L"\xfffe"), std::wstring(1, L'\xd800')}) {
        for (const CDLPSubKeyword& bad :
             {CDLPSubKeyword(strBad, L"", L"", L""), CDLPSubKeyword(L"", strBad, L"", L""),
              CDLPSubKeyword(L"", L"", strBad, L""), CDLPSubKeyword(L"", L"", L"", strBad)}) {
            CLogRecorder log;
            EXPECT_EQ(ToXml({fine, bad}), "");
            EXPECT_THAT(
                log.Lines(),
                ElementsAre("0x110 util_ParseDLPDigitalAssets.cpp CDLPSubKeywordFormater::ToXmlFormat()",
                            testing::MatchesRegex("0x1004 util_ParseDLPDigitalAssets.cpp Fail to convert "
                                                  "subkeyword to xml format, Error: .*U\\+(0001|0000|FFFE|D800).*")));
        }
    }
}

TEST(SubKeywordToUI, EntriesAreReadAndSorted) {
    EXPECT_THAT(ToUI("<dictionary><keyword description=\"d\" score=\"5\" caseSensitive=\"true\">b</keyword>"
                     "<keyword score=\"1\" description=\"e\" caseSensitive=\"no\">a</keyword></dictionary>"),
                ElementsAre("a|e|1|no", "b|d|5|true"));
}

TEST(SubKeywordToUI, AbsentAttributeGivesAnEmptyText) {
    EXPECT_THAT(ToUI("<dictionary><keyword>a</keyword><keyword/></dictionary>"), ElementsAre("|||", "a|||"));
}

TEST(SubKeywordToUI, OtherChildrenAndAttributesOfTheListAreIgnored) {
    EXPECT_THAT(ToUI("<?xml version=\"1.0\"?><dictionary name=\"x\" type=\"All\"><other>o</other><keyword>a</keyword>"
                     "<Keyword>b</Keyword><!-- c --><other><keyword>d</keyword></other></dictionary>"),
                ElementsAre("a|||"));
}

TEST(SubKeywordToUI, KeywordIsAllTextBelowIt) {
    EXPECT_THAT(ToUI("<dictionary><keyword> a<b>c </b><![CDATA[<d>]]><!-- e -->&amp;</keyword></dictionary>"),
                ElementsAre(" ac <d>&|||"));
}

TEST(SubKeywordToUI, NamesAreThoseWithoutPrefix) {
    EXPECT_THAT(ToUI("<dictionary xmlns=\"urn:x\" xmlns:p=\"urn:x\"><keyword p:score=\"1\">a</keyword>"
                     "<p:keyword>b</p:keyword></dictionary>"),
                ElementsAre("a|||"));
}

TEST(SubKeywordToUI, EntriesAreAppendedAndAllAreSorted) {
    EXPECT_THAT(ToUI("<dictionary><keyword>b</keyword></dictionary>", {{L"c", L"", L"", L""}, {L"a", L"", L"", L""}}),
                ElementsAre("a|||", "b|||", "c|||"));
}

TEST(SubKeywordToUI, EmptyDictionarySortsWhatIsThere) {
    CLogRecorder log;
    EXPECT_THAT(ToUI("<dictionary/>", {{L"b", L"", L"", L""}, {L"a", L"", L"", L""}}), ElementsAre("a|||", "b|||"));
    EXPECT_THAT(log.Lines(), ElementsAre(UI_ENTERED));
}

TEST(SubKeywordToUI, TextThatIsNoDictionaryLeavesTheListAsItWas) {
    for (const char* const pText :
         {"", "no markup", "<dictionary>", "<other><keyword>x</keyword></other>", "<Dictionary/>",
          "<a><dictionary><keyword>x</keyword></dictionary></a>", "<!DOCTYPE dictionary><dictionary/>",
          "<p:dictionary xmlns:p='urn:x'><keyword>x</keyword></p:dictionary>", " <?xml version='1.0'?><dictionary/>"}) {
        CLogRecorder log;
        EXPECT_THAT(ToUI(pText, {{L"b", L"", L"", L""}, {L"a", L"", L"", L""}}), ElementsAre("b|||", "a|||")) << pText;
        EXPECT_THAT(log.Lines(), ElementsAre(UI_ENTERED, NO_NODE)) << pText;
    }
}

TEST(SubKeywordToUI, ZeroCharacterAnywhereLeavesTheListAsItWas) {
    const OS::x_wstring strXml = L"<dictionary><keyword>x</keyword></dictionary>" + std::wstring(1, L'\0');
    std::vector<CDLPSubKeyword> vecKeywords{{L"b", L"", L"", L""}, {L"a", L"", L"", L""}};
    CLogRecorder log;
    CDLPSubKeywordFormater::ToUIFormat(strXml, vecKeywords);
    EXPECT_THAT(Texts(vecKeywords), ElementsAre("b|||", "a|||"));
    EXPECT_THAT(log.Lines(), ElementsAre(UI_ENTERED, NO_NODE));
}

TEST(SubKeywordToUI, HundredsOfEqualKeywordsAreAllKept) {
    std::vector<CDLPSubKeyword> vecKeywords;
    for (int i = 0; i < 1000; ++i) {
        vecKeywords.emplace_back(i % 3 == 0 ? L"a" : L"same", std::to_wstring(i), L"0", L"false");
    }
    const OS::x_wstring strXml = CDLPSubKeywordFormater::ToXmlFormat(vecKeywords);
    std::vector<std::string> vecExpected = Texts(vecKeywords);
    std::vector<CDLPSubKeyword> vecRead;
    CDLPSubKeywordFormater::ToUIFormat(strXml, vecRead);
    EXPECT_TRUE(std::is_sorted(vecRead.begin(), vecRead.end(), [](const auto& left, const auto& right) {
        return left.m_strKeyword < right.m_strKeyword;
    }));
    std::vector<std::string> vecActual = Texts(vecRead);
    std::sort(vecExpected.begin(), vecExpected.end());
    std::sort(vecActual.begin(), vecActual.end());
    EXPECT_EQ(vecActual, vecExpected);
}

TEST(SubKeywordFormater, WhatIsWrittenIsReadBack) {
    std::vector<CDLPSubKeyword> vecKeywords{
        {L" ", L" ", L" ", L" "},
        {L" blanks ", L"tab\there, line\nthere\r", L"-3", L"true"},
        {L"<&>\"'", L"<&>\"'", L"1e9", L""},
        {L"\u00e4\u4e2d\U0001f600", L"\u00e4\u4e2d\U0001f600", L"", L"false"},
    };
    std::vector<CDLPSubKeyword> vecRead;
    CDLPSubKeywordFormater::ToUIFormat(CDLPSubKeywordFormater::ToXmlFormat(vecKeywords), vecRead);
    EXPECT_EQ(Texts(vecRead), Texts(vecKeywords));
}

TEST(SubKeywordFormater, AssignmentCopiesNothing) {
    CDLPSubKeywordFormater left;
    const CDLPSubKeywordFormater right;
    EXPECT_EQ(&(left = right), &left);
}
