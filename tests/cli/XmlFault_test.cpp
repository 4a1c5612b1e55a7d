#include "cli/XmlFault.h"

#include <gtest/gtest.h>

#include "platform/xml/XMLGate.hpp"

namespace {

std::string Explain(const std::string& strText) {
    const SXMLLoadError error = CheckXml(strText).error;
    const CSourcePlaces places(strText);
    const SXmlFault fault = ExplainXmlFault(strText, error, places, 0);
    std::string strSaid = std::to_string(fault.iOffset) + ' ' + fault.strWhat + "; " + fault.strAdvice;
    if (fault.iRelated != std::string::npos) {
        strSaid += " [" + std::to_string(fault.iRelated) + ' ' + fault.strRelated + ']';
    }
    return strSaid;
}

constexpr const char AMPERSAND[] = "\"&\" begins no reference; write &amp; where & itself is meant";
constexpr const char NEAR[] = "; correct it here or shortly before this place";

}  // namespace

TEST(XmlFault, SaysWhatToWrite) {
    const std::pair<std::string, std::string> aTexts[] = {
        {"<a b=\"x & y\"/>", std::string("8 ") + AMPERSAND},
        {"<a b=\"AT&T\"/>", std::string("8 ") + AMPERSAND},
        {"<a>x &&amp; y</a>", std::string("5 ") + AMPERSAND},
        {"<a>&;</a>", std::string("3 ") + AMPERSAND},
        {"<a>x &", std::string("5 ") + AMPERSAND},
        {"<a>&nbsp;</a>",
         "3 \"&nbsp;\" is no reference that XML knows; write the character itself or its number, as &#233; for "
         "\xC3\xA9"},
        {"<a b='&eacute;'/>",
         "6 \"&eacute;\" is no reference that XML knows; write the character itself or its number, as &#233; for "
         "\xC3\xA9"},
        {"<a>\n<b c='&lt;' d='&euro;&amp;'/></a>",
         "19 \"&euro;\" is no reference that XML knows; write the character itself or its number, as &#233; for "
         "\xC3\xA9"},
        {"<a b='&#0;'/>", "6 \"&#0;\" is no character that XML has; write another one, or remove it"},
        {"<a>&#0;</a>", "3 \"&#0;\" is no character that XML has; write another one, or remove it"},
        {"<a b=\"x < y\"/>",
         "8 \"<\" stands in the value of an attribute; write &lt; where < itself is meant; if it begins a tag, the "
         "value lacks its quotation mark [5 the value begins here]"},
        {"<a>\n<b c=\"x/>\n<d e=\"f\"/></a>",
         "14 \"<\" stands in the value of an attribute; write &lt; where < itself is meant; if it begins a tag, the "
         "value lacks its quotation mark [9 the value begins here]"},
        {"<a <b/></a>", "3 a tag begins in another one; end the one before it with \">\""},
        {"<a b=\"the \"best\" one\"/>",
         "11 the quotation mark before this place ends the value of an attribute; write &quot; for one inside a value, "
         "or add the one that is missing [5 the value begins here]"},
        {"<a b='it's'/>",
         "9 the quotation mark before this place ends the value of an attribute; write &apos; for one inside a value, "
         "or add the one that is missing [5 the value begins here]"},
        {"<a b= 1/>", "6 the value of an attribute has no quotation marks; put it between quotation marks"},
        {"<a>]]></a>", "5 \"]]>\" stands in text; write ]]&gt;"},
        {"<a><!-- & -- --></a>", "12 \"--\" stands inside a comment; write it in another way there"},
        {"<a>\x01</a>", "3 XML does not have the character \"\\u0001\"; remove it"},
        {"<a><![CDATA[\xEF\xBF\xBE]]></a>", "12 XML does not have the character \"\xEF\xBF\xBE\"; remove it"},
        {"<a><!-- <b>", "3 what begins here has no end; end it with \"-->\""},
        {"<a><b c=\"d",
         "3 what begins here has no end; end it with \">\", and the value in it with its quotation mark"},
        {"<a><b", "3 what begins here has no end; end it with \">\""},
        {"<a>x < y</a>", "5 \"<\" begins no tag; write &lt; where < itself is meant"},
        {"<a></", "3 what begins here has no end; end it with \">\""},
        {"<a/>\n<b/>", "5 the root element has ended before; remove what follows, or put it into the root element"},
        {"<a></a>text", "7 the root element has ended before; remove what follows, or put it into the root element"},
        {"<a/><?xml version='1.0'?>",
         "4 the XML declaration does not stand at the beginning; remove it, or what stands before it"},
        {"<!-- x --><!DOCTYPE a><a/>", "10 a DOCTYPE is not allowed; remove it"},
        {"<?xml version='9.9'?><a/>",
         "0 the XML version is neither 1.0 nor another 1.x; correct it here or shortly before this place"},
        {"<a><![CDATA[x]]</a>", "3 a CDATA section has no end; end it with \"]]>\""},
        {"<a><", "3 what begins here has no end; end it with \">\""},
    };
    for (const auto& [strText, strExpected] : aTexts) {
        EXPECT_EQ(Explain(strText), strExpected) << strText;
    }
}

TEST(XmlFault, TellsAnAmpersandFromAReferenceWithoutItsEnd) {
    const std::pair<std::string, std::string> aTexts[] = {
        {"<a>AT&T</b></a>", std::string("5 ") + AMPERSAND},
        {"<a>Q&A</a>", std::string("4 ") + AMPERSAND},
        {"<a>&</a>", std::string("3 ") + AMPERSAND},
        {"<a>C&#</x></a>", std::string("4 ") + AMPERSAND},
        {"<a b='x?y=1&lt=2'/>", std::string("11 ") + AMPERSAND},
        {"<a>&lt b</a>", "3 the \";\" of \"&lt\" is missing; write &lt;"},
        {"<a>&amp b</a>", "3 the \";\" of \"&amp\" is missing; write &amp;"},
        {"<a b='&quot'/>", "6 the \";\" of \"&quot\" is missing; write &quot;"},
        {"<a &amp;='1'/>", std::string("3 not well-formed (invalid token)") + NEAR},
    };
    for (const auto& [strText, strExpected] : aTexts) {
        EXPECT_EQ(Explain(strText), strExpected) << strText;
    }
}

