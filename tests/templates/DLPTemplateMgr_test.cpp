#include "templates/DLPTemplateMgr.h"

#include <gtest/gtest.h>

#include "platform/common/CException.h"
#include "tests/support/ExceptionText.h"
#include "tests/support/FaultStore.h"
#include "tests/support/LogRecorder.h"
#include "tests/templates/TemplateStore.h"

namespace {

using Lines = std::vector<std::string>;

const Lines UNREADABLE = {"0x1003 DLPTemplateMgr.cpp Fail to call GetTemplateList",
                          "0x1003 DLPTemplateMgr.cpp Unable to get tempate list."};

class TemplateMgr : public testing::Test {
  protected:
    void SetUp() override { CSettingsStore::Open(TemplateStore::MEMORY); }

    /** @return the display name of what is found; "none", and pFound as it was, otherwise */
    std::string Find(int iSearchField, const OS::x_wstring& strValue) {
        const CTemplateMgr::Record pBefore(new CCfgSettingDLPFilterTemplate(L"before"));
        CTemplateMgr::Record pFound = pBefore;
        if (!m_manager.FindTemplate(iSearchField, strValue, pFound)) {
            EXPECT_EQ(pFound, pBefore);
            return "none";
        }
        return pFound->Row().GetText(TemplateColumn::DISPLAY_NAME);
    }

    CTemplateMgr::Record Record(const wchar_t* pSubject) {
        return CTemplateMgr::Record(new CCfgSettingDLPFilterTemplate(pSubject));
    }

    CTemplateMgr m_manager{L"scope"};
};

/** @return the lines with the pointer's number cut off */
Lines WithoutPointer(Lines vecLines) {
    for (std::string& strLine : vecLines) {
        const std::size_t iNumber = strLine.find("pTemplate = ");
        strLine.resize(iNumber == std::string::npos ? strLine.size() : iNumber + 12);
    }
    return vecLines;
}

}  // namespace

TEST_F(TemplateMgr, ListIsRead) {
    TemplateStore::AddTemplate({"B", "b"});
    TemplateStore::AddTemplate({"A", "a"});
    CLogRecorder log;
    CTemplateMgr::List lstTemplates;
    EXPECT_TRUE(m_manager.GetTemplateList(lstTemplates));
    EXPECT_EQ(lstTemplates.size(), 2U);
    EXPECT_EQ((*lstTemplates.begin())->Row().GetText(TemplateColumn::DISPLAY_NAME), "a");
    EXPECT_EQ(log.Lines(), Lines{"0x102 DLPTemplateMgr.cpp CTemplateMgr::GetTemplateList successfully"});
}

TEST_F(TemplateMgr, UnreadableListIsLogged) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    faults.FailAt(1);
    CLogRecorder log;
    CTemplateMgr::List lstTemplates;
    EXPECT_FALSE(m_manager.GetTemplateList(lstTemplates));
    EXPECT_EQ(log.Lines(), Lines{"0x1003 DLPTemplateMgr.cpp Fail to call GetTemplateList"});
}

TEST_F(TemplateMgr, SaveReplacesTheWholeList) {
    TemplateStore::AddTemplate({"A", "a"});
    CTemplateMgr::List lstTemplates = {Record(L"new"), nullptr};
    CLogRecorder log;
    EXPECT_TRUE(m_manager.SaveSetting(lstTemplates));
    EXPECT_EQ(TemplateStore::Dump(), "templates subject=\"new\"\n");
    EXPECT_EQ(log.Lines(), (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::SaveSetting, vecTemplateList.size() = 2",
                                  "0x110 DLPTemplateMgr.cpp CTemplateMgr::SaveSetting successfully"}));
}

TEST_F(TemplateMgr, SavingNothingStillEmptiesTheStore) {
    TemplateStore::AddTemplate({"A", "a"});
    CTemplateMgr::List lstTemplates;
    CLogRecorder log;
    EXPECT_TRUE(m_manager.SaveSetting(lstTemplates));
    EXPECT_EQ(TemplateStore::Dump(), "");
    EXPECT_EQ(log.Lines(), (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::SaveSetting, vecTemplateList.size() = 0",
                                  "0x110 DLPTemplateMgr.cpp CTemplateMgr::SaveSetting successfully"}));
}

