#include "api/CDLPDigitalAssetsParser.h"
#include "digital_assets/CAssetImport.h"
#include "digital_assets/DigitalAssets.h"
#include "platform/localization/StringTable.h"
#include "tests/digital_assets/AssetFixture.h"
#include "xml/CPolicyDocument.h"

using DigitalAssets::EImport;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char PATTERN[] = "<regularExpression>p</regularExpression>";

std::string Policy(const std::string& strAssets, const std::string& strAttributes = "") {
    return "<SAPolicy" + strAttributes + "><digitalAssets>" + strAssets + "</digitalAssets></SAPolicy>";
}

/** @param strMore further attributes, each with a blank before it */
std::string Entity(const std::string& strName, const std::string& strDisplayName, const std::string& strMore = "",
                   const std::string& strChildren = PATTERN) {
    return "<entity name=\"" + strName + "\" display_name=\"" + strDisplayName + "\"" + strMore + ">" + strChildren +
           "</entity>";
}

std::string List(const std::string& strName, const std::string& strDisplayName, const std::string& strMore = "") {
    return "<dictionary name=\"" + strName + "\" display_name=\"" + strDisplayName + "\"" + strMore + "/>";
}

class AssetImport : public CAssetFixture {
  protected:
    int Import(const std::string& strXml, const std::wstring& strScope = L"") {
        return CDLPDigitalAssetsParser().ImportDigitalAssets(strScope, OS::WideText(strXml), m_vecSkipped);
    }
    std::vector<std::string> Skipped() const {
        std::vector<std::string> vecTexts;
        for (const OS::x_wstring& strText : m_vecSkipped) {
            vecTexts.push_back(OS::Utf8Lenient(strText));
        }
        return vecTexts;
    }
    /** Imports with an observer. */
    std::vector<std::string> Items(const std::string& strXml) {
        CImportListener listener;
        CPolicyDocument document{std::string_view(strXml)};
        EXPECT_EQ(DigitalAssets::Import(EImport::ALL, L"", document, m_vecSkipped, &listener), 0);
        return listener.m_vecItems;
    }
    static CCfgSettingDLPFilterExpression Stored(const std::wstring& strName) {
        CCfgSettingDLPFilterExpression record(SUBJECT_EXPRESSION + strName);
        record.GetThis();
        return record;
    }
    static CCfgSettingDLPFilterKeyword StoredList(const std::wstring& strName) {
        CCfgSettingDLPFilterKeyword record(SUBJECT_KEYWORD + strName);
        record.GetThis();
        return record;
    }
    static void SaveBuiltIn(const std::wstring& strName) {
        CCfgSettingDLPFilterExpression expression = Expression(strName);
        expression.SetIsBuildIn(true);
        expression.SetPattern(L"built in");
        expression.SaveThis();
        CCfgSettingDLPFilterKeyword keyword = Keyword(strName);
        keyword.SetIsBuildIn(true);
        keyword.SetDescription(L"built in");
        keyword.SaveThis();
    }

    std::vector<OS::x_wstring> m_vecSkipped;
};

std::string Incompatible(const std::string& strOperation, const std::string& strElement) {
    return "CDLPDigitalAssetsParser::" + strOperation + " Unable to find node /SAPolicy/digitalAssets/" + strElement +
           ".                    The xml file format is incompatible.";
}

}  // namespace

// Language and version

TEST_F(AssetImport, DocumentThatIsNoPolicyIsRefused) {
    for (const char* const pText :
         {"", "no markup", "<SAPolicy>", "<sapolicy/>", "<a><SAPolicy/></a>", "<!DOCTYPE SAPolicy><SAPolicy/>"}) {
        CLogRecorder log;
        EXPECT_EQ(Import(pText), 2) << pText;
        EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::CheckImportVersion()"),
                                             Line("0x1004", "Fail to find node SAPolicy"),
                                             Line("0x1004", "Invalid localization_language, skip import.")));
        EXPECT_EQ(CDLPDigitalAssetsParser::GetVersion(), L"3.0.1000");
    }
}

TEST_F(AssetImport, ZeroCharacterAnywhereMakesItNoPolicy) {
    const OS::x_wstring strText = OS::WideText(Policy(Entity("a", "A"))) + std::wstring(1, L'\0');
    EXPECT_EQ(CDLPDigitalAssetsParser().ImportDigitalAssets(L"", strText, m_vecSkipped), 2);
    EXPECT_EQ(Dump(), "");
}

TEST_F(AssetImport, OtherLanguageIsRefusedAndChangesNothing) {
    CDLPDigitalAssetsParser::SetLanguage(L"English");
    CLogRecorder log;
    EXPECT_EQ(Import(Policy(Entity("a", "A"), " template_version=\"9\" localization_language=\"French\"")), 2);
    EXPECT_THAT(log.Lines(),
                ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::CheckImportVersion()"),
                            Line("0x102", "old language is: English, new language is: French, not match, skip import"),
                            Line("0x1004", "Invalid localization_language, skip import.")));
    EXPECT_EQ(Dump(), "");
    EXPECT_THAT(Skipped(), IsEmpty());
    EXPECT_EQ(CDLPDigitalAssetsParser::GetVersion(), L"3.0.1000");
}

TEST_F(AssetImport, LanguageIsRefusedWhenNoneIsSet) {
    CLogRecorder log;
    EXPECT_EQ(Import(Policy("", " localization_language=\"French\"")), 2);
    EXPECT_THAT(log.Messages(DBG::LEVEL_INFO),
                ElementsAre("old language is: , new language is: French, not match, skip import"));
}

TEST_F(AssetImport, DocumentWithoutALanguageIsTakenInAny) {
    CDLPDigitalAssetsParser::SetLanguage(L"English");
    EXPECT_EQ(Import(Policy(Entity("a", "A"))), 0);
    EXPECT_EQ(Import(Policy(Entity("b", "B"), " localization_language=\"\"")), 0);
    EXPECT_THAT(Dump(), testing::HasSubstr("name=\"b\""));
}

