#include "platform/xml/XMLProof.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/support/ProofCheck.h"
#include "tests/support/Sanitized.h"
#include "tests/support/XmlText.h"

namespace {

std::string Nested(std::size_t iDepth) {
    std::string strText;
    for (std::size_t i = 1; i < iDepth; ++i) {
        strText += "<a>";
    }
    strText += "<a/>";
    for (std::size_t i = 1; i < iDepth; ++i) {
        strText += "</a>";
    }
    return strText;
}

/** @return the attributes of the text, one of them by another name */
std::string Renamed(std::string strText, const std::string& strName, const std::string& strOther) {
    return strText.replace(strText.find(strName + "="), strName.size(), strOther);
}

std::string WithAttributes(int iCount) {
    std::string strText = "<a";
    for (int i = 0; i < iCount; ++i) {
        strText += " b" + std::to_string(i) + "=\"\"";
    }
    return strText + "/>";
}

}  // namespace

TEST(XmlProof, WhatWritersPutIsProvenToBeAsWritten) {
    const struct {
        std::string strText;
        std::string strContent;
        std::string strChildName;
    } ROWS[] = {
        {"<a/>", "", ""},
        {"<a b=\"1\" c=\"\"/>", "", ""},
        {"<a>x</a>", "x", ""},
        {"<a><b/></a>", "<b/>", "b"},
        {"<a><b c=\"1\">x</b><b/><b><a/></b></a>", "<b c=\"1\">x</b><b/><b><a/></b>", "b"},
        {"<a><b/><c/></a>", "<b/><c/>", ""},
        {"<a><b/>x<b/></a>", "<b/>x<b/>", ""},
        {"<a>&amp;&lt;&gt;&quot;x&#13;'\t\n]]</a>", "&amp;&lt;&gt;&quot;x&#13;'\t\n]]", ""},
        {"<a b=\"&amp;&lt;&gt;&quot;&#9;&#10;&#13;'\"/>", "", ""},
        {"<a>\xC3\xA4\xEF\xBF\xBD\xF0\x9F\x98\x80</a>", "\xC3\xA4\xEF\xBF\xBD\xF0\x9F\x98\x80", ""},
        {"<a:b.c-d_e :=\"1\" _=\"2\"/>", "", ""},
        {Nested(256), Nested(256).substr(3, Nested(256).size() - 7), "a"},
        {WithAttributes(32), "", ""},
        {WithAttributes(33), "", ""},
        {"<a>" + WithAttributes(1000) + WithAttributes(40) + "</a>", WithAttributes(1000) + WithAttributes(40), "a"},
    };
    for (const auto& row : ROWS) {
        const SXMLProof proof = ProveXml(row.strText);
        EXPECT_TRUE(proof.bWellFormed) << row.strText;
        EXPECT_TRUE(proof.bAsWritten) << row.strText;
        EXPECT_EQ(row.strContent, proof.strContent);
        EXPECT_EQ(row.strChildName, proof.strChildName) << row.strText;
        EXPECT_EQ("", FindFalseProof(row.strText)) << row.strText;
    }
}

TEST(XmlProof, WhatOthersPutIsProvenToBeWellFormed) {
    for (const char* pText : {
             "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a/>\n",
             "<?xml version=\"1.0\" encoding=\"utf-8\"?><a/>",
             "<?xml version=\"1.0\"?><a/>",
             "<?xml version='1.0' encoding='UTF-8'?>\r\n<a/>",
             "<?xml version='1.0' encoding='utf-8'?>\n<a/>",
             "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><a/>",
             " <a/>",
             "<a/>\r\n",
             "<a />",
             "<a\n\tb=\"1\"\r\n  c=\"2\"\n/>",
             "<a  b=\"1\"/>",
             "<a b=\"1\" ></a >",
             "<a></a>",
             "<a> </a>",
             "<a> x</a>",
             "<a>\n  <b/>\n</a>",
             "<a>x\r\ny\rz</a>",
             "<a>></a>",
             "<a>]] ></a>",
             "<a>\"</a>",
             "<a>x&apos;</a>",
             "<a>x&#9;&#10;</a>",
             "<a>&#13;</a>",
             "<a b=\"x\ty\nz\rw>\"/>",
             "<a b=\"&apos;\"/>",
             "<a xmlns=\"u\"/>",
             "<a><b xmlns:c=\"u\"/></a>",
         }) {
        const SXMLProof proof = ProveXml(pText);
        EXPECT_TRUE(proof.bWellFormed) << pText;
        EXPECT_FALSE(proof.bAsWritten) << pText;
        EXPECT_EQ("", FindFalseProof(pText)) << pText;
    }
}

