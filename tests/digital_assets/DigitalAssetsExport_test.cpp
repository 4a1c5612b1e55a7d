#include <limits>

#include "api/CDLPDigitalAssetsParser.h"
#include "digital_assets/DigitalAssets.h"
#include "platform/xml/CXMLWriter.h"
#include "tests/digital_assets/AssetFixture.h"
#include "tests/support/FaultStore.h"

using testing::ElementsAre;

namespace {

constexpr char DECLARATION[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
constexpr char ROOT_START[] = "<SAPolicy template_version=\"3.0.1000\" localization_language=\"\">";
constexpr char AS_IT_WAS[] = "as it was";

class AssetExport : public CAssetFixture {
  protected:
    /** Calls one of the two operations. @return the text, which on failure must be as it was, or "failed" */
    using Operation = bool (CDLPDigitalAssetsParser::*)(const OS::x_wstring&, const std::vector<OS::x_wstring>&,
                                                        const std::vector<OS::x_wstring>&, std::wstring&);
    static std::string Call(Operation fnOperation, const std::vector<std::wstring>& vecExpressions,
                            const std::vector<std::wstring>& vecKeywords) {
        std::wstring strOut = OS::WideText(AS_IT_WAS);
        CDLPDigitalAssetsParser parser;
        const bool bDone = (parser.*fnOperation)(L"scope", Subjects(SUBJECT_EXPRESSION, vecExpressions),
                                                 Subjects(SUBJECT_KEYWORD, vecKeywords), strOut);
        const std::string strText = OS::Utf8Lenient(strOut);
        if (bDone) {
            return strText;
        }
        EXPECT_EQ(strText, AS_IT_WAS);
        return "failed";
    }
    static std::string Export(const std::vector<std::wstring>& vecExpressions,
                              const std::vector<std::wstring>& vecKeywords = {}) {
        return Call(&CDLPDigitalAssetsParser::ExportDigitalAssets, vecExpressions, vecKeywords);
    }
    /** @return what stands between the tags of digitalAssets */
    static std::string Assets(const std::vector<std::wstring>& vecExpressions,
                              const std::vector<std::wstring>& vecKeywords = {}) {
        static const std::string s_strStart = "<digitalAssets command=\"overwrite\">";
        static const std::string s_strEnd = "</digitalAssets>";
        const std::string strText =
            Call(&CDLPDigitalAssetsParser::GenerateDigitalAssetsXML, vecExpressions, vecKeywords);
        if (strText.size() < s_strStart.size() + s_strEnd.size()) {
            return strText;
        }
        EXPECT_EQ(strText.substr(0, s_strStart.size()), s_strStart);
        EXPECT_EQ(strText.substr(strText.size() - s_strEnd.size()), s_strEnd);
        return strText.substr(s_strStart.size(), strText.size() - s_strStart.size() - s_strEnd.size());
    }
};

}  // namespace

TEST_F(AssetExport, EmptyListsGiveAnEmptyElement) {
    EXPECT_EQ(Export({}), std::string(DECLARATION) + ROOT_START + "<digitalAssets command=\"overwrite\"/></SAPolicy>");
    EXPECT_EQ(Assets({}), "<digitalAssets command=\"overwrite\"/>");
}

TEST_F(AssetExport, DocumentHoldsExpressionsThenListsInTheOrderAskedFor) {
    for (const wchar_t* const pName : {L"a", L"b"}) {
        Expression(pName).SaveThis();
        Keyword(pName).SaveThis();
    }
    const auto entity = [](const std::string& strName) {
        return "<entity name=\"" + strName +
               "\" type=\"Generic\" caseSensitive=\"false\" validator=\"\" display_name=\"" + strName +
               "\" description=\"\" pre-defined=\"false\"><regularExpression/><alphabetCharset/><patternForDisplay/>"
               "<examples/></entity>";
    };
    const auto dictionary = [](const std::string& strName) {
        return "<dictionary name=\"" + strName + "\" type=\"All\" display_name=\"" + strName +
               "\" description=\"\" pre-defined=\"false\"/>";
    };
    EXPECT_EQ(Export({L"b", L"a", L"b"}, {L"b", L"a"}),
              std::string(DECLARATION) + ROOT_START + "<digitalAssets command=\"overwrite\">" + entity("b") +
                  entity("a") + entity("b") + dictionary("b") + dictionary("a") + "</digitalAssets></SAPolicy>");
}

TEST_F(AssetExport, StepsAreLogged) {
    Expression(L"a").SaveThis();
    Keyword(L"a").SaveThis();
    CLogRecorder log;
    Export({L"a"}, {L"a"});
    EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::ExportDigitalAssets()"),
                                         Line("0x110", "CDLPDigitalAssetsParser::GenerateRootXML()"),
                                         Line("0x110", "CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()")));
}

