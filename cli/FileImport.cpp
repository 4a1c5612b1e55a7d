#include "cli/FileImport.h"

#include <map>
#include <optional>
#include <utility>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/ImportRefusal.h"
#include "cli/ImportReport.h"
#include "cli/InputFile.h"
#include "cli/InstalledFiles.h"
#include "cli/Kinds.h"
#include "cli/NearestName.h"
#include "cli/Progress.h"
#include "cli/Signals.h"
#include "cli/StoreSession.h"
#include "cli/Text.h"
#include "platform/store/CSettingsStore.h"
#include "xml/CPolicyDocument.h"

namespace {

/** Looking for the nearest name takes long in a large store, and nobody reads hundreds of them. */
constexpr std::size_t MAX_SUGGESTIONS = 20;

class CReportObserver : public CImportObserver {
  public:
    CReportObserver(SImportReport& report, CProgress& progress) : m_report(report), m_progress(progress) {}

    void OnItem(const SImportItem& item) override {
        m_report.vecItems.push_back({item, {}, {}});
        m_progress.Step();
        Signals::ThrowIfCaught();
    }

  private:
    SImportReport& m_report;
    CProgress& m_progress;
};

class CFileImport {
  public:
    CFileImport(CCommandContext& context, const SImportDoor& door, const std::string& strFile)
        : m_context(context), m_door(door) {
        m_report.pFormat = door.pFormat;
        m_report.strFile = strFile;
    }

    EVerdict Run() {
        try {
            Import();
        } catch (const CInputError& error) {
            m_report.Undo(error.GetVerdict(), error.GetReason());
            m_report.place = error.GetPlace();
        } catch (...) {
            const CToolError error = m_context.ExplainException();
            m_report.Undo(error.GetVerdict(), error.what());
        }
        Tell();
        return m_report.eVerdict;
    }

  private:
    void Import() {
        Signals::ThrowIfCaught();
        m_file = ReadPolicy(m_context, m_report.strFile);
        CPolicyDocument document(m_file.Text());
        const CXMLView root = ParsePolicy(m_report.strFile, m_file, document);
        if (m_door.bTemplates && IsOlderLayout(root)) {
            WarnOfMissing(m_context, FindMapFile(), NO_MAP_FILE);
        }
        const CStoreSession& store = m_context.GetStore();
        CSettingsTransaction unit(EUnitOfWork::WRITE);
        ImportDocument(root, document);
        Signals::ThrowIfCaught();
        store.ThrowIfFailed();
        if (*m_report.iResult != 0) {
            m_report.Undo(EVerdict::INVALID, ExplainRefusal(root, *m_report.iResult));
            return;
        }
        SuggestNames();
        m_report.eVerdict = m_report.HasFindings() ? EVerdict::FINDINGS : EVerdict::DONE;
        StartReport();
        unit.Commit();
    }

    void ImportDocument(const CXMLView& root, CPolicyDocument& document) {
        CProgress progress(m_context.GetError(), m_context.ShowsProgress(), Text::Printable(m_report.strFile),
                           CountItems(root));
        CReportObserver observer(m_report, progress);
        m_report.iResult = m_door.fnImport(m_context, document, m_report, observer);
    }

    /** Part of the unit of work: after its end the store must not be able to fail any more. */
    void SuggestNames() {
        std::map<ESettingsKind, std::vector<std::string>> mapNames;
        std::map<std::pair<ESettingsKind, std::string>, std::string> mapNearest;
        for (SReportItem& item : m_report.vecItems) {
            if (!item.bUnknownReference || m_context.IsJson() || mapNearest.size() == MAX_SUGGESTIONS) {
                continue;
            }
            const ESettingsKind eKind =
                item.eReferenceKind == EItemKind::EXPRESSION ? ESettingsKind::EXPRESSION : ESettingsKind::KEYWORD;
            std::vector<std::string>& vecNames = mapNames[eKind];
            if (vecNames.empty()) {
                CSettingsStore::Current().ReadColumn(eKind, NAME_COLUMN, vecNames);
            }
            const auto [itNearest, bNew] = mapNearest.try_emplace({eKind, item.strReference});
            if (bNew) {
                itNearest->second = FindNearestName(item.strReference, vecNames);
            }
            item.strNearest = itNearest->second;
        }
    }

    /** The answer begins before the store changes: when nobody can be told, nothing is done. */
    void StartReport() {
        if (m_context.IsJson()) {
            m_context.StartJson(MakeReportHead(m_report));
        } else {
            m_context.Write(Text::Printable(m_report.strFile) + ":\n");
            m_context.Flush();
        }
    }

    void Tell() {
        FindPlaces();
        const bool bUndone = !m_report.strReason.empty();
        if (bUndone) {
            m_context.Error(MakeRefusal(m_report));
        }
        if (m_report.eVerdict == EVerdict::OUTPUT) {
            return;
        }
        if (m_context.IsJson()) {
            m_context.WriteJson(MakeReportJson(m_report));
        } else if (!bUndone) {
            m_context.Write(MakeReportText(m_report));
            m_context.Flush();
        }
    }

    /** Text shows the places of few items, so those of the others are not looked for. */
    void FindPlaces() {
        std::optional<CSourcePlaces> places;
        for (SReportItem& item : m_report.vecItems) {
            if (item.iOffset != std::string::npos && (m_context.IsJson() || item.IsShown())) {
                if (!places) {
                    places.emplace(m_file.strBytes);
                }
                item.place = places->Find(m_file.iStart + item.iOffset);
            }
        }
    }

    CCommandContext& m_context;
    const SImportDoor& m_door;
    SPolicyFile m_file;
    SImportReport m_report;
};

/** @return whether what happened to one file keeps the next ones from being tried */
bool EndsRun(EVerdict eVerdict) {
    return GetExitCode(eVerdict) >= GetExitCode(EVerdict::STORE);
}

}  // namespace

EVerdict ImportFiles(CCommandContext& context, const SImportDoor& door, const std::vector<std::string>& vecFiles) {
    if (door.bTemplates) {
        WarnOfMissing(context, FindPolicyFile(), NO_POLICY_FILE);
    }
    EVerdict eVerdict = EVerdict::DONE;
    bool bImported = false;
    for (const std::string& strFile : vecFiles) {
        const EVerdict eFile = CFileImport(context, door, strFile).Run();
        eVerdict = GetWorse(eVerdict, eFile);
        bImported = bImported || eFile == EVerdict::DONE || eFile == EVerdict::FINDINGS;
        if (EndsRun(eFile)) {
            return eVerdict;
        }
    }
    if (bImported && !context.IsJson()) {
        context.Note(door.pNext);
    }
    return eVerdict;
}
