#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include <boost/make_shared.hpp>

#include "platform/common/CException.h"
#include "platform/system/InstallPath.h"
#include "platform/xml/FaultPoint.h"
#include "templates/DLPTemplateMgr.h"
#include "tests/support/FaultStore.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TempDir.h"
#include "tests/templates/TemplateStore.h"

// An export of two templates, of one that nothing stored answers and of one that refers to an unknown asset: every call
// of the store and every operation of the XML layer fails in turn. The text, the sets and the whole log are compared.

using TemplateStore::Block;
using TemplateStore::Rule;

namespace {

using Lines = std::vector<std::string>;

std::string Manager(const std::string& strLevel, const std::string& strMessage) {
    return strLevel + " DLPTemplateMgr.cpp " + strMessage;
}
std::string Assets(const std::string& strLevel, const std::string& strMessage) {
    return strLevel + " util_ParseDLPDigitalAssets.cpp " + strMessage;
}
std::string Lists(const std::string& strLevel, const std::string& strMessage) {
    return strLevel + " util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::MakeDOMNode()" + strMessage;
}

Lines operator+(Lines vecLeft, const Lines& vecRight) {
    vecLeft.insert(vecLeft.end(), vecRight.begin(), vecRight.end());
    return vecLeft;
}

/** What an export hands out and logs, as one text. */
std::string Outcome(const std::string& strText, bool bSets, const Lines& vecLines) {
    std::string strOutcome = "text: " + strText + (bSets ? "\nsets: card | words" : "\nsets: |");
    for (const std::string& strLine : vecLines) {
        strOutcome += '\n' + strLine;
    }
    return strOutcome;
}

const std::string INDUSTRIES = "<industries><industry name=\"i\" display_name=\"Industry\"/></industries>";
const std::string REGIONS = "<regions><region name=\"r\" display_name=\"Region\"/></regions>";

const std::string WHOLE =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><SAPolicy template_version=\"3.0.1000\" localization_language=\"\">"
    "<digitalAssets command=\"overwrite\"><entity name=\"card\" type=\"Generic\" caseSensitive=\"false\" "
    "validator=\"\" display_name=\"card\" description=\"\" pre-defined=\"false\"><regularExpression>stored"
    "</regularExpression><alphabetCharset/><patternForDisplay/><examples/></entity><dictionary name=\"words\" "
    "type=\"All\" "
    "display_name=\"words\" description=\"\" pre-defined=\"false\"><keyword>stored</keyword></dictionary>"
    "</digitalAssets><complianceTemplates command=\"overwrite\"><template>A</template><template>C</template>"
    "</complianceTemplates><industries><industry name=\"i\" display_name=\"Industry\"><template_id>A</template_id>"
    "<template_id>C</template_id></industry></industries><regions><region name=\"r\" display_name=\"Region\">"
    "<template_id>A</template_id></region></regions></SAPolicy>";

/** @return the text in which a category's list gave no display name */
std::string Without(const std::string& strDisplayName) {
    std::string strText = WHOLE;
    return strText.replace(strText.find(strDisplayName), strDisplayName.size(), "");
}

// The log of an export that nothing disturbs, piece by piece.
const Lines BEGUN = {Manager("0x110", "CTemplateMgr::ExportTemplate(lstTemplateName.size() = 4"),
                     Assets("0x110", "CDLPDigitalAssetsParser::GenerateRootXML()")};
std::string Asked(const std::string& strName) {
    return Manager("0x110", "CTemplateMgr::FindTemplate, iSearchField = 2, strFieldValue = " + strName);
}
Lines Found(const std::string& strName) {
    return {Asked(strName), Manager("0x102", "CTemplateMgr::GetTemplateList successfully"),
            Manager("0x111", "CTemplateMgr::FindTemplate")};
}
const Lines READ_A = BEGUN + Found("A");
const Lines READ_B =
    READ_A +
    Lines{Asked("none"), Manager("0x102", "CTemplateMgr::GetTemplateList successfully"),
          Manager("0x111", "Unable to find the template"), Manager("0x1003", "Unable to find template.")} +
    Found("B");
const Lines READ_C = READ_B +
                     Lines{Manager("0x1001", "template contain invalid expression unknown"),
                           Manager("0x1003", "template contain invalid digital assets.")} +
                     Found("C");
const Lines WRITING_ASSETS = READ_C + Lines{Assets("0x110", "CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()")};
const Lines WROTE_ASSETS =
    WRITING_ASSETS + Lines{Assets("0x111", "CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()")};
std::string ListEntered(const std::string& strMarkup, const std::string& strTag) {
    return "0x110 util_ParseDLPTemplate.cpp DLPMetaDataLoaderImpl::MakeDOMNode(xmllength=" +
           std::to_string(strMarkup.size()) + ", rootNodeName='/" + strTag + "')";
}
const std::string LIST_LEFT = Lists("0x111", " return ");
const std::string LIST_FAILED = Lists("0x1003", " failed: injected fault");
const Lines ASKING_INDUSTRIES = WROTE_ASSETS + Lines{ListEntered(INDUSTRIES, "industries")};
const Lines INDUSTRIES_LEFT = {Manager("0x102", "strTag = industries, strSubTag = industry")};
const Lines WRITING_INDUSTRIES = ASKING_INDUSTRIES + Lines{LIST_LEFT} + INDUSTRIES_LEFT;
const Lines ASKING_REGIONS = {ListEntered(REGIONS, "regions")};
const Lines REGIONS_LEFT = {Manager("0x102", "strTag = regions, strSubTag = region")};
const Lines WRITING_REGIONS = WRITING_INDUSTRIES + ASKING_REGIONS + Lines{LIST_LEFT} + REGIONS_LEFT;

std::string Returned(const std::string& strText) {
    return Manager("0x111", "CTemplateMgr::ExportTemplate returns <" + strText + ">");
}

Lines Error(const std::string& strMessage) {
    return {Manager("0x1003", "CTemplateMgr::ExportTemplate(), Error: " + strMessage)};
}
Lines NoNode(const std::string& strTag) {
    return {Manager("0x1004", "Fail to find node " + strTag)};
}
Lines NoAssets(const std::string& strMessage) {
    return Lines{Assets("0x1003", "Fail to generate digital access xml, Error: " + strMessage)} +
           NoNode("digitalAssets");
}
Lines NoAsset(const std::string& strElement, const std::string& strSubject) {
    return Lines{Assets("0x1003", "Fail to generate " + strElement + " xml, Error: " + strSubject + ": injected fault"),
                 Assets("0x1004", "Fail to generate " + strElement + " node.")} +
           NoNode("digitalAssets");
}

class TemplateExportSteps : public testing::Test {
  protected:
    void SetUp() override {
        m_folder.Write("config/PredefinedDLPPolicy.xml", "<SAPolicy>" + INDUSTRIES + REGIONS + "</SAPolicy>");
        SYS::SetInstallPath(OS::WideText(m_folder.Path()));
        XmlFaults::FailAt(0);
        XmlFaults::FindNothingAt(0);
        CSettingsStore::Open(TemplateStore::MEMORY);
        TemplateStore::AddExpression("card");
        TemplateStore::AddKeyword("words");
        const std::string strRules =
            Rule(Block("ENTITY", "card") + Block("KEYWORD", "words"), "OR") + Rule(Block("KEYWORD", "words"));
        TemplateStore::AddTemplate({"A", "a", strRules, false, {"i"}, {"r"}});
        TemplateStore::AddTemplate({"B", "b", Rule(Block("ENTITY", "unknown")), false, {"i"}});
        TemplateStore::AddTemplate({"C", "c", Rule(Block("ENTITY", "card")), true, {"i"}});
        CTemplateMgr(L"").ExportTemplate({});  // reads the policy lists
        m_strBefore = TemplateStore::Dump();
    }
    void TearDown() override {
        XmlFaults::FailAt(0);
        SYS::SetInstallPath(L"");
    }

