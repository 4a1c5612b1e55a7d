#pragma once

#include <memory>
#include <string>

#include "cli/Verdict.h"
#include "platform/store/CSettingsStore.h"

/** The process's store, open while this lives, with every failure on record that it or a data file reports. */
class CStoreSession {
  public:
    /** @param eUse READ: a store that is not there is an error @throws CToolError (STORE) when it cannot be opened */
    CStoreSession(const std::string& strUrl, EUnitOfWork eUse);
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

    struct SFailure;

  private:
    std::shared_ptr<SFailure> m_pFailure;
};
