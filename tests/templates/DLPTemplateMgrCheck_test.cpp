#include <gtest/gtest.h>

#include <ostream>

#include "templates/DLPTemplateMgr.h"
#include "templates/STemplateFinding.h"
#include "templates/TemplateReport.h"
#include "tests/support/ExceptionText.h"
#include "tests/support/FaultStore.h"
#include "tests/support/LogRecorder.h"
#include "tests/templates/TemplateStore.h"
#include "xml/CPolicyDocument.h"

using TemplateStore::Block;
using TemplateStore::Policy;
using TemplateStore::Rule;

namespace {

using Lines = std::vector<std::string>;
using Names = std::vector<OS::x_wstring>;

constexpr char NO_TEMPLATES[] =
    "0x1004 DLPTemplateMgr.cpp CTemplateMgr::CheckImportTemplate Unable to find node "
    "/SAPolicy/complianceTemplates/template. The xml file format is incompatible.";

/** A store that holds the expression Card and the keyword list Words. */
class TemplateCheck : public testing::Test {
  protected:
    void SetUp() override {
        CSettingsStore::Open(TemplateStore::MEMORY);
        TemplateStore::AddExpression("Card");
        TemplateStore::AddKeyword("Words");
    }

    /** @return the names found invalid; "false" when the check fails */
    std::string Check(const std::string& strXml) {
        Names vecImported = {L"unread"};
        Names vecInvalid = {L"before"};
        const bool bResult = m_manager.CheckImportTemplate(OS::WideText(strXml), vecImported, vecInvalid);
        EXPECT_EQ(vecImported, Names{L"unread"});
        EXPECT_EQ(vecInvalid.at(0), L"before");
        std::string strNames = bResult ? "" : "false";
        for (std::size_t i = 1; i < vecInvalid.size(); ++i) {
            strNames += (i == 1 ? "" : ",") + OS::Utf8Lenient(vecInvalid[i]);
        }
        return strNames;
    }

    /** @return the lines of checking the document without the first and the last one, level and unit cut off */
    Lines CheckLines(const std::string& strXml) {
        CLogRecorder log;
        Check(strXml);
        const Lines vecLines = log.Lines();
        EXPECT_EQ(vecLines.front(),
                  "0x110 DLPTemplateMgr.cpp CTemplateMgr::CheckImportTemplate(strXmlContent = " + strXml + ")");
        EXPECT_EQ(vecLines.back(), "0x111 DLPTemplateMgr.cpp CTemplateMgr::CheckImportTemplate");
        return Lines(vecLines.begin() + 1, vecLines.end() - 1);
    }

    CTemplateMgr m_manager{L""};
};

std::string Template(const std::string& strRules, const std::string& strName = "T") {
    return "<template name=\"" + strName + "\">" + strRules + "</template>";
}

/** One template's rules, and the line that refuses them; none when they are fine. */
struct SCase {
    const char* pRules;
    const char* pLine;
};

void PrintTo(const SCase& row, std::ostream* pOut) {
    *pOut << row.pRules;
}

class TemplateCheckRules : public TemplateCheck, public testing::WithParamInterface<SCase> {};

}  // namespace

TEST_P(TemplateCheckRules, AreAcceptedOrRefusedWithALine) {
    const std::string strLine = GetParam().pLine;
    const std::string strXml = Policy(Template(GetParam().pRules));
    EXPECT_EQ(Check(strXml), strLine.empty() ? "" : "T");
    EXPECT_EQ(CheckLines(strXml), strLine.empty() ? Lines() : Lines{"0x102 DLPTemplateMgr.cpp " + strLine});
}

INSTANTIATE_TEST_SUITE_P(
    Blocks, TemplateCheckRules,
    testing::Values(SCase{"", ""},                                                                                    //
                    SCase{"<matchRule/>", ""},                                                                        //
                    SCase{R"(<matchRule><buildingBlock sourceType="ENTITY" sourceName="Card"/></matchRule>)", ""},    //
                    SCase{R"(<matchRule><buildingBlock sourceType="KEYWORD" sourceName="Words"/></matchRule>)", ""},  //
                    SCase{R"(<matchRule><buildingBlock sourceType="ENTITY" sourceName="card"/></matchRule>)",
                          "expression internal name card is invalid"},
                    SCase{R"(<matchRule><buildingBlock sourceType="ENTITY" sourceName="Words"/></matchRule>)",
                          "expression internal name Words is invalid"},
                    SCase{R"(<matchRule><buildingBlock sourceType="ENTITY"/></matchRule>)",
                          "expression internal name  is invalid"},
                    SCase{R"(<matchRule><buildingBlock sourceType="KEYWORD" sourceName="Words "/></matchRule>)",
                          "keyword internal name Words  is invalid"},
                    SCase{R"(<matchRule><buildingBlock sourceType="KEYWORD" sourceName="Card"/></matchRule>)",
                          "keyword internal name Card is invalid"},
                    SCase{R"(<matchRule><buildingBlock sourceType="entity" sourceName="Card"/></matchRule>)",
                          "this digital asset type is not supported type = entity"},
                    SCase{R"(<matchRule><buildingBlock sourceType=" ENTITY " sourceName="Card"/></matchRule>)",
                          "this digital asset type is not supported type =  ENTITY "},
                    SCase{R"(<matchRule><buildingBlock sourceName="Card"/></matchRule>)",
                          "this digital asset type is not supported type = "},
                    SCase{R"(<matchRule><buildingBlock sourceType="UNKNOWN" operation="EXCEPT"/></matchRule>)",
                          "this digital asset type is not supported type = UNKNOWN"}));