TEST_F(TemplateMgr, SaveThatFailsIsLogged) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    faults.FailAt(1);
    CTemplateMgr::List lstTemplates;
    CLogRecorder log;
    EXPECT_FALSE(m_manager.SaveSetting(lstTemplates));
    EXPECT_EQ(log.Lines(), (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::SaveSetting, vecTemplateList.size() = 0",
                                  "0x1003 DLPTemplateMgr.cpp Fail to call SetTemplateList."}));
}

TEST_F(TemplateMgr, FindComparesTheFieldExactly) {
    TemplateStore::AddTemplate({"Inner", "Shown"});
    EXPECT_EQ(Find(CTemplateMgr::SEARCH_SUBJECT, L"ORVAL_SUB_CFG_DLP_TEMPLATEInner"), "Shown");
    EXPECT_EQ(Find(CTemplateMgr::SEARCH_NAME, L"Shown"), "Shown");
    EXPECT_EQ(Find(CTemplateMgr::SEARCH_ELEMENT_NAME, L"Inner"), "Shown");
    for (const wchar_t* pValue : {L"inner", L"Inner ", L" Inner", L"Shown", L"Inne", L""}) {
        EXPECT_EQ(Find(CTemplateMgr::SEARCH_ELEMENT_NAME, pValue), "none");
    }
    EXPECT_EQ(Find(CTemplateMgr::SEARCH_NAME, L"shown"), "none");
    EXPECT_EQ(Find(CTemplateMgr::SEARCH_SUBJECT, L"Inner"), "none");
}

TEST_F(TemplateMgr, FindTakesTheFirstInTheListsOrder) {
    TemplateStore::AddTemplate({"Same", "Shown", "", false, {}, {}, "", "b"});
    TemplateStore::AddTemplate({"Same", "Shown", "", false, {}, {}, "", "a"});
    for (const auto& [iField, pValue] :
         {std::pair(CTemplateMgr::SEARCH_NAME, L"Shown"), std::pair(CTemplateMgr::SEARCH_ELEMENT_NAME, L"Same")}) {
        CTemplateMgr::Record pFound;
        ASSERT_TRUE(m_manager.FindTemplate(iField, pValue, pFound));
        EXPECT_EQ(pFound->Row().GetSubject(), "ORVAL_SUB_CFG_DLP_TEMPLATEa");
    }
}

TEST_F(TemplateMgr, FindPassesOverElementsThatAreNoTemplate) {
    TemplateStore::AddElement("1", "");
    TemplateStore::AddElement("2", "<template name=\"x\"");
    TemplateStore::AddElement("3", "<other name=\"x\"/>");
    TemplateStore::AddElement("4", "<a><template name=\"x\"/></a>");
    EXPECT_EQ(Find(CTemplateMgr::SEARCH_ELEMENT_NAME, L"x"), "none");
    EXPECT_EQ(Find(CTemplateMgr::SEARCH_ELEMENT_NAME, L""), "none");
}

TEST_F(TemplateMgr, ElementWithoutNameMatchesTheEmptyName) {
    TemplateStore::AddElement("1", "<template display_name=\"x\"/>");
    CTemplateMgr::Record pFound;
    ASSERT_TRUE(m_manager.FindTemplate(CTemplateMgr::SEARCH_ELEMENT_NAME, L"", pFound));
    EXPECT_EQ(pFound->Row().GetSubject(), "ORVAL_SUB_CFG_DLP_TEMPLATE1");
}

