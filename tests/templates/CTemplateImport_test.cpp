#include "templates/CTemplateImport.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/FaultStore.h"
#include "tests/templates/TemplateStore.h"
#include "xml/CPolicyDocument.h"

// What the observer of an import hears.

using TemplateStore::Block;
using TemplateStore::Policy;
using TemplateStore::Rule;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* KINDS[] = {"expression", "keyword", "template", "category", "section", "element"};
constexpr const char* DISPOSITIONS[] = {"created", "updated", "unchanged", "skipped", "failed"};
constexpr const char* REASONS[] = {"",         "no-name",        "no-display-name", "built-in",      "existing",
                                   "no-child", "unsupported",    "older-built-in",  "older-section", "no-template",
                                   "store",    "unknown-element"};

/** Writes what it hears as lines such as "template T (T shown) skipped built-in @12", the start tag behind the place.
 */
class CItemRecorder : public CImportObserver {
  public:
    explicit CItemRecorder(const std::string& strXml) : m_strXml(strXml) {}

    void OnItem(const SImportItem& item) override {
        std::string strLine = std::string(KINDS[static_cast<int>(item.eKind)]) + " " + item.strName + " (" +
                              item.strDisplayName + ") " + DISPOSITIONS[static_cast<int>(item.eDisposition)] + " " +
                              REASONS[static_cast<int>(item.eReason)];
        strLine += item.strDetail.empty() ? "" : " [" + item.strDetail + "]";
        if (item.IsUnknownReference()) {
            const bool bExpression = item.fault == ETemplateFault::UNKNOWN_EXPRESSION;
            strLine += (bExpression ? " -> expression " : " -> keyword ") + item.strFaulty;
        }
        for (const SForeignChild& foreign : item.vecForeign) {
            strLine += " foreign " + foreign.strElement + " [" + foreign.strReadAs + "]";
        }
        m_vecLines.push_back(strLine);
        m_vecPlaces.push_back(item.iOffset == std::string::npos ? "" : m_strXml.substr(item.iOffset, m_iShown));
    }

    const std::string& m_strXml;
    std::size_t m_iShown = 18;  ///< how much of the text at an item's place is kept
    Lines m_vecLines;
    Lines m_vecPlaces;
};

class ImportObserver : public testing::Test {
  protected:
    void SetUp() override {
        CSettingsStore::Open(TemplateStore::MEMORY);
        TemplateStore::AddExpression("Card");
    }

    int Import(const std::string& strXml, CImportObserver& observer) {
        CPolicyDocument document{std::string_view(strXml)};
        std::vector<OS::x_wstring> vecImported;
        std::vector<OS::x_wstring> vecSkipped;
        std::vector<OS::x_wstring> vecAssets;
        return CTemplateMgr(L"").ImportDocument(document, vecImported, vecSkipped, vecAssets, &observer);
    }

    Lines Heard(const std::string& strXml) {
        CItemRecorder observer(strXml);
        EXPECT_EQ(Import(strXml, observer), 0);
        return observer.m_vecLines;
    }
};

std::string Template(const std::string& strName, const std::string& strRules = "",
                     const std::string& strDisplayName = "shown") {
    return "<template name=\"" + strName + "\" display_name=\"" + strDisplayName + "\">" + strRules + "</template>";
}

}  // namespace

TEST_F(ImportObserver, EachTemplateHasOneFate) {
    TemplateStore::AddTemplate({"BuiltIn", "old", "", true});
    TemplateStore::AddTemplate({"User", "old"});
    EXPECT_EQ(Heard(Policy(Template("New") + Template("User") + Template("BuiltIn") + Template("", "", "d") +
                           Template("n", "", "") + Template("", "", "") + Template("New"))),
              (Lines{"template New (shown) created ", "template User (shown) updated ",
                     "template BuiltIn (shown) skipped built-in", "template  (d) skipped no-name",
                     "template n () skipped no-display-name", "template  () skipped no-name",
                     "template New (shown) unchanged "}));
}

