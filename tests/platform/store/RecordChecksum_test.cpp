#include "platform/store/RecordChecksum.h"

#include <gtest/gtest.h>

#include <set>

namespace {

CSettingsRow Row(ESettingsKind eKind) {
    CSettingsRow row(eKind);
    row.SetText(0, "S");
    return row;
}

TEST(RecordChecksum, IsTheSameForeverAndOnEveryMachine) {
    EXPECT_EQ(0x4f33e42542d24df7u, ChecksumOf(CSettingsRow(ESettingsKind::EXPRESSION)));
    CSettingsRow row(ESettingsKind::TEMPLATE);
    row.SetText(TemplateColumn::SUBJECT, "ORVAL_SUB_CFG_DLP_TEMPLATEcards");
    row.SetText(TemplateColumn::ELEMENT_NAME, "cards");
    row.SetFlag(TemplateColumn::PRE_DEFINED, true);
    row.SetList(TemplateColumn::REGIONS, {"Europe", ""});
    row.SetText(TemplateColumn::ELEMENT, "<template name=\"cards\"/>");
    EXPECT_EQ(0x608da81c75566263u, ChecksumOf(row));
}

TEST(RecordChecksum, EveryValueCounts) {
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        const STable& table = GetSettingsTable(eKind);
        std::set<std::uint64_t> setSeen{ChecksumOf(Row(eKind))};
        std::size_t iRows = 1;
        const auto fnSee = [&](const CSettingsRow& row) {
            ++iRows;
            setSeen.insert(ChecksumOf(row));
            EXPECT_EQ(iRows, setSeen.size()) << table.pName;
        };
        for (std::size_t i = 1; i < table.iColumns; ++i) {
            CSettingsRow row = Row(eKind);
            switch (table.pColumns[i].eType) {
                case EColumnType::NUMBER:
                case EColumnType::FLAG:
                    row.SetNumber(i, -1);
                    fnSee(row);
                    row.SetNumber(i, 1);
                    break;
                case EColumnType::TEXT_LIST:
                    row.SetList(i, {"", "a"});
                    fnSee(row);
                    row.SetList(i, {"a", ""});
                    fnSee(row);
                    row.SetList(i, {"a"});
                    break;
                case EColumnType::NULLABLE_TEXT:
                    row.SetText(i, "");
                    fnSee(row);
                    [[fallthrough]];
                case EColumnType::TEXT:
                    row.SetText(i, "a");
                    break;
            }
            fnSee(row);
        }
    }
}

TEST(RecordChecksum, TextThatMovesToTheNextColumnCounts) {
    CSettingsRow first = Row(ESettingsKind::KEYWORD);
    CSettingsRow second = first;
    first.SetText(AssetColumn::NAME, "ab");
    second.SetText(AssetColumn::NAME, "a");
    second.SetText(AssetColumn::DISPLAY_NAME, "b");
    EXPECT_NE(ChecksumOf(first), ChecksumOf(second));
}

TEST(RecordChecksum, TotalsKeepNoOrder) {
    SStoreTotals totals;
    SStoreTotals others;
    for (const std::uint64_t iChecksum : {~std::uint64_t{0}, std::uint64_t{5}, std::uint64_t{5}}) {
        totals.Add(iChecksum);
    }
    EXPECT_EQ(3u, totals.iRecords);
    EXPECT_EQ(9u, totals.iChecksum);
    others.Add(5);
    others.Add(~std::uint64_t{0});
    EXPECT_NE(others, totals);
    totals.Remove(5);
    EXPECT_EQ(others, totals);
}

}  // namespace
