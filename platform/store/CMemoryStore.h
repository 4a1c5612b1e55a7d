#pragma once

#include <array>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/store/CSettingsStore.h"
#include "platform/store/CUnitsOfWork.h"

/** The settings store in memory: gone with the object. */
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
    void Save(const CSettingsRow& row) override;
    bool Remove(ESettingsKind eKind, const std::string& strSubject) override;
    void ReplaceAll(ESettingsKind eKind, const std::vector<CSettingsRow>& vecRows) override;
    void Begin(EUnitOfWork eUnit) override;
    void Commit() override;
    void Rollback() override;

  private:
    using RowPtr = std::shared_ptr<const CSettingsRow>;
    /** Values with the keys of their rows, both in order, so that the first row of a value comes first. */
    using Index = std::set<std::pair<std::string, std::string>>;
    struct SRows {
        std::map<std::string, RowPtr> mapRows;
        std::map<std::size_t, Index> mapIndexes;  ///< by indexed column
    };
    /** What stood under a key before a change; null: nothing. */
    struct SUndo {
        ESettingsKind eKind;
        std::string strSubject;
        RowPtr pRow;
    };

    SRows& Rows(ESettingsKind eKind) { return m_aRows[static_cast<std::size_t>(eKind)]; }
    RowPtr FindFirst(ESettingsKind eKind, std::size_t iColumn, const std::string& strValue);
    void Change(ESettingsKind eKind, const std::string& strSubject, const RowPtr& pRow);
    void Put(ESettingsKind eKind, const std::string& strSubject, const RowPtr& pRow);

    CUnitsOfWork m_units{URL};
    std::vector<std::size_t> m_vecMarks;  ///< where in the undo log each open unit begins
    std::vector<SUndo> m_vecUndo;
    std::array<SRows, SETTINGS_KINDS> m_aRows;
};
