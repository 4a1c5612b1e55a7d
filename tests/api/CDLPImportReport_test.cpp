#include "api/CDLPImportReport.h"

#include <gtest/gtest.h>

#include <thread>
#include <utility>

#include "api/CDLPDigitalAssetsParser.h"
#include "api/CDLPTemplateParse.h"
#include "platform/common/TextConversion.h"
#include "tests/support/FaultStore.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/StoreDump.h"
#include "tests/support/TempDir.h"
#include "tests/templates/TemplateStore.h"

namespace {

using Lines = std::vector<std::string>;
using Names = std::vector<OS::x_wstring>;
using SItem = CDLPImportReport::SItem;
using EReason = CDLPImportReport::EReason;
using TemplateStore::Block;
using TemplateStore::Policy;
using TemplateStore::Rule;

constexpr const char* KINDS[] = {"expression", "keyword", "template", "category", "section", "element"};
constexpr const char* DISPOSITIONS[] = {"created", "updated", "unchanged", "skipped", "failed"};
constexpr const char* REASONS[] = {"",
                                   "no name",
                                   "no display name",
                                   "built in",
                                   "missing child",
                                   "unknown expression",
                                   "unknown keyword",
                                   "unsupported type",
                                   "unsupported operation",
                                   "older built-in",
                                   "older section",
                                   "unknown template",
                                   "store",
                                   "unknown element"};

std::string Line(const SItem& item) {
    const std::string strDetail = item.strDetail.empty() ? "" : " [" + OS::Utf8Lenient(item.strDetail) + "]";
    return std::string(KINDS[static_cast<int>(item.eKind)]) + ' ' + OS::Utf8Lenient(item.strName) + " (" +
           OS::Utf8Lenient(item.strDisplayName) + ") " + DISPOSITIONS[static_cast<int>(item.eDisposition)] + ' ' +
           REASONS[static_cast<int>(item.eReason)] + strDetail;
}

Lines LinesOf(const CDLPImportReport& report) {
    Lines vecLines;
    for (const SItem& item : report.GetItems()) {
        vecLines.push_back(Line(item));
    }
    return vecLines;
}

/** @return "line:column" of each item */
Lines PlacesOf(const CDLPImportReport& report) {
    Lines vecPlaces;
    for (const SItem& item : report.GetItems()) {
        vecPlaces.push_back(std::to_string(item.iLine) + ':' + std::to_string(item.iColumn));
    }
    return vecPlaces;
}

bool IsTaken(const SItem& item) {
    return item.eReason == EReason::NONE;
}

std::string Entity(const std::string& strName, const std::string& strMore = "") {
    return "<entity name=\"" + strName + "\" display_name=\"" + strName + "\"" + strMore +
           "><regularExpression/></entity>";
}

std::string Template(const std::string& strName, const std::string& strRules = "") {
    return "<template name=\"" + strName + "\" display_name=\"" + strName + " shown\">" + strRules + "</template>";
}

/** Items of every fate that a healthy store gives: é makes bytes and characters differ. */
std::string Everything() {
    return "<SAPolicy template_version=\"3.0.1000\">\n<!-- é --><complianceTemplates>" + Template("t") + "\r\n" +
           Template("u", Rule(Block("ENTITY", "gone"))) + "\r" + Template("v", Rule(Block("KEYWORD", "gone"))) +
           Template("w", Rule(Block("x", "e"))) + Template("x", "<matchRule operation=\"EXCEPT\"/>") +
           Template("y", Rule("<buildingBlock sourceType=\"ENTITY\" sourceName=\"e\" operation=\"NOT\"/>")) +
           "</complianceTemplates><digitalAssets>" + Entity("e") + Entity("owned", " pre-defined=\"false\"") +
           Entity("") + "<entity name=\"n\"/><dictionary name=\"d\" display_name=\"D\"/>" +
           Entity("typed", " type=\"Type 2\"") +
           "</digitalAssets><regions><region name=\"r\" display_name=\"R\"><template_id>z</template_id></region>"
           "</regions></SAPolicy>";
}

class ImportReport : public testing::Test {
  protected:
    ImportReport() { CSettingsStore::Open(TemplateStore::MEMORY); }

    int Import(const std::string& strXml) {
        const OS::x_wstring strWide = OS::WideText(strXml);
        return CDLPTemplateParse(L"").DoTemplateImport(L"", strWide, m_vecImported, m_vecSkipped, m_vecAssets);
    }
    static int ImportAssets(const std::string& strXml) {
        Names vecSkipped;
        return CDLPDigitalAssetsParser().ImportDigitalAssets(L"", OS::WideText(strXml), vecSkipped);
    }

