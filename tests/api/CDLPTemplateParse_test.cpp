#include "api/CDLPTemplateParse.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <type_traits>

#include "api/CDLPDigitalAssetsParser.h"
#include "digital_assets/ImportObserver.h"
#include "templates/DLPTemplateMgr.h"
#include "tests/support/FaultStore.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TempDir.h"
#include "tests/templates/TemplateStore.h"
#include "xml/CPolicyDocument.h"

using TemplateStore::Block;
using TemplateStore::Policy;
using TemplateStore::Rule;

namespace {

using Lines = std::vector<std::string>;
using Names = std::vector<OS::x_wstring>;

constexpr char CANNOT_OPEN[] = "0x102 util_ParseDLPTemplate.cpp Get exception: Open DLP template policy file failed!";

std::string Template(const std::string& strName, const std::string& strRules = "") {
    return "<template name=\"" + strName + "\" display_name=\"" + strName + " shown\">" + strRules + "</template>";
}

OS::x_wstring Content(CDLPTemplateParse& parse) {
    OS::x_wstring strContent = L"before";
    parse.GetXMLContent(strContent);
    return strContent;
}

class TemplateParse : public testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::current_path(m_folder.Path());
        CSettingsStore::Open(TemplateStore::MEMORY);
    }
    void TearDown() override { std::filesystem::current_path("/"); }

    bool ImportFile(const std::string& strPath) {
        OS::x_wstring strWide = OS::WideText(strPath);
        return m_parse.ImportDLPTemplateFromFile(strWide);
    }

    /** @return whether the import of a file with this content answers true, and the template manager's result line */
    std::string Imported(const std::string& strContent) {
        const std::string strPath = m_folder.Write("policy.xml", strContent);
        CLogRecorder log;
        const bool bResult = ImportFile(strPath);
        std::string strLines;
        for (const DBG::CLogRecord& record : log.Records()) {
            if (record.strSource == ".\\util_ParseDLPTemplate.cpp") {
                strLines += " " + OS::Utf8Lenient(record.strMessage);
            }
        }
        return (bResult ? "true" : "false") + strLines;
    }

    CTempDir m_folder;
    CDLPTemplateParse m_parse{L""};
};

using Door = CDLPTemplateParse;
using SubjectSet = boost::shared_ptr<std::set<std::wstring>>;
using Export = void (Door::*)(const OS::x_wstring&, const Names&, OS::x_wstring&);
using ExportWithSets = void (Door::*)(const OS::x_wstring&, const Names&, OS::x_wstring&, SubjectSet&, SubjectSet&);

template <class Expected, class Actual>
constexpr bool IsOfType(Actual) {
    return std::is_same_v<Expected, Actual>;
}

static_assert(!std::is_default_constructible_v<Door> && std::is_constructible_v<Door, OS::x_wstring>);
static_assert(std::is_copy_constructible_v<Door> && std::is_copy_assignable_v<Door> && !std::is_polymorphic_v<Door>);
static_assert(IsOfType<void (Door::*)(OS::x_wstring&)>(&Door::GetXMLContent));
static_assert(IsOfType<bool (Door::*)(Names&, Names&)>(&Door::ParseContent));
static_assert(IsOfType<bool (Door::*)(const Names&, const Names&, OS::x_wstring, OS::x_wstring, OS::x_wstring)>(
    &Door::SaveToXMLStr));
static_assert(IsOfType<int (Door::*)(const OS::x_wstring&, const OS::x_wstring&, Names&, Names&, Names&)>(
    &Door::DoTemplateImport));
static_assert(IsOfType<Export>(static_cast<Export>(&Door::DoTemplateExport)));
static_assert(IsOfType<ExportWithSets>(static_cast<ExportWithSets>(&Door::DoTemplateExport)));
static_assert(IsOfType<bool (Door::*)(OS::x_wstring&)>(&Door::ImportDLPTemplateFromFile));

/** What one way of importing a document does. */
struct SOutcome {
    int iResult = 0;
    Names vecImported;
    Names vecSkipped;
    Names vecAssets;
    Lines vecLog;
    std::string strDump;
};

