#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "api/CDLPDigitalAssetsParser.h"
#include "digital_assets/ExportObserver.h"
#include "platform/system/InstallPath.h"
#include "templates/DLPTemplate.h"
#include "templates/DLPTemplateMgr.h"
#include "templates/SPreparedTemplate.h"
#include "tests/support/FaultStore.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TempDir.h"
#include "tests/templates/TemplateStore.h"

using TemplateStore::Block;
using TemplateStore::Rule;

namespace {

using Lines = std::vector<std::string>;
using Names = std::vector<OS::x_wstring>;
using Subjects = std::set<std::wstring>;

constexpr char POLICY_LISTS[] =
    R"(<SAPolicy><industries><industry name="Finance" display_name="Financial services"/>)"
    R"(<industry name="Health" display_name="Health &amp; Care"/><industry name="R&amp;D" display_name="Research"/>)"
    R"(<industry name="Finance" display_name="Banks"/></industries>)"
    R"(<regions><region name="Europe" display_name="All of Europe"/></regions></SAPolicy>)";

constexpr char ROOT_START[] =
    R"(<?xml version="1.0" encoding="UTF-8"?><SAPolicy template_version="3.0.1000" localization_language="">)";

constexpr char EMPTY_DOCUMENT[] =
    R"(<?xml version="1.0" encoding="UTF-8"?><SAPolicy template_version="3.0.1000" localization_language="">)"
    R"(<digitalAssets command="overwrite"/><complianceTemplates command="overwrite"/><industries/><regions/></SAPolicy>)";

constexpr char CARD[] =
    R"(<entity name="Card" type="Generic" caseSensitive="false" validator="" display_name="Card" description="" )"
    R"(pre-defined="false"><regularExpression>stored</regularExpression><alphabetCharset/><patternForDisplay/>)"
    R"(<examples/></entity>)";

constexpr char WORDS[] =
    R"(<dictionary name="Words" type="All" display_name="Words" description="" pre-defined="false">)"
    R"(<keyword>stored</keyword></dictionary>)";

class CExportRecorder : public CExportObserver {
  public:
    void OnLeftOut(const std::string& strName, ELeftOut eReason, const std::string& strDetail) override {
        m_vecHeard.push_back(strName + " " + std::to_string(static_cast<int>(eReason)) + " " + strDetail);
    }
    void OnRecordFailed(const std::string& strSubject, const std::string& strMessage) override {
        m_vecHeard.push_back(strSubject + ": " + strMessage);
    }
    Lines m_vecHeard;
};

/** Takes the text whenever it is offered. */
class CTextTaker : public CExportRecorder {
  public:
    void OnText(std::string& strText) override {
        m_vecSizes.push_back(strText.size());
        m_strTaken += strText;
        strText.clear();
    }
    std::string m_strTaken;
    std::vector<std::size_t> m_vecSizes;
};

/** @return level and message of the lines that the template manager wrote */
Lines OfManager(const CLogRecorder& log) {
    const std::string strSource = " DLPTemplateMgr.cpp";
    Lines vecLines;
    for (std::string& strLine : log.Lines()) {
        const std::size_t iSource = strLine.find(strSource);
        if (iSource != std::string::npos) {
            vecLines.push_back(strLine.erase(iSource, strSource.size()));
        }
    }
    return vecLines;
}

/** A store that holds the expression Card and the keyword list Words, and policy lists of its own. */
class TemplateExport : public testing::Test {
  protected:
    void SetUp() override {
        m_folder.Write("config/PredefinedDLPPolicy.xml", POLICY_LISTS);
        SYS::SetInstallPath(OS::WideText(m_folder.Path()));
        CSettingsStore::Open(TemplateStore::MEMORY);
        TemplateStore::AddExpression("Card");
        TemplateStore::AddKeyword("Words");
    }

    std::string Export(const Names& vecNames) { return OS::Utf8Lenient(m_manager.ExportTemplate(vecNames)); }