    /** @return the outcome; the templates of the text by their names alone, pointers cut */
    static std::string Export(bool& bPassed) {
        boost::shared_ptr<std::set<std::wstring>> pExpressions;
        boost::shared_ptr<std::set<std::wstring>> pKeywords;
        std::string strText;
        CLogRecorder log;
        try {
            strText =
                OS::Utf8Lenient(CTemplateMgr(L"").ExportTemplate({L"A", L"none", L"B", L"C"}, pExpressions, pKeywords));
        } catch (...) {
            bPassed = true;
        }
        Lines vecLines;
        for (std::string strLine : log.Lines()) {
            const std::size_t iPointer = strLine.find(LIST_LEFT) == 0 ? LIST_LEFT.size() : strLine.size();
            vecLines.push_back(Shortened(strLine.substr(0, iPointer)));
        }
        const bool bSets = *pExpressions == std::set<std::wstring>{L"ORVAL_SUB_CFG_DLP_EXPRESSIONcard"} &&
                           *pKeywords == std::set<std::wstring>{L"ORVAL_SUB_CFG_DLP_KEYWORDwords"};
        EXPECT_TRUE(bSets || (pExpressions->empty() && pKeywords->empty()));
        return Outcome(Shortened(strText), bSets, vecLines);
    }

    /** What each template holds is the matter of other tests. */
    static std::string Shortened(std::string strText) {
        const std::string strStart = "<template name=\"";
        const std::string strEnd = "</template>";
        for (std::size_t i = strText.find(strStart); i != std::string::npos; i = strText.find(strStart, i)) {
            const std::string strName(1, strText[i + strStart.size()]);
            strText.replace(i, strText.find(strEnd, i) - i, "<template>" + strName);
        }
        return strText;
    }