/** Listens, as the shell's tool does. */
class CListener : public CImportObserver {
  public:
    void OnItem(const SImportItem&) override { ++m_iItems; }
    std::size_t m_iItems = 0;
};

/** Runs an import on the same store each time. */
template <class F>
SOutcome OutcomeOf(const F& fnImport) {
    CSettingsStore::Open(TemplateStore::MEMORY);
    TemplateStore::AddExpression("Card", true);
    TemplateStore::AddTemplate({"BuiltIn", "old", "", true});
    TemplateStore::AddTemplate({"User", "old"});
    CDLPDigitalAssetsParser::SetVersion(L"3.0.1000");
    SOutcome outcome;
    CLogRecorder log;
    fnImport(outcome);
    outcome.vecLog = log.Lines();
    for (std::string& strLine : outcome.vecLog) {
        if (strLine.find("EditTemplate (pTemplate = ") != std::string::npos) {
            strLine = "EditTemplate entered";
        }
    }
    outcome.strDump = TemplateStore::Dump();
    return outcome;
}

}  // namespace

TEST_F(TemplateParse, ContentIsKeptAsItIs) {
    CDLPTemplateParse parse(L" no <markup ");
    EXPECT_EQ(Content(parse), L" no <markup ");
}

TEST_F(TemplateParse, CopiesShareNothing) {
    CDLPTemplateParse first(L"first");
    CDLPTemplateParse second(first);
    first.SaveToXMLStr({}, {}, L"n", L"", L"");
    EXPECT_EQ(Content(second), L"first");
    second = first;
    EXPECT_EQ(Content(second), Content(first));
    first.SaveToXMLStr({}, {}, L"m", L"", L"");
    EXPECT_NE(Content(second), Content(first));
    const OS::x_wstring strContent = Content(first);
    CDLPTemplateParse& same = first;
    first = same;
    EXPECT_EQ(Content(first), strContent);
}

TEST_F(TemplateParse, RulesAreAppendedOnEachCall) {
    CDLPTemplateParse parse(OS::WideText("<template>" + Rule(Block("KEYWORD", "a") + Block("ENTITY", "b", "OR")) +
                                         Rule(Block("KEYWORD", "c"), "AND") + "</template>"));
    Names vecRules = {L"before"};
    Names vecOperators;
    EXPECT_TRUE(parse.ParseContent(vecRules, vecOperators));
    EXPECT_EQ(vecRules, (Names{L"before", L"K:a\tOR\tP:b(0)", L"K:c"}));
    EXPECT_EQ(vecOperators, (Names{L"SKIP", L"AND"}));
    EXPECT_TRUE(parse.ParseContent(vecRules, vecOperators));
    EXPECT_EQ(vecRules.size(), 5U);
    EXPECT_EQ(vecOperators.size(), 4U);
}

TEST_F(TemplateParse, ContentThatIsNoTemplateHasNoRules) {
    for (const wchar_t* pContent : {L"", L"text", L"<other><matchRule/></other>"}) {
        CDLPTemplateParse parse(pContent);
        Names vecRules;
        Names vecOperators;
        EXPECT_TRUE(parse.ParseContent(vecRules, vecOperators));
        EXPECT_TRUE(vecRules.empty());
        EXPECT_TRUE(vecOperators.empty());
    }
}

TEST_F(TemplateParse, SavedTemplateIsTheContentAndAUsersOne) {
    CDLPTemplateParse parse(L"<template name=\"old\" pre-defined=\"true\"/>");
    EXPECT_TRUE(parse.SaveToXMLStr({L"P:a(2) AND K:b", L"K:c"}, {L"OR"}, L"Name", L"Display", L"Description"));
    EXPECT_EQ(Content(parse),
              LR"(<template name="Name" display_name="Display" description="Description" pre-defined="false">)"
              LR"(<matchRule operation="OR"><buildingBlock sourceType="ENTITY" entityHits="2" sourceName="a"/>)"
              LR"(<buildingBlock sourceType="KEYWORD" sourceName="b" operation="AND"/></matchRule></template>)");
}

