#include <gtest/gtest.h>

#include <functional>
#include <iterator>

#include "platform/xml/CXMLWriter.h"
#include "platform/xml/FaultPoint.h"
#include "tests/support/TempDir.h"
#include "tests/support/XmlText.h"
#include "xml/CPolicyDocument.h"

// Every operation of the XML layer can fail where it begins, and leaves everything as it was.

namespace {

/** Goes through every operation once. @return the document and the written text at the end */
std::string UseEverything(const std::wstring& strPath) {
    CXMLParser document;
    document.LoadXML(L"<x a=\"1\"><b/><c>t</c></x>");
    document.LoadUtf8("<x a=\"1\"><b/><c>t</c></x>");
    auto pNode = document.CreateNode(XMLPARSER_NODE_ELEMENT, L"new");
    pNode->SetText(L"text");
    const auto pRoot = document.GetRootElement();
    pRoot->AppendChild(pNode);
    pRoot->SetAttribute(L"s", L"v");
    pRoot->RemoveAttribute(L"a");
    pRoot->XPathSelectSingleNode(L"./b");
    pRoot->XPathSelectNodes(L"./b");
    document.XPathSelectSingleNode(L"/x/b");
    document.XPathSelectNodes(L"//b");
    const CXMLParser file(strPath.c_str());
    std::string strOut = Xml::Narrow(pRoot->GetXML()) + Xml::Saved(document) + Xml::Saved(file);
    CXMLWriter writer(strOut);
    writer.Declaration();
    writer.StartElement("e");
    writer.Attribute("a", "v");
    writer.Text("t");
    writer.Raw("<r/>");
    writer.Node(document.RootView());
    writer.EndElement();
    return strOut;
}

}  // namespace

TEST(XmlFaults, EveryOperationFailsAtItsTurnAndLosesNothing) {
    const CTempDir folder;
    const std::wstring strPath = OS::WideText(folder.Write("file.xml", "<f/>"));
    XmlFaults::FailAt(0);
    const std::string strExpected = UseEverything(strPath);
    const int iOperations = XmlFaults::GetCount();
    EXPECT_EQ(22, iOperations);
    for (int i = 1; i <= iOperations; ++i) {
        XmlFaults::FailAt(i);
        EXPECT_EQ("injected fault", Xml::Thrown([&] { UseEverything(strPath); })) << i;
        EXPECT_EQ(i, XmlFaults::GetCount());
    }
    EXPECT_EQ(strExpected, UseEverything(strPath));
}

TEST(XmlFaults, FailedChangeLeavesTheDocumentAsItWas) {
    XmlFaults::FailAt(0);
    CXMLParser document;
    ASSERT_TRUE(document.LoadXML(L"<x a=\"1\">t</x>"));
    const auto pRoot = document.GetRootElement();
    auto pNode = document.CreateNode(XMLPARSER_NODE_ELEMENT, L"new");
    XmlFaults::FailAt(1);
    EXPECT_EQ("injected fault", Xml::Thrown([&] { pRoot->SetText(L"u"); }));
    XmlFaults::FailAt(1);
    EXPECT_EQ("injected fault", Xml::Thrown([&] { pRoot->SetAttribute(L"a", L"2"); }));
    XmlFaults::FailAt(1);
    EXPECT_EQ("injected fault", Xml::Thrown([&] { pRoot->RemoveAttribute(L"a"); }));
    XmlFaults::FailAt(1);
    EXPECT_EQ("injected fault", Xml::Thrown([&] { pRoot->AppendChild(pNode); }));
    EXPECT_EQ("<x a=\"1\">t</x>", Xml::Saved(document));
}

TEST(XmlFaults, PolicyDocumentIsReadAgainAfterAFailure) {
    CPolicyDocument document(std::string_view("<a/>"));
    XmlFaults::FailAt(1);
    EXPECT_EQ("injected fault", Xml::Thrown([&] { document.Load(); }));
    EXPECT_EQ("<a/>", Xml::Saved(document.Load()));
}

