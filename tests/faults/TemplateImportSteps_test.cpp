#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>

#include "platform/xml/FaultPoint.h"
#include "templates/DLPTemplateMgr.h"
#include "templates/DLPXmlNormalizer.h"
#include "tests/faults/ImportScript.h"
#include "tests/support/FaultStore.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TempDir.h"
#include "tests/templates/TemplateStore.h"

// An import with items of every fate is written down once. Then every step of it fails in turn, in every way, and the
// result, the lists, the whole log and the store must be those of the script. The import after it ends as if nothing
// had happened.

using namespace ImportScript;
using TemplateStore::Block;
using TemplateStore::Policy;
using TemplateStore::Rule;

namespace {

/** @return the items of one pass over the assets: created, updated, unchanged, kept */
void AddAssets(Script& script, bool bList) {
    const EFailure eFailure = bList ? EFailure::LISTS : EFailure::EXPRESSIONS;
    const std::string strFind =
        bList ? "CDLPDigitalAssetsParser::FindKeyword" : "CDLPDigitalAssetsParser::FindExpression";
    const std::string strKind = bList ? "keyword" : "expression";
    const std::string strSubject = bList ? "ORVAL_SUB_CFG_DLP_KEYWORD" : "ORVAL_SUB_CFG_DLP_EXPRESSION";
    const std::string strEdited = Assets(
        "0x111", bList ? "CDLPDigitalAssetsParser::EditDictionary()" : "CDLPDigitalAssetsParser::EditExpression()");
    const std::string strAdded = Assets(
        "0x111", bList ? "CDLPDigitalAssetsParser::AddDictionary()" : "CDLPDigitalAssetsParser::AddExpression()");
    const std::string strMissing = Assets("0x111", "Unable to find the " + strKind);
    const auto find = [&](const std::string& strName) {
        return SStep{EFrom::STORE, "Find", eFailure, {Assets("0x110", strFind + ", internalName = " + strName)}};
    };
    const auto found = [&](const std::string& strName) {
        return Lines{Assets("0x111", strFind),
                     Assets("0x102", "there exists a " + strKind + " with the same internal name: " + strName)};
    };
    /** Expressions are read without an operation of the XML layer, lists with that of their markup. */
    const auto edit = [&](std::vector<SStep> vecSteps, Lines vecBefore, const std::string& strSaved) {
        if (bList) {
            vecSteps.push_back({EFrom::XML, "AppendMarkup", eFailure, std::move(vecBefore)});
            vecBefore.clear();
        }
        if (!strSaved.empty()) {
            vecSteps.push_back({EFrom::STORE, "Save", eFailure, std::move(vecBefore), strSubject + strSaved});
            vecBefore.clear();
        }
        vecBefore.push_back(strEdited);
        return SItem{std::move(vecSteps), std::move(vecBefore)};
    };
    script.push_back(edit({find("new")}, {strMissing}, "new"));
    script.back().vecLeft.push_back(strAdded);
    script.push_back(edit({find("user")}, found("user"), "user"));
    script.push_back(edit({find("same")}, found("same"), ""));
    Lines vecKept = found("kept");
    vecKept.push_back(Assets("0x102", "existed one is pre-defined but imported one is not, skip"));
    script.push_back({{find("kept")}, vecKept, EList::ASSETS, L"kept"});
}

/** @return the lookup of a template, and what is logged when it was answered */
SStep FindTemplate(const std::string& strName) {
    return {EFrom::STORE,
            "Find",
            EFailure::LOOKUP,
            {Manager("0x110", "CTemplateMgr::FindTemplate, iSearchField = 2, strFieldValue = " + strName)}};
}
Lines Answered(bool bFound) {
    return {Manager("0x102", "CTemplateMgr::GetTemplateList successfully"),
            Manager("0x111", bFound ? "CTemplateMgr::FindTemplate" : "Unable to find the template")};
}

/** A template that is stored replaces it, or finds it unchanged. */
SItem ReplaceTemplate(const wchar_t* pName, bool bChanged, int iStored) {
    SItem item{{FindTemplate(OS::Utf8Lenient(pName))}, {}, EList::IMPORTED, pName};
    item.vecSteps.push_back({EFrom::XML, "AppendMarkup", EFailure::IMPORT, Answered(true)});
    item.vecSteps.push_back(
        {EFrom::STORE, "Count", EFailure::COUNT, {Manager("0x110", "CTemplateMgr::EditTemplate (pTemplate = ")}});
    item.vecLeft = {Manager("0x102", "CTemplateMgr::GetTemplateList successfully"), Manager("0x102", "isBuildin = 0"),
                    Manager("0x110", "CTemplateMgr::SaveSetting, vecTemplateList.size() = " + std::to_string(iStored))};
    if (bChanged) {
        item.vecSteps.push_back({EFrom::STORE, "Save", EFailure::SAVE, std::move(item.vecLeft),
                                 "ORVAL_SUB_CFG_DLP_TEMPLATE" + OS::Utf8Lenient(pName)});
        item.vecLeft = {};
    }
    item.vecLeft.push_back(Manager("0x110", "CTemplateMgr::SaveSetting successfully"));
    item.vecLeft.push_back(Manager("0x111", "CTemplateMgr::EditTemplate = 1"));
    return item;
}

SItem CreateTemplate(const wchar_t* pName) {
    return {{FindTemplate(OS::Utf8Lenient(pName)),
             {EFrom::XML, "AppendMarkup", EFailure::IMPORT, Answered(false)},
             {EFrom::STORE, "Save", EFailure::IMPORT, {}, "ORVAL_SUB_CFG_DLP_TEMPLATE" + OS::Utf8Lenient(pName)}},
            {},
            EList::IMPORTED,
            pName};
}

SItem UnsupportedTemplate() {
    return {{},
            {Manager("0x1003",
                     "Skip this template since it contain unsupported digital assets (strInternalName = bad, "
                     "strDisplayName = bad)")},
            EList::SKIPPED,
            L"bad"};
}

/** What comes before the assets, from the beginning of the unit of work. */
void AddBeginning(Script& script) {
    const Lines vecCategories = {Manager("0x110", "CTemplateMgr::MakeCategoryMap()")};
    script.push_back(
        {{{EFrom::STORE, "Begin", EFailure::IMPORT, {Manager("0x110", "CTemplateMgr::ImportTemplateImpl()")}},
          {EFrom::XML, "XPathSelectNodes", EFailure::CATEGORIES, vecCategories},
          {EFrom::XML, "XPathSelectNodes", EFailure::CATEGORIES, vecCategories},
          {EFrom::STORE,
           "Begin",
           EFailure::EXPRESSIONS,
           {Assets("0x110", "CDLPDigitalAssetsParser::CheckImportVersion()"),
            Assets("0x111", "CDLPDigitalAssetsParser::CheckImportVersion(), result = 1")}},
          {EFrom::XML,
           "XPathSelectNodes",
           EFailure::EXPRESSIONS,
           {Assets("0x110", "CDLPDigitalAssetsParser::ImportEntity()")}}}});
}

/** The end of one pass and the beginning of the other. */
SItem BetweenThePasses() {
    return {{{EFrom::XML,
              "XPathSelectNodes",
              EFailure::LISTS,
              {Assets("0x111", "CDLPDigitalAssetsParser::ImportEntity()")}}}};
}

SItem AfterThePasses() {
    return {{{EFrom::STORE,
              "Commit",
              EFailure::LISTS,
              {Assets("0x111", "CDLPDigitalAssetsParser::ImportDictionary()")},
              "",
              true}},
            {Assets("0x111", "CDLPDigitalAssetsParser::ImportDigitalAssets()")}};
}

SItem End() {
    return {{{EFrom::STORE, "Commit", EFailure::IMPORT, {}, "", true}},
            {Manager("0x111", "CTemplateMgr::ImportTemplateImpl")}};
}

std::string CheckEntered(const std::string& strText) {
    return Manager("0x110", "CTemplateMgr::CheckImportTemplate(strXmlContent = " + strText + ")");
}

Lines Entered(const std::string& strText, bool bOlder) {
    return {Manager("0x110",
                    "CTemplateMgr::ImportTemplate(strXmlContent length = [" + std::to_string(strText.size()) + "])"),
            Manager("0x110", "CTemplateMgr::CheckFormat()"),
            Manager("0x111", std::string("CTemplateMgr::CheckFormat() bNeedConvert = ") + (bOlder ? "1" : "0"))};
}

/** The steps that read the document; the line about its format comes after them. */
SItem Beginning(const std::string& strText, bool bOlder) {
    Lines vecBefore = Entered(strText, bOlder);
    const std::string strLeft = vecBefore.back();
    vecBefore.pop_back();
    return {
        {{EFrom::XML, "LoadXML", EFailure::FORMAT, vecBefore}, {EFrom::XML, "XPathSelectSingleNode", EFailure::FORMAT}},
        {strLeft}};
}

const std::string RULES =
    Rule(Block("ENTITY", "user") + Block("KEYWORD", "user"), "OR") + Rule(Block("KEYWORD", "user"));

/** @return an asset whose names are all this one */
std::string Asset(const std::string& strElement, const std::string& strName, const std::string& strInner) {
    return "<" + strElement + " name=\"" + strName + "\" display_name=\"" + strName + "\" pre-defined=\"false\">" +
           strInner + "</" + strElement + ">";
}
std::string Template(const std::string& strName, const std::string& strRules = RULES) {
    return "<template name=\"" + strName + "\" display_name=\"" + strName + "\">" + strRules + "</template>";
}

std::string Standard() {
    std::string strAssets;
    for (const char* pName : {"new", "user", "same", "kept"}) {
        strAssets += Asset("entity", pName, "<regularExpression>imported</regularExpression>");
        strAssets += Asset("dictionary", pName, "<keyword>imported</keyword>");
    }
    strAssets += Asset("entity", "bare", "") + "<entity name=\"nameless\"/><dictionary display_name=\"nameless\"/>";
    return Policy(Template("new") + Template("user") + Template("same") + Template("kept") +
                      Template("bad", Rule(Block("ENTITY", "unknown"))) + Template(""),
                  "<industries><industry name=\"i\"><template_id>new</template_id><template_id>user</template_id>"
                  "</industry></industries><regions><region name=\"r\"><template_id>new</template_id></region>"
                  "</regions><digitalAssets>" +
                      strAssets + "</digitalAssets>");
}

Script StandardScript() {
    const std::string strText = Standard();
    Script script{Beginning(strText, false)};
    AddBeginning(script);
    AddAssets(script, false);
    script.push_back(
        {{{EFrom::STORE,
           "Find",
           EFailure::EXPRESSIONS,
           {Assets("0x110", "CDLPDigitalAssetsParser::FindExpression, internalName = bare")}}},
         {Assets("0x111", "Unable to find the expression"), Assets("0x1004", "Fail to find tag ., skip entity: b"),
          Assets("0x1004", "CDLPDigitalAssetsParser::AddExpression() fail to add expression.")},
         EList::ASSETS,
         L"bare"});
    script.push_back(BetweenThePasses());
    AddAssets(script, true);
    script.push_back(AfterThePasses());
    script.push_back({{{EFrom::XML, "XPathSelectNodes", EFailure::IMPORT, {CheckEntered(strText)}},
                       {EFrom::STORE, "FindHeld", EFailure::IMPORT},
                       {EFrom::STORE, "FindHeld", EFailure::IMPORT},
                       {EFrom::XML,
                        "XPathSelectNodes",
                        EFailure::IMPORT,
                        {Manager("0x102", "expression internal name unknown is invalid"),
                         Manager("0x111", "CTemplateMgr::CheckImportTemplate")}}}});
    script.push_back(CreateTemplate(L"new"));
    script.push_back(ReplaceTemplate(L"user", true, 4));
    script.push_back(ReplaceTemplate(L"same", false, 4));
    Lines vecKept = Answered(true);
    vecKept.push_back(Manager("0x102", "existed one is pre-defined but imported one is not, skip"));
    script.push_back({{FindTemplate("kept")}, vecKept, EList::SKIPPED, L"kept"});
    script.push_back(UnsupportedTemplate());
    script.push_back({{},
                      {Manager("0x1003",
                               "Skip this template since it's name attribute is empty (strInternalName = , "
                               "strDisplayName = )")},
                      EList::SKIPPED,
                      L""});
    script.push_back(End());
    return script;
}

std::string OlderTemplate(const std::string& strName, const std::string& strRules) {
    return "<template name=\"" + strName + "\" displayName=\"" + strName + "\">" + strRules + "</template>";
}

/** The map takes "older" to "user"; the built-in template is dropped. */
std::string Older() {
    return "<SAPolicy><complianceTemplates>" +
           OlderTemplate("new", Rule(Block("ENTITY", "older") + Block("KEYWORD", "older"))) +
           "<template name=\"gone\" builtin=\"1\"/>" +
           OlderTemplate("user", Rule(Block("KEYWORD", "older")) + Rule(Block("ENTITY", "older"))) +
           OlderTemplate("bad", Rule(Block("KEYWORD", "unmapped"))) + "</complianceTemplates></SAPolicy>";
}

/** @return Older() in the standard layout */
std::string Converted() {
    const auto converted = [](const std::string& strName, const std::string& strRules) {
        return "<template name=\"" + strName + "\" display_name=\"" + strName +
               "\" pre-defined=\"false\" severity=\"medium\">" + strRules + "</template>";
    };
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><SAPolicy template_version=\"3.0.1000\" "
           "localization_language=\"\"><complianceTemplates command=\"overwrite\">" +
           converted("new", Rule(Block("ENTITY", "user") + Block("KEYWORD", "user"))) +
           converted("user", Rule(Block("KEYWORD", "user")) + Rule(Block("ENTITY", "user"))) +
           converted("bad", Rule(Block("KEYWORD", "unmapped"))) + "</complianceTemplates></SAPolicy>";
}

/** The conversion of one template, with the lines over the name of each of its blocks. */
SItem ConvertTemplate(const std::vector<Lines>& vecBlocks) {
    const std::string strTemplate = "CDLPXmlNormalizer::NormalizeTemplate()";
    const std::string strBlocks = "CDLPXmlNormalizer::NormalizeBuildingBlocks()";
    SItem item{{{EFrom::XML, "AppendChild", EFailure::CONVERSION, {Manager("0x110", strTemplate)}}},
               {Manager("0x111", strBlocks), Manager("0x111", strTemplate)}};
    for (const char* pOperation :
         {"SetAttribute", "SetAttribute", "SetAttribute", "RemoveAttribute", "RemoveAttribute"}) {
        item.vecSteps.push_back({EFrom::XML, pOperation, EFailure::CONVERSION});
    }
    item.vecSteps.push_back({EFrom::XML, "XPathSelectNodes", EFailure::CONVERSION, {Manager("0x110", strBlocks)}});
    for (const Lines& vecBlock : vecBlocks) {
        item.vecSteps.push_back({EFrom::XML, "SetAttribute", EFailure::CONVERSION, vecBlock});
    }
    return item;
}

void AddConversion(Script& script) {
    const std::string strMap = "CDLPXmlNormalizer::MapDigitalAssetsSourceName()";
    const Lines vecMapped = {Manager("0x110", strMap), Manager("0x111", strMap)};
    const Lines vecUnmapped = {Manager("0x110", strMap),
                               Manager("0x1003", "can't map digital asset source name: unmapped"),
                               Manager("0x111", strMap)};
    script.push_back({{{EFrom::XML,
                        "XPathSelectNodes",
                        EFailure::CONVERSION,
                        {Manager("0x110", "CDLPXmlNormalizer::InitDigitalAssetsMappingTable()"),
                         Manager("0x110", "CDLPXmlNormalizer::NormailzeXml()"),
                         Manager("0x110", "CDLPXmlNormalizer::GetAllTemplateNodes()")}},
                       {EFrom::XML,
                        "CreateNode",
                        EFailure::CONVERSION,
                        {Manager("0x111", "CDLPXmlNormalizer::GetAllTemplateNodes()")}}}});
    script.push_back(ConvertTemplate({vecMapped, vecMapped}));
    script.push_back({{}, {Manager("0x110", "CDLPXmlNormalizer::NormalizeTemplate()")}});
    script.push_back(ConvertTemplate({vecMapped, vecMapped}));
    script.push_back(ConvertTemplate({vecUnmapped}));
    SItem wrap{
        {{EFrom::XML,
          "XPathSelectSingleNode",
          EFailure::CONVERSION,
          {Manager("0x110", "CDLPXmlNormalizer::WrapTemplateList()")}},
         {EFrom::XML, "SetAttribute", EFailure::CONVERSION},
         {EFrom::XML, "Declaration", EFailure::ROOT, {Assets("0x110", "CDLPDigitalAssetsParser::GenerateRootXML()")}}}};
    for (const char* pOperation : {"StartElement", "Attribute", "Attribute"}) {
        wrap.vecSteps.push_back({EFrom::XML, pOperation, EFailure::ROOT});
    }
    for (const char* pOperation : {"EndElement", "LoadXML", "XPathSelectSingleNode", "AppendChild"}) {
        wrap.vecSteps.push_back({EFrom::XML, pOperation, EFailure::CONVERSION});
    }
    wrap.vecLeft = {Manager("0x111", "CDLPXmlNormalizer::WrapTemplateList()"),
                    Manager("0x111", "CDLPXmlNormalizer::NormailzeXml()")};
    script.push_back(std::move(wrap));
}

Script OlderScript() {
    Script script{Beginning(Older(), true)};
    AddConversion(script);
    AddBeginning(script);
    script.push_back(BetweenThePasses());
    script.push_back(AfterThePasses());
    script.push_back({{{EFrom::XML, "SaveXML", EFailure::IMPORT},  // for the line about the text
                       {EFrom::XML, "XPathSelectNodes", EFailure::IMPORT, {CheckEntered(Converted())}},
                       {EFrom::STORE, "FindHeld", EFailure::IMPORT},
                       {EFrom::STORE, "FindHeld", EFailure::IMPORT},
                       {EFrom::XML,
                        "XPathSelectNodes",
                        EFailure::IMPORT,
                        {Manager("0x102", "keyword internal name unmapped is invalid"),
                         Manager("0x111", "CTemplateMgr::CheckImportTemplate")}}}});
    script.push_back(CreateTemplate(L"new"));
    script.push_back(ReplaceTemplate(L"user", true, 4));
    script.push_back(UnsupportedTemplate());
    script.push_back(End());
    return script;
}

class TemplateImportSteps : public testing::Test {
  protected:
    using Rows = std::map<std::string, std::string>;  ///< by subject

