#include "platform/xml/CXMLParser.h"

#include <gtest/gtest.h>

#include "tests/support/TempDir.h"
#include "tests/support/XmlText.h"

using Xml::Narrow;
using Xml::Reread;
using Xml::Saved;
using Xml::Thrown;

namespace {

/** @return "message @offset line:column", "loaded" for text that loads */
std::string LoadError(std::string_view strText) {
    CXMLParser document;
    if (document.LoadUtf8(strText)) {
        return document.GetLoadError().strMessage.empty() ? "loaded" : "loaded, with a message";
    }
    const SXMLLoadError& error = document.GetLoadError();
    return error.strMessage + " @" + std::to_string(error.iOffset) + " " + std::to_string(error.iLine) + ":" +
           std::to_string(error.iColumn);
}

std::string Nested(int iDepth) {
    std::string strText;
    for (int i = 0; i < iDepth; ++i) {
        strText += "<a>";
    }
    for (int i = 0; i < iDepth; ++i) {
        strText += "</a>";
    }
    return strText;
}

std::string Utf16(const std::u16string& strText, bool bBigEndian) {
    std::string strBytes;
    for (const char16_t c : u"\uFEFF" + strText) {
        const char cHigh = static_cast<char>(c >> 8U);
        const char cLow = static_cast<char>(c & 0xFFU);
        strBytes += bBigEndian ? cHigh : cLow;
        strBytes += bBigEndian ? cLow : cHigh;
    }
    return strBytes;
}

CXMLParser LoadFile(const std::string& strPath) {
    return CXMLParser(OS::WideText(strPath).c_str());
}

}  // namespace

// --- loading ---------------------------------------------------------------------------------------------------------

TEST(XmlLoad, WellFormedTextGivesItsRoot) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadXML(L"<SAPolicy a=\"1\"/>"));
    EXPECT_EQ(L"1", document.GetRootElement()->GetAttribute(L"a"));
    EXPECT_EQ("", document.GetLoadError().strMessage);
}

