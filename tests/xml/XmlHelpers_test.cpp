#include "xml/XmlHelpers.h"

#include <gtest/gtest.h>

#include "tests/support/XmlText.h"
#include "xml/Vocabulary.h"

TEST(XmlHelpers, PathsAreMadeOfNames) {
    EXPECT_EQ(L"/SAPolicy", XmlHelpers::RootPath({Tag::SA_POLICY}));
    EXPECT_EQ(L"/SAPolicy/digitalAssets/entity",
              XmlHelpers::RootPath({Tag::SA_POLICY, Tag::DIGITAL_ASSETS, Tag::ENTITY}));
    EXPECT_EQ(L"./matchRule/buildingBlock", XmlHelpers::RelativePath({Tag::MATCH_RULE, Tag::BUILDING_BLOCK}));
}

TEST(XmlHelpers, FlagsAreWords) {
    EXPECT_STREQ("true", XmlHelpers::FlagText(true));
    EXPECT_STREQ("false", XmlHelpers::FlagText(false));
}

TEST(XmlHelpers, EmptyElementStartsADocument) {
    EXPECT_EQ(L"<SAPolicy></SAPolicy>", XmlHelpers::EmptyElement(Tag::SA_POLICY));
    CXMLParser document;
    ASSERT_TRUE(document.LoadXML(Tag::DECLARATION + XmlHelpers::EmptyElement(Tag::SA_POLICY)));
    const auto pRoot = document.XPathSelectSingleNode(XmlHelpers::RootPath({Tag::SA_POLICY}));
    auto pChild = document.CreateNode(XMLPARSER_NODE_ELEMENT, Tag::EXAMPLES);
    pChild->SetText(std::wstring(L"a < b"));
    pRoot->AppendChild(pChild);
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?><SAPolicy><examples>a &lt; b</examples></SAPolicy>",
              Xml::Saved(document));
}

TEST(XmlHelpers, NamesInAnotherCaseAreNotFound) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadXML(L"<SAPolicy><Template/></SAPolicy>"));
    EXPECT_EQ(nullptr, document.XPathSelectSingleNode(XmlHelpers::RootPath({Tag::SA_POLICY, Tag::TEMPLATE})));
    ASSERT_TRUE(document.LoadXML(L"<SAPOLICY/>"));
    EXPECT_EQ(nullptr, document.XPathSelectSingleNode(XmlHelpers::RootPath({Tag::SA_POLICY})));
}