TEST_F(AssetImport, LanguageIsComparedWithoutCase) {
    CDLPDigitalAssetsParser::SetLanguage(L"EN");
    EXPECT_EQ(Import(Policy(Entity("a", "A"), " localization_language=\"en\"")), 0);
    EXPECT_EQ(Import(Policy(Entity("a", "A"), " localization_language=\"en \"")), 2);
}

TEST_F(AssetImport, LanguageIsComparedWithTheTextAndKept) {
    SYS::SetStringW(SYS::STRING_LANGUAGE, L"English");
    EXPECT_EQ(Import(Policy("", " localization_language=\"English\"")), 0);
    SYS::SetStringW(SYS::STRING_LANGUAGE, L"French");
    EXPECT_EQ(Import(Policy("", " localization_language=\"English\"")), 0);
}

TEST_F(AssetImport, TextOfTheLanguageIsNotAskedForByADocumentWithoutOne) {
    SYS::SetStringW(SYS::STRING_LANGUAGE, L"English");
    EXPECT_EQ(Import(Policy("")), 0);
    SYS::SetStringW(SYS::STRING_LANGUAGE, L"French");
    EXPECT_EQ(CDLPDigitalAssetsParser::GetLanguage(), L"French");
}

TEST_F(AssetImport, VersionBecomesTheParsersEvenWhenEmpty) {
    EXPECT_EQ(Import(Policy("", " template_version=\" 4.1 \"")), 0);
    EXPECT_EQ(CDLPDigitalAssetsParser::GetVersion(), L" 4.1 ");
    EXPECT_EQ(Import(Policy("")), 0);
    EXPECT_EQ(CDLPDigitalAssetsParser::GetVersion(), L"");
    std::wstring strRoot;
    EXPECT_TRUE(CDLPDigitalAssetsParser().GenerateRootXML(strRoot));
    EXPECT_THAT(OS::Utf8Lenient(strRoot), testing::HasSubstr("template_version=\"\""));
}

// The three operations

TEST_F(AssetImport, BothKindsAreReadExpressionsFirst) {
    CLogRecorder log;
    EXPECT_EQ(Import(Policy(List("k", "K") + Entity("e", "E"))), 0);
    EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::CheckImportVersion()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::CheckImportVersion(), result = 1"),
                                         Line("0x110", "CDLPDigitalAssetsParser::ImportEntity()"),
                                         Line("0x110", "CDLPDigitalAssetsParser::FindExpression, internalName = e"),
                                         Line("0x111", "Unable to find the expression"),
                                         Line("0x111", "CDLPDigitalAssetsParser::EditExpression()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::AddExpression()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::ImportEntity()"),
                                         Line("0x110", "CDLPDigitalAssetsParser::FindKeyword, internalName = k"),
                                         Line("0x111", "Unable to find the keyword"),
                                         Line("0x111", "CDLPDigitalAssetsParser::EditDictionary()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::AddDictionary()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::ImportDictionary()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::ImportDigitalAssets()")));
    EXPECT_EQ(log.Records().at(0).strSource, ".\\util_ParseDLPDigitalAssets.cpp");
    EXPECT_EQ(Dump(),
              "expressions subject=\"ORVAL_SUB_CFG_DLP_EXPRESSIONe\" name=\"e\" display_name=\"E\" type=\"Generic\" "
              "pattern=\"p\"\n"
              "keyword_lists subject=\"ORVAL_SUB_CFG_DLP_KEYWORDk\" name=\"k\" display_name=\"K\" condition=\"All\" "
              "text=\"<dictionary name=\\\"k\\\" display_name=\\\"K\\\"/>\"\n");
}

TEST_F(AssetImport, ExpressionsAloneAreRead) {
    CLogRecorder log;
    const OS::x_wstring strXml = OS::WideText(Policy(List("k", "K") + Entity("e", "E")));
    EXPECT_EQ(CDLPDigitalAssetsParser().ImportExpression(L"", strXml, m_vecSkipped), 0);
    EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::CheckImportVersion()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::CheckImportVersion(), result = 1"),
                                         Line("0x110", "CDLPDigitalAssetsParser::ImportEntity()"),
                                         Line("0x110", "CDLPDigitalAssetsParser::FindExpression, internalName = e"),
                                         Line("0x111", "Unable to find the expression"),
                                         Line("0x111", "CDLPDigitalAssetsParser::EditExpression()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::AddExpression()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::ImportEntity()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::ImportEntityWithCheck()")));
    EXPECT_THAT(Dump(), testing::Not(testing::HasSubstr("keyword_lists")));
}

TEST_F(AssetImport, KeywordListsAloneAreRead) {
    CLogRecorder log;
    const OS::x_wstring strXml = OS::WideText(Policy(List("k", "K") + Entity("e", "E")));
    EXPECT_EQ(CDLPDigitalAssetsParser().ImportKeyword(L"", strXml, m_vecSkipped), 0);
    EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::CheckImportVersion()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::CheckImportVersion(), result = 1"),
                                         Line("0x110", "CDLPDigitalAssetsParser::FindKeyword, internalName = k"),
                                         Line("0x111", "Unable to find the keyword"),
                                         Line("0x111", "CDLPDigitalAssetsParser::EditDictionary()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::AddDictionary()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::ImportDictionary()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::ImportDigitalAssets()")));
    EXPECT_THAT(Dump(), testing::Not(testing::HasSubstr("expressions")));
}

TEST_F(AssetImport, EveryOperationNamesWhatItSkips) {
    SaveBuiltIn(L"n");
    const char FLAG[] = " pre-defined=\"false\"";
    const OS::x_wstring strXml = OS::WideText(Policy(Entity("n", "E", FLAG) + List("n", "K", FLAG)));
    EXPECT_EQ(CDLPDigitalAssetsParser().ImportKeyword(L"", strXml, m_vecSkipped), 0);
    EXPECT_EQ(CDLPDigitalAssetsParser().ImportExpression(L"", strXml, m_vecSkipped), 0);
    EXPECT_THAT(Skipped(), ElementsAre("K", "E"));
}

