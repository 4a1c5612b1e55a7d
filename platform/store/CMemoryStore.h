#pragma once

#include <array>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/store/CPackedRow.h"
#include "platform/store/CSettingsStore.h"
#include "platform/store/CUnitsOfWork.h"

/** The settings store in memory: gone with the object. Short of memory, a change is made whole or not at all. */
class CMemoryStore : public CSettingsStore {
  public:
    static constexpr const char URL[] = "memory:";

    CMemoryStore();

    SStoreInfo GetInfo() override;
    void Find(ESettingsKind eKind, std::size_t iColumn, const std::vector<std::string>& vecValues,
              std::vector<std::unique_ptr<CSettingsRow>>& vecRows) override;
    void FindHeld(ESettingsKind eKind, std::size_t iColumn, const std::vector<std::string>& vecValues,
                  std::vector<bool>& vecHeld) override;
    void ReadAll(ESettingsKind eKind, const std::function<void(CSettingsRow&&)>& fnRow) override;
    void ReadColumn(ESettingsKind eKind, std::size_t iColumn, std::vector<std::string>& vecValues) override;
    std::size_t Count(ESettingsKind eKind) override;
    void Check(const std::function<void(const SStoreDamage&)>& fnDamage) override;
    void Save(const CSettingsRow& row) override;
    bool Remove(ESettingsKind eKind, const std::string& strSubject) override;
    void ReplaceAll(ESettingsKind eKind, const std::vector<CSettingsRow>& vecRows) override;
    void Begin(EUnitOfWork eUnit) override;
    void Commit() override;
    void Rollback() override;

  private:
    using Rows = std::map<std::string, CPackedRow>;
    /** A value with the key of its row, and the same for looking up. */
    using Entry = std::pair<std::string, std::string>;
    using EntryView = std::pair<std::string_view, std::string_view>;
    struct SEntryLess {
        using is_transparent = void;
        bool operator()(EntryView left, EntryView right) const { return left < right; }
    };
    /** In order, so that the first row of a value comes first. */
    using Index = std::set<Entry, SEntryLess>;
    struct STableRows {
        Rows rows;
        std::map<std::size_t, Index> mapIndexes;  ///< by indexed column
    };
    /** What stands, or stood, under a key: the row with its entries in the indexes; all empty for nothing. */
    struct SPlace {
        Rows::node_type row;
        std::vector<Index::node_type> vecEntries;  ///< one per index, empty where the row holds null
    };
    /** What stood under a key before a change. */
    struct SUndo {
        ESettingsKind eKind;
        std::string strSubject;
        SPlace place;
    };

    STableRows& Table(ESettingsKind eKind) { return m_aTables[static_cast<std::size_t>(eKind)]; }
    const CPackedRow* FindFirst(ESettingsKind eKind, std::size_t iColumn, const std::string& strValue);
    void Change(ESettingsKind eKind, const std::string& strSubject, const CSettingsRow* pRow);
    SPlace MakePlace(ESettingsKind eKind, const std::string& strSubject, const CSettingsRow* pRow);
    void Exchange(ESettingsKind eKind, const std::string& strSubject, SPlace& place);

    CUnitsOfWork m_units{URL};
    std::vector<std::size_t> m_vecMarks;  ///< where in the undo log each open unit begins
    std::vector<SUndo> m_vecUndo;
    std::array<STableRows, SETTINGS_KINDS> m_aTables;
};
