#include "templates/DLPXmlNormalizer.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "api/CDLPDigitalAssetsParser.h"
#include "digital_assets/ImportObserver.h"
#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TempDir.h"
#include "xml/CPolicyDocument.h"

namespace {

using Lines = std::vector<std::string>;

constexpr char MAP_FILE[] = "config/cfg_dlp_da_map.txt";
constexpr char ROOT_START[] =
    R"(<?xml version="1.0" encoding="UTF-8"?><SAPolicy template_version="3.0.1000" localization_language="">)";

std::string Narrow(const std::wstring& strText) {
    return OS::Utf8Lenient(strText);
}

/** Makes a folder with a map file the working directory. */
class XmlNormalizer : public testing::Test {
  protected:
    void SetUp() override { std::filesystem::current_path(m_folder.Path()); }
    void TearDown() override { std::filesystem::current_path("/"); }

    void WriteMap(const std::string& strContent) {
        m_folder.Write(MAP_FILE, strContent);
        m_normalizer.InitDigitalAssetsMappingTable();
    }

    std::string Map(const wchar_t* pName) { return Narrow(m_normalizer.MapDigitalAssetsSourceName(pName)); }

    /** @return the converted text; "false" when that failed */
    std::string Normalized(const std::string& strXml) {
        OS::x_wstring strResult = L"untouched";
        return m_normalizer.NormailzeXml(OS::WideText(strXml), strResult) ? Narrow(strResult) : "false";
    }

    /** @return the template element after conversion; the markup of others in the document would follow it */
    std::string NormalizedTemplate(const std::string& strTemplate) {
        const std::string strStart = std::string(ROOT_START) + "<complianceTemplates command=\"overwrite\">";
        const std::string strEnd = "</complianceTemplates></SAPolicy>";
        const std::string strText =
            Normalized("<SAPolicy><complianceTemplates>" + strTemplate + "</complianceTemplates></SAPolicy>");
        EXPECT_EQ(strText.substr(0, strStart.size()), strStart);
        EXPECT_EQ(strText.substr(strText.size() - strEnd.size()), strEnd);
        return strText.substr(strStart.size(), strText.size() - strStart.size() - strEnd.size());
    }

    CTempDir m_folder;
    CDLPXmlNormalizer m_normalizer;
};

std::string Line(const std::string& strMessage, const std::string& strLevel = "0x110") {
    return strLevel + " DLPTemplateMgr.cpp CDLPXmlNormalizer::" + strMessage;
}

class CItemRecorder : public CImportObserver {
  public:
    void OnItem(const SImportItem& item) override { m_vecItems.push_back(item); }
    std::vector<SImportItem> m_vecItems;
};

}  // namespace

TEST_F(XmlNormalizer, MapsTheNamesOfItsFile) {
    WriteMap("Old card\tCard number\nOld words\tWords\n");
    EXPECT_EQ(Map(L"Old card"), "Card number");
    EXPECT_EQ(Map(L"Old words"), "Words");
}

TEST_F(XmlNormalizer, FileNamedAsTheTextStandsComesFirst) {
    m_folder.Write("config\\cfg_dlp_da_map.txt", "Old\tAs it stands\n");
    WriteMap("Old\tWith slashes\n");
    EXPECT_EQ(Map(L"Old"), "As it stands");
}

TEST_F(XmlNormalizer, NameOutsideTheMapStaysAndIsLogged) {
    WriteMap("Old\tNew\n");
    CLogRecorder log;
    EXPECT_EQ(Map(L"old"), "old");
    EXPECT_EQ(log.Lines(), (Lines{Line("MapDigitalAssetsSourceName()"),
                                  "0x1003 DLPTemplateMgr.cpp can't map digital asset source name: old",
                                  Line("MapDigitalAssetsSourceName()", "0x111")}));
    log.Clear();
    EXPECT_EQ(Map(L"Old"), "New");
    EXPECT_EQ(log.Lines(),
              (Lines{Line("MapDigitalAssetsSourceName()"), Line("MapDigitalAssetsSourceName()", "0x111")}));
}

TEST_F(XmlNormalizer, AcceptedLinesAreLogged) {
    CLogRecorder log;
    WriteMap("# comment\tx\nOld\tNew\nalone\n");
    EXPECT_EQ(log.Lines(),
              (Lines{Line("InitDigitalAssetsMappingTable()"), "0x102 DLPTemplateMgr.h srcName = Old",
                     "0x102 DLPTemplateMgr.h dstName = New", Line("InitDigitalAssetsMappingTable()", "0x111")}));
}

