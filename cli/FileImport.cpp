#include "cli/FileImport.h"

#include <map>
#include <optional>
#include <utility>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/ImportOptions.h"
#include "cli/ImportRefusal.h"
#include "cli/ImportReport.h"
#include "cli/ImportReportFile.h"
#include "cli/InputFile.h"
#include "cli/InstalledFiles.h"
#include "cli/ItemChoice.h"
#include "cli/KeptSettings.h"
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

constexpr const char NOT_TAKEN[] = " cannot be taken, and --fail-on-skip is given";

/** What the files of one run share. */
struct SRun {
    CCommandContext& context;
    const SImportDoor& door;
    const SImportOptions& options;
    CImportReportFile& reportFile;
    std::optional<CKeptSettings> kept;            ///< of a dry run
    std::optional<CSettingsTransaction> preview;  ///< of a dry run; ends before the settings come back
};

class CReportObserver : public CImportObserver {
  public:
    CReportObserver(SImportReport& report, const CItemChoice* pChoice, bool bKeepsStored)
        : m_report(report), m_pChoice(pChoice), m_bKeepsStored(bKeepsStored) {}

    bool PassesOver(EItemKind eKind, std::string_view strName) override {
        const bool bPassesOver = m_pChoice != nullptr && !m_pChoice->Holds(eKind, strName);
        if (bPassesOver) {
            ++m_report.iNotChosen;
            Step();
        }
        return bPassesOver;
    }

    bool KeepsStored() override { return m_bKeepsStored; }

    void OnItem(const SImportItem& item) override {
        m_report.vecItems.push_back({item, {}, {}});
        Step();
    }

  private:
    static void Step() {
        CProgress::Step();
        Signals::ThrowIfCaught();
    }

    SImportReport& m_report;
    const CItemChoice* m_pChoice;
    bool m_bKeepsStored;
};

class CFileImport {
  public:
    CFileImport(SRun& run, const std::string& strFile) : m_run(run), m_context(run.context) {
        m_report.pFormat = run.door.pFormat;
        m_report.strFile = strFile;
        m_report.bDryRun = run.options.bDryRun;
    }