TEST_F(ImportObserver, AssetsAreHeardOfFirst) {
    const Lines vecHeard =
        Heard(Policy(Template("T"),
                     "<digitalAssets><entity name=\"e\" display_name=\"E\"><regularExpression/></entity>"
                     "<dictionary name=\"d\" display_name=\"D\"/></digitalAssets>"));
    ASSERT_EQ(vecHeard.size(), 3U);
    EXPECT_EQ(vecHeard[0], "expression e (E) created ");
    EXPECT_EQ(vecHeard[1], "keyword d (D) created ");
    EXPECT_EQ(vecHeard[2], "template T (shown) created ");
}

TEST_F(ImportObserver, SecondImportIsUnchanged) {
    const std::string strXml = Policy(Template("T", Rule(Block("ENTITY", "Card"))),
                                      "<industries><industry name=\"i\"><template_id>T</template_id></industry>"
                                      "</industries>");
    EXPECT_EQ(Heard(strXml), Lines{"template T (shown) created "});
    EXPECT_EQ(Heard(strXml), Lines{"template T (shown) unchanged "});
    EXPECT_EQ(Heard(Policy(Template("T", Rule(Block("ENTITY", "Card"))))), Lines{"template T (shown) updated "});
}

TEST_F(ImportObserver, UnsupportedTemplateComesWithItsFault) {
    EXPECT_EQ(
        Heard(Policy(Template("a", Rule(Block("ENTITY", "none", "AND"))) + Template("b", Rule(Block("KEYWORD", "no"))) +
                     Template("c", "<matchRule operation=\"EXCEPT\"/>"))),
        (Lines{"template a (shown) skipped unsupported [buildingBlock sourceType=\"ENTITY\" sourceName=\"none\" "
               "operation=\"AND\"] -> expression none",
               "template b (shown) skipped unsupported [buildingBlock sourceType=\"KEYWORD\" sourceName=\"no\"] "
               "-> keyword no",
               "template c (shown) skipped unsupported [matchRule operation=\"EXCEPT\"]"}));
}

TEST_F(ImportObserver, TemplateSkippedForAnotherOfItsNameShowsThatFault) {
    EXPECT_EQ(Heard(Policy(Template("T") + Template("T", "<matchRule operation=\"x\"/>") + Template("T") +
                           Template("T", "<matchRule operation=\"y\"/>") + Template("T"))),
              (Lines{"template T (shown) skipped unsupported [matchRule operation=\"x\"]",
                     "template T (shown) skipped unsupported [matchRule operation=\"x\"]",
                     "template T (shown) skipped unsupported [matchRule operation=\"x\"]",
                     "template T (shown) skipped unsupported [matchRule operation=\"y\"]",
                     "template T (shown) skipped unsupported [matchRule operation=\"x\"]"}));
}

TEST_F(ImportObserver, ForeignChildrenAreHeardOfWithWhatTheyAreReadAs) {
    EXPECT_EQ(Heard(Policy(Template("T",
                                    "<industries/><matchRule><b sourceType=\"keyword\" sourceName=\"w\"/>"
                                    "</matchRule><!-- c -->text<x>" +
                                        Block("ENTITY", "Card") + "</x>"))),
              Lines{"template T (shown) created  foreign industries [] foreign b [K:w] foreign x [P:Card(0)]"});
}

TEST_F(ImportObserver, ElementsThatAreNoItemsAreHeardOf) {
    EXPECT_EQ(Heard(Policy(Template("T") + "<y/>", "<x/><digitalAssets><Entity name=\"e\"/></digitalAssets>")),
              (Lines{"element x () skipped unknown-element [SAPolicy]",
                     "element Entity () skipped unknown-element [digitalAssets]", "template T (shown) created ",
                     "element y () skipped unknown-element [complianceTemplates]"}));
}