TEST_F(TemplateParse, SavedRulesAreReadBack) {
    CDLPTemplateParse parse(L"");
    const Names vecRules = {L"P:a(2)\tAND\tK:b", L"K:c\tOR\tP:d(0)"};
    const Names vecOperators = {L"OR", L"SKIP"};
    parse.SaveToXMLStr(vecRules, vecOperators, L"n", L"d", L"x");
    Names vecReadRules;
    Names vecReadOperators;
    parse.ParseContent(vecReadRules, vecReadOperators);
    EXPECT_EQ(vecReadRules, vecRules);
    EXPECT_EQ(vecReadOperators, vecOperators);
}

TEST_F(TemplateParse, TextThatXmlCannotCarryLeavesTheContent) {
    CDLPTemplateParse parse(L"<template name=\"old\"/>");
    CLogRecorder log;
    EXPECT_TRUE(parse.SaveToXMLStr({}, {}, L"n", OS::x_wstring(1, L'\x01'), L""));
    EXPECT_EQ(Content(parse), L"<template name=\"old\"/>");
    EXPECT_EQ(log.Messages(0x1003).size(), 1U);
}

TEST_F(TemplateParse, DocumentIsImportedWithTheScope) {
    Names vecImported;
    Names vecSkipped;
    Names vecAssets;
    EXPECT_EQ(m_parse.DoTemplateImport(L"scope", OS::WideText(Policy(Template("T") + "<template/>")), vecImported,
                                       vecSkipped, vecAssets),
              0);
    EXPECT_EQ(vecImported, Names{L"T shown"});
    EXPECT_EQ(vecSkipped, Names{L""});
    EXPECT_NE(TemplateStore::Dump().find("scope=\"scope\""), std::string::npos);
    EXPECT_EQ(m_parse.DoTemplateImport(L"", L"<other/>", vecImported, vecSkipped, vecAssets), 1);
}

TEST_F(TemplateParse, TemplatesAreExported) {
    TemplateStore::AddExpression("Card");
    TemplateStore::AddTemplate({"T", "t", Rule(Block("ENTITY", "Card"))});
    OS::x_wstring strPlain;
    m_parse.DoTemplateExport(L"scope", {L"T"}, strPlain);
    EXPECT_NE(strPlain.find(L"<template name=\"T\""), std::wstring::npos);
    OS::x_wstring strWithSets;
    boost::shared_ptr<std::set<std::wstring>> pExpressions;
    boost::shared_ptr<std::set<std::wstring>> pKeywords;
    m_parse.DoTemplateExport(L"scope", {L"T"}, strWithSets, pExpressions, pKeywords);
    EXPECT_EQ(strWithSets, strPlain);
    EXPECT_EQ(*pExpressions, std::set<std::wstring>{L"ORVAL_SUB_CFG_DLP_EXPRESSIONCard"});
    EXPECT_TRUE(pKeywords->empty());
}

TEST_F(TemplateParse, ExportThatFailsEmptiesTheText) {
    TemplateStore::AddTemplate({"T", "\x01"});
    OS::x_wstring strText = L"before";
    m_parse.DoTemplateExport(L"", {L"T"}, strText);
    EXPECT_EQ(strText, L"");
}

TEST_F(TemplateParse, FileIsImportedWithAnEmptyScope) {
    EXPECT_EQ(Imported(Policy(Template("T"))), "true nImportResult value is = 0");
    EXPECT_EQ(TemplateStore::Dump(),
              "templates subject=\"ORVAL_SUB_CFG_DLP_TEMPLATET\" name=\"T\" "
              "display_name=\"T shown\" element=\"<template name=\\\"T\\\"/>\"\n");
}

TEST_F(TemplateParse, ResultLineIsTheLastOfAFileImport) {
    const std::string strPath = m_folder.Write("policy.xml", Policy(Template("T")));
    CLogRecorder log;
    EXPECT_TRUE(ImportFile(strPath));
    const Lines vecLines = log.Lines();
    EXPECT_EQ(Lines(vecLines.end() - 2, vecLines.end()),
              (Lines{"0x111 DLPTemplateMgr.cpp CTemplateMgr::ImportTemplate result = 0",
                     "0x102 util_ParseDLPTemplate.cpp nImportResult value is = 0"}));
}

