#include <gtest/gtest.h>

#include "tests/support/XmlText.h"

using Xml::Thrown;

namespace {

constexpr char DOCUMENT[] =
    "<r><a i='1'><b i='2'/><b i='3'><c i='4'/></b></a><A i='5'/><a i='6'/><p:a i='7'><b i='8'/></p:a>"
    "<a i='9'><b i='10'/><c i='11'/><b i='12'><c i='13'/><c i='14'/></b></a></r>";

std::string Ids(const OS::CAutoObjPtr<CXMLNodeList>& pList) {
    std::string strIds;
    for (int i = 0; i < pList->GetLength(); ++i) {
        strIds += (i > 0 ? " " : "") + Xml::Narrow(pList->GetItem(i)->GetAttribute(L"i"));
    }
    return strIds;
}

std::string FirstId(const OS::CAutoObjPtr<CXMLNode>& pNode) {
    return pNode == nullptr ? "" : Xml::Narrow(pNode->GetAttribute(L"i"));
}

class XPathTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(m_document.LoadUtf8(DOCUMENT)); }

    OS::CAutoObjPtr<CXMLElement> Element(const wchar_t* pXPath) const {
        return m_document.XPathSelectSingleNode(pXPath)->ToElement();
    }

    CXMLParser m_document;
};

}  // namespace

TEST_F(XPathTest, SelectsInTheWholeDocument) {
    const struct {
        const wchar_t* pXPath;
        const char* pExpected;
    } ROWS[] = {
        {L"/r/a", "1 6 9"},
        {L"/r/a/b", "2 3 10 12"},
        {L"/r/a/b/c", "4 13 14"},
        {L"/r/a/c", "11"},
        {L"r/a/c", "11"},
        {L"./r/a/c", "11"},
        {L"/r/p:a/b", "8"},
        {L"/r/A", "5"},
        {L"/R/a", ""},
        {L"/r/a/B", ""},
        {L"/a", ""},
        {L"a", ""},
        {L"/r/r", ""},
        {L"//c", "4 11 13 14"},
        {L"/r/a[2]", "6"},
        {L"/r/a[@i='9']/b", "10 12"},
        {L"//c/..", "3 9 12"},
        {L"//c/ancestor::a", "1 9"},
        {L"/r/*[last()]", "9"},
        {L"/r//a | //A", "1 5 6 9"},
        {L"//*[local-name()='a']", "1 6 7 9"},
        {L" /r/a ", "1 6 9"},
        {L"/r/a/", nullptr},
        {L"//c[../b]", "11"},
        {L"/", ""},
        {L"/..", ""},
        {L"/r/child::a/self::a", "1 6 9"},
    };
    for (const auto& row : ROWS) {
        if (row.pExpected == nullptr) {
            EXPECT_NE("nothing thrown", Thrown([&] { m_document.XPathSelectNodes(row.pXPath); }));
            continue;
        }
        const std::string strExpected = row.pExpected;
        EXPECT_EQ(strExpected, Ids(m_document.XPathSelectNodes(row.pXPath))) << Xml::Narrow(row.pXPath);
        EXPECT_EQ(strExpected.substr(0, strExpected.find(' ')), FirstId(m_document.XPathSelectSingleNode(row.pXPath)));
    }
}

TEST_F(XPathTest, SelectsFromAnElement) {
    const auto pElement = Element(L"/r/a[3]");
    const struct {
        const wchar_t* pXPath;
        const char* pExpected;
    } ROWS[] = {
        {L"./b", "10 12"},  {L"b", "10 12"},        {L"./b/c", "13 14"}, {L"./c", "11"},
        {L"./a", ""},       {L"/r/A", "5"},         {L"/r", ""},         {L".", "9"},
        {L"..", ""},        {L".//c", "11 13 14"},  {L"//A", "5"},       {L"../a", "1 6 9"},
        {L"*", "10 11 12"}, {L"preceding::c", "4"},
    };
    for (const auto& row : ROWS) {
        const std::string strExpected = row.pExpected;
        EXPECT_EQ(strExpected, Ids(pElement->XPathSelectNodes(row.pXPath))) << Xml::Narrow(row.pXPath);
        EXPECT_EQ(strExpected.substr(0, strExpected.find(' ')), FirstId(pElement->XPathSelectSingleNode(row.pXPath)));
    }
}

