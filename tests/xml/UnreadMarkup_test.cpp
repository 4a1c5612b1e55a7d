#include "xml/UnreadMarkup.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "platform/xml/CXMLParser.h"
#include "xml/CPolicyDocument.h"
#include "xml/Vocabulary.h"

namespace {

/** "offset:elements" of each parent. */
std::string ToText(const std::vector<SBlanked>& vecBlanked) {
    std::string strText;
    for (const SBlanked& blanked : vecBlanked) {
        strText +=
            (strText.empty() ? "" : " ") + std::to_string(blanked.iParent) + ':' + std::to_string(blanked.iElements);
    }
    return strText;
}

struct SRow {
    const char* pName;
    std::string strText;
    std::string strLeft;
    std::string strBlanked;
};

std::ostream& operator<<(std::ostream& out, const SRow& row) {
    return out << row.pName;
}

class UnreadMarkupRows : public testing::TestWithParam<SRow> {};

}  // namespace

/** Two unknown elements of each parent's name are kept here. */
TEST_P(UnreadMarkupRows, AreBlankedAtTheirPlace) {
    std::string strText = GetParam().strText;
    const std::vector<SBlanked> vecBlanked = BlankUnreadMarkup(strText, 2);
    EXPECT_EQ(GetParam().strLeft, strText);
    EXPECT_EQ(GetParam().strBlanked, ToText(vecBlanked));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, UnreadMarkupRows,
    testing::Values(
        SRow{"sparse", "<r>text enough to be sparse, all in all, as policies are<a/><b/><c/><d/><!-- a comment --></r>",
             "<r>text enough to be sparse, all in all, as policies are<a/><b/><c/><d/><!-- a comment --></r>", ""},
        SRow{"those above the kept ones", "<r><a/><b/><c/><d></d ></r>", "<r><a/><b/>            </r>", "0:2"},
        SRow{"content", "<r><a>x<b/>y<c><d/></c></a></r>", "<r><a>                 </a></r>", ""},
        SRow{"leaves and text", "<?x?><!----><r>x<!--<--><?y>?><![CDATA[<]]><a/></r><!---->",
             "            <r>                            <a/></r>       ", ""},
        SRow{"the end of a tag stands outside values", R"(<r><a x=">" y='/>'/><b/><c x="'/>"/><d/></r>)",
             R"(<r><a x=">" y='/>'/><b/>                </r>)", "0:2"},
        SRow{
            "items keep what they hold",
            "<r><complianceTemplates><template><x/><!----><y>z</y></template></complianceTemplates><x/><y/><z/><a/><b/>"
            "</r>",
            "<r><complianceTemplates><template><x/><!----><y>z</y></template></complianceTemplates><x/><y/>            "
            "</r>",
            "0:3"},
        SRow{"one behind a known element stays",
             "<r><a/><b/><c/><industries><a/><b/><c/><industry/><a/><b/></industries><a/><b/><c/></r>",
             "<r><a/><b/>    <industries><a/><b/>    <industry/><a/>    </industries><a/>        </r>", "0:3 15:2"},
        SRow{"parents of one name count together",
             "<r><regions><region><a/></region><region><a/><b/></region></regions><regions><region><a/></region>"
             "</regions></r>",
             "<r><regions><region><a/></region><region><a/>    </region></regions><regions><region>    </region>"
             "</regions></r>",
             "33:1 77:1"},
        SRow{"entries of categories are read",
             "<r><industries><industry><template_id>a<b/></template_id><template_id/></industry></industries></r>",
             "<r><industries><industry><template_id>a<b/></template_id><template_id/></industry></industries></r>",
             ""}));

namespace {

struct SPlaced {
    const char* pParent;
    std::vector<const char*> vecKnown;
};
const SPlaced PLACED[] = {
    {"SAPolicy", {"digitalAssets", "complianceTemplates", "industries", "regions"}},
    {"digitalAssets", {"entity", "dictionary"}},
    {"complianceTemplates", {"template"}},
    {"industries", {"industry"}},
    {"industry", {"template_id"}},
    {"regions", {"region"}},
    {"region", {"template_id"}},
};

const SPlaced* FindPlaced(std::string_view strName) {
    for (const SPlaced& placed : PLACED) {
        if (placed.pParent == strName) {
            return &placed;
        }
    }
    return nullptr;
}

void AppendElement(std::mt19937& chance, const std::string& strName, int iDepth, std::string& strText) {
    constexpr const char* LEAVES[] = {"", " ", "t", "<!--<x>-->", "<?p >?>", "<![CDATA[</x>]]>", "&lt;"};
    const SPlaced* pPlaced = FindPlaced(strName);
    strText += '<' + strName + (chance() % 3 == 0 ? " name='>'>" : ">");
    for (std::size_t i = iDepth > 4 ? 0 : chance() % 7; i > 0; --i) {
        strText += LEAVES[chance() % std::size(LEAVES)];
        const bool bKnown = pPlaced != nullptr && chance() % 2 == 0;
        AppendElement(chance, bKnown ? pPlaced->vecKnown[chance() % pPlaced->vecKnown.size()] : "x", iDepth + 1,
                      strText);
    }
    strText += "</" + strName + '>';
}

/** What readers of a policy see: known elements whole where they are items, unknown ones by place, name and number. */
class CSeen {
  public:
    CSeen(const CXMLView& root, const CPolicyDocument* pDocument) : m_pDocument(pDocument) { Look(root); }

