#include "platform/xml/CXMLView.h"

#include <gtest/gtest.h>

#include "tests/support/XmlText.h"

namespace {

std::string MarkupWithout(const CXMLView& view, std::vector<const char*> vecSkip) {
    std::string strMarkup;
    view.AppendMarkup(strMarkup, vecSkip.data(), vecSkip.size());
    return strMarkup;
}

}  // namespace

TEST(XmlView, NullViewGivesNothing) {
    const CXMLView view;
    EXPECT_FALSE(view);
    EXPECT_EQ(nullptr, view.Handle());
    EXPECT_EQ("", view.Name());
    EXPECT_EQ("", view.Attribute("a"));
    EXPECT_FALSE(view.HasAttribute("a"));
    EXPECT_TRUE(view.Attributes().empty());
    EXPECT_FALSE(view.Parent());
    EXPECT_FALSE(view.FirstChild());
    EXPECT_FALSE(view.NextSibling("a"));
    EXPECT_EQ("", view.Text());
    EXPECT_EQ("", MarkupWithout(view, {}));
    EXPECT_EQ(std::string::npos, view.Offset());
}

TEST(XmlView, ReadsNamesAttributesAndText) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8("<p:x a='\xC3\xA4' b=''>t<y>u</y></p:x>"));
    const CXMLView root = document.RootView();
    EXPECT_EQ("p:x", root.Name());
    EXPECT_EQ("\xC3\xA4", root.Attribute("a"));
    EXPECT_TRUE(root.HasAttribute("b"));
    EXPECT_EQ("", root.Attribute("b"));
    EXPECT_FALSE(root.HasAttribute("c"));
    EXPECT_EQ("tu", root.Text());
}

TEST(XmlView, ListsAttributesInDocumentOrder) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8("<x b='1' a='2'/>"));
    const std::vector<std::pair<std::string_view, std::string_view>> vecExpected = {{"b", "1"}, {"a", "2"}};
    EXPECT_EQ(document.RootView().Attributes(), vecExpected);
}

TEST(XmlView, WalksElementsOfAnyOrOfOneName) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8("<!--c--><x>t<a i='1'/><!--c--><b i='2'/>u<a i='3'/></x><?p?>"));
    const CXMLView root = document.RootView();
    EXPECT_EQ("1", root.FirstChild().Attribute("i"));
    EXPECT_EQ("2", root.FirstChild().NextSibling().Attribute("i"));
    EXPECT_EQ("2", root.FirstChild("b").Attribute("i"));
    EXPECT_EQ("3", root.FirstChild("a").NextSibling("a").Attribute("i"));
    EXPECT_FALSE(root.FirstChild("b").NextSibling("b"));
    EXPECT_FALSE(root.FirstChild("A"));
    EXPECT_EQ("x", root.FirstChild().Parent().Name());
    EXPECT_FALSE(root.Parent());
    EXPECT_FALSE(root.NextSibling());
}

TEST(XmlView, MarkupLeavesOutAttributesOfTheElementItself) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8("<x a='1' b='2' c='3'><y a='1'/></x>"));
    EXPECT_EQ("<x b=\"2\"><y a=\"1\"/></x>", MarkupWithout(document.RootView(), {"a", "c", "none"}));
    EXPECT_EQ("<x a=\"1\" b=\"2\" c=\"3\"><y a=\"1\"/></x>", Xml::Saved(document));
    EXPECT_EQ("<y/>", MarkupWithout(document.RootView().FirstChild(), {"a"}));
}

TEST(XmlView, OffsetIsThatOfTheStartTag) {
    const std::string strText =
        "\xEF\xBB\xBF<?xml version=\"1.0\"?>\r\n<!-- <x> --><x>\xC3\xA4\r\n <y "
        "z='&lt;&#10;'/>&amp;<![CDATA[<y>]]><y></y></x>";
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8(strText));
    const CXMLView root = document.RootView();
    EXPECT_EQ(strText.find("<x>\xC3"), root.Offset());
    EXPECT_EQ(strText.find("<y z"), root.FirstChild().Offset());
    EXPECT_EQ(strText.rfind("<y>"), root.FirstChild().NextSibling().Offset());
}

TEST(XmlView, DepthIsThatOfTheDeepestElement) {
    EXPECT_EQ(0, CXMLView().Depth());
    const std::pair<const char*, int> aRows[] = {{"<a/>", 1},
                                                 {"<a>t<!-- c --></a>", 1},
                                                 {"<a><b/><b/></a>", 2},
                                                 {"<a><b><c/></b><b/></a>", 3},
                                                 {"<a><b/><b><c/><c>t<d/></c></b></a>", 4}};
    CXMLParser nested;
    ASSERT_TRUE(nested.LoadUtf8("<a><b/><c><d/></c></a>"));
    EXPECT_EQ(1, nested.RootView().FirstChild("b").Depth());  // what stands beside it does not count
    for (const auto& [pText, iDepth] : aRows) {
        CXMLParser document;
        ASSERT_TRUE(document.LoadUtf8(pText));
        EXPECT_EQ(iDepth, document.RootView().Depth()) << pText;
    }
}

TEST(XmlView, OffsetOfTheFirstByteIsZero) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8("<x/>"));
    EXPECT_EQ(0U, document.RootView().Offset());
}

TEST(XmlView, OffsetStaysWhenTheElementMovesOrChanges) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8("<x><y/><z/></x>"));
    auto pNode = document.XPathSelectSingleNode(L"/x/y");
    document.GetRootElement()->AppendChild(pNode);
    pNode->SetText(L"changed");
    EXPECT_EQ(3U, pNode->View().Offset());
}

TEST(XmlView, WhatWasNotLoadedHasNoOffset) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8("<x><y/></x>"));
    EXPECT_EQ(std::string::npos, document.CreateNode(XMLPARSER_NODE_ELEMENT, L"z")->View().Offset());
    EXPECT_EQ(std::string::npos, CXMLParser(document).RootView().Offset());
}