TEST_F(ImportObserver, CategoryWithoutANameIsHeardOfAndStoredAllTheSame) {
    const std::string strXml = Policy(Template("T"),
                                      "<industries><industry/></industries><regions><region name=\"\" "
                                      "display_name=\"R\"><template_id>T</template_id><template_id>none</template_id>"
                                      "</region></regions>");
    CItemRecorder observer(strXml);
    EXPECT_EQ(Import(strXml, observer), 0);
    EXPECT_EQ(observer.m_vecLines,
              (Lines{"template T (shown) created ", "category  () skipped no-name", "category  (R) skipped no-name",
                     "category  (R) skipped no-template [none]"}));
    EXPECT_EQ(observer.m_vecPlaces.at(2), "<region name=\"\" di");
}

TEST_F(ImportObserver, CategoryEntriesThatNameNoTemplateAreHeardOfLast) {
    const std::string strXml = Policy(Template("T") + Template("U", "<matchRule operation=\"x\"/>"),
                                      "<industries><industry name=\"i\" "
                                      "display_name=\"I\"><template_id>T</template_id><template_id>none</template_id>"
                                      "<template_id>U</template_id></industry></industries>"
                                      "<regions><region name=\"r\"><template_id> T</template_id></region></regions>");
    CItemRecorder observer(strXml);
    EXPECT_EQ(Import(strXml, observer), 0);
    EXPECT_EQ(Lines(observer.m_vecLines.begin() + 2, observer.m_vecLines.end()),
              (Lines{"category i (I) skipped no-template [none]", "category r () skipped no-template [ T]"}));
    EXPECT_EQ(Lines(observer.m_vecPlaces.begin() + 2, observer.m_vecPlaces.end()),
              (Lines{"<template_id>none<", "<template_id> T</t"}));
}

namespace {

/** Has the import pass over what a list names, and keep what is stored. */
class CChoosingRecorder : public CItemRecorder {
  public:
    using CItemRecorder::CItemRecorder;

    bool PassesOver(EItemKind eKind, std::string_view strName) override {
        const std::string strItem = std::string(KINDS[static_cast<int>(eKind)]) + " " + std::string(strName);
        m_vecAsked.push_back(strItem);
        return std::find(m_vecPassedOver.begin(), m_vecPassedOver.end(), strItem) != m_vecPassedOver.end();
    }
    bool KeepsStored() override { return m_bKeepsStored; }

    Lines m_vecPassedOver;
    Lines m_vecAsked;
    bool m_bKeepsStored = false;
};

}  // namespace

TEST_F(ImportObserver, ItemsThatItPassesOverAreLeftAloneAndUnheard) {
    const std::string strXml =
        Policy(Template("T") + Template("U") + Template(""),
               "<digitalAssets><entity name=\"e\" display_name=\"E\"><regularExpression/></entity>"
               "<dictionary name=\"d\" display_name=\"D\"/></digitalAssets>"
               "<industries><industry name=\"i\"><template_id>T</template_id><template_id>none</template_id></industry>"
               "<industry name=\"j\"><template_id>none</template_id></industry></industries>");
    CChoosingRecorder observer(strXml);
    observer.m_vecPassedOver = {"expression e", "template T", "template ", "category i"};
    EXPECT_EQ(Import(strXml, observer), 0);
    EXPECT_EQ(observer.m_vecLines, (Lines{"keyword d (D) created ", "template U (shown) created ",
                                          "category j () skipped no-template [none]"}));
    EXPECT_EQ(observer.m_vecAsked, (Lines{"expression e", "keyword d", "template T", "template U", "template ",
                                          "category i", "category j"}));
    EXPECT_EQ(CSettingsStore::Current().Count(ESettingsKind::EXPRESSION), 1U);
    EXPECT_EQ(CSettingsStore::Current().Count(ESettingsKind::TEMPLATE), 1U);
}