TEST_F(XmlNormalizer, FieldsAreTrimmedAtTheirEndOnly) {
    WriteMap("Old  \v\tNew \r\n  lead\t  also\n");
    EXPECT_EQ(Map(L"Old"), "New");
    EXPECT_EQ(Map(L"  lead"), "  also");
    EXPECT_EQ(Map(L"lead"), "lead");
}

TEST_F(XmlNormalizer, CommentsBeginTheLine) {
    WriteMap("#Old\tNew\n #x\ty\na\t#b\n##\tz\n");
    EXPECT_EQ(Map(L"#Old"), "#Old");
    EXPECT_EQ(Map(L" #x"), "y");
    EXPECT_EQ(Map(L"a"), "#b");
    EXPECT_EQ(Map(L"##"), "##");
}

TEST_F(XmlNormalizer, IncompleteLinesAreIgnored) {
    WriteMap("\n\t\nalone\nalone2\t\nblank\t \n\tnew\n  \tx\ntwo\t\ttabs\nok\tfine");
    for (const wchar_t* pName : {L"", L"alone", L"alone2", L"blank", L"  ", L"two"}) {
        EXPECT_EQ(Map(pName), Narrow(pName));
    }
    EXPECT_EQ(Map(L"ok"), "fine");
}

TEST_F(XmlNormalizer, FurtherFieldsAreIgnored) {
    WriteMap("Old\tNew\tmore\t#\n");
    EXPECT_EQ(Map(L"Old"), "New");
}

TEST_F(XmlNormalizer, SplittingStopsAtACommentAndAfterTwoFields) {
    CDLPXmlNormalizer::CLineReaderTokenCallback fields(L"");
    EXPECT_FALSE(fields.OnToken(0, L"#Old"));
    EXPECT_TRUE(fields.OnToken(0, L"Old "));
    EXPECT_TRUE(fields.OnToken(1, L"#New "));
    EXPECT_FALSE(fields.OnToken(2, L"more"));
    EXPECT_EQ(fields.GetSource(), L"Old");
    EXPECT_EQ(fields.GetDestination(), L"#New");
}

TEST_F(XmlNormalizer, LaterLineReplacesAnEarlierOne) {
    WriteMap("Old\tFirst\nOld\tSecond\n");
    EXPECT_EQ(Map(L"Old"), "Second");
}

TEST_F(XmlNormalizer, LineThatIsNotUtf8IsSkippedAndLogged) {
    CLogRecorder log;
    WriteMap(
        "\xEF\xBB\xBF"
        "Old\tNew\nbad\xFF\tx\n\xC3\xA9\t\xE2\x82\xAC\n");
    EXPECT_EQ(Map(L"Old"), "New");
    EXPECT_EQ(Map(L"\u00E9"), "\xE2\x82\xAC");
    EXPECT_EQ(log.Messages(0x1003), Lines{"Skip line 2 of the digital asset names since it is not UTF-8"});
}

TEST_F(XmlNormalizer, FilledMapIsNotReadAgain) {
    WriteMap("Old\tNew\n");
    CLogRecorder log;
    WriteMap("Old\tNewer\nMore\tNames\n");
    EXPECT_EQ(log.Lines(), Lines{Line("InitDigitalAssetsMappingTable()")});
    EXPECT_EQ(Map(L"Old"), "New");
    EXPECT_EQ(Map(L"More"), "More");
}

TEST_F(XmlNormalizer, MissingFileIsTriedAgain) {
    CLogRecorder log;
    m_normalizer.InitDigitalAssetsMappingTable();
    EXPECT_EQ(log.Lines(),
              (Lines{Line("InitDigitalAssetsMappingTable()"), Line("InitDigitalAssetsMappingTable()", "0x111")}));
    EXPECT_EQ(Map(L"Old"), "Old");
    WriteMap("# nothing\n");
    WriteMap("Old\tNew\n");
    EXPECT_EQ(Map(L"Old"), "New");
    EXPECT_EQ(CDLPXmlNormalizer().MapDigitalAssetsSourceName(L"Old"), L"New");
}

