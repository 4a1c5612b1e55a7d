#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "templates/DLPTemplateMgr.h"
#include "tests/support/FaultStore.h"
#include "tests/support/LogRecorder.h"
#include "tests/templates/TemplateStore.h"

// What an import leaves behind when the store fails, step by step; tests/faults fails every step of a longer one.

using TemplateStore::Block;
using TemplateStore::Policy;
using TemplateStore::Rule;

namespace {

using Lines = std::vector<std::string>;
using Names = std::vector<OS::x_wstring>;

constexpr char FAILURE[] =
    "0x1003 DLPTemplateMgr.cpp Fail to construct ImportTemplateImpl, Error: the store does not answer";

/** A built-in of each kind, a user's item of each kind, and a document that wants to replace them all and adds one. */
class TemplateImportStore : public testing::Test {
  protected:
    void Fill() {
        CSettingsStore::Open(TemplateStore::MEMORY);
        TemplateStore::AddExpression("BuiltIn", true);
        TemplateStore::AddExpression("User");
        TemplateStore::AddKeyword("BuiltIn", true);
        TemplateStore::AddKeyword("User");
        TemplateStore::AddTemplate({"BuiltIn", "old", "", true});
        TemplateStore::AddTemplate({"User", "old"});
    }

    static std::string Document() {
        std::string strAssets;
        std::string strTemplates;
        for (const std::string strName : {"BuiltIn", "User", "New"}) {
            const std::string strAttributes = " name=\"" + strName + "\" display_name=\"" + strName +
                                              "\" description=\"imported\" pre-defined=\"false\"";
            strAssets += "<entity" + strAttributes + "><regularExpression/></entity>";
            strAssets += "<dictionary" + strAttributes + "/>";
            strTemplates += "<template" + strAttributes + ">" +
                            Rule(Block("ENTITY", strName) + Block("KEYWORD", strName, "AND")) + "</template>";
        }
        return Policy(strTemplates, "<digitalAssets>" + strAssets + "</digitalAssets>");
    }

    int Import() {
        m_vecImported = {L"before"};
        m_vecSkipped.clear();
        m_vecAssets.clear();
        return m_manager.ImportTemplate(OS::WideText(Document()), m_vecImported, m_vecSkipped, m_vecAssets);
    }

    /** @return the operations of an import that somebody listens to */
    Lines Operations(CStoreFaults& faults) {
        Fill();
        faults.CountOnly();
        CLogRecorder log;
        Import();
        return faults.GetOperations();
    }

    /** @return the number, from 1, of the first operation of the name after the names of assets were asked for */
    static std::size_t TemplateOperation(const Lines& vecOperations, const char* pName) {
        const auto itAsked = std::find(vecOperations.rbegin(), vecOperations.rend(), "FindHeld").base();
        return static_cast<std::size_t>(std::find(itAsked, vecOperations.end(), pName) - vecOperations.begin()) + 1;
    }

    /** @return the stored row of a subject identifier; "" when there is none */
    static std::string Row(const std::string& strSubject) {
        std::istringstream dump(TemplateStore::Dump());
        for (std::string strLine; std::getline(dump, strLine);) {
            if (strLine.find("subject=\"" + strSubject + "\"") != std::string::npos) {
                return strLine;
            }
        }
        return "";
    }

    static bool IsImported(const std::string& strSubject) {
        return Row(strSubject).find("description=\"imported\"") != std::string::npos;
    }

    CTemplateMgr m_manager{L""};
    Names m_vecImported;
    Names m_vecSkipped;
    Names m_vecAssets;
};

}  // namespace

TEST_F(TemplateImportStore, UnitThatCannotBeginGivesThree) {
    CStoreFaults faults;
    Fill();
    faults.FailAt(1);
    CLogRecorder log;
    EXPECT_EQ(Import(), 3);
    EXPECT_EQ(faults.GetOperations(), Lines{"Begin"});
    EXPECT_EQ(m_vecImported, Names{L"before"});
    const Lines vecLines = log.Lines();
    EXPECT_EQ(Lines(vecLines.begin() + 3, vecLines.end()),
              (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::ImportTemplateImpl()", FAILURE,
                     "0x111 DLPTemplateMgr.cpp CTemplateMgr::ImportTemplate result = 3"}));
}