    Names m_vecImported;
    Names m_vecSkipped;
    Names m_vecAssets;
};

}  // namespace

TEST_F(ImportReport, HoldsEveryItemOfATextInItsOrderWithItsPlace) {
    ASSERT_EQ(ImportAssets("<SAPolicy><digitalAssets>" + Entity("owned", " pre-defined=\"true\"") +
                           "</digitalAssets></SAPolicy>"),
              0);
    const CDLPImportReport report;
    EXPECT_EQ(Import(Everything()), 0);
    EXPECT_EQ(LinesOf(report),
              (Lines{"template t (t shown) created ", "template u (u shown) skipped unknown expression [gone]",
                     "template v (v shown) skipped unknown keyword [gone]",
                     "template w (w shown) skipped unsupported type [x]",
                     "template x (x shown) skipped unsupported operation [EXCEPT]",
                     "template y (y shown) skipped unsupported operation [NOT]", "expression e (e) created ",
                     "expression owned (owned) skipped built in", "expression  () skipped no name",
                     "expression n () skipped no display name", "keyword d (D) created ",
                     "expression typed (typed) skipped missing child [alphabetCharset]",
                     "category r (R) skipped unknown template [z]"}));
    const std::wstring strWide = OS::WideText(Everything());
    for (const SItem& item : report.GetItems()) {
        EXPECT_EQ(strWide[item.iOffset], L'<') << Line(item);
    }
    const Lines vecPlaces = PlacesOf(report);
    EXPECT_EQ(Lines(vecPlaces.begin(), vecPlaces.begin() + 3), (Lines{"2:32", "3:1", "4:1"}));
    EXPECT_FALSE(report.HasStoreFailed());
    EXPECT_EQ(report.GetStoreFailure(), L"");
}

TEST_F(ImportReport, HoldsElementsThatAreNoItemsAndWereThereforePassedOver) {
    const CDLPImportReport report;
    EXPECT_EQ(Import("<SAPolicy template_version=\"1\"><digitalAssets><Entity name=\"e\"/></digitalAssets>"
                     "<complianceTemplates>" +
                     Template("t") + "<templte display_name=\"T\"/></complianceTemplates></SAPolicy>"),
              0);
    EXPECT_EQ(LinesOf(report), (Lines{"element Entity () skipped unknown element [digitalAssets]",
                                      "template t (t shown) created ",
                                      "element templte (T) skipped unknown element [complianceTemplates]"}));
    EXPECT_EQ(ImportAssets("<SAPolicy><assets/></SAPolicy>"), 0);
    EXPECT_EQ(Line(report.GetItems().back()), "element assets () skipped unknown element [SAPolicy]");
}

TEST_F(ImportReport, CountsTheBytesOfAFileAndWhatStandsBeforeItsDocument) {
    const CTempDir folder;
    const std::string strFile = "\xEF\xBB\xBFé\n" + Policy(Template("é") + Template("b"));
    OS::x_wstring strPath = OS::WideText(folder.Write("policy.xml", strFile));
    const CDLPImportReport report;
    EXPECT_TRUE(CDLPTemplateParse(L"").ImportDLPTemplateFromFile(strPath));
    ASSERT_EQ(report.GetItems().size(), 2U);
    EXPECT_EQ(report.GetItems()[0].iOffset, strFile.find("<template "));
    EXPECT_EQ(report.GetItems()[1].iOffset, strFile.rfind("<template "));
    EXPECT_EQ(report.GetItems()[1].iLine, 2U);
    EXPECT_EQ(report.GetItems()[1].iColumn, strFile.rfind("<template ") - strFile.find('\n') - 2);
}

TEST_F(ImportReport, OlderLayoutKeepsItsPlacesAndOrder) {
    const CDLPImportReport report;
    EXPECT_EQ(Import("<SAPolicy>\n<regions><region/></regions>\n<complianceTemplates>\n<template name='b'/>\n"
                     "<template name='a' displayName='A' builtin='1'/>\n<template name='c' displayName='C'/>\n"
                     "</complianceTemplates></SAPolicy>"),
              0);
    EXPECT_EQ(LinesOf(report),
              (Lines{"section regions () skipped older section", "template b () skipped no display name",
                     "template a (A) skipped older built-in", "template c (C) created "}));
    EXPECT_EQ(PlacesOf(report), (Lines{"2:1", "4:1", "5:1", "6:1"}));
}