INSTANTIATE_TEST_SUITE_P(
    Operations, TemplateCheckRules,
    testing::Values(
        SCase{R"(<matchRule operation="AND"/><matchRule operation=" and "/><matchRule operation="oR"/>)", ""},
        SCase{R"(<matchRule operation=""/>)", ""},                                                             //
        SCase{R"(<matchRule operation="EXCEPT"/>)", "matchRule operation EXCEPT is invalid"},                  //
        SCase{R"(<matchRule operation=" "/>)", "matchRule operation   is invalid"},                            //
        SCase{R"(<matchRule operation="SKIP"/>)", "matchRule operation SKIP is invalid"},                      //
        SCase{R"(<matchRule operation="UNKNOWN"/>)", "matchRule operation UNKNOWN is invalid"},                //
        SCase{R"(<matchRule operation="x"/><matchRule operation="y"/>)", "matchRule operation x is invalid"},  //
        SCase{R"(<matchRule><buildingBlock sourceType="ENTITY" sourceName="Card" operation=" And "/></matchRule>)", ""},
        SCase{R"(<matchRule><buildingBlock sourceType="ENTITY" sourceName="Card" operation="except"/></matchRule>)",
              "buildingblock operation except is invalid"},
        SCase{R"(<matchRule><buildingBlock sourceType="ENTITY" sourceName="none" operation="EXCEPT"/></matchRule>)",
              "expression internal name none is invalid"}));

INSTANTIATE_TEST_SUITE_P(
    Places, TemplateCheckRules,
    testing::Values(SCase{R"(<matchRule><buildingBlock sourceType="A"/><buildingBlock sourceType="B"/></matchRule>)"
                          R"(<matchRule><buildingBlock sourceType="C"/></matchRule>)",
                          "this digital asset type is not supported type = A"},
                    SCase{R"(<matchRule><buildingBlock sourceType="ENTITY" sourceName="Card"/></matchRule>)"
                          R"(<matchRule><buildingBlock sourceType="C"/></matchRule>)",
                          "this digital asset type is not supported type = C"},
                    SCase{R"(<matchRule><buildingBlock sourceType="ENTITY" sourceName="Card"/>)"
                          R"(<buildingBlock sourceType="KEYWORD" sourceName="none" operation="AND"/></matchRule>)",
                          "keyword internal name none is invalid"},
                    SCase{R"(<matchRule><buildingBlock sourceType="ENTITY" sourceName="Card"/>)"
                          R"(<buildingBlock sourceType="KEYWORD" sourceName="Words" operation="OR"/>)"
                          R"(<buildingBlock sourceType="ENTITY" sourceName="Card" operation="EXCEPT"/></matchRule>)",
                          "buildingblock operation EXCEPT is invalid"},
                    SCase{R"(<matchRule><buildingBlock sourceType="ENTITY" sourceName="Card"/>)"
                          R"(<other/><buildingBlock sourceType="C"/></matchRule>)",
                          "this digital asset type is not supported type = C"},
                    SCase{R"(<matchRule><buildingBlock sourceType="ENTITY" sourceName="Card"/>)"
                          R"(<buildingBlock sourceType="KEYWORD" sourceName="Words" operation="AND"/></matchRule>)"
                          R"(<matchRule><buildingBlock sourceType="KEYWORD" sourceName="none"/></matchRule>)",
                          "keyword internal name none is invalid"},
                    SCase{R"(<matchRule><buildingBlock sourceType="ENTITY" sourceName="first"/>)"
                          R"(<buildingBlock sourceType="ENTITY" sourceName="second"/></matchRule>)",
                          "expression internal name first is invalid"},
                    SCase{R"(<other operation="x"><buildingBlock sourceType="C"/></other>)", ""},                     //
                    SCase{R"(<matchRule><other sourceType="C"/><deeper><buildingBlock/></deeper></matchRule>)", ""},  //
                    SCase{R"(<deeper><matchRule operation="x"/></deeper>)", ""}));

TEST_F(TemplateCheck, TemplateIsAppendedOncePerKindOfFault) {
    const std::string strXml = Policy(Template(Rule(Block("ENTITY", "none"), "EXCEPT")));
    EXPECT_EQ(Check(strXml), "T,T");
    EXPECT_EQ(CheckLines(strXml), (Lines{"0x102 DLPTemplateMgr.cpp expression internal name none is invalid",
                                         "0x102 DLPTemplateMgr.cpp matchRule operation EXCEPT is invalid"}));
}