TEST_F(XmlNormalizer, UnreadableFileLeavesEveryNameAndIsTriedAgain) {
    m_folder.MakeFolder(MAP_FILE);
    m_normalizer.InitDigitalAssetsMappingTable();
    CLogRecorder log;
    EXPECT_EQ(NormalizedTemplate(R"(<template><matchRule><buildingBlock sourceName="Old"/><buildingBlock/></matchRule>)"
                                 R"(</template>)"),
              R"(<template display_name="" pre-defined="false" severity="medium"><matchRule>)"
              R"(<buildingBlock sourceName="Old"/><buildingBlock sourceName=""/></matchRule></template>)");
    EXPECT_EQ(log.Messages(0x1003), (Lines{"can't map digital asset source name: Old",  //
                                           "can't map digital asset source name: "}));
    std::filesystem::remove(m_folder.Path(MAP_FILE));
    WriteMap("Old\tNew\n");
    EXPECT_EQ(Map(L"Old"), "New");
}

TEST_F(XmlNormalizer, TemplateGetsTheAttributesOfToday) {
    EXPECT_EQ(NormalizedTemplate(R"(<template name="n" displayName="Shown" builtin="0" description="x"/>)"),
              R"(<template name="n" description="x" display_name="Shown" pre-defined="false" severity="medium"/>)");
}

TEST_F(XmlNormalizer, AttributesThatAreThereAreReplacedInPlace) {
    EXPECT_EQ(NormalizedTemplate(R"(<template severity="high" display_name="old" pre-defined="true" name="n"/>)"),
              R"(<template severity="medium" display_name="" pre-defined="false" name="n"/>)");
}

TEST_F(XmlNormalizer, BuiltInTemplatesAreLeftOut) {
    EXPECT_EQ(NormalizedTemplate(R"(<template name="a" builtin="1"/><template name="b" builtin="2"/>)"
                                 R"(<template name="c" builtin=" 1"/><template name="d"/>)"),
              R"(<template name="b" display_name="" pre-defined="false" severity="medium"/>)"
              R"(<template name="c" display_name="" pre-defined="false" severity="medium"/>)"
              R"(<template name="d" display_name="" pre-defined="false" severity="medium"/>)");
}

TEST_F(XmlNormalizer, ContentPassesThroughButForMappedNames) {
    WriteMap("Old\tNew\n");
    EXPECT_EQ(
        NormalizedTemplate(
            R"(<template name="n"><!-- c --><industries><industry name="i"/></industries><matchRule operation="OR">)"
            R"(<buildingBlock sourceName="Old" sourceType="ENTITY"/><x sourceName="Old"/>)"
            R"(<buildingBlock sourceType="KEYWORD" sourceName="Kept"/><buildingBlock/></matchRule></template>)"),
        R"(<template name="n" display_name="" pre-defined="false" severity="medium"><!-- c --><industries>)"
        R"(<industry name="i"/></industries><matchRule operation="OR">)"
        R"(<buildingBlock sourceName="New" sourceType="ENTITY"/><x sourceName="Old"/>)"
        R"(<buildingBlock sourceType="KEYWORD" sourceName="Kept"/><buildingBlock sourceName=""/></matchRule>)"
        R"(</template>)");
}

TEST_F(XmlNormalizer, DocumentIsWrappedInTheRootOfToday) {
    CDLPDigitalAssetsParser::SetVersion(L"9.9");
    CDLPDigitalAssetsParser::SetLanguage(L"English");
    EXPECT_EQ(Normalized("<SAPolicy localization_language=\"x\"><industries><industry name=\"i\"><template_id>n"
                         "</template_id></industry></industries><complianceTemplates><template name=\"n\"/>"
                         "</complianceTemplates><digitalAssets/></SAPolicy>"),
              R"(<?xml version="1.0" encoding="UTF-8"?><SAPolicy template_version="9.9" )"
              R"(localization_language="English"><complianceTemplates command="overwrite">)"
              R"(<template name="n" display_name="" pre-defined="false" severity="medium"/>)"
              R"(</complianceTemplates></SAPolicy>)");
}

TEST_F(XmlNormalizer, TemplatesOfSeveralContainersAreJoined) {
    EXPECT_EQ(Normalized("<SAPolicy><complianceTemplates><template name=\"a\"/></complianceTemplates>"
                         "<complianceTemplates><template name=\"b\"/></complianceTemplates></SAPolicy>"),
              std::string(ROOT_START) + R"(<complianceTemplates command="overwrite">)"
                                        R"(<template name="a" display_name="" pre-defined="false" severity="medium"/>)"
                                        R"(<template name="b" display_name="" pre-defined="false" severity="medium"/>)"
                                        R"(</complianceTemplates></SAPolicy>)");
}

