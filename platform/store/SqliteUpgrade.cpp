#include "platform/store/SqliteUpgrade.h"

#include <string>
#include <utility>

#include "platform/common/CException.h"
#include "platform/store/CMemoryStore.h"
#include "platform/store/CSqliteConnection.h"
#include "platform/store/CSqliteStatement.h"
#include "platform/store/SqlText.h"
#include "platform/store/SqliteDamage.h"
#include "platform/store/SqliteFile.h"
#include "platform/store/StoreBackup.h"
#include "platform/store/StoreError.h"

namespace {

constexpr char GET_VERSION[] = "PRAGMA user_version";

[[noreturn]] void ThrowDamaged(const CSqliteConnection& older, const SStoreDamage& damage) {
    older.RequireUnchanged(StoreDoing::OPENING);
    ThrowStoreError(older.GetUrl(), StoreDoing::OPENING, "it is damaged: " + ToText(damage) + StoreAdvice::DAMAGED,
                    StoreCode::DAMAGED);
}

/** @return what the store says that each table holds; how many numbers it has, or which, nothing else tells */
AllStoreTotals ReadTotals(CSqliteConnection& older) {
    AllStoreTotals aTotals{};
    CSqliteStatement statement(older, SqlText::SELECT_TOTALS, StoreDoing::OPENING);
    for (std::size_t i = 0; i < SETTINGS_KINDS && statement.Step(); ++i) {
        aTotals[i] = {static_cast<std::uint64_t>(statement.Number(1)), static_cast<std::uint64_t>(statement.Number(2))};
    }
    return aTotals;
}

/** @param pExpected what the table holds, when its records have checksums */
void ReadTable(CSqliteConnection& older, const STable& table, const SStoreTotals* pExpected, CSettingsStore& records) {
    const std::string strSelect = pExpected != nullptr ? SqlText::SelectAll(table) : SqlText::SelectUnsummed(table);
    CSqliteStatement statement(older, strSelect, StoreDoing::OPENING);
    SStoreTotals found;
    while (statement.Step()) {
        const CSettingsRow row = statement.Row(table.eKind);
        const std::uint64_t iChecksum = ChecksumOf(row);
        if (pExpected != nullptr && statement.Checksum(table.eKind) != iChecksum) {
            ThrowDamaged(older, {table.pName, row.GetSubject(), StoreDamage::ALTERED});
        }
        if (std::string strNonsense = FindNonsense(row); !strNonsense.empty()) {
            ThrowDamaged(older, {table.pName, row.GetSubject(), std::move(strNonsense)});
        }
        found.Add(iChecksum);
        records.Save(row);
    }
    if (pExpected != nullptr && found != *pExpected) {
        ThrowDamaged(older, {table.pName, "", StoreDamage::VANISHED});
    }
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

AllStoreTotals FillSqliteTables(CSqliteConnection& connection, CSettingsStore& records) {
    AllStoreTotals aTotals{};
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        const STable& table = GetSettingsTable(eKind);
        CSqliteStatement insert(connection, SqlText::Insert(table), StoreDoing::OPENING);
        records.ReadAll(eKind, [&](CSettingsRow&& row) {
            const std::uint64_t iChecksum = ChecksumOf(row);
            CSqliteRun run(insert);
            run->BindRow(row);
            run->BindNumber(static_cast<int>(table.iColumns) + 1, static_cast<std::int64_t>(iChecksum));
            run->Step();
            aTotals[static_cast<std::size_t>(eKind)].Add(iChecksum);
        });
    }
    return aTotals;
}

void ReadOlderSqliteFile(CSqliteConnection& older, CSettingsStore& records) {
    for (const std::string& strDamage : FindStructureDamage(older)) {
        ThrowDamaged(older, {"", "", strDamage});
    }
    const bool bSummed = older.Number(GET_VERSION) >= SchemaVersion::RECORD_SUMS;
    const AllStoreTotals aTotals = bSummed ? ReadTotals(older) : AllStoreTotals{};
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        const SStoreTotals* pExpected = bSummed ? &aTotals[static_cast<std::size_t>(eKind)] : nullptr;
        ReadTable(older, GetSettingsTable(eKind), pExpected, records);
    }
}

void RenewSqliteFile(CSqliteConnection& older, const std::string& strPath) {
    CMemoryStore records;
    ReadOlderSqliteFile(older, records);
    StoreBackup::Renew(records, strPath, [&] {
        if (older.HasMoved()) {
            ThrowStoreError(older.GetUrl(), StoreDoing::OPENING,
                            StoreWritten::MOVED + std::string(StoreWritten::NOTHING));
        }
        FindSqliteFile(strPath, older.GetUrl());  // under a name of its own a snapshot would be given up with the file
    });
}
