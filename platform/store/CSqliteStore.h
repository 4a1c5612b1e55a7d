#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "platform/store/CSettingsStore.h"
#include "platform/store/CSqliteConnection.h"
#include "platform/store/CSqliteStatement.h"
#include "platform/store/CUnitsOfWork.h"
#include "platform/store/RecordChecksum.h"

/**
 * The settings store in one database file, shared with other processes. Every record carries a checksum, and the totals
 * of each table change in the same transaction: a record that was altered is refused when it is read, and a walk over a
 * table fails when one has vanished.
 */
class CSqliteStore : public CSettingsStore {
  public:
    static constexpr const char SCHEME[] = "sqlite:";
    static constexpr int BUSY_MILLISECONDS = 30000;

    /**
     * @param strPath relative paths count from the working directory of now
     * @param iBusyMilliseconds how long to wait for another writer
     * @param eUse READ: the file must be a store already, and no write succeeds
     * @throws OS::CException as CSqliteConnection
     */
    explicit CSqliteStore(const std::string& strPath, int iBusyMilliseconds = BUSY_MILLISECONDS,
                          EUnitOfWork eUse = EUnitOfWork::WRITE);

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
    enum class EStatement : std::size_t;

    CSqliteStatement& Prepared(EStatement eStatement, ESettingsKind eKind = ESettingsKind::EXPRESSION,
                               std::size_t iColumn = 0);
    CSqliteRun Start(EStatement eStatement, ESettingsKind eKind, std::size_t iColumn = 0);
    void Run(EStatement eStatement);
    std::unique_ptr<CSqliteRun> HoldState(std::size_t iValues);
    void RequireUnitKept(const char* pDoing) const;
    bool IsHeld(ESettingsKind eKind, std::size_t iColumn, const std::string& strValue);
    void CheckTable(ESettingsKind eKind, const std::function<void(const SStoreDamage&)>& fnDamage);
    CSettingsRow ReadVerified(const CSqliteStatement& statement, ESettingsKind eKind) const;
    std::optional<std::uint64_t> FindChecksum(ESettingsKind eKind, const std::string& strSubject);
    void RequireLookedFor(ESettingsKind eKind, bool bLookedFor) const;
    bool Write(EStatement eStatement, const CSettingsRow& row, std::uint64_t iChecksum,
               std::optional<std::int64_t> place = {});
    bool Update(const CSettingsRow& row, std::uint64_t iChecksum);
    SStoreTotals FindTotals(ESettingsKind eKind, CSqliteStatement& statement) const;
    AllStoreTotals ReadTotals(CSqliteStatement& statement) const;
    void WriteTotals();
    SStoreTotals& Change(ESettingsKind eKind);
    void BeginOutermost(EUnitOfWork eUnit);
    bool IsMarkWanted(EUnitOfWork eUnit) const;
    void EndUnit();
    void UndoNested(bool bMarked);
    [[noreturn]] void ThrowMoved(const char* pDoing, const char* pWhat, int iCode = 0) const;
    [[noreturn]] void ThrowDamaged(const SStoreDamage& damage) const;

    /** The row that was looked up last while this unit writes: nobody else changes it before the unit ends. */
    struct SFound {
        ESettingsKind eKind;
        std::string strSubject;
        std::string strIndexed;  ///< what the indexes but that of keys hold of it
        std::int64_t iPlace;     ///< the engine's number of the row
        std::uint64_t iChecksum;
        std::uint64_t iChanges;  ///< how many there were by then
    };
    bool IsFound(const CSettingsRow& row) const;

    /** A unit that is open. */
    struct SUnit {
        AllStoreTotals aTotals;  ///< as it sees them
        EUnitOfWork eUnit;
        bool bMarked;            ///< whether it has a mark of its own to go back to
        std::uint64_t iChanges;  ///< how many there were when it began
    };

    CSqliteConnection m_connection;
    std::map<std::tuple<EStatement, ESettingsKind, std::size_t>, CSqliteStatement> m_mapStatements;
    CUnitsOfWork m_units;
    AllStoreTotals m_aStored{};    ///< as the outermost unit found them
    std::vector<SUnit> m_vecOpen;  ///< outermost first
    std::uint64_t m_iChanges = 0;  ///< counts changes through this object, and what undoes them
    std::optional<SFound> m_found;
};