TEST_F(AssetExport, ExpressionIsWrittenWhole) {
    CCfgSettingDLPFilterExpression record = Expression(L"n");
    record.SetUniqueName(L"scope", L"d <&> \"'");
    record.SetDescription(L"line\nbreak\ttab");
    record.SetIsBuildIn(true);
    record.SetType(L"Type 2");
    record.SetIsCaseSensitive(true);
    record.SetValidator(L"Luhn");
    record.SetMinLength(1);
    record.SetMaxLength(2147483647);
    record.SetSuffixLength(-3);
    record.SetMinLeftRadius(4);
    record.SetMaxLeftRadius(5);
    record.SetMaxRightRadius(6);
    record.SetPattern(L"\\d<&>\r\n");
    record.SetAlphabetCharset(L"0-9");
    record.SetDisplayFormat(L" # ");
    record.SetExample(L"\U0001f600");
    record.SaveThis();
    EXPECT_EQ(Assets({L"n"}),
              "<entity name=\"n\" type=\"Type 2\" caseSensitive=\"true\" validator=\"Luhn\" minLength=\"1\" "
              "maxLength=\"2147483647\" suffixLength=\"-3\" display_name=\"d &lt;&amp;&gt; &quot;'\" "
              "description=\"line&#10;break&#9;tab\" pre-defined=\"true\">"
              "<regularExpression>\\d&lt;&amp;&gt;&#13;\n</regularExpression><alphabetCharset>0-9</alphabetCharset>"
              "<patternForDisplay> # </patternForDisplay><examples>\xf0\x9f\x98\x80</examples></entity>");
}

TEST_F(AssetExport, ExpressionCarriesTheNumbersOfItsType) {
    constexpr int MIN = std::numeric_limits<int>::min();
    const struct {
        const wchar_t* pType;
        const char* pNumbers;
        bool bKnown;
    } aRows[] = {
        {L"Generic", "", true},
        {L"Type 1", " minLength=\"1\" maxLength=\"2\"", true},
        {L"Type 2", " minLength=\"1\" maxLength=\"2\" suffixLength=\"3\"", true},
        {L"Type 3", " minLeftRadius=\"4\" maxLeftRadius=\"5\" maxRightRadius=\"-2147483648\"", true},
        {L"generic", "", true},
        {L"tYPE 1", " minLength=\"1\" maxLength=\"2\"", true},
        {L"TYPE 3", " minLeftRadius=\"4\" maxLeftRadius=\"5\" maxRightRadius=\"-2147483648\"", true},
        {L"Generic ", "", false},
        {L"Type 4", "", false},
        {L"", "", false},
    };
    for (const auto& row : aRows) {
        CCfgSettingDLPFilterExpression record = Expression(L"n");
        record.SetType(row.pType);
        record.SetMinLength(1);
        record.SetMaxLength(2);
        record.SetSuffixLength(3);
        record.SetMinLeftRadius(4);
        record.SetMaxLeftRadius(5);
        record.SetMaxRightRadius(MIN);
        record.SaveThis();
        CLogRecorder log;
        EXPECT_EQ(Assets({L"n"}), "<entity name=\"n\" type=\"" + OS::Utf8Lenient(row.pType) +
                                      "\" caseSensitive=\"false\" validator=\"\"" + row.pNumbers +
                                      " display_name=\"n\" description=\"\" pre-defined=\"false\"><regularExpression/>"
                                      "<alphabetCharset/><patternForDisplay/><examples/></entity>");
        EXPECT_EQ(log.Messages(DBG::LEVEL_CONTENT),
                  row.bKnown ? std::vector<std::string>() : std::vector<std::string>{"Unknow expression type"});
    }
}

