#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "platform/store/CSettingsStore.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"
#include "tests/support/ExceptionText.h"
#include "tests/support/FaultStore.h"
#include "tests/support/StoreDump.h"
#include "tests/support/StoreMakes.h"

namespace {

using Template = CCfgSettingDLPFilterTemplate;
using TemplateMgr = CCfgSettingDLPFilterTemplateMgr;
using Names = std::vector<OS::x_wstring>;

boost::shared_ptr<Template> MakeTemplate(const std::wstring& strInstanceName, const std::wstring& strDisplayName = L"",
                                         const std::wstring& strElement = L"") {
    auto pTemplate = boost::make_shared<Template>(strInstanceName);
    pTemplate->SetUniqueName(L"", strDisplayName);
    pTemplate->SetElement(strElement);
    return pTemplate;
}

OS::x_wstring DisplayName(const Template& record) {
    OS::x_wstring strName;
    record.GetNameW(strName);
    return strName;
}

OS::x_wstring Subject(const Template& record) {
    OS::x_wstring strSubject;
    record.GetSubjectID().GetSubjectName(strSubject);
    return strSubject;
}

class TemplateRecord : public testing::TestWithParam<SStoreMake> {
  protected:
    void SetUp() override { CSettingsStore::Open(GetParam().fnUrl(m_folder)); }
    void TearDown() override { CSettingsStore::Close(); }
    static std::string Dump() { return DumpStore(CSettingsStore::Current()); }