TEST(XmlFaults, EveryLookupFindsNothingAtItsTurn) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadXML(L"<x><b/></x>"));
    const auto pRoot = document.GetRootElement();
    const CXMLView root = document.RootView();
    std::string strOut;
    CXMLWriter writer(strOut);
    writer.StartElement("e");
    writer.TextElement("f", "");
    const std::function<bool()> aLookups[] = {
        [&] { return document.GetRootElement() != nullptr; },
        [&] { return static_cast<bool>(document.RootView()); },
        [&] { return document.XPathSelectSingleNode(L"/x/b") != nullptr; },
        [&] { return document.XPathSelectNodes(L"/x/b") != nullptr; },
        [&] { return pRoot->XPathSelectSingleNode(L"./b") != nullptr; },
        [&] { return pRoot->XPathSelectNodes(L"./b")->GetLength() == 1; },
        [&] { return static_cast<bool>(root.FirstChild("b")); },
        [&] { return writer.IsIn("e"); },
        [&] { return writer.HasEnded("f"); },
        [&] { return StartsWithElement("<e/>", "e"); },
    };
    const int iLookups = static_cast<int>(std::size(aLookups));
    for (int iAt = 0; iAt <= iLookups; ++iAt) {
        XmlFaults::FindNothingAt(iAt);
        for (int i = 1; i <= iLookups; ++i) {
            EXPECT_EQ(i != iAt, aLookups[i - 1]()) << i << " of " << iAt;
            EXPECT_EQ(i, XmlFaults::GetLookupCount());
        }
    }
}

TEST(XmlFaults, WalkingAndWritingAreNoLookups) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadXML(L"<x><b/></x>"));
    const auto pRoot = document.GetRootElement();
    XmlFaults::FindNothingAt(1);
    EXPECT_EQ("<b/>", Xml::Markup(pRoot->GetFirstChild()));
    EXPECT_EQ("<x><b/></x>", Xml::Saved(document));
    EXPECT_EQ(0, XmlFaults::GetLookupCount());
}

TEST(XmlFaults, NamespacesInScopeAreFoundInTimeThatGrowsWithTheDocument) {
    // Many attributes on the ancestors, of which one declares a namespace, and as many items below.
    const auto visits = [](int iCount) {
        std::string strText = "<x xmlns:p='u'";
        for (int i = 0; i < iCount; ++i) {
            strText += " a" + std::to_string(i) + "=''";
        }
        strText += '>';
        for (int i = 0; i < iCount; ++i) {
            strText += "<m><p:item/></m>";
        }
        XmlFaults::FindNothingAt(0);
        XmlFaults::TakeVisits();
        CXMLParser source;
        EXPECT_TRUE(source.LoadUtf8(strText + "</x>"));
        CXMLParser target;
        EXPECT_TRUE(target.LoadUtf8("<t/>"));
        const auto pItems = source.XPathSelectNodes(L"/x/m/p:item");
        EXPECT_EQ(iCount, pItems->GetLength());
        for (int i = 0; i < pItems->GetLength(); ++i) {
            auto pItem = pItems->GetItem(i);
            EXPECT_EQ("<p:item xmlns:p=\"u\"/>", Xml::Markup(pItem));
            target.GetRootElement()->AppendChild(pItem);
        }
        return XmlFaults::TakeVisits();
    };
    const int iOnce = visits(100);
    EXPECT_GE(iOnce, 200);
    EXPECT_LE(visits(200), 2 * iOnce);
}

TEST(XmlFaults, NamespacesInScopeCostWhatIsWritten) {
    const auto visits = [](int iDeclarations) {
        std::string strText = "<x";
        for (int i = 0; i < iDeclarations; ++i) {
            strText += " xmlns:p" + std::to_string(i) + "='u'";
        }
        XmlFaults::FindNothingAt(0);
        CXMLParser source;
        EXPECT_TRUE(source.LoadUtf8(strText + "><a/></x>"));
        CXMLParser target;
        EXPECT_TRUE(target.LoadUtf8("<t/>"));
        auto pNode = source.XPathSelectSingleNode(L"/x/a");
        XmlFaults::TakeVisits();
        const std::string strMarkup = Xml::Markup(pNode);
        target.GetRootElement()->AppendChild(pNode);
        EXPECT_EQ(strMarkup, Xml::Markup(pNode));
        EXPECT_EQ("<t>" + strMarkup + "</t>", Xml::Saved(target));
        return XmlFaults::TakeVisits();
    };
    const int iOnce = visits(100);
    EXPECT_GE(iOnce, 200);
    EXPECT_LE(visits(200), 2 * iOnce);
}