    /** @return what stands between the start tag and the end tag of one section */
    std::string Section(const Names& vecNames, const std::string& strTag) {
        const std::string strText = Export(vecNames);
        const std::size_t iStart = strText.find('>', strText.find("<" + strTag)) + 1;
        const std::size_t iEnd = strText.find("</" + strTag + ">");
        return iEnd == std::string::npos ? "" : strText.substr(iStart, iEnd - iStart);
    }

    Lines ManagerLines(const Names& vecNames) {
        CLogRecorder log;
        Export(vecNames);
        return OfManager(log);
    }

    /** @return what the observer of an export hears */
    Lines Heard(const Names& vecNames) {
        CExportRecorder observer;
        m_manager.ExportDocument(vecNames, &observer, nullptr, nullptr);
        return observer.m_vecHeard;
    }

    CTempDir m_folder;
    CTemplateMgr m_manager{L"scope"};
};

Lines FoundLines(const std::string& strName, bool bFound = true) {
    return {"0x110 CTemplateMgr::FindTemplate, iSearchField = 2, strFieldValue = " + strName,
            "0x102 CTemplateMgr::GetTemplateList successfully",
            bFound ? "0x111 CTemplateMgr::FindTemplate" : "0x111 Unable to find the template"};
}

Lines Joined(std::initializer_list<Lines> lstParts) {
    Lines vecAll;
    for (const Lines& vecPart : lstParts) {
        vecAll.insert(vecAll.end(), vecPart.begin(), vecPart.end());
    }
    return vecAll;
}

const Lines CATEGORY_LINES = {"0x102 strTag = industries, strSubTag = industry",
                              "0x102 strTag = regions, strSubTag = region"};

Lines Entered(int iNames) {
    return {"0x110 CTemplateMgr::ExportTemplate(lstTemplateName.size() = " + std::to_string(iNames)};
}

Lines Left(const std::string& strText) {
    return {"0x111 CTemplateMgr::ExportTemplate returns <" + strText + ">"};
}

}  // namespace

TEST_F(TemplateExport, DocumentHoldsTemplatesAssetsAndCategories) {
    TemplateStore::AddTemplate({"T1",
                                "First",
                                R"(<matchRule operation="OR"><buildingBlock sourceType="ENTITY" entityHits="2" )"
                                R"(sourceName="Card"/><buildingBlock sourceType="KEYWORD" entityHits="9" )"
                                R"(sourceName="Words" operation="EXCEPT"/></matchRule><matchRule/>)",
                                true,
                                {"Finance", "Health"},
                                {"Europe"},
                                "about <1>"});
    TemplateStore::AddTemplate({"T2", "Second", "", false, {"Finance"}, {"Europe"}});
    EXPECT_EQ(Export({L"T2", L"T1"}),
              std::string(ROOT_START) + R"(<digitalAssets command="overwrite">)" + CARD + WORDS +
                  R"(</digitalAssets><complianceTemplates command="overwrite">)"
                  R"(<template name="T2" display_name="Second" description="" pre-defined="false"/>)"
                  R"(<template name="T1" display_name="First" description="about &lt;1&gt;" pre-defined="true">)"
                  R"(<matchRule operation="OR"><buildingBlock sourceType="ENTITY" entityHits="2" sourceName="Card"/>)"
                  R"(<buildingBlock sourceType="KEYWORD" sourceName="Words" operation="EXCEPT"/></matchRule>)"
                  R"(<matchRule/></template></complianceTemplates><industries>)"
                  R"(<industry name="Finance" display_name="Banks"><template_id>T2</template_id>)"
                  R"(<template_id>T1</template_id></industry>)"
                  R"(<industry name="Health" display_name="Health &amp;amp; Care"><template_id>T1</template_id>)"
                  R"(</industry></industries><regions><region name="Europe" display_name="All of Europe">)"
                  R"(<template_id>T2</template_id><template_id>T1</template_id></region></regions></SAPolicy>)");
}

TEST_F(TemplateExport, NothingRequestedGivesACompleteDocument) {
    EXPECT_EQ(Export({}), EMPTY_DOCUMENT);
    EXPECT_EQ(Export({L"none", L"neither"}), EMPTY_DOCUMENT);
}

