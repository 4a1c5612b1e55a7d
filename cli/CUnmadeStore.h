#pragma once

#include <string>
#include <vector>

#include "platform/store/CForwardingStore.h"

/**
 * A store whose file is not there yet: it is empty, and is made when something is to be kept, so that a run that keeps
 * nothing leaves no file. What another process has made meanwhile is left as it is.
 */
class CUnmadeStore : public CForwardingStore {
  public:
    /** When it is made. */
    enum class EMade {
        AT_FIRST_WRITE,
        AT_COMMIT,  ///< what is written stays in memory until then: for what may well be undone
    };

    CUnmadeStore(std::string strUrl, EMade eMade);

    SStoreInfo GetInfo() override;
    void Save(const CSettingsRow& row) override;
    bool Remove(ESettingsKind eKind, const std::string& strSubject) override;
    void ReplaceAll(ESettingsKind eKind, const std::vector<CSettingsRow>& vecRows) override;
    void Begin(EUnitOfWork eUnit) override;
    void Commit() override;
    void Rollback() override;

  private:
    void BeforeWrite();
    bool HoldsAnything();
    void Make();

    std::string m_strUrl;
    EMade m_eMade;
    bool m_bMade = false;
    std::vector<EUnitOfWork> m_vecUnits;  ///< that are open, outermost first
};
