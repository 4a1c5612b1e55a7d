#include "platform/store/CPackedRow.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>

namespace {

/** A row of which no column is empty. */
CSettingsRow MakeFullRow(ESettingsKind eKind) {
    CSettingsRow row(eKind);
    const STable& table = GetSettingsTable(eKind);
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        switch (table.pColumns[i].eType) {
            case EColumnType::TEXT:
            case EColumnType::NULLABLE_TEXT:
                row.SetText(i, "t\u00E4xt " + std::to_string(i));
                break;
            case EColumnType::NUMBER:
                row.SetNumber(i, i % 2 == 0 ? std::numeric_limits<std::int32_t>::min() : -1);
                break;
            case EColumnType::FLAG:
                row.SetFlag(i, true);
                break;
            case EColumnType::TEXT_LIST:
                row.SetList(i, {"", "a", "a", std::string(300, 'b')});
                break;
        }
    }
    return row;
}

}  // namespace

TEST(PackedRow, UnpacksToTheRowThatItWasMadeFrom) {
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        for (const CSettingsRow& row : {CSettingsRow(eKind), MakeFullRow(eKind)}) {
            EXPECT_EQ(row, CPackedRow(row).Unpack());
        }
    }
}

TEST(PackedRow, GivesTheTextsOfItsColumns) {
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        const STable& table = GetSettingsTable(eKind);
        for (const CSettingsRow& row : {CSettingsRow(eKind), MakeFullRow(eKind)}) {
            const CPackedRow packed(row);
            for (std::size_t i = 0; i < table.iColumns; ++i) {
                const EColumnType eType = table.pColumns[i].eType;
                if (eType == EColumnType::TEXT || eType == EColumnType::NULLABLE_TEXT) {
                    EXPECT_EQ(row.IsNull(i), !packed.GetText(i)) << table.pColumns[i].pName;
                    EXPECT_EQ(row.GetText(i), packed.GetText(i).value_or("")) << table.pColumns[i].pName;
                }
            }
        }
    }
}