TEST_F(TemplateExport, RootCarriesVersionAndLanguage) {
    CDLPDigitalAssetsParser::SetVersion(L"4 \"x\"");
    CDLPDigitalAssetsParser::SetLanguage(L"English");
    EXPECT_NE(Export({}).find(R"(<SAPolicy template_version="4 &quot;x&quot;" localization_language="English">)"),
              std::string::npos);
}

TEST_F(TemplateExport, ElementKeepsNothingButItsNameAndRules) {
    TemplateStore::AddElement("T",
                              R"(<?xml version="1.0"?><template severity="high" description="of the element" x="1" )"
                              R"(display_name="of the element" pre-defined="true" name=" T "><!-- c --></template>)");
    EXPECT_EQ(Section({L" T "}, "complianceTemplates"),
              R"(<template name=" T " display_name="" description="" pre-defined="false"/>)");
}

TEST_F(TemplateExport, TemplateWithoutANameIsExportedByTheEmptyName) {
    TemplateStore::AddTemplate({"", "t", "", false, {"Finance"}});
    EXPECT_EQ(Section({L""}, "complianceTemplates"),
              R"(<template name="" display_name="t" description="" pre-defined="false"/>)");
    EXPECT_EQ(Section({L""}, "industries"),
              R"(<industry name="Finance" display_name="Banks"><template_id/></industry>)");
}

TEST_F(TemplateExport, TemplateRequestedTwiceIsThereTwice) {
    TemplateStore::AddTemplate({"T", "t", Rule(Block("ENTITY", "Card")), false, {"Finance"}});
    EXPECT_EQ(Section({L"T", L"T"}, "industries"),
              R"(<industry name="Finance" display_name="Banks"><template_id>T</template_id>)"
              R"(<template_id>T</template_id></industry>)");
    const std::string strTemplates = Section({L"T", L"T"}, "complianceTemplates");
    EXPECT_EQ(strTemplates.substr(0, strTemplates.size() / 2), strTemplates.substr(strTemplates.size() / 2));
    EXPECT_EQ(Section({L"T", L"T"}, "digitalAssets"), CARD);
}

TEST_F(TemplateExport, CategoriesAscendByNameWhateverTheCase) {
    TemplateStore::AddTemplate({"T", "t", "", false, {"b", "\xF0\x9F\x98\x80", "a", "B", "\xC3\xA9", "a"}});
    EXPECT_EQ(
        Section({L"T"}, "industries"),
        R"(<industry name="B" display_name=""><template_id>T</template_id></industry>)"
        R"(<industry name="a" display_name=""><template_id>T</template_id><template_id>T</template_id></industry>)"
        R"(<industry name="b" display_name=""><template_id>T</template_id></industry>)"
        "<industry name=\"\xC3\xA9\" display_name=\"\"><template_id>T</template_id></industry>"
        "<industry name=\"\xF0\x9F\x98\x80\" display_name=\"\"><template_id>T</template_id></industry>");
}

TEST_F(TemplateExport, CategoryOutsideThePolicyListsHasNoDisplayName) {
    TemplateStore::AddTemplate({"T", "t", "", false, {"finance", "R&D"}, {"Europe", "Mars"}});
    EXPECT_EQ(Section({L"T"}, "industries"),
              R"(<industry name="R&amp;D" display_name=""><template_id>T</template_id></industry>)"
              R"(<industry name="finance" display_name=""><template_id>T</template_id></industry>)");
    EXPECT_EQ(Section({L"T"}, "regions"),
              R"(<region name="Europe" display_name="All of Europe"><template_id>T</template_id></region>)"
              R"(<region name="Mars" display_name=""><template_id>T</template_id></region>)");
}

TEST_F(TemplateExport, CategoryNamesAreLookedUpAsThePolicyListsEscapeThem) {
    TemplateStore::AddTemplate({"T", "t", "", false, {"R&amp;D"}});
    EXPECT_EQ(Section({L"T"}, "industries"),
              R"(<industry name="R&amp;amp;D" display_name="Research"><template_id>T</template_id></industry>)");
}