TEST(XmlProof, NothingIsProvenOfAnyOtherText) {
    using namespace std::string_literals;
    for (const std::string& strText : {
             ""s,
             " "s,
             "x"s,
             "<"s,
             "<a"s,
             "<a "s,
             "<a/"s,
             "<a/ >"s,
             "<a>"s,
             "<a></a"s,
             "<a></"s,
             "<a><"s,
             "<a></b>"s,
             "<a></ab>"s,
             "<ab></a>"s,
             "</a>"s,
             "<a/><a/>"s,
             "<a/>x"s,
             "x<a/>"s,
             "<a/></a>"s,
             "< a/>"s,
             "<1/>"s,
             "<a><-/></a>"s,
             "<\xC3\xA4/>"s,
             // Attributes.
             "<a b/>"s,
             "<a b=/>"s,
             "<a b=1/>"s,
             "<a b=\"1/>"s,
             "<a b='1'/>"s,
             "<a b =\"1\"/>"s,
             "<a b= \"1\"/>"s,
             "<a b=\"1\"c=\"2\"/>"s,
             "<a b=\"1\" b=\"2\"/>"s,
             "<a b=\"<\"/>"s,
             "<a b=\"&\"/>"s,
             "<a =\"1\"/>"s,
             "<a></a b=\"1\">"s,
             "<a b7=\"\" b1=\"\" b7=\"\"/>"s,
             Renamed(WithAttributes(33), "b32", "b7"),
             Renamed(WithAttributes(33), "b7", "b32"),
             Renamed(WithAttributes(2000), "b1500", "b1999"),
             // Text.
             "<a>]]></a>"s,
             "<a>x]]]>y</a>"s,
             "<a>&</a>"s,
             "<a>&;</a>"s,
             "<a>&amp</a>"s,
             "<a>&AMP;</a>"s,
             "<a>&x;</a>"s,
             "<a>&#0;</a>"s,
             "<a>&#65;</a>"s,
             "<a>\x01</a>"s,
             "<a>\0</a>"s,
             "<a b=\"\x1F\"/>"s,
             "<a>\xEF\xBF\xBE</a>"s,
             "<a>\xEF\xBF\xBF</a>"s,
             "<a>\xC3</a>"s,
             "<a>\xED\xA0\x80</a>"s,
             "<a>\xC0\x80</a>"s,
             // Anything but elements and text.
             "<a><!--b--></a>"s,
             "<a><![CDATA[b]]></a>"s,
             "<a><?b?></a>"s,
             "<!DOCTYPE a><a/>"s,
             "<!--b--><a/>"s,
             "<?xml version=\"1.1\"?><a/>"s,
             "<?xml version=\"1.0\" encoding=\"latin1\"?><a/>"s,
             "<?xml version=\"1.0\" encoding=\"UTF-16\"?><a/>"s,
             " <?xml version=\"1.0\"?><a/>"s,
             "<?xml version=\"1.0\"?><?xml version=\"1.0\"?><a/>"s,
             "\xEF\xBB\xBF<a/>"s,
             Nested(257),
         }) {
        EXPECT_FALSE(ProveXml(strText).bWellFormed) << strText;
        EXPECT_EQ("", FindFalseProof(strText)) << strText;
    }
}

