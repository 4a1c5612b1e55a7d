#include "cli/IndentXml.h"

#include <gtest/gtest.h>

#include "tests/support/XmlText.h"

TEST(IndentXml, EachElementStandsOnItsLine) {
    EXPECT_EQ(IndentXml(R"(<?xml version="1.0"?><a x="1 > 0"><b>text</b><c/><d><e></e></d></a>)"),
              R"(<?xml version="1.0"?>
<a x="1 > 0">
  <b>text</b>
  <c/>
  <d>
    <e></e>
  </d>
</a>
)");
}

TEST(IndentXml, WhatHoldsTextIsLeftAsItIs) {
    const char* const aKept[] = {
        "<b>x<c><d/></c></b>",  // text beside elements, and all that is in it
        "<b> </b>",             // white space alone is text when no element stands beside it
        "<b><![CDATA[<c>]]></b>",
        "<b><!--c--></b>",  // would gain text
        "<b><?p q?></b>",
    };
    for (const char* pKept : aKept) {
        EXPECT_EQ(IndentXml(std::string("<a>") + pKept + "</a>"), std::string("<a>\n  ") + pKept + "\n</a>\n");
    }
}

TEST(IndentXml, ReadsBackAsTheSame) {
    const char* const aDocuments[] = {
        "<a><b>1</b><b> </b><b/><!-- x --><c><d>y<e/></d></c></a>",
        "<a><b><!--c--></b><c><!--c--><d/></c></a>",
        "<a>x<b><c/></b> <d/></a>",
        "<?xml version=\"1.0\"?><!--top--><a b='\"&gt;\"'/>",
    };
    for (const char* pDocument : aDocuments) {
        EXPECT_EQ(Xml::Reread(IndentXml(pDocument)), Xml::Reread(pDocument)) << pDocument;
    }
}

TEST(IndentXml, DeepDocumentsDoNotRecurse) {
    std::string strDeep;
    for (int i = 0; i < 100000; ++i) {
        strDeep += "<a>x";
    }
    for (int i = 0; i < 100000; ++i) {
        strDeep += "</a>";
    }
    EXPECT_EQ(IndentXml(strDeep), strDeep + '\n');
}