TEST_F(TemplateCheck, FaultyTemplatesAreListedInDocumentOrder) {
    EXPECT_EQ(
        Check(Policy(Template("<matchRule operation=\"x\"/>", "b") + Template("", "ok") +
                     Template("<matchRule operation=\"x\"/>", "a") + Template("<matchRule operation=\"x\"/>", "b"))),
        "b,a,b");
}

TEST_F(TemplateCheck, TemplateWithoutNameIsNotLookedAt) {
    const std::string strRules = "<matchRule operation=\"x\"><buildingBlock/></matchRule>";
    const std::string strXml = Policy("<template>" + strRules + "</template>" + Template(strRules, ""));
    EXPECT_EQ(Check(strXml), "");
    EXPECT_EQ(CheckLines(strXml), Lines());
}

TEST_F(TemplateCheck, DocumentWithoutTemplatesFails) {
    for (const char* pXml :
         {"", "no document", "<other/>", "<SAPolicy/>", "<SAPolicy><complianceTemplates/></SAPolicy>",
          "<SAPolicy><template name=\"T\"/></SAPolicy>",
          "<sapolicy><complianceTemplates><template/>"
          "</complianceTemplates></sapolicy>",
          "<SAPolicy><complianceTemplates><Template/></complianceTemplates>"
          "</SAPolicy>"}) {
        CLogRecorder log;
        EXPECT_EQ(Check(pXml), "false") << pXml;
        EXPECT_EQ(log.Lines(), (Lines{std::string("0x110 DLPTemplateMgr.cpp CTemplateMgr::CheckImportTemplate("
                                                  "strXmlContent = ") +
                                          pXml + ")",
                                      NO_TEMPLATES}));
    }
}

TEST_F(TemplateCheck, NothingIsStored) {
    const std::string strBefore = TemplateStore::Dump();
    Check(Policy(Template(Rule(Block("ENTITY", "Card")))));
    EXPECT_EQ(TemplateStore::Dump(), strBefore);
}

TEST_F(TemplateCheck, StoreThatCannotAnswerThrows) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    for (const std::string& strXml : {Policy(Template(Rule(Block("ENTITY", "Card")))), std::string("no document")}) {
        for (const std::size_t iOperation : {1U, 2U}) {
            faults.FailAt(iOperation);
            Names vecImported;
            Names vecInvalid;
            CLogRecorder log;
            EXPECT_EQ(
                ExceptionText([&] { m_manager.CheckImportTemplate(OS::WideText(strXml), vecImported, vecInvalid); }),
                OS::Utf8Lenient(STORE_FAULT));
            EXPECT_TRUE(vecInvalid.empty());
            EXPECT_EQ(
                log.Lines(),
                Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::CheckImportTemplate(strXmlContent = " + strXml + ")"});
        }
    }
}

TEST_F(TemplateCheck, StoreIsAskedOncePerKind) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    faults.CountOnly();
    std::string strTemplates;
    for (int i = 0; i < 50; ++i) {
        strTemplates += Template(Rule(Block("ENTITY", std::to_string(i)) + Block("KEYWORD", std::to_string(i))));
    }
    Check(Policy(strTemplates));
    EXPECT_EQ(faults.GetOperations(), (Lines{"FindHeld", "FindHeld"}));
}

TEST_F(TemplateCheck, FindingsSayWhatIsToBlame) {
    const std::string strXml =
        Policy(Template(Rule(Block("ENTITY", "none", "AND")), "a") + Template(Rule(Block("KEYWORD", "no")), "b") +
               Template(Rule("<buildingBlock/>"), "c") + Template(Rule(Block("ENTITY", "Card", "EXCEPT")), "d") +
               Template(Rule("", "EXCEPT"), "e"));
    CPolicyDocument document{std::string_view(strXml)};
    std::vector<STemplateFinding> vecFindings;
    ASSERT_TRUE(m_manager.CheckImportTemplate(document, vecFindings));
    Lines vecTold;
    for (const STemplateFinding& finding : vecFindings) {
        SImportItem item;
        TemplateReport::Describe(finding, item);
        vecTold.push_back(finding.strTemplate + std::to_string(finding.iTemplate) + ": " + item.strDetail + " -> " +
                          item.strFaulty);
    }
    EXPECT_EQ(vecTold,
              (Lines{R"(a0: buildingBlock sourceType="ENTITY" sourceName="none" operation="AND" -> none)",
                     R"(b1: buildingBlock sourceType="KEYWORD" sourceName="no" -> no)", "c2: buildingBlock -> ",
                     R"(d3: buildingBlock sourceType="ENTITY" sourceName="Card" operation="EXCEPT" -> EXCEPT)",
                     R"(e4: matchRule operation="EXCEPT" -> EXCEPT)"}));
}