TEST_F(AssetImport, EveryOperationChecksTheLanguage) {
    const OS::x_wstring strXml = L"<SAPolicy localization_language='x'/>";
    CLogRecorder log;
    EXPECT_EQ(CDLPDigitalAssetsParser().ImportExpression(L"", strXml, m_vecSkipped), 2);
    EXPECT_EQ(CDLPDigitalAssetsParser().ImportKeyword(L"", strXml, m_vecSkipped), 2);
    EXPECT_THAT(log.Messages(DBG::LEVEL_FAILURE), ElementsAre("Invalid localization_language, skip import.",
                                                              "Invalid localization_language, skip import."));
}

TEST_F(AssetImport, DocumentWithoutAssetsIsNoError) {
    for (const char* const pText : {"<SAPolicy/>", "<SAPolicy><digitalAssets/></SAPolicy>",
                                    "<SAPolicy><entity name=\"a\" display_name=\"A\"/></SAPolicy>"}) {
        CLogRecorder log;
        EXPECT_EQ(Import(pText), 0);
        EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::CheckImportVersion()"),
                                             Line("0x111", "CDLPDigitalAssetsParser::CheckImportVersion(), result = 1"),
                                             Line("0x110", "CDLPDigitalAssetsParser::ImportEntity()"),
                                             Line("0x111", "CDLPDigitalAssetsParser::ImportEntity()"),
                                             Line("0x111", "CDLPDigitalAssetsParser::ImportDictionary()"),
                                             Line("0x111", "CDLPDigitalAssetsParser::ImportDigitalAssets()")));
    }
}

TEST_F(AssetImport, AssetsOfEveryDigitalAssetsElementAreRead) {
    EXPECT_EQ(Import("<SAPolicy><digitalAssets>" + Entity("a", "A") + "</digitalAssets><other/><digitalAssets>" +
                     Entity("b", "B") + "<group>" + Entity("c", "C") + "</group></digitalAssets></SAPolicy>"),
              0);
    EXPECT_EQ(Stored(L"a").GetPattern(), L"p");
    EXPECT_EQ(Stored(L"b").GetPattern(), L"p");
    EXPECT_THROW(Stored(L"c"), OS::CException);
}

TEST_F(AssetImport, PassOverADocumentThatWasNotReadFails) {
    const OS::x_wstring strNoXml = L"no markup";
    CPolicyDocument document(strNoXml);
    DigitalAssets::CAssetImport import(L"", document, m_vecSkipped, nullptr);
    CLogRecorder log;
    EXPECT_FALSE(import.RunPass(DigitalAssets::EXPRESSION_PASS));
    EXPECT_FALSE(import.RunPass(DigitalAssets::KEYWORD_PASS));
    EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::ImportEntity()"),
                                         Line("0x1004", Incompatible("ImportEntity()", "entity")),
                                         Line("0x1004", Incompatible("ImportDictionary", "dictionary"))));
}

// Which items are taken

TEST_F(AssetImport, ItemWithoutNameOrDisplayNameIsPassedOverInSilence) {
    CLogRecorder log;
    EXPECT_EQ(Import(Policy(Entity("", "A") + Entity("a", "") + "<entity/>" + List("", "K") + List("k", "") +
                            "<dictionary/>")),
              0);
    EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::CheckImportVersion()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::CheckImportVersion(), result = 1"),
                                         Line("0x110", "CDLPDigitalAssetsParser::ImportEntity()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::ImportEntity()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::ImportDictionary()"),
                                         Line("0x111", "CDLPDigitalAssetsParser::ImportDigitalAssets()")));
    EXPECT_THAT(Skipped(), IsEmpty());
    EXPECT_EQ(Dump(), "");
}

TEST_F(AssetImport, BuiltInIsNotReplacedByUserItem) {
    SaveBuiltIn(L"n");
    const std::string strBefore = Dump();
    for (const char* const pFalse : {"false", "FALSE", "False"}) {
        const std::string strFlag = std::string(" pre-defined=\"") + pFalse + '"';
        m_vecSkipped.clear();
        CLogRecorder log;
        EXPECT_EQ(Import(Policy(Entity("n", "Mine", strFlag) + List("n", "My list", strFlag))), 0);
        EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::CheckImportVersion()"),
                                             Line("0x111", "CDLPDigitalAssetsParser::CheckImportVersion(), result = 1"),
                                             Line("0x110", "CDLPDigitalAssetsParser::ImportEntity()"),
                                             Line("0x110", "CDLPDigitalAssetsParser::FindExpression, internalName = n"),
                                             Line("0x111", "CDLPDigitalAssetsParser::FindExpression"),
                                             Line("0x102", "there exists a expression with the same internal name: n"),
                                             Line("0x102", "existed one is pre-defined but imported one is not, skip"),
                                             Line("0x111", "CDLPDigitalAssetsParser::ImportEntity()"),
                                             Line("0x110", "CDLPDigitalAssetsParser::FindKeyword, internalName = n"),
                                             Line("0x111", "CDLPDigitalAssetsParser::FindKeyword"),
                                             Line("0x102", "there exists a keyword with the same internal name: n"),
                                             Line("0x102", "existed one is pre-defined but imported one is not, skip"),
                                             Line("0x111", "CDLPDigitalAssetsParser::ImportDictionary()"),
                                             Line("0x111", "CDLPDigitalAssetsParser::ImportDigitalAssets()")));
        EXPECT_THAT(Skipped(), ElementsAre("Mine", "My list"));
        EXPECT_EQ(Dump(), strBefore);
    }
}