TEST_F(AssetExport, KeywordListCarriesTheNumberOfItsCondition) {
    const struct {
        const wchar_t* pCondition;
        const char* pNumber;
        bool bKnown;
    } aRows[] = {
        {L"All", "", true},
        {L"Any", "", true},
        {L"Threshold", " threshold=\"7\"", true},
        {L"Distance", " number=\"-8\"", true},
        {L"threshold", "", false},
        {L"ALL", "", false},
        {L"Any ", "", false},
        {L"", "", false},
    };
    for (const auto& row : aRows) {
        CCfgSettingDLPFilterKeyword record = Keyword(L"n");
        record.SetCondition(row.pCondition);
        record.SetThreshold(7);
        record.SetNumber(-8);
        record.SetIsBuildIn(true);
        record.SetDescription(L"about");
        record.SaveThis();
        CLogRecorder log;
        EXPECT_EQ(Assets({}, {L"n"}), "<dictionary name=\"n\" type=\"" + OS::Utf8Lenient(row.pCondition) + '"' +
                                          row.pNumber +
                                          " display_name=\"n\" description=\"about\" pre-defined=\"true\"/>");
        EXPECT_EQ(log.Messages(DBG::LEVEL_CONTENT),
                  row.bKnown ? std::vector<std::string>() : std::vector<std::string>{"Unknow dictionary type"});
    }
}

TEST_F(AssetExport, AssetsAloneAreLogged) {
    CCfgSettingDLPFilterExpression expression = Expression(L"e");
    expression.SetType(L"x");
    expression.SaveThis();
    CCfgSettingDLPFilterKeyword keyword = Keyword(L"k");
    keyword.SetCondition(L"x");
    keyword.SaveThis();
    CLogRecorder log;
    Assets({L"e"}, {L"k"});
    EXPECT_THAT(log.Lines(),
                ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()"),
                            Line("0x1001", "Unknow expression type"), Line("0x1001", "Unknow dictionary type"),
                            Line("0x111", "CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()")));
}

TEST_F(AssetExport, StoredTextIsReadWhateverEncodingItDeclares) {
    CCfgSettingDLPFilterKeyword record = Keyword(L"n");
    record.SetSubkeywordList(
        L"\ufeff<?xml version=\"1.0\" encoding=\"UTF-16\"?><dictionary><keyword>\u00e4</keyword></dictionary>");
    record.SaveThis();
    EXPECT_EQ(Assets({}, {L"n"}),
              "<dictionary name=\"n\" type=\"All\" display_name=\"n\" description=\"\" pre-defined=\"false\">"
              "<keyword>\xc3\xa4</keyword></dictionary>");
}

TEST_F(AssetExport, KeywordsTakeTheirNamespacesAlong) {
    CCfgSettingDLPFilterKeyword record = Keyword(L"n");
    record.SetSubkeywordList(
        L"<dictionary xmlns=\"urn:x\" xmlns:p=\"urn:y\"><keyword p:a=\"1\">k</keyword><p:keyword/></dictionary>");
    record.SaveThis();
    EXPECT_EQ(Assets({}, {L"n"}),
              "<dictionary name=\"n\" type=\"All\" display_name=\"n\" description=\"\" pre-defined=\"false\">"
              "<keyword p:a=\"1\" xmlns=\"urn:x\" xmlns:p=\"urn:y\">k</keyword></dictionary>");
}

TEST_F(AssetExport, KeywordsAreWrittenAsTheyAreStored) {
    CCfgSettingDLPFilterKeyword record = Keyword(L"n");
    record.SetSubkeywordList(
        L"<?xml version=\"1.0\"?>\n<dictionary name=\"other\" type=\"Any\">\n  <keyword score='1' own=\"x\">b &amp; c"
        L"</keyword>\n  <other/><keyword><![CDATA[<a>]]><!-- c --></keyword><keyword/>\n</dictionary>");
    record.SaveThis();
    EXPECT_EQ(Assets({}, {L"n"}),
              "<dictionary name=\"n\" type=\"All\" display_name=\"n\" description=\"\" pre-defined=\"false\">"
              "<keyword score=\"1\" own=\"x\">b &amp; c</keyword><keyword><![CDATA[<a>]]><!-- c --></keyword><keyword/>"
              "</dictionary>");
}

