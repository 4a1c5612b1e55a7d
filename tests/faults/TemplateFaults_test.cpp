#include <gtest/gtest.h>

#include "api/CDLPTemplateParse.h"
#include "platform/common/CException.h"
#include "platform/xml/FaultPoint.h"
#include "templates/DLPTemplate.h"
#include "templates/DLPTemplateMgr.h"
#include "templates/DLPXmlNormalizer.h"
#include "tests/support/LogRecorder.h"
#include "tests/templates/TemplateStore.h"

// What the operations on templates do when the XML layer fails at any of its operations.

using TemplateStore::Block;
using TemplateStore::Policy;
using TemplateStore::Rule;

namespace {

using Lines = std::vector<std::string>;
using Names = std::vector<OS::x_wstring>;

const OS::x_wstring TEMPLATE = L"<template name=\"T\"><matchRule><buildingBlock/></matchRule></template>";
const OS::x_wstring OLDER =
    L"<SAPolicy><complianceTemplates><template name=\"T\" displayName=\"D\"><matchRule><buildingBlock "
    L"sourceType=\"KEYWORD\" sourceName=\"Words\"/></matchRule></template></complianceTemplates></SAPolicy>";
const OS::x_wstring CATEGORIES =
    L"<SAPolicy><industries><industry name=\"i\"><template_id>T</template_id></industry></industries></SAPolicy>";

/** The line of a template that could not be read or written. */
constexpr char UNWRITTEN[] = "0x1003 DLPTemplate.cpp Fail to construct CComplianceTemplates, Error: injected fault";

/** Runs an operation with a fault at its n-th step of the XML layer, for every n that it has. */
template <class F>
void ForEveryFault(const F& fnOperation) {
    for (int n = 1;; ++n) {
        XmlFaults::FailAt(n);
        fnOperation(n);
        const bool bDone = XmlFaults::GetCount() < n;
        XmlFaults::FailAt(0);
        if (bDone) {
            return;
        }
    }
}

/** @return whether the fault of this round has come */
bool Reached(int n) {
    return XmlFaults::GetCount() >= n;
}

class TemplateFaults : public testing::Test {
  protected:
    void SetUp() override { Fill(); }

    static void Fill() {
        CSettingsStore::Open(TemplateStore::MEMORY);
        TemplateStore::AddExpression("Card");
        TemplateStore::AddKeyword("Words");
        TemplateStore::AddTemplate({"T", "t", Rule(Block("ENTITY", "Card") + Block("KEYWORD", "Words")), true, {"i"}});
    }

    CTemplateMgr m_manager{L""};
};

}  // namespace

TEST_F(TemplateFaults, ReadingATemplateGivesWhatWasReadAndALine) {
    ForEveryFault([](int n) {
        CLogRecorder log;
        const CComplianceTemplates compliance(TEMPLATE);
        EXPECT_EQ(compliance.GetTemplate().strName, Reached(n) ? L"" : L"T");
        EXPECT_EQ(compliance.GetTemplate().vecRules.size(), Reached(n) ? 0U : 1U);
        EXPECT_EQ(log.Lines(), Reached(n) ? Lines{UNWRITTEN} : Lines());
    });
}

TEST_F(TemplateFaults, WritingATemplateGivesNothingAndALine) {
    const CComplianceTemplates compliance(L"n", L"d", L"x", {L"K:a"}, {L"OR"});
    const OS::x_wstring strWhole = compliance.ToXmlString();
    const OS::x_wstring strList = CComplianceTemplates::MakeComplianceTemplatesXml({compliance});
    ForEveryFault([&](int n) {
        CLogRecorder log;
        const OS::x_wstring strText = compliance.ToXmlString();
        EXPECT_EQ(strText, Reached(n) ? OS::x_wstring() : strWhole);
        EXPECT_EQ(log.Lines(), Reached(n) ? Lines{UNWRITTEN} : Lines());
    });
    ForEveryFault([&](int n) {
        CLogRecorder log;
        const OS::x_wstring strText = CComplianceTemplates::MakeComplianceTemplatesXml({compliance});
        EXPECT_EQ(strText, Reached(n) ? OS::x_wstring() : strList);
        EXPECT_EQ(log.Lines(), Reached(n) ? Lines{UNWRITTEN} : Lines());
    });
}