TEST_F(AssetImport, BuiltInIsReplacedByWhatDoesNotSayFalse) {
    const struct {
        const char* pAttribute;
        bool bBuiltIn;
    } aRows[] = {{"", false},
                 {" pre-defined=\"true\"", true},
                 {" pre-defined=\"TRUE\"", true},
                 {" pre-defined=\"no\"", false},
                 {" pre-defined=\"0\"", false},
                 {" pre-defined=\"\"", false},
                 {" pre-defined=\" false\"", false}};
    for (const auto& row : aRows) {
        SaveBuiltIn(L"n");
        EXPECT_EQ(Import(Policy(Entity("n", "Mine", row.pAttribute) + List("n", "Mine", row.pAttribute))), 0);
        EXPECT_EQ(Stored(L"n").IsBuiltIn(), row.bBuiltIn) << row.pAttribute;
        EXPECT_EQ(Stored(L"n").GetPattern(), L"p");
        EXPECT_EQ(StoredList(L"n").IsBuiltIn(), row.bBuiltIn) << row.pAttribute;
    }
    EXPECT_THAT(Skipped(), IsEmpty());
}

TEST_F(AssetImport, UserItemIsAlwaysReplaced) {
    for (const char* const pFlag : {"", " pre-defined=\"false\"", " pre-defined=\"true\""}) {
        Expression(L"n").SaveThis();
        CLogRecorder log;
        EXPECT_EQ(Import(Policy(Entity("n", "Mine", pFlag))), 0);
        EXPECT_EQ(Stored(L"n").GetPattern(), L"p");
        EXPECT_THAT(log.Lines(), ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::CheckImportVersion()"),
                                             Line("0x111", "CDLPDigitalAssetsParser::CheckImportVersion(), result = 1"),
                                             Line("0x110", "CDLPDigitalAssetsParser::ImportEntity()"),
                                             Line("0x110", "CDLPDigitalAssetsParser::FindExpression, internalName = n"),
                                             Line("0x111", "CDLPDigitalAssetsParser::FindExpression"),
                                             Line("0x102", "there exists a expression with the same internal name: n"),
                                             Line("0x111", "CDLPDigitalAssetsParser::EditExpression()"),
                                             Line("0x111", "CDLPDigitalAssetsParser::ImportEntity()"),
                                             Line("0x111", "CDLPDigitalAssetsParser::ImportDictionary()"),
                                             Line("0x111", "CDLPDigitalAssetsParser::ImportDigitalAssets()")));
    }
}

TEST_F(AssetImport, NamesAreComparedExactly) {
    SaveBuiltIn(L"n");
    EXPECT_EQ(Import(Policy(Entity("N", "Other", " pre-defined=\"false\"") +
                            Entity("n ", "Blank", " pre-defined=\"false\""))),
              0);
    EXPECT_EQ(Stored(L"N").GetPattern(), L"p");
    EXPECT_EQ(Stored(L"n ").GetPattern(), L"p");
    EXPECT_EQ(Stored(L"n").GetPattern(), L"built in");
}

TEST_F(AssetImport, RecordIsFoundByItsInternalNameWhateverItsSubject) {
    CCfgSettingDLPFilterExpression record = Expression(L"elsewhere");
    record.SetInternalName(L"n");
    record.SaveThis();
    EXPECT_EQ(Import(Policy(Entity("n", "Mine"))), 0);
    EXPECT_EQ(Stored(L"elsewhere").GetPattern(), L"p");
    EXPECT_THROW(Stored(L"n"), OS::CException);
}

TEST_F(AssetImport, FirstOfTwoStoredOfOneNameIsReplaced) {
    for (const wchar_t* const pSubject : {L"2", L"1", L"3"}) {
        CCfgSettingDLPFilterExpression expression = Expression(pSubject);
        expression.SetInternalName(L"n");
        expression.SaveThis();
        CCfgSettingDLPFilterKeyword keyword = Keyword(pSubject);
        keyword.SetInternalName(L"n");
        keyword.SaveThis();
    }
    EXPECT_EQ(Import(Policy(Entity("n", "Mine") + List("n", "Mine"))), 0);
    for (const wchar_t* const pSubject : {L"1", L"2", L"3"}) {
        const bool bFirst = std::wstring(pSubject) == L"1";
        OS::x_wstring strExpression;
        OS::x_wstring strKeyword;
        Stored(pSubject).GetNameW(strExpression);
        StoredList(pSubject).GetNameW(strKeyword);
        EXPECT_EQ(strExpression, bFirst ? L"Mine" : pSubject);
        EXPECT_EQ(strKeyword, bFirst ? L"Mine" : pSubject);
    }
}

TEST_F(AssetImport, NamesAreThoseWithoutPrefix) {
    EXPECT_EQ(Import("<SAPolicy xmlns='urn:x' xmlns:p='urn:x'><digitalAssets command='append'>" + Entity("a", "A") +
                     "<p:entity name='b' display_name='B'><regularExpression/></p:entity>" +
                     Entity("c", "C", "", "<p:regularExpression/>") + "</digitalAssets></SAPolicy>"),
              0);
    EXPECT_THAT(Skipped(), ElementsAre("C"));
    EXPECT_EQ(Dump(),
              "expressions subject=\"ORVAL_SUB_CFG_DLP_EXPRESSIONa\" name=\"a\" display_name=\"A\" type=\"Generic\" "
              "pattern=\"p\"\n");
    EXPECT_EQ(Import("<p:SAPolicy xmlns:p='urn:x'/>"), 2);
}

TEST_F(AssetImport, SecondItemOfANameMeetsTheFirst) {
    EXPECT_EQ(Import(Policy(Entity("n", "One", " pre-defined=\"true\"") +
                            Entity("n", "Two", " pre-defined=\"false\"", "<regularExpression>q</regularExpression>"))),
              0);
    EXPECT_THAT(Skipped(), ElementsAre("Two"));
    EXPECT_EQ(Stored(L"n").GetPattern(), L"p");
    EXPECT_EQ(Import(Policy(Entity("m", "One") + Entity("m", "Two", "", "<regularExpression>q</regularExpression>"))),
              0);
    EXPECT_THAT(Skipped(), ElementsAre("Two"));
    EXPECT_EQ(Stored(L"m").GetPattern(), L"q");
}

