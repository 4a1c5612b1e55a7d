#include "cli/edit/DelimitedText.h"

#include <gtest/gtest.h>

namespace {

using Rows = std::vector<std::vector<std::string>>;

Rows Read(std::string_view strText, char cSeparator = ',') {
    Rows vecRows;
    for (const auto& vecRow : DelimitedText::Read(strText, cSeparator)) {
        auto& vecTexts = vecRows.emplace_back();
        for (const DelimitedText::SCell& cell : vecRow) {
            vecTexts.push_back(cell.strText);
        }
    }
    return vecRows;
}

}  // namespace

TEST(DelimitedText, CellsAreReadAsTheyStand) {
    EXPECT_EQ(Read(""), Rows());
    EXPECT_EQ(Read("a"), Rows({{"a"}}));
    EXPECT_EQ(Read("a,b\r\nc,d\n"), Rows({{"a", "b"}, {"c", "d"}}));
    EXPECT_EQ(Read(" a ,,\n"), Rows({{" a ", "", ""}}));
    EXPECT_EQ(Read("\n\r\na\n\n"), Rows({{"a"}}));
    EXPECT_EQ(Read("\"a,\"\"b\"\"\r\n\",\"\"\n"), Rows({{"a,\"b\"\r\n", ""}}));
    EXPECT_EQ(Read("a\tb,c", '\t'), Rows({{"a", "b,c"}}));
}

TEST(DelimitedText, PlacesAreThoseOfTheCells) {
    const auto vecRows = DelimitedText::Read("a,\"b\"\n,c", ',');
    EXPECT_EQ(vecRows[0][1].iOffset, 2U);
    EXPECT_EQ(vecRows[1][0].iOffset, 6U);
    EXPECT_EQ(vecRows[1][1].iOffset, 7U);
}

TEST(DelimitedText, FaultsAreToldWithTheirPlace) {
    const std::tuple<const char*, std::size_t, const char*> aCases[] = {
        {"a,\"b", 2, "this quotation mark is not closed"},
        {"a,\"b\"\"", 2, "this quotation mark is not closed"},
        {"ab\"c", 2, "a quotation mark inside a cell needs quotation marks around the cell, and is doubled"},
        {"\"a\"b", 3, "the closing quotation mark must be followed by the separator or the line's end"},
        {"a\rb", 1, "a carriage return needs quotation marks around its cell"},
        {"a\r", 1, "a carriage return needs quotation marks around its cell"},
    };
    for (const auto& [pText, iOffset, pWhy] : aCases) {
        try {
            Read(pText);
            ADD_FAILURE() << pText;
        } catch (const DelimitedText::CFault& fault) {
            EXPECT_STREQ(fault.what(), pWhy) << pText;
            EXPECT_EQ(fault.GetOffset(), iOffset) << pText;
        }
    }
}

TEST(DelimitedText, WhatIsWrittenIsReadBack) {
    const std::vector<std::string> vecCells = {"", "a", ",", "\"", "\t", "\r\n", "\n", " b ", "c;d"};
    for (const char cSeparator : {',', '\t'}) {
        for (const std::string& strFirst : vecCells) {
            for (const std::string& strSecond : vecCells) {
                const std::string strRow = DelimitedText::Write({strFirst, strSecond}, cSeparator);
                EXPECT_EQ(Read(strRow, cSeparator), Rows({{strFirst, strSecond}})) << strRow;
            }
        }
    }
    EXPECT_EQ(DelimitedText::Write({"", "a\"b,c", "d\te"}, ','), ",\"a\"\"b,c\",d\te\r\n");
}

TEST(DelimitedText, FormulasAreDisarmedAndComeBack) {
    const std::pair<const char*, const char*> aCases[] = {
        {"=1+1", "'=1+1"}, {"+49", "'+49"}, {"-x", "'-x"},   {"@x", "'@x"}, {"\tx", "'\tx"},
        {"\rx", "'\rx"},   {"\nx", "'\nx"}, {"'=x", "''=x"}, {"''", "''"},  {"'x", "'x"},
        {"x=1", "x=1"},    {"", ""},        {" =1", " =1"},  {"'", "'"},    {"''+", "'''+"},
    };
    for (const auto& [pText, pDisarmed] : aCases) {
        EXPECT_EQ(DelimitedText::Disarm(pText), pDisarmed);
        EXPECT_EQ(DelimitedText::Rearm(pDisarmed), pText);
    }
    EXPECT_EQ(DelimitedText::Rearm("=1"), "=1");
}
