// The example policies on the road: into a store in memory, and out again as they were.

#include <filesystem>

#include <gmock/gmock.h>

#include "api/CDLPDigitalAssetsParser.h"
#include "api/CDLPTemplateParse.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "settings/CSubjectID.h"
#include "tests/content/PolicyContent.h"

using namespace Content;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using NameList = std::vector<OS::x_wstring>;

/** The root's markup without the language, which an export adds. */
std::string Markup(const CXMLParser& document) {
    const char* const aSkip[] = {TagUtf8::LOCALIZATION_LANGUAGE};
    std::string strMarkup;
    document.RootView().AppendMarkup(strMarkup, aSkip, 1);
    return strMarkup;
}

NameList Wide(const std::vector<std::string>& vecTexts, const std::wstring& strPrefix = L"") {
    NameList vecWide;
    for (const std::string& strText : vecTexts) {
        vecWide.emplace_back(strPrefix + OS::WideText(strText));
    }
    return vecWide;
}

std::vector<CXMLView> TemplatesOf(const CXMLParser& document) {
    return Children(document.RootView().FirstChild(TagUtf8::COMPLIANCE_TEMPLATES));
}

struct SImported {
    int iResult;
    NameList vecImported;
    NameList vecSkipped;
    NameList vecSkippedAssets;
};

SImported Import(const std::string& strFile) {
    SImported imported{};
    imported.iResult = CDLPTemplateParse(L"").DoTemplateImport(L"", OS::WideText(Read(strFile)), imported.vecImported,
                                                               imported.vecSkipped, imported.vecSkippedAssets);
    return imported;
}

class RoundTripContent : public testing::Test {
  protected:
    RoundTripContent() { CSettingsStore::Open("memory:"); }
    ~RoundTripContent() override { CSettingsStore::Close(); }
};

}  // namespace

TEST_F(RoundTripContent, StarterPolicyIsTakenWhole) {
    const CXMLParser document = Load(STARTER);
    const SImported imported = Import(STARTER);
    EXPECT_EQ(imported.iResult, 0);
    EXPECT_EQ(imported.vecImported, Wide(Values(TemplatesOf(document), TagUtf8::DISPLAY_NAME)));
    EXPECT_THAT(imported.vecSkipped, IsEmpty());
    EXPECT_THAT(imported.vecSkippedAssets, IsEmpty());
}

TEST_F(RoundTripContent, ExportGivesTheStarterPolicyBack) {
    const CXMLParser document = Load(STARTER);
    Import(STARTER);
    OS::x_wstring strExport;
    CDLPTemplateParse(L"").DoTemplateExport(L"", Wide(Names(TemplatesOf(document))), strExport);
    CXMLParser exported;
    ASSERT_TRUE(exported.LoadXML(strExport));
    EXPECT_EQ(Markup(exported), Markup(document));
}

TEST_F(RoundTripContent, ExportGivesTheDigitalAssetsBack) {
    const CXMLParser document = Load(ASSETS);
    const CXMLView assets = document.RootView().FirstChild(TagUtf8::DIGITAL_ASSETS);
    CDLPDigitalAssetsParser parser;
    NameList vecSkipped;
    EXPECT_EQ(parser.ImportDigitalAssets(L"", OS::WideText(Read(ASSETS)), vecSkipped), 0);
    EXPECT_THAT(vecSkipped, IsEmpty());
    std::wstring strExport;
    ASSERT_TRUE(parser.ExportDigitalAssets(L"", Wide(Names(Children(assets, TagUtf8::ENTITY)), SUBJECT_EXPRESSION),
                                           Wide(Names(Children(assets, TagUtf8::DICTIONARY)), SUBJECT_KEYWORD),
                                           strExport));
    CXMLParser exported;
    ASSERT_TRUE(exported.LoadXML(strExport));
    EXPECT_EQ(Markup(exported), Markup(document));
}

TEST_F(RoundTripContent, OlderLayoutIsTakenByTranslatedNames) {
    std::filesystem::current_path(DLP_SOURCE_DIR);
    Import(STARTER);
    const SImported imported = Import(OLDER);
    EXPECT_EQ(imported.iResult, 0);
    EXPECT_THAT(imported.vecImported,
                ElementsAre(L"Card data in mail", L"Employee lists", L"Patient data", L"Sealed tenders"));
    EXPECT_THAT(imported.vecSkipped, IsEmpty());
}

TEST_F(RoundTripContent, OlderLayoutWithoutTheMapKeepsOnlyCurrentNames) {
    std::filesystem::current_path("/");
    Import(STARTER);
    const SImported imported = Import(OLDER);
    EXPECT_EQ(imported.iResult, 0);
    EXPECT_THAT(imported.vecImported, ElementsAre(L"Sealed tenders"));
    EXPECT_THAT(imported.vecSkipped, ElementsAre(L"Card data in mail", L"Employee lists", L"Patient data"));
}
