#include "platform/store/CMemoryStore.h"

#include "platform/store/StoreError.h"

CMemoryStore::CMemoryStore() {
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        const STable& table = GetSettingsTable(eKind);
        for (std::size_t i = 0; i < table.iColumns; ++i) {
            if (table.pColumns[i].bIndexed) {
                Rows(eKind).mapIndexes.emplace(i, Index());
            }
        }
    }
}

SStoreInfo CMemoryStore::GetInfo() {
    return {URL, "memory", SETTINGS_SCHEMA_VERSION};
}

CMemoryStore::RowPtr CMemoryStore::FindFirst(ESettingsKind eKind, std::size_t iColumn, const std::string& strValue) {
    SRows& rows = Rows(eKind);
    if (iColumn == 0) {
        const auto itRow = rows.mapRows.find(strValue);
        return itRow != rows.mapRows.end() ? itRow->second : nullptr;
    }
    const Index& index = rows.mapIndexes.at(iColumn);
    const auto itEntry = index.lower_bound({strValue, std::string()});
    return itEntry != index.end() && itEntry->first == strValue ? rows.mapRows.at(itEntry->second) : nullptr;
}

void CMemoryStore::Find(ESettingsKind eKind, std::size_t iColumn, const std::vector<std::string>& vecValues,
                        std::vector<std::unique_ptr<CSettingsRow>>& vecRows) {
    vecRows.clear();
    for (const std::string& strValue : vecValues) {
        const RowPtr pRow = FindFirst(eKind, iColumn, strValue);
        vecRows.push_back(pRow != nullptr ? std::make_unique<CSettingsRow>(*pRow) : nullptr);
    }
}

void CMemoryStore::FindHeld(ESettingsKind eKind, std::size_t iColumn, const std::vector<std::string>& vecValues,
                            std::vector<bool>& vecHeld) {
    vecHeld.clear();
    for (const std::string& strValue : vecValues) {
        vecHeld.push_back(FindFirst(eKind, iColumn, strValue) != nullptr);
    }
}

void CMemoryStore::ReadAll(ESettingsKind eKind, const std::function<void(CSettingsRow&&)>& fnRow) {
    // Looks for the next key each time, so that the function may change the table.
    const auto& mapRows = Rows(eKind).mapRows;
    for (auto itRow = mapRows.begin(); itRow != mapRows.end();) {
        const std::string strSubject = itRow->first;
        fnRow(CSettingsRow(*itRow->second));
        itRow = mapRows.upper_bound(strSubject);
    }
}

void CMemoryStore::ReadColumn(ESettingsKind eKind, std::size_t iColumn, std::vector<std::string>& vecValues) {
    vecValues.clear();
    for (const auto& [strSubject, pRow] : Rows(eKind).mapRows) {
        vecValues.push_back(pRow->GetText(iColumn));
    }
}

std::size_t CMemoryStore::Count(ESettingsKind eKind) {
    return Rows(eKind).mapRows.size();
}

void CMemoryStore::Save(const CSettingsRow& row) {
    m_units.RequireWritable(StoreDoing::SAVING);
    row.Validate();
    Change(row.GetKind(), row.GetSubject(), std::make_shared<CSettingsRow>(row));
}

bool CMemoryStore::Remove(ESettingsKind eKind, const std::string& strSubject) {
    m_units.RequireWritable(StoreDoing::REMOVING);
    const bool bThere = FindFirst(eKind, 0, strSubject) != nullptr;
    if (bThere) {
        Change(eKind, strSubject, nullptr);
    }
    return bThere;
}

void CMemoryStore::ReplaceAll(ESettingsKind eKind, const std::vector<CSettingsRow>& vecRows) {
    CSettingsTransaction transaction(*this, EUnitOfWork::WRITE);
    std::vector<std::string> vecSubjects;
    ReadColumn(eKind, 0, vecSubjects);
    for (const std::string& strSubject : vecSubjects) {
        Remove(eKind, strSubject);
    }
    for (const CSettingsRow& row : vecRows) {
        Save(row);
    }
    transaction.Commit();
}

void CMemoryStore::Begin(EUnitOfWork eUnit) {
    m_vecMarks.reserve(m_vecMarks.size() + 1);  // lack of memory must not leave a unit without its mark
    m_units.Push(eUnit);
    m_vecMarks.push_back(m_vecUndo.size());
}

void CMemoryStore::Commit() {
    m_units.RequireInside(StoreDoing::COMMITTING);
    m_units.Pop();
    m_vecMarks.pop_back();
    if (!m_units.IsInside()) {
        m_vecUndo.clear();
    }
}

void CMemoryStore::Rollback() {
    m_units.RequireInside(StoreDoing::UNDOING);
    for (; m_vecUndo.size() > m_vecMarks.back(); m_vecUndo.pop_back()) {
        const SUndo& undo = m_vecUndo.back();
        Put(undo.eKind, undo.strSubject, undo.pRow);
    }
    m_units.Pop();
    m_vecMarks.pop_back();
}

/** Put, remembered for Rollback while a unit is open. */
void CMemoryStore::Change(ESettingsKind eKind, const std::string& strSubject, const RowPtr& pRow) {
    if (m_units.IsInside()) {
        m_vecUndo.push_back({eKind, strSubject, FindFirst(eKind, 0, strSubject)});
    }
    Put(eKind, strSubject, pRow);
}

/** Puts the row, or nothing, in place of what stands under the key. An index never names a row that is not there. */
void CMemoryStore::Put(ESettingsKind eKind, const std::string& strSubject, const RowPtr& pRow) {
    SRows& rows = Rows(eKind);
    const RowPtr pOld = FindFirst(eKind, 0, strSubject);
    if (pRow != nullptr) {
        rows.mapRows[strSubject] = pRow;
    }
    for (auto& [iColumn, index] : rows.mapIndexes) {
        if (pOld != nullptr && !pOld->IsNull(iColumn)) {
            index.erase({pOld->GetText(iColumn), strSubject});
        }
        if (pRow != nullptr && !pRow->IsNull(iColumn)) {
            index.emplace(pRow->GetText(iColumn), strSubject);
        }
    }
    if (pRow == nullptr) {
        rows.mapRows.erase(strSubject);
    }
}
