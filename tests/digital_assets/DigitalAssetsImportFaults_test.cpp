#include <algorithm>
#include <stdexcept>

#include "api/CDLPDigitalAssetsParser.h"
#include "digital_assets/DigitalAssets.h"
#include "tests/digital_assets/AssetFixture.h"
#include "tests/support/FaultStore.h"
#include "xml/CPolicyDocument.h"

using DigitalAssets::EImport;
using testing::ElementsAre;

namespace {

/** Two new expressions, one that must not replace a built-in one, one new list, one that must not replace. */
constexpr char DOCUMENT[] =
    "<SAPolicy><digitalAssets>"
    "<entity name='a' display_name='A'><regularExpression/></entity>"
    "<entity name='n' display_name='N' pre-defined='false'><regularExpression/></entity>"
    "<entity name='b' display_name='B'><regularExpression/></entity>"
    "<dictionary name='n' display_name='N' pre-defined='false'/>"
    "<dictionary name='k' display_name='K'/>"
    "</digitalAssets></SAPolicy>";

constexpr char EXPRESSION_FAILED[] = "Fail to import expression xml file, Error: ";
constexpr char KEYWORD_FAILED[] = "Fail to import dictionary xml file, Error: ";
constexpr char ENTITY_PASS[] = "fail to import entity.";
constexpr char DICTIONARY_PASS[] = "fail to import dictionary.";

class AssetImportFaults : public CAssetFixture {
  protected:
    AssetImportFaults() { OpenWithBuiltIns(); }

    void OpenWithBuiltIns() {
        m_faults.CountOnly();
        CSettingsStore::Open("memory:");
        CCfgSettingDLPFilterExpression expression = Expression(L"n");
        expression.SetIsBuildIn(true);
        expression.SaveThis();
        CCfgSettingDLPFilterKeyword keyword = Keyword(L"n");
        keyword.SetIsBuildIn(true);
        keyword.SaveThis();
    }

    int Import(EImport eImport, CImportObserver* pObserver = nullptr) {
        CPolicyDocument document{std::string_view(DOCUMENT)};
        m_vecSkipped.clear();
        return DigitalAssets::Import(eImport, L"", document, m_vecSkipped, pObserver);
    }

    /** @return the names of the records stored, the built-in ones in brackets, such as "a [n] | [n] k" */
    std::string StoredNames() {
        m_faults.CountOnly();
        std::string strNames;
        for (const ESettingsKind eKind : {ESettingsKind::EXPRESSION, ESettingsKind::KEYWORD}) {
            strNames += strNames.empty() ? "" : " |";
            CSettingsStore::Current().ReadAll(eKind, [&](CSettingsRow&& row) {
                const std::string& strName = row.GetText(AssetColumn::NAME);
                strNames += (strNames.empty() ? "" : " ") +
                            (row.GetFlag(AssetColumn::PRE_DEFINED) ? '[' + strName + ']' : strName);
            });
        }
        return strNames;
    }

    /** What becomes of an import whose n-th call of the store fails. */
    struct SRow {
        const char* pOperation;
        const char* pStored;
        std::vector<std::string> vecItems;
        std::vector<const char*> vecLines;  ///< over the failure; those that end in a blank take the exception's text
    };

    void ExpectEachFailure(EImport eImport, const std::vector<SRow>& vecRows, CStoreFaults::Fault fnFault,
                           const std::string& strMessage) {
        for (std::size_t i = 1; i <= vecRows.size() + 1; ++i) {
            OpenWithBuiltIns();
            m_faults.FailAt(i, fnFault);
            CLogRecorder log;
            CImportListener listener;
            const int iResult = Import(eImport, &listener);
            const std::vector<std::string> vecOperations = m_faults.GetOperations();
            if (i > vecRows.size()) {
                EXPECT_FALSE(m_faults.IsReached());
                EXPECT_EQ(iResult, 0);
                break;
            }
            SCOPED_TRACE("call " + std::to_string(i));
            const SRow& row = vecRows[i - 1];
            ASSERT_TRUE(m_faults.IsReached());
            EXPECT_EQ(vecOperations.at(i - 1), row.pOperation);
            EXPECT_EQ(iResult, 3);
            EXPECT_EQ(StoredNames(), row.pStored);
            EXPECT_EQ(listener.m_vecItems, row.vecItems);
            // What was skipped before stays named; the item over which it failed is not.
            EXPECT_EQ(static_cast<std::size_t>(std::count_if(
                          row.vecItems.begin(), row.vecItems.end(),
                          [](const std::string& strItem) { return strItem.find("skipped") != std::string::npos; })),
                      m_vecSkipped.size());
            std::vector<std::string> vecLines;
            for (const std::string strLine : row.vecLines) {
                vecLines.push_back(strLine.back() == ' ' ? strLine + strMessage : strLine);
            }
            EXPECT_EQ(log.Messages(DBG::LEVEL_FAILURE), vecLines);
            EXPECT_THAT(
                log.Messages(DBG::LEVEL_LEAVE),
                testing::Not(testing::Contains(testing::AnyOf("CDLPDigitalAssetsParser::ImportDigitalAssets()",
                                                              "CDLPDigitalAssetsParser::ImportEntityWithCheck()"))));
        }
    }

