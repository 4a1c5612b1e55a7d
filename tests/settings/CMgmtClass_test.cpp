#include "settings/CMgmtClass.h"

#include <gtest/gtest.h>

#include "platform/store/CSettingsStore.h"
#include "settings/CCfgSettingDLPFilterExpression.h"
#include "settings/CCfgSettingDLPFilterKeyword.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"
#include "settings/CSubjectID.h"
#include "tests/support/StoreDump.h"

namespace {

TEST(MgmtClass, KeepsACopyOfTheCategory) {
    const CMgmtClass expressions(CCfgSettingDLPFilterExpression::GetCategroyName().c_str(), true);
    EXPECT_EQ(CCfgSettingDLPFilterExpression::GetCategroyName(), expressions.GetCategory());
}

TEST(MgmtClass, RegistersAnInstanceAndStoresNothing) {
    CSettingsStore::Open("memory:");
    CMgmtClass expressions(CCfgSettingDLPFilterExpression::GetCategroyName().c_str(), true);
    std::wstring strName = std::wstring(SUBJECT_EXPRESSION) + L"n";
    const CMgmtObjectBase* pInstance = expressions.CreateInstance(strName.c_str());
    strName.clear();
    ASSERT_NE(nullptr, pInstance);
    EXPECT_EQ(L"ORVAL_SUB_CFG_DLP_EXPRESSIONn", pInstance->GetInstanceName());
    EXPECT_EQ("", DumpStore(CSettingsStore::Current()));
    CSettingsStore::Close();
}

TEST(MgmtClass, RegisteringANameTwiceIsHarmless) {
    CMgmtClass expressions(L"category", true);
    const CMgmtObjectBase* pFirst = expressions.CreateInstance(L"n");
    const CMgmtObjectBase* pSecond = expressions.CreateInstance(L"n");
    EXPECT_EQ(L"n", pFirst->GetInstanceName());
    EXPECT_EQ(L"n", pSecond->GetInstanceName());
}

TEST(MgmtClass, EachKindHasACategory) {
    EXPECT_EQ(L"CFG_DLP_EXPRESSION", CCfgSettingDLPFilterExpression::GetCategroyName());
    EXPECT_EQ(L"CFG_DLP_KEYWORD", CCfgSettingDLPFilterKeyword::GetCategroyName());
    EXPECT_EQ(L"CFG_DLP_TEMPLATE", CCfgSettingDLPFilterTemplate::GetCategroyName());
}

TEST(SubjectID, TextIsTheInstanceName) {
    const CSubjectID subject(L"ORVAL_SUB_CFG_DLP_TEMPLATE \xE9");
    const CSubjectID copy = subject;
    OS::x_wstring strName = L"before";
    copy.GetSubjectName(strName);
    EXPECT_EQ(L"ORVAL_SUB_CFG_DLP_TEMPLATE \xE9", strName);
}

TEST(SubjectID, KindsHaveTheirPrefixes) {
    EXPECT_STREQ(L"ORVAL_SUB_CFG_DLP_EXPRESSION", SUBJECT_EXPRESSION);
    EXPECT_STREQ(L"ORVAL_SUB_CFG_DLP_KEYWORD", SUBJECT_KEYWORD);
    EXPECT_STREQ(L"ORVAL_SUB_CFG_DLP_TEMPLATE", SUBJECT_TEMPLATE);
}

}  // namespace