TEST_F(AssetExport, EveryKeywordOfALongListIsWritten) {
    std::wstring strText = L"<dictionary>";
    std::string strExpected;
    for (int i = 0; i < 500; ++i) {
        strText += L"<keyword>" + std::to_wstring(i) + L"</keyword>";
        strExpected += "<keyword>" + std::to_string(i) + "</keyword>";
    }
    CCfgSettingDLPFilterKeyword record = Keyword(L"n");
    record.SetSubkeywordList(strText + L"</dictionary>");
    record.SaveThis();
    EXPECT_THAT(Assets({}, {L"n"}), testing::HasSubstr('>' + strExpected + "</dictionary>"));
}

TEST_F(AssetExport, StoredTextThatIsNoDictionaryFailsTheWhole) {
    Expression(L"e").SaveThis();
    Keyword(L"a").SaveThis();
    for (const wchar_t* const pText :
         {L"", L"keywords", L"<dictionary>", L"<Dictionary/>", L"<other><dictionary><keyword/></dictionary></other>"}) {
        CCfgSettingDLPFilterKeyword record = Keyword(L"b");
        record.SetSubkeywordList(pText);
        record.SaveThis();
        CLogRecorder log;
        EXPECT_EQ(Export({L"e"}, {L"a", L"b"}), "failed") << pText;
        EXPECT_THAT(log.Lines(),
                    ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::ExportDigitalAssets()"),
                                Line("0x110", "CDLPDigitalAssetsParser::GenerateRootXML()"),
                                Line("0x110", "CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()"),
                                Line("0x1004",
                                     "CDLPDigitalAssetsParser::GenerateDictionaryXml() Unable to find node "
                                     "/dictionary/keyword.                    The xml file format is incompatible."),
                                Line("0x1004", "Fail to generate dictionary node."),
                                Line("0x1004", "Fail to generate xml file digital assets part.")));
    }
}

TEST_F(AssetExport, AssetsTooDeepToBeReadFailTheDocument) {
    const auto save = [](int iDepth) {
        OS::x_wstring strText = L"w";
        for (int i = 0; i < iDepth; ++i) {
            strText = L"<keyword>" + strText + L"</keyword>";
        }
        CCfgSettingDLPFilterKeyword record = Keyword(L"k");
        record.SetSubkeywordList(L"<dictionary>" + strText + L"</dictionary>");
        record.SaveThis();
    };
    save(254);
    EXPECT_NE(Export({}, {L"k"}), "failed");
    save(255);
    EXPECT_NE(Assets({}, {L"k"}), "failed");
    CExportListener listener;
    std::string strOut;
    Keyword(L"other").SaveThis();
    EXPECT_FALSE(DigitalAssets::Export({}, Subjects(SUBJECT_KEYWORD, {L"k", L"other"}), strOut, &listener));
    EXPECT_THAT(listener.m_vecFailed,
                ElementsAre("ORVAL_SUB_CFG_DLP_KEYWORDk: the stored keywords nest too deep to be read again"));
    CLogRecorder log;
    EXPECT_EQ(Export({}, {L"k"}), "failed");
    EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::ExportDigitalAssets()"),
                                         Line("0x110", "CDLPDigitalAssetsParser::GenerateRootXML()"),
                                         Line("0x110", "CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()"),
                                         Line("0x1004", "Fail to find digitalAssets.")));
}

TEST_F(AssetExport, RecordThatIsNotStoredFailsTheWhole) {
    Expression(L"e").SaveThis();
    CLogRecorder log;
    EXPECT_EQ(Export({L"e", L"absent"}), "failed");
    EXPECT_EQ(Export({L"e"}, {L"e"}), "failed");
    const auto failed = [](const std::string& strSubject) {
        return Line("0x1003", "Fail to generate digital access xml, Error: record not found: " + strSubject);
    };
    EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::ExportDigitalAssets()"),
                                         Line("0x110", "CDLPDigitalAssetsParser::GenerateRootXML()"),
                                         Line("0x110", "CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()"),
                                         failed("ORVAL_SUB_CFG_DLP_EXPRESSIONabsent"),
                                         Line("0x1004", "Fail to generate xml file digital assets part."),
                                         Line("0x110", "CDLPDigitalAssetsParser::ExportDigitalAssets()"),
                                         Line("0x110", "CDLPDigitalAssetsParser::GenerateRootXML()"),
                                         Line("0x110", "CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()"),
                                         failed("ORVAL_SUB_CFG_DLP_KEYWORDe"),
                                         Line("0x1004", "Fail to generate xml file digital assets part.")));
}

