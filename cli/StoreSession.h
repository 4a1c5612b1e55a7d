#pragma once

#include <memory>
#include <string>

#include "cli/CUnmadeStore.h"
#include "cli/Verdict.h"
#include "platform/store/CSettingsStore.h"

/** The process's store, open while this lives, with every failure on record that it or a data file reports. */
class CStoreSession {
  public:
    /** @param eUse READ: a store that is not there is an error @throws CToolError (STORE) when it cannot be opened */
    CStoreSession(const std::string& strUrl, EUnitOfWork eUse);
    /** The same for one that is not there. @throws CToolError (STORE) when it cannot be made there */
    CStoreSession(const std::string& strUrl, CUnmadeStore::EMade eMade);
    CStoreSession(const CStoreSession&) = delete;
    CStoreSession& operator=(const CStoreSession&) = delete;
    ~CStoreSession();

    /**
     * The library turns some failures of the store into results that mean other things too, and goes on without a data
     * file that it cannot read. This asks the store and those files themselves.
     * @throws CToolError with the first failure that the store reported (STORE; MEMORY when memory ran out in it), else
     * with the one of a data file (INVALID)
     */
    void ThrowIfFailed() const;
    /** @return whether anything was written that stays, in this session or the last one */
    static bool IsChanged() noexcept;
    /** For what changes a store without a session, and for a new command, which has changed none. */
    static void SetChanged(bool bChanged) noexcept;
    /** @return whether the store was not there when it was opened, and another process has made it before this one */
    bool IsMadeMeanwhile() const;

    struct SFailure;

  private:
    template <class F>
    void Open(const F& fnOpen);

    std::shared_ptr<SFailure> m_pFailure;
};
