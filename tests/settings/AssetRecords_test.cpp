#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "settings/CCfgSettingDLPFilterExpression.h"
#include "settings/CCfgSettingDLPFilterKeyword.h"
#include "tests/support/ExceptionText.h"
#include "tests/support/FaultStore.h"
#include "tests/support/StoreDump.h"
#include "tests/support/StoreMakes.h"

namespace {

using Expression = CCfgSettingDLPFilterExpression;
using Keyword = CCfgSettingDLPFilterKeyword;
using ExpressionMgr = CCfgSettingDLPFilterExpressionMgr;
using KeywordMgr = CCfgSettingDLPFilterKeywordMgr;

OS::x_wstring ExpressionSubject(const std::wstring& strName) {
    return SUBJECT_EXPRESSION + strName;
}
OS::x_wstring KeywordSubject(const std::wstring& strName) {
    return SUBJECT_KEYWORD + strName;
}

/** What an operation with an out parameter gives. */
template <class Record, class Text>
Text Out(const Record& record, void (Record::*fnGet)(Text&) const) {
    Text strOut;
    (record.*fnGet)(strOut);
    return strOut;
}

OS::x_wstring DisplayName(const CCfgSettingDLPDigitalAsset& record) {
    return Out(record, &CCfgSettingDLPDigitalAsset::GetNameW);
}

OS::x_wstring Subject(const CSubjectID& subject) {
    return Out(subject, &CSubjectID::GetSubjectName);
}

void SaveExpression(const std::wstring& strName, const std::wstring& strDisplayName = L"") {
    Expression record(ExpressionSubject(strName));
    record.SetInternalName(strName);
    record.SetUniqueName(L"", strDisplayName);
    record.SaveThis();
}

void SaveKeyword(const std::wstring& strName) {
    Keyword record(KeywordSubject(strName));
    record.SetInternalName(strName);
    record.SaveThis();
}

class AssetRecords : public testing::TestWithParam<SStoreMake> {
  protected:
    void SetUp() override { CSettingsStore::Open(GetParam().fnUrl(m_folder)); }
    void TearDown() override { CSettingsStore::Close(); }
    static std::string Dump() { return DumpStore(CSettingsStore::Current()); }

