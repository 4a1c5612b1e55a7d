#include "platform/xml/CXMLNode.h"

#include <gtest/gtest.h>

#include "tests/support/XmlText.h"

using Xml::Markup;
using Xml::Narrow;
using Xml::Saved;
using Xml::Thrown;

namespace {

CXMLParser Load(const std::string& strText) {
    CXMLParser document;
    EXPECT_TRUE(document.LoadUtf8(strText)) << strText;
    return document;
}

OS::CAutoObjPtr<CXMLNode> Select(const CXMLParser& document, const wchar_t* pXPath) {
    return document.XPathSelectSingleNode(pXPath);
}

OS::CAutoObjPtr<CXMLNode> Create(CXMLParser& document, const wchar_t* pName) {
    return document.CreateNode(XMLPARSER_NODE_ELEMENT, pName);
}

std::string RootText(const std::string& strText) {
    return Narrow(Load(strText).GetRootElement()->GetText());
}

}  // namespace

// --- text ------------------------------------------------------------------------------------------------------------

TEST(XmlNode, TextIsAllTextAndCdataBelowJoinedUntrimmed) {
    EXPECT_EQ("a b", RootText("<x><![CDATA[a]]> <![CDATA[b]]></x>"));
    EXPECT_EQ("  ", RootText("<x> <!--c--> </x>"));
    EXPECT_EQ(" one two three ", RootText("<x> one <y>two<z> </z></y><?p no?><![CDATA[three]]> </x>"));
    EXPECT_EQ("", RootText("<x/>"));
    EXPECT_EQ("", RootText("<x><y/></x>"));
    EXPECT_EQ("<&>\"'\t\r\n", RootText("<x>&lt;&amp;&gt;&quot;&apos;&#9;&#13;&#10;</x>"));
    EXPECT_EQ("a\nb\nc", RootText("<x>a\r\nb\rc</x>"));
}

TEST(XmlNode, SetTextReplacesAllChildren) {
    CXMLParser document = Load("<x a=\"1\">t<y>u</y><!--c--><![CDATA[v]]></x>");
    const auto pNode = Select(document, L"/x");
    pNode->SetText(L"new");
    EXPECT_EQ("<x a=\"1\">new</x>", Saved(document));
    pNode->SetText(L"newer");
    EXPECT_EQ("<x a=\"1\">newer</x>", Saved(document));
    pNode->SetText(L"");
    EXPECT_EQ("<x a=\"1\"/>", Saved(document));
    pNode->SetText(L"again");
    pNode->SetText(nullptr);
    EXPECT_EQ("<x a=\"1\"/>", Saved(document));
}

TEST(XmlNode, ChildTakenOutBySetTextStaysUsable) {
    CXMLParser document = Load("<x><y><z>t</z></y></x>");
    const auto pChild = Select(document, L"/x/y");
    const auto pList = document.XPathSelectNodes(L"/x/y/z");
    Select(document, L"/x")->SetText(L"gone");
    EXPECT_EQ("<y><z>t</z></y>", Markup(pChild));
    EXPECT_EQ(nullptr, pChild->GetParentNode());
    EXPECT_EQ(L"t", pList->GetItem(0)->GetText());
    EXPECT_EQ(0, document.XPathSelectNodes(L"//y")->GetLength());
    EXPECT_EQ("<x>gone</x>", Saved(document));
}

TEST(XmlNode, SetTextIsReadBackExactly) {
    for (const std::wstring& strText : {std::wstring(L" \t\r\n "), std::wstring(L"<a>&amp;]]>\"'"),
                                        std::wstring(L"\u0085\u2028\uFEFF\uFFFD\U0010FFFF"),
                                        std::wstring(L"a\r\nb\rc\nd"), std::wstring(100000, L'\u00E4')}) {
        CXMLParser document = Load("<x/>");
        document.GetRootElement()->SetText(strText);
        EXPECT_TRUE(strText == document.GetRootElement()->GetText());
        EXPECT_TRUE(strText == Load(Saved(document)).GetRootElement()->GetText());
    }
}