TEST_F(XmlNormalizer, NothingToCarryOverGivesAnEmptyList) {
    const std::string strEmpty = std::string(ROOT_START) + R"(<complianceTemplates command="overwrite"/></SAPolicy>)";
    EXPECT_EQ(Normalized("<SAPolicy/>"), strEmpty);
    EXPECT_EQ(Normalized("<other/>"), strEmpty);
    EXPECT_EQ(Normalized("<SAPolicy><complianceTemplates><template builtin=\"1\"/></complianceTemplates></SAPolicy>"),
              strEmpty);
}

TEST_F(XmlNormalizer, TextWithoutRootLeavesTheResult) {
    CLogRecorder log;
    EXPECT_EQ(Normalized("no document"), "untouched");
    EXPECT_EQ(log.Lines(),
              (Lines{Line("NormailzeXml()"), Line("GetAllTemplateNodes()"),
                     Line("GetAllTemplateNodes() Unable to find node /SAPolicy/complianceTemplates/template. The xml "
                          "file format is incompatible.",
                          "0x1004"),
                     Line("NormailzeXml()", "0x111")}));
}

TEST_F(XmlNormalizer, StepsAreLoggedInOrder) {
    WriteMap("Old\tNew\n");
    CLogRecorder log;
    Normalized(
        "<SAPolicy><complianceTemplates><template builtin=\"1\"/><template name=\"n\"><matchRule>"
        "<buildingBlock sourceName=\"Old\"/></matchRule></template></complianceTemplates></SAPolicy>");
    EXPECT_EQ(log.Lines(),
              (Lines{Line("NormailzeXml()"), Line("GetAllTemplateNodes()"), Line("GetAllTemplateNodes()", "0x111"),
                     Line("NormalizeTemplate()"), Line("NormalizeTemplate()"), Line("NormalizeBuildingBlocks()"),
                     Line("MapDigitalAssetsSourceName()"), Line("MapDigitalAssetsSourceName()", "0x111"),
                     Line("NormalizeBuildingBlocks()", "0x111"), Line("NormalizeTemplate()", "0x111"),
                     Line("WrapTemplateList()"),
                     "0x110 util_ParseDLPDigitalAssets.cpp CDLPDigitalAssetsParser::GenerateRootXML()",
                     Line("WrapTemplateList()", "0x111"), Line("NormailzeXml()", "0x111")}));
}

TEST_F(XmlNormalizer, RootThatCannotBeMadeFails) {
    CDLPDigitalAssetsParser::SetLanguage(std::wstring(1, L'\x01'));
    CLogRecorder log;
    EXPECT_EQ(Normalized("<SAPolicy/>"), "false");
    const Lines vecLines = log.Lines();
    ASSERT_EQ(vecLines.size(), 8U);
    EXPECT_EQ(vecLines[5].find("0x1004 util_ParseDLPDigitalAssets.cpp Fail to generate xml file root part, Error: "),
              0U);
    EXPECT_EQ(vecLines[6], "0x1004 DLPTemplateMgr.cpp Fail to find node SAPolicy");
    EXPECT_EQ(vecLines[7], Line("NormailzeXml(), Error: ", "0x1004"));
}

TEST_F(XmlNormalizer, NodesAreSelectedInDocumentOrderAndOutliveTheText) {
    OS::CAutoObjPtr<CXMLNodeList> pNodes;
    EXPECT_TRUE(
        m_normalizer.GetAllTemplateNodes(L"<SAPolicy><complianceTemplates><template name=\"a\"/><template "
                                         L"name=\"b\"/></complianceTemplates></SAPolicy>",
                                         pNodes));
    ASSERT_EQ(pNodes->GetLength(), 2);
    EXPECT_EQ(pNodes->GetItem(1)->GetAttribute(L"name"), L"b");
    EXPECT_TRUE(m_normalizer.GetAllTemplateNodes(L"<SAPolicy/>", pNodes));
    EXPECT_EQ(pNodes->GetLength(), 0);
    EXPECT_FALSE(m_normalizer.GetAllTemplateNodes(L"", pNodes));
    EXPECT_EQ(pNodes->GetLength(), 0);
}

TEST_F(XmlNormalizer, TemplateAloneIsRewrittenInPlace) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8(R"(<template name="n" displayName="Shown"/>)"));
    OS::CAutoObjPtr<CXMLNode> pNode = document.GetRootElement();
    OS::x_wstring strText = L"before";
    m_normalizer.NormalizeTemplate(pNode, strText);
    EXPECT_EQ(strText, LR"(<template name="n" display_name="Shown" pre-defined="false" severity="medium"/>)");
    EXPECT_EQ(pNode->GetAttribute(L"severity"), L"medium");
}