    void ExpectNothingChanged() {
        bool bPassed = false;
        EXPECT_EQ(TemplateStore::Dump(), m_strBefore);
        EXPECT_EQ(Export(bPassed), Outcome(WHOLE, true, WRITING_REGIONS + Lines{Returned(WHOLE)}));
    }

    CTempDir m_folder;
    CStoreFaults m_faults;
    std::string m_strBefore;
};

}  // namespace

TEST_F(TemplateExportSteps, XmlLayerFailingAtAnyOperation) {
    const std::string strWhole = Outcome(WHOLE, true, WRITING_REGIONS + Lines{Returned(WHOLE)});
    const std::string strNoIndustries = Without("Industry");
    const std::string strNoRegions = Without("Region");
    const std::string strFault = "injected fault";
    const Lines vecExpected = {
        Outcome("", false,
                BEGUN + Lines{Assets("0x1004", "Fail to generate xml file root part, Error: " + strFault),
                              Manager("0x1004", "Fail to find SAPolicy.")}),
        Outcome("", false, READ_A + Error("ORVAL_SUB_CFG_DLP_TEMPLATEA: " + strFault)),
        Outcome("", false, READ_B + Error("ORVAL_SUB_CFG_DLP_TEMPLATEB: " + strFault)),
        strWhole,  // what B would be written as is not asked for
        Outcome("", false, READ_C + Error("ORVAL_SUB_CFG_DLP_TEMPLATEC: " + strFault)),
        Outcome("", false,
                READ_C + Lines{"0x1003 DLPTemplate.cpp Fail to construct CComplianceTemplates, Error: " + strFault} +
                    NoNode("complianceTemplates")),
        Outcome("", false, WRITING_ASSETS + NoAssets(strFault)),
        Outcome("", false, WRITING_ASSETS + NoAsset("entity", "ORVAL_SUB_CFG_DLP_EXPRESSIONcard")),
        Outcome("", false, WRITING_ASSETS + NoAsset("dictionary", "ORVAL_SUB_CFG_DLP_KEYWORDwords")),
        Outcome("", false, WRITING_ASSETS + NoAssets(strFault)),
        Outcome(strNoIndustries, true,
                ASKING_INDUSTRIES + Lines{LIST_FAILED} + INDUSTRIES_LEFT + ASKING_REGIONS + Lines{LIST_LEFT} +
                    REGIONS_LEFT + Lines{Returned(strNoIndustries)}),
        Outcome("", true, WRITING_INDUSTRIES + Error(strFault)),
        Outcome("", true, WRITING_INDUSTRIES + Error("ORVAL_SUB_CFG_DLP_TEMPLATEA: " + strFault)),
        Outcome("", true, WRITING_INDUSTRIES + Error(strFault)),
        Outcome(
            strNoRegions, true,
            WRITING_INDUSTRIES + ASKING_REGIONS + Lines{LIST_FAILED} + REGIONS_LEFT + Lines{Returned(strNoRegions)}),
        Outcome("", true, WRITING_REGIONS + Error(strFault)),
        Outcome("", true, WRITING_REGIONS + Error("ORVAL_SUB_CFG_DLP_TEMPLATEA: " + strFault)),
        Outcome("", true, WRITING_REGIONS + Error(strFault)),
    };
    Lines vecOutcomes;
    for (int n = 1;; ++n) {
        XmlFaults::FailAt(n);
        bool bPassed = false;
        const std::string strOutcome = Export(bPassed);
        const bool bReached = XmlFaults::GetCount() >= n;
        XmlFaults::FailAt(0);
        EXPECT_FALSE(bPassed) << n;
        ExpectNothingChanged();
        if (!bReached) {
            break;
        }
        if (vecOutcomes.empty() || vecOutcomes.back() != strOutcome) {
            vecOutcomes.push_back(strOutcome);
        }
    }
    EXPECT_EQ(vecOutcomes, vecExpected);
}