    TemplateMgr& m_manager = *TemplateMgr::Instance();
    CTempDir m_folder;
};
TEST_ON_ALL_STORES(TemplateRecord);

TEST_P(TemplateRecord, EveryFieldIsReadBack) {
    Template record(SUBJECT_TEMPLATE + std::wstring(L"n"));
    record.SetUniqueName(L"scope", L"display \xE9");
    record.SetDescription(L"description");
    record.SetIsBuildIn(true);
    record.SetElement(L"<template name=\"n\"><!-- \U0001F600 --></template>");
    record.SetIndustry({L"b", L"a", L"", L"b"});
    record.SetRegion({L"two\nlines"});
    record.SaveThis();
    EXPECT_EQ(
        "templates subject=\"ORVAL_SUB_CFG_DLP_TEMPLATEn\" name=\"n\" display_name=\"display \xC3\xA9\" "
        "description=\"description\" pre_defined=1 scope=\"scope\" industries=[\"b\",\"a\",\"\",\"b\"] "
        "regions=[\"two\\nlines\"] element=\"<template name=\\\"n\\\"><!-- \xF0\x9F\x98\x80 --></template>\"\n",
        Dump());

    TemplateMgr::List lstTemplates;
    ASSERT_TRUE(m_manager.GetTemplateList(lstTemplates));
    ASSERT_EQ(1u, lstTemplates.size());
    const Template& read = **lstTemplates.begin();
    OS::x_wstring strText;
    read.GetDescription(strText);
    EXPECT_EQ(L"description", strText);
    read.GetElement(strText);
    EXPECT_EQ(L"<template name=\"n\"><!-- \U0001F600 --></template>", strText);
    EXPECT_EQ(L"display \xE9", DisplayName(read));
    EXPECT_EQ(L"ORVAL_SUB_CFG_DLP_TEMPLATEn", Subject(read));
    EXPECT_TRUE(read.IsBuiltIn());
    Names vecNames = {L"what was there before"};
    read.GetIndustry(vecNames);
    EXPECT_EQ((Names{L"b", L"a", L"", L"b"}), vecNames);
    read.GetRegion(vecNames);
    EXPECT_EQ(Names{L"two\nlines"}, vecNames);
    EXPECT_TRUE(record.Row() == read.Row());
}

TEST_P(TemplateRecord, NewRecordIsEmptyButForItsInstanceName) {
    Template(L"any").SaveThis();
    EXPECT_EQ("templates subject=\"any\"\n", Dump());
}

TEST_P(TemplateRecord, SaveReplacesTheRecordWhole) {
    const auto pTemplate = MakeTemplate(L"S", L"shown", L"<template name='n'/>");
    pTemplate->SetIsBuildIn(true);
    pTemplate->SetIndustry({L"a"});
    pTemplate->SaveThis();
    Template(L"S").SaveThis();
    EXPECT_EQ("templates subject=\"S\"\n", Dump());
}

TEST_P(TemplateRecord, EmptyListAndListOfOneEmptyNameDiffer) {
    Template record(L"S");
    record.SetIndustry({L""});
    record.SetRegion({});
    record.SaveThis();
    EXPECT_EQ("templates subject=\"S\" industries=[\"\"]\n", Dump());
}

TEST_P(TemplateRecord, ElementNameIsReadFromTheElement) {
    const std::pair<const wchar_t*, const char*> CASES[] = {
        {L"<template name=\"n\"/>", "n"},
        {L"<?xml version=\"1.0\"?>\n<template name=\" two  words \"><matchRule/></template>", " two  words "},
        {L"<template name=\"&lt;&#xE9;\"/>", "<\xC3\xA9"},
        {L"<template xmlns=\"urn:x\" name=\"n\"/>", "n"},
        {L"<template/>", ""},
        {L"<template name=\"\"/>", ""},
        {L"<template display_name=\"n\"/>", ""},
        {L"<Template name=\"n\"/>", nullptr},
        {L"<t:template xmlns:t=\"urn:x\" name=\"n\"/>", nullptr},
        {L"<templates><template name=\"n\"/></templates>", nullptr},
        {L"<template name=\"n\">", nullptr},
        {L"no markup", nullptr},
        {L"", nullptr},
        {L"<!DOCTYPE template><template name=\"n\"/>", nullptr},
        {L"<template name=\"n\">\xD800</template>", nullptr},
    };
    for (const auto& [pElement, pName] : CASES) {
        const auto pTemplate = MakeTemplate(L"S", L"", L"<template name=\"before\"/>");
        ASSERT_EQ("before", pTemplate->Row().GetText(TemplateColumn::ELEMENT_NAME));
        pTemplate->SetElement(pElement);
        EXPECT_EQ(pName == nullptr, pTemplate->Row().IsNull(TemplateColumn::ELEMENT_NAME)) << pElement;
        EXPECT_EQ(pName == nullptr ? "" : pName, pTemplate->Row().GetText(TemplateColumn::ELEMENT_NAME));
    }
}

TEST_P(TemplateRecord, MarkupCarriesItsNameWithIt) {
    Template record(L"S");
    record.SetElement(L"<template name=\"before\"/>");
    record.SetElementMarkup("<template name=\"n&amp;\"/>", "n&");
    record.SaveThis();
    EXPECT_EQ("templates subject=\"S\" name=\"n&\" element=\"<template name=\\\"n&amp;\\\"/>\"\n", Dump());
    OS::x_wstring strElement;
    record.GetElement(strElement);
    EXPECT_EQ(L"<template name=\"n&amp;\"/>", strElement);
}

TEST_P(TemplateRecord, TextsThatNoStoreKeepsAreRefusedWhenSaved) {
    Template record(L"S");
    record.SetRegion({L"good", OS::x_wstring(1, wchar_t{0xDC00})});
    EXPECT_EQ("record \"S\" cannot be saved: regions, byte 0: no Unicode character",
              ExceptionText([&] { record.SaveThis(); }));
    Names vecNames;
    record.GetRegion(vecNames);
    EXPECT_EQ(OS::x_wstring(1, wchar_t{0xDC00}), vecNames[1]);
    record.SetRegion({});
    record.SetElement(OS::x_wstring(L"<template/>\0", 12));
    EXPECT_EQ("record \"S\" cannot be saved: element, byte 11: U+0000 cannot be stored",
              ExceptionText([&] { record.SaveThis(); }));
    EXPECT_EQ("", Dump());
}

TEST_P(TemplateRecord, ListIsOfFreshCopiesInTheOrderOfInstanceNames) {
    for (const wchar_t* pSubject : {L"b", L"a", L"\U0001F600", L"\xFFFD"}) {
        MakeTemplate(pSubject, L"same")->SaveThis();
    }
    TemplateMgr::List lstTemplates;
    ASSERT_TRUE(m_manager.GetTemplateList(lstTemplates));
    std::wstring strOrder;
    for (const auto& pTemplate : lstTemplates) {
        strOrder += Subject(*pTemplate);
        pTemplate->SetUniqueName(L"", L"changed");
    }
    EXPECT_EQ(L"ab\xFFFD\U0001F600", strOrder);
    TemplateMgr::List lstAgain;
    ASSERT_TRUE(m_manager.GetTemplateList(lstAgain));
    EXPECT_EQ(L"same", DisplayName(**lstAgain.begin()));
}

TEST_P(TemplateRecord, ListIsAddedToWhatTheCallerHas) {
    MakeTemplate(L"a", L"stored")->SaveThis();
    MakeTemplate(L"b", L"stored")->SaveThis();
    const auto pMine = MakeTemplate(L"a", L"mine");
    TemplateMgr::List lstTemplates = {nullptr, pMine};
    ASSERT_TRUE(m_manager.GetTemplateList(lstTemplates));
    ASSERT_EQ(3u, lstTemplates.size());
    EXPECT_EQ(nullptr, *lstTemplates.begin());
    EXPECT_EQ(pMine, *std::next(lstTemplates.begin()));
}

TEST_P(TemplateRecord, ListIsReplacedByTheSetGiven) {
    for (const wchar_t* pSubject : {L"removed", L"kept", L"changed"}) {
        MakeTemplate(pSubject, L"old", L"<template name='old'/>")->SaveThis();
    }
    TemplateMgr::List lstTemplates;
    ASSERT_TRUE(m_manager.GetTemplateList(lstTemplates));
    lstTemplates.erase(MakeTemplate(L"removed"));
    lstTemplates.erase(MakeTemplate(L"changed"));
    lstTemplates.insert(
        {nullptr, MakeTemplate(L"changed", L"new", L"<template name=\"new\"/>"), MakeTemplate(L"added")});
    EXPECT_TRUE(m_manager.SetTemplateList(lstTemplates));
    EXPECT_EQ(
        "templates subject=\"added\"\n"
        "templates subject=\"changed\" name=\"new\" display_name=\"new\" element=\"<template name=\\\"new\\\"/>\"\n"
        "templates subject=\"kept\" name=\"old\" display_name=\"old\" element=\"<template name='old'/>\"\n",
        Dump());
    TemplateMgr::List lstNone;
    EXPECT_TRUE(m_manager.SetTemplateList(lstNone));
    EXPECT_EQ("", Dump());
}

TEST_P(TemplateRecord, SetThatCannotBeStoredChangesNothing) {
    MakeTemplate(L"kept")->SaveThis();
    const std::string strBefore = Dump();
    TemplateMgr::List lstTemplates = {MakeTemplate(L"a"), MakeTemplate(L"b", std::wstring(1, L'\0'))};
    EXPECT_FALSE(m_manager.SetTemplateList(lstTemplates));
    EXPECT_EQ(strBefore, Dump());
}

TEST_P(TemplateRecord, LookupsAreExactAndGiveTheFirstInTheListsOrder) {
    MakeTemplate(L"C", L"shown", L"<template name='e'/>")->SaveThis();
    MakeTemplate(L"B", L"shown", L"<template name='e'/>")->SaveThis();
    MakeTemplate(L"A", L"Shown", L"no element")->SaveThis();
    const struct {
        std::size_t iColumn;
        std::vector<std::string> vecValues;
        std::wstring strSubjects;
    } CASES[] = {
        {TemplateColumn::SUBJECT, {"C", "D", "C", "a"}, L"C-C-"},
        {TemplateColumn::DISPLAY_NAME, {"Shown", "shown", "", "SHOWN"}, L"AB--"},
        {TemplateColumn::ELEMENT_NAME, {"e", "", "E"}, L"B--"},
        {TemplateColumn::ELEMENT_NAME, {}, L""},
    };
    for (const auto& test : CASES) {
        std::vector<boost::shared_ptr<Template>> vecRecords(5);
        m_manager.FindBy(test.iColumn, test.vecValues, vecRecords);
        ASSERT_EQ(test.vecValues.size(), vecRecords.size());
        std::wstring strSubjects;
        for (const auto& pRecord : vecRecords) {
            strSubjects += pRecord != nullptr ? Subject(*pRecord) : L"-";
        }
        EXPECT_EQ(test.strSubjects, strSubjects);
    }
    EXPECT_EQ(3u, m_manager.Count());
}

TEST_P(TemplateRecord, StoreThatFailsIsNeverTakenForAnEmptyOne) {
    CStoreFaults faults;
    CSettingsStore::Open(GetParam().fnUrl(m_folder));
    MakeTemplate(L"kept")->SaveThis();
    const std::string strFault = "the store does not answer";
    TemplateMgr::List lstTemplates = {MakeTemplate(L"mine")};
    std::vector<boost::shared_ptr<Template>> vecRecords;
    faults.FailAt(1);
    EXPECT_FALSE(m_manager.GetTemplateList(lstTemplates));
    EXPECT_EQ(1u, lstTemplates.size());
    faults.FailAt(1);
    EXPECT_FALSE(m_manager.SetTemplateList(lstTemplates));
    faults.FailAt(1);
    EXPECT_EQ(strFault, ExceptionText([&] { m_manager.FindBy(TemplateColumn::SUBJECT, {"kept"}, vecRecords); }));
    faults.FailAt(1);
    EXPECT_EQ(strFault, ExceptionText([&] { m_manager.Count(); }));
    faults.FailAt(1);
    EXPECT_EQ(strFault, ExceptionText([] { Template(L"S").SaveThis(); }));
    EXPECT_EQ("templates subject=\"kept\"\n", Dump());
    faults.FailAt(1, CStoreFaults::MemoryFault);
    EXPECT_THROW(m_manager.GetTemplateList(lstTemplates), std::bad_alloc);
    faults.FailAt(1, CStoreFaults::MemoryFault);
    EXPECT_THROW(m_manager.SetTemplateList(lstTemplates), std::bad_alloc);
}

TEST_P(TemplateRecord, ReplacingTheListIsOneOperationOfTheStore) {
    CStoreFaults faults;
    CSettingsStore::Open(GetParam().fnUrl(m_folder));
    TemplateMgr::List lstTemplates = {MakeTemplate(L"a"), MakeTemplate(L"b")};
    faults.CountOnly();
    EXPECT_TRUE(m_manager.SetTemplateList(lstTemplates));
    EXPECT_EQ(std::vector<std::string>{"ReplaceAll"}, faults.GetOperations());
}

TEST(TemplateComparator, OrdersByInstanceNameWithNullFirst) {
    const CCfgSettingDLPFilterTemplateComp fnBefore;
    const auto pA = MakeTemplate(L"a", L"2");
    const auto pB = MakeTemplate(L"b", L"1");
    EXPECT_TRUE(fnBefore(pA, pB) && fnBefore(nullptr, pA));
    EXPECT_FALSE(fnBefore(pB, pA) || fnBefore(pA, pA) || fnBefore(pA, nullptr) || fnBefore(nullptr, nullptr));
    EXPECT_FALSE(fnBefore(pA, MakeTemplate(L"a")));
}

TEST(TemplateRecordManager, IsOne) {
    EXPECT_EQ(TemplateMgr::Instance(), TemplateMgr::Instance());
}

}  // namespace