TEST(XmlNode, CharacterThatXmlCannotCarryIsRefusedByItsNumber) {
    const struct {
        wchar_t cBad;
        const char* pNumber;
    } ROWS[] = {
        {0x1, "U+0001"},    {0x8, "U+0008"},    {0xB, "U+000B"},    {0x1F, "U+001F"},       {0xD800, "U+D800"},
        {0xDFFF, "U+DFFF"}, {0xFFFE, "U+FFFE"}, {0xFFFF, "U+FFFF"}, {0x110000, "U+110000"}, {-1, "U+FFFFFFFF"},
    };
    for (const auto& row : ROWS) {
        CXMLParser document = Load("<x>old</x>");
        const auto pNode = document.GetRootElement();
        EXPECT_EQ(std::string("text of element x: the character ") + row.pNumber + " cannot be written in XML",
                  Thrown([&] { pNode->SetText(std::wstring(L"ab") + row.cBad); }));
        EXPECT_EQ("<x>old</x>", Saved(document));
    }
}

TEST(XmlNode, ZeroCharacterIsRefused) {
    CXMLParser document = Load("<x>old</x>");
    EXPECT_EQ("text of element x: the character U+0000 cannot be written in XML",
              Thrown([&] { document.GetRootElement()->SetText(std::wstring(L"a\0b", 3)); }));
    EXPECT_EQ("<x>old</x>", Saved(document));
}

TEST(XmlNode, TextCannotBeSetOnWhatIsNoElement) {
    CXMLParser document = Load("<x><!--c--></x>");
    EXPECT_EQ("setting a text: the node is no element",
              Thrown([&] { Select(document, L"/x/comment()")->SetText(L"t"); }));
}

// --- walking ---------------------------------------------------------------------------------------------------------

TEST(XmlNode, WalkYieldsElementsOnly) {
    const CXMLParser document = Load("<x> t <!--c--><a/>u<?p?><![CDATA[v]]><b/> w </x>");
    auto pChild = Select(document, L"/x")->GetFirstChild();
    EXPECT_EQ("<a/>", Markup(pChild));
    pChild = pChild->GetNextSibling();
    EXPECT_EQ("<b/>", Markup(pChild));
    pChild = pChild->GetNextSibling();
    EXPECT_EQ(nullptr, pChild);
}

TEST(XmlNode, WalkOverElementWithoutChildElementsEndsAtOnce) {
    EXPECT_EQ(nullptr, Select(Load("<x/>"), L"/x")->GetFirstChild());
    EXPECT_EQ(nullptr, Select(Load("<x>text<!--c--></x>"), L"/x")->GetFirstChild());
}

TEST(XmlNode, ParentOfTheRootIsNone) {
    const CXMLParser document = Load("<?p?><x><y/></x>");
    const auto pChild = Select(document, L"/x/y");
    EXPECT_EQ("<x><y/></x>", Markup(pChild->GetParentNode()));
    EXPECT_EQ(nullptr, pChild->GetParentNode()->GetParentNode());
    EXPECT_EQ(nullptr, document.GetRootElement()->GetNextSibling());
}

TEST(XmlNode, ToElementIsAnotherWrapperOfTheSameNode) {
    const CXMLParser document = Load("<x/>");
    auto pNode = Select(document, L"/x");
    const auto pElement = pNode->ToElement();
    const auto pSecond = pElement->ToElement();
    pNode.Reset();
    pElement->SetAttribute(L"a", L"1");
    EXPECT_EQ(L"1", pSecond->GetAttribute(L"a"));
}

TEST(XmlNode, WhatIsNoElementHasNoElement) {
    const CXMLParser document = Load("<x>t<!--c--><?p?></x>");
    for (const wchar_t* pXPath : {L"/x/text()", L"/x/comment()", L"/x/processing-instruction()"}) {
        const auto pNode = Select(document, pXPath);
        ASSERT_NE(nullptr, pNode);
        EXPECT_EQ(nullptr, pNode->ToElement());
        EXPECT_EQ(nullptr, pNode->GetFirstChild());
        EXPECT_EQ(L"", pNode->GetAttribute(L"a"));
        EXPECT_EQ("<x>t<!--c--><?p?></x>", Markup(pNode->GetParentNode()));
    }
    EXPECT_EQ(L"t", Select(document, L"/x/text()")->GetText());
}