TEST_F(TemplateExport, WithoutPolicyListsNoCategoryHasADisplayName) {
    SYS::SetInstallPath(OS::WideText(m_folder.Path("nowhere")));
    TemplateStore::AddTemplate({"T", "t", "", false, {"Finance"}});
    EXPECT_EQ(Section({L"T"}, "industries"),
              R"(<industry name="Finance" display_name=""><template_id>T</template_id></industry>)");
}

TEST_F(TemplateExport, AssetsAreThoseOfTheExportedTemplatesAscendingByName) {
    for (const char* pName : {"b", "a", "unused"}) {
        TemplateStore::AddExpression(pName);
        TemplateStore::AddKeyword(pName);
    }
    TemplateStore::AddTemplate(
        {"T1", "1", Rule(Block("KEYWORD", "b") + Block("ENTITY", "b")) + Rule(Block("ENTITY", "Card"))});
    TemplateStore::AddTemplate({"T2", "2", Rule(Block("ENTITY", "a") + Block("KEYWORD", "a") + Block("ENTITY", "b"))});
    TemplateStore::AddTemplate({"Bad", "3", Rule(Block("KEYWORD", "unused") + Block("ENTITY", "none"))});
    auto pExpressions = boost::shared_ptr<Subjects>();
    auto pKeywords = boost::shared_ptr<Subjects>();
    const std::wstring strText = m_manager.ExportTemplate({L"T1", L"Bad", L"T2"}, pExpressions, pKeywords);
    EXPECT_EQ(*pExpressions, (Subjects{L"ORVAL_SUB_CFG_DLP_EXPRESSIONCard", L"ORVAL_SUB_CFG_DLP_EXPRESSIONa",
                                       L"ORVAL_SUB_CFG_DLP_EXPRESSIONb"}));
    EXPECT_EQ(*pKeywords, (Subjects{L"ORVAL_SUB_CFG_DLP_KEYWORDa", L"ORVAL_SUB_CFG_DLP_KEYWORDb"}));
    std::string strOrder;
    const std::string strAssets = Section({L"T1", L"Bad", L"T2"}, "digitalAssets");
    for (const char* pAsset : {"<entity name=\"Card\"", "<entity name=\"a\"", "<entity name=\"b\"",
                               "<dictionary name=\"a\"", "<dictionary name=\"b\""}) {
        const std::size_t iPlace = strAssets.find(pAsset);
        ASSERT_NE(iPlace, std::string::npos) << pAsset;
        EXPECT_LT(strOrder.size(), iPlace + 1);
        strOrder = strAssets.substr(0, iPlace);
    }
    EXPECT_EQ(strAssets.find("unused"), std::string::npos);
}

TEST_F(TemplateExport, SubjectSetsAreAddedTo) {
    TemplateStore::AddTemplate({"T", "t", Rule(Block("ENTITY", "Card") + Block("KEYWORD", "Words"))});
    auto pExpressions = boost::make_shared<Subjects>(Subjects{L"before", L"ORVAL_SUB_CFG_DLP_EXPRESSIONCard"});
    auto pKeywords = boost::make_shared<Subjects>(Subjects{L"too"});
    CLogRecorder log;
    const std::wstring strText = m_manager.ExportTemplate({L"T"}, pExpressions, pKeywords);
    const Lines vecLines = OfManager(log);
    EXPECT_EQ(strText, m_manager.ExportTemplate({L"T"}));
    EXPECT_EQ(vecLines, ManagerLines({L"T"}));
    EXPECT_EQ(*pExpressions, (Subjects{L"before", L"ORVAL_SUB_CFG_DLP_EXPRESSIONCard"}));
    EXPECT_EQ(*pKeywords, (Subjects{L"too", L"ORVAL_SUB_CFG_DLP_KEYWORDWords"}));
}

TEST_F(TemplateExport, DocumentInUtf8IsTheSame) {
    TemplateStore::AddTemplate({"T", "\xC3\xA9\xF0\x9F\x98\x80", Rule(Block("ENTITY", "Card"))});
    EXPECT_EQ(m_manager.ExportDocument({L"T"}, nullptr, nullptr, nullptr), Export({L"T"}));
}