    std::string m_strItems;
    std::vector<std::string> m_vecUnknown;

  private:
    void Look(const CXMLView& element) {
        const SPlaced* pPlaced = FindPlaced(element.Name());
        m_strItems += std::to_string(element.Offset()) + '-' + std::to_string(Next(element)) + ' ';
        if (pPlaced == nullptr) {
            element.AppendMarkup(m_strItems);
            return;
        }
        for (CXMLView child = element.FirstChild(); child; child = child.NextSibling()) {
            bool bKnown = false;
            for (const char* pKnown : pPlaced->vecKnown) {
                bKnown = bKnown || child.Name() == pKnown;
            }
            if (bKnown) {
                Look(child);
            } else {
                m_vecUnknown.push_back(std::to_string(child.Offset()) + std::string(child.Attribute("name")));
            }
        }
        if (m_pDocument != nullptr) {
            m_vecUnknown.resize(m_vecUnknown.size() + m_pDocument->CountBlanked(element));
        }
    }

    /** Where errors of an item end. */
    static std::size_t Next(CXMLView node) {
        CXMLView next;
        for (; node && !next; node = node.Parent()) {
            next = node.NextSibling();
        }
        return next.Offset();
    }

    const CPolicyDocument* m_pDocument;
};

}  // namespace

TEST(UnreadMarkup, ReadersSeeTheSameAsInTheWholeTree) {
    std::size_t iDense = 0;
    for (unsigned iSeed = 0; iSeed < 500; ++iSeed) {
        std::mt19937 chance(iSeed);
        std::string strText;
        AppendElement(chance, "SAPolicy", 0, strText);
        CXMLParser whole;
        ASSERT_TRUE(whole.LoadUtf8(strText)) << strText;
        CPolicyDocument document{std::string_view(strText)};
        std::string strBlanked = strText;
        BlankUnreadMarkup(strBlanked);
        iDense += strBlanked != strText ? 1 : 0;
        const CSeen all(whole.RootView(), nullptr);
        const CSeen seen(document.Load().RootView(), &document);
        EXPECT_EQ(all.m_strItems, seen.m_strItems) << strText;
        EXPECT_EQ(all.m_vecUnknown, seen.m_vecUnknown) << strText;
    }
    EXPECT_GT(iDense, 100U);
}

TEST(UnreadMarkup, WhatIsLeftIsWellFormedAndCountedWhole) {
    for (unsigned iSeed = 0; iSeed < 500; ++iSeed) {
        std::mt19937 chance(iSeed);
        std::string strText;
        AppendElement(chance, "SAPolicy", 0, strText);
        CXMLParser whole;
        ASSERT_TRUE(whole.LoadUtf8(strText));
        std::size_t iBlanked = 0;
        for (const SBlanked& blanked : BlankUnreadMarkup(strText, 1)) {
            iBlanked += blanked.iElements;
        }
        CXMLParser left;
        ASSERT_TRUE(left.LoadUtf8(strText)) << strText;
        const CSeen all(whole.RootView(), nullptr);
        const CSeen seen(left.RootView(), nullptr);
        EXPECT_EQ(all.m_strItems, seen.m_strItems) << strText;
        EXPECT_EQ(all.m_vecUnknown.size(), seen.m_vecUnknown.size() + iBlanked) << strText;
    }
}

TEST(UnreadMarkup, BlankedElementsOfADocumentAreCounted) {
    std::string strText = "<SAPolicy><complianceTemplates>";
    for (std::size_t i = 0; i < MAX_UNKNOWN_KEPT + 3; ++i) {
        strText += "<x/>";
    }
    strText += "</complianceTemplates><y/></SAPolicy>";
    CPolicyDocument document{std::string_view(strText)};
    const CXMLView root = document.Load().RootView();
    EXPECT_EQ(0U, document.CountBlanked(root));
    EXPECT_EQ(3U, document.CountBlanked(root.FirstChild(TagUtf8::COMPLIANCE_TEMPLATES)));
    EXPECT_EQ(strText.find("<y/>"), root.FirstChild("y").Offset());
}
