#include "cli/edit/DelimitedText.h"

#include <gtest/gtest.h>

namespace {

using Rows = std::vector<std::vector<std::string>>;

constexpr std::size_t MOST = 9;

Rows Read(std::string_view strText, char cSeparator = ',') {
    Rows vecRows;
    DelimitedText::Read(strText, 0, cSeparator, MOST, [&](const DelimitedText::SRow& row) {
        EXPECT_EQ(row.vecCells.size(), row.iCells);
        auto& vecTexts = vecRows.emplace_back();
        for (const DelimitedText::SCell& cell : row.vecCells) {
            vecTexts.emplace_back(cell.strText);
        }
    });
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
    std::vector<std::size_t> vecOffsets;
    DelimitedText::Read("##a,\"b\"\n,c", 2, ',', MOST, [&](const DelimitedText::SRow& row) {
        for (const DelimitedText::SCell& cell : row.vecCells) {
            vecOffsets.push_back(cell.iOffset);
        }
    });
    EXPECT_EQ(vecOffsets, (std::vector<std::size_t>{2, 4, 8, 9}));
}

TEST(DelimitedText, CellsBeyondThoseThatAreAskedForAreCounted) {
    Rows vecRows;
    std::vector<std::size_t> vecCounts;
    DelimitedText::Read("a,\"b\"\"c\",\"d\"\"e\",,\nx\n", 0, ',', 2, [&](const DelimitedText::SRow& row) {
        auto& vecTexts = vecRows.emplace_back();
        for (const DelimitedText::SCell& cell : row.vecCells) {
            vecTexts.emplace_back(cell.strText);
        }
        vecCounts.push_back(row.iCells);
    });
    EXPECT_EQ(vecRows, Rows({{"a", "b\"c"}, {"x"}}));
    EXPECT_EQ(vecCounts, (std::vector<std::size_t>{5, 1}));
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
    EXPECT_EQ(DelimitedText::Write({"", "a\"b,c", "de"}, ','), ",\"a\"\"b,c\",de\r\n");
    EXPECT_EQ(DelimitedText::Write({"a,b", "c;d", "e\tf"}, '\t'), "a,b\tc;d\t\"e\tf\"\r\n");
}

TEST(DelimitedText, WhatSeparatesForOthersIsQuotedBetweenCommas) {
    EXPECT_EQ(DelimitedText::Write({"a;b", "c\td", ";", "e f"}, ','), "\"a;b\",\"c\td\",\";\",e f\r\n");
}

TEST(DelimitedText, FormulasAreDisarmedAndComeBack) {
    const std::pair<const char*, const char*> aCases[] = {
        {"=1+1", "'=1+1"},
        {"+49", "'+49"},
        {"-x", "'-x"},
        {"@x", "'@x"},
        {"\tx", "'\tx"},
        {"\rx", "'\rx"},
        {"\nx", "'\nx"},
        {"'=x", "''=x"},
        {"''", "''"},
        {"'x", "'x"},
        {"x=1", "x=1"},
        {"", ""},
        {" =1", " =1"},
        {"'", "'"},
        {"''+", "'''+"},
        {"\uff1d1", "'\uff1d1"},
        {"\uff0b", "'\uff0b"},
        {"\uff0dx", "'\uff0dx"},
        {"'\uff20x", "''\uff20x"},
        {"x\uff1d", "x\uff1d"},
        {"'\uff1c", "'\uff1c"},
        {"\uff21", "\uff21"},
        {"\uff0c", "\uff0c"},
    };
    for (const auto& [pText, pDisarmed] : aCases) {
        EXPECT_EQ(DelimitedText::Disarm(pText), pDisarmed);
        EXPECT_EQ(DelimitedText::Rearm(pDisarmed), pText);
    }
    EXPECT_EQ(DelimitedText::Rearm("=1"), "=1");
}
