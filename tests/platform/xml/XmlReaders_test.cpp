#include <gtest/gtest.h>

#include <random>

#include "tests/support/ExpatTree.h"
#include "tests/support/Sanitized.h"
#include "tests/support/XmlText.h"

// Two engines read a text: a strict one decides, a lenient one builds the tree. They must see the same document.

namespace {

/** What the tree holds, read back from its own markup. */
std::string DumpOfTree(const std::string& strText) {
    CXMLParser document;
    SExpatNode root;
    return document.LoadUtf8(strText) && ReadWithExpat(Xml::Saved(document), root) ? Dump(root) : "refused";
}

std::string DumpOfText(const std::string& strText) {
    SExpatNode root;
    if (!ReadWithExpat(strText, root)) {
        return "refused";
    }
    DropBlanksBetweenElements(root);
    return Dump(root);
}

/** What the views say about elements. */
void ExpectSame(const SExpatNode& expected, const CXMLView& view) {
    EXPECT_EQ(expected.strName, view.Name());
    const auto vecAttributes = view.Attributes();
    ASSERT_EQ(expected.vecAttributes.size(), vecAttributes.size());
    for (std::size_t i = 0; i < vecAttributes.size(); ++i) {
        EXPECT_EQ(expected.vecAttributes[i].first, vecAttributes[i].first);
        EXPECT_EQ(expected.vecAttributes[i].second, vecAttributes[i].second);
    }
    CXMLView child = view.FirstChild();
    std::string strText;
    for (const SExpatNode& node : expected.vecChildren) {
        if (node.eKind == SExpatNode::ELEMENT) {
            ASSERT_TRUE(child);
            ExpectSame(node, child);
            strText += child.Text();
            child = child.NextSibling();
        } else if (node.eKind == SExpatNode::TEXT || node.eKind == SExpatNode::CDATA) {
            strText += node.strValue;
        }
    }
    EXPECT_FALSE(child);
    EXPECT_EQ(strText, view.Text());
}

void ExpectReadersAgree(const std::string& strText) {
    const std::string strExpected = DumpOfText(strText);
    ASSERT_EQ(strExpected, DumpOfTree(strText)) << strText;
    SExpatNode root;
    CXMLParser document;
    if (document.LoadUtf8(strText) && ReadWithExpat(strText, root)) {
        DropBlanksBetweenElements(root);
        ExpectSame(root, document.RootView());
    }
}

}  // namespace

TEST(XmlReaders, AgreeOnWhatCouldDivideThem) {
    for (const char* pText : {
             // References, in every place and form.
             "<a b='&lt;&gt;&amp;&quot;&apos;'>&lt;&gt;&amp;&quot;&apos;</a>",
             "<a b='&#65;&#x41;&#x0041;&#0065;&#x1F600;&#128512;'>&#65;&#x41;&#x000000041;&#x10FFFF;&#xE000;</a>",
             "<a b='&#9;&#10;&#13;&#32;'>&#9;&#10;&#13;&#32;</a>",
             "<a>&amp;lt;&amp;#65;&#38;lt;&#38;#38;</a>",
             "<a b='&#38;lt;'/>",
             // Line ends and blanks.
             "<a b='x\r\ny\rz\nw\tv'>x\r\ny\rz\nw\tv\r\r\n\n\r</a>",
             "<a>x&#13;\ny&#13;\r\nz\r&#10;w</a>",
             "<a b='x&#13;\ny\r&#10;z'/>",
             "<a><![CDATA[x\r\ny\rz]]><!--x\r\ny\rz--><?p x\r\ny\rz?></a>",
             "<a\r\n b\t=\r'1'\n c = \"2\" ></a\t\r\n>",
             "<a>\r\n</a>",
             "<a>\r</a>",
             "<a> <b> </b> </a>",
             "<a>\xC2\xA0<b/>\xE2\x80\xA8</a>",
             "<a>&#32;<b/>&#10;</a>",
             // Sections, comments, instructions.
             "<a><![CDATA[]]></a>",
             "<a><![CDATA[<b>&amp;]]></a>",
             "<a><![CDATA[]]]]><![CDATA[>]]></a>",
             "<a><![CDATA[]]]]></a>",
             "<a>]]&gt;</a>",
             "<a>]] ></a>",
             "<a><!----></a>",
             "<a><!-- <b/> &amp; ]]> --></a>",
             "<a><?p?><?p ?><?p  x ?><?p <b> & ]]> -- ?><?p ?"
             "?></a>",
             "<a>x<!--c-->y<?p?>z<![CDATA[w]]></a>",
             "<?p?><!--c--><a/><?q?><!--d-->",
             "<?xml version='1.0' encoding='latin1' standalone='no'?><a/>",
             "<?xml-model a='b'?><a/>",
             "\xEF\xBB\xBF<?xml version='1.0'?><a>\xEF\xBB\xBF</a>",
             // Quotes and brackets.
             "<a b='\"' c=\"'\" d='>' e='/>' f=']]>' g='--'>\"'></a>",
             "<a>></a>",
             "<a b=''/>",
             // Names.
             "<a:b.c-d_e xmlns:a='u' a:f='1' xml:lang='de' _='2' :='3'/>",
             "<\xC3\xA4\xE5\x90\x8D \xC3\xB6='1'><\xE5\x90\x8D/></\xC3\xA4\xE5\x90\x8D>",
             "<a><ab/><a/><abc/></a>",
             "<a></a >",
             // Characters at the edges.
             "<a>\x7F\xC2\x80\xC2\x85\xC2\x9F\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD\xF0\x9F\xBF\xBE\xF4\x8F\xBF\xBF</a>",
         }) {
        EXPECT_NE("refused", DumpOfText(pText)) << pText;
        ExpectReadersAgree(pText);
    }
}