TEST(XmlLoad, FaultyTextIsRefusedWithItsPlace) {
    const struct {
        std::string strText;
        const char* pExpected;
    } ROWS[] = {
        {"", "no element found @0 1:1"},
        {" \n ", "no element found @3 2:2"},
        {"<!--only-->", "no element found @11 1:12"},
        {"<?xml version=\"1.0\"?>", "no element found @21 1:22"},
        {"text", "syntax error @0 1:1"},
        {"<a>", "an element is not closed @3 1:4"},
        {"<a>\n<b></b>\n", "an element is not closed @12 3:1"},
        {"<a", "unclosed token @0 1:1"},
        {"<a></b>", "mismatched tag @5 1:6"},
        {"<a/><b/>", "junk after document element @4 1:5"},
        {"<a x='1' x='2'/>", "duplicate attribute @9 1:10"},
        {"<a x=1/>", "not well-formed (invalid token) @5 1:6"},
        {"<a x='<'/>", "not well-formed (invalid token) @6 1:7"},
        {"<a>\n & </a>", "not well-formed (invalid token) @6 2:3"},
        {"<a>&nbsp;</a>", "undefined entity @3 1:4"},
        {"<a>&#0;</a>", "reference to invalid character number @3 1:4"},
        {"<a>&#xD800;</a>", "reference to invalid character number @3 1:4"},
        {"<a>&#x110000;</a>", "reference to invalid character number @3 1:4"},
        {"<a>]]></a>", "not well-formed (invalid token) @5 1:6"},
        {"<a><!-- -- --></a>", "not well-formed (invalid token) @10 1:11"},
        {"<a><![CDATA[</a>", "unclosed CDATA section @16 1:17"},
        {"<a>\x01</a>", "not well-formed (invalid token) @3 1:4"},
        {" <?xml version=\"1.0\"?><a/>", "XML or text declaration not at start of entity @1 1:2"},
        {"<?xml version=\"1.0\"?><a><?xml version=\"1.0\"?></a>",
         "XML or text declaration not at start of entity @24 1:25"},
        // Lines end at LF, CR LF and CR; columns count code points.
        {"<a>\r\n\r\n\xC3\xA4\xE2\x82\xAC&</a>", "not well-formed (invalid token) @13 3:4"},
        {"<a>\r\r&&</a>", "not well-formed (invalid token) @6 3:2"},
        // A byte order mark counts as bytes but takes no column.
        {"\xEF\xBB\xBF<a>&&</a>", "not well-formed (invalid token) @7 1:5"},
        {"\xEF\xBB\xBF", "no element found @3 1:1"},
        {"\xEF\xBB\xBF\xEF\xBB\xBF<a/>", "not well-formed (invalid token) @3 1:1"},
        // Not UTF-8: Latin-1, overlong, a surrogate, beyond the last code point, cut short, UTF-16.
        {"<a>\xE4 </a>", "not UTF-8 @3 1:4"},
        {"<a>\n\xC0\x80</a>", "not UTF-8 @4 2:1"},
        {"<a>\xED\xA0\x80</a>", "not UTF-8 @3 1:4"},
        {"<a>\xF4\x90\x80\x80</a>", "not UTF-8 @3 1:4"},
        {"<a b='\xE2\x82'/>", "not UTF-8 @6 1:7"},
        {"\xFF\xFE<\0a\0/\0>\0", "not UTF-8 @0 1:1"},
        {std::string("<\0a\0/\0>\0", 8), "not UTF-8 @0 1:1"},
        {std::string("\0<\0a\0/\0>", 8), "not UTF-8 @0 1:1"},
        {"<a>\xEF\xBF\xBE</a>", "not well-formed (invalid token) @3 1:4"},
        {std::string("<a>x\0y</a>", 10), "not well-formed (invalid token) @4 1:5"},
        {std::string("<a/>\0", 5), "not well-formed (invalid token) @4 1:5"},
    };
    for (const auto& row : ROWS) {
        EXPECT_EQ(row.pExpected, LoadError(row.strText)) << row.strText;
    }
}

TEST(XmlLoad, TextIsJudgedByItselfWhateverCameBefore) {
    const std::string GOOD = "<?xml version='1.0' encoding='UTF-16'?><a x='1'><b>&lt;</b></a>";
    const std::string LONG = "<a>" + std::string(100000, 'x') + "</a>";
    for (const std::string& strBefore : {std::string("<a x='1' x='2'/>"), std::string("<!DOCTYPE a><a/>"),
                                         std::string("<a><b>"), Nested(257), GOOD, LONG, LONG + "<"}) {
        LoadError(strBefore);
        EXPECT_EQ("loaded", LoadError(GOOD)) << strBefore.substr(0, 80);
        EXPECT_EQ("loaded", LoadError(Nested(256))) << strBefore.substr(0, 80);
        EXPECT_EQ("mismatched tag @5 1:6", LoadError("<a></b>")) << strBefore.substr(0, 80);
    }
}

TEST(XmlLoad, VersionIsOneOfTheFirst) {
    const auto fnDeclared = [](const char* pVersion) { return std::string("<?xml version='") + pVersion + "'?><a/>"; };
    for (const char* pVersion : {"1.0", "1.1", "1.9", "1.10", "1.00"}) {
        EXPECT_EQ("loaded", LoadError(fnDeclared(pVersion))) << pVersion;
    }
    for (const char* pVersion : {"9.9", "2.0", "1", "1.", "1.0a", "1.x", "01.0", "1.-1", "1.0.0", "a"}) {
        EXPECT_EQ("the XML version is neither 1.0 nor another 1.x @0 1:1", LoadError(fnDeclared(pVersion))) << pVersion;
    }
    EXPECT_EQ("the XML version is neither 1.0 nor another 1.x @3 1:1", LoadError("\xEF\xBB\xBF" + fnDeclared("9.9")));
    EXPECT_NE("loaded", LoadError(fnDeclared("")));
    EXPECT_NE("loaded", LoadError(fnDeclared(" 1.0")));
}

