#include "platform/store/SqliteDamage.h"

#include <sqlite3.h>

#include "platform/common/CException.h"
#include "platform/store/CSqliteConnection.h"
#include "platform/store/CSqliteStatement.h"
#include "platform/store/SettingsSchema.h"
#include "platform/store/SqlitePageSums.h"
#include "platform/store/StoreError.h"

namespace {

constexpr char CHECK_STRUCTURE[] = "PRAGMA integrity_check";
constexpr char SOUND[] = "ok";

}  // namespace

std::string ExplainDamage(const OS::CException& error) {
    if (error.GetErrorCode() != StoreCode::DAMAGED) {
        throw;
    }
    return error.what();
}

/** The engine calls a read that failed damage too. */
std::vector<std::string> FindStructureDamage(CSqliteConnection& connection) {
    std::vector<std::string> vecDamages;
    const int iFailedReads = SqlitePageSums::CountFailedReads(connection.Get());
    try {
        CSqliteStatement statement(connection, CHECK_STRUCTURE, StoreDoing::CHECKING);
        while (statement.Step()) {
            if (std::string strDamage = statement.Text(0); strDamage != SOUND) {
                vecDamages.push_back(std::move(strDamage));
            }
        }
    } catch (const OS::CException& error) {
        vecDamages.push_back(ExplainDamage(error));
    }
    if (SqlitePageSums::CountFailedReads(connection.Get()) != iFailedReads) {
        ThrowStoreError(connection.GetUrl(), StoreDoing::CHECKING, sqlite3_errstr(SQLITE_IOERR), SQLITE_IOERR_READ);
    }
    return vecDamages;
}

std::string FindNonsense(const CSettingsRow& row) {
    try {
        row.Validate();
    } catch (const OS::CException& error) {
        return error.what();
    }
    const STable& table = GetSettingsTable(row.GetKind());
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        if (table.pColumns[i].eType == EColumnType::FLAG && (row.GetNumber(i) < 0 || row.GetNumber(i) > 1)) {
            return std::string(table.pColumns[i].pName) + " is neither 0 nor 1";
        }
    }
    return {};
}