TEST_F(TemplateExport, LongDocumentIsOfferedPieceByPiece) {
    constexpr std::size_t PIECE = 131072;
    std::string strBlocks;
    for (int i = 0; i < 3000; ++i) {
        TemplateStore::AddExpression("Card" + std::to_string(i));
        strBlocks += Block("ENTITY", "Card" + std::to_string(i));
    }
    TemplateStore::AddTemplate({"T", "t", Rule(strBlocks)});
    const std::string strWhole = Export({L"T"});
    CTextTaker taker;
    const std::string strRest = m_manager.ExportDocument({L"T"}, &taker, nullptr, nullptr);
    EXPECT_EQ(taker.m_strTaken + strRest, strWhole);
    EXPECT_EQ(taker.m_vecSizes.size(), 5U);
    for (const std::size_t iSize : taker.m_vecSizes) {
        EXPECT_GE(iSize, PIECE);
        EXPECT_LT(iSize, PIECE + 200);  // an expression's element is shorter
    }
    CTextTaker watched;
    CLogRecorder log;  // the last line carries the whole text
    EXPECT_EQ(m_manager.ExportDocument({L"T"}, &watched, nullptr, nullptr), strWhole);
    EXPECT_EQ(watched.m_strTaken, "");
}

TEST_F(TemplateExport, ReferenceTypesMayBeOfAnyCase) {
    TemplateStore::AddTemplate({"T", "t", Rule(Block("entity", "Card") + Block("Keyword", "Words"))});
    EXPECT_NE(Section({L"T"}, "complianceTemplates")
                  .find(R"(<buildingBlock sourceType="ENTITY" entityHits="0" sourceName="Card"/>)"
                        R"(<buildingBlock sourceType="KEYWORD" sourceName="Words"/>)"),
              std::string::npos);
}

TEST_F(TemplateExport, InvalidReferenceLeavesTheTemplateOut) {
    struct SCase {
        std::string strRules;
        const char* pLine;
        const char* pDetail;
    };
    const SCase aCases[] = {
        {Rule(Block("ENTITY", "card")), "0x1001 template contain invalid expression card", "ENTITY \"card\""},
        {Rule(Block("Entity", "Words")), "0x1001 template contain invalid expression Words", "ENTITY \"Words\""},
        {Rule(Block("KEYWORD", "Card")), "0x1001 template contain invalid keyword Card", "KEYWORD \"Card\""},
        {Rule(Block(" ENTITY ", "Card")), "0x1001 this digital asset type is not supported type =  ENTITY ",
         "sourceType \" ENTITY \""},
        {Rule(Block(" ENTITY ", "none")), "0x1001 this digital asset type is not supported type =  ENTITY ",
         "sourceType \" ENTITY \""},
        {Rule("<buildingBlock/>"), "0x1001 this digital asset type is not supported type = ", "sourceType \"\""},
        {Rule(Block("ENTITY", "Card")) + Rule(Block("x", "1") + Block("ENTITY", "none")),
         "0x1001 this digital asset type is not supported type = x", "sourceType \"x\""},
        {Rule(Block("ENTITY", "none") + Block("x", "1")), "0x1001 template contain invalid expression none",
         "ENTITY \"none\""},
    };
    for (const SCase& row : aCases) {
        TemplateStore::AddTemplate({"T", "t", row.strRules, false, {"Finance"}, {"Europe"}});
        EXPECT_EQ(Export({L"T"}), EMPTY_DOCUMENT);
        EXPECT_EQ(ManagerLines({L"T"}), Joined({Entered(1),
                                                FoundLines("T"),
                                                {row.pLine, "0x1003 template contain invalid digital assets."},
                                                CATEGORY_LINES,
                                                Left(EMPTY_DOCUMENT)}));
        EXPECT_EQ(Heard({L"T"}), Lines{std::string("T 1 ") + row.pDetail});
    }
}

TEST_F(TemplateExport, NameThatIsNotStoredIsLeftOut) {
    TemplateStore::AddTemplate({"T", "t"});
    EXPECT_EQ(ManagerLines({L"t", L"T"}), Joined({Entered(2),
                                                  FoundLines("t", false),
                                                  {"0x1003 Unable to find template."},
                                                  FoundLines("T"),
                                                  CATEGORY_LINES,
                                                  Left(Export({L"T"}))}));
    EXPECT_EQ(Heard({L"t", L"T"}), Lines{"t 0 "});
}

