#include "platform/store/CSettingsRow.h"

#include <gtest/gtest.h>

#include "tests/support/ExceptionText.h"

namespace {

TEST(SettingsRow, IsEmptyAtFirst) {
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        const STable& table = GetSettingsTable(eKind);
        const CSettingsRow row(eKind);
        EXPECT_EQ(eKind, row.GetKind());
        EXPECT_EQ("", row.GetSubject());
        for (std::size_t i = 0; i < table.iColumns; ++i) {
            const EColumnType eType = table.pColumns[i].eType;
            EXPECT_EQ(eType == EColumnType::NULLABLE_TEXT, row.IsNull(i)) << table.pColumns[i].pName;
            if (eType == EColumnType::TEXT || eType == EColumnType::NULLABLE_TEXT) {
                EXPECT_EQ("", row.GetText(i));
            } else if (eType == EColumnType::TEXT_LIST) {
                EXPECT_TRUE(row.GetList(i).empty());
            } else {
                EXPECT_EQ(0, row.GetNumber(i));
                EXPECT_FALSE(row.GetFlag(i));
            }
        }
    }
}

TEST(SettingsRow, EqualsARowOfTheSameKindAndValues) {
    CSettingsRow left(ESettingsKind::TEMPLATE);
    CSettingsRow right(ESettingsKind::TEMPLATE);
    EXPECT_TRUE(left == right);
    right.SetText(TemplateColumn::ELEMENT_NAME, "");
    EXPECT_TRUE(left != right);
    right.SetNull(TemplateColumn::ELEMENT_NAME);
    EXPECT_FALSE(left != right);
    EXPECT_TRUE(CSettingsRow(ESettingsKind::KEYWORD) != left);
}

TEST(SettingsRow, ValidateNamesRecordColumnAndPlace) {
    CSettingsRow row(ESettingsKind::TEMPLATE);
    row.SetText(TemplateColumn::SUBJECT, "S\xC3\xA9");
    row.SetText(TemplateColumn::ELEMENT, "\x01 \xEF\xBF\xBF \xF4\x8F\xBF\xBF");
    row.SetList(TemplateColumn::REGIONS, {"", "r"});
    EXPECT_EQ("", ExceptionText([&] { row.Validate(); }));

    const std::string strRecord = "record \"S\xC3\xA9\" cannot be saved: ";
    row.SetList(TemplateColumn::REGIONS, {"good", std::string("b\0d", 3)});
    EXPECT_EQ(strRecord + "regions, byte 1: U+0000 cannot be stored", ExceptionText([&] { row.Validate(); }));
    row.SetText(TemplateColumn::ELEMENT_NAME, std::string(1, '\0'));
    EXPECT_EQ(strRecord + "name, byte 0: U+0000 cannot be stored", ExceptionText([&] { row.Validate(); }));
    for (const char* pText : {"ab\xED\xA0\x80", "ab\xC0\x80", "ab\xF4\x90\x80\x80", "ab\xE2\x82", "ab\xFF"}) {
        row.SetText(TemplateColumn::ELEMENT_NAME, pText);
        EXPECT_EQ(strRecord + "name, byte 2: no Unicode character", ExceptionText([&] { row.Validate(); }));
    }
    row.SetText(TemplateColumn::SUBJECT, "S\xFF");
    EXPECT_EQ("record \"S\xEF\xBF\xBD\" cannot be saved: subject, byte 1: no Unicode character",
              ExceptionText([&] { row.Validate(); }));
}

std::string ColumnNames(ESettingsKind eKind, bool bIndexedOnly) {
    const STable& table = GetSettingsTable(eKind);
    std::string strNames = table.pName;
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        if (!bIndexedOnly || table.pColumns[i].bIndexed) {
            strNames += std::string(" ") + table.pColumns[i].pName;
        }
    }
    return strNames;
}

TEST(SettingsSchema, ColumnsAreThoseOfTheDump) {
    EXPECT_EQ(
        "expressions subject name display_name description pre_defined modified scope type validator "
        "case_sensitive min_length max_length suffix_length min_left_radius max_left_radius max_right_radius "
        "pattern alphabet_charset display_format example",
        ColumnNames(ESettingsKind::EXPRESSION, false));
    EXPECT_EQ(
        "keyword_lists subject name display_name description pre_defined modified scope condition threshold "
        "number text",
        ColumnNames(ESettingsKind::KEYWORD, false));
    EXPECT_EQ("templates subject name display_name description pre_defined scope industries regions element",
              ColumnNames(ESettingsKind::TEMPLATE, false));
}

TEST(SettingsSchema, NamesAreIndexed) {
    EXPECT_EQ("expressions name", ColumnNames(ESettingsKind::EXPRESSION, true));
    EXPECT_EQ("keyword_lists name", ColumnNames(ESettingsKind::KEYWORD, true));
    EXPECT_EQ("templates name display_name", ColumnNames(ESettingsKind::TEMPLATE, true));
}

}  // namespace
