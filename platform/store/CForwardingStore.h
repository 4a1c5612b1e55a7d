#pragma once

#include <memory>
#include <utility>

#include "platform/store/CSettingsStore.h"

/** Hands every operation on to another store; derive from it to watch, count or fail operations. */
class DLP_PLATFORM_API CForwardingStore : public CSettingsStore {
  public:
    explicit CForwardingStore(std::unique_ptr<CSettingsStore> pInner) : m_pInner(std::move(pInner)) {}
    ~CForwardingStore() override;

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

  protected:
    /**
     * Called before each operation with its name; throw from it to make that operation fail. A Commit that is made to
     * fail undoes its unit; a Rollback cannot be made to fail.
     */
    virtual void Before(const char* pOperation);
    /** Called when an operation has failed; not for what the caller's own function threw in ReadAll. */
    virtual void Failed(const char* pOperation);

    std::unique_ptr<CSettingsStore> m_pInner;

  private:
    template <class Operation>
    auto Forward(const char* pName, Operation&& fnOperation);
    template <class Told, class Walk>
    void ForwardWalk(const char* pName, const std::function<void(Told)>& fnTold, Walk&& fnWalk);
};
