#include "api/CDLPDigitalAssetsParser.h"
#include "api/CDLPSubKeywordFormater.h"
#include "digital_assets/DigitalAssets.h"
#include "platform/xml/FaultPoint.h"
#include "tests/digital_assets/AssetFixture.h"
#include "xml/CPolicyDocument.h"

// The XML layer fails at each of its operations in turn.

using testing::ElementsAre;

namespace {

constexpr char DOCUMENT[] =
    "<SAPolicy><digitalAssets><entity name='e' display_name='E'><regularExpression/></entity>"
    "<dictionary name='k' display_name='K'><keyword>w</keyword></dictionary></digitalAssets></SAPolicy>";

constexpr char ROOT_FAILED[] = "Fail to generate xml file root part, Error: injected fault";
constexpr char ASSETS_FAILED[] = "Fail to generate digital access xml, Error: injected fault";
constexpr char ENTITY_FAILED[] = "Fail to generate entity xml, Error: ORVAL_SUB_CFG_DLP_EXPRESSIONe: injected fault";
constexpr char ENTITY_NODE[] = "Fail to generate entity node.";
constexpr char DICTIONARY_FAILED[] =
    "Fail to generate dictionary xml, Error: ORVAL_SUB_CFG_DLP_KEYWORDk: injected fault";
constexpr char DICTIONARY_NODE[] = "Fail to generate dictionary node.";
constexpr char PART_FAILED[] = "Fail to generate xml file digital assets part.";
constexpr char EXPORT_FAILED[] = "Fail to export digital assets xml file, Error: injected fault";

class DigitalAssetsFaults : public CAssetFixture {
  protected:
    static int Import(CImportObserver* pObserver = nullptr) {
        CPolicyDocument document{std::string_view(DOCUMENT)};
        std::vector<OS::x_wstring> vecSkipped;
        return DigitalAssets::Import(DigitalAssets::EImport::ALL, L"", document, vecSkipped, pObserver);
    }
    /** @return the lines of the two levels of failure, in order */
    static std::vector<std::string> Failures(const CLogRecorder& log) {
        std::vector<std::string> vecLines;
        for (const DBG::CLogRecord& record : log.Records()) {
            if (record.iLevel == DBG::LEVEL_ERROR || record.iLevel == DBG::LEVEL_FAILURE) {
                vecLines.push_back((record.iLevel == DBG::LEVEL_ERROR ? "error " : "failure ") +
                                   OS::Utf8Lenient(record.strMessage));
            }
        }
        return vecLines;
    }
};

std::string Error(const std::string& strLine) {
    return "error " + strLine;
}
std::string Failure(const std::string& strLine) {
    return "failure " + strLine;
}

}  // namespace

TEST_F(DigitalAssetsFaults, ExportFailsInTheWordsOfTheStepAndLeavesTheTextAsItWas) {
    ASSERT_EQ(Import(), 0);
    const std::vector<OS::x_wstring> vecExpressions = Subjects(SUBJECT_EXPRESSION, {L"e"});
    const std::vector<OS::x_wstring> vecKeywords = Subjects(SUBJECT_KEYWORD, {L"k"});
    const std::vector<std::string> vecRoot{Failure(ROOT_FAILED), Failure(PART_FAILED)};
    const std::vector<std::string> vecAssets{Error(ASSETS_FAILED), Failure(PART_FAILED)};
    const std::vector<std::string> vecEntity{Error(ENTITY_FAILED), Failure(ENTITY_NODE), Failure(PART_FAILED)};
    const std::vector<std::string> vecDictionary{Error(DICTIONARY_FAILED), Failure(DICTIONARY_NODE),
                                                 Failure(PART_FAILED)};
    const std::vector<std::string> vecExport{Failure(EXPORT_FAILED)};
    std::vector<std::vector<std::string>> vecSteps;
    for (int i = 1;; ++i) {
        XmlFaults::FailAt(i);
        CLogRecorder log;
        std::wstring strOut = L"as it was";
        const bool bDone = CDLPDigitalAssetsParser().ExportDigitalAssets(L"", vecExpressions, vecKeywords, strOut);
        if (XmlFaults::GetCount() < i) {
            EXPECT_TRUE(bDone);
            break;
        }
        EXPECT_FALSE(bDone);
        EXPECT_EQ(strOut, L"as it was");
        if (vecSteps.empty() || vecSteps.back() != Failures(log)) {
            vecSteps.push_back(Failures(log));
        }
    }
    EXPECT_THAT(vecSteps, ElementsAre(vecRoot, vecAssets, vecEntity, vecDictionary, vecAssets, vecExport));
}