TEST_F(TemplateParse, BytesBeforeTheMarkupArePassedOver) {
    for (const char* pStart : {"\xEF\xBB\xBF", "some text\n", "\xFF\xFE\x80", "\r\n \t"}) {
        CSettingsStore::Open(TemplateStore::MEMORY);
        const std::string strXml = "<?xml version=\"1.0\"?>" + Policy(Template("T"));
        EXPECT_EQ(Imported(pStart + strXml), "true nImportResult value is = 0");
        EXPECT_NE(TemplateStore::Dump(), "");
    }
}

TEST_F(TemplateParse, FileWithoutMarkupImportsNothing) {
    for (const std::string strContent : {"", "no markup", "\xEF\xBB\xBF", "\xFF"}) {
        EXPECT_EQ(Imported(strContent), "true");
    }
    EXPECT_EQ(TemplateStore::Dump(), "");
}

TEST_F(TemplateParse, FailedImportIsOnlyLogged) {
    EXPECT_EQ(Imported("<other/>"), "true nImportResult value is = 1");
    EXPECT_EQ(Imported("<not closed"), "true nImportResult value is = 1");
    EXPECT_EQ(Imported(Policy("")), "true nImportResult value is = 3");
    EXPECT_EQ(TemplateStore::Dump(), "");
}

TEST_F(TemplateParse, FileThatCannotBeOpenedIsLogged) {
    const std::string strFile = m_folder.Write("file", "x");
    for (const std::string& strPath : {std::string(), m_folder.Path("none.xml"), m_folder.Path(), strFile + "/x",
                                       strFile + '\0', strFile + '\0' + "x"}) {
        CLogRecorder log;
        EXPECT_FALSE(ImportFile(strPath)) << strPath;
        EXPECT_EQ(log.Lines(), Lines{CANNOT_OPEN});
    }
}

TEST_F(TemplateParse, PathThatIsNoTextIsLogged) {
    OS::x_wstring strPath(1, static_cast<wchar_t>(0xD800));
    CLogRecorder log;
    EXPECT_FALSE(m_parse.ImportDLPTemplateFromFile(strPath));
    ASSERT_EQ(log.Lines().size(), 1U);
    EXPECT_EQ(log.Lines()[0].find("0x102 util_ParseDLPTemplate.cpp Get exception: "), 0U);
}

TEST_F(TemplateParse, PathMayBeWrittenWithBackslashes) {
    m_folder.Write("a/b/policy \xC3\xA9.xml", Policy(Template("T")));
    EXPECT_TRUE(ImportFile("a\\b\\policy \xC3\xA9.xml"));
    EXPECT_NE(TemplateStore::Dump(), "");
}

TEST_F(TemplateParse, FileThatIsNotUtf8ImportsNothing) {
    const std::string strXml = Policy(Template("a") + Template("b"));
    std::string strBad = strXml;
    strBad[strXml.find("\"b\"") + 1] = '\xE9';
    const std::string strAnswer = Imported("skipped" + strBad);
    EXPECT_EQ(strAnswer.find("false Get exception: "), 0U);
    EXPECT_NE(strAnswer.find(std::to_string(strXml.find("\"b\"") + 1)), std::string::npos) << strAnswer;
    EXPECT_EQ(TemplateStore::Dump(), "");
}

TEST_F(TemplateParse, FileOfUtf16ImportsNothing) {
    std::string strUtf16 = "\xFF\xFE";
    for (const char c : Policy(Template("T"))) {
        strUtf16 += c;
        strUtf16 += '\0';
    }
    EXPECT_EQ(Imported(strUtf16), "true nImportResult value is = 1");
    EXPECT_EQ(TemplateStore::Dump(), "");
}

TEST_F(TemplateParse, FileWithAZeroByteImportsNothing) {
    const std::string strXml = Policy(Template("T"));
    for (const std::size_t iPlace : {std::size_t{1}, strXml.size() / 2, strXml.size()}) {
        std::string strBad = strXml;
        strBad.insert(iPlace, 1, '\0');
        EXPECT_EQ(Imported(strBad), "true nImportResult value is = 1");
    }
    EXPECT_EQ(TemplateStore::Dump(), "");
    EXPECT_EQ(Imported(std::string(3, '\0') + strXml), "true nImportResult value is = 0");
}

