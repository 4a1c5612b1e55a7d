#include "api/CDLPDigitalAssetsParser.h"
#include "api/CDLPSubKeywordFormater.h"
#include "digital_assets/DigitalAssets.h"
#include "platform/xml/FaultPoint.h"
#include "tests/digital_assets/AssetFixture.h"
#include "xml/CPolicyDocument.h"

// The XML layer fails at each of its operations in turn.

using testing::ElementsAre;

namespace {

/** The keyword's blank is one reason for which a list is not written as it is stored, but read first. */
constexpr char DOCUMENT[] =
    "<SAPolicy><digitalAssets><entity name='e' display_name='E'><regularExpression/></entity>"
    "<dictionary name='k' display_name='K'><keyword> w</keyword></dictionary></digitalAssets></SAPolicy>";

constexpr char ROOT_FAILED[] = "Fail to generate xml file root part, Error: injected fault";
constexpr char ASSETS_FAILED[] = "Fail to generate digital access xml, Error: injected fault";
constexpr char ENTITY_FAILED[] = "Fail to generate entity xml, Error: ORVAL_SUB_CFG_DLP_EXPRESSIONe: injected fault";
constexpr char ENTITY_NODE[] = "Fail to generate entity node.";
constexpr char DICTIONARY_FAILED[] =
    "Fail to generate dictionary xml, Error: ORVAL_SUB_CFG_DLP_KEYWORDk: injected fault";
constexpr char DICTIONARY_NODE[] = "Fail to generate dictionary node.";
constexpr char PART_FAILED[] = "Fail to generate xml file digital assets part.";
constexpr char GENERATED[] = "CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()";
constexpr char EXPORT_FAILED[] = "Fail to export digital assets xml file, Error: injected fault";

class DigitalAssetsFaults : public CAssetFixture {
  protected:
    ~DigitalAssetsFaults() override {
        XmlFaults::FailAt(0);
        XmlFaults::FindNothingAt(0);
    }

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

TEST_F(DigitalAssetsFaults, ExportThatMissesAnElementFailsInTheWordsOfTheStepAndLeavesTheTextAsItWas) {
    ASSERT_EQ(Import(), 0);
    const std::string strNoKeywords =
        Line("0x1004",
             "CDLPDigitalAssetsParser::GenerateDictionaryXml() Unable to find node /dictionary/keyword.               "
             "     The xml file format is incompatible.");
    const std::string strPart = Line("0x1004", PART_FAILED);
    const auto node = [](const std::string& strElement) { return Line("0x1004", "Fail to find node " + strElement); };
    const auto part = [](const std::string& strElement) { return Line("0x1004", "Fail to find " + strElement + "."); };
    const std::vector<std::string> vecRoot{Line("0x110", "CDLPDigitalAssetsParser::ExportDigitalAssets()"),
                                           Line("0x110", "CDLPDigitalAssetsParser::GenerateRootXML()")};
    const std::vector<std::string> vecAssets{Line("0x110", GENERATED)};
    const std::vector<std::string> vecLeft{Line("0x110", GENERATED), Line("0x111", GENERATED)};
    const struct {
        const char* pLookup;
        std::vector<std::string> vecEntered;  ///< after those of the root
        std::vector<std::string> vecLines;    ///< over what is missed
    } aRows[] = {
        {"root, to set its attributes", {}, {node("SAPolicy"), strPart}},
        {"root, to append the assets", {}, {part("SAPolicy")}},
        {"assets, to set the command", vecAssets, {node("digitalAssets"), strPart}},
        {"expression, to fill it", vecAssets, {node("entity"), Line("0x1004", ENTITY_NODE), strPart}},
        {"expression, to append it", vecAssets, {node("entity"), strPart}},
        {"list, to fill it", vecAssets, {node("dictionary"), Line("0x1004", DICTIONARY_NODE), strPart}},
        {"root of the stored keywords", vecAssets, {strNoKeywords, Line("0x1004", DICTIONARY_NODE), strPart}},
        {"first of the stored keywords", vecLeft, {}},
        {"list, to append it", vecAssets, {node("dictionary"), strPart}},
        {"assets, to append them", vecLeft, {part("digitalAssets")}},
        {"none", vecLeft, {}},
    };
    int iLookup = 0;
    for (const auto& row : aRows) {
        XmlFaults::FindNothingAt(++iLookup);
        CLogRecorder log;
        std::wstring strOut = L"as it was";
        EXPECT_EQ(CDLPDigitalAssetsParser().ExportDigitalAssets(L"", Subjects(SUBJECT_EXPRESSION, {L"e"}),
                                                                Subjects(SUBJECT_KEYWORD, {L"k"}), strOut),
                  row.vecLines.empty())
            << row.pLookup;
        EXPECT_EQ(strOut == L"as it was", !row.vecLines.empty()) << row.pLookup;
        std::vector<std::string> vecLines = vecRoot;
        vecLines.insert(vecLines.end(), row.vecEntered.begin(), row.vecEntered.end());
        vecLines.insert(vecLines.end(), row.vecLines.begin(), row.vecLines.end());
        EXPECT_EQ(log.Lines(), vecLines) << row.pLookup;
    }
    EXPECT_EQ(XmlFaults::GetLookupCount(), iLookup - 1);
}

TEST_F(DigitalAssetsFaults, RootThatIsNotFoundLeavesTheTextAsItWas) {
    XmlFaults::FindNothingAt(1);
    CLogRecorder log;
    std::wstring strOut = L"as it was";
    EXPECT_FALSE(CDLPDigitalAssetsParser().GenerateRootXML(strOut));
    EXPECT_EQ(strOut, L"as it was");
    EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::GenerateRootXML()"),
                                         Line("0x1004", "Fail to find node SAPolicy")));
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

TEST_F(DigitalAssetsFaults, ImportThatMissesAnElementAnswersForTheStep) {
    const auto incompatible = [](const std::string& strStep, const std::string& strElement) {
        return Failure(strStep + " Unable to find node /SAPolicy/digitalAssets/" + strElement +
                       ".                    The xml file format is incompatible.");
    };
    const std::string strCreated = "expression e|E created";
    const std::string strList = "keyword k|K created";
    const struct {
        const char* pLookup;
        int iResult;
        std::vector<std::string> vecLines;
        std::vector<std::string> vecItems;
    } aRows[] = {
        {"root",
         2,
         {Failure("Fail to find node SAPolicy"), Failure("Invalid localization_language, skip import.")},
         {}},
        {"expressions",
         3,
         {incompatible("CDLPDigitalAssetsParser::ImportEntity()", "entity"), Failure("fail to import entity.")},
         {}},
        {"regularExpression",
         0,
         {Failure("Fail to find tag ., skip entity: E"),
          Failure("CDLPDigitalAssetsParser::AddExpression() fail to add expression.")},
         {"expression e|E skipped missing child (regularExpression)", strList}},
        {"patternForDisplay", 0, {}, {strCreated, strList}},
        {"examples", 0, {}, {strCreated, strList}},
        {"lists",
         3,
         {incompatible("CDLPDigitalAssetsParser::ImportDictionary", "dictionary"),
          Failure("fail to import dictionary.")},
         {strCreated}},
        {"what is no item", 0, {}, {strCreated, strList}},
        {"what is no part of an asset", 0, {}, {strCreated, strList}},
        {"none", 0, {}, {strCreated, strList}},
    };
    int iLookup = 0;
    for (const auto& row : aRows) {
        CSettingsStore::Open("memory:");
        XmlFaults::FindNothingAt(++iLookup);
        CLogRecorder log;
        CImportListener listener;
        EXPECT_EQ(Import(&listener), row.iResult) << row.pLookup;
        EXPECT_EQ(Failures(log), row.vecLines) << row.pLookup;
        EXPECT_EQ(listener.m_vecItems, row.vecItems) << row.pLookup;
    }
    EXPECT_EQ(XmlFaults::GetLookupCount(), iLookup - 1);
}

TEST_F(DigitalAssetsFaults, KeywordTextWhoseRootIsNotFoundIsEmpty) {
    std::vector<CDLPSubKeyword> vecKeywords{{L"a", L"d", L"1", L"true"}};
    XmlFaults::FindNothingAt(1);
    CLogRecorder log;
    EXPECT_EQ(CDLPSubKeywordFormater::ToXmlFormat(vecKeywords), L"");
    EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", "CDLPSubKeywordFormater::ToXmlFormat()"),
                                         Line("0x1004", "Fail to find SAPolicy.")));
}

TEST_F(DigitalAssetsFaults, KeywordTextInWhichNothingIsFoundLeavesTheListAsItWas) {
    for (int i = 1;; ++i) {
        XmlFaults::FindNothingAt(i);
        CLogRecorder log;
        std::vector<CDLPSubKeyword> vecKeywords{{L"b", L"", L"", L""}, {L"a", L"", L"", L""}};
        CDLPSubKeywordFormater::ToUIFormat(L"<dictionary><keyword>c</keyword></dictionary>", vecKeywords);
        if (XmlFaults::GetLookupCount() < i) {
            EXPECT_EQ(vecKeywords.size(), 3u);
            EXPECT_EQ(i, 3);
            break;
        }
        EXPECT_EQ(vecKeywords.size(), 2u);
        EXPECT_EQ(vecKeywords.at(0).m_strKeyword, L"b");
        EXPECT_THAT(log.Lines(),
                    ElementsAre(Line("0x110", "CDLPSubKeywordFormater::ToUIFormat()"),
                                Line("0x1004",
                                     "CDLPSubKeywordFormater::ToUIFormat() Unable to find node /dictionary/keyword.   "
                                     "                 The xml file format is incompatible.")));
    }
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
