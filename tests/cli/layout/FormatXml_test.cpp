#include "cli/layout/FormatXml.h"

#include <gtest/gtest.h>

#include "platform/common/Paths.h"
#include "tests/support/XmlText.h"

TEST(FormatXml, EachElementStandsOnItsLine) {
    EXPECT_EQ(FormatXml(R"(<?xml version="1.0"?><a x="1 > 0"><b>text</b><c/><d><e></e></d></a>)"),
              R"(<?xml version="1.0"?>
<a x="1 > 0">
  <b>text</b>
  <c/>
  <d>
    <e/>
  </d>
</a>
)");
}

TEST(FormatXml, WhatHoldsTextIsLeftAsItIs) {
    const char* const aKept[] = {
        "<b>x<c><d/></c></b>",  // text beside elements, and all that is in it
        "<b> </b>",             // white space alone is text when no element stands beside it
        "<b><![CDATA[<c>]]></b>",
        "<b><!--c--></b>",   // would gain text
        "<b>&#32;<c/></b>",  // white space that was meant
        "<b>\n <!--c-->\n</b>",
        "<b><?p q?></b>",
    };
    for (const char* pKept : aKept) {
        EXPECT_EQ(FormatXml(std::string("<a>") + pKept + "</a>"), std::string("<a>\n  ") + pKept + "\n</a>\n");
    }
}

TEST(FormatXml, ReadsBackAsTheSame) {
    const char* const aDocuments[] = {
        "<a><b>1</b><b> </b><b/><!-- x --><c><d>y<e/></d></c></a>",
        "<a><b><!--c--></b><c><!--c--><d/></c></a>",
        "<a>x<b><c/></b> <d/></a>",
        "<?xml version=\"1.0\"?><!--top--><a b='\"&gt;\"'/>",
    };
    for (const char* pDocument : aDocuments) {
        const std::string strForm = FormatXml(pDocument);
        EXPECT_EQ(Xml::Reread(strForm), Xml::Reread(pDocument)) << pDocument;
        EXPECT_EQ(FormatXml(strForm), strForm) << pDocument;
    }
}

TEST(FormatXml, TagsAreWrittenInOneWay) {
    const std::pair<const char*, const char*> aTags[] = {
        {"<a b='1'  c = \"2\" ></a >", "<a b=\"1\" c=\"2\"/>"},
        {"<a\tb='\"x\"'\r\n/>", "<a b=\"&quot;x&quot;\"/>"},
        {"<a b=\"it's > 0\"/>", "<a b=\"it's > 0\"/>"},
        {"<a b='1\r\n2\t3\r4\n5'/>", "<a b=\"1 2 3 4 5\"/>"},
        {"<a b='&#10;&#xA0;&apos;&lt;'/>", "<a b=\"&#10;&#xA0;&apos;&lt;\"/>"},
        {"<a>\r\nx\ry\n</a>", "<a>\nx\ny\n</a>"},
        {"<a><![CDATA[\r\n<]]>&gt;</a>", "<a><![CDATA[\n<]]>&gt;</a>"},
        {"<?xml version='1.0'  encoding='utf-8' ?><a/>", "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<a/>"},
        {"<?xml-x  version='1.0'\r\n?><a/>", "<?xml-x  version='1.0'\n?>\n<a/>"},
        {"<p:a xmlns:p='u'><p:b/></p:a>", "<p:a xmlns:p=\"u\">\n  <p:b/>\n</p:a>"},
    };
    for (const auto& [pWritten, pForm] : aTags) {
        EXPECT_EQ(FormatXml(pWritten), std::string(pForm) + '\n') << pWritten;
    }
}

TEST(FormatXml, CommentsStayWithWhatTheyFollow) {
    EXPECT_EQ(FormatXml("<?xml version='1.0'?><!--1-->\n<a> <!--2-->\n<b/><!--3--> <!--4-->\n\n<!--5\n 6--><c/>"
                        "<?p q?><!--7--></a><!--8-->"),
              R"(<?xml version="1.0"?>
<!--1-->
<a> <!--2-->
  <b/> <!--3--> <!--4-->

  <!--5
 6-->
  <c/>
  <?p q?>
  <!--7-->
</a> <!--8-->
)");
}

TEST(FormatXml, OneEmptyLineStaysWhereThereWereSome) {
    EXPECT_EQ(FormatXml("<a>\n\n<b/>\r\n\r\n\r\n<c>\n\n<d/>\r\r</c><e/>\n \n</a>\n\n"),
              "<a>\n  <b/>\n\n  <c>\n    <d/>\n  </c>\n  <e/>\n</a>\n");
}

TEST(FormatXml, WhatIsInTheFormStays) {
    for (const char* pFile : {"examples/starter-policy.xml", "examples/older-layout.xml", "examples/digital-assets.xml",
                              "config/PredefinedDLPPolicy.xml"}) {
        const std::string strDocument = OS::ReadWholeFile(std::string(DLP_SOURCE_DIR "/") + pFile);
        EXPECT_EQ(FormatXml(strDocument), strDocument) << pFile;
    }
}

TEST(FormatXml, DeepDocumentsDoNotRecurse) {
    std::string strDeep;
    for (int i = 0; i < 100000; ++i) {
        strDeep += "<a>x";
    }
    for (int i = 0; i < 100000; ++i) {
        strDeep += "</a>";
    }
    EXPECT_EQ(FormatXml(strDeep), strDeep + '\n');
}