TEST(XmlFault, TellsTextFromTags) {
    const std::pair<std::string, std::string> aTexts[] = {
        {"<a>(?<=a)</a>", "5 \"<\" begins no tag; write &lt; where < itself is meant"},
        {"<a>(?<!a)</a>", "5 \"<!\" begins no tag; write &lt; where < itself is meant"},
        {"<a>(?<!--a)</a>", "5 \"<\" stands in text; write &lt;"},
        {"<a>(?<y>a)</a>",
         "12 \"</a>\" does not fit: \"<y>\" of line 1 is still open; close that with \"</y>\" before it, or write &lt; "
         "if its < is text [5 \"<y>\" begins here]"},
        {"<a>a <b</a>",
         "7 a tag begins in another one; end the one before it with \">\", or write &lt; if its < is text"},
        {"<a>\n< b/></a>", "4 a blank stands between \"<\" and the name; remove it"},
        {"<a></ a>", "3 a blank stands between \"</\" and the name; remove it"},
        {"<a><1x/></a>",
         "3 \"<\" begins no tag; write &lt; where < itself is meant; the name of a tag begins with a letter"},
        {"<a>\n<<<<<<< HEAD\n<b/>\n=======\n>>>>>>> x\n</a>", "4 a conflict of a merge was left here; settle it"},
        {"<a b='\n<<<<<<< HEAD\n'/>", "7 a conflict of a merge was left here; settle it"},
    };
    for (const auto& [strText, strExpected] : aTexts) {
        EXPECT_EQ(Explain(strText), strExpected) << strText;
    }
}

TEST(XmlFault, SaysWhatIsWrongInATag) {
    const std::pair<std::string, std::string> aTexts[] = {
        {"<a b='1', c='2'/>", "8 \",\" stands behind an attribute; remove it: blanks stand between attributes"},
        {"<a b='1';/>", "8 \";\" stands behind an attribute; remove it: blanks stand between attributes"},
        {"<a b='1'c='2'/>", "8 no blank stands before the attribute \"c\"; add one"},
        {"<a b=='1'/>", "5 \"=\" stands twice before the value of an attribute; remove one of them"},
        {"<a b=\xE2\x80\x9Ct\xE2\x80\x9D/>",
         "5 the value of an attribute is between typographic quotation marks; write \" before it and behind it"},
        {"<a b/>", "3 the attribute \"b\" has no value; give it one, or remove it"},
        {"<a b ></a>", "3 the attribute \"b\" has no value; give it one, or remove it"},
        {"<a b='1' c d='2'/>", "9 the attribute \"c\" has no value; give it one, or remove it"},
        {"<a>x <b and c> d</a>",
         "8 the attribute \"and\" has no value; give it one, or remove it, or write &lt; if its < is text"},
        {"<a b'1'/>", "4 \"=\" is missing before the value of \"b\"; add it"},
        {"<a b='1'/ >", "9 a blank stands between \"/\" and \">\"; write \"/>\""},
        {"<a><b></b c='1'></a>", "10 an end tag has nothing but a name; remove what stands behind the name"},
        {"<a><b></b\n<c/></a>", "6 \"</b\" has no end; end it with \">\""},
        {"<a b='1' 'c'/>", std::string("9 not well-formed (invalid token)") + NEAR},
        {"<a ='1'/>", std::string("3 not well-formed (invalid token)") + NEAR},
    };
    for (const auto& [strText, strExpected] : aTexts) {
        EXPECT_EQ(Explain(strText), strExpected) << strText;
    }
}

TEST(XmlFault, NamesTheElementThatIsOpen) {
    const std::pair<std::string, std::string> aTexts[] = {
        {"<a>\n<b x='>'>\n<!-- <c> --><c/></a>",
         "32 \"</a>\" does not fit: \"<b>\" of line 2 is still open; close that with \"</b>\" before it "
         "[4 \"<b>\" begins here]"},
        {"<a>\n<b>\n</B></a>",
         "10 \"</B>\" does not fit: \"<b>\" of line 2 is still open; close that with \"</b>\", or remove \"</B>\" "
         "[4 \"<b>\" begins here]"},
        {"<a/></a>", "4 \"</a>\" closes no element; remove it"},
        {"<a><b></b>\n",
         "11 it ends, and \"<a>\" of line 1 is still open; close it with \"</a>\" [0 \"<a>\" begins here]"},
    };
    for (const auto& [strText, strExpected] : aTexts) {
        EXPECT_EQ(Explain(strText), strExpected) << strText;
    }
}

TEST(XmlFault, NamesTheAttributeThatStandsTwice) {
    EXPECT_EQ(Explain("<a><b y='x=' x = '1'\n x='2'/></a>"),
              "22 the attribute \"x\" stands twice in the tag; keep one of them [13 the first one is here]");
}

TEST(XmlFault, NamesTheElementThatIsTooDeep) {
    std::string strDeep = "<r>";
    for (int i = 0; i < 255; ++i) {
        strDeep += "<a>";
    }
    EXPECT_EQ(Explain(strDeep + "\n<b/>"),
              "769 \"<b>\" is nested deeper than 256 elements: \"<a>\" of line 1 is still open; end some of them "
              "before it [765 \"<a>\" begins here]");
}