    EVerdict Run() {
        try {
            Import();
        } catch (const CInputError& error) {
            m_report.Undo(error.GetVerdict(), error.GetReason());
            m_report.eRefusal = error.GetCode();
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
        if (m_run.door.bTemplates && IsOlderLayout(root)) {
            WarnOfMissing(m_context, FindMapFile(), NO_MAP_FILE);
        }
        const CStoreSession& store = m_context.GetStore();
        BeginPreview();
        CSettingsTransaction unit(EUnitOfWork::WRITE);
        ImportDocument(root, document);
        Signals::ThrowIfCaught();
        store.ThrowIfFailed();
        if (*m_report.iResult != 0) {
            m_report.Undo(EVerdict::INVALID, ExplainRefusal(root, *m_report.iResult));
            m_report.eRefusal = GetRefusalCode(root, *m_report.iResult);
            m_report.place = CSourcePlaces(m_file.strBytes).Find(m_file.iStart + root.Offset());
            return;
        }
        SuggestNames();
        const std::size_t iRefused = m_report.CountRefused();
        if (m_run.options.bFailOnSkip && iRefused != 0) {
            m_bShowsFindings = true;
            m_report.Undo(EVerdict::INVALID, Text::Counted(iRefused, "item", "items") + NOT_TAKEN);
            return;
        }
        m_report.eVerdict = m_report.HasFindings() ? EVerdict::FINDINGS : EVerdict::DONE;
        StartReport();
        unit.Commit();
    }

    /** Once a run: the next files are to find what this one leaves. */
    void BeginPreview() {
        if (m_run.options.bDryRun && !m_run.preview) {
            m_run.kept.emplace();
            m_run.preview.emplace(EUnitOfWork::WRITE);
        }
    }

    void ImportDocument(const CXMLView& root, CPolicyDocument& document) {
        std::optional<CItemChoice> choice;
        if (!m_run.options.vecOnly.empty()) {
            choice.emplace(m_run.options.vecOnly, root);
            m_report.vecMissing = choice->FindMissing();
        }
        const CProgress progress(m_context, m_report.strFile);
        CProgress::Expect(CountItems(root));
        CReportObserver observer(m_report, choice ? &*choice : nullptr, m_run.options.bSkipExisting);
        m_report.iResult = m_run.door.fnImport(m_context, document, m_report, observer);
        m_report.iTemplatesLeft = m_run.door.bTemplates ? 0 : CountTemplates(root);
    }

    /** Part of the unit of work: after its end the store must not be able to fail any more. */
    void SuggestNames() {
        std::map<ESettingsKind, std::vector<std::string>> mapNames;
        std::map<std::pair<ESettingsKind, std::string>, std::string> mapNearest;
        for (SReportItem& item : m_report.vecItems) {
            if (!item.IsUnknownReference() || mapNearest.size() == MAX_SUGGESTIONS) {
                continue;
            }
            const ESettingsKind eKind =
                item.fault == ETemplateFault::UNKNOWN_EXPRESSION ? ESettingsKind::EXPRESSION : ESettingsKind::KEYWORD;
            std::vector<std::string>& vecNames = mapNames[eKind];
            if (vecNames.empty()) {
                CSettingsStore::Current().ReadColumn(eKind, NAME_COLUMN, vecNames);
            }
            const auto [itNearest, bNew] = mapNearest.try_emplace({eKind, item.strFaulty});
            if (bNew) {
                itNearest->second = FindNearestName(item.strFaulty, vecNames);
            }
            item.strNearest = itNearest->second;
        }
    }

    /** The answer begins before the store changes: when nobody can be told, nothing is done. */
    void StartReport() {
        if (m_run.reportFile.IsAnswer()) {
            return;
        }
        if (m_context.IsJson()) {
            m_context.StartJson(MakeReportHead(m_report));
        } else if (IsQuiet()) {
            m_report.Sort();
            FindPlaces();
            WriteText(MakeFindings(m_report));
        } else {
            WriteText(Text::Printable(m_report.strFile) + ":\n");
        }
    }

    void Tell() {
        m_report.Sort();
        FindPlaces();
        const bool bUndone = !m_report.strReason.empty();
        if (bUndone) {
            m_context.Error(MakeRefusal(m_report));
        }
        m_run.reportFile.Add(m_report, m_file);
        if (m_report.eVerdict == EVerdict::OUTPUT || m_run.reportFile.IsAnswer()) {
            return;
        }
        if (m_context.IsJson()) {
            m_context.WriteJson(MakeReportJson(m_report));
        } else if (bUndone && m_bShowsFindings) {
            WriteText(MakeFindings(m_report));
        } else if (!bUndone && !IsQuiet()) {
            WriteText(MakeReportText(m_report, m_context.GetDataWidth()));
        }
    }

    /** Told is then only what was not taken. */
    bool IsQuiet() const { return m_context.Options().bQuiet; }

    void WriteText(const std::string& strText) {
        m_context.Write(strText);
        m_context.Flush();
    }

    /** Text shows the places of few items, so those of the others are not looked for. */
    void FindPlaces() {
        const bool bAll = m_context.IsJson() || m_run.reportFile.ShowsEveryItem();
        std::optional<CSourcePlaces> places;
        for (SReportItem& item : m_report.vecItems) {
            if (item.iOffset != std::string::npos && (bAll || item.IsShown())) {
                if (!places) {
                    places.emplace(m_file.strBytes);
                }
                item.place = places->Find(m_file.iStart + item.iOffset);
            }
        }
    }

    SRun& m_run;
    CCommandContext& m_context;
    SPolicyFile m_file;
    SImportReport m_report;
    bool m_bShowsFindings = false;
};

/** @return whether what happened to one file keeps the next ones from being tried */
bool EndsRun(EVerdict eVerdict) {
    return GetExitCode(eVerdict) >= GetExitCode(EVerdict::STORE);
}

EVerdict ImportAll(SRun& run) {
    EVerdict eVerdict = EVerdict::DONE;
    bool bImported = false;
    for (const std::string& strFile : run.options.vecFiles) {
        const EVerdict eFile = CFileImport(run, strFile).Run();
        eVerdict = GetWorse(eVerdict, eFile);
        bImported = bImported || eFile == EVerdict::DONE || eFile == EVerdict::FINDINGS;
        if (EndsRun(eFile)) {
            return eVerdict;
        }
    }
    // What is in memory is gone by then.
    if (bImported && !run.options.bDryRun && !run.context.IsJson() && !run.context.GetStorePath().empty()) {
        run.context.Note(run.door.pNext);
    }
    return eVerdict;
}

}  // namespace

EVerdict ImportFiles(CCommandContext& context, const SImportDoor& door, const SImportOptions& options) {
    CImportReportFile reportFile(context, door, options);
    if (options.bDryRun) {
        context.MakeNoStore();
    }
    if (door.bTemplates) {
        WarnOfMissing(context, FindPolicyFile(), NO_POLICY_FILE);
    }
    SRun run{context, door, options, reportFile, {}, {}};
    const EVerdict eVerdict = ImportAll(run);
    reportFile.Finish(eVerdict);
    return eVerdict;
}