TEST_F(ImportObserver, OlderItemsThatItPassesOverAreUnheard) {
    const std::string strXml =
        "<SAPolicy><regions><region name=\"r\"/></regions><complianceTemplates>"
        "<template name=\"a\" displayName=\"A\" builtin=\"1\"/><template name=\"b\" displayName=\"B\"/>"
        "<template name=\"c\" displayName=\"C\"/></complianceTemplates></SAPolicy>";
    CChoosingRecorder observer(strXml);
    observer.m_vecPassedOver = {"template a", "template c", "section regions"};
    EXPECT_EQ(Import(strXml, observer), 0);
    EXPECT_EQ(observer.m_vecLines, (Lines{"template b (B) created "}));
}

TEST_F(ImportObserver, StoredItemsThatItKeepsAreSkippedWhateverTheyAre) {
    const std::string strAssets =
        "<digitalAssets><entity name=\"e\" display_name=\"E\"><regularExpression/></entity>"
        "<dictionary name=\"d\" display_name=\"D\"/></digitalAssets>";
    ASSERT_EQ(Heard(Policy(Template("T"), strAssets)).size(), 3U);
    const std::string strXml = Policy(Template("T", "<matchRule/>") + Template("U") + Template("U"), strAssets);
    CChoosingRecorder observer(strXml);
    observer.m_bKeepsStored = true;
    EXPECT_EQ(Import(strXml, observer), 0);
    EXPECT_EQ(observer.m_vecLines, (Lines{"expression e (E) skipped existing", "keyword d (D) skipped existing",
                                          "template T (shown) skipped existing", "template U (shown) created ",
                                          "template U (shown) skipped existing"}));
}

TEST_F(ImportObserver, PlacesAreThoseOfTheStartTags) {
    const std::string strXml = "\xEF\xBB\xBF" + Policy("\n" + Template("\xC3\xA9") + "\n  " + Template("b"));
    CItemRecorder observer(strXml);
    EXPECT_EQ(Import(strXml, observer), 0);
    EXPECT_EQ(observer.m_vecPlaces, (Lines{"<template name=\"\xC3\xA9", "<template name=\"b\""}));
}

TEST_F(ImportObserver, OlderLayoutKeepsThePlacesOfTheFile) {
    const std::string strXml =
        "<SAPolicy><regions><region name=\"r\"/></regions><complianceTemplates>"
        "<template name=\"a\" displayName=\"A\" builtin=\"1\"/><template name=\"b\" displayName=\"B\"/>"
        "<template name=\"c\" displayName=\"C\"><matchRule "
        "operation=\"x\"/></template></complianceTemplates></SAPolicy>";
    CItemRecorder observer(strXml);
    EXPECT_EQ(Import(strXml, observer), 0);
    EXPECT_EQ(observer.m_vecLines,
              (Lines{"template a (A) skipped older-built-in", "section regions () skipped older-section",
                     "template b (B) created ", "template c (C) skipped unsupported [matchRule operation=\"x\"]"}));
    EXPECT_EQ(observer.m_vecPlaces,
              (Lines{"<template name=\"a\"", "<regions><region n", "<template name=\"b\"", "<template name=\"c\""}));
}

TEST_F(ImportObserver, ItemThatTheStoreCouldNotTakeFails) {
    CStoreFaults faults;
    CSettingsStore::Open(TemplateStore::MEMORY);
    const std::string strXml = Policy(Template("T") + Template("U"));
    for (std::size_t n = 1;; ++n) {
        CSettingsStore::Open(TemplateStore::MEMORY);
        TemplateStore::AddTemplate({"T", "old"});
        CItemRecorder observer(strXml);
        faults.FailAt(n);
        Import(strXml, observer);
        if (!faults.IsReached()) {
            break;
        }
        const std::string strOperation = faults.GetOperations().at(n - 1);
        const bool bItems = strOperation == "Find" || strOperation == "Save";
        const auto iFailed =
            std::count_if(observer.m_vecLines.begin(), observer.m_vecLines.end(),
                          [](const std::string& str) { return str.find("failed store") != std::string::npos; });
        EXPECT_EQ(iFailed, bItems ? 1 : 0) << n << " " << strOperation;
    }
}