TEST(XmlLoad, EveryDoctypeIsRefusedAtItsBeginning) {
    const char* const DOCTYPES[] = {
        "<!DOCTYPE a>",
        "<!DOCTYPE a []>",
        "<!DOCTYPE a SYSTEM \"file:///etc/passwd\">",
        "<!DOCTYPE a PUBLIC \"x\" \"http://localhost/x.dtd\">",
        "<!DOCTYPE a [<!ENTITY b \"bbbb\"><!ENTITY c \"&b;&b;&b;&b;\">]>",
        "<!DOCTYPE a [<!ENTITY b SYSTEM \"file:///etc/passwd\">]>",
        "<!DOCTYPE a [<!ATTLIST a x CDATA \"1\">]>",
    };
    for (const char* pDoctype : DOCTYPES) {
        EXPECT_EQ("a DOCTYPE is not allowed @11 2:1", LoadError(std::string("<!-- x -->\n") + pDoctype + "<a/>"))
            << pDoctype;
    }
}

TEST(XmlLoad, ElementsNestUpTo256Deep) {
    EXPECT_EQ("loaded", LoadError(Nested(256)));
    EXPECT_EQ("elements are nested more than 256 deep @768 1:769", LoadError(Nested(257)));
    EXPECT_EQ("elements are nested more than 256 deep @768 1:769", LoadError(Nested(1000000)));
    EXPECT_EQ("elements are nested more than 256 deep @2553 1:2554", LoadError("<r>" + Nested(255) + Nested(256)));
}

TEST(XmlLoad, WideTextIsRefusedLikeBytes) {
    CXMLParser document;
    EXPECT_FALSE(document.LoadXML(L"<a>\n\u00E4&</a>"));
    EXPECT_EQ("not well-formed (invalid token)", document.GetLoadError().strMessage);
    EXPECT_EQ(2U, document.GetLoadError().iLine);
    EXPECT_EQ(3U, document.GetLoadError().iColumn);
}

TEST(XmlLoad, WideValueThatIsNoCharacterIsRefused) {
    for (const wchar_t c : {wchar_t(0xD800), wchar_t(0xDFFF), wchar_t(0x110000), wchar_t(0x7FFFFFFF), wchar_t(-1)}) {
        CXMLParser document;
        EXPECT_FALSE(document.LoadXML(std::wstring(L"<a>") + c + L"</a>"));
        EXPECT_EQ("not UTF-8", document.GetLoadError().strMessage);
        EXPECT_EQ(4U, document.GetLoadError().iColumn);
    }
}

TEST(XmlLoad, ZeroCharacterAnywhereIsRefused) {
    for (const std::wstring& strText : {std::wstring(L"<a/>\0", 5), std::wstring(L"\0<a/>", 5),
                                        std::wstring(L"<a>\0</a>", 8), std::wstring(L"<a/>\0<b/>", 9)}) {
        EXPECT_FALSE(CXMLParser().LoadXML(strText)) << strText.size();
        EXPECT_FALSE(CXMLParser().LoadXML(strText.data(), strText.size()));
        EXPECT_FALSE(CXMLParser().LoadUtf8(Narrow(strText)));
    }
}

TEST(XmlLoad, NullPointerIsAnEmptyText) {
    CXMLParser document;
    EXPECT_FALSE(document.LoadXML(nullptr));
    EXPECT_EQ("no element found", document.GetLoadError().strMessage);
}

TEST(XmlLoad, DeclaredEncodingIsIgnored) {
    for (const char* pEncoding : {"UTF-8", "UTF-16", "ISO-8859-1", "x-unknown"}) {
        CXMLParser document;
        const std::string strText =
            std::string("<?xml version=\"1.0\" encoding=\"") + pEncoding + "\"?><a>\xC3\xA4\xF0\x9F\x98\x80</a>";
        ASSERT_TRUE(document.LoadXML(OS::WideText(strText))) << pEncoding;
        EXPECT_EQ(L"\u00E4\U0001F600", document.GetRootElement()->GetText());
        EXPECT_EQ(strText, Saved(document));
    }
}