TEST_F(AssetImport, SkippedNamesAreAppendedInDocumentOrder) {
    m_vecSkipped = {L"before"};
    SaveBuiltIn(L"b");
    EXPECT_EQ(Import(Policy(List("b", "K", " pre-defined=\"false\"") + Entity("a", "A", "", "") +
                            Entity("b", "B", " pre-defined=\"false\"") + Entity("c", "C"))),
              0);
    EXPECT_THAT(Skipped(), ElementsAre("before", "A", "B", "K"));
}

// Expressions

TEST_F(AssetImport, ExpressionIsReadWhole) {
    EXPECT_EQ(
        Import(Policy("<entity name=\"n &amp; m\" type=\"Type 2\" caseSensitive=\"TRUE\" validator=\"Luhn\" "
                      "minLength=\"1\" maxLength=\"2\" suffixLength=\"3\" minLeftRadius=\"4\" maxLeftRadius=\"5\" "
                      "maxRightRadius=\"6\" display_name=\"d &lt;\" description=\"a&#10;b\" pre-defined=\"True\">"
                      "<examples>e</examples><patternForDisplay> f </patternForDisplay>"
                      "<alphabetCharset><![CDATA[<0-9>]]></alphabetCharset><regularExpression>\\d&amp;"
                      "</regularExpression><regularExpression>other</regularExpression></entity>"),
               L"the scope"),
        0);
    EXPECT_EQ(Dump(),
              "expressions subject=\"ORVAL_SUB_CFG_DLP_EXPRESSIONn & m\" name=\"n & m\" display_name=\"d <\" "
              "description=\"a\\nb\" pre_defined=1 scope=\"the scope\" type=\"Type 2\" validator=\"Luhn\" "
              "case_sensitive=1 min_length=1 max_length=2 suffix_length=3 pattern=\"\\\\d&\" "
              "alphabet_charset=\"<0-9>\" display_format=\" f \" example=\"e\"\n");
}

TEST_F(AssetImport, ReplacedExpressionLosesEveryFieldThatTheItemDoesNotCarry) {
    const std::string strNumbers =
        " minLength=\"1\" maxLength=\"2\" suffixLength=\"3\" minLeftRadius=\"4\" maxLeftRadius=\"5\" "
        "maxRightRadius=\"6\"";
    const std::string strChildren =
        "<regularExpression>p</regularExpression><alphabetCharset>c</alphabetCharset><patternForDisplay>f"
        "</patternForDisplay><examples>e</examples>";
    const std::string strMore = " caseSensitive=\"true\" validator=\"v\" description=\"d\" pre-defined=\"true\"";
    for (const char* const pType : {"Type 1", "Type 2", "Type 3"}) {
        EXPECT_EQ(
            Import(Policy(Entity("n", "d", " type=\"" + std::string(pType) + '"' + strNumbers + strMore, strChildren)),
                   L"scope"),
            0);
        EXPECT_EQ(Import(Policy(Entity("n", "D", "", "<regularExpression/>"))), 0);
        EXPECT_EQ(Dump(),
                  "expressions subject=\"ORVAL_SUB_CFG_DLP_EXPRESSIONn\" name=\"n\" display_name=\"D\" "
                  "type=\"Generic\"\n");
    }
    EXPECT_THAT(Skipped(), IsEmpty());
}

TEST_F(AssetImport, ExpressionHasTheNumbersOfItsTypeAlone) {
    const std::string strNumbers =
        " minLength=\"1\" maxLength=\"2\" suffixLength=\"3\" minLeftRadius=\"4\" maxLeftRadius=\"5\" "
        "maxRightRadius=\"6\"";
    const struct {
        const char* pType;
        const char* pStored;
    } aRows[] = {
        {"Generic", "\n"},
        {"Type 1", " min_length=1 max_length=2 alphabet_charset=\"c\"\n"},
        {"Type 2", " min_length=1 max_length=2 suffix_length=3 alphabet_charset=\"c\"\n"},
        {"Type 3", " min_left_radius=4 max_left_radius=5 max_right_radius=6 alphabet_charset=\"c\"\n"},
    };
    for (const auto& row : aRows) {
        EXPECT_EQ(Import(Policy(Entity("n", "N", std::string(" type=\"") + row.pType + '"' + strNumbers,
                                       "<regularExpression/><alphabetCharset>c</alphabetCharset>"))),
                  0);
        EXPECT_EQ(Dump(), std::string("expressions subject=\"ORVAL_SUB_CFG_DLP_EXPRESSIONn\" name=\"n\" "
                                      "display_name=\"N\" type=\"") +
                              row.pType + '"' + row.pStored);
    }
}

TEST_F(AssetImport, FlagIsSetByTheWordTrueAlone) {
    const std::pair<const char*, bool> aRows[] = {{"true", true},   {"TRUE", true},   {"tRuE", true},
                                                  {"false", false}, {" true", false}, {"true ", false},
                                                  {"1", false},     {"yes", false},   {"", false}};
    for (const auto& [pText, bSet] : aRows) {
        const std::string strFlag = std::string("=\"") + pText + '"';
        EXPECT_EQ(Import(Policy(Entity("n", "N", " caseSensitive" + strFlag + " pre-defined" + strFlag) +
                                List("n", "N", " pre-defined" + strFlag))),
                  0);
        EXPECT_EQ(Stored(L"n").IsCaseSensitive(), bSet) << pText;
        EXPECT_EQ(Stored(L"n").IsBuiltIn(), bSet) << pText;
        EXPECT_EQ(StoredList(L"n").IsBuiltIn(), bSet) << pText;
        CSettingsStore::Open("memory:");
    }
}