    CStoreFaults m_faults;
    std::vector<OS::x_wstring> m_vecSkipped;
};

const std::string CREATED_A = "expression a|A created";
const std::string CREATED_B = "expression b|B created";
const std::string CREATED_K = "keyword k|K created";
const std::string KEPT_EXPRESSION = "expression n|N skipped built in";
const std::string KEPT_LIST = "keyword n|N skipped built in";

/** @return what the observer hears of an item over which the store failed */
std::string Failed(const std::string& strItem) {
    return strItem + " failed store (the store does not answer)";
}

}  // namespace

TEST_F(AssetImportFaults, StoreFailingAtAnyCallKeepsWhatWasSaved) {
    const std::vector<const char*> vecExpression{EXPRESSION_FAILED, ENTITY_PASS};
    const std::vector<const char*> vecKeyword{KEYWORD_FAILED, DICTIONARY_PASS};
    ExpectEachFailure(
        EImport::ALL,
        {
            {"Begin", "[n] | [n]", {}, vecExpression},
            {"Find", "[n] | [n]", {Failed("expression a|A")}, vecExpression},
            {"Save", "[n] | [n]", {Failed("expression a|A")}, vecExpression},
            {"Find", "a [n] | [n]", {CREATED_A, Failed("expression n|N")}, vecExpression},
            {"Find", "a [n] | [n]", {CREATED_A, KEPT_EXPRESSION, Failed("expression b|B")}, vecExpression},
            {"Save", "a [n] | [n]", {CREATED_A, KEPT_EXPRESSION, Failed("expression b|B")}, vecExpression},
            {"Find", "a b [n] | [n]", {CREATED_A, KEPT_EXPRESSION, CREATED_B, Failed("keyword n|N")}, vecKeyword},
            {"Find",
             "a b [n] | [n]",
             {CREATED_A, KEPT_EXPRESSION, CREATED_B, KEPT_LIST, Failed("keyword k|K")},
             vecKeyword},
            {"Save",
             "a b [n] | [n]",
             {CREATED_A, KEPT_EXPRESSION, CREATED_B, KEPT_LIST, Failed("keyword k|K")},
             vecKeyword},
            {"Commit", "[n] | [n]", {CREATED_A, KEPT_EXPRESSION, CREATED_B, KEPT_LIST, CREATED_K}, vecKeyword},
        },
        CStoreFaults::StoreFault, OS::Utf8Lenient(STORE_FAULT));
}

TEST_F(AssetImportFaults, LookupThatFailsIsNotLoggedAsNotFound) {
    m_faults.FailAt(2);
    CLogRecorder log;
    EXPECT_EQ(Import(EImport::ALL), 3);
    EXPECT_THAT(log.Lines(),
                ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::CheckImportVersion()"),
                            Line("0x111", "CDLPDigitalAssetsParser::CheckImportVersion(), result = 1"),
                            Line("0x110", "CDLPDigitalAssetsParser::ImportEntity()"),
                            Line("0x110", "CDLPDigitalAssetsParser::FindExpression, internalName = a"),
                            Line("0x1004", "Fail to import expression xml file, Error: the store does not answer"),
                            Line("0x1004", "fail to import entity.")));
}

TEST_F(AssetImportFaults, ImportOfExpressionsAloneFailsInItsOwnWords) {
    const std::vector<const char*> vecExpression{EXPRESSION_FAILED, ENTITY_PASS};
    ExpectEachFailure(
        EImport::EXPRESSIONS,
        {
            {"Begin", "[n] | [n]", {}, vecExpression},
            {"Find", "[n] | [n]", {Failed("expression a|A")}, vecExpression},
            {"Save", "[n] | [n]", {Failed("expression a|A")}, vecExpression},
            {"Find", "a [n] | [n]", {CREATED_A, Failed("expression n|N")}, vecExpression},
            {"Find", "a [n] | [n]", {CREATED_A, KEPT_EXPRESSION, Failed("expression b|B")}, vecExpression},
            {"Save", "a [n] | [n]", {CREATED_A, KEPT_EXPRESSION, Failed("expression b|B")}, vecExpression},
            {"Commit", "[n] | [n]", {CREATED_A, KEPT_EXPRESSION, CREATED_B}, vecExpression},
        },
        CStoreFaults::StoreFault, OS::Utf8Lenient(STORE_FAULT));
}

TEST_F(AssetImportFaults, ImportOfListsAloneFailsInItsOwnWords) {
    const std::vector<const char*> vecKeyword{KEYWORD_FAILED, DICTIONARY_PASS};
    ExpectEachFailure(EImport::KEYWORDS,
                      {
                          {"Begin", "[n] | [n]", {}, vecKeyword},
                          {"Find", "[n] | [n]", {Failed("keyword n|N")}, vecKeyword},
                          {"Find", "[n] | [n]", {KEPT_LIST, Failed("keyword k|K")}, vecKeyword},
                          {"Save", "[n] | [n]", {KEPT_LIST, Failed("keyword k|K")}, vecKeyword},
                          {"Commit", "[n] | [n]", {KEPT_LIST, CREATED_K}, vecKeyword},
                      },
                      CStoreFaults::StoreFault, OS::Utf8Lenient(STORE_FAULT));
}

