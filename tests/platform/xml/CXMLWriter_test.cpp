#include "platform/xml/CXMLWriter.h"

#include <gtest/gtest.h>

#include <climits>

#include "tests/support/ExpatTree.h"
#include "tests/support/XmlText.h"

using Xml::Thrown;

namespace {

std::string Escaped(std::string_view strText, bool bAttribute) {
    std::string strOut;
    AppendEscaped(strOut, strText, bAttribute);
    return strOut;
}

}  // namespace

TEST(XmlWriter, WritesElementsAttributesAndText) {
    std::string strOut;
    CXMLWriter writer(strOut);
    writer.Declaration();
    writer.StartElement("a");
    writer.Attribute("s", "v<\"&>'\t\r\n");
    writer.Attribute("i", 0);
    writer.Attribute("min", INT_MIN);
    writer.StartElement("b");
    writer.EndElement();
    writer.Text("t<\"&>'\t\r\n");
    writer.TextElement("c", "");
    writer.TextElement("d", "x");
    writer.Raw("<raw/>");
    writer.EndElement();
    EXPECT_EQ(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
        "<a s=\"v&lt;&quot;&amp;&gt;'&#9;&#13;&#10;\" i=\"0\" min=\"-2147483648\"><b/>"
        "t&lt;&quot;&amp;&gt;'\t&#13;\n<c/><d>x</d><raw/></a>",
        strOut);
}

TEST(XmlWriter, LongTextIsWrittenWhole) {
    const std::string strText(100, 'x');
    std::string strExpected = "<a>";
    std::string strOut;
    CXMLWriter writer(strOut);
    writer.StartElement("a");
    while (strOut.size() < 4U << 20U) {
        writer.TextElement("b", strText);
        strExpected += "<b>" + strText + "</b>";
    }
    writer.EndElement();
    EXPECT_TRUE(strExpected + "</a>" == strOut);
}

TEST(XmlWriter, LongTextMayBeTakenBeforeAnElementBegins) {
    const std::string strText(1000, 'x');
    std::string strExpected = "<a>";
    std::string strTaken;
    std::size_t iLongest = 0;
    std::string strOut;
    CXMLWriter writer(strOut, [&](std::string& strPiece) {
        EXPECT_EQ('>', strPiece.back());
        strTaken += strPiece;
        strPiece.clear();
    });
    writer.StartElement("a");
    for (int i = 0; i < 1000; ++i) {
        writer.TextElement("b", strText);
        strExpected += "<b>" + strText + "</b>";
        iLongest = std::max(iLongest, strOut.size());
    }
    writer.EndElement();
    EXPECT_TRUE(writer.HasEnded("a"));
    EXPECT_TRUE(strExpected + "</a>" == strTaken + strOut);
    EXPECT_LT(iLongest, 200000U);
}

TEST(XmlWriter, EmptyContentLeavesTheElementEmpty) {
    std::string strOut = "before";
    CXMLWriter writer(strOut);
    writer.StartElement("a");
    writer.Text("");
    writer.Raw("");
    writer.Node(CXMLView());
    writer.EndElement();
    EXPECT_EQ("before<a/>", strOut);
}

TEST(XmlWriter, NodeOfADocumentIsWrittenWhole) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8("<x xmlns:p='u'><p:y a='1'>t</p:y></x>"));
    std::string strOut;
    CXMLWriter writer(strOut);
    writer.StartElement("a");
    writer.Node(document.RootView().FirstChild());
    writer.EndElement();
    EXPECT_EQ("<a><p:y a=\"1\" xmlns:p=\"u\">t</p:y></a>", strOut);
}