TEST_F(AssetImport, TypeIsReadWithoutCaseAndStoredAsItIsSpelled) {
    const struct {
        const char* pType;
        const wchar_t* pStored;
    } aRows[] = {{"type 1", L"Type 1"}, {"TYPE 2", L"Type 2"},  {"tYpE 3", L"Type 3"},   {"GENERIC", L"Generic"},
                 {"", L"Generic"},      {"Type 4", L"Generic"}, {"Type 1 ", L"Generic"}, {"Type1", L"Generic"}};
    for (const auto& row : aRows) {
        EXPECT_EQ(Import(Policy(Entity("n", "N", std::string(" minLength=\"9\" type=\"") + row.pType + '"',
                                       "<regularExpression/><alphabetCharset>c</alphabetCharset>"))),
                  0);
        EXPECT_EQ(Stored(L"n").GetType(), row.pStored) << row.pType;
        EXPECT_EQ(Stored(L"n").GetAlphabetCharset(), std::wstring(row.pStored) == L"Generic" ? L"" : L"c");
    }
}

TEST_F(AssetImport, NumbersAreReadAsFarAsTheyGo) {
    const struct {
        const char* pText;
        int iNumber;
    } aRows[] = {{"12abc", 12},
                 {" \t+7", 7},
                 {"-5", -5},
                 {"- 5", 0},
                 {"0x10", 0},
                 {"", 0},
                 {"abc", 0},
                 {"007", 7},
                 {"+", 0},
                 {"+-7", 0},
                 {"7 8", 7},
                 {"\xc2\xa0"
                  "7",
                  0},
                 {"\xd9\xa7", 0},
                 {"2147483647", 2147483647},
                 {"2147483648", 2147483647},
                 {"-2147483648", -2147483647 - 1},
                 {"-2147483649", -2147483647 - 1},
                 {"99999999999999999999", 2147483647},
                 {"-99999999999", -2147483647 - 1}};
    for (const auto& row : aRows) {
        EXPECT_EQ(Import(Policy(Entity("n", "N", std::string(" type=\"Type 1\" minLength=\"") + row.pText + '"',
                                       "<regularExpression/><alphabetCharset/>") +
                                List("n", "N", std::string(" type=\"Threshold\" threshold=\"") + row.pText + '"'))),
                  0);
        EXPECT_EQ(Stored(L"n").GetMinLength(), row.iNumber) << row.pText;
        EXPECT_EQ(StoredList(L"n").GetThreshold(), row.iNumber) << row.pText;
    }
}

TEST_F(AssetImport, ExpressionWithoutAPatternIsSkipped) {
    Expression(L"old").SaveThis();
    const std::string strBefore = Dump();
    CLogRecorder log;
    EXPECT_EQ(
        Import(Policy(Entity("new", "Abc", " type=\"Type 1\"", "<examples/>") + Entity("old", "\xc3\xa4", "", ""))), 0);
    // The texts of this one line are the first bytes of the wide ones, up to a zero byte.
    EXPECT_THAT(log.Lines(),
                ElementsAre(Line("0x110", "CDLPDigitalAssetsParser::CheckImportVersion()"),
                            Line("0x111", "CDLPDigitalAssetsParser::CheckImportVersion(), result = 1"),
                            Line("0x110", "CDLPDigitalAssetsParser::ImportEntity()"),
                            Line("0x110", "CDLPDigitalAssetsParser::FindExpression, internalName = new"),
                            Line("0x111", "Unable to find the expression"),
                            Line("0x1004", "Fail to find tag ., skip entity: A"),
                            Line("0x1004", "CDLPDigitalAssetsParser::AddExpression() fail to add expression."),
                            Line("0x110", "CDLPDigitalAssetsParser::FindExpression, internalName = old"),
                            Line("0x111", "CDLPDigitalAssetsParser::FindExpression"),
                            Line("0x102", "there exists a expression with the same internal name: old"),
                            Line("0x1004", "Fail to find tag ., skip entity: \xc3\xa4"),
                            Line("0x111", "CDLPDigitalAssetsParser::ImportEntity()"),
                            Line("0x111", "CDLPDigitalAssetsParser::ImportDictionary()"),
                            Line("0x111", "CDLPDigitalAssetsParser::ImportDigitalAssets()")));
    EXPECT_THAT(Skipped(), ElementsAre("Abc", "\xc3\xa4"));
    EXPECT_EQ(Dump(), strBefore);
}

TEST_F(AssetImport, MissingPatternIsLoggedWithTheFirstBytesOfTheDisplayName) {
    const std::pair<const char*, const char*> aRows[] = {
        {"\xc3\xa4", "\xc3\xa4"},  // U+00E4: E4, then zero
        {"\xc4\x80", ""},          // U+0100: zero at once
        {"\xe4\xb8\xad"
         "A",
         "-N"},                                    // U+4E2D: 2D 4E, then zero
        {"\xf0\x9f\x98\x80", ""},                  // U+1F600: zero at once
        {"\xf0\x9f\x98\x81", "\x01\xc3\xb6\x01"},  // U+1F601: 01 F6 01, then zero
    };
    for (const auto& [pDisplayName, pLogged] : aRows) {
        CLogRecorder log;
        EXPECT_EQ(Import(Policy(Entity("n", pDisplayName, "", ""))), 0);
        EXPECT_THAT(log.Messages(DBG::LEVEL_FAILURE),
                    ElementsAre(std::string("Fail to find tag ., skip entity: ") + pLogged,
                                "CDLPDigitalAssetsParser::AddExpression() fail to add expression."));
        EXPECT_THAT(Skipped(), testing::Contains(pDisplayName));
    }
}

TEST_F(AssetImport, TypedExpressionWithoutACharacterSetIsSkipped) {
    for (const char* const pType : {"Type 1", "type 2", "Type 3"}) {
        m_vecSkipped.clear();
        CLogRecorder log;
        EXPECT_EQ(Import(Policy(Entity("n", "Abc", std::string(" type=\"") + pType + '"'))), 0);
        EXPECT_THAT(log.Messages(DBG::LEVEL_FAILURE),
                    ElementsAre("Fail to find tag ./alphabetCharset, skip entity: Abc",
                                "CDLPDigitalAssetsParser::AddExpression() fail to add expression."));
        EXPECT_THAT(Skipped(), ElementsAre("Abc"));
        EXPECT_EQ(Dump(), "");
    }
}