TEST(XmlProof, TellsWhichOfManyAttributesStandsTwice) {
    const std::string strTwo = Renamed(Renamed(WithAttributes(2000), "b1500", "b7"), "b900", "b1999");
    const std::string strBehind = "<a>t<b c=\"\"/>" + strTwo;
    std::string strOften = "<a b0=\"\"";
    for (int i = 0; i < 100; ++i) {
        strOften += "\n b0=\"&amp;\"";
    }
    const struct {
        std::string strText;
        std::size_t iTwice;
    } ROWS[] = {
        {strTwo, strTwo.find("b7=", strTwo.find("b1499"))},
        {strBehind, strBehind.find("b7=", strBehind.find("b1499"))},
        {strOften + ">", std::string::npos},  // told as of a few
        {strTwo.substr(0, strTwo.size() - 2) + ">\x01", strTwo.find("b7=", strTwo.find("b1499"))},
        {strTwo.substr(0, strTwo.size() - 2), std::string::npos},
        {strTwo.substr(0, strTwo.size() - 2) + "/ >", std::string::npos},
        {strTwo.substr(0, strTwo.size() - 2) + " b=\"<\"/>", std::string::npos},
        {strTwo.substr(0, strTwo.size() - 2) + " c/>", std::string::npos},
        {"<a></b>" + strTwo, std::string::npos},
        {WithAttributes(2000), std::string::npos},
    };
    for (const auto& row : ROWS) {
        EXPECT_EQ(ProveXml(row.strText).iTwice, row.iTwice) << row.strText.substr(0, 20);
        EXPECT_EQ("", FindFalseProof(row.strText)) << row.strText.substr(0, 20);
    }
}

TEST(XmlProof, HoldsForDamagedTagsOfManyAttributes) {
    std::mt19937 random(21);
    int iTwice = 0;
    for (int iRound = 0; iRound < 5000; ++iRound) {
        std::string strText = "<a><b/>" + WithAttributes(40) + "</a>";
        for (auto i = 1 + random() % 4; i > 0; --i) {
            const std::string strName = "b" + std::to_string(random() % 40) + "=";
            const std::size_t iPlace = strText.find(strName);
            const std::string strOther = "b" + std::to_string(random() % 40) + "=";
            strText.replace(std::min(iPlace, strText.size() - 9), strName.size(), random() % 9 == 0 ? "/>" : strOther);
        }
        iTwice += ProveXml(strText).iTwice != std::string::npos ? 1 : 0;
        ASSERT_EQ("", FindFalseProof(strText)) << strText;
    }
    EXPECT_GT(iTwice, 300);
}

TEST(XmlProof, HoldsForDamagedTexts) {
    const std::string SOUND =
        "<?xml version=\"1.0\"?><a b=\"1\" c=\"&lt;&#9;\">t&amp;\n<d>\xC3\xA4 &gt;&#13;</d><d/><e f=\"\">x</e></a>";
    const std::string WRITTEN = "<a b=\"1\" c=\"&lt;&#9;\"><d>\xC3\xA4 &gt;&#13;</d><d/><d f=\"\"><g>x</g></d></a>";
    const std::string PIECES[] = {"<",     ">",    "&",   ";",    "#",     "/",        "!",        "]]>",      "\"",
                                  "'",     "=",    " ",   "a",    "d",     "\r",       "\n",       "\t",       "&#13;",
                                  "&amp;", "<d/>", "<d>", "</d>", " b=\"", "\"",       "xmlns=",   "\xEF\xBF", "\xBE",
                                  "\x01",  "<!--", "-->", "<?",   "?>",    "\xC3\xA4", "&quot;x>", "</a>"};
    constexpr int ROUNDS = SANITIZED ? 40000 : 200000;
    std::mt19937 random(20);
    int iProven = 0;
    int iWritten = 0;
    for (int iRound = 0; iRound < ROUNDS; ++iRound) {
        std::string strText = iRound % 2 == 0 ? SOUND : WRITTEN;
        for (auto i = 1 + random() % 3; i > 0; --i) {
            const std::size_t iPlace = random() % strText.size();
            const std::string& strPiece = PIECES[random() % std::size(PIECES)];
            strText.replace(iPlace, random() % 3, random() % 4 == 0 ? "" : strPiece);
        }
        const SXMLProof proof = ProveXml(strText);
        iProven += proof.bWellFormed ? 1 : 0;
        iWritten += proof.bAsWritten ? 1 : 0;
        ASSERT_EQ("", FindFalseProof(strText)) << strText;
    }
    EXPECT_GT(iProven, ROUNDS / 20);
    EXPECT_GT(iWritten, ROUNDS / 100);
}