TEST(XmlLoad, LeadingByteOrderMarkIsDropped) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadXML(L"\uFEFF<?xml version=\"1.0\"?><a/>"));
    EXPECT_EQ("<?xml version=\"1.0\"?><a/>", Saved(document));
    EXPECT_EQ("<a/>", Reread("\xEF\xBB\xBF<a/>"));
}

TEST(XmlLoad, FailureLeavesTheDocumentEmpty) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadXML(L"<a/>"));
    EXPECT_FALSE(document.LoadXML(L"<a"));
    EXPECT_EQ(nullptr, document.GetRootElement());
    EXPECT_EQ(nullptr, document.XPathSelectSingleNode(L"/a"));
    EXPECT_EQ(nullptr, document.XPathSelectNodes(L"/a"));
    EXPECT_FALSE(document.RootView());
    EXPECT_EQ("", Saved(document));
}

TEST(XmlLoad, SuccessForgetsTheErrorAndTheFormerDocument) {
    CXMLParser document;
    EXPECT_FALSE(document.LoadXML(L"<a"));
    ASSERT_TRUE(document.LoadXML(L"<b/>"));
    EXPECT_EQ("", document.GetLoadError().strMessage);
    EXPECT_EQ(0U, document.GetLoadError().iLine);
    EXPECT_EQ("<b/>", Saved(document));
}

TEST(XmlLoad, BlankTextIsDroppedBetweenElementsOnly) {
    const struct {
        const char* pText;
        const char* pExpected;
    } ROWS[] = {
        {"<a>\n  <b/>\r\n\t<c> </c>\n</a>", "<a><b/><c> </c></a>"},
        {"<a>  </a>", "<a>  </a>"},
        {"<a> <!--c--> </a>", "<a> <!--c--> </a>"},
        {"<a> <?p?> </a>", "<a> <?p?> </a>"},
        {"<a> <!--c--> <b/> </a>", "<a><!--c--><b/></a>"},
        {"<a>x <b/> <c/> </a>", "<a>x <b/> <c/> </a>"},
        {"<a> <b/> <c/> x</a>", "<a> <b/> <c/> x</a>"},
        {"<a><![CDATA[x]]> <b/></a>", "<a><![CDATA[x]]> <b/></a>"},
        {"<a><![CDATA[ ]]> <b/> </a>", "<a><![CDATA[ ]]><b/></a>"},
        {"<a><![CDATA[a]]> <![CDATA[b]]></a>", "<a><![CDATA[a]]> <![CDATA[b]]></a>"},
        {"<a> \xC2\xA0 <b/></a>", "<a> \xC2\xA0 <b/></a>"},
        {"<a> <b>\n<c> <d/> </c>\n</b> </a>", "<a><b><c><d/></c></b></a>"},
        {"<a><b/>&#32;<b/></a>\n", "<a><b/><b/></a>"},
        {"<a><b/><b/>\t</a>", "<a><b/><b/></a>"},
        {"<a><b/><!-- > --> <b/></a>", "<a><b/><!-- > --><b/></a>"},
    };
    for (const auto& row : ROWS) {
        EXPECT_EQ(row.pExpected, Reread(row.pText)) << row.pText;
    }
}

TEST(XmlLoad, ManyAttributesOnOneElementTakeNoTime) {
    std::string strText = "<a";
    for (int i = 0; i < 100000; ++i) {
        strText += " x" + std::to_string(i) + "='1'";
    }
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8(strText + "/>"));
    EXPECT_EQ(L"1", document.GetRootElement()->GetAttribute(L"x99999"));
}