TEST_F(AssetImport, StoredExpressionIsLeftAsItIsByOneWithoutACharacterSet) {
    Expression(L"n").SaveThis();
    const std::string strBefore = Dump();
    CLogRecorder log;
    EXPECT_EQ(Import(Policy(Entity("n", "Abc", " type=\"Type 2\""))), 0);
    EXPECT_THAT(log.Messages(DBG::LEVEL_FAILURE), ElementsAre("Fail to find tag ./alphabetCharset, skip entity: Abc"));
    EXPECT_THAT(Skipped(), ElementsAre("Abc"));
    EXPECT_EQ(Dump(), strBefore);
}

TEST_F(AssetImport, SkippedExpressionMayBeAddedLater) {
    EXPECT_EQ(Import(Policy(Entity("n", "N", "", "") + Entity("n", "N"))), 0);
    EXPECT_EQ(Stored(L"n").GetPattern(), L"p");
}

TEST_F(AssetImport, ChildrenAreLookedForAmongTheElementsOwn) {
    EXPECT_EQ(Import(Policy(Entity("n", "N", "", "<group><regularExpression/></group>") +
                            Entity("m", "M", "", "<RegularExpression/>"))),
              0);
    EXPECT_THAT(Skipped(), ElementsAre("N", "M"));
}

// Keyword lists

TEST_F(AssetImport, KeywordListIsReadWhole) {
    EXPECT_EQ(
        Import(Policy("<dictionary name=\"n\" type=\"distance\" threshold=\"3\" number=\"4\" display_name=\"d\" "
                      "description=\"about\" pre-defined=\"true\" own=\"'&quot;\">\n <keyword score=\"1\">a &amp; "
                      "b</keyword>\n <!-- c --><keyword/></dictionary>"),
               L"the scope"),
        0);
    EXPECT_EQ(
        Dump(),
        "keyword_lists subject=\"ORVAL_SUB_CFG_DLP_KEYWORDn\" name=\"n\" display_name=\"d\" description=\"about\" "
        "pre_defined=1 scope=\"the scope\" condition=\"Distance\" number=4 text=\"<dictionary name=\\\"n\\\" "
        "type=\\\"distance\\\" threshold=\\\"3\\\" number=\\\"4\\\" display_name=\\\"d\\\" description=\\\"about\\\" "
        "pre-defined=\\\"true\\\" own=\\\"'&quot;\\\"><keyword score=\\\"1\\\">a &amp; b</keyword><!-- c "
        "--><keyword/></dictionary>\"\n");
}

TEST_F(AssetImport, ConditionIsReadWithoutCaseAndStoredAsItIsSpelled) {
    const struct {
        const char* pType;
        const wchar_t* pStored;
        int iThreshold;
        int iNumber;
    } aRows[] = {{"any", L"Any", 0, 0},           {"ALL", L"All", 0, 0},   {"THRESHOLD", L"Threshold", 3, 0},
                 {"Distance", L"Distance", 0, 4}, {"other", L"All", 0, 0}, {"", L"All", 0, 0}};
    for (const auto& row : aRows) {
        EXPECT_EQ(
            Import(Policy(List("n", "N", std::string(" threshold=\"3\" number=\"4\" type=\"") + row.pType + '"'))), 0);
        EXPECT_EQ(StoredList(L"n").GetCondition(), row.pStored) << row.pType;
        EXPECT_EQ(StoredList(L"n").GetThreshold(), row.iThreshold) << row.pType;
        EXPECT_EQ(StoredList(L"n").GetNumber(), row.iNumber) << row.pType;
    }
}

TEST_F(AssetImport, ReplacedListLosesEveryFieldThatTheItemDoesNotCarry) {
    EXPECT_EQ(
        Import(Policy(List("n", "N", " type=\"Threshold\" threshold=\"3\" description=\"d\" pre-defined=\"true\"")),
               L"scope"),
        0);
    CLogRecorder log;
    EXPECT_EQ(Import(Policy(List("n", "M"))), 0);
    EXPECT_THAT(log.Messages(DBG::LEVEL_LEAVE),
                ElementsAre("CDLPDigitalAssetsParser::CheckImportVersion(), result = 1",
                            "CDLPDigitalAssetsParser::ImportEntity()", "CDLPDigitalAssetsParser::FindKeyword",
                            "CDLPDigitalAssetsParser::EditDictionary()", "CDLPDigitalAssetsParser::ImportDictionary()",
                            "CDLPDigitalAssetsParser::ImportDigitalAssets()"));
    EXPECT_EQ(Dump(),
              "keyword_lists subject=\"ORVAL_SUB_CFG_DLP_KEYWORDn\" name=\"n\" display_name=\"M\" condition=\"All\" "
              "text=\"<dictionary name=\\\"n\\\" display_name=\\\"M\\\"/>\"\n");
}

TEST_F(AssetImport, TextsAreStoredAsTheyStand) {
    EXPECT_EQ(Import(Policy(Entity("&amp;amp; '", " \xe4\xb8\xad\xf0\x9f\x98\x80 ", " validator=\"&lt;&gt;\""))), 0);
    const CCfgSettingDLPFilterExpression record = Stored(L"&amp; '");
    OS::x_wstring strDisplayName;
    record.GetNameW(strDisplayName);
    EXPECT_EQ(strDisplayName, L" \u4e2d\U0001f600 ");
    EXPECT_EQ(record.GetValidator(), L"<>");
}

// What the observer hears