TEST_F(DigitalAssetsFaults, RootFailsInItsOwnWords) {
    for (int i = 1;; ++i) {
        XmlFaults::FailAt(i);
        CLogRecorder log;
        std::wstring strOut = L"as it was";
        const bool bDone = CDLPDigitalAssetsParser().GenerateRootXML(strOut);
        if (XmlFaults::GetCount() < i) {
            EXPECT_TRUE(bDone);
            EXPECT_EQ(i, 6);
            break;
        }
        EXPECT_FALSE(bDone);
        EXPECT_EQ(strOut, L"as it was");
        EXPECT_THAT(Failures(log), ElementsAre(Failure(ROOT_FAILED)));
    }
}

TEST_F(DigitalAssetsFaults, ImportFailsInTheWordsOfThePassAndKeepsWhatWasSaved) {
    const struct {
        int iResult;
        std::vector<std::string> vecLines;
        std::vector<std::string> vecItems;
        bool bExpressionStored;
    } aRows[] = {
        {2,  // reading the text
         {"Fail to import dictionary xml file, Error: injected fault", "Invalid localization_language, skip import."},
         {},
         false},
        {3,  // selecting the expressions
         {"Fail to import expression xml file, Error: injected fault", "fail to import entity."},
         {},
         false},
        {3,  // selecting the lists
         {"Fail to import dictionary xml file, Error: injected fault", "fail to import dictionary."},
         {"expression e|E created"},
         true},
        {3,  // taking the list's markup
         {"Fail to import dictionary xml file, Error: injected fault", "fail to import dictionary."},
         {"expression e|E created", "keyword k|K failed store (injected fault)"},
         true},
    };
    int iOperation = 0;
    for (const auto& row : aRows) {
        CSettingsStore::Open("memory:");
        XmlFaults::FailAt(++iOperation);
        CLogRecorder log;
        CImportListener listener;
        EXPECT_EQ(Import(&listener), row.iResult);
        EXPECT_EQ(log.Messages(DBG::LEVEL_FAILURE), row.vecLines);
        EXPECT_EQ(listener.m_vecItems, row.vecItems);
        XmlFaults::FailAt(0);
        EXPECT_EQ(Dump(), row.bExpressionStored ? "expressions subject=\"ORVAL_SUB_CFG_DLP_EXPRESSIONe\" name=\"e\" "
                                                  "display_name=\"E\" type=\"Generic\"\n"
                                                : "");
    }
    XmlFaults::FailAt(++iOperation);
    EXPECT_EQ(Import(), 0);
    EXPECT_LT(XmlFaults::GetCount(), iOperation);
}

TEST_F(DigitalAssetsFaults, KeywordTextThatCannotBeMadeIsEmpty) {
    std::vector<CDLPSubKeyword> vecKeywords{{L"a", L"d", L"1", L"true"}};
    for (int i = 1;; ++i) {
        XmlFaults::FailAt(i);
        CLogRecorder log;
        const OS::x_wstring strXml = CDLPSubKeywordFormater::ToXmlFormat(vecKeywords);
        if (XmlFaults::GetCount() < i) {
            EXPECT_FALSE(strXml.empty());
            EXPECT_GT(i, 8);
            break;
        }
        EXPECT_EQ(strXml, L"");
        EXPECT_THAT(Failures(log),
                    ElementsAre(Failure("Fail to convert subkeyword to xml format, Error: injected fault")));
    }
}

TEST_F(DigitalAssetsFaults, KeywordTextThatCannotBeReadLeavesTheListUnsorted) {
    for (int i = 1;; ++i) {
        XmlFaults::FailAt(i);
        CLogRecorder log;
        std::vector<CDLPSubKeyword> vecKeywords{{L"b", L"", L"", L""}, {L"a", L"", L"", L""}};
        CDLPSubKeywordFormater::ToUIFormat(L"<dictionary><keyword>c</keyword></dictionary>", vecKeywords);
        if (XmlFaults::GetCount() < i) {
            EXPECT_EQ(vecKeywords.size(), 3u);
            EXPECT_EQ(i, 3);
            break;
        }
        EXPECT_EQ(vecKeywords.at(0).m_strKeyword, L"b");
        EXPECT_EQ(vecKeywords.at(1).m_strKeyword, L"a");
        EXPECT_EQ(vecKeywords.size(), 2u);
        EXPECT_THAT(Failures(log),
                    ElementsAre(Failure("Fail to convert subkeyword xml to UI format, Error: injected fault")));
    }
}
