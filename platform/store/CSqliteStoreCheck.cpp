// What CSqliteStore::Check looks at; it goes on behind each damage as far as it can.
#include <optional>
#include <utility>

#include "platform/common/CException.h"
#include "platform/store/CSqliteStore.h"
#include "platform/store/SqlText.h"
#include "platform/store/SqliteDamage.h"
#include "platform/store/StoreError.h"

void CSqliteStore::Check(const std::function<void(const SStoreDamage&)>& fnDamage) {
    // Not committed: the engine may have undone it when it came upon the damage.
    std::optional<CSettingsTransaction> optUnit;
    std::string strTotals;
    try {
        optUnit.emplace(*this, EUnitOfWork::READ);
    } catch (const OS::CException& error) {
        strTotals = ExplainDamage(error);
    }
    for (const std::string& strDamage : FindStructureDamage(m_connection)) {
        fnDamage({"", "", strDamage});
    }
    if (!optUnit) {
        fnDamage({"", "", strTotals});
        return;
    }
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        CheckTable(eKind, fnDamage);
    }
    m_connection.RequireUnchanged(StoreDoing::CHECKING);
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