TEST_F(XmlNormalizer, BuiltInTemplateAloneGivesNoTextAndNoExitLine) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8(R"(<template name="n" builtin="1"/>)"));
    OS::CAutoObjPtr<CXMLNode> pNode = document.GetRootElement();
    OS::x_wstring strText = L"before";
    CLogRecorder log;
    m_normalizer.NormalizeTemplate(pNode, strText);
    EXPECT_EQ(strText, L"");
    EXPECT_EQ(pNode->GetAttribute(L"builtin"), L"1");
    EXPECT_EQ(log.Lines(), Lines{Line("NormalizeTemplate()")});
}

TEST_F(XmlNormalizer, ListThatIsNotWellFormedIsRefusedWithoutAMessage) {
    CLogRecorder log;
    OS::x_wstring strResult = L"before";
    try {
        m_normalizer.WrapTemplateList(L"<template>", strResult);
        ADD_FAILURE() << "nothing thrown";
    } catch (const OS::CException& exception) {
        EXPECT_EQ(exception.GetErrorCode(), 0);
        EXPECT_EQ(exception.GetErrorMessage(), L"");
        EXPECT_EQ(exception.GetErrorLine(), 0);
    }
    EXPECT_EQ(strResult, L"before");
    EXPECT_EQ(log.Lines(),
              (Lines{Line("WrapTemplateList()"), "0x1004 DLPTemplateMgr.cpp Fail to find node complianceTemplates"}));
}

TEST_F(XmlNormalizer, ListIsWrapped) {
    OS::x_wstring strResult;
    m_normalizer.WrapTemplateList(L"<template name=\"a\"/><template name=\"b\"/>", strResult);
    EXPECT_EQ(Narrow(strResult), std::string(ROOT_START) +
                                     R"(<complianceTemplates command="overwrite"><template name="a"/>)"
                                     R"(<template name="b"/></complianceTemplates></SAPolicy>)");
}

// They come along when the template is copied into the list, which is before it is rewritten.
TEST_F(XmlNormalizer, NamespacesInScopeStandBeforeTheAttributesOfToday) {
    OS::x_wstring strResult;
    EXPECT_TRUE(m_normalizer.NormailzeXml(
        LR"(<SAPolicy xmlns:p="outer"><complianceTemplates xmlns:p="inner"><template name="a" displayName="A"/>)"
        L"</complianceTemplates></SAPolicy>",
        strResult));
    EXPECT_EQ(Narrow(strResult),
              std::string(ROOT_START) +
                  R"(<complianceTemplates command="overwrite"><template name="a" xmlns:p="inner" display_name="A" )"
                  R"(pre-defined="false" severity="medium"/></complianceTemplates></SAPolicy>)");
}

TEST_F(XmlNormalizer, StepsTakenOneByOneGiveTheSameTextAndLines) {
    WriteMap("Old\tNew\n");
    std::string strNested;
    for (int i = 3; i < CXMLParser::MAX_DEPTH; ++i) {
        strNested = "<d>" + strNested + "</d>";
    }
    const std::string aDocuments[] = {
        "<SAPolicy/>",
        "<?xml version=\"1.0\" encoding=\"x\"?><!-- before -->\n<SAPolicy>\n<complianceTemplates a='1'>\n"
        "<template builtin=\"1\"><x/></template>text<template name='a&#10;&lt;\xF0\x9F\x98\x80' displayName='&quot;'>"
        "<!-- c --><?p i?> <![CDATA[<]]]]><![CDATA[>]]>&#13;<matchRule><buildingBlock sourceName='Old'/> </matchRule>"
        "</template></complianceTemplates><complianceTemplates><template/></complianceTemplates></SAPolicy>",
        "<SAPolicy><complianceTemplates xmlns=''><template xmlns='u' xmlns:p='v' p:displayName='no'><p:matchRule/>"
        "<matchRule xmlns=''><buildingBlock/></matchRule></template><p:template xmlns:p='v'/></complianceTemplates>"
        "</SAPolicy>",
        "<SAPolicy><complianceTemplates><template>" + strNested + "</template></complianceTemplates></SAPolicy>",
    };
    for (const std::string& strXml : aDocuments) {
        CLogRecorder log;
        OS::CAutoObjPtr<CXMLNodeList> pNodes;
        ASSERT_TRUE(m_normalizer.GetAllTemplateNodes(OS::WideText(strXml), pNodes)) << strXml;
        OS::x_wstring strTemplates;
        for (int i = 0; i < pNodes->GetLength(); ++i) {
            OS::CAutoObjPtr<CXMLNode> pNode = pNodes->GetItem(i);
            OS::x_wstring strTemplate;
            m_normalizer.NormalizeTemplate(pNode, strTemplate);
            strTemplates += strTemplate;
        }
        OS::x_wstring strResult;
        m_normalizer.WrapTemplateList(strTemplates, strResult);
        const Lines vecSteps = log.Lines();
        log.Clear();
        EXPECT_EQ(Normalized(strXml), Narrow(strResult));
        const Lines vecLines = log.Lines();
        EXPECT_EQ(Lines(vecLines.begin() + 1, vecLines.end() - 1), vecSteps);
    }
}