TEST_F(TemplateExport, StoredElementThatIsNoTemplateIsLeftOut) {
    CCfgSettingDLPFilterTemplate record(L"subject");
    record.SetElementMarkup("<other/>", "T");  // a store that says otherwise than its element
    record.SaveThis();
    EXPECT_EQ(ManagerLines({L"T"}), Joined({Entered(1),
                                            FoundLines("T"),
                                            {"0x1003 Unable to find template node. skip this one."},
                                            CATEGORY_LINES,
                                            Left(EMPTY_DOCUMENT)}));
    EXPECT_EQ(Heard({L"T"}), Lines{"T 2 "});
}

TEST_F(TemplateExport, ChildrenThatAreNoRulesAreReadAsRules) {
    TemplateStore::AddTemplate({"T", "t",
                                "<industries><industry sourceType=\"KEYWORD\" sourceName=\"Words\"/>"
                                "</industries>" +
                                    Rule("<other/>")});
    EXPECT_EQ(Section({L"T"}, "complianceTemplates"),
              R"(<template name="T" display_name="t" description="" pre-defined="false"><matchRule>)"
              R"(<buildingBlock sourceType="KEYWORD" sourceName="Words"/></matchRule><matchRule>)"
              R"(<buildingBlock sourceType="UNKNOWN" sourceName=""/></matchRule></template>)");
    EXPECT_EQ(Section({L"T"}, "digitalAssets"), WORDS);
}

TEST_F(TemplateExport, AssetThatTheCheckDoesNotSeeFailsTheExport) {
    TemplateStore::AddTemplate({"T", "t", "<other>" + Block("ENTITY", "none") + "</other>"});
    Subjects lstExpressions;
    CExportRecorder observer;
    CLogRecorder log;
    EXPECT_EQ(m_manager.ExportDocument({L"T"}, &observer, &lstExpressions, nullptr), "");
    EXPECT_EQ(log.Lines().back(), "0x1004 DLPTemplateMgr.cpp Fail to find node digitalAssets");
    EXPECT_TRUE(lstExpressions.empty());
    ASSERT_EQ(observer.m_vecHeard.size(), 1U);
    EXPECT_EQ(observer.m_vecHeard[0].find("ORVAL_SUB_CFG_DLP_EXPRESSIONnone: "), 0U);
}

TEST_F(TemplateExport, KeywordsTooDeepToBeReadFailTheExport) {
    const auto save = [](int iDepth) {
        OS::x_wstring strText;
        for (int i = 0; i < iDepth; ++i) {
            strText = L"<keyword>" + strText + L"</keyword>";
        }
        CCfgSettingDLPFilterKeyword record(OS::x_wstring(SUBJECT_KEYWORD) + L"Words");
        record.GetThis();
        record.SetSubkeywordList(L"<dictionary>" + strText + L"</dictionary>");
        record.SaveThis();
    };
    TemplateStore::AddTemplate({"T", "t", Rule(Block("KEYWORD", "Words"))});
    save(254);
    EXPECT_NE(Export({L"T"}), "");
    save(255);
    Subjects lstKeywords;
    CExportRecorder observer;
    CLogRecorder log;
    EXPECT_EQ(m_manager.ExportDocument({L"T"}, &observer, nullptr, &lstKeywords), "");
    EXPECT_EQ(log.Lines().back(), "0x1004 DLPTemplateMgr.cpp Fail to find node digitalAssets");
    EXPECT_TRUE(lstKeywords.empty());
    EXPECT_EQ(observer.m_vecHeard,
              Lines{"ORVAL_SUB_CFG_DLP_KEYWORDWords: the stored keywords nest too deep to be read again"});
}