    CTempDir m_folder;
};
TEST_ON_ALL_STORES(AssetRecords);

TEST_P(AssetRecords, NewExpressionIsEmptyButForItsInstanceName) {
    const Expression record(L"any text as it stands");
    EXPECT_EQ("expressions subject=\"any text as it stands\"", DumpRow(record.Row()));
    EXPECT_EQ(L"any text as it stands", Subject(record.GetSubjectID()));
}

TEST_P(AssetRecords, EveryFieldOfAnExpressionIsReadBack) {
    Expression record(ExpressionSubject(L"n"));
    record.SetInternalName(L"n");
    record.SetUniqueName(L"scope", L"display \xE9");
    record.SetDescription(L"description");
    record.SetIsBuildIn(true);
    record.SetIsModified(true);
    record.SetType(L"Type 1");
    record.SetPattern(L"pattern");
    record.SetValidator(L"validator");
    record.SetIsCaseSensitive(true);
    record.SetMinLength(1);
    record.SetMaxLength(2);
    record.SetSuffixLength(3);
    record.SetMinLeftRadius(-4);
    record.SetMaxLeftRadius(INT32_MAX);
    record.SetMaxRightRadius(INT32_MIN);
    record.SetAlphabetCharset(L"charset");
    record.SetDisplayFormat(L"format");
    record.SetExample(L"example");
    record.SaveThis();
    EXPECT_EQ(
        "expressions subject=\"ORVAL_SUB_CFG_DLP_EXPRESSIONn\" name=\"n\" display_name=\"display \xC3\xA9\" "
        "description=\"description\" pre_defined=1 modified=1 scope=\"scope\" type=\"Type 1\" "
        "validator=\"validator\" case_sensitive=1 min_length=1 max_length=2 suffix_length=3 min_left_radius=-4 "
        "max_left_radius=2147483647 max_right_radius=-2147483648 pattern=\"pattern\" "
        "alphabet_charset=\"charset\" display_format=\"format\" example=\"example\"\n",
        Dump());

    Expression read(ExpressionSubject(L"n"));
    read.GetThis();
    EXPECT_EQ(L"n", Out<CCfgSettingDLPDigitalAsset>(read, &Expression::GetInternalName));
    EXPECT_EQ("display \xC3\xA9", Out<CCfgSettingDLPDigitalAsset>(read, &Expression::GetNameA));
    EXPECT_EQ(L"display \xE9", DisplayName(read));
    EXPECT_EQ(L"description", Out<CCfgSettingDLPDigitalAsset>(read, &Expression::GetDescription));
    EXPECT_TRUE(read.IsBuiltIn() && read.IsModified() && read.IsCaseSensitive());
    EXPECT_EQ(L"Type 1", read.GetType());
    EXPECT_EQ(L"pattern", read.GetPattern());
    EXPECT_EQ(L"validator", read.GetValidator());
    EXPECT_EQ(1, read.GetMinLength());
    EXPECT_EQ(2, read.GetMaxLength());
    EXPECT_EQ(3, read.GetSuffixLength());
    EXPECT_EQ(-4, read.GetMinLeftRadius());
    EXPECT_EQ(INT32_MAX, read.GetMaxLeftRadius());
    EXPECT_EQ(INT32_MIN, read.GetMaxRightRadius());
    EXPECT_EQ(L"charset", read.GetAlphabetCharset());
    EXPECT_EQ(L"format", read.GetDisplayFormat());
    EXPECT_EQ(L"example", read.GetExample());
}

TEST_P(AssetRecords, EveryFieldOfAKeywordListIsReadBack) {
    Keyword record(KeywordSubject(L"n"));
    record.SetInternalName(L"n");
    record.SetUniqueName(L"scope", L"display");
    record.SetDescription(L"description");
    record.SetIsBuildIn(true);
    record.SetIsModified(true);
    record.SetCondition(L"Distance");
    record.SetThreshold(5);
    record.SetNumber(-6);
    record.SetSubkeywordList(L"<dictionary/>");
    record.SaveThis();
    EXPECT_EQ(
        "keyword_lists subject=\"ORVAL_SUB_CFG_DLP_KEYWORDn\" name=\"n\" display_name=\"display\" "
        "description=\"description\" pre_defined=1 modified=1 scope=\"scope\" condition=\"Distance\" threshold=5 "
        "number=-6 text=\"<dictionary/>\"\n",
        Dump());

    Keyword read(KeywordSubject(L"n"));
    read.GetThis();
    EXPECT_EQ(L"Distance", read.GetCondition());
    EXPECT_EQ(5, read.GetThreshold());
    EXPECT_EQ(-6, read.GetNumber());
    OS::x_wstring strText = L"before";
    EXPECT_TRUE(read.GetSubkeywordList(strText));
    EXPECT_EQ(L"<dictionary/>", strText);
    EXPECT_FALSE(Keyword(L"other").GetSubkeywordList(strText));
    EXPECT_EQ(L"", strText);
}

TEST_P(AssetRecords, SetNameLeavesTheScope) {
    Keyword record(L"S");
    record.SetUniqueName(L"scope", L"old");
    record.SetName(L"new");
    EXPECT_EQ("keyword_lists subject=\"S\" display_name=\"new\" scope=\"scope\"", DumpRow(record.Row()));
    record.SetUniqueName(L"", L"new");
    EXPECT_EQ("keyword_lists subject=\"S\" display_name=\"new\"", DumpRow(record.Row()));
}

TEST_P(AssetRecords, FlagsCanBeTakenBack) {
    Expression record(L"S");
    record.SetIsBuildIn(true);
    record.SetIsModified(true);
    record.SetIsCaseSensitive(true);
    record.SetIsBuildIn(false);
    record.SetIsModified(false);
    record.SetIsCaseSensitive(false);
    EXPECT_FALSE(record.IsBuiltIn() || record.IsModified() || record.IsCaseSensitive());
}

TEST_P(AssetRecords, UnknownRecordIsNotFound) {
    SaveExpression(L"n", L"shown");
    Expression record(ExpressionSubject(L"N"));
    record.SetPattern(L"kept");
    try {
        record.GetThis();
        FAIL() << "it is not stored";
    } catch (const OS::CException& error) {
        EXPECT_STREQ("record not found: ORVAL_SUB_CFG_DLP_EXPRESSIONN", error.what());
        EXPECT_EQ(0, error.GetErrorCode());
        EXPECT_EQ(0, error.GetErrorLine());
    }
    EXPECT_EQ(L"kept", record.GetPattern());
    Keyword other(ExpressionSubject(L"n"));
    EXPECT_EQ("record not found: ORVAL_SUB_CFG_DLP_EXPRESSIONn", ExceptionText([&] { other.GetThis(); }));
    Keyword damaged(OS::x_wstring(1, wchar_t{0xD800}));
    EXPECT_EQ("record not found: \xEF\xBF\xBD", ExceptionText([&] { damaged.GetThis(); }));
}

TEST_P(AssetRecords, SettersChangeTheCopyAlone) {
    SaveExpression(L"n", L"stored");
    Expression record(ExpressionSubject(L"n"));
    record.GetThis();
    record.SetName(L"changed");
    ExpressionMgr::List lstFirst, lstSecond;
    ASSERT_TRUE(ExpressionMgr::Instance()->GetExpressionList(lstFirst));
    (*lstFirst.begin())->SetName(L"changed too");
    ASSERT_TRUE(ExpressionMgr::Instance()->GetExpressionList(lstSecond));
    EXPECT_EQ(L"stored", DisplayName(**lstSecond.begin()));
    record.GetThis();
    EXPECT_EQ(L"stored", DisplayName(record));
}

TEST_P(AssetRecords, CopiesAreApart) {
    Expression record(L"S");
    record.SetPattern(L"p");
    Expression copy(record);
    copy.SetPattern(L"q");
    EXPECT_EQ(L"p", record.GetPattern());
    copy = record;
    EXPECT_EQ(L"p", copy.GetPattern());
}

TEST_P(AssetRecords, TextsThatNoStoreKeepsAreRefusedWhenSaved) {
    SaveExpression(L"n", L"stored");
    const std::string strBefore = Dump();
    const std::pair<OS::x_wstring, std::string> CASES[] = {
        {OS::x_wstring(1, L'\0'), "U+0000 cannot be stored"},
        {OS::x_wstring(1, wchar_t{0xDFFF}), "no Unicode character"},
        {OS::x_wstring(1, wchar_t{0x110000}), "no Unicode character"},
        {OS::x_wstring(1, wchar_t{-1}), "no Unicode character"},
    };
    for (const auto& [strText, strWhy] : CASES) {
        Expression record(ExpressionSubject(L"n"));
        record.SetExample(L"x" + strText);
        EXPECT_EQ(L"x" + strText, record.GetExample());
        EXPECT_EQ("record \"ORVAL_SUB_CFG_DLP_EXPRESSIONn\" cannot be saved: example, byte 1: " + strWhy,
                  ExceptionText([&] { record.SaveThis(); }));
    }
    EXPECT_EQ(strBefore, Dump());
}

TEST_P(AssetRecords, ListsAreInTheOrderOfInstanceNames) {
    for (const wchar_t* pName : {L"b", L"\xE9", L"a", L"\U0001F600", L"\xFFFD", L"B", L""}) {
        SaveExpression(pName, L"same");
        SaveKeyword(pName);
    }
    const std::vector<OS::x_wstring> vecOrdered = {L"", L"B", L"a", L"b", L"\xE9", L"\xFFFD", L"\U0001F600"};
    std::vector<OS::x_wstring> vecNames = {L"what was there before"};
    ExpressionMgr::Instance()->GetAllInternalName(vecNames);
    EXPECT_EQ(vecOrdered, vecNames);
    KeywordMgr::Instance()->GetAllInternalName(vecNames);
    EXPECT_EQ(vecOrdered, vecNames);

    ExpressionMgr::List lstExpressions;
    ASSERT_TRUE(ExpressionMgr::Instance()->GetExpressionList(lstExpressions));
    vecNames.clear();
    for (const auto& pRecord : lstExpressions) {
        vecNames.push_back(Out<CCfgSettingDLPDigitalAsset>(*pRecord, &Expression::GetInternalName));
    }
    EXPECT_EQ(vecOrdered, vecNames);
    KeywordMgr::List lstKeywords;
    ASSERT_TRUE(KeywordMgr::Instance()->GetKeywordList(lstKeywords));
    EXPECT_EQ(KeywordSubject(L"\U0001F600"), Subject((*lstKeywords.rbegin())->GetSubjectID()));
    EXPECT_EQ(vecOrdered.size(), lstKeywords.size());
}

TEST_P(AssetRecords, ListsAreAddedToWhatTheCallerHas) {
    SaveExpression(L"n", L"stored");
    auto pMine = boost::make_shared<Expression>(ExpressionSubject(L"n"));
    auto pOther = boost::make_shared<Expression>(ExpressionSubject(L"o"));
    ExpressionMgr::List lstExpressions = {pMine, pOther};
    ASSERT_TRUE(ExpressionMgr::Instance()->GetExpressionList(lstExpressions));
    EXPECT_EQ((ExpressionMgr::List{pMine, pOther}), lstExpressions);
    KeywordMgr::List lstKeywords;
    EXPECT_TRUE(KeywordMgr::Instance()->GetKeywordList(lstKeywords));
    EXPECT_TRUE(lstKeywords.empty());
}

TEST_P(AssetRecords, LookupsAreExact) {
    SaveExpression(L"n \xE9", L"first");
    SaveKeyword(L"k'\"");
    EXPECT_EQ(L"first", DisplayName(*ExpressionMgr::Instance()->FindByInternalName("n \xC3\xA9")));
    for (const char* pName : {"", "N \xC3\xA9", "n \xC3\xA9 ", "first", "k'\"", "\xFF"}) {
        EXPECT_EQ(nullptr, ExpressionMgr::Instance()->FindByInternalName(pName)) << pName;
    }
    EXPECT_EQ(KeywordSubject(L"k'\""), Subject(KeywordMgr::Instance()->FindByInternalName("k'\"")->GetSubjectID()));
    EXPECT_EQ(nullptr, KeywordMgr::Instance()->FindByInternalName("k"));
    std::vector<bool> vecHeld;
    ExpressionMgr::Instance()->FindHeldNames({"k'\"", "n \xC3\xA9"}, vecHeld);
    EXPECT_EQ((std::vector<bool>{false, true}), vecHeld);
    KeywordMgr::Instance()->FindHeldNames({"k'\"", "n \xC3\xA9"}, vecHeld);
    EXPECT_EQ((std::vector<bool>{true, false}), vecHeld);
}

TEST_P(AssetRecords, LookupGivesTheFirstOfOneName) {
    for (const wchar_t* pSubject : {L"Z", L"Y"}) {
        Expression record(pSubject);
        record.SetInternalName(L"same");
        record.SaveThis();
    }
    EXPECT_EQ(L"Y", Subject(ExpressionMgr::Instance()->FindByInternalName("same")->GetSubjectID()));
}

TEST_P(AssetRecords, StoreThatFailsIsNeverTakenForAnEmptyOne) {
    SaveExpression(L"n");
    SaveKeyword(L"n");
    CStoreFaults faults;
    const std::string strFault = "the store does not answer";
    std::vector<OS::x_wstring> vecNames = {L"kept"};
    std::vector<bool> vecHeld;
    ExpressionMgr::List lstExpressions;
    KeywordMgr::List lstKeywords;
    CSettingsStore::Open(GetParam().fnUrl(m_folder));
    const auto fnFail = [&](auto fnOperation) {
        faults.FailAt(1);
        return ExceptionText(fnOperation);
    };
    EXPECT_EQ("", fnFail([&] { EXPECT_FALSE(ExpressionMgr::Instance()->GetExpressionList(lstExpressions)); }));
    EXPECT_EQ("", fnFail([&] { EXPECT_FALSE(KeywordMgr::Instance()->GetKeywordList(lstKeywords)); }));
    EXPECT_EQ(strFault, fnFail([&] { ExpressionMgr::Instance()->GetAllInternalName(vecNames); }));
    EXPECT_EQ(strFault, fnFail([&] { KeywordMgr::Instance()->GetAllInternalName(vecNames); }));
    EXPECT_EQ(std::vector<OS::x_wstring>{L"kept"}, vecNames);
    EXPECT_EQ(strFault, fnFail([] { ExpressionMgr::Instance()->FindByInternalName("n"); }));
    EXPECT_EQ(strFault, fnFail([] { KeywordMgr::Instance()->FindByInternalName("n"); }));
    EXPECT_EQ(strFault, fnFail([&] { ExpressionMgr::Instance()->FindHeldNames({"n"}, vecHeld); }));
    EXPECT_EQ(strFault, fnFail([&] { KeywordMgr::Instance()->FindHeldNames({"n"}, vecHeld); }));
    EXPECT_EQ(strFault, fnFail([] { Expression(L"S").GetThis(); }));
    EXPECT_EQ(strFault, fnFail([] { Keyword(L"S").SaveThis(); }));
    faults.FailAt(1, CStoreFaults::MemoryFault);
    EXPECT_THROW(ExpressionMgr::Instance()->GetExpressionList(lstExpressions), std::bad_alloc);
}

TEST_P(AssetRecords, StoreThatCannotBeOpenedIsAFailureLikeAnyOther) {
    CSettingsStore::Close();
    ::setenv("DLP_STORE", "nothing:", 1);
    ExpressionMgr::List lstExpressions;
    EXPECT_FALSE(ExpressionMgr::Instance()->GetExpressionList(lstExpressions));
    EXPECT_NE("", ExceptionText([] { Expression(L"S").SaveThis(); }));
}

TEST(AssetComparators, OrderByInstanceNameWithNullFirst) {
    const CCfgSettingDLPFilterExpressionComp fnExpressions;
    const CCfgSettingDLPFilterKeywordComp fnKeywords;
    const auto pA = boost::make_shared<Expression>(L"a");
    const auto pB = boost::make_shared<Expression>(L"b");
    pA->SetName(L"2");
    pB->SetName(L"1");
    EXPECT_TRUE(fnExpressions(pA, pB));
    EXPECT_FALSE(fnExpressions(pB, pA) || fnExpressions(pA, pA));
    EXPECT_FALSE(fnExpressions(pA, boost::make_shared<Expression>(L"a")));
    EXPECT_TRUE(fnExpressions(nullptr, pA));
    EXPECT_FALSE(fnExpressions(pA, nullptr) || fnExpressions(nullptr, nullptr));
    const auto pHigh = boost::make_shared<Keyword>(OS::x_wstring(1, wchar_t{0x10FFFF}));
    const auto pLow = boost::make_shared<Keyword>(OS::x_wstring(1, wchar_t{0xFFFF}));
    EXPECT_TRUE(fnKeywords(pLow, pHigh) && fnKeywords(nullptr, pLow));
    EXPECT_FALSE(fnKeywords(pHigh, pLow) || fnKeywords(pLow, nullptr));
}

/** Writes each field down. */
class CFieldNotes : public CFieldInfoCallback {
  public:
    void OnField(const OS::x_wstring& strName, const OS::x_wstring& strValue) override {
        m_strNotes += strName + L"=" + strValue + L";";
    }
    std::wstring m_strNotes;
};

TEST(AssetRecord, EnumeratesItsFieldsInTheOrderOfColumns) {
    Keyword record(L"S");
    record.SetInternalName(L"n");
    record.SetUniqueName(L"scope", L"\xE9");
    record.SetIsBuildIn(true);
    record.SetThreshold(-3);
    CFieldNotes notes;
    record.EnumerateFieldInfo(notes);
    EXPECT_EQ(
        L"subject=S;name=n;display_name=\xE9;description=;pre_defined=true;modified=false;scope=scope;condition=;"
        L"threshold=-3;number=0;text=;",
        notes.m_strNotes);
}

TEST(AssetRecord, DeleteReleasesARecord) {
    Keyword record(L"S");
    record.Delete(new Keyword(L"T"));
    record.Delete(nullptr);
}

TEST(AssetManagers, AreOneEach) {
    EXPECT_EQ(ExpressionMgr::Instance(), ExpressionMgr::Instance());
    EXPECT_EQ(KeywordMgr::Instance(), KeywordMgr::Instance());
}

}  // namespace