TEST(XmlLoad, TextLongerThanOnePieceIsReadWhole) {
    std::string strText = "<a>";
    std::wstring strExpected;
    while (strText.size() < 17U << 20U) {
        strText += "\xE2\x82\xAC<!-- comment -->&lt;<![CDATA[\xF0\x9F\x98\x80]]>";
        strExpected += L"\u20AC<\U0001F600";
    }
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8(strText + "</a>"));
    EXPECT_TRUE(strExpected == document.GetRootElement()->GetText());
    ASSERT_FALSE(document.LoadUtf8(strText + "\n&</a>"));
    EXPECT_EQ(strText.size() + 2, document.GetLoadError().iOffset);
    EXPECT_EQ(2U, document.GetLoadError().iLine);
    EXPECT_EQ(2U, document.GetLoadError().iColumn);
}

// --- writing ---------------------------------------------------------------------------------------------------------

TEST(XmlSave, NewDocumentIsTheDeclarationAndAnEmptyRoot) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadXML(L"<?xml version=\"1.0\" encoding=\"UTF-8\"?><SAPolicy></SAPolicy>"));
    OS::x_wstring strText = L"earlier text";
    EXPECT_TRUE(document.SaveXML(strText));
    EXPECT_EQ(L"<?xml version=\"1.0\" encoding=\"UTF-8\"?><SAPolicy/>", strText);
}

TEST(XmlSave, DeclarationIsWrittenAsItWasLoaded) {
    for (const char* pText : {
             "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><a/>",
             "<?xml version='1.0'?><a/>",
             "<?xml version = '1.0'  encoding='utf-16' ?><a/>",
             "<?xml\tversion=\"1.0\"?><a/>",
             "<a/>",
             "<?xml-stylesheet href=\"a.css\"?><a/>",
         }) {
        EXPECT_EQ(pText, Reread(pText));
    }
}

TEST(XmlSave, WhatStandsBesideTheRootIsKept) {
    EXPECT_EQ("<?xml version=\"1.0\"?><!--before--><?p q?><a/><!--after--><?r?>",
              Reread("<?xml version=\"1.0\"?>\n<!--before-->\n<?p   q?>\n<a/> <!--after--> <?r ?>\n"));
}

TEST(XmlSave, EmptyDocumentIsNotWritten) {
    OS::x_wstring strText = L"earlier text";
    EXPECT_FALSE(CXMLParser().SaveXML(strText));
    EXPECT_EQ(L"", strText);
}

TEST(XmlSave, Utf8IsAppended) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadXML(L"<a>\u00E4</a>"));
    std::string strText = "x";
    document.SaveUtf8(strText);
    EXPECT_EQ("x<a>\xC3\xA4</a>", strText);
}

// --- copies ----------------------------------------------------------------------------------------------------------

TEST(XmlDocument, CopyIsDeep) {
    const std::string strText = "<?xml version=\"1.0\"?><!--c--><a x=\"1\"><b>t</b><![CDATA[u]]><?p q?></a>";
    CXMLParser original;
    ASSERT_TRUE(original.LoadUtf8(strText));
    CXMLParser copy(original);
    CXMLParser assigned;
    assigned = original;
    copy.GetRootElement()->SetAttribute(L"x", L"2");
    assigned.XPathSelectSingleNode(L"/a/b")->SetText(L"changed");
    EXPECT_EQ(strText, Saved(original));
    original.GetRootElement()->SetText(L"");
    EXPECT_EQ("<?xml version=\"1.0\"?><!--c--><a x=\"2\"><b>t</b><![CDATA[u]]><?p q?></a>", Saved(copy));
    EXPECT_EQ("<?xml version=\"1.0\"?><!--c--><a x=\"1\"><b>changed</b><![CDATA[u]]><?p q?></a>", Saved(assigned));
}

TEST(XmlDocument, CopyHoldsOnlyWhatIsAttached) {
    CXMLParser original;
    ASSERT_TRUE(original.LoadXML(L"<a/>"));
    const auto pDetached = original.CreateNode(XMLPARSER_NODE_ELEMENT, L"b");
    const CXMLParser copy(original);
    EXPECT_EQ("<a/>", Saved(copy));
    EXPECT_EQ(0, copy.XPathSelectNodes(L"//b")->GetLength());
}