TEST_F(TemplateExport, StepsAreLoggedInOrder) {
    TemplateStore::AddTemplate({"T", "t", Rule(Block("ENTITY", "Card")), false, {"Finance"}});
    CLogRecorder log;
    const std::string strText = Export({L"none", L"T"});
    EXPECT_EQ(log.Lines(),
              (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::ExportTemplate(lstTemplateName.size() = 2",
                     "0x110 util_ParseDLPDigitalAssets.cpp CDLPDigitalAssetsParser::GenerateRootXML()",
                     "0x110 DLPTemplateMgr.cpp CTemplateMgr::FindTemplate, iSearchField = 2, strFieldValue = none",
                     "0x102 DLPTemplateMgr.cpp CTemplateMgr::GetTemplateList successfully",
                     "0x111 DLPTemplateMgr.cpp Unable to find the template",
                     "0x1003 DLPTemplateMgr.cpp Unable to find template.",
                     "0x110 DLPTemplateMgr.cpp CTemplateMgr::FindTemplate, iSearchField = 2, strFieldValue = T",
                     "0x102 DLPTemplateMgr.cpp CTemplateMgr::GetTemplateList successfully",
                     "0x111 DLPTemplateMgr.cpp CTemplateMgr::FindTemplate",
                     "0x110 util_ParseDLPDigitalAssets.cpp CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()",
                     "0x111 util_ParseDLPDigitalAssets.cpp CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()",
                     "0x110 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::Load()",
                     "0x111 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::Load(), loaded = 1",
                     log.Lines().at(13),
                     log.Lines().at(14),
                     "0x102 DLPTemplateMgr.cpp strTag = industries, strSubTag = industry",
                     log.Lines().at(16),
                     log.Lines().at(17),
                     "0x102 DLPTemplateMgr.cpp strTag = regions, strSubTag = region",
                     "0x111 DLPTemplateMgr.cpp CTemplateMgr::ExportTemplate returns <" + strText + ">"}));
    EXPECT_EQ(log.Lines().at(13).find("0x110 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::MakeDOMNode(xmllength="),
              0U);
    EXPECT_NE(log.Lines().at(13).find("rootNodeName='/industries')"), std::string::npos);
    EXPECT_NE(log.Lines().at(16).find("rootNodeName='/regions')"), std::string::npos);
}

TEST_F(TemplateExport, RootThatCannotBeMadeFails) {
    CDLPDigitalAssetsParser::SetVersion(std::wstring(1, L'\x01'));
    CLogRecorder log;
    EXPECT_EQ(Export({}), "");
    EXPECT_EQ(log.Lines().back(), "0x1004 DLPTemplateMgr.cpp Fail to find SAPolicy.");
}

TEST_F(TemplateExport, RecordThatXmlCannotCarryFailsTheExportAndIsNamed) {
    for (const bool bDescription : {false, true}) {
        TemplateStore::STemplateRow row = {"T", "t"};
        (bDescription ? row.strDescription : row.strDisplayName) = "a\x01";
        TemplateStore::AddTemplate(row);
        TemplateStore::AddTemplate({"Ok", "ok"});
        CLogRecorder log;
        EXPECT_EQ(Export({L"Ok", L"T"}), "");
        EXPECT_EQ(log.Messages(0x1003).size(), 1U);
        const std::string strLine = log.Lines().back();
        EXPECT_EQ(strLine.find("0x1003 DLPTemplateMgr.cpp CTemplateMgr::ExportTemplate(), Error: "
                               "ORVAL_SUB_CFG_DLP_TEMPLATET: "),
                  0U)
            << strLine;
        EXPECT_NE(strLine.find("U+0001"), std::string::npos) << strLine;
        const Lines vecHeard = Heard({L"Ok", L"T"});
        ASSERT_EQ(vecHeard.size(), 1U);
        EXPECT_EQ(vecHeard[0].find("ORVAL_SUB_CFG_DLP_TEMPLATET: "), 0U);
        EXPECT_EQ(vecHeard[0].find("ORVAL", 1), std::string::npos) << vecHeard[0];
    }
}

TEST_F(TemplateExport, RecordThatXmlCannotCarryIsNoMatterWhenLeftOut) {
    TemplateStore::AddTemplate({"T", "\x01", Rule(Block("ENTITY", "none"))});
    EXPECT_EQ(Export({L"T"}), EMPTY_DOCUMENT);
}