TEST_F(TemplateMgr, FindLogsTheWalk) {
    TemplateStore::AddTemplate({"A", "a"});
    CLogRecorder log;
    Find(CTemplateMgr::SEARCH_ELEMENT_NAME, L"A");
    EXPECT_EQ(log.Lines(),
              (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::FindTemplate, iSearchField = 2, strFieldValue = A",
                     "0x102 DLPTemplateMgr.cpp CTemplateMgr::GetTemplateList successfully",
                     "0x111 DLPTemplateMgr.cpp CTemplateMgr::FindTemplate"}));
    log.Clear();
    Find(CTemplateMgr::SEARCH_SUBJECT, L"A");
    EXPECT_EQ(log.Lines(),
              (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::FindTemplate, iSearchField = 0, strFieldValue = A",
                     "0x102 DLPTemplateMgr.cpp CTemplateMgr::GetTemplateList successfully",
                     "0x111 DLPTemplateMgr.cpp Unable to find the template"}));
}

TEST_F(TemplateMgr, FindByAnUnknownFieldReadsTheListAndFindsNothing) {
    TemplateStore::AddTemplate({"A", "A"});
    for (const int iField : {3, 100, -1}) {
        CLogRecorder log;
        EXPECT_EQ(Find(iField, L"A"), "none");
        EXPECT_EQ(log.Lines(), (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::FindTemplate, iSearchField = " +
                                          std::to_string(iField) + ", strFieldValue = A",
                                      "0x102 DLPTemplateMgr.cpp CTemplateMgr::GetTemplateList successfully",
                                      "0x111 DLPTemplateMgr.cpp Unable to find the template"}));
    }
}

TEST_F(TemplateMgr, FindInAnEmptyStoreFindsNothing) {
    CLogRecorder log;
    EXPECT_EQ(Find(CTemplateMgr::SEARCH_ELEMENT_NAME, L"A"), "none");
    EXPECT_EQ(log.Lines(),
              (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::FindTemplate, iSearchField = 2, strFieldValue = A",
                     "0x102 DLPTemplateMgr.cpp CTemplateMgr::GetTemplateList successfully",
                     "0x111 DLPTemplateMgr.cpp Unable to find the template"}));
}

TEST_F(TemplateMgr, FindByTextThatNoStoreKeepsFindsNothing) {
    TemplateStore::AddTemplate({"A", "A"});
    for (const wchar_t character : {L'\0', static_cast<wchar_t>(0xD800), static_cast<wchar_t>(-1)}) {
        for (const int iField : {0, 1, 2}) {
            CLogRecorder log;
            EXPECT_EQ(Find(iField, OS::x_wstring(L"A") + character), "none");
            EXPECT_EQ(log.Lines().back(), "0x111 DLPTemplateMgr.cpp Unable to find the template");
        }
    }
}

TEST_F(TemplateMgr, FindInAnUnreadableStoreIsLogged) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    for (const int iField : {0, 1, 2, 3}) {
        faults.FailAt(1);
        CLogRecorder log;
        EXPECT_EQ(Find(iField, L"A"), "none");
        EXPECT_EQ(log.Lines(), (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::FindTemplate, iSearchField = " +
                                          std::to_string(iField) + ", strFieldValue = A",
                                      UNREADABLE[0], UNREADABLE[1]}));
    }
    faults.FailAt(1);
    EXPECT_EQ(ExceptionText([&] { m_manager.FindStored(CTemplateMgr::SEARCH_ELEMENT_NAME, "A"); }),
              OS::Utf8Lenient(STORE_FAULT));
}

TEST_F(TemplateMgr, FoundRecordIsACopy) {
    TemplateStore::AddTemplate({"A", "a"});
    CTemplateMgr::Record pFound;
    ASSERT_TRUE(m_manager.FindTemplate(CTemplateMgr::SEARCH_ELEMENT_NAME, L"A", pFound));
    pFound->SetDescription(L"changed");
    CTemplateMgr::Record pAgain;
    ASSERT_TRUE(m_manager.FindTemplate(CTemplateMgr::SEARCH_ELEMENT_NAME, L"A", pAgain));
    EXPECT_EQ(pAgain->Row().GetText(TemplateColumn::DESCRIPTION), "");
}

