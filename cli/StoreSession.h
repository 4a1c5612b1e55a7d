#pragma once

#include <memory>
#include <string>

#include "cli/Verdict.h"

/** The process's store, open while this lives, with every failure that it reports on record. */
class CStoreSession {
  public:
    /** @throws CToolError (STORE) when it cannot be opened */
    explicit CStoreSession(const std::string& strUrl);
    CStoreSession(const CStoreSession&) = delete;
    CStoreSession& operator=(const CStoreSession&) = delete;
    ~CStoreSession();

    /**
     * The library turns some failures of the store into results that mean other things too. This asks the store itself.
     * @throws CToolError with the first failure that the store reported (STORE; MEMORY when memory ran out in it)
     */
    void ThrowIfFailed() const;

    struct SFailure;

  private:
    std::shared_ptr<SFailure> m_pFailure;
};
