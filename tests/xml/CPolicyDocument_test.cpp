#include "xml/CPolicyDocument.h"

#include <gtest/gtest.h>

#include "tests/support/XmlText.h"

TEST(PolicyDocument, IsReadOnce) {
    const OS::x_wstring strText = L"<a/>";
    CPolicyDocument document(strText);
    const CXMLParser& first = document.Load();
    first.GetRootElement()->SetAttribute(L"x", L"1");
    EXPECT_EQ(&first, &document.Load());
    EXPECT_EQ("<a x=\"1\"/>", Xml::Saved(document.Load()));
}

TEST(PolicyDocument, GivesTheCallersTextAndItsLength) {
    const OS::x_wstring strWide = L"<a>\r\n\u00E4\U0001F600 </a>\n";
    CPolicyDocument wide(strWide);
    EXPECT_EQ(strWide, wide.GetText());
    EXPECT_EQ(strWide.size(), wide.GetLength());
    const std::string strUtf8 = Xml::Narrow(strWide);
    CPolicyDocument narrow{std::string_view(strUtf8)};
    EXPECT_EQ(strWide, narrow.GetText());
    EXPECT_EQ(strWide.size(), narrow.GetLength());
    EXPECT_EQ(Xml::Saved(wide.Load()), Xml::Saved(narrow.Load()));
    EXPECT_EQ(strWide, wide.GetText());
}

TEST(PolicyDocument, TextThatDoesNotParseIsAnEmptyDocument) {
    const OS::x_wstring strZero(L"<a/>\0<b/>", 9);
    CPolicyDocument zero(strZero);
    EXPECT_EQ(nullptr, zero.Load().GetRootElement());
    EXPECT_EQ(9U, zero.GetLength());
    CPolicyDocument faulty(std::string_view("<a>\xE4</a>"));
    EXPECT_EQ(nullptr, faulty.Load().GetRootElement());
    EXPECT_EQ("not UTF-8", faulty.Load().GetLoadError().strMessage);
    EXPECT_EQ(L"<a>\uFFFD</a>", faulty.GetText());
}

TEST(PolicyDocument, MadeFromAnotherGivesTheTextItWouldBeWrittenAs) {
    CXMLParser parser;
    ASSERT_TRUE(parser.LoadXML(L"<a ><b>\u00E4</b></a >"));
    CPolicyDocument document(std::move(parser));
    EXPECT_EQ(L"<a><b>\u00E4</b></a>", document.GetText());
    EXPECT_EQ(document.GetText().size(), document.GetLength());
    EXPECT_EQ("<a><b>\xC3\xA4</b></a>", Xml::Saved(document.Load()));
}

TEST(PolicyDocument, WhatWasTakenIsReadAnew) {
    const std::string strText = "<SAPolicy>" + std::string(4, ' ') + "<x/></SAPolicy>";
    CPolicyDocument document{std::string_view(strText)};
    CXMLParser taken = document.Take();
    EXPECT_EQ("<SAPolicy><x/></SAPolicy>", Xml::Saved(taken));
    taken.GetRootElement()->SetAttribute(L"a", L"b");
    EXPECT_EQ("<SAPolicy><x/></SAPolicy>", Xml::Saved(document.Load()));
}