TEST_F(TemplateExportSteps, StoreThrowingAnythingAtAnyCall) {
    const struct {
        CStoreFaults::Fault fnThrow;
        std::string strText;
        bool bException;  ///< an OS::CException; anything else passes
    } THROWN[] = {
        {CStoreFaults::StoreFault, OS::Utf8Lenient(STORE_FAULT), true},
        {CStoreFaults::MemoryFault, "", false},
        {[] { throw std::runtime_error("broken"); }, "", false},
        {[] { throw 7; }, "", false},
    };
    for (const auto& thrown : THROWN) {
        Lines vecUnread = BEGUN;
        for (const char* pName : {"A", "none", "B", "C"}) {
            vecUnread = vecUnread + Lines{Asked(pName), Manager("0x1003", "Fail to call GetTemplateList"),
                                          Manager("0x1003", "Unable to get tempate list."),
                                          Manager("0x1003", "Unable to find template.")};
        }
        const std::string strEmpty = WHOLE.substr(0, WHOLE.find("<digitalAssets")) +
                                     "<digitalAssets command=\"overwrite\"/><complianceTemplates "
                                     "command=\"overwrite\"/><industries/><regions/></SAPolicy>";
        const std::string strNoTemplates = Outcome(
            strEmpty, false,
            vecUnread + Lines(WRITING_REGIONS.begin() + static_cast<int>(READ_C.size()), WRITING_REGIONS.end()) +
                Lines{Returned(strEmpty)});
        const std::string strNoNames =
            Outcome("", false, BEGUN + Lines{Manager("0x1004", "Fail to get digital assets configuration.")});
        const std::string strNoAssets = Outcome("", false, WRITING_ASSETS + NoAssets(thrown.strText));
        const std::string strPassedEarly = Outcome("", false, BEGUN);
        const std::string strPassedLate = Outcome("", false, WRITING_ASSETS);
        const struct {
            const char* pOperation;
            const std::string& strOutcome;
            const std::string& strPassed;
        } CALLS[] = {
            {"Find", strNoTemplates, strPassedEarly}, {"FindHeld", strNoNames, strPassedEarly},
            {"FindHeld", strNoNames, strPassedEarly}, {"Begin", strNoAssets, strPassedLate},
            {"Find", strNoAssets, strPassedLate},     {"Find", strNoAssets, strPassedLate},
            {"Commit", strNoAssets, strPassedLate},
        };
        std::size_t n = 0;
        for (const auto& call : CALLS) {
            m_faults.FailAt(++n, thrown.fnThrow);
            bool bPassed = false;
            const std::string strOutcome = Export(bPassed);
            ASSERT_TRUE(m_faults.IsReached()) << n;
            EXPECT_EQ(m_faults.GetOperations().at(n - 1), call.pOperation);
            EXPECT_EQ(bPassed, !thrown.bException) << n;
            EXPECT_EQ(strOutcome, thrown.bException ? call.strOutcome : call.strPassed) << n;
            m_faults.CountOnly();
            ExpectNothingChanged();
        }
        m_faults.CountOnly();
        bool bPassed = false;
        Export(bPassed);
        EXPECT_EQ(m_faults.GetCount(), n);
    }
}