TEST_F(TemplateMgr, EditReplacesTheRecordWhole) {
    TemplateStore::AddTemplate({"A", "a", "", true, {"Finance"}, {"Europe"}, "old"});
    TemplateStore::AddTemplate({"B", "b"});
    const CTemplateMgr::Record pNew = Record(L"ORVAL_SUB_CFG_DLP_TEMPLATEA");
    pNew->SetUniqueName(L"s", L"new");
    CLogRecorder log;
    EXPECT_TRUE(m_manager.EditTemplate(pNew));
    EXPECT_EQ(WithoutPointer(log.Lines()),
              (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::EditTemplate (pTemplate = ",
                     "0x102 DLPTemplateMgr.cpp CTemplateMgr::GetTemplateList successfully",
                     "0x102 DLPTemplateMgr.cpp isBuildin = 0",
                     "0x110 DLPTemplateMgr.cpp CTemplateMgr::SaveSetting, vecTemplateList.size() = 2",
                     "0x110 DLPTemplateMgr.cpp CTemplateMgr::SaveSetting successfully",
                     "0x111 DLPTemplateMgr.cpp CTemplateMgr::EditTemplate = 1"}));
    EXPECT_EQ(TemplateStore::Dump(),
              "templates subject=\"ORVAL_SUB_CFG_DLP_TEMPLATEA\" display_name=\"new\" scope=\"s\"\n"
              "templates subject=\"ORVAL_SUB_CFG_DLP_TEMPLATEB\" name=\"B\" display_name=\"b\" "
              "element=\"<template name=\\\"B\\\"></template>\"\n");
}

TEST_F(TemplateMgr, EditLogsTheNewRecordsFlag) {
    TemplateStore::AddTemplate({"A", "a"});
    const CTemplateMgr::Record pNew = Record(L"ORVAL_SUB_CFG_DLP_TEMPLATEA");
    pNew->SetIsBuildIn(true);
    CLogRecorder log;
    EXPECT_TRUE(m_manager.EditTemplate(pNew));
    EXPECT_EQ(log.Lines().at(2), "0x102 DLPTemplateMgr.cpp isBuildin = 1");
}

TEST_F(TemplateMgr, EditNeverAdds) {
    TemplateStore::AddTemplate({"A", "a"});
    const std::string strBefore = TemplateStore::Dump();
    CLogRecorder log;
    EXPECT_FALSE(m_manager.EditTemplate(Record(L"ORVAL_SUB_CFG_DLP_TEMPLATEB")));
    EXPECT_EQ(WithoutPointer(log.Lines()),
              (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::EditTemplate (pTemplate = ",
                     "0x102 DLPTemplateMgr.cpp CTemplateMgr::GetTemplateList successfully",
                     "0x1003 DLPTemplateMgr.cpp Unable to find the template (ORVAL_SUB_CFG_DLP_TEMPLATEB)."}));
    EXPECT_EQ(TemplateStore::Dump(), strBefore);
}

TEST_F(TemplateMgr, EditOfNothingDoesNotReadTheStore) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    faults.CountOnly();
    CLogRecorder log;
    EXPECT_FALSE(m_manager.EditTemplate(nullptr));
    EXPECT_EQ(faults.GetCount(), 0U);
    EXPECT_EQ(log.Lines(), (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::EditTemplate (pTemplate = 0",
                                  "0x1003 DLPTemplateMgr.cpp pTemplate is NULL."}));
}

