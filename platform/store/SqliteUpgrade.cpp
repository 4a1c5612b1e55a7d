#include "platform/store/SqliteUpgrade.h"

#include <string>
#include <utility>
#include <vector>

#include "platform/store/CSqliteConnection.h"
#include "platform/store/CSqliteStatement.h"
#include "platform/store/SqlText.h"
#include "platform/store/StoreError.h"

namespace {

constexpr char GET_VERSION[] = "PRAGMA user_version";

/** Gives each record of the table its checksum. @return the table's totals */
SStoreTotals AddChecksums(CSqliteConnection& connection, const STable& table) {
    connection.Execute(SqlText::AddChecksum(table));
    std::vector<std::pair<std::string, std::uint64_t>> vecChecksums;
    CSqliteStatement select(connection, SqlText::SelectAll(table), StoreDoing::OPENING);
    while (select.Step()) {
        const CSettingsRow row = select.Row(table.eKind);
        vecChecksums.emplace_back(row.GetSubject(), ChecksumOf(row));
    }
    SStoreTotals totals;
    CSqliteStatement update(connection, SqlText::UpdateChecksum(table), StoreDoing::OPENING);
    for (const auto& [strSubject, iChecksum] : vecChecksums) {
        CSqliteRun run(update);
        run->BindText(1, strSubject);
        run->BindNumber(2, static_cast<std::int64_t>(iChecksum));
        run->Step();
        totals.Add(iChecksum);
    }
    return totals;
}

}  // namespace

void CreateTotals(CSqliteConnection& connection, const AllStoreTotals& aTotals) {
    connection.Execute(SqlText::CREATE_TOTALS);
    CSqliteStatement insert(connection, SqlText::INSERT_TOTALS, StoreDoing::OPENING);
    for (std::size_t i = 0; i < SETTINGS_KINDS; ++i) {
        CSqliteRun run(insert);
        run->BindNumber(1, static_cast<std::int64_t>(i));
        run->BindNumber(2, static_cast<std::int64_t>(aTotals[i].iRecords));
        run->BindNumber(3, static_cast<std::int64_t>(aTotals[i].iChecksum));
        run->Step();
    }
}

void BringUpSchema(CSqliteConnection& connection) {
    if (connection.Number(GET_VERSION) != SchemaVersion::TABLES) {
        return;
    }
    connection.Execute(SqlText::BEGIN_WRITE);
    if (connection.Number(GET_VERSION) == SchemaVersion::TABLES) {  // else another process was faster
        AllStoreTotals aTotals;
        for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
            aTotals[static_cast<std::size_t>(eKind)] = AddChecksums(connection, GetSettingsTable(eKind));
        }
        CreateTotals(connection, aTotals);
        connection.Execute(GET_VERSION + (" = " + std::to_string(SchemaVersion::RECORD_SUMS)));
    }
    connection.Execute(SqlText::COMMIT);
}