    void SetUp() override {
        m_folder.Write("config/cfg_dlp_da_map.txt", "older\tuser\n");
        std::filesystem::current_path(m_folder.Path());
        CDLPXmlNormalizer().InitDigitalAssetsMappingTable();
        DisarmAll();
    }
    void TearDown() override {
        DisarmAll();
        std::filesystem::current_path("/");
    }

    void DisarmAll() {
        XmlFaults::FailAt(0);
        XmlFaults::FindNothingAt(0);
        m_faults.CountOnly();
    }

    void Fill() {
        CSettingsStore::Close();
        std::filesystem::remove_all(m_folder.Path("store"));
        CSettingsStore::Open(m_strUrl);
        for (const char* pName : {"user", "kept"}) {
            TemplateStore::AddExpression(pName, *pName == 'k');
            TemplateStore::AddKeyword(pName, *pName == 'k');
            TemplateStore::AddTemplate({pName, "stored", "", *pName == 'k'});
        }
        Import(Policy(Template("same"),
                      "<digitalAssets>" + Asset("entity", "same", "<regularExpression>imported</regularExpression>") +
                          Asset("dictionary", "same", "<keyword>imported</keyword>") + "</digitalAssets>"));
    }

    static SOutcome Import(const std::string& strText) {
        SOutcome outcome;
        CLogRecorder log;
        try {
            outcome.iResult = CTemplateMgr(L"").ImportTemplate(OS::WideText(strText), outcome.vecImported,
                                                               outcome.vecSkipped, outcome.vecAssets);
        } catch (...) {
            outcome.bPassed = true;
        }
        for (const std::string& strLine : log.Lines()) {
            const std::string strPointer = "(pTemplate = ";
            const std::size_t iPointer = strLine.find(strPointer);
            outcome.vecLines.push_back(iPointer == std::string::npos ? strLine
                                                                     : strLine.substr(0, iPointer + strPointer.size()));
        }
        return outcome;
    }