TEST(XmlWriter, ContentIsWrittenWhenItIsSurelyWhatReadingWouldGive) {
    const struct {
        const char* pText;
        const char* pWritten;  ///< null: not written
    } ROWS[] = {
        {"<a><b c=\"1\">&lt;x</b><b/></a>", "<root><b c=\"1\">&lt;x</b><b/></root>"},
        {"<a d=\"&#10;\"><b>\xC3\xA4</b></a>", "<root><b>\xC3\xA4</b></root>"},
        {"<a/>", nullptr},
        {"<a>x</a>", nullptr},
        {"<a><b/>x</a>", nullptr},
        {"<a><b/><c/></a>", nullptr},
        {"<b><b/></b>", nullptr},
        {"<ab><b/></ab>", nullptr},
        {"<a><b></b></a>", nullptr},
        {"<a> <b/></a>", nullptr},
        {"<a><b>></b></a>", nullptr},
        {"<a xmlns=\"u\"><b/></a>", nullptr},
        {"<?xml version=\"1.0\"?><a><b/></a>", nullptr},
        {"<a><b/>", nullptr},
        {"", nullptr},
    };
    for (const auto& row : ROWS) {
        std::string strOut;
        CXMLWriter writer(strOut);
        writer.StartElement("root");
        EXPECT_EQ(row.pWritten != nullptr, writer.Content(row.pText, "a", "b")) << row.pText;
        writer.EndElement();
        EXPECT_EQ(row.pWritten != nullptr ? row.pWritten : "<root/>", strOut) << row.pText;
    }
}

TEST(XmlWriter, CharacterThatXmlCannotCarryIsRefusedByItsNumberAndPlace) {
    const auto fnAttribute = [](std::string_view strValue) {
        return Thrown([strValue] {
            std::string strOut;
            CXMLWriter writer(strOut);
            writer.StartElement("entity");
            writer.Attribute("name", strValue);
        });
    };
    const auto fnText = [](std::string_view strText) {
        return Thrown([strText] {
            std::string strOut;
            CXMLWriter(strOut).TextElement("examples", strText);
        });
    };
    EXPECT_EQ("attribute name of element entity: the character U+0001 cannot be written in XML", fnAttribute("a\x01"));
    EXPECT_EQ("attribute name of element entity: byte 1 is not UTF-8", fnAttribute("a\xE4"));
    EXPECT_EQ("text of element examples: the character U+001F cannot be written in XML", fnText("ab\x1F"));
    EXPECT_EQ("text of element examples: the character U+0000 cannot be written in XML",
              fnText(std::string_view("a\0b", 3)));
    EXPECT_EQ("text of element examples: the character U+FFFE cannot be written in XML", fnText("\xEF\xBF\xBE"));
    EXPECT_EQ("text of element examples: the character U+FFFF cannot be written in XML", fnText("\xEF\xBF\xBF"));
    EXPECT_EQ("text of element examples: byte 3 is not UTF-8", fnText("abc\xED\xA0\x80"));
    EXPECT_EQ("text of element examples: byte 0 is not UTF-8", fnText("\xC0\x80"));
}

TEST(XmlWriter, EscapedTextNamesNoPlaceOfItsOwn) {
    EXPECT_EQ("a&amp;&#9;", Escaped("a&\t", true));
    EXPECT_EQ("a&amp;\t", Escaped("a&\t", false));
    EXPECT_EQ("the character U+0008 cannot be written in XML", Thrown([] { Escaped("\x08", false); }));
    EXPECT_EQ("byte 0 is not UTF-8", Thrown([] { Escaped("\xFF", true); }));
}

TEST(XmlWriter, EveryCharacterIsRefusedOrReadBackAsItWas) {
    std::string strCarried;
    std::string strOut;
    CXMLWriter writer(strOut);
    writer.StartElement("a");
    for (wchar_t c = 0; c <= Xml::LAST_CHARACTER; ++c) {
        const std::string strText = OS::Utf8Loose(std::wstring_view(&c, 1));
        if (Xml::IsCarried(c)) {
            strCarried += strText;
        } else {
            EXPECT_NE("nothing thrown", Thrown([&] { Escaped(strText, false); })) << static_cast<int>(c);
            EXPECT_NE("nothing thrown", Thrown([&] { Escaped(strText, true); })) << static_cast<int>(c);
        }
    }
    writer.Attribute("b", strCarried);
    writer.Text(strCarried);
    writer.EndElement();

    SExpatNode root;
    ASSERT_TRUE(ReadWithExpat(strOut, root));
    EXPECT_TRUE(strCarried == root.vecAttributes.front().second);
    EXPECT_TRUE(strCarried == root.vecChildren.front().strValue);
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8(strOut));
    EXPECT_TRUE(strCarried == document.RootView().Attribute("b"));
    EXPECT_TRUE(strCarried == document.RootView().Text());
    EXPECT_TRUE(strOut == Xml::Saved(document));
}

