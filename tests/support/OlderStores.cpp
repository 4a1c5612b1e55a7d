#include "tests/support/OlderStores.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>

#include "platform/store/CSqliteStore.h"
#include "platform/store/RecordChecksum.h"
#include "platform/store/SqlText.h"

void RunSql(const std::string& strPath, const std::string& strSql, const char* pVfs) {
    sqlite3* pDb = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open_v2(strPath.c_str(), &pDb, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, pVfs));
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(pDb, strSql.c_str(), nullptr, nullptr, nullptr)) << sqlite3_errmsg(pDb);
    sqlite3_close(pDb);
}

void MakeFirstVersion(const std::string& strPath) {
    std::string strSql = "PRAGMA page_size = 8192;";
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        const STable& table = GetSettingsTable(eKind);
        std::string strTable = SqlText::CreateTable(table);
        const std::string strChecksum = ", checksum INTEGER NOT NULL";
        strSql += strTable.replace(strTable.find(strChecksum), strChecksum.size(), "");
    }
    RunSql(
        strPath,
        strSql +
            "PRAGMA application_id = 0x444C5053; PRAGMA user_version = 1; PRAGMA journal_mode = WAL;"
            "INSERT INTO expressions VALUES ('E', 'e', '', '', 1, 0, '', '', '', 0, 1, 2, 3, 4, 5, 6, 'p', '', '', '');"
            "INSERT INTO templates VALUES ('T', NULL, '', '', 0, '', 'a' || char(10), '', '');",
        nullptr);
}

void MakeSecondVersion(const std::string& strPath) {
    const std::string strOld = strPath + ".new";
    MakeFirstVersion(strOld);
    std::string strSql;
    {
        CSqliteStore store(strPath);
        for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
            const std::string strTable = GetSettingsTable(eKind).pName;
            SStoreTotals totals;
            strSql += "ALTER TABLE " + strTable + " ADD COLUMN checksum INTEGER NOT NULL DEFAULT 0;";
            store.ReadAll(eKind, [&](CSettingsRow&& row) {
                totals.Add(ChecksumOf(row));
                strSql += "UPDATE " + strTable +
                          " SET checksum = " + std::to_string(static_cast<std::int64_t>(ChecksumOf(row))) +
                          " WHERE subject = '" + row.GetSubject() + "';";
            });
            strSql += "INSERT INTO totals VALUES (" + std::to_string(static_cast<int>(eKind)) + ", " +
                      std::to_string(totals.iRecords) + ", " +
                      std::to_string(static_cast<std::int64_t>(totals.iChecksum)) + ");";
        }
    }
    RunSql(strOld, SqlText::CREATE_TOTALS + (";" + strSql) + "PRAGMA user_version = 2", nullptr);
    std::filesystem::rename(strOld, strPath);
}