    static Rows StoredRows() {
        Rows rows;
        std::istringstream dump(TemplateStore::Dump());
        for (std::string strLine; std::getline(dump, strLine);) {
            const std::size_t iSubject = strLine.find('"') + 1;
            rows[strLine.substr(iSubject, strLine.find('"', iSubject) - iSubject)] = strLine;
        }
        return rows;
    }

    static void ExpectSame(const SOutcome& outcome, const SOutcome& expected) {
        EXPECT_EQ(outcome.iResult, expected.iResult);
        EXPECT_EQ(outcome.bPassed, expected.bPassed);
        EXPECT_EQ(outcome.vecImported, expected.vecImported);
        EXPECT_EQ(outcome.vecSkipped, expected.vecSkipped);
        EXPECT_EQ(outcome.vecAssets, expected.vecAssets);
        EXPECT_EQ(outcome.vecLines, expected.vecLines);
    }

    /** Runs the import undisturbed, then with each step of the kind failing. */
    void ExpectScript(const std::string& strText, const Script& script, EFrom eFrom,
                      const std::vector<SThrown>& vecThrown) {
        Fill();
        const Rows before = StoredRows();
        DisarmAll();
        const SOutcome whole = Expected(script, eFrom, 0, INJECTED);
        ExpectSame(Import(strText), whole);
        const Lines vecOperations = Operations(script, eFrom);
        EXPECT_EQ(PerformedOperations(eFrom), vecOperations);
        m_after = StoredRows();
        Lines vecChanged;
        for (const auto& [strSubject, strRow] : m_after) {
            if (before.count(strSubject) == 0 || before.at(strSubject) != strRow) {
                vecChanged.push_back(strSubject);
            }
        }
        Lines vecSaved = whole.vecSaved;
        std::sort(vecSaved.begin(), vecSaved.end());
        ASSERT_EQ(vecChanged, vecSaved);
        for (const SThrown& thrown : vecThrown) {
            for (std::size_t n = 1; n <= vecOperations.size(); ++n) {
                SCOPED_TRACE(vecOperations[n - 1] + ", step " + std::to_string(n) + ": " + thrown.strText);
                Fill();
                DisarmAll();
                Arm(eFrom, n, thrown);
                const SOutcome outcome = Import(strText);
                DisarmAll();
                const SOutcome expected = Expected(script, eFrom, n, thrown);
                ExpectSame(outcome, expected);
                ExpectStored(before, expected.vecSaved);
                ExpectNextImportIsWhole(strText, whole);
            }
        }
    }