TEST(XmlDocument, CopyKeepsTheLoadError) {
    CXMLParser document;
    EXPECT_FALSE(document.LoadXML(L""));
    const CXMLParser copy(document);
    EXPECT_EQ("no element found", copy.GetLoadError().strMessage);
    EXPECT_EQ(nullptr, copy.GetRootElement());
}

TEST(XmlDocument, SelfAssignmentChangesNothing) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadXML(L"<a/>"));
    const CXMLParser& same = document;
    document = same;
    EXPECT_EQ("<a/>", Saved(document));
}

TEST(XmlDocument, MovedDocumentTakesItsTreeAlong) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadXML(L"<a/>"));
    const auto pRoot = document.GetRootElement();
    CXMLParser moved(std::move(document));
    pRoot->SetAttribute(L"x", L"1");
    EXPECT_EQ("<a x=\"1\"/>", Saved(moved));
    document = CXMLParser();
    EXPECT_EQ(nullptr, document.GetRootElement());
    ASSERT_TRUE(document.LoadXML(L"<b/>"));
    EXPECT_EQ("<b/>", Saved(document));
}

TEST(XmlDocument, NodesOutliveTheirDocument) {
    OS::CAutoObjPtr<CXMLNode> pNode;
    OS::CAutoObjPtr<CXMLNodeList> pList;
    {
        CXMLParser document;
        ASSERT_TRUE(document.LoadXML(L"<a><b>1</b><b>2</b></a>"));
        pNode = document.XPathSelectSingleNode(L"/a/b");
        pList = document.XPathSelectNodes(L"/a/b");
        EXPECT_FALSE(document.LoadXML(L"<"));
    }
    EXPECT_EQ(L"1", pNode->GetText());
    EXPECT_EQ("<a><b>1</b><b>2</b></a>", Xml::Markup(pNode->GetParentNode()));
    EXPECT_EQ(L"2", pList->GetItem(1)->GetText());
}

// --- new nodes -------------------------------------------------------------------------------------------------------

TEST(XmlCreateNode, NodeIsAttachedToNothing) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadXML(L"<a/>"));
    const auto pNode = document.CreateNode(XMLPARSER_NODE_ELEMENT, L"b");
    const auto pOther = document.CreateNode(XMLPARSER_NODE_ELEMENT, L"c");
    EXPECT_EQ("<b/>", Xml::Markup(pNode));
    EXPECT_EQ(nullptr, pNode->GetParentNode());
    EXPECT_EQ(nullptr, pNode->GetNextSibling());
    EXPECT_EQ(nullptr, document.GetRootElement()->GetNextSibling());
    EXPECT_EQ("<a/>", Saved(document));
}

TEST(XmlCreateNode, EmptyDocumentMakesNodesToo) {
    CXMLParser document;
    const auto pNode = document.CreateNode(XMLPARSER_NODE_ELEMENT, L"b");
    EXPECT_EQ("<b/>", Xml::Markup(pNode));
    EXPECT_EQ(nullptr, document.GetRootElement());
    EXPECT_EQ(nullptr, document.XPathSelectNodes(L"//b"));
    EXPECT_EQ("", Saved(document));
}

TEST(XmlCreateNode, OnlyElementsAreMade) {
    CXMLParser document;
    EXPECT_EQ("making node \"b\": only elements can be made",
              Thrown([&] { document.CreateNode(static_cast<XMLPARSER_NODETYPE>(3), L"b"); }));
}

TEST(XmlCreateNode, NameIsWhatTheLoaderTakesAsAName) {
    CXMLParser document;
    for (const wchar_t* pName : {L"a", L"_", L":", L"a:b", L"A-1.x_", L"\u00E4\u540D", L"a\u0300", L"pre-defined"}) {
        const auto pNode = document.CreateNode(XMLPARSER_NODE_ELEMENT, pName);
        EXPECT_EQ("<" + Narrow(pName) + "/>", Reread(Xml::Markup(pNode)));
    }
    for (const wchar_t* pName : {L"", L" ", L"1", L"-", L".", L"a b", L"a>", L"a/", L"a\"", L"a&b", L"<a", L"a\n",
                                 L"a=b", L"\u0300", L"\u20AC", L"a\u20AC", L"\u00D7", L"\xD800"}) {
        EXPECT_EQ("making node \"" + Narrow(pName) + "\": this is no name",
                  Thrown([&] { document.CreateNode(XMLPARSER_NODE_ELEMENT, pName); }));
    }
    EXPECT_EQ("making node \"\": this is no name",
              Thrown([&] { document.CreateNode(XMLPARSER_NODE_ELEMENT, nullptr); }));
}

