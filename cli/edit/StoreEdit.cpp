#include "cli/edit/StoreEdit.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Signals.h"
#include "cli/StoreSession.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char NOT_WRITTEN[] = "Nothing was written: this was a dry run.";

CStoreSession& Open(CCommandContext& context, const SEditOptions& options, CStoreEdit::EStore eStore) {
    if (eStore == CStoreEdit::EStore::THERE) {
        return context.GetStoreToChange();
    }
    if (options.bDryRun) {
        context.MakeNoStore();
    }
    return context.GetStore(CUnmadeStore::EMade::AT_COMMIT);
}

}  // namespace

void AddEditOptions(CLI::App& command, SEditOptions& options) {
    CCommandLine::AddFlag(command, "--dry-run", options.bDryRun, "only say what would be changed");
}

CStoreEdit::CStoreEdit(CCommandContext& context, const char* pFormat, const SEditOptions& options, EStore eStore)
    : m_context(context),
      m_session(Open(context, options, eStore)),
      m_unit(EUnitOfWork::WRITE),
      m_pFormat(pFormat),
      m_options(options) {}

void CStoreEdit::Warn(const std::string& strWarning) {
    if (std::find(m_vecWarnings.begin(), m_vecWarnings.end(), strWarning) == m_vecWarnings.end()) {
        m_vecWarnings.push_back(strWarning);
    }
}

EVerdict CStoreEdit::Finish(const Json& members, const std::string& strText) {
    Signals::ThrowIfCaught();
    m_session.ThrowIfFailed();
    if (m_context.IsJson()) {
        const Json head = {{"format", m_pFormat}};
        Json answer = head;
        answer["verdict"] = GetVerdictName(EVerdict::DONE);
        answer["dry_run"] = m_options.bDryRun;
        answer.update(members);
        answer["warnings"] = m_vecWarnings;
        m_context.StartAnswer(head, answer);
    } else {
        m_context.StartAnswer(strText, std::string());
    }
    if (!m_options.bDryRun) {
        m_unit.Commit();
    }
    for (const std::string& strWarning : m_vecWarnings) {
        m_context.Warn(strWarning);
    }
    m_context.FinishAnswer();
    if (m_options.bDryRun && !m_context.IsJson()) {
        m_context.Note(NOT_WRITTEN);
    }
    return EVerdict::DONE;
}