TEST_F(TemplateFaults, TextWhoseTemplateIsNotFoundIsAnEmptyTemplateWithoutALine) {
    CLogRecorder log;
    XmlFaults::FindNothingAt(1);
    const CComplianceTemplates compliance(TEMPLATE);
    EXPECT_EQ(compliance.GetTemplate().strName, L"");
    EXPECT_TRUE(compliance.GetTemplate().vecRules.empty());
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(TemplateFaults, ListWhoseRootIsNotFoundIsEmptyAndALine) {
    CLogRecorder log;
    XmlFaults::FindNothingAt(1);
    EXPECT_EQ(CComplianceTemplates::MakeComplianceTemplatesXml({CComplianceTemplates(L"n", L"d", L"x", {}, {})}), L"");
    EXPECT_EQ(log.Lines(), Lines{"0x1004 DLPTemplate.cpp Fail to find node complianceTemplates"});
}

TEST_F(TemplateFaults, ExportSaysWhichNodeItDidNotFind) {
    TemplateStore::AddTemplate({"E", "e", Rule(Block("ENTITY", "Card")), false, {"i"}});
    m_manager.ExportTemplate({});  // reads the policy lists
    Lines vecHeard;
    int n = 0;
    do {
        XmlFaults::FindNothingAt(++n);
        std::set<std::wstring> lstExpressions;
        CLogRecorder log;
        std::string strHeard =
            m_manager.ExportDocument({L"E"}, nullptr, &lstExpressions, nullptr).empty() ? "" : "text";
        strHeard += lstExpressions.empty() ? "" : " with its asset";
        for (const std::string& strLine : log.Lines()) {
            const bool bFailure = strLine.find("0x1003") == 0 || strLine.find("0x1004") == 0;
            strHeard += bFailure && strLine.find(" DLPTemplate") == 6 ? " | " + strLine : "";
        }
        if (vecHeard.empty() || vecHeard.back() != strHeard) {
            vecHeard.push_back(strHeard);
        }
    } while (XmlFaults::GetLookupCount() >= n);
    EXPECT_EQ(vecHeard,
              (Lines{" | 0x1004 DLPTemplateMgr.cpp Fail to find SAPolicy.",
                     "text | 0x1003 DLPTemplateMgr.cpp Unable to find template node. skip this one.",
                     " | 0x1004 DLPTemplate.cpp Fail to find node complianceTemplates"
                     " | 0x1004 DLPTemplateMgr.cpp Fail to find node complianceTemplates",
                     " | 0x1004 DLPTemplateMgr.cpp Fail to find node complianceTemplates",
                     " | 0x1004 DLPTemplateMgr.cpp Fail to find node digitalAssets",
                     "text with its asset",  // the policy lists are optional
                     " with its asset | 0x1003 DLPTemplateMgr.cpp Unable to find node industries.",
                     "text with its asset", " with its asset | 0x1003 DLPTemplateMgr.cpp Unable to find node regions.",
                     " with its asset | 0x1004 DLPTemplateMgr.cpp Fail to make category industries, regions",
                     "text with its asset"}));
}

TEST_F(TemplateFaults, SavingTheEditedTemplateKeepsTheContent) {
    ForEveryFault([](int n) {
        CLogRecorder log;
        CDLPTemplateParse parse(L"before");
        EXPECT_TRUE(parse.SaveToXMLStr({L"K:a"}, {L""}, L"n", L"d", L"x"));
        OS::x_wstring strContent;
        parse.GetXMLContent(strContent);
        EXPECT_EQ(strContent == L"before", Reached(n));
        EXPECT_EQ(log.Lines(), Reached(n) ? Lines{UNWRITTEN} : Lines());
    });
}

TEST_F(TemplateFaults, FormatThatCannotBeCheckedIsNone) {
    ForEveryFault([this](int n) {
        bool bNeedConvert = false;
        CLogRecorder log;
        const bool bChecked = m_manager.CheckFormat(OLDER, bNeedConvert);
        EXPECT_EQ(bChecked, !Reached(n));
        if (Reached(n)) {
            EXPECT_EQ(log.Lines().back(),
                      "0x1004 DLPTemplateMgr.cpp CTemplateMgr::IsStandardFormat(), Error: injected fault");
        }
    });
}

TEST_F(TemplateFaults, CategoriesThatCannotBeReadAreALine) {
    ForEveryFault([this](int n) {
        CTemplateMgr::CategoryMap categories;
        CLogRecorder log;
        const bool bMade = m_manager.MakeCategoryMap(CATEGORIES, L"industries", L"industry", categories);
        EXPECT_EQ(bMade, !Reached(n));
        if (Reached(n)) {
            EXPECT_EQ(log.Lines().back(),
                      "0x1004 DLPTemplateMgr.cpp CTemplateMgr::MakeCategoryMap(), Error: injected fault");
        }
    });
}

TEST_F(TemplateFaults, NormalisationThatFailsIsALine) {
    std::vector<Lines> vecFailures;
    ForEveryFault([&](int n) {
        OS::x_wstring strResult = L"before";
        CLogRecorder log;
        const bool bResult = CDLPXmlNormalizer().NormailzeXml(OLDER, strResult);
        EXPECT_EQ(bResult, !Reached(n));
        EXPECT_EQ(strResult == L"before", Reached(n));
        const Lines vecFailed = log.Messages(0x1004);
        if (vecFailures.empty() || vecFailures.back() != vecFailed) {
            vecFailures.push_back(vecFailed);
        }
    });
    const std::string strLine = "CDLPXmlNormalizer::NormailzeXml(), Error: ";
    EXPECT_EQ(vecFailures, (std::vector<Lines>{{strLine + "injected fault"},
                                               // the root's generator tells of its own; its empty text is then no root
                                               {"Fail to generate xml file root part, Error: injected fault",
                                                "Fail to find node SAPolicy", strLine},
                                               {strLine + "injected fault"},
                                               {}}));
}