// --- files -----------------------------------------------------------------------------------------------------------

TEST(XmlFile, IsLoadedWithBackslashesForSlashes) {
    const CTempDir folder;
    folder.Write("config/policy.xml", "<?xml version=\"1.0\"?>\n<a>\xC3\xA4</a>\n");
    EXPECT_EQ("<?xml version=\"1.0\"?><a>\xC3\xA4</a>", Saved(LoadFile(folder.Path("config/policy.xml"))));
    EXPECT_EQ("<?xml version=\"1.0\"?><a>\xC3\xA4</a>", Saved(LoadFile(folder.Path("config\\policy.xml"))));
}

TEST(XmlFile, NameWithBackslashComesFirst) {
    const CTempDir folder;
    folder.Write("b/c.xml", "<slash/>");
    folder.Write("b\\c.xml", "<backslash/>");
    EXPECT_EQ("<backslash/>", Saved(LoadFile(folder.Path("b\\c.xml"))));
}

TEST(XmlFile, Utf16WithByteOrderMarkIsConverted) {
    const CTempDir folder;
    const std::u16string strText = u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><a>\u00E4\U0001F600\uD7FF\uE000</a>";
    for (const bool bBigEndian : {false, true}) {
        const std::string strPath = folder.Write("utf16.xml", Utf16(strText, bBigEndian));
        EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-16\"?><a>\xC3\xA4\xF0\x9F\x98\x80\xED\x9F\xBF\xEE\x80\x80</a>",
                  Saved(LoadFile(strPath)));
    }
}

TEST(XmlFile, WithoutByteOrderMarkIsUtf8WhateverElseItDeclares) {
    const CTempDir folder;
    const std::string strLatin = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xC3\xA4</a>";
    EXPECT_EQ(strLatin, Saved(LoadFile(folder.Write("latin.xml", strLatin))));
    const std::string strPath = folder.Write("utf16.xml", "<?xml version=\"1.0\" encoding=\"utf-16le\"?><a/>");
    EXPECT_EQ(strPath + ":1:1: declared as UTF-16, which the file is not", Thrown([&] { LoadFile(strPath); }));
}

TEST(XmlFile, SecondByteOrderMarkIsRefused) {
    const CTempDir folder;
    for (const std::string& strBytes :
         {Utf16(u"\uFEFF<a/>", true), Utf16(u"\uFEFF<a/>", false), std::string("\xEF\xBB\xBF\xEF\xBB\xBF<a/>")}) {
        const std::string strPath = folder.Write("marks.xml", strBytes);
        EXPECT_NE("nothing thrown", Thrown([&] { LoadFile(strPath); }));
    }
}

TEST(XmlFile, FaultyUtf16IsRefused) {
    const CTempDir folder;
    const std::u16string HALVES[] = {u"<a>\xD83D</a>", u"<a>\xDE00</a>", u"<a>\xDE00\xD83D</a>", u"<a/>\xD83D"};
    for (const std::u16string& strText : HALVES) {
        for (const bool bBigEndian : {false, true}) {
            const std::string strPath = folder.Write("utf16.xml", Utf16(strText, bBigEndian));
            EXPECT_NE("nothing thrown", Thrown([&] { LoadFile(strPath); }));
        }
    }
    EXPECT_NE("nothing thrown", Thrown([&] { LoadFile(folder.Write("odd.xml", Utf16(u"<a/>", true) + "\n")); }));
}

