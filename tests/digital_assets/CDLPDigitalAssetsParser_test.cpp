#include "api/CDLPDigitalAssetsParser.h"

#include <type_traits>

#include "platform/localization/StringTable.h"
#include "tests/digital_assets/AssetFixture.h"

using testing::ElementsAre;

namespace {

class DigitalAssetsParser : public CAssetFixture {
  protected:
    static std::string Root() {
        std::wstring strOut = L"as it was";
        EXPECT_TRUE(CDLPDigitalAssetsParser().GenerateRootXML(strOut));
        return OS::Utf8Lenient(strOut);
    }
};

using Pair = CDLPDigitalAssetsParser::SKeyValuePair;
static_assert(std::is_same_v<decltype(Pair::strKey), std::wstring>);
static_assert(std::is_same_v<decltype(Pair::strValue), std::wstring>);

constexpr char ROOT_ENTERED[] = "CDLPDigitalAssetsParser::GenerateRootXML()";

}  // namespace

TEST_F(DigitalAssetsParser, RootCarriesTheFirstVersionAndNoLanguage) {
    CLogRecorder log;
    EXPECT_EQ(Root(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?><SAPolicy template_version=\"3.0.1000\" "
              "localization_language=\"\"/>");
    EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", ROOT_ENTERED)));
    EXPECT_EQ(log.Records().at(0).strSource, ".\\util_ParseDLPDigitalAssets.cpp");
}

TEST_F(DigitalAssetsParser, RootCarriesTheVersionAndLanguageSet) {
    CDLPDigitalAssetsParser::SetVersion(L"4 <&> \"x\"");
    CDLPDigitalAssetsParser::SetLanguage(L"\u4e2d\u6587");
    EXPECT_EQ(CDLPDigitalAssetsParser::GetVersion(), L"4 <&> \"x\"");
    EXPECT_EQ(CDLPDigitalAssetsParser::GetLanguage(), L"\u4e2d\u6587");
    EXPECT_EQ(Root(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?><SAPolicy template_version=\"4 &lt;&amp;&gt; &quot;x&quot;\" "
              "localization_language=\"\xe4\xb8\xad\xe6\x96\x87\"/>");
}

TEST_F(DigitalAssetsParser, RootThatCannotBeWrittenLeavesTheTextAsItWas) {
    for (const std::wstring& strBad : {std::wstring(L"\x01"), std::wstring(1, L'\0'), std::wstring(1, L'\xd800')}) {
        CDLPDigitalAssetsParser::SetVersion(L"3.0.1000");
        CDLPDigitalAssetsParser::SetLanguage(strBad);
        CLogRecorder log;
        std::wstring strOut = L"as it was";
        EXPECT_FALSE(CDLPDigitalAssetsParser().GenerateRootXML(strOut));
        EXPECT_EQ(strOut, L"as it was");
        EXPECT_FALSE(CDLPDigitalAssetsParser().ExportDigitalAssets(L"", {}, {}, strOut));
        EXPECT_EQ(strOut, L"as it was");
        const auto rootFailed = testing::StartsWith(Line("0x1004", "Fail to generate xml file root part, Error: "));
        EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", ROOT_ENTERED), rootFailed,
                                             Line("0x110", "CDLPDigitalAssetsParser::ExportDigitalAssets()"),
                                             Line("0x110", ROOT_ENTERED), rootFailed,
                                             Line("0x1004", "Fail to generate xml file digital assets part.")));
    }
}

TEST_F(DigitalAssetsParser, LanguageIsFilledOnceFromItsText) {
    SYS::SetStringW(SYS::STRING_LANGUAGE, L"English");
    EXPECT_EQ(CDLPDigitalAssetsParser::GetLanguage(), L"English");
    SYS::SetStringW(SYS::STRING_LANGUAGE, L"French");
    EXPECT_EQ(CDLPDigitalAssetsParser::GetLanguage(), L"English");
    CDLPDigitalAssetsParser::SetLanguage(L"");
    EXPECT_EQ(CDLPDigitalAssetsParser::GetLanguage(), L"French");
}

TEST_F(DigitalAssetsParser, LanguageWithoutATextIsAskedForEachTime) {
    EXPECT_EQ(CDLPDigitalAssetsParser::GetLanguage(), L"");
    SYS::SetStringW(SYS::STRING_LANGUAGE, L"English");
    EXPECT_EQ(CDLPDigitalAssetsParser::GetLanguage(), L"English");
}

TEST_F(DigitalAssetsParser, LanguageSetIsNotReplacedByTheText) {
    CDLPDigitalAssetsParser::SetLanguage(L"German");
    SYS::SetStringW(SYS::STRING_LANGUAGE, L"English");
    EXPECT_EQ(CDLPDigitalAssetsParser::GetLanguage(), L"German");
}

TEST_F(DigitalAssetsParser, RootAsksForTheLanguagesText) {
    SYS::SetStringW(SYS::STRING_LANGUAGE, L"English");
    EXPECT_THAT(Root(), testing::HasSubstr("localization_language=\"English\""));
}
