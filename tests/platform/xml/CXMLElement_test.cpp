#include "platform/xml/CXMLElement.h"

#include <gtest/gtest.h>

#include "tests/support/XmlText.h"

using Xml::Narrow;
using Xml::Saved;
using Xml::Thrown;

namespace {

CXMLParser Load(const std::string& strText) {
    CXMLParser document;
    EXPECT_TRUE(document.LoadUtf8(strText)) << strText;
    return document;
}

}  // namespace

TEST(XmlElement, AttributeIsReplacedInPlaceOrAddedLast) {
    const CXMLParser document = Load("<x a='1' b='2'/>");
    const auto pRoot = document.GetRootElement();
    pRoot->SetAttribute(L"a", L"new");
    pRoot->SetAttribute(L"c", L"3");
    pRoot->SetAttribute(std::wstring(L"d"), std::wstring(L""));
    pRoot->SetAttribute(L"e", nullptr);
    EXPECT_EQ("<x a=\"new\" b=\"2\" c=\"3\" d=\"\" e=\"\"/>", Saved(document));
}

TEST(XmlElement, AttributeIsRemovedIfItIsThere) {
    const CXMLParser document = Load("<x a='1' b='2'/>");
    const auto pRoot = document.GetRootElement();
    pRoot->RemoveAttribute(L"a");
    pRoot->RemoveAttribute(L"a");
    pRoot->RemoveAttribute(L"B");
    pRoot->RemoveAttribute(static_cast<const wchar_t*>(nullptr));
    EXPECT_EQ("<x b=\"2\"/>", Saved(document));
    pRoot->RemoveAttribute(std::wstring(L"b"));
    EXPECT_EQ("<x/>", Saved(document));
}

TEST(XmlElement, AttributeIsReadBackExactly) {
    for (const std::wstring& strValue :
         {std::wstring(L" lead and trail "), std::wstring(L"\t\r\n\r"), std::wstring(L"<&>\"'"), std::wstring(L""),
          std::wstring(L"&#10;&amp;"), std::wstring(L"\u0085\u2028\uFEFF\U0001F600"), std::wstring(100000, L'x')}) {
        const CXMLParser document = Load("<x a='old'/>");
        document.GetRootElement()->SetAttribute(L"a", strValue);
        EXPECT_TRUE(strValue == document.GetRootElement()->GetAttribute(L"a"));
        EXPECT_TRUE(strValue == Load(Saved(document)).GetRootElement()->GetAttribute(L"a"));
    }
}

TEST(XmlElement, CharacterThatXmlCannotCarryIsRefusedByItsNumber) {
    const CXMLParser document = Load("<x a='old'/>");
    const auto pRoot = document.GetRootElement();
    EXPECT_EQ("attribute a of element x: the character U+0001 cannot be written in XML",
              Thrown([&] { pRoot->SetAttribute(L"a", L"b\x01"); }));
    EXPECT_EQ("attribute a of element x: the character U+FFFE cannot be written in XML",
              Thrown([&] { pRoot->SetAttribute(L"a", L"\xFFFE"); }));
    EXPECT_EQ("attribute b of element x: the character U+D83D cannot be written in XML",
              Thrown([&] { pRoot->SetAttribute(L"b", L"\xD83D"); }));
    EXPECT_EQ("attribute a of element x: the character U+0000 cannot be written in XML",
              Thrown([&] { pRoot->SetAttribute(L"a", L"\0", 1); }));
    EXPECT_EQ("<x a=\"old\"/>", Saved(document));
}

TEST(XmlElement, NameThatIsNoneIsRefused) {
    const CXMLParser document = Load("<x/>");
    for (const wchar_t* pName : {L"", L"a b", L"1", L"a=\"1\" b", L"a>"}) {
        EXPECT_EQ("attribute " + Narrow(pName) + " of element x: this is no name",
                  Thrown([&] { document.GetRootElement()->SetAttribute(pName, L"v"); }));
    }
    EXPECT_EQ("<x/>", Saved(document));
}

TEST(XmlElement, MarkupIsTheElementWithAllItHolds) {
    const CXMLParser document = Load(
        "<?xml version='1.0'?><!--no--><x><s  a = '1'>t &lt;<!-- c --><e></e><![CDATA[<d>]]><?p  q ?>\n</s>tail</x>");
    EXPECT_EQ("<s a=\"1\">t &lt;<!-- c --><e/><![CDATA[<d>]]><?p q ?>\n</s>",
              Xml::Markup(document.XPathSelectSingleNode(L"/x/s")));
    EXPECT_EQ("<x><s a=\"1\">t &lt;<!-- c --><e/><![CDATA[<d>]]><?p q ?>\n</s>tail</x>",
              Narrow(document.GetRootElement()->GetXML()));
}

TEST(XmlElement, MarkupOfASectionIsADocumentOfItsOwn) {
    const CXMLParser document = Load("<x xmlns='u' xmlns:p='v'><p:s><t p:a='1'/></p:s></x>");
    CXMLParser section;
    ASSERT_TRUE(section.LoadXML(document.XPathSelectSingleNode(L"/x/p:s")->ToElement()->GetXML()));
    EXPECT_EQ("<p:s xmlns=\"u\" xmlns:p=\"v\"><t p:a=\"1\"/></p:s>", Saved(section));
}

TEST(XmlElement, MarkupCarriesTheNearestDeclarationsInScope) {
    const struct {
        const char* pText;
        const char* pExpected;
    } ROWS[] = {
        {"<x xmlns:p='1'><m xmlns:p='2'><s/></m></x>", "<s xmlns:p=\"2\"/>"},
        {"<x xmlns='1'><m xmlns=''><s/></m></x>", "<s/>"},
        {"<x xmlns='1'><m><s xmlns='own' a='b'/></m></x>", "<s xmlns=\"own\" a=\"b\"/>"},
        {"<x xmlns:p='1' xmlns:q='&lt;&quot;'><s a='b'/></x>", "<s a=\"b\" xmlns:p=\"1\" xmlns:q=\"&lt;&quot;\"/>"},
    };
    for (const auto& row : ROWS) {
        EXPECT_EQ(row.pExpected, Xml::Markup(Load(row.pText).XPathSelectSingleNode(L"//*[not(*)]")));
    }
}
