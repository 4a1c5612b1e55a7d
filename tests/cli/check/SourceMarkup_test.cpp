#include "cli/check/SourceMarkup.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/xml/CXMLParser.h"

TEST(SourceMarkup, AttributesAreFoundAsTheyStand) {
    const std::string strText = "<a x = '1' yy=\"2>\"\n z='\"'/>";
    CTagScanner tag(strText, 0);
    std::string strSeen;
    while (tag.Next()) {
        strSeen += std::string(tag.GetName()) + '[' + strText.substr(tag.GetValueOffset(), tag.GetValueLength()) + ']';
    }
    EXPECT_EQ(strSeen, "x[1]yy[2>]z[\"]");
    EXPECT_TRUE(tag.IsEmptyElement());
    EXPECT_EQ(tag.GetEnd(), strText.size());
    EXPECT_EQ(FindAttribute(strText, 0, "yy").iName, 11U);
    EXPECT_FALSE(FindAttribute(strText, 0, "y").bFound);
}

/** Each byte of the text, looked up in the source, is that byte or what stands for it. */
TEST(SourceMarkup, EveryByteOfTextIsFoundWhereItWasWritten) {
    const std::string strText =
        "<a b='>'>\r\nx&amp;y&#228;&#x1F600;<!-- < --><![CDATA[<z>&amp;]]]]><?p <?><c d='/>'>in</c><e/>\xC3\xA4 "
        "end</a>";
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8(strText));
    const std::string strRead = document.RootView().Text();
    ASSERT_EQ(strRead, "\nx&y\xC3\xA4\xF0\x9F\x98\x80<z>&amp;]]in\xC3\xA4 end");
    for (std::size_t i = 0; i < strRead.size(); ++i) {
        const std::size_t iOffset = FindTextOffset(strText, 0, i);
        const std::string strThere = strText.substr(iOffset, 2);
        const bool bReference = strText[iOffset] == '&' && strRead.compare(i, 5, "&amp;") != 0;
        EXPECT_TRUE(bReference || strThere == "\r\n" || strText[iOffset] == strRead[i]) << i << ' ' << strThere;
    }
    EXPECT_EQ(FindTextOffset(strText, 0, strRead.size()), strText.size() - 4);
    EXPECT_EQ(FindTextOffset(strText, 0, strRead.size() + 1), 0U);
    EXPECT_EQ(FindTextOffset("<a/>", 0, 0), 0U);
}