TEST_F(XPathTest, NoMatchIsNullOrAnEmptyList) {
    EXPECT_EQ(nullptr, m_document.XPathSelectSingleNode(L"/r/none"));
    EXPECT_EQ(0, m_document.XPathSelectNodes(L"/r/none")->GetLength());
    EXPECT_EQ(nullptr, Element(L"/r")->XPathSelectSingleNode(L"./none"));
    EXPECT_EQ(0, Element(L"/r")->XPathSelectNodes(L"./none")->GetLength());
}

TEST_F(XPathTest, FaultyXPathThrows) {
    for (const wchar_t* pXPath :
         {L"", L"/r[", L"///", L"/r/a/", L"./", L"a b", L"$x", L"count(//a)", L"1", L"\xD800["}) {
        EXPECT_NE("nothing thrown", Thrown([&] { m_document.XPathSelectNodes(pXPath); })) << Xml::Narrow(pXPath);
        EXPECT_NE("nothing thrown", Thrown([&] { m_document.XPathSelectSingleNode(pXPath); }));
        EXPECT_NE("nothing thrown", Thrown([&] { Element(L"/r")->XPathSelectNodes(pXPath); }));
        EXPECT_NE("nothing thrown", Thrown([&] { Element(L"/r")->XPathSelectSingleNode(pXPath); }));
    }
    EXPECT_EQ(0U, Thrown([&] { m_document.XPathSelectNodes(L"/r["); }).find("XPath \"/r[\": "));
    EXPECT_NE("nothing thrown", Thrown([&] { m_document.XPathSelectNodes(static_cast<const wchar_t*>(nullptr)); }));
}

TEST_F(XPathTest, AttributesCannotBeSelected) {
    EXPECT_EQ("XPath \"/r/a/@i\": selects attributes; select their element and read them there",
              Thrown([&] { m_document.XPathSelectSingleNode(L"/r/a/@i"); }));
}

TEST_F(XPathTest, ManyMatchesOfNewNodesTakeNoTime) {
    constexpr int COUNT = 60000;
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8("<r><even/><odd/></r>"));
    std::string strExpected;
    for (int i = 0; i < COUNT; ++i) {
        auto pNode = document.CreateNode(XMLPARSER_NODE_ELEMENT, L"a");
        pNode->ToElement()->SetAttribute(L"i", std::to_wstring(i));
        document.XPathSelectSingleNode(i % 2 == 0 ? L"/r/even" : L"/r/odd")->AppendChild(pNode);
        if (i % 2 == 0) {
            strExpected += (i > 0 ? " " : "") + std::to_string(i);
        }
    }
    for (int i = 1; i < COUNT; i += 2) {
        strExpected += " " + std::to_string(i);
    }
    EXPECT_TRUE(strExpected == Ids(document.XPathSelectNodes(L"//odd/a | //even/a")));
    EXPECT_EQ("0", FirstId(document.XPathSelectSingleNode(L"//odd/a | //even/a")));
    EXPECT_EQ(COUNT + 2, document.XPathSelectNodes(L"//a | //a/..")->GetLength());
}

TEST_F(XPathTest, DeepNestingOfAnXPathIsRefusedNotRecursedInto) {
    EXPECT_NE("nothing thrown", Thrown([&] { m_document.XPathSelectNodes(std::wstring(100000, L'(')); }));
    std::wstring strDeep = L"/r";
    for (int i = 0; i < 100000; ++i) {
        strDeep += L"[a";
    }
    EXPECT_NE("nothing thrown", Thrown([&] { m_document.XPathSelectNodes(strDeep); }));
}

TEST_F(XPathTest, UnprefixedNamesMatchUnprefixedNamesOnly) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8("<r xmlns='u' xmlns:p='u'><a i='1'/><p:a i='2'/></r>"));
    EXPECT_EQ("1", Ids(document.XPathSelectNodes(L"/r/a")));
    EXPECT_EQ("1", Ids(document.XPathSelectNodes(L"//a")));
    EXPECT_EQ("2", Ids(document.XPathSelectNodes(L"/r/p:a")));
}