TEST(XmlWriter, LoaderRefusesWhatTheWriterRefuses) {
    for (wchar_t c = 0; c <= 0x11000; ++c) {
        const std::string strText = OS::Utf8Loose(std::wstring_view(&c, 1));
        const bool bWritten = Thrown([&] { Escaped(strText, false); }) == "nothing thrown";
        if (!bWritten) {
            EXPECT_FALSE(CXMLParser().LoadUtf8("<a>" + strText + "</a>")) << static_cast<int>(c);
            EXPECT_FALSE(CXMLParser().LoadUtf8("<a b='" + strText + "'/>")) << static_cast<int>(c);
        }
    }
}

TEST(XmlWriter, KnowsWhichElementItIsIn) {
    std::string strOut;
    CXMLWriter writer(strOut);
    EXPECT_FALSE(writer.IsIn("a"));
    writer.StartElement("a");
    EXPECT_TRUE(writer.IsIn("a"));
    writer.StartElement("b");
    EXPECT_FALSE(writer.IsIn("a"));
    EXPECT_TRUE(writer.IsIn("b"));
    writer.EndElement();
    EXPECT_TRUE(writer.IsIn("a"));
    EXPECT_FALSE(writer.IsIn("A"));
    writer.EndElement();
    EXPECT_FALSE(writer.IsIn("a"));
}

TEST(XmlWriter, KnowsWhichElementHasEndedLast) {
    std::string strOut;
    CXMLWriter writer(strOut);
    writer.StartElement("a");
    EXPECT_FALSE(writer.HasEnded("a"));
    writer.TextElement("b", "t");
    EXPECT_TRUE(writer.HasEnded("b"));
    EXPECT_FALSE(writer.HasEnded("B"));
    writer.StartElement("c");
    EXPECT_FALSE(writer.HasEnded("c"));
    writer.EndElement();
    writer.EndElement();
    EXPECT_FALSE(writer.HasEnded("c"));
    EXPECT_TRUE(writer.HasEnded("a"));
}

TEST(XmlWriter, ElementTooDeepToBeReadHasNotEnded) {
    for (const int iDepth : {255, 256}) {
        std::string strText;
        for (int i = 0; i < iDepth; ++i) {
            strText = "<b>" + strText + "</b>";
        }
        CXMLParser document;
        ASSERT_TRUE(document.LoadUtf8("<b/>") && document.LoadUtf8(strText));
        std::string strOut;
        CXMLWriter writer(strOut);
        writer.StartElement("root");
        writer.StartElement("a");
        writer.Node(document.RootView());
        writer.EndElement();
        EXPECT_EQ(writer.HasEnded("a"), iDepth == 255);
        EXPECT_EQ(writer.HasEnded("a"), CXMLParser().LoadUtf8(strOut.substr(std::string("<root>").size())));
        const std::string strWritten = std::string(strText).replace(strText.find("<b></b>"), 7, "<b/>");
        std::string strCopied;
        CXMLWriter copying(strCopied);
        copying.StartElement("a");
        EXPECT_TRUE(copying.Content(strWritten, "b", "b"));
        copying.EndElement();
        EXPECT_TRUE(copying.HasEnded("a"));
        EXPECT_EQ(copying.DepthWritten(), static_cast<std::size_t>(iDepth));
    }
}

TEST(XmlWriter, WrittenMarkupIsKnownByItsElement) {
    for (const char* const pMarkup : {"<a/>", "<a b=\"c\"/>", "<a>t</a>"}) {
        EXPECT_TRUE(StartsWithElement(pMarkup, "a")) << pMarkup;
    }
    for (const char* const pMarkup : {"", "<", "<a", "a/>", "<A/>", "<ab/>", "<b/>", "t<a/>"}) {
        EXPECT_FALSE(StartsWithElement(pMarkup, "a")) << pMarkup;
    }
}