TEST_F(TemplateParse, DeclaredEncodingIsIgnored) {
    EXPECT_EQ(Imported("<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + Policy(Template("\xC3\xA9"))),
              "true nImportResult value is = 0");
    EXPECT_NE(TemplateStore::Dump().find("name=\"\xC3\xA9\""), std::string::npos);
}

TEST_F(TemplateParse, LackOfMemoryDuringAFileImportGivesFalse) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    faults.FailAt(1, CStoreFaults::MemoryFault);
    EXPECT_EQ(Imported(Policy(Template("T"))), std::string("false Get exception: ") + std::bad_alloc().what());
    EXPECT_EQ(TemplateStore::Dump(), "");
}

TEST_F(TemplateParse, EachDoorDoesTheSame) {
    m_folder.Write("config/cfg_dlp_da_map.txt", "# nothing\n");
    const std::string strAssets =
        "<digitalAssets><entity name=\"Card\" display_name=\"C\" pre-defined=\"false\"><regularExpression/></entity>"
        "<entity name=\"\xC3\xA9\" display_name=\"\xF0\x9F\x98\x80\"><regularExpression>x</regularExpression></entity>"
        "</digitalAssets><industries><industry name=\"i\"><template_id>User</template_id></industry></industries>";
    const std::string aDocuments[] = {
        Policy(Template("New", Rule(Block("ENTITY", "\xC3\xA9"))) + Template("User") + Template("BuiltIn") +
                   Template("Bad", Rule(Block("KEYWORD", "none"))) + "<template/>",
               strAssets),
        "<?xml version=\"1.0\" encoding=\"x\"?>\n<!-- \xC3\xA9 -->\r\n" + Policy("\r\n<template\tname='User' "
                                                                                 "display_name='&#xE9;'/>\n"),
        "<SAPolicy><regions/><complianceTemplates>\n<template name=\"User\" displayName=\"\xC3\xA9\">" +
            Rule(Block("ENTITY", "Card")) + "</template><template builtin=\"1\"/></complianceTemplates></SAPolicy>",
        "<SAPolicy/>",
        Policy(""),
        "<SAPolicy>",
        "<other/>",
    };
    for (const std::string& strXml : aDocuments) {
        const SOutcome wide = OutcomeOf([&](SOutcome& outcome) {
            outcome.iResult = m_parse.DoTemplateImport(L"", OS::WideText(strXml), outcome.vecImported,
                                                       outcome.vecSkipped, outcome.vecAssets);
        });
        CListener listener;
        const SOutcome utf8 = OutcomeOf([&](SOutcome& outcome) {
            CSettingsTransaction unit;
            CPolicyDocument document{std::string_view(strXml)};
            outcome.iResult = CTemplateMgr(L"").ImportDocument(document, outcome.vecImported, outcome.vecSkipped,
                                                               outcome.vecAssets, &listener);
            unit.Commit();
        });
        EXPECT_GE(listener.m_iItems, wide.vecImported.size() + wide.vecSkipped.size());
        const std::string strPath = m_folder.Write("policy.xml", strXml);
        const SOutcome file = OutcomeOf([&](SOutcome&) { EXPECT_TRUE(ImportFile(strPath)); });
        EXPECT_EQ(utf8.iResult, wide.iResult);
        EXPECT_EQ(utf8.vecImported, wide.vecImported);
        EXPECT_EQ(utf8.vecSkipped, wide.vecSkipped);
        EXPECT_EQ(utf8.vecAssets, wide.vecAssets);
        EXPECT_EQ(utf8.vecLog, wide.vecLog);
        EXPECT_EQ(utf8.strDump, wide.strDump);
        EXPECT_EQ(file.strDump, wide.strDump);
        Lines vecFileLog = wide.vecLog;
        vecFileLog.push_back("0x102 util_ParseDLPTemplate.cpp nImportResult value is = " +
                             std::to_string(wide.iResult));
        EXPECT_EQ(file.vecLog, vecFileLog);
    }
}
