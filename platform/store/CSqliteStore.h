#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <tuple>

#include "platform/store/CSettingsStore.h"
#include "platform/store/CSqliteConnection.h"
#include "platform/store/CSqliteStatement.h"
#include "platform/store/CUnitsOfWork.h"

/** The settings store in one database file, shared with other processes. */
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
    void Save(const CSettingsRow& row) override;
    bool Remove(ESettingsKind eKind, const std::string& strSubject) override;
    void ReplaceAll(ESettingsKind eKind, const std::vector<CSettingsRow>& vecRows) override;
    void Begin(EUnitOfWork eUnit) override;
    void Commit() override;
    void Rollback() override;

  private:
    enum class EStatement : std::size_t;
    using Counts = std::array<std::optional<std::size_t>, SETTINGS_KINDS>;

    CSqliteStatement& Prepared(EStatement eStatement, ESettingsKind eKind = ESettingsKind::EXPRESSION,
                               std::size_t iColumn = 0);
    CSqliteRun Start(EStatement eStatement, ESettingsKind eKind, std::size_t iColumn = 0);
    void Run(EStatement eStatement);
    void RequireUnitKept(const char* pDoing) const;
    bool IsHeld(ESettingsKind eKind, std::size_t iColumn, const std::string& strValue);
    std::optional<std::size_t>& Counted(ESettingsKind eKind) { return m_aCounts[static_cast<std::size_t>(eKind)]; }

    CSqliteConnection m_connection;
    std::map<std::tuple<EStatement, ESettingsKind, std::size_t>, CSqliteStatement> m_mapStatements;
    CUnitsOfWork m_units;
    Counts m_aCounts;  ///< what Count was asked for since the outermost unit began
};