TEST_F(XmlNormalizer, ResultMayBeTheTextItself) {
    OS::x_wstring strText = L"<SAPolicy/>";
    EXPECT_TRUE(m_normalizer.NormailzeXml(strText, strText));
    EXPECT_EQ(Narrow(strText), std::string(ROOT_START) + R"(<complianceTemplates command="overwrite"/></SAPolicy>)");
}

TEST_F(XmlNormalizer, DocumentHandedInStaysAsItWasRead) {
    const std::string strXml =
        R"(<SAPolicy><complianceTemplates><template name="n" displayName="d"><matchRule/></template>)"
        R"(</complianceTemplates></SAPolicy>)";
    CPolicyDocument document(strXml);
    CXMLParser result;
    EXPECT_TRUE(m_normalizer.Normalize(document, result, nullptr));
    std::string strAfter;
    document.Load().SaveUtf8(strAfter);
    EXPECT_EQ(strAfter, strXml);
}

TEST_F(XmlNormalizer, EachTemplateRemembersItsPlace) {
    const std::string strXml =
        "\xEF\xBB\xBF<SAPolicy><complianceTemplates>\n<template name=\"\xC3\xA9\"/><template builtin=\"1\"/>\n"
        "  <template name=\"b\"/></complianceTemplates></SAPolicy>";
    CPolicyDocument document{std::string_view(strXml)};
    CXMLParser result;
    ASSERT_TRUE(m_normalizer.Normalize(document, result, nullptr));
    const CXMLView first = result.RootView().FirstChild().FirstChild();
    EXPECT_EQ(first.Offset(), strXml.find("<template name=\"\xC3\xA9\""));
    EXPECT_EQ(first.NextSibling().Offset(), strXml.find("<template name=\"b\""));
    EXPECT_FALSE(first.NextSibling().NextSibling());
}

TEST_F(XmlNormalizer, ObserverHearsWhatIsNotCarriedOver) {
    const std::string strXml =
        R"(<SAPolicy><industries><industry name="i"/></industries><regions/><complianceTemplates>)"
        R"(<template name="a" displayName="A" builtin="1"/><template name="b"/></complianceTemplates>)"
        R"(<digitalAssets><entity name="e"/></digitalAssets></SAPolicy>)";
    CPolicyDocument document{std::string_view(strXml)};
    CXMLParser result;
    CItemRecorder observer;
    ASSERT_TRUE(m_normalizer.Normalize(document, result, &observer));
    ASSERT_EQ(observer.m_vecItems.size(), 3U);
    const SImportItem& builtIn = observer.m_vecItems[0];
    EXPECT_EQ(builtIn.eKind, EItemKind::TEMPLATE);
    EXPECT_EQ(builtIn.strName, "a");
    EXPECT_EQ(builtIn.strDisplayName, "A");
    EXPECT_EQ(builtIn.eDisposition, EDisposition::SKIPPED);
    EXPECT_EQ(builtIn.eReason, EReason::OLDER_BUILT_IN);
    EXPECT_EQ(builtIn.iOffset, strXml.find("<template name=\"a\""));
    const char* const apSections[] = {"digitalAssets", "industries"};
    for (std::size_t i = 0; i < 2; ++i) {
        const SImportItem& section = observer.m_vecItems[i + 1];
        EXPECT_EQ(section.eKind, EItemKind::SECTION);
        EXPECT_EQ(section.strName, apSections[i]);
        EXPECT_EQ(section.eReason, EReason::OLDER_SECTION);
        EXPECT_EQ(section.iOffset, strXml.find(std::string("<") + apSections[i]));
    }
}
