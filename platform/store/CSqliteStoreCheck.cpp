// What CSqliteStore::Check looks at; it goes on behind each damage as far as it can.
#include <sqlite3.h>

#include <optional>
#include <utility>

#include "platform/common/CException.h"
#include "platform/store/CSqliteStore.h"
#include "platform/store/SqlText.h"
#include "platform/store/SqlitePageSums.h"
#include "platform/store/StoreError.h"

namespace {

constexpr char CHECK_STRUCTURE[] = "PRAGMA integrity_check";
constexpr char SOUND[] = "ok";

/** @return what the store said of its damage; any other failure passes. Called while it is handled. */
std::string ExplainDamage(const OS::CException& error) {
    if (error.GetErrorCode() != StoreCode::DAMAGED) {
        throw;
    }
    return error.what();
}

/** @return what is wrong in the record beside its checksum; "" when nothing is */
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

}  // namespace

void CSqliteStore::Check(const std::function<void(const SStoreDamage&)>& fnDamage) {
    // Not committed: the engine may have undone it when it came upon the damage.
    std::optional<CSettingsTransaction> optUnit;
    std::string strTotals;
    try {
        optUnit.emplace(*this, EUnitOfWork::READ);
    } catch (const OS::CException& error) {
        strTotals = ExplainDamage(error);
    }
    CheckStructure(fnDamage);
    if (!optUnit) {
        fnDamage({"", "", strTotals});
        return;
    }
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        CheckTable(eKind, fnDamage);
    }
}

/** The engine's own words, a line for each damage; it calls a read that failed damage too. */
void CSqliteStore::CheckStructure(const std::function<void(const SStoreDamage&)>& fnDamage) {
    std::vector<std::string> vecDamages;
    const int iFailedReads = SqlitePageSums::CountFailedReads(m_connection.Get());
    try {
        CSqliteStatement statement(m_connection, CHECK_STRUCTURE, StoreDoing::CHECKING);
        while (statement.Step()) {
            vecDamages.push_back(statement.Text(0));
        }
    } catch (const OS::CException& error) {
        vecDamages.push_back(ExplainDamage(error));
    }
    if (SqlitePageSums::CountFailedReads(m_connection.Get()) != iFailedReads) {
        ThrowStoreError(m_units.GetUrl(), StoreDoing::CHECKING, sqlite3_errstr(SQLITE_IOERR), SQLITE_IOERR_READ);
    }
    for (const std::string& strDamage : vecDamages) {
        if (strDamage != SOUND) {
            fnDamage({"", "", strDamage});
        }
    }
}

/** Goes on behind each damaged record; a page that cannot be read ends the walk over its table. */
void CSqliteStore::CheckTable(ESettingsKind eKind, const std::function<void(const SStoreDamage&)>& fnDamage) {
    const STable& table = GetSettingsTable(eKind);
    std::vector<SStoreDamage> vecDamages;
    try {
        SStoreTotals found;
        CSqliteStatement statement(m_connection, SqlText::SelectAll(table), StoreDoing::CHECKING);
        while (statement.Step()) {
            const CSettingsRow row = statement.Row(eKind);
            found.Add(statement.Checksum(eKind));
            if (ChecksumOf(row) != statement.Checksum(eKind)) {
                vecDamages.push_back({table.pName, row.GetSubject(), StoreDamage::ALTERED});
            } else if (std::string strNonsense = FindNonsense(row); !strNonsense.empty()) {
                vecDamages.push_back({table.pName, row.GetSubject(), std::move(strNonsense)});
            }
        }
        if (found != m_vecOpen.back().aTotals[static_cast<std::size_t>(eKind)]) {
            vecDamages.push_back({table.pName, "", StoreDamage::VANISHED});
        }
    } catch (const OS::CException& error) {
        vecDamages.push_back({table.pName, "", ExplainDamage(error)});
    }
    for (const SStoreDamage& damage : vecDamages) {
        fnDamage(damage);
    }
}