TEST_F(ImportReport, HearsOfTheImportsOfAssets) {
    CDLPImportReport report;
    const std::string strXml = "<SAPolicy><digitalAssets><dictionary name='d' display_name='D'/>" +
                               Entity("e", " pre-defined=\"true\"") + "</digitalAssets></SAPolicy>";
    EXPECT_EQ(ImportAssets(strXml), 0);
    EXPECT_EQ(LinesOf(report), (Lines{"keyword d (D) created ", "expression e (e) created "}));
    report.Clear();
    EXPECT_EQ(LinesOf(report), Lines{});
    Names vecSkipped;
    EXPECT_EQ(CDLPDigitalAssetsParser().ImportKeyword(L"", OS::WideText(strXml), vecSkipped), 0);
    EXPECT_EQ(CDLPDigitalAssetsParser().ImportExpression(
                  L"",
                  OS::WideText("<SAPolicy><digitalAssets>" + Entity("e", " pre-defined=\"false\"") +
                               "</digitalAssets></SAPolicy>"),
                  vecSkipped),
              0);
    EXPECT_EQ(LinesOf(report), (Lines{"keyword d (D) unchanged ", "expression e (e) skipped built in"}));
}

TEST_F(ImportReport, TheLastOneHearsAlone) {
    const CDLPImportReport outer;
    {
        const CDLPImportReport inner;
        EXPECT_EQ(Import(Policy(Template("a"))), 0);
        EXPECT_EQ(inner.GetItems().size(), 1U);
    }
    EXPECT_EQ(outer.GetItems().size(), 0U);
    EXPECT_EQ(Import(Policy(Template("b"))), 0);
    EXPECT_EQ(LinesOf(outer), Lines{"template b (b shown) created "});
}

TEST_F(ImportReport, HearsNothingOfOtherThreads) {
    const CDLPImportReport report;
    std::thread([this] { EXPECT_EQ(Import(Policy(Template("a"))), 0); }).join();
    EXPECT_EQ(report.GetItems().size(), 0U);
}

TEST_F(ImportReport, ChangesNothingOfWhatAnImportAnswersStoresAndLogs) {
    const CLogRecorder log;
    const int iResult = Import(Everything());
    const Lines vecLines = log.Lines();
    const std::string strDump = DumpStore(CSettingsStore::Current());
    CSettingsStore::Open(TemplateStore::MEMORY);
    const Names vecImported = std::exchange(m_vecImported, {});
    const Names vecSkipped = std::exchange(m_vecSkipped, {});
    const Names vecAssets = std::exchange(m_vecAssets, {});
    const CLogRecorder second;
    const CDLPImportReport report;
    EXPECT_EQ(Import(Everything()), iResult);
    EXPECT_EQ(second.Lines(), vecLines);
    EXPECT_EQ(DumpStore(CSettingsStore::Current()), strDump);
    EXPECT_EQ(m_vecImported, vecImported);
    EXPECT_EQ(m_vecSkipped, vecSkipped);
    EXPECT_EQ(m_vecAssets, vecAssets);
}

TEST_F(ImportReport, WhatItTellsToBeTakenIsStoredWhereverTheStoreFails) {
    CStoreFaults faults;
    bool bReached = true;
    for (std::size_t i = 1; bReached; ++i) {
        CSettingsStore::Open(TemplateStore::MEMORY);
        CDLPImportReport report;
        faults.FailAt(i);
        Import(Everything());
        bReached = faults.IsReached();
        const std::string strOperation = bReached ? faults.GetOperations()[i - 1] : "";
        faults.CountOnly();
        EXPECT_EQ(report.HasStoreFailed(), bReached && strOperation != "Rollback") << i << ' ' << strOperation;
        EXPECT_EQ(report.GetStoreFailure(), report.HasStoreFailed() ? STORE_FAULT : L"") << i << ' ' << strOperation;
        std::size_t iTaken = 0;
        for (const SItem& item : report.GetItems()) {
            iTaken += IsTaken(item) ? 1 : 0;
        }
        std::size_t iStored = 0;
        for (const ESettingsKind eKind : {ESettingsKind::EXPRESSION, ESettingsKind::KEYWORD, ESettingsKind::TEMPLATE}) {
            iStored += CSettingsStore::Current().Count(eKind);
        }
        EXPECT_EQ(iTaken, iStored) << i << ' ' << strOperation;
    }
}

TEST_F(ImportReport, AnImportThatThrowsTellsOfNothing) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    const CDLPImportReport report;
    faults.CountOnly();
    ASSERT_EQ(Import(Policy(Template("a"))), 0);
    ASSERT_EQ(report.GetItems().size(), 1U);
    faults.FailAt(faults.GetCount() - 1, CStoreFaults::MemoryFault);
    EXPECT_THROW(Import(Policy(Template("b"))), std::bad_alloc);
    EXPECT_EQ(report.GetItems().size(), 1U);
}
