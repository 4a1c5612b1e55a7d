#include "platform/xml/CXMLNodeList.h"

#include <gtest/gtest.h>

#include "tests/support/XmlText.h"

TEST(XmlNodeList, GivesItsNodesInDocumentOrder) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadXML(L"<x><k>1</k><o/><k>2</k><k>3</k></x>"));
    const auto pList = document.XPathSelectNodes(L"/x/k");
    std::wstring strTexts;
    for (int i = 0; i < pList->GetLength(); ++i) {
        strTexts += pList->GetItem(i)->GetText();
        EXPECT_EQ("k", pList->ViewAt(i).Name());
    }
    EXPECT_EQ(L"123", strTexts);
}

TEST(XmlNodeList, GivesNullOutsideItsLength) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadXML(L"<x><k/></x>"));
    const auto pList = document.XPathSelectNodes(L"/x/k");
    for (const int iIndex : {-1, 1, 2147483647, -2147483647}) {
        EXPECT_EQ(nullptr, pList->GetItem(iIndex));
        EXPECT_FALSE(pList->ViewAt(iIndex));
    }
    EXPECT_EQ(nullptr, document.XPathSelectNodes(L"/x/none")->GetItem(0));
}

TEST(XmlNodeList, StaysAsItWasWhileItsNodesMove) {
    CXMLParser source;
    ASSERT_TRUE(source.LoadXML(L"<x><k>1</k><k>2</k><k>3</k></x>"));
    CXMLParser target;
    ASSERT_TRUE(target.LoadXML(L"<t/>"));
    const auto pList = source.XPathSelectNodes(L"/x/k");
    for (int i = 0; i < pList->GetLength(); ++i) {
        auto pNode = pList->GetItem(i);
        target.GetRootElement()->AppendChild(pNode);
    }
    EXPECT_EQ("<t><k>1</k><k>2</k><k>3</k></t>", Xml::Saved(target));

    const auto pOwn = source.CreateNode(XMLPARSER_NODE_ELEMENT, L"own");
    for (int i = 0; i < pList->GetLength(); ++i) {
        auto pNode = pList->GetItem(i);
        pOwn->AppendChild(pNode);
    }
    EXPECT_EQ("<own><k>1</k><k>2</k><k>3</k></own>", Xml::Markup(pOwn));
    EXPECT_EQ(3, pList->GetLength());
    EXPECT_EQ("<x/>", Xml::Saved(source));
}
