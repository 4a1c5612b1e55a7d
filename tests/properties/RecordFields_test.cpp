// What a record's setters were given is what its getters give after saving: every field of every record, every
// character, the edges of numbers, flags and lists, in every make of the store.

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include <climits>
#include <functional>

#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "settings/CCfgSettingDLPFilterExpression.h"
#include "settings/CCfgSettingDLPFilterKeyword.h"
#include "settings/CCfgSettingDLPFilterTemplate.h"
#include "tests/support/Sanitized.h"
#include "tests/support/StoreMakes.h"

namespace {

using Asset = CCfgSettingDLPDigitalAsset;
using Expression = CCfgSettingDLPFilterExpression;
using Keyword = CCfgSettingDLPFilterKeyword;
using Template = CCfgSettingDLPFilterTemplate;
using Texts = std::vector<OS::x_wstring>;

constexpr std::size_t CHARACTERS_PER_TEXT = SANITIZED ? 15000 : 100000;
constexpr wchar_t STEP = SANITIZED ? 7 : 1;
const int NUMBERS[] = {0, 1, -1, INT_MAX, INT_MIN, 255, 65536};

/** Every Unicode scalar value that a store keeps, which is all but U+0000, in texts of some hundred KB. */
Texts AllTexts() {
    Texts vecTexts = {L"", L" ", L"\r\n"};
    for (wchar_t c = 1; c <= 0x10FFFF; c += STEP) {
        if (c < 0xD800 || c > 0xDFFF) {
            if (c == 1 || vecTexts.back().size() == CHARACTERS_PER_TEXT) {
                vecTexts.emplace_back();
            }
            vecTexts.back() += c;
        }
    }
    return vecTexts;
}

const Texts& TextAtEdges() {
    static const Texts s_vecTexts = AllTexts();
    return s_vecTexts;
}

std::vector<Texts> AllLists() {
    std::vector<Texts> vecLists = {{}, {L""}, {L"", L""}, {L"b", L"a", L"b"}, {L"\n"}, {L"\\n", L"n\\"}};
    for (const OS::x_wstring& strText : TextAtEdges()) {
        vecLists.push_back({strText, L"between", strText});
    }
    return vecLists;
}

OS::x_wstring TextOf(std::size_t iValue) {
    return TextAtEdges()[iValue % TextAtEdges().size()];
}
int NumberOf(std::size_t iValue) {
    return NUMBERS[iValue % std::size(NUMBERS)];
}
bool FlagOf(std::size_t iValue) {
    return iValue % 2 == 1;
}
Texts ListOf(std::size_t iValue) {
    static const std::vector<Texts> s_vecLists = AllLists();
    return s_vecLists[iValue % s_vecLists.size()];
}

/** A field: sets one of the values of its type, and tells whether it holds it. */
template <class Record>
struct SField {
    const char* pName;
    std::function<void(Record&, std::size_t)> fnSet;
    std::function<bool(const Record&, std::size_t)> fnHolds;
};

/** A field with a getter and a setter of its class, or of its base. */
template <class Record, class Owner, class Argument, class Value>
SField<Record> Field(const char* pName, void (Owner::*fnSet)(Argument), Value (Owner::*fnGet)() const,
                     Value (*fnValue)(std::size_t)) {
    return {pName, [=](Record& record, std::size_t i) { (record.*fnSet)(fnValue(i)); },
            [=](const Record& record, std::size_t i) { return (record.*fnGet)() == fnValue(i); }};
}

/** The same for a getter with an out parameter. */
template <class Record, class Owner, class Argument, class Value, class Result>
SField<Record> Field(const char* pName, void (Owner::*fnSet)(Argument), Result (Owner::*fnGet)(Value&) const,
                     Value (*fnValue)(std::size_t)) {
    return {pName, [=](Record& record, std::size_t i) { (record.*fnSet)(fnValue(i)); },
            [=](const Record& record, std::size_t i) {
                Value value;
                (record.*fnGet)(value);
                return value == fnValue(i);
            }};
}

/** The scope stands beside the display name, has no getter and is not shown by any. */
template <class Record>
SField<Record> NameAndScope(std::size_t iScopeColumn) {
    return {"display name and scope",
            [](Record& record, std::size_t i) { record.SetUniqueName(TextOf(i + 1), TextOf(i)); },
            [=](const Record& record, std::size_t i) {
                OS::x_wstring strName;
                record.GetNameW(strName);
                return strName == TextOf(i) && OS::Utf8Loose(TextOf(i + 1)) == record.Row().GetText(iScopeColumn);
            }};
}

template <class Record>
std::vector<SField<Record>> AssetFields() {
    return {NameAndScope<Record>(AssetColumn::SCOPE),
            Field<Record>("internal name", &Asset::SetInternalName, &Asset::GetInternalName, TextOf),
            Field<Record>("description", &Asset::SetDescription, &Asset::GetDescription, TextOf),
            Field<Record>("built in", &Asset::SetIsBuildIn, &Asset::IsBuiltIn, FlagOf),
            Field<Record>("modified", &Asset::SetIsModified, &Asset::IsModified, FlagOf)};
}

std::vector<SField<Expression>> Fields(const Expression&) {
    std::vector<SField<Expression>> vecFields = AssetFields<Expression>();
    const auto fnText = [&](const char* pName, auto fnSet, auto fnGet) {
        vecFields.push_back(Field<Expression>(pName, fnSet, fnGet, TextOf));
    };
    const auto fnNumber = [&](const char* pName, auto fnSet, auto fnGet) {
        vecFields.push_back(Field<Expression>(pName, fnSet, fnGet, NumberOf));
    };
    fnText("type", &Expression::SetType, &Expression::GetType);
    fnText("pattern", &Expression::SetPattern, &Expression::GetPattern);
    fnText("validator", &Expression::SetValidator, &Expression::GetValidator);
    fnText("character set", &Expression::SetAlphabetCharset, &Expression::GetAlphabetCharset);
    fnText("display format", &Expression::SetDisplayFormat, &Expression::GetDisplayFormat);
    fnText("example", &Expression::SetExample, &Expression::GetExample);
    fnNumber("shortest", &Expression::SetMinLength, &Expression::GetMinLength);
    fnNumber("longest", &Expression::SetMaxLength, &Expression::GetMaxLength);
    fnNumber("suffix", &Expression::SetSuffixLength, &Expression::GetSuffixLength);
    fnNumber("nearest left", &Expression::SetMinLeftRadius, &Expression::GetMinLeftRadius);
    fnNumber("furthest left", &Expression::SetMaxLeftRadius, &Expression::GetMaxLeftRadius);
    fnNumber("furthest right", &Expression::SetMaxRightRadius, &Expression::GetMaxRightRadius);
    vecFields.push_back(
        Field<Expression>("case", &Expression::SetIsCaseSensitive, &Expression::IsCaseSensitive, FlagOf));
    return vecFields;
}

std::vector<SField<Keyword>> Fields(const Keyword&) {
    std::vector<SField<Keyword>> vecFields = AssetFields<Keyword>();
    vecFields.push_back(Field<Keyword>("condition", &Keyword::SetCondition, &Keyword::GetCondition, TextOf));
    vecFields.push_back(Field<Keyword>("threshold", &Keyword::SetThreshold, &Keyword::GetThreshold, NumberOf));
    vecFields.push_back(Field<Keyword>("number", &Keyword::SetNumber, &Keyword::GetNumber, NumberOf));
    vecFields.push_back(Field<Keyword>("keywords", &Keyword::SetSubkeywordList, &Keyword::GetSubkeywordList, TextOf));
    return vecFields;
}

std::vector<SField<Template>> Fields(const Template&) {
    return {NameAndScope<Template>(TemplateColumn::SCOPE),
            Field<Template>("description", &Template::SetDescription, &Template::GetDescription, TextOf),
            Field<Template>("built in", &Template::SetIsBuildIn, &Template::IsBuiltIn, FlagOf),
            Field<Template>("industries", &Template::SetIndustry, &Template::GetIndustry, ListOf),
            Field<Template>("regions", &Template::SetRegion, &Template::GetRegion, ListOf),
            Field<Template>("element", &Template::SetElement, &Template::GetElement, TextOf)};
}

/** Neighbouring fields hold different values, so that none can stand in for another. */
template <class Record>
void Fill(Record& record, std::size_t iRecord) {
    std::size_t iValue = iRecord;
    for (const auto& field : Fields(record)) {
        field.fnSet(record, iValue++);
    }
}

/** @return the fields that do not hold what Fill gave them */
template <class Record>
std::vector<std::string> Lost(const Record& record, std::size_t iRecord) {
    std::vector<std::string> vecLost;
    std::size_t iValue = iRecord;
    for (const auto& field : Fields(record)) {
        if (!field.fnHolds(record, iValue++)) {
            vecLost.push_back(field.pName);
        }
    }
    return vecLost;
}

/** As many as there are values of a type, and as long as every field has met each of them. */
std::size_t Records() {
    return AllLists().size();
}

/** Texts of one length, so that the list's order is that of the numbers. */
OS::x_wstring Subject(std::size_t iRecord) {
    return L"record " + std::to_wstring(100 + iRecord);
}

template <class Record>
void SaveAll() {
    for (std::size_t i = 0; i < Records(); ++i) {
        Record record(Subject(i));
        Fill(record, i);
        EXPECT_EQ(std::vector<std::string>(), Lost(record, i)) << "before saving, record " << i;
        record.SaveThis();
    }
}

template <class List>
void ExpectAll(const List& lstRecords) {
    EXPECT_EQ(Records(), lstRecords.size());
    std::size_t iRecord = 0;
    for (const auto& pRecord : lstRecords) {
        EXPECT_EQ(std::vector<std::string>(), Lost(*pRecord, iRecord)) << "record " << iRecord;
        ++iRecord;
    }
}

class RecordFields : public testing::TestWithParam<SStoreMake> {
  protected:
    void SetUp() override { CSettingsStore::Open(GetParam().fnUrl(m_folder)); }
    void TearDown() override { CSettingsStore::Close(); }