TEST(XmlNode, AbsentAttributeIsEmpty) {
    const auto pNode = Select(Load("<x a='' b='1' ab='2'/>"), L"/x");
    EXPECT_EQ(L"", pNode->GetAttribute(L"a"));
    EXPECT_EQ(L"1", pNode->GetAttribute(L"b"));
    EXPECT_EQ(L"", pNode->GetAttribute(L"B"));
    EXPECT_EQ(L"", pNode->GetAttribute(L"c"));
    EXPECT_EQ(L"", pNode->GetAttribute(L""));
    EXPECT_EQ(L"", pNode->GetAttribute(static_cast<const wchar_t*>(nullptr)));
    EXPECT_EQ(L"2", pNode->GetAttribute(std::wstring(L"ab")));
}

TEST(XmlNode, AttributeIsReadAsXmlNormalisesIt) {
    const auto pNode = Select(Load("<x a=' a\tb\r\nc\nd ' b='&#9;&#13;&#10;&lt;&apos;' c=\"'\"/>"), L"/x");
    EXPECT_EQ(L" a b c d ", pNode->GetAttribute(L"a"));
    EXPECT_EQ(L"\t\r\n<'", pNode->GetAttribute(L"b"));
    EXPECT_EQ(L"'", pNode->GetAttribute(L"c"));
}

// --- appending -------------------------------------------------------------------------------------------------------

TEST(XmlAppend, NewNodeBecomesTheLastChild) {
    CXMLParser document = Load("<x><a/>t</x>");
    auto pNode = Create(document, L"b");
    pNode->SetText(L"v");
    document.GetRootElement()->AppendChild(pNode);
    EXPECT_EQ("<x><a/>t<b>v</b></x>", Saved(document));
    EXPECT_EQ("<x><a/>t<b>v</b></x>", Markup(pNode->GetParentNode()));
}

TEST(XmlAppend, EveryWrapperOfANewNodeFollowsItIntoPlace) {
    CXMLParser document = Load("<x/>");
    auto pNode = Create(document, L"b");
    const auto pElement = pNode->ToElement();
    document.GetRootElement()->AppendChild(pNode);
    pElement->SetAttribute(L"a", L"1");
    pNode->SetText(L"v");
    EXPECT_EQ("<x><b a=\"1\">v</b></x>", Saved(document));
}

TEST(XmlAppend, NodeOfTheSameDocumentMovesWithAllItHolds) {
    CXMLParser document = Load("<x><a i=\"1\"><c>t</c><!--c--></a><b/></x>");
    auto pNode = Select(document, L"/x/a");
    const auto pOther = Select(document, L"/x/a");
    Select(document, L"/x/b")->AppendChild(pNode);
    EXPECT_EQ("<x><b><a i=\"1\"><c>t</c><!--c--></a></b></x>", Saved(document));
    pOther->ToElement()->SetAttribute(L"i", L"2");
    EXPECT_EQ(L"2", Select(document, L"/x/b/a")->GetAttribute(L"i"));
    document.GetRootElement()->AppendChild(pNode);
    EXPECT_EQ("<x><b/><a i=\"2\"><c>t</c><!--c--></a></x>", Saved(document));
}

TEST(XmlAppend, AppendingTheLastChildAgainChangesNothing) {
    CXMLParser document = Load("<x><a/><b/></x>");
    auto pNode = Select(document, L"/x/b");
    document.GetRootElement()->AppendChild(pNode);
    EXPECT_EQ("<x><a/><b/></x>", Saved(document));
}