TEST_F(AssetExport, ArgumentsAreSubjectIdentifiersAsTheyStand) {
    Expression(L"e").SaveThis();
    std::wstring strOut;
    EXPECT_FALSE(CDLPDigitalAssetsParser().ExportDigitalAssets(L"", {L"e"}, {}, strOut));
    EXPECT_TRUE(CDLPDigitalAssetsParser().ExportDigitalAssets(L"", {L"ORVAL_SUB_CFG_DLP_EXPRESSIONe"}, {}, strOut));
}

TEST_F(AssetExport, CharacterThatXmlCannotCarryFailsTheWholeAndNamesTheRecord) {
    CCfgSettingDLPFilterExpression expression = Expression(L"e");
    expression.SetPattern(L"a\x01");
    expression.SaveThis();
    CCfgSettingDLPFilterKeyword keyword = Keyword(L"k");
    keyword.SetDescription(L"\xfffe");
    keyword.SetCondition(L"none");
    keyword.SaveThis();
    CLogRecorder log;
    EXPECT_EQ(Export({L"e"}), "failed");
    EXPECT_THAT(log.Lines(),
                ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::ExportDigitalAssets()"),
                            Line("0x110", "CDLPDigitalAssetsParser::GenerateRootXML()"),
                            Line("0x110", "CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()"),
                            Line("0x1003",
                                 "Fail to generate entity xml, Error: ORVAL_SUB_CFG_DLP_EXPRESSIONe: text "
                                 "of element regularExpression: the character U+0001 cannot be written in XML"),
                            Line("0x1004", "Fail to generate entity node."),
                            Line("0x1004", "Fail to generate xml file digital assets part.")));
    log.Clear();
    EXPECT_EQ(Assets({}, {L"k"}), "failed");
    EXPECT_THAT(log.Lines(),
                ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()"),
                            Line("0x1001", "Unknow dictionary type"),
                            Line("0x1003",
                                 "Fail to generate dictionary xml, Error: ORVAL_SUB_CFG_DLP_KEYWORDk: "
                                 "attribute description of element dictionary: the character U+FFFE cannot be "
                                 "written in XML"),
                            Line("0x1004", "Fail to generate dictionary node.")));
}

TEST_F(AssetExport, ObserverHearsOverWhichRecordItFails) {
    CCfgSettingDLPFilterExpression expression = Expression(L"e");
    expression.SetPattern(L"\x01");
    expression.SaveThis();
    CCfgSettingDLPFilterKeyword keyword = Keyword(L"k");
    keyword.SetSubkeywordList(L"");
    keyword.SaveThis();
    CExportListener listener;
    std::string strOut = AS_IT_WAS;
    EXPECT_FALSE(DigitalAssets::Export(Subjects(SUBJECT_EXPRESSION, {L"e"}), {}, strOut, &listener));
    EXPECT_FALSE(DigitalAssets::Export({}, Subjects(SUBJECT_KEYWORD, {L"k"}), strOut, &listener));
    EXPECT_FALSE(DigitalAssets::Export({}, Subjects(SUBJECT_KEYWORD, {L"absent"}), strOut, &listener));
    EXPECT_EQ(strOut, AS_IT_WAS);
    EXPECT_THAT(listener.m_vecFailed,
                ElementsAre(testing::MatchesRegex("ORVAL_SUB_CFG_DLP_EXPRESSIONe: .*U\\+0001.*"),
                            "ORVAL_SUB_CFG_DLP_KEYWORDk: the stored keywords are no dictionary document",
                            "ORVAL_SUB_CFG_DLP_KEYWORDabsent: record not found: ORVAL_SUB_CFG_DLP_KEYWORDabsent"));
}