TEST_F(XPathTest, NamesBeyondAsciiMatch) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8("<r><\xC3\xA4 i='1'/></r>"));
    EXPECT_EQ("1", Ids(document.XPathSelectNodes(L"/r/\u00E4")));
    EXPECT_EQ("1", Ids(document.XPathSelectNodes(L"//\u00E4")));
}

TEST_F(XPathTest, NodesThatAreNotAttachedAreNotSeen) {
    auto pNode = m_document.CreateNode(XMLPARSER_NODE_ELEMENT, L"a");
    pNode->ToElement()->SetAttribute(L"i", L"new");
    EXPECT_EQ("1 6 9", Ids(m_document.XPathSelectNodes(L"/r/a")));
    EXPECT_EQ("1 6 9", Ids(m_document.XPathSelectNodes(L"//a")));
    EXPECT_EQ("9", Ids(m_document.XPathSelectNodes(L"(//a)[last()]")));
    EXPECT_EQ("9", FirstId(Element(L"/r")->XPathSelectSingleNode(L".//a[last()]")));
    EXPECT_EQ("12", FirstId(Element(L"/r/a/b/c")->XPathSelectSingleNode(L"//b[count(c)=2]")));
    EXPECT_EQ("", Ids(m_document.XPathSelectNodes(L"/*/following-sibling::*")));
    // Through a match of such a query the tree itself is changed.
    m_document.XPathSelectSingleNode(L"//a[@i='6']")->ToElement()->AppendChild(pNode);
    EXPECT_EQ("1 6 new 9", Ids(m_document.XPathSelectNodes(L"//a")));
}

TEST_F(XPathTest, NodesPutInPlaceLeaveNothingBesideTheRoot) {
    for (int i = 0; i < 2; ++i) {
        auto pNode = m_document.CreateNode(XMLPARSER_NODE_ELEMENT, L"z");
        m_document.GetRootElement()->AppendChild(pNode);
        EXPECT_EQ(1, m_document.XPathSelectNodes(L"/*")->GetLength());
        EXPECT_EQ(1, m_document.XPathSelectNodes(L"/node()")->GetLength());
        EXPECT_EQ(16 + i, m_document.XPathSelectNodes(L"//*")->GetLength());
        EXPECT_EQ(nullptr, Element(L"/r")->XPathSelectSingleNode(L"following::*"));
    }
}

TEST_F(XPathTest, FromANodeThatIsNotAttachedTheTopIsItsOwn) {
    auto pTop = m_document.CreateNode(XMLPARSER_NODE_ELEMENT, L"a");
    auto pChild = m_document.CreateNode(XMLPARSER_NODE_ELEMENT, L"b");
    const auto pElsewhere = m_document.CreateNode(XMLPARSER_NODE_ELEMENT, L"a");
    pTop->ToElement()->SetAttribute(L"i", L"top");
    pChild->ToElement()->SetAttribute(L"i", L"child");
    pTop->AppendChild(pChild);
    const auto pContext = pChild->ToElement();
    EXPECT_EQ("top", Ids(pContext->XPathSelectNodes(L"/a")));
    EXPECT_EQ("child", Ids(pContext->XPathSelectNodes(L"/a/b")));
    EXPECT_EQ("", Ids(pContext->XPathSelectNodes(L"/r")));
    EXPECT_EQ("top", Ids(pContext->XPathSelectNodes(L"//a")));
    EXPECT_EQ("child", Ids(pContext->XPathSelectNodes(L"//b")));
    EXPECT_EQ("top", Ids(pContext->XPathSelectNodes(L"..")));
    EXPECT_EQ("", Ids(pTop->ToElement()->XPathSelectNodes(L"following-sibling::*")));
    EXPECT_EQ("child", Ids(pTop->ToElement()->XPathSelectNodes(L"./b")));
}

TEST_F(XPathTest, TakenOutNodesAreNotSeen) {
    Element(L"/r/a[3]")->SetText(L"flat");
    EXPECT_EQ("4", Ids(m_document.XPathSelectNodes(L"//c")));
    EXPECT_EQ("2 3", Ids(m_document.XPathSelectNodes(L"/r/a/b")));
}
