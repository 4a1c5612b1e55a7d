#include "cli/Text.h"

#include <gtest/gtest.h>

TEST(Text, ControlCharactersAreShownAndBackslashesStay) {
    EXPECT_EQ(Text::Printable("a\tb\n\x1b[31m\x7f"), R"(a\u0009b\u000A\u001B[31m\u007F)");
    EXPECT_EQ(Text::Printable("\\d+\\"), "\\d+\\");
    EXPECT_EQ(Text::Printable("\xe2\x80\xae"), R"(\u202E)");  // text from right to left
    EXPECT_EQ(Text::Printable("é €"), "é €");
    EXPECT_EQ(Text::Printable("\xff"), "\xef\xbf\xbd");
    EXPECT_EQ(Text::Quoted("a\nb"), R"("a\u000Ab")");
}

TEST(Text, PrintableIsMadePieceByPiece) {
    std::string strText;
    std::string strPrintable;
    for (int i = 0; i < 3000; ++i) {
        strText += "€𐍈é\n\\a\xff";
        strPrintable += "€𐍈é\\u000A\\a\xef\xbf\xbd";
    }
    EXPECT_EQ(Text::Printable(strText), strPrintable);
    for (std::size_t i = 0; i < 4; ++i) {
        std::string strLong(i, '\n');
        std::string strWhole;
        for (int iCharacter = 0; iCharacter < 3000; ++iCharacter) {
            strLong += "𐍈";
            strWhole += "𐍈";
        }
        ASSERT_EQ(Text::Printable(strLong).substr(6 * i), strWhole);
    }
}

TEST(Text, CountsAgreeWithTheirWord) {
    EXPECT_EQ(Text::Counted(1, "list", "lists"), "1 list");
    EXPECT_EQ(Text::Counted(0, "list", "lists"), "0 lists");
}

TEST(Text, EscapedTextIsReadBackOnce) {
    EXPECT_EQ(Text::Unescaped("&amp;lt; &lt;&gt;&quot;&apos; &x; &"), "&lt; <>\"' &x; &");
}

TEST(TextTable, ColumnsAreAsWideAsTheirWidestCell) {
    CTextTable table({"NAME", "COUNT"});
    table.AlignRight(1);
    table.Add({"größer", "1"});
    table.Add({"a\nb", "1000000"});
    table.Add({""});
    EXPECT_EQ(table.ToString(),
              "NAME        COUNT\n"
              "größer          1\n"
              "a\\u000Ab  1000000\n"
              "\n");
    EXPECT_EQ(CTextTable().ToString(), "");
}

TEST(TextTable, WideAndCombiningCharactersLineUp) {
    CTextTable table;
    table.Add({"\u6771\u4eac", "1"});
    table.Add({"e\u0301t\u00e9", "22"});
    EXPECT_EQ(table.ToString(), "\u6771\u4eac  1\ne\u0301t\u00e9   22\n");
}

TEST(TextTable, ColumnsBehindTheFirstGiveWayToATerminal) {
    CTextTable table({"NAME", "DISPLAY NAME", "N"});
    table.Add({"payment-card-number", "\u6771\u4eac\u6771\u4eac\u6771\u4eac", "1"});
    table.Add({"x", "twelve chars", "2"});
    EXPECT_EQ(table.ToString(36), table.ToString());
    EXPECT_EQ(table.ToString(34),
              "NAME                 DISPLAY N\u2026  N\n"
              "payment-card-number  \u6771\u4eac\u6771\u4eac\u2026   1\n"
              "x                    twelve ch\u2026  2\n");
    EXPECT_EQ(table.ToString(1),
              "NAME                 DISPLAY\u2026  N\n"
              "payment-card-number  \u6771\u4eac\u6771\u2026   1\n"
              "x                    twelve \u2026  2\n");
    CTextTable names;
    names.Add({"payment-card-number"});
    EXPECT_EQ(names.ToString(4), "payment-card-number\n");
}

TEST(TextTable, LastColumnIsBrokenIntoLinesWhereThatIsAskedFor) {
    CTextTable table;
    table.WrapLast();
    table.Add({"  -x", "one two three"});
    table.Add({"  --a-long-option NAME", "four five six seven eight nine ten"});
    table.Add({"  -y"});
    EXPECT_EQ(table.ToString(),
              "  -x                    one two three\n"
              "  --a-long-option NAME  four five six seven eight nine ten\n"
              "  -y\n");
    EXPECT_EQ(table.ToString(50),
              "  -x                    one two three\n"
              "  --a-long-option NAME  four five six seven eight\n"
              "                        nine ten\n"
              "  -y\n");
    EXPECT_EQ(table.ToString(40),
              "  -x                one two three\n"
              "  --a-long-option NAME\n"
              "                    four five six seven\n"
              "                    eight nine ten\n"
              "  -y\n");
}

TEST(Text, LinesAreBrokenAnewForATerminal) {
    EXPECT_EQ(Text::Reflow("one two\nthree four\n\n  a table   stays as it is\nfive\n", 9),
              "one two\nthree\nfour\n\n  a table   stays as it is\nfive\n");
    EXPECT_EQ(Text::Reflow("elevenletters b\n", 8), "elevenletters\nb\n");
    EXPECT_EQ(Text::Reflow("one\ntwo\n", 0), "one\ntwo\n");
}