TEST_F(TemplateImportStore, UnitThatCannotBeKeptGivesThreeAndNothingImported) {
    CStoreFaults faults;
    const Lines vecOperations = Operations(faults);
    EXPECT_EQ(vecOperations.back(), "Commit");
    Fill();
    const std::string strBefore = TemplateStore::Dump();
    faults.FailAt(vecOperations.size());
    CLogRecorder log;
    EXPECT_EQ(Import(), 3);
    EXPECT_EQ(m_vecImported, Names{L"before"});
    EXPECT_EQ(TemplateStore::Dump(), strBefore);
    const Lines vecLines = log.Lines();
    EXPECT_EQ(Lines(vecLines.end() - 2, vecLines.end()),
              (Lines{FAILURE, "0x111 DLPTemplateMgr.cpp CTemplateMgr::ImportTemplate result = 3"}));
    for (const std::string& strLine : vecLines) {
        EXPECT_NE(strLine, "0x111 DLPTemplateMgr.cpp CTemplateMgr::ImportTemplateImpl");
    }
}

TEST_F(TemplateImportStore, LookupThatFailsNeverCreates) {
    CStoreFaults faults;
    const std::size_t iFind = TemplateOperation(Operations(faults), "Find");
    Fill();
    faults.FailAt(iFind);
    CLogRecorder log;
    EXPECT_EQ(Import(), 3);
    const Lines vecLines = log.Lines();
    EXPECT_EQ(Lines(vecLines.end() - 5, vecLines.end()),
              (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::FindTemplate, iSearchField = 2, strFieldValue = BuiltIn",
                     "0x1003 DLPTemplateMgr.cpp Fail to call GetTemplateList",
                     "0x1003 DLPTemplateMgr.cpp Unable to get tempate list.", FAILURE,
                     "0x111 DLPTemplateMgr.cpp CTemplateMgr::ImportTemplate result = 3"}));
    EXPECT_TRUE(IsImported("ORVAL_SUB_CFG_DLP_EXPRESSIONNew"));
}

TEST_F(TemplateImportStore, RecordThatCannotBeReplacedIsSkippedAndTheImportGoesOn) {
    CStoreFaults faults;
    const std::size_t iSave = TemplateOperation(Operations(faults), "Save");
    Fill();
    faults.FailAt(iSave);
    CLogRecorder log;
    EXPECT_EQ(Import(), 0);
    EXPECT_EQ(m_vecSkipped, (Names{L"BuiltIn", L"User"}));
    EXPECT_EQ(m_vecImported, (Names{L"before", L"New"}));
    EXPECT_EQ(log.Messages(0x1003), Lines{"Fail to call SetTemplateList."});
}

TEST_F(TemplateImportStore, RecordThatCannotBeAddedEndsTheImport) {
    CStoreFaults faults;
    const Lines vecOperations = Operations(faults);
    const auto itSave = std::find(vecOperations.rbegin(), vecOperations.rend(), "Save").base();
    const std::size_t iSave = static_cast<std::size_t>(itSave - vecOperations.begin());
    Fill();
    faults.FailAt(iSave);
    CLogRecorder log;
    EXPECT_EQ(Import(), 3);
    EXPECT_EQ(m_vecImported, (Names{L"before", L"User"}));
    EXPECT_TRUE(IsImported("ORVAL_SUB_CFG_DLP_TEMPLATEUser"));
    EXPECT_EQ(log.Messages(0x1003), Lines{"Fail to construct ImportTemplateImpl, Error: the store does not answer"});
}

TEST_F(TemplateImportStore, TextThatNoStoreKeepsEndsTheImport) {
    Fill();
    m_manager = CTemplateMgr(OS::x_wstring(1, static_cast<wchar_t>(0xD800)));
    Names vecImported;
    Names vecSkipped;
    Names vecAssets;
    const std::string strXml = Policy("<template name=\"T\" display_name=\"D\"/>");
    EXPECT_EQ(m_manager.ImportTemplate(OS::WideText(strXml), vecImported, vecSkipped, vecAssets), 3);
    EXPECT_EQ(Row("ORVAL_SUB_CFG_DLP_TEMPLATET"), "");
}