TEST_F(TemplateExport, CategoryThatXmlCannotCarryFailsAfterTheSetsAreFilled) {
    TemplateStore::AddTemplate({"T", "t", Rule(Block("ENTITY", "Card")), false, {"\x02"}});
    Subjects lstExpressions;
    CExportRecorder observer;
    CLogRecorder log;
    EXPECT_EQ(m_manager.ExportDocument({L"T"}, &observer, &lstExpressions, nullptr), "");
    EXPECT_EQ(lstExpressions, Subjects{L"ORVAL_SUB_CFG_DLP_EXPRESSIONCard"});
    EXPECT_EQ(log.Lines().back().find("0x1003 DLPTemplateMgr.cpp CTemplateMgr::ExportTemplate(), Error: "
                                      "ORVAL_SUB_CFG_DLP_TEMPLATET: "),
              0U);
    EXPECT_EQ(observer.m_vecHeard.size(), 1U);
}

TEST_F(TemplateExport, UnreadableTemplatesGiveTheEmptyDocument) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    TemplateStore::AddTemplate({"T", "t"});
    faults.FailAt(1);
    const Lines vecUnread = {"0x1003 Fail to call GetTemplateList", "0x1003 Unable to get tempate list.",
                             "0x1003 Unable to find template."};
    EXPECT_EQ(ManagerLines({L"T", L"U"}), Joined({Entered(2),
                                                  {FoundLines("T").front()},
                                                  vecUnread,
                                                  {FoundLines("U").front()},
                                                  vecUnread,
                                                  CATEGORY_LINES,
                                                  Left(EMPTY_DOCUMENT)}));
}

TEST_F(TemplateExport, UnreadableAssetNamesFailBeforeAnyTemplate) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    for (const Names& vecNames : {Names{}, Names{L"T"}}) {
        for (const std::size_t iOperation : {2U, 3U}) {
            faults.FailAt(iOperation);
            CLogRecorder log;
            EXPECT_EQ(Export(vecNames), "");
            EXPECT_EQ(log.Lines(),
                      (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::ExportTemplate(lstTemplateName.size() = " +
                                 std::to_string(vecNames.size()),
                             "0x110 util_ParseDLPDigitalAssets.cpp CDLPDigitalAssetsParser::GenerateRootXML()",
                             "0x1004 DLPTemplateMgr.cpp Fail to get digital assets configuration."}));
        }
    }
}

TEST_F(TemplateExport, NumberOfStoreOperationsDoesNotGrowWithTheTemplates) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    TemplateStore::AddExpression("Card");
    Names vecNames;
    for (int i = 0; i < 20; ++i) {
        vecNames.push_back(std::to_wstring(i));
        TemplateStore::AddTemplate({std::to_string(i), "t", Rule(Block("ENTITY", "Card"))});
    }
    faults.CountOnly();
    Export({vecNames[0]});
    const std::size_t iOne = faults.GetCount();
    faults.CountOnly();
    Export(vecNames);
    EXPECT_EQ(faults.GetCount(), iOne);
}

TEST(PreparedTemplate, MarkupIsWhatReadingAndWritingGives) {
    const OS::x_wstring strElement =
        LR"(<template name=" n " x="1"><matchRule operation=" or "><buildingBlock sourceType=" entity" )"
        LR"(entityHits="12x" sourceName="a&#9;b" operation="skip"/><y sourceType="KEYWORD" entityHits="3"/></matchRule>)"
        LR"(<z operation="EXCEPT"/></template>)";
    CCfgSettingDLPFilterTemplate record(L"subject");
    record.SetElement(strElement);
    CAssetNames names;
    const SPreparedTemplate prepared = SPreparedTemplate::Make(record.Row(), names);
    EXPECT_EQ(OS::WideText(prepared.strMarkup), CComplianceTemplates(strElement).ToXmlString());
}

TEST(PreparedTemplate, ElementThatIsNoTemplateIsKnownAsNone) {
    for (const wchar_t* pElement : {L"", L"<template", L"<other/>"}) {
        CCfgSettingDLPFilterTemplate record(L"subject");
        record.SetElement(pElement);
        CAssetNames names;
        EXPECT_FALSE(SPreparedTemplate::Make(record.Row(), names).bTemplate);
    }
}