TEST(XmlFile, WithoutAnyElementIsADocumentWithoutRoot) {
    const CTempDir folder;
    for (const char* pText : {"", " \r\n", "<?xml version=\"1.0\"?>", "<!-- nothing -->", "<?p?>\n", "\xEF\xBB\xBF",
                              "\xFF\xFE", "\xFE\xFF"}) {
        const CXMLParser document = LoadFile(folder.Write("empty.xml", pText));
        EXPECT_EQ(nullptr, document.GetRootElement()) << pText;
        EXPECT_EQ("", document.GetLoadError().strMessage);
    }
}

TEST(XmlFile, FaultyFileThrowsWithItsPlace) {
    const CTempDir folder;
    const std::string strPath = folder.Write("bad.xml", "<a>\n  <b></c>\n</a>");
    try {
        LoadFile(strPath);
        FAIL() << "nothing thrown";
    } catch (const CXMLCOMException<OS::CException>& error) {
        EXPECT_EQ(strPath + ":2:8: mismatched tag", Narrow(error.GetErrorMessage()));
        EXPECT_EQ(2, error.GetErrorLine());
    }
    for (const char* pText :
         {"<a>", "<", "text", "<!-- ", "<!DOCTYPE a><a/>", "<!DOCTYPE a>", "<a>\xE4</a>", "<a/><b/>"}) {
        EXPECT_NE("nothing thrown", Thrown([&] { LoadFile(folder.Write("bad.xml", pText)); })) << pText;
    }
}

TEST(XmlFile, UnreadableFileThrows) {
    const CTempDir folder;
    const std::string strMissing = folder.Path("missing.xml");
    EXPECT_EQ("cannot read " + strMissing + ": No such file or directory", Thrown([&] { LoadFile(strMissing); }));
    EXPECT_NE("nothing thrown", Thrown([&] { LoadFile(folder.Path()); }));
    EXPECT_NE("nothing thrown", Thrown([] { CXMLParser(nullptr); }));
    EXPECT_NE("nothing thrown", Thrown([] { CXMLParser(L"/\xD800"); }));
}

TEST(XmlParser, NodeThatBecomesTheRootIsAllThatIsLeft) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8("<!--c--><a xmlns:p=\"u\"><b p:x=\"1\"/><c/>t</a><?i?>"));
    const OS::CAutoObjPtr<CXMLNode> pRoot = document.CreateNode(XMLPARSER_NODE_ELEMENT, L"r");
    OS::CAutoObjPtr<CXMLNode> pItem = document.XPathSelectSingleNode(L"/a/b");
    pRoot->AppendChild(pItem);
    document.SetRoot(pRoot);
    EXPECT_EQ("<r><b p:x=\"1\" xmlns:p=\"u\"/></r>", Xml::Saved(document));
    EXPECT_EQ(nullptr, document.XPathSelectSingleNode(L"//c"));
    EXPECT_EQ("<b p:x=\"1\" xmlns:p=\"u\"/>", OS::Utf8Lenient(pItem->ToElement()->GetXML()));
}

TEST(XmlDocument, RootOfAnotherIsAppendedWithItsTree) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8("<?xml version=\"1.0\"?><r a=\"&lt;\" xmlns:p=\"u\"><b/></r>"));
    CXMLParser other;
    ASSERT_TRUE(other.LoadUtf8("<l><p x='1'/>text</l>"));
    const OS::CAutoObjPtr<CXMLElement> pList = other.GetRootElement();
    document.AppendRoot(std::move(other));
    EXPECT_EQ("<?xml version=\"1.0\"?><r a=\"&lt;\" xmlns:p=\"u\"><b/><l><p x=\"1\"/>text</l></r>", Saved(document));
    pList->SetAttribute(L"y", L"2");
    EXPECT_EQ(L"2", document.XPathSelectSingleNode(L"/r/l")->GetAttribute(L"y"));
    EXPECT_EQ("<l y=\"2\" xmlns:p=\"u\"><p x=\"1\"/>text</l>", Narrow(pList->GetXML()));
}
