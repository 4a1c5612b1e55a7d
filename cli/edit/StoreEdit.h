#pragma once

#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "cli/Verdict.h"
#include "platform/store/CSettingsStore.h"

namespace CLI {
class App;
}
class CCommandContext;
class CStoreSession;

/** How a change of the store is to be made. */
struct SEditOptions {
    bool bDryRun = false;
};

void AddEditOptions(CLI::App& command, SEditOptions& options);

/** One change of the store by a command: all of it or nothing. Undone unless finished. */
class CStoreEdit {
  public:
    /** Whether a store that is not there is made; a dry run makes none. */
    enum class EStore { MADE, THERE };

    /**
     * @param pFormat name of the answer's JSON form @param eStore THERE: nothing but what is stored can be changed
     * @throws CToolError (USAGE, STORE)
     */
    CStoreEdit(CCommandContext& context, const char* pFormat, const SEditOptions& options,
               EStore eStore = EStore::THERE);

    /** Something to be told, once, when the change is made. @param strWarning printable */
    void Warn(const std::string& strWarning);

    /**
     * Tells what was changed and keeps it; a dry run tells the same and undoes it.
     * @param members what the answer holds in JSON @param strText what it is for people
     */
    EVerdict Finish(const nlohmann::ordered_json& members, const std::string& strText);

  private:
    CCommandContext& m_context;
    const CStoreSession& m_session;
    CSettingsTransaction m_unit;
    const char* m_pFormat;
    SEditOptions m_options;
    std::vector<std::string> m_vecWarnings;
};