TEST_F(AssetExport, TextIsAppendedToWhatIsThere) {
    std::string strOut = AS_IT_WAS;
    CXMLWriter writer(strOut);
    EXPECT_TRUE(DigitalAssets::Generate({}, {}, writer, nullptr));
    EXPECT_TRUE(DigitalAssets::Export({}, {}, strOut, nullptr));
    EXPECT_EQ(strOut, std::string(AS_IT_WAS) + "<digitalAssets command=\"overwrite\"/>" + DECLARATION + ROOT_START +
                          "<digitalAssets command=\"overwrite\"/></SAPolicy>");
}

TEST_F(AssetExport, LongDocumentIsOfferedPieceByPiece) {
    class CTextTaker : public CExportListener {
      public:
        void OnText(std::string& strText) override {
            ++m_iPieces;
            m_strTaken += strText;
            strText.clear();
        }
        int m_iPieces = 0;
        std::string m_strTaken;
    };
    std::vector<std::wstring> vecNames;
    for (const wchar_t* pName : {L"a", L"b", L"c"}) {
        CCfgSettingDLPFilterExpression record = Expression(pName);
        record.SetPattern(std::wstring(150000, L'p'));
        record.SaveThis();
        vecNames.emplace_back(pName);
    }
    const std::vector<OS::x_wstring> vecSubjects = Subjects(SUBJECT_EXPRESSION, vecNames);
    std::string strWhole;
    EXPECT_TRUE(DigitalAssets::Export(vecSubjects, {}, strWhole, nullptr));
    CTextTaker taker;
    std::string strRest;
    EXPECT_TRUE(DigitalAssets::Export(vecSubjects, {}, strRest, &taker));
    EXPECT_EQ(taker.m_strTaken + strRest, strWhole);
    EXPECT_EQ(taker.m_iPieces, 3);  // before the element that follows each pattern
}

TEST(AssetExportFaults, StoreFailingAtAnyCallFailsTheWhole) {
    CStoreFaults faults;
    CSettingsStore::Open("memory:");
    CDLPDigitalAssetsParser parser;
    const OS::x_wstring strDocument =
        L"<SAPolicy><digitalAssets><entity name='a' display_name='A'><regularExpression/></entity>"
        L"<dictionary name='k' display_name='K'/></digitalAssets></SAPolicy>";
    std::vector<OS::x_wstring> vecSkipped;
    ASSERT_EQ(parser.ImportDigitalAssets(L"", strDocument, vecSkipped), 0);
    const std::string strBefore = DumpStore(CSettingsStore::Current());
    for (std::size_t i = 1;; ++i) {
        faults.FailAt(i);
        CLogRecorder log;
        std::wstring strOut = L"as it was";
        const bool bDone = parser.ExportDigitalAssets(L"", {L"ORVAL_SUB_CFG_DLP_EXPRESSIONa"},
                                                      {L"ORVAL_SUB_CFG_DLP_KEYWORDk"}, strOut);
        if (!faults.IsReached()) {
            EXPECT_TRUE(bDone);
            EXPECT_THAT(faults.GetOperations(), ElementsAre("Begin", "Find", "Find", "Commit"));
            break;
        }
        EXPECT_FALSE(bDone);
        EXPECT_EQ(strOut, L"as it was");
        EXPECT_THAT(log.Messages(DBG::LEVEL_ERROR),
                    ElementsAre("Fail to generate digital access xml, Error: the store does not answer"));
        EXPECT_THAT(log.Messages(DBG::LEVEL_FAILURE), ElementsAre("Fail to generate xml file digital assets part."));
        faults.CountOnly();
        EXPECT_EQ(DumpStore(CSettingsStore::Current()), strBefore);
    }
}

TEST(AssetExportFaults, LackOfMemoryPassesAndLeavesTheTextAsItWas) {
    CStoreFaults faults;
    CSettingsStore::Open("memory:");
    faults.FailAt(2, CStoreFaults::MemoryFault);
    std::string strOut = AS_IT_WAS;
    EXPECT_THROW(DigitalAssets::Export({L"ORVAL_SUB_CFG_DLP_EXPRESSIONa"}, {}, strOut, nullptr), std::bad_alloc);
    EXPECT_EQ(strOut, AS_IT_WAS);
}
