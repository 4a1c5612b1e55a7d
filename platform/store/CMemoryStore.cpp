#include "platform/store/CMemoryStore.h"

#include "platform/store/StoreError.h"

CMemoryStore::CMemoryStore() {
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        const STable& table = GetSettingsTable(eKind);
        for (std::size_t i = 0; i < table.iColumns; ++i) {
            if (table.pColumns[i].bIndexed) {
                Table(eKind).mapIndexes.emplace(i, Index());
            }
        }
    }
}

SStoreInfo CMemoryStore::GetInfo() {
    return {URL, "memory", SETTINGS_SCHEMA_VERSION};
}

const CPackedRow* CMemoryStore::FindFirst(ESettingsKind eKind, std::size_t iColumn, const std::string& strValue) {
    const STableRows& table = Table(eKind);
    if (iColumn == 0) {
        const auto itRow = table.rows.find(strValue);
        return itRow != table.rows.end() ? &itRow->second : nullptr;
    }
    const Index& index = table.mapIndexes.at(iColumn);
    const auto itEntry = index.lower_bound(EntryView(strValue, ""));
    return itEntry != index.end() && itEntry->first == strValue ? &table.rows.at(itEntry->second) : nullptr;
}

void CMemoryStore::Find(ESettingsKind eKind, std::size_t iColumn, const std::vector<std::string>& vecValues,
                        std::vector<std::unique_ptr<CSettingsRow>>& vecRows) {
    vecRows.clear();
    for (const std::string& strValue : vecValues) {
        const CPackedRow* pRow = FindFirst(eKind, iColumn, strValue);
        vecRows.push_back(pRow != nullptr ? std::make_unique<CSettingsRow>(pRow->Unpack()) : nullptr);
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
    const Rows& rows = Table(eKind).rows;
    for (auto itRow = rows.begin(); itRow != rows.end();) {
        const std::string strSubject = itRow->first;
        fnRow(itRow->second.Unpack());
        itRow = rows.upper_bound(strSubject);
    }
}

void CMemoryStore::ReadColumn(ESettingsKind eKind, std::size_t iColumn, std::vector<std::string>& vecValues) {
    vecValues.clear();
    for (const auto& [strSubject, row] : Table(eKind).rows) {
        vecValues.emplace_back(row.GetText(iColumn).value_or(std::string_view()));
    }
}

std::size_t CMemoryStore::Count(ESettingsKind eKind) {
    return Table(eKind).rows.size();
}

/** What is in memory is as it was written. */
void CMemoryStore::Check(const std::function<void(const SStoreDamage&)>&) {}

void CMemoryStore::Save(const CSettingsRow& row) {
    m_units.RequireWritable(StoreDoing::SAVING);
    row.Validate();
    Change(row.GetKind(), row.GetSubject(), &row);
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
        SUndo& undo = m_vecUndo.back();
        Exchange(undo.eKind, undo.strSubject, undo.place);
    }
    m_units.Pop();
    m_vecMarks.pop_back();
}

/** Puts the row, or nothing, in place of what stands under the key, and remembers that while a unit is open. */
void CMemoryStore::Change(ESettingsKind eKind, const std::string& strSubject, const CSettingsRow* pRow) {
    m_vecUndo.push_back({eKind, strSubject, MakePlace(eKind, strSubject, pRow)});
    SUndo& undo = m_vecUndo.back();
    Exchange(eKind, undo.strSubject, undo.place);
    if (!m_units.IsInside()) {
        m_vecUndo.clear();
    }
}

/** Takes all the memory that a change, and undoing it, will need. */
CMemoryStore::SPlace CMemoryStore::MakePlace(ESettingsKind eKind, const std::string& strSubject,
                                             const CSettingsRow* pRow) {
    const STableRows& table = Table(eKind);
    SPlace place;
    place.vecEntries.resize(table.mapIndexes.size());
    if (pRow == nullptr) {
        return place;
    }
    Rows rows;
    place.row = rows.extract(rows.emplace(strSubject, *pRow).first);
    auto itEntry = place.vecEntries.begin();
    for (const auto& [iColumn, others] : table.mapIndexes) {
        if (!pRow->IsNull(iColumn)) {
            Index index;
            *itEntry = index.extract(index.emplace(pRow->GetText(iColumn), strSubject).first);
        }
        ++itEntry;
    }
    return place;
}

/** Puts the place under the key and what stood there into the place. Only nodes change hands, so nothing can fail. */
void CMemoryStore::Exchange(ESettingsKind eKind, const std::string& strSubject, SPlace& place) {
    STableRows& table = Table(eKind);
    const auto itOld = table.rows.find(strSubject);
    const bool bOld = itOld != table.rows.end();
    auto itEntry = place.vecEntries.begin();
    for (auto& [iColumn, index] : table.mapIndexes) {
        Index::node_type old;
        const auto text = bOld ? itOld->second.GetText(iColumn) : std::nullopt;
        if (text) {
            old = index.extract(index.find(EntryView(*text, strSubject)));
        }
        index.insert(std::move(*itEntry));
        *itEntry++ = std::move(old);
    }
    Rows::node_type oldRow;
    if (bOld) {
        oldRow = table.rows.extract(itOld);
    }
    table.rows.insert(std::move(place.row));
    place.row = std::move(oldRow);
}