TEST(XmlAppend, NodeOfAnotherDocumentIsCopiedAndThePointerFollowsTheCopy) {
    CXMLParser source = Load("<s><a i=\"1\">t<c/><![CDATA[u]]><?p q?><!--c--></a></s>");
    CXMLParser target = Load("<t><z/></t>");
    auto pNode = Select(source, L"/s/a");
    const auto pOther = Select(source, L"/s/a");
    target.GetRootElement()->AppendChild(pNode);
    EXPECT_EQ("<t><z/><a i=\"1\">t<c/><![CDATA[u]]><?p q?><!--c--></a></t>", Saved(target));
    pNode->ToElement()->SetAttribute(L"i", L"2");
    pOther->ToElement()->SetAttribute(L"i", L"3");
    EXPECT_EQ(L"2", Select(target, L"/t/a")->GetAttribute(L"i"));
    EXPECT_EQ(L"3", Select(source, L"/s/a")->GetAttribute(L"i"));
    EXPECT_EQ("<s><a i=\"3\">t<c/><![CDATA[u]]><?p q?><!--c--></a></s>", Saved(source));
}

TEST(XmlAppend, EitherDocumentMayEndAfterwards) {
    OS::CAutoObjPtr<CXMLNode> pNode;
    std::string strSource;
    {
        CXMLParser target = Load("<t/>");
        CXMLParser source = Load("<s><a>text</a></s>");
        pNode = Select(source, L"/s/a");
        target.GetRootElement()->AppendChild(pNode);
        source = CXMLParser();
        EXPECT_EQ("<t><a>text</a></t>", Saved(target));
    }
    EXPECT_EQ("<t><a>text</a></t>", Markup(pNode->GetParentNode()));
}

TEST(XmlAppend, NodeOfANodeThatIsNotAttached) {
    CXMLParser document = Load("<x/>");
    auto pOuter = Create(document, L"outer");
    auto pInner = Create(document, L"inner");
    pOuter->AppendChild(pInner);
    EXPECT_EQ("<outer><inner/></outer>", Markup(pOuter));
    EXPECT_EQ("<outer><inner/></outer>", Markup(pInner->GetParentNode()));
    EXPECT_EQ("<x/>", Saved(document));
    document.GetRootElement()->AppendChild(pOuter);
    EXPECT_EQ("<x><outer><inner/></outer></x>", Saved(document));
}

TEST(XmlAppend, CreatedNodeGoesIntoAnotherDocument) {
    CXMLParser source;
    CXMLParser target = Load("<t/>");
    auto pNode = Create(source, L"a");
    target.GetRootElement()->AppendChild(pNode);
    pNode->SetText(L"v");
    EXPECT_EQ("<t><a>v</a></t>", Saved(target));
}

TEST(XmlAppend, RootMovedAwayLeavesNoRoot) {
    CXMLParser document = Load("<x/>");
    const auto pOuter = Create(document, L"outer");
    OS::CAutoObjPtr<CXMLNode> pRoot = document.GetRootElement();
    pOuter->AppendChild(pRoot);
    EXPECT_EQ("<outer><x/></outer>", Markup(pOuter));
    EXPECT_EQ(nullptr, document.GetRootElement());
    EXPECT_EQ(nullptr, document.XPathSelectNodes(L"/x"));
    EXPECT_EQ("", Saved(document));
}

TEST(XmlAppend, NothingIsAppendedToItselfOrBelowItself) {
    CXMLParser document = Load("<x><a><b/></a></x>");
    auto pNode = Select(document, L"/x/a");
    EXPECT_EQ("appending a node: element a cannot hold itself", Thrown([&] { pNode->AppendChild(pNode); }));
    EXPECT_EQ("appending a node: element a cannot hold itself",
              Thrown([&] { Select(document, L"/x/a/b")->AppendChild(pNode); }));
    EXPECT_EQ("<x><a><b/></a></x>", Saved(document));
}

TEST(XmlAppend, NullAndNonElementsAreRefused) {
    CXMLParser document = Load("<x><a/><!--c--></x>");
    OS::CAutoObjPtr<CXMLNode> pNone;
    EXPECT_EQ("appending a node: there is none", Thrown([&] { document.GetRootElement()->AppendChild(pNone); }));
    auto pNode = Select(document, L"/x/a");
    EXPECT_EQ("appending a node: the node is no element",
              Thrown([&] { Select(document, L"/x/comment()")->AppendChild(pNode); }));
    EXPECT_EQ("<x><a/><!--c--></x>", Saved(document));
}