TEST_F(AssetImport, ObserverHearsTheFateOfEveryElement) {
    SaveBuiltIn(L"b");
    const std::string strDocument =
        Policy(Entity("a", "A") + Entity("b", "B", " pre-defined=\"false\"") + Entity("", "no name") + Entity("c", "") +
               "<entity/>" + Entity("d", "D", "", "") + Entity("e", "E", " type=\"Type 1\"") +
               List("b", "B", " pre-defined=\"FALSE\"") + List("k", "K") + List("", ""));
    EXPECT_THAT(Items(strDocument),
                ElementsAre("expression a|A created", "expression b|B skipped built in",
                            "expression |no name skipped no name", "expression c| skipped no display name",
                            "expression | skipped no name", "expression d|D skipped missing child (regularExpression)",
                            "expression e|E skipped missing child (alphabetCharset)", "keyword b|B skipped built in",
                            "keyword k|K created", "keyword | skipped no name"));
    EXPECT_THAT(Items(Policy(Entity("a", "A") + List("k", "other"))),
                ElementsAre("expression a|A unchanged", "keyword k|other updated"));
}

TEST_F(AssetImport, ItemIsUnchangedOnlyWhenEveryColumnIsEqual) {
    const std::string strDocument = Policy(
        Entity("a", "A", " type=\"Type 1\" minLength=\"1\" validator=\"v\" description=\"d\" pre-defined=\"true\"",
               "<regularExpression>p</regularExpression><alphabetCharset>c</alphabetCharset><examples>e</examples>") +
        "<dictionary name=\"k\" display_name=\"K\" type=\"Threshold\" "
        "threshold=\"2\"><keyword>w</keyword></dictionary>");
    EXPECT_THAT(Items(strDocument), ElementsAre("expression a|A created", "keyword k|K created"));
    const std::string strBefore = Dump();
    EXPECT_THAT(Items(strDocument), ElementsAre("expression a|A unchanged", "keyword k|K unchanged"));
    EXPECT_EQ(Dump(), strBefore);
    const std::pair<const char*, const char*> aChanges[] = {{"\"v\"", "\"V\""},
                                                            {">p<", ">P<"},
                                                            {">c<", ">C<"},
                                                            {">e<", ">E<"},
                                                            {"Length=\"1\"", "Length=\"2\""},
                                                            {"Type 1", "Type 2"},
                                                            {"\"A\"", "\"AA\""},
                                                            {"\"d\"", "\"D\""},
                                                            {"\"true\"", "\"yes\""}};
    for (const auto& [pOld, pNew] : aChanges) {
        std::string strChanged = strDocument;
        strChanged.replace(strChanged.find(pOld), std::string(pOld).size(), pNew);
        EXPECT_THAT(Items(strChanged), ElementsAre(testing::HasSubstr(" updated"), "keyword k|K unchanged")) << pOld;
        Items(strDocument);
    }
    std::string strKeyword = strDocument;
    strKeyword.replace(strKeyword.find(">w<"), 3, ">x<");
    EXPECT_THAT(Items(strKeyword), ElementsAre("expression a|A unchanged", "keyword k|K updated"));
}

TEST_F(AssetImport, OtherScopeIsAChange) {
    const std::string strDocument = Policy(Entity("a", "A"));
    for (const wchar_t* const pScope : {L"one", L"two"}) {
        EXPECT_EQ(Import(strDocument, pScope), 0);
        EXPECT_EQ(Stored(L"a").Row().GetText(AssetColumn::SCOPE), OS::Utf8Lenient(pScope));
    }
}

TEST_F(AssetImport, MarkOfAModifiedRecordStays) {
    CCfgSettingDLPFilterExpression record = Expression(L"a");
    record.SetIsModified(true);
    record.SaveThis();
    EXPECT_EQ(Import(Policy(Entity("a", "A"))), 0);
    EXPECT_TRUE(Stored(L"a").IsModified());
    EXPECT_EQ(Stored(L"a").GetPattern(), L"p");
}

TEST_F(AssetImport, ObserverHearsWhereEachElementStands) {
    const std::string strDocument =
        "\xef\xbb\xbf<?xml version=\"1.0\"?>\n<SAPolicy><digitalAssets>\n\t<entity "
        "name='\xc3\xa4'/><dictionary/> <entity/></digitalAssets></SAPolicy>";
    CImportListener listener;
    CPolicyDocument document{std::string_view(strDocument)};
    EXPECT_EQ(DigitalAssets::Import(EImport::ALL, L"", document, m_vecSkipped, &listener), 0);
    EXPECT_THAT(listener.m_vecOffsets, ElementsAre(strDocument.find("<entity name"), strDocument.find("<entity/>"),
                                                   strDocument.find("<dictionary/>")));
}

TEST_F(AssetImport, DocumentIsLeftAsItWasRead) {
    const std::string strDocument = Policy(Entity("a", "A") +
                                           "<dictionary name=\"k\" display_name=\"K\"><keyword>w"
                                           "</keyword></dictionary>");
    CPolicyDocument document{std::string_view(strDocument)};
    EXPECT_EQ(DigitalAssets::Import(EImport::ALL, L"", document, m_vecSkipped, nullptr), 0);
    std::string strAfter;
    document.Load().SaveUtf8(strAfter);
    EXPECT_EQ(strAfter, strDocument);
}

TEST_F(AssetImport, DoorsDoTheSame) {
    const std::string strDocument =
        Policy(Entity("a", "A") + Entity("b", "B", "", "") + "<dictionary name=\"k\" display_name=\"\xc3\xa4\"/>");
    CLogRecorder log;
    EXPECT_EQ(Import(strDocument), 0);
    const std::vector<std::string> vecLines = log.Lines();
    const std::string strDump = Dump();
    CSettingsStore::Open("memory:");
    log.Clear();
    const std::vector<OS::x_wstring> vecSkipped = std::exchange(m_vecSkipped, {});
    Items(strDocument);
    EXPECT_EQ(log.Lines(), vecLines);
    EXPECT_EQ(Dump(), strDump);
    EXPECT_EQ(m_vecSkipped, vecSkipped);
}