TEST_F(AssetImportFaults, LackOfMemoryEndsAPassLikeTheStore) {
    const std::vector<const char*> vecExpression{EXPRESSION_FAILED, ENTITY_PASS};
    ExpectEachFailure(EImport::EXPRESSIONS,
                      {
                          {"Begin", "[n] | [n]", {}, vecExpression},
                          {"Find", "[n] | [n]", {}, vecExpression},
                          {"Save", "[n] | [n]", {}, vecExpression},
                          {"Find", "a [n] | [n]", {CREATED_A}, vecExpression},
                          {"Find", "a [n] | [n]", {CREATED_A, KEPT_EXPRESSION}, vecExpression},
                          {"Save", "a [n] | [n]", {CREATED_A, KEPT_EXPRESSION}, vecExpression},
                          {"Commit", "[n] | [n]", {CREATED_A, KEPT_EXPRESSION, CREATED_B}, vecExpression},
                      },
                      CStoreFaults::MemoryFault, std::bad_alloc().what());
}

TEST_F(AssetImportFaults, AnythingThrownEndsAPass) {
    m_faults.FailAt(3, [] { throw 7; });
    CLogRecorder log;
    EXPECT_EQ(Import(EImport::ALL), 3);
    EXPECT_THAT(log.Messages(DBG::LEVEL_FAILURE),
                ElementsAre("Fail to import expression xml file, Error: unknown exception", "fail to import entity."));
    EXPECT_EQ(StoredNames(), "[n] | [n]");
}

TEST_F(AssetImportFaults, StoreFailingAgainAtTheCommitIsLoggedToo) {
    CSettingsTransaction outer;
    m_faults.FailAt(3, [this] {
        m_faults.FailAt(1);  // the commit of the pass that this failure ends
        throw OS::CException(0, L"disk full", 0);
    });
    CLogRecorder log;
    EXPECT_EQ(Import(EImport::ALL), 3);
    EXPECT_THAT(
        log.Messages(DBG::LEVEL_FAILURE),
        ElementsAre("Fail to import expression xml file, Error: disk full",
                    "Fail to import dictionary xml file, Error: the store does not answer", "fail to import entity."));
}

TEST_F(AssetImportFaults, ScopeThatNoStoreKeepsFailsAndStoresNothing) {
    CPolicyDocument document{std::string_view(DOCUMENT)};
    CLogRecorder log;
    EXPECT_EQ(DigitalAssets::Import(EImport::ALL, std::wstring(1, L'\0'), document, m_vecSkipped, nullptr), 3);
    EXPECT_THAT(log.Messages(DBG::LEVEL_FAILURE),
                ElementsAre(testing::StartsWith(EXPRESSION_FAILED), "fail to import entity."));
    EXPECT_EQ(StoredNames(), "[n] | [n]");
}

TEST_F(AssetImportFaults, DocumentOfAnotherLanguageDoesNotReachTheStore) {
    m_faults.CountOnly();
    std::vector<OS::x_wstring> vecSkipped;
    EXPECT_EQ(CDLPDigitalAssetsParser().ImportDigitalAssets(L"", L"<SAPolicy localization_language='x'/>", vecSkipped),
              2);
    EXPECT_EQ(m_faults.GetCount(), 0u);
}

TEST_F(AssetImportFaults, VersionOfADocumentWhosePassFailsStays) {
    const OS::x_wstring strDocument =
        L"<SAPolicy template_version='9'><digitalAssets><entity name='a' display_name='A'><regularExpression/></entity>"
        L"</digitalAssets></SAPolicy>";
    m_faults.FailAt(2);
    EXPECT_EQ(CDLPDigitalAssetsParser().ImportDigitalAssets(L"", strDocument, m_vecSkipped), 3);
    EXPECT_EQ(CDLPDigitalAssetsParser::GetVersion(), L"9");
}

TEST_F(AssetImportFaults, UnchangedItemIsNotWritten) {
    ASSERT_EQ(Import(EImport::ALL), 0);
    m_faults.CountOnly();
    ASSERT_EQ(Import(EImport::ALL), 0);
    EXPECT_THAT(m_faults.GetOperations(), ElementsAre("Begin", "Find", "Find", "Find", "Find", "Find", "Commit"));
}

TEST_F(AssetImportFaults, ObserverThatThrowsEndsThePass) {
    class CThrowing : public CImportObserver {
      public:
        void OnItem(const SImportItem&) override {
            ++m_iCalls;
            throw std::runtime_error("interrupted");
        }
        int m_iCalls = 0;
    } observer;
    CLogRecorder log;
    EXPECT_EQ(Import(EImport::ALL, &observer), 3);
    EXPECT_EQ(observer.m_iCalls, 1);
    EXPECT_THAT(log.Messages(DBG::LEVEL_FAILURE),
                ElementsAre("Fail to import expression xml file, Error: interrupted", "fail to import entity."));
    EXPECT_EQ(StoredNames(), "a [n] | [n]");
}
