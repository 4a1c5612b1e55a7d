#include <gtest/gtest.h>

#include <set>

#include "digital_assets/ImportObserver.h"
#include "platform/xml/FaultPoint.h"
#include "templates/DLPTemplateMgr.h"
#include "templates/DLPXmlNormalizer.h"
#include "tests/support/LogRecorder.h"
#include "tests/templates/TemplateStore.h"
#include "xml/CPolicyDocument.h"

// What an import of templates does when a lookup in a document that was read well finds nothing.

using TemplateStore::Block;
using TemplateStore::Policy;
using TemplateStore::Rule;

namespace {

using Lines = std::vector<std::string>;
using Names = std::vector<OS::x_wstring>;

std::string Standard() {
    return Policy("<template name=\"T\" display_name=\"t\">" + Rule(Block("ENTITY", "Card")) + "</template>",
                  "<industries><industry name=\"i\"><template_id>T</template_id></industry></industries>");
}

std::string Older() {
    return "<SAPolicy><regions><region/></regions><complianceTemplates><template name=\"T\" displayName=\"t\">" +
           Rule(Block("ENTITY", "Card")) + "</template></complianceTemplates></SAPolicy>";
}

class CListener : public CImportObserver {
  public:
    void OnItem(const SImportItem&) override {}
};

class TemplateImportFaults : public testing::Test {
  protected:
    void TearDown() override { XmlFaults::FindNothingAt(0); }

    /** @return the code, what was imported, and the lines of the steps that failed */
    static std::string Import(const std::string& strXml, CImportObserver* pObserver) {
        CPolicyDocument document{std::string_view(strXml)};
        Names vecImported;
        Names vecSkipped;
        Names vecAssets;
        CLogRecorder log;
        const int iResult = CTemplateMgr(L"").ImportDocument(document, vecImported, vecSkipped, vecAssets, pObserver);
        std::string strOutcome = std::to_string(iResult) + (vecImported.empty() ? "" : " imported");
        for (const std::string& strMessage : log.Messages(0x1004)) {
            strOutcome += "; " + strMessage;
        }
        return strOutcome;
    }

    static void Fill() {
        XmlFaults::FindNothingAt(0);
        CSettingsStore::Open(TemplateStore::MEMORY);
        TemplateStore::AddExpression("Card");
    }

    /**
     * @return the outcomes of imports of which one lookup each finds nothing, for every lookup that there is; the
     * import after each of them must end as if nothing had happened
     */
    static std::set<std::string> Outcomes(const std::string& strXml, CImportObserver* pObserver) {
        Fill();
        EXPECT_EQ(Import(strXml, pObserver), "0 imported");
        const std::string strWhole = TemplateStore::Dump();
        std::set<std::string> lstOutcomes;
        for (int n = 1;; ++n) {
            Fill();
            XmlFaults::FindNothingAt(n);
            const std::string strOutcome = Import(strXml, pObserver);
            const bool bReached = XmlFaults::GetLookupCount() >= n;
            XmlFaults::FindNothingAt(0);
            EXPECT_EQ(Import(strXml, pObserver), "0 imported") << n;
            EXPECT_EQ(TemplateStore::Dump(), strWhole) << n;
            if (!bReached) {
                EXPECT_EQ(strOutcome, "0 imported");
                return lstOutcomes;
            }
            lstOutcomes.insert(strOutcome);
        }
    }
};

/** A reference that was not seen when the stored names were asked for is unknown. */
const char NOT_TAKEN[] = "0";
const char NO_POLICY[] =
    "1; CTemplateMgr::IsStandardFormat Unable to find node SAPolicy. The xml file format is incompatible.";
const char NO_ROOT[] = "2; Fail to find node SAPolicy; Invalid localization_language, skip import.";
const char NO_EXPRESSIONS[] =
    "3; CDLPDigitalAssetsParser::ImportEntity() Unable to find node /SAPolicy/digitalAssets/entity."
    "                    The xml file format is incompatible.; fail to import entity.";
const char NO_KEYWORDS[] =
    "3; CDLPDigitalAssetsParser::ImportDictionary Unable to find node /SAPolicy/digitalAssets/dictionary."
    "                    The xml file format is incompatible.; fail to import dictionary.";
const char NOTHING_TO_CHECK[] =
    "3; CTemplateMgr::CheckImportTemplate Unable to find node /SAPolicy/complianceTemplates/template. The xml file "
    "format is incompatible.";
const char NOTHING_TO_IMPORT[] =
    "3; CTemplateMgr::ImportTemplate Unable to find node /SAPolicy/complianceTemplates/template. The xml file format "
    "is incompatible.";

}  // namespace

TEST_F(TemplateImportFaults, StepThatFindsNothingIsALineAndACode) {
    const std::set<std::string> lstExpected = {"0 imported",   NOT_TAKEN,   NO_POLICY,        NO_ROOT,
                                               NO_EXPRESSIONS, NO_KEYWORDS, NOTHING_TO_CHECK, NOTHING_TO_IMPORT};
    EXPECT_EQ(Outcomes(Standard(), nullptr), lstExpected);
    CListener listener;
    EXPECT_EQ(Outcomes(Standard(), &listener), lstExpected);
}

TEST_F(TemplateImportFaults, ConversionThatFindsNothingIsALineAndACode) {
    const std::set<std::string> lstExpected = {
        "0 imported", NOT_TAKEN, NO_POLICY, NO_ROOT, NO_EXPRESSIONS, NO_KEYWORDS, NOTHING_TO_CHECK, NOTHING_TO_IMPORT,
        // no list of templates is no failure of the conversion: the import goes on with nothing
        "2; CDLPXmlNormalizer::GetAllTemplateNodes() Unable to find node /SAPolicy/complianceTemplates/template. The "
        "xml file format is incompatible.; Fail to find node SAPolicy; Invalid localization_language, skip import.",
        "3; Fail to find node complianceTemplates; CDLPXmlNormalizer::NormailzeXml(), Error: ",
        "3; Fail to find node SAPolicy; CDLPXmlNormalizer::NormailzeXml(), Error: ",
        // the first line is that of the root's generator
        "3; Fail to find node SAPolicy; Fail to find node SAPolicy; CDLPXmlNormalizer::NormailzeXml(), Error: "};
    EXPECT_EQ(Outcomes(Older(), nullptr), lstExpected);
    CListener listener;
    EXPECT_EQ(Outcomes(Older(), &listener), lstExpected);
}

TEST_F(TemplateImportFaults, ConvertedTextIsLeftWhenNoTemplateListIsFound) {
    OS::x_wstring strResult = L"before";
    CLogRecorder log;
    XmlFaults::FindNothingAt(1);
    EXPECT_TRUE(CDLPXmlNormalizer().NormailzeXml(OS::WideText(Older()), strResult));
    EXPECT_EQ(strResult, L"before");
    EXPECT_EQ(log.Lines(),
              (Lines{"0x110 DLPTemplateMgr.cpp CDLPXmlNormalizer::NormailzeXml()",
                     "0x110 DLPTemplateMgr.cpp CDLPXmlNormalizer::GetAllTemplateNodes()",
                     "0x1004 DLPTemplateMgr.cpp CDLPXmlNormalizer::GetAllTemplateNodes() Unable to find node "
                     "/SAPolicy/complianceTemplates/template. The xml file format is incompatible.",
                     "0x111 DLPTemplateMgr.cpp CDLPXmlNormalizer::NormailzeXml()"}));
}