    CTempDir m_folder;
};
TEST_ON_ALL_STORES(RecordFields);

}  // namespace

TEST_P(RecordFields, OfExpressionsAreReadBack) {
    SaveAll<Expression>();
    CCfgSettingDLPFilterExpressionMgr::List lstRecords;
    ASSERT_TRUE(CCfgSettingDLPFilterExpressionMgr::Instance()->GetExpressionList(lstRecords));
    ExpectAll(lstRecords);
    Expression record(Subject(3));
    record.GetThis();
    EXPECT_EQ(std::vector<std::string>(), Lost(record, 3));
}

TEST_P(RecordFields, OfKeywordListsAreReadBack) {
    SaveAll<Keyword>();
    CCfgSettingDLPFilterKeywordMgr::List lstRecords;
    ASSERT_TRUE(CCfgSettingDLPFilterKeywordMgr::Instance()->GetKeywordList(lstRecords));
    ExpectAll(lstRecords);
    Keyword record(Subject(3));
    record.GetThis();
    EXPECT_EQ(std::vector<std::string>(), Lost(record, 3));
}

TEST_P(RecordFields, OfTemplatesAreReadBack) {
    SaveAll<Template>();
    CCfgSettingDLPFilterTemplateMgr::List lstRecords;
    ASSERT_TRUE(CCfgSettingDLPFilterTemplateMgr::Instance()->GetTemplateList(lstRecords));
    ExpectAll(lstRecords);
    ASSERT_TRUE(CCfgSettingDLPFilterTemplateMgr::Instance()->SetTemplateList(lstRecords));
    lstRecords.clear();
    ASSERT_TRUE(CCfgSettingDLPFilterTemplateMgr::Instance()->GetTemplateList(lstRecords));
    ExpectAll(lstRecords);
}
