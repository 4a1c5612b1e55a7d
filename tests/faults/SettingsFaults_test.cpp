#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "platform/store/CSettingsStore.h"
#include "platform/xml/FaultPoint.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"
#include "tests/support/ExceptionText.h"
#include "tests/support/StoreDump.h"

// A template record reads the name of its element from the element's text, which the XML layer may fail to do.

namespace {

using Template = CCfgSettingDLPFilterTemplate;
using TemplateMgr = CCfgSettingDLPFilterTemplateMgr;

constexpr char STORED[] = "templates subject=\"S\" name=\"old\" element=\"<template name=\\\"old\\\"/>\"\n";
constexpr char CHANGED[] = "templates subject=\"S\" name=\"new\" element=\"<template name=\\\"new\\\"/>\"\n";

class SettingsFaults : public testing::Test {
  protected:
    SettingsFaults() {
        CSettingsStore::Open("memory:");
        XmlFaults::FailAt(0);
        XmlFaults::FindNothingAt(0);
        m_pRecord->SetElement(L"<template name=\"old\"/>");
        m_pRecord->SaveThis();
        m_pRecord->SetElement(L"<template name=\"new\"/>");
    }
    ~SettingsFaults() override { CSettingsStore::Close(); }
    static std::string Dump() { return DumpStore(CSettingsStore::Current()); }

    boost::shared_ptr<Template> m_pRecord = boost::make_shared<Template>(L"S");
};

}  // namespace

TEST_F(SettingsFaults, RecordWhoseElementCannotBeReadIsNotSavedUntilItCan) {
    XmlFaults::FailAt(1);
    EXPECT_EQ("injected fault", ExceptionText([this] { m_pRecord->SaveThis(); }));
    EXPECT_EQ(STORED, Dump());
    m_pRecord->SaveThis();
    EXPECT_EQ(CHANGED, Dump());
}

TEST_F(SettingsFaults, ListWithAnElementThatCannotBeReadChangesNothing) {
    TemplateMgr::List lstTemplates = {m_pRecord};
    XmlFaults::FailAt(1);
    EXPECT_FALSE(TemplateMgr::Instance()->SetTemplateList(lstTemplates));
    EXPECT_EQ(STORED, Dump());
    EXPECT_TRUE(TemplateMgr::Instance()->SetTemplateList(lstTemplates));
    EXPECT_EQ(CHANGED, Dump());
}

TEST_F(SettingsFaults, ElementWithoutATemplateNodeHasNoName) {
    XmlFaults::FindNothingAt(1);
    m_pRecord->SaveThis();
    EXPECT_EQ("templates subject=\"S\" element=\"<template name=\\\"new\\\"/>\"\n", Dump());
}