TEST(XmlAppend, NamespaceDeclarationsInScopeComeAlong) {
    const struct {
        const char* pSource;
        const char* pTarget;
        const char* pExpected;
    } ROWS[] = {
        {"<s xmlns:p='u'><p:a p:x='1'/></s>", "<t/>", "<t><p:a p:x=\"1\" xmlns:p=\"u\"/></t>"},
        {"<s xmlns='u'><a/></s>", "<t/>", "<t><a xmlns=\"u\"/></t>"},
        {"<s xmlns='u' xmlns:p='v'><a xmlns:q='w'/></s>", "<t/>",
         "<t><a xmlns:q=\"w\" xmlns=\"u\" xmlns:p=\"v\"/></t>"},
        {"<s xmlns:p='outer'><m xmlns:p='inner'><a/></m></s>", "<t/>", "<t><a xmlns:p=\"inner\"/></t>"},
        {"<s xmlns='u'><m xmlns=''><a/></m></s>", "<t/>", "<t><a/></t>"},
        {"<s xmlns:p='u'><a xmlns:p='own'/></s>", "<t/>", "<t><a xmlns:p=\"own\"/></t>"},
        // What is in scope there already is not repeated.
        {"<s xmlns:p='u'><a/></s>", "<t xmlns:p='u'/>", "<t xmlns:p=\"u\"><a/></t>"},
        {"<s xmlns:p='u'><a/></s>", "<t xmlns:p='other'/>", "<t xmlns:p=\"other\"><a xmlns:p=\"u\"/></t>"},
        {"<s xmlnsp='u'><a/></s>", "<t/>", "<t><a/></t>"},
    };
    for (const auto& row : ROWS) {
        const CXMLParser source = Load(row.pSource);
        CXMLParser target = Load(row.pTarget);
        auto pNode = Select(source, L"//*[not(*)]");
        target.GetRootElement()->AppendChild(pNode);
        EXPECT_EQ(row.pExpected, Saved(target));
    }
}

TEST(XmlAppend, NamespaceDeclarationsComeAlongInsideOneDocument) {
    CXMLParser document = Load("<x xmlns:q='w'><m xmlns:p='u'><p:a/></m></x>");
    auto pNode = Select(document, L"/x/m/p:a");
    document.GetRootElement()->AppendChild(pNode);
    EXPECT_EQ("<x xmlns:q=\"w\"><m xmlns:p=\"u\"/><p:a xmlns:p=\"u\"/></x>", Saved(document));
}

TEST(XmlAppend, WhatIsNoElementTakesNoDeclarationsAlong) {
    const CXMLParser source = Load("<s xmlns:p='u'>t<!--c--></s>");
    CXMLParser target = Load("<t/>");
    for (const wchar_t* pXPath : {L"/s/text()", L"/s/comment()"}) {
        auto pNode = Select(source, pXPath);
        target.GetRootElement()->AppendChild(pNode);
    }
    EXPECT_EQ("<t>t<!--c--></t>", Saved(target));
}

TEST(XmlAppend, NothingRecursesOverDepth) {
    constexpr int DEPTH = 300000;
    CXMLParser document;
    auto pNode = Create(document, L"a");
    for (int i = 1; i < DEPTH; ++i) {
        auto pOuter = Create(document, L"a");
        pOuter->AppendChild(pNode);
        pNode = std::move(pOuter);
    }
    EXPECT_EQ(DEPTH * 7U - 3U, Markup(pNode).size());
    EXPECT_EQ(L"", pNode->GetText());
    CXMLParser target = Load("<t/>");
    target.GetRootElement()->AppendChild(pNode);
    const CXMLParser copy(target);
    EXPECT_EQ(DEPTH * 7U + 4U, Saved(copy).size());
    EXPECT_EQ(DEPTH, copy.XPathSelectNodes(L"//a")->GetLength());
    target.GetRootElement()->SetText(L"flat");
    EXPECT_EQ("<t>flat</t>", Saved(target));
}