TEST(XmlReaders, AgreeOnRandomDocuments) {
    // Pieces that are well-formed wherever they stand in content, mixed blindly.
    const char* const CONTENT[] = {"x",
                                   " ",
                                   "\r\n",
                                   "\r",
                                   "\n",
                                   "\t",
                                   "&#13;",
                                   "&#10;",
                                   "&#x20;",
                                   "&amp;",
                                   "&lt;",
                                   "&quot;",
                                   "\xC3\xA4",
                                   "\xF0\x9F\x98\x80",
                                   "]]",
                                   "]",
                                   ">",
                                   "<!--c-->",
                                   "<?p?>",
                                   "<?p \r\n x?>",
                                   "<![CDATA[]]>",
                                   "'",
                                   "<b></b>",
                                   "<b c=' '/>",
                                   "\"",
                                   "<![CDATA[ \r\n]]>",
                                   "<![CDATA[&]>]]>"};
    std::mt19937 random(4711);
    const auto fnPick = [&](std::size_t iCount) { return random() % iCount; };
    for (int iRound = 0; iRound < (SANITIZED ? 4000 : 20000); ++iRound) {
        std::string strText;
        std::vector<std::string> vecOpen;
        const auto fnOpen = [&] {
            vecOpen.push_back(std::string(1 + fnPick(3), 'e'));
            strText += "<" + vecOpen.back() + (fnPick(2) == 0 ? " a='" : " a=\"");
            const char cQuote = strText.back();
            for (std::size_t i = fnPick(4); i > 0; --i) {
                const std::string strPiece = CONTENT[fnPick(14)];
                strText += strPiece;
            }
            strText += cQuote + std::string(">");
        };
        fnOpen();
        for (std::size_t i = fnPick(12); i > 0; --i) {
            const std::size_t iChoice = fnPick(8);
            if (iChoice == 0 && vecOpen.size() < 5) {
                fnOpen();
            } else if (iChoice == 1 && vecOpen.size() > 1) {
                strText += "</" + vecOpen.back() + ">";
                vecOpen.pop_back();
            } else {
                strText += CONTENT[fnPick(std::size(CONTENT))];
            }
        }
        for (; !vecOpen.empty(); vecOpen.pop_back()) {
            strText += "</" + vecOpen.back() + ">";
        }
        ExpectReadersAgree(strText);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(XmlReaders, RandomDamageIsRefusedByBothOrReadAlike) {
    const std::string strSound =
        "<?xml version=\"1.0\"?><a b=\"1\" c='&lt;&#65;'>t<!--c--><d>\xC3\xA4 &amp;</d><![CDATA[x]]><?p q?><e/></a>";
    std::mt19937 random(1234);
    const std::string strAlphabet = "<>&;#x/!?[]-\"'= ab1\r\n\t\xC3\xA4\xEF\xBF\x01";
    for (int iRound = 0; iRound < (SANITIZED ? 12000 : 60000); ++iRound) {
        std::string strText = strSound;
        for (auto i = 1 + random() % 3; i > 0; --i) {
            const std::size_t iPlace = random() % strText.size();
            const char c = strAlphabet[random() % strAlphabet.size()];
            switch (random() % 3) {
                case 0:
                    strText[iPlace] = c;
                    break;
                case 1:
                    strText.insert(iPlace, 1, c);
                    break;
                default:
                    strText.erase(iPlace, 1 + random() % 4);
                    break;
            }
        }
        if (strText.find("<!DOCTYPE") == std::string::npos) {
            ExpectReadersAgree(strText);
        }
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(XmlReaders, WrittenDocumentIsWrittenAlikeAgain) {
    for (const char* pText :
         {"<a>\r\n <b c='&#9;'>x</b>&#13;<![CDATA[ ]]></a>", "<?p  x?><a xmlns:q='1'> <q:b/> </a><!-- c -->"}) {
        const std::string strOnce = Xml::Reread(pText);
        EXPECT_EQ(strOnce, Xml::Reread(strOnce));
    }
}