TEST_F(TemplateMgr, EditOverAFailingStoreIsLoggedAndChangesNothing) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    TemplateStore::AddTemplate({"A", "a"});
    const std::string strBefore = TemplateStore::Dump();
    const Lines vecEntered = {"0x110 DLPTemplateMgr.cpp CTemplateMgr::EditTemplate (pTemplate = "};
    const Lines vecUnread = {vecEntered[0], UNREADABLE[0], UNREADABLE[1]};
    const Lines vecUnsaved = {vecEntered[0],
                              "0x102 DLPTemplateMgr.cpp CTemplateMgr::GetTemplateList successfully",
                              "0x102 DLPTemplateMgr.cpp isBuildin = 0",
                              "0x110 DLPTemplateMgr.cpp CTemplateMgr::SaveSetting, vecTemplateList.size() = 1",
                              "0x1003 DLPTemplateMgr.cpp Fail to call SetTemplateList.",
                              "0x111 DLPTemplateMgr.cpp CTemplateMgr::EditTemplate = 0"};
    const std::vector<std::pair<std::size_t, Lines>> vecCases = {{1, vecUnread}, {2, vecUnread}, {3, vecUnsaved}};
    for (const auto& [iOperation, vecLines] : vecCases) {
        faults.FailAt(iOperation);
        CLogRecorder log;
        EXPECT_FALSE(m_manager.EditTemplate(Record(L"ORVAL_SUB_CFG_DLP_TEMPLATEA")));
        EXPECT_EQ(WithoutPointer(log.Lines()), vecLines) << iOperation;
        EXPECT_EQ(TemplateStore::Dump(), strBefore);
    }
}

TEST_F(TemplateMgr, SizeIsNotCountedWhenNobodyListens) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    TemplateStore::AddTemplate({"A", "a"});
    faults.CountOnly();
    EXPECT_TRUE(m_manager.EditTemplate(Record(L"ORVAL_SUB_CFG_DLP_TEMPLATEA")));
    EXPECT_EQ(faults.GetOperations(), (Lines{"Find", "Save"}));
}

TEST_F(TemplateMgr, SizeIsCountedForTheLevelOfItsLineAlone) {
    TemplateStore::AddTemplate({"A", "a"});
    const auto LinesAt = [&](DBG::ELevel eLevel) {
        CLogRecorder log;
        DBG::SetLogFilter([eLevel](int iLevel) { return iLevel == eLevel; });
        EXPECT_TRUE(m_manager.EditTemplate(Record(L"ORVAL_SUB_CFG_DLP_TEMPLATEA")));
        return WithoutPointer(log.Lines());
    };
    EXPECT_EQ(LinesAt(DBG::LEVEL_ENTER),
              (Lines{"0x110 DLPTemplateMgr.cpp CTemplateMgr::EditTemplate (pTemplate = ",
                     "0x110 DLPTemplateMgr.cpp CTemplateMgr::SaveSetting, vecTemplateList.size() = 1",
                     "0x110 DLPTemplateMgr.cpp CTemplateMgr::SaveSetting successfully"}));
    EXPECT_EQ(LinesAt(DBG::LEVEL_LEAVE), Lines{"0x111 DLPTemplateMgr.cpp CTemplateMgr::EditTemplate = 1"});
}

TEST_F(TemplateMgr, EditRefusesTextThatNoStoreKeeps) {
    TemplateStore::AddTemplate({"A", "a"});
    const std::string strBefore = TemplateStore::Dump();
    const CTemplateMgr::Record pNew = Record(L"ORVAL_SUB_CFG_DLP_TEMPLATEA");
    pNew->SetDescription(OS::x_wstring(1, L'\0'));
    EXPECT_FALSE(m_manager.EditTemplate(pNew));
    EXPECT_EQ(TemplateStore::Dump(), strBefore);
}

TEST_F(TemplateMgr, KnownRecordIsReplacedWithTheSameLines) {
    TemplateStore::AddTemplate({"A", "a"});
    const CTemplateMgr::Record pNew = Record(L"ORVAL_SUB_CFG_DLP_TEMPLATEA");
    pNew->SetDescription(L"new");
    CLogRecorder log;
    EXPECT_TRUE(m_manager.ReplaceStored(pNew, false));
    const Lines vecUnwritten = log.Lines();
    EXPECT_EQ(TemplateStore::Dump().find("new"), std::string::npos);
    log.Clear();
    EXPECT_TRUE(m_manager.ReplaceStored(pNew, true));
    EXPECT_EQ(log.Lines(), vecUnwritten);
    EXPECT_NE(TemplateStore::Dump().find("new"), std::string::npos);
    log.Clear();
    EXPECT_TRUE(m_manager.EditTemplate(pNew));
    EXPECT_EQ(log.Lines(), vecUnwritten);
}