    void Arm(EFrom eFrom, std::size_t n, const SThrown& thrown) {
        if (eFrom == EFrom::STORE) {
            m_faults.FailAt(n, thrown.fnThrow);
        } else {
            XmlFaults::FailAt(static_cast<int>(n));
        }
    }

    Lines PerformedOperations(EFrom eFrom) const {
        return eFrom == EFrom::STORE ? m_faults.GetOperations()
                                     : Lines(XmlFaults::GetOperations().begin(), XmlFaults::GetOperations().end());
    }

    void ExpectStored(Rows expected, const Lines& vecSaved) const {
        for (const std::string& strSubject : vecSaved) {
            expected[strSubject] = m_after.at(strSubject);
        }
        EXPECT_EQ(StoredRows(), expected);
    }

    void ExpectNextImportIsWhole(const std::string& strText, const SOutcome& whole) const {
        const SOutcome outcome = Import(strText);
        EXPECT_EQ(outcome.iResult, 0);
        EXPECT_EQ(outcome.vecImported, whole.vecImported);
        EXPECT_EQ(outcome.vecSkipped, whole.vecSkipped);
        EXPECT_EQ(outcome.vecAssets, whole.vecAssets);
        EXPECT_EQ(StoredRows(), m_after);
    }

    CTempDir m_folder;
    std::string m_strUrl = TemplateStore::MEMORY;
    CStoreFaults m_faults;
    Rows m_after;
};

}  // namespace

TEST_F(TemplateImportSteps, StoreThrowingAnythingAtAnyCall) {
    ExpectScript(Standard(), StandardScript(), EFrom::STORE, AllThrown());
}

TEST_F(TemplateImportSteps, StoreInAFileFailingAtAnyCall) {
    m_strUrl = "sqlite:" + m_folder.Path("store/settings.db");
    ExpectScript(Standard(), StandardScript(), EFrom::STORE, {AllThrown().front()});
}

TEST_F(TemplateImportSteps, XmlLayerFailingAtAnyOperation) {
    ExpectScript(Standard(), StandardScript(), EFrom::XML, {INJECTED});
}

TEST_F(TemplateImportSteps, StoreThrowingAnythingAtAnyCallOverAnOlderLayout) {
    ExpectScript(Older(), OlderScript(), EFrom::STORE, AllThrown());
}

TEST_F(TemplateImportSteps, XmlLayerFailingAtAnyOperationOverAnOlderLayout) {
    ExpectScript(Older(), OlderScript(), EFrom::XML, {INJECTED});
}
