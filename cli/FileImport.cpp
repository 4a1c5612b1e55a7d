#include "cli/FileImport.h"

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include <nlohmann/json.hpp>

#include "cli/AssetSuggestions.h"
#include "cli/CommandContext.h"
#include "cli/ImportOptions.h"
#include "cli/ImportRefusal.h"
#include "cli/ImportReport.h"
#include "cli/ImportReportFile.h"
#include "cli/InputFile.h"
#include "cli/InstalledFiles.h"
#include "cli/ItemChoice.h"
#include "cli/KeptSettings.h"
#include "cli/Progress.h"
#include "cli/Signals.h"
#include "cli/StoreSession.h"
#include "cli/TemplateSuggestions.h"
#include "cli/Text.h"
#include "cli/check/MeantName.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "templates/CAssetNames.h"
#include "templates/DLPXmlNormalizer.h"
#include "xml/CPolicyDocument.h"
#include "xml/Vocabulary.h"

namespace {

constexpr const char NOT_TAKEN[] = " cannot be taken, and --fail-on-skip is given";

/** What the files of one run share. */
struct SRun {
    CCommandContext& context;
    const SImportDoor& door;
    const SImportOptions& options;
    CImportReportFile& reportFile;
    std::optional<CKeptSettings> kept;            ///< of a dry run
    std::optional<CSettingsTransaction> preview;  ///< of a dry run; ends before the settings come back
    bool bAnyTaken = false;
};

class CReportObserver : public CImportObserver {
  public:
    CReportObserver(SImportReport& report, const CItemChoice* pChoice, bool bKeepsStored,
                    std::optional<EOlderLook> older)
        : m_report(report), m_pChoice(pChoice), m_bKeepsStored(bKeepsStored), m_older(older) {}

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
        m_report.vecItems.emplace_back(item);
        m_report.vecItems.back().older = m_older;
        Step();
    }

    void OnUntoldElement() override {
        ++m_report.iUntold;
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
    std::optional<EOlderLook> m_older;
};

/** Calls fnItem for each asset and template of a document as an import of it looks at them. */
template <class F>
void ForEachItem(const CXMLView& root, bool bTemplates, const F& fnItem) {
    struct SPlaceOfItems {
        const char* pSection;
        const char* pItem;
        EItemKind eKind;
    };
    constexpr SPlaceOfItems PLACES[] = {
        {TagUtf8::DIGITAL_ASSETS, TagUtf8::ENTITY, EItemKind::EXPRESSION},
        {TagUtf8::DIGITAL_ASSETS, TagUtf8::DICTIONARY, EItemKind::KEYWORD},
        {TagUtf8::COMPLIANCE_TEMPLATES, TagUtf8::TEMPLATE, EItemKind::TEMPLATE},
    };
    const bool bAssets = !bTemplates || !IsOlderLayout(root);
    for (const auto& [pSection, pItem, eKind] : PLACES) {
        const bool bLookedAt =
            root.Name() == TagUtf8::SA_POLICY && (eKind == EItemKind::TEMPLATE ? bTemplates : bAssets);
        for (CXMLView section = root.FirstChild(pSection); bLookedAt && section;
             section = section.NextSibling(pSection)) {
            for (CXMLView item = section.FirstChild(pItem); item; item = item.NextSibling(pItem)) {
                fnItem(eKind, item);
            }
        }
    }
}

class CFileImport {
  public:
    CFileImport(SRun& run, const std::string& strFile) : m_run(run), m_context(run.context) {
        m_report.strFile = strFile;
        StartReport();
    }

    EVerdict Run() {
        try {
            Import();
        } catch (const CInputError& error) {
            m_report.Undo(error.GetVerdict(), error.GetReason());
            m_report.eRefusal = error.GetCode();
            m_report.place = error.GetPlace();
            m_report.related = error.GetRelated();
        } catch (...) {
            const CToolError error = m_context.ExplainException();
            m_report.Undo(error.GetVerdict(), error.what());
        }
        Tell();
        m_run.bAnyTaken = m_run.bAnyTaken || std::any_of(m_report.vecItems.begin(), m_report.vecItems.end(),
                                                         std::mem_fn(&SReportItem::IsTaken));
        return m_report.eVerdict;
    }

  private:
    void StartReport() {
        SImportReport report;
        report.pFormat = m_run.door.pFormat;
        report.strFile = m_report.strFile;
        report.bDryRun = m_run.options.bDryRun;
        m_report = std::move(report);
    }

    void Import() {
        Signals::ThrowIfCaught();
        m_file = ReadPolicy(m_context, m_report.strFile);
        CPolicyDocument document(m_file.Text());
        const CXMLView root = ParsePolicy(m_report.strFile, m_file, document);
        if (m_run.door.bTemplates && IsOlderLayout(root)) {
            m_older = LookAtOlder(root);
            WarnOfLayout();
        }
        try {
            ImportInto(m_context.GetStore(GetMaking()), document);
        } catch (...) {
            if (m_bAnswered || !m_context.CloseIfMadeMeanwhile()) {
                throw;
            }
            StartReport();
            ImportInto(m_context.GetStore(), document);
        }
    }

    /** What --fail-on-skip may undo makes no store; else the time for a second store in memory is saved. */
    CUnmadeStore::EMade GetMaking() const {
        return m_run.options.bFailOnSkip ? CUnmadeStore::EMade::AT_COMMIT : CUnmadeStore::EMade::AT_FIRST_WRITE;
    }

    void ImportInto(const CStoreSession& store, CPolicyDocument& document) {
        BeginPreview();
        CSettingsTransaction unit(EUnitOfWork::WRITE);
        ImportDocument(document);
        const CXMLView root = document.Load().RootView();  // an import of the older layout has taken the tree
        Signals::ThrowIfCaught();
        store.ThrowIfFailed();
        if (*m_report.iResult != 0) {
            AddUnreached(root);
            m_report.Undo(EVerdict::INVALID, ExplainRefusal(root, *m_report.iResult));
            m_report.eRefusal = GetRefusalCode(root, *m_report.iResult);
            m_report.place = CSourcePlaces(m_file.strBytes).Find(m_file.iStart + root.Offset());
            return;
        }
        FindUnknownReferences();
        SuggestNames(root);
        const std::size_t iRefused = m_report.CountRefused();
        if (m_run.options.bFailOnSkip && iRefused != 0) {
            m_bShowsFindings = true;
            m_report.Undo(EVerdict::INVALID, Text::Counted(iRefused, "item", "items") + NOT_TAKEN);
            return;
        }
        m_report.eVerdict = m_report.HasFindings() ? EVerdict::FINDINGS : EVerdict::DONE;
        StartAnswer();
        unit.Commit();
    }

    /** What follows from it would be told as if it were the fault. */
    void WarnOfLayout() const {
        WarnOfMissing(m_context, FindMapFile(), NO_MAP_FILE);
        WarnOfOlder(m_context, m_report.strFile, *m_older);
    }

    /** Once a run: the next files are to find what this one leaves. */
    void BeginPreview() {
        if (m_run.options.bDryRun && !m_run.preview) {
            m_run.kept.emplace();
            m_run.preview.emplace(EUnitOfWork::WRITE);
        }
    }

    void ImportDocument(CPolicyDocument& document) {
        const CXMLView root = document.Load().RootView();
        m_report.iTemplatesLeft = m_run.door.bTemplates ? 0 : CountTemplates(root);
        if (!m_run.options.vecOnly.empty()) {
            m_choice.emplace(m_run.options.vecOnly, root);
            m_report.vecMissing = m_choice->FindMissing();
        }
        const CProgress progress(m_context, m_report.strFile);
        CProgress::Expect(CountItems(root));
        CReportObserver observer(m_report, m_choice ? &*m_choice : nullptr, m_run.options.bSkipExisting, m_older);
        m_report.iResult = m_run.door.fnImport(m_context, document, m_report, observer);
    }

    /** An import that fails has not come to every item. */
    void AddUnreached(const CXMLView& root) {
        std::set<std::size_t> setReached;
        for (const SReportItem& item : m_report.vecItems) {
            setReached.insert(item.iOffset);
        }
        m_report.iNotChosen = 0;
        ForEachItem(root, m_run.door.bTemplates, [&](EItemKind eKind, const CXMLView& element) {
            if (m_choice && !m_choice->Holds(eKind, element.Attribute(TagUtf8::NAME))) {
                ++m_report.iNotChosen;
            } else if (setReached.count(element.Offset()) == 0) {
                SImportItem item;
                item.eKind = eKind;
                item.strName = element.Attribute(TagUtf8::NAME);
                item.strDisplayName = element.Attribute(TagUtf8::DISPLAY_NAME);
                item.iOffset = element.Offset();
                m_report.vecItems.emplace_back(item);
            }
        });
    }

    /** What follows is part of the unit of work: after its end the store must not be able to fail any more. */
    void SuggestNames(const CXMLView& root) {
        if (m_older) {
            FindOlderNames(root);
            FindNameless(root);
        }
        CAssetSuggestions suggestions(m_older.has_value());
        CTemplateSuggestions templates(root);
        CMeantNames meant;
        for (SReportItem& item : m_report.vecItems) {
            if (item.eReason == EReason::UNKNOWN_TEMPLATE) {
                item.EditDetails().strNearest = templates.Find(item.Details().strDetail);
            }
            if (item.eReason == EReason::UNKNOWN_ELEMENT) {
                item.EditDetails().strNearest = meant.FindElement(item.Details().strDetail, item.strName);
            }
            if (item.IsUnknownReference()) {
                SItemDetails& details = item.EditDetails();
                const bool bExpression = details.fault == ETemplateFault::UNKNOWN_EXPRESSION;
                details.strNearest = suggestions.Find(bExpression ? ESettingsKind::EXPRESSION : ESettingsKind::KEYWORD,
                                                      details.strFaulty);
            }
            ForEachUnknown(item, [&](SUnknownReference& reference) {
                const bool bExpression = reference.eKind == EItemKind::EXPRESSION;
                reference.strNearest = suggestions.Find(
                    bExpression ? ESettingsKind::EXPRESSION : ESettingsKind::KEYWORD, reference.strName);
            });
        }
    }

    template <class F>
    static void ForEachUnknown(SReportItem& item, const F& fnReference) {
        if (!item.Details().vecUnknown.empty()) {
            std::for_each(item.EditDetails().vecUnknown.begin(), item.EditDetails().vecUnknown.end(), fnReference);
        }
    }

    /** The import knows assets by the names of today. */
    void FindOlderNames(const CXMLView& root) {
        std::map<std::size_t, SReportItem*> mapUnknown;
        for (SReportItem& item : m_report.vecItems) {
            if (item.IsUnknownReference()) {
                mapUnknown.emplace(item.iOffset, &item);
            }
        }
        ForEachItem(root, !mapUnknown.empty(), [&](EItemKind, const CXMLView& element) {
            const auto itUnknown = mapUnknown.find(element.Offset());
            for (CXMLView rule = element.FirstChild(); rule && itUnknown != mapUnknown.end();
                 rule = rule.NextSibling()) {
                FindOlderName(rule, *itUnknown->second);
            }
        });
    }

    /** What has a display name of neither layout lacks it with the version as well. */
    void FindNameless(const CXMLView& root) {
        std::map<std::size_t, SReportItem*> mapNameless;
        for (SReportItem& item : m_report.vecItems) {
            if (item.eReason == EReason::NO_DISPLAY_NAME && item.FollowsFromVersion()) {
                mapNameless.emplace(item.iOffset, &item);
            }
        }
        ForEachItem(root, !mapNameless.empty(), [&](EItemKind, const CXMLView& element) {
            const auto itNameless = mapNameless.find(element.Offset());
            if (itNameless != mapNameless.end() && element.Attribute(TagUtf8::DISPLAY_NAME).empty()) {
                itNameless->second->older.reset();
            }
        });
    }

    static void FindOlderName(const CXMLView& rule, SReportItem& item) {
        const CDLPXmlNormalizer::NameMap& names = CDLPXmlNormalizer::GetOlderNames();
        for (CXMLView block = rule.FirstChild(); block; block = block.NextSibling()) {
            const std::string_view strName = block.Attribute(TagUtf8::SOURCE_NAME);
            const auto itName = names.find(OS::WideText(strName));
            if (itName != names.end() && OS::Utf8Lenient(itName->second) == item.Details().strFaulty) {
                item.EditDetails().strWritten = strName;
            }
        }
    }

    /** What foreign children of a template refer to is stored unseen. */
    void FindUnknownReferences() {
        const auto fnType = [](EItemKind eKind) {
            return eKind == EItemKind::EXPRESSION ? EElementType::ENTITY : EElementType::KEYWORD;
        };
        const auto fnForEach = [this](const auto& fn) {
            for (SReportItem& item : m_report.vecItems) {
                for (const SForeignChild& foreign : item.Details().vecForeign) {
                    for (const SForeignChild::SReference& reference : foreign.vecReferences) {
                        fn(item, reference);
                    }
                }
            }
        };
        CAssetNames names;
        fnForEach([&](const SReportItem&, const SForeignChild::SReference& reference) {
            names.Add(fnType(reference.eKind), reference.strName);
        });
        names.Ask();
        fnForEach([&](SReportItem& item, const SForeignChild::SReference& reference) {
            if (item.IsTaken() && !names.IsStored(fnType(reference.eKind), reference.strName)) {
                item.EditDetails().vecUnknown.push_back({{reference}, {}, {}});
            }
        });
    }

    void StartAnswer() {
        m_bAnswered = true;
        Arrange();
        if (m_run.reportFile.IsAnswer()) {
            return;
        }
        if (m_context.IsJson()) {
            m_context.StartAnswer(MakeReportHead(m_report), MakeReportJson(m_report));
        } else if (m_context.Options().bQuiet) {  // told is then only what was not taken
            m_context.StartAnswer(MakeFindings(m_report), std::string());
        } else {
            m_context.StartAnswer(Text::Printable(m_report.strFile) + ":\n",
                                  MakeReportText(m_report, m_context.GetDataWidth()));
        }
    }

    void Tell() {
        if (m_report.eVerdict == EVerdict::DONE || m_report.eVerdict == EVerdict::FINDINGS) {
            m_run.reportFile.Add(m_report, m_file);
            if (!m_run.reportFile.IsAnswer()) {
                m_context.FinishAnswer();
            }
        } else {
            TellRefusal();
        }
    }

    void TellRefusal() {
        Arrange();
        if (!m_report.strReason.empty()) {  // a closed pipe has none
            m_context.Error(MakeRefusal(m_report));
        }
        m_run.reportFile.Add(m_report, m_file);
        if (m_report.eVerdict == EVerdict::OUTPUT || m_run.reportFile.IsAnswer()) {
            return;
        }
        if (m_context.IsJson()) {
            m_context.WriteJson(MakeReportJson(m_report));
        } else if (m_bShowsFindings) {
            m_context.Write(MakeFindings(m_report));
            m_context.Flush();
        }
    }

    void Arrange() {
        SortByPlace(m_report.vecItems);
        FindPlaces();
    }

    /** Text shows the places of few items, so those of the others are not looked for. */
    void FindPlaces() {
        const bool bAll = m_context.IsJson() || m_run.reportFile.ShowsEveryItem();
        std::optional<CSourcePlaces> places;
        const auto fnFind = [&](std::size_t iOffset) {
            if (!places) {
                places.emplace(m_file.strBytes);
            }
            return iOffset == std::string::npos ? SPlace() : places->Find(m_file.iStart + iOffset);
        };
        for (SReportItem& item : m_report.vecItems) {
            if (!bAll && !item.IsShown()) {
                continue;
            }
            item.place = fnFind(item.iOffset);
            if (!item.Details().vecForeign.empty()) {
                SItemDetails& details = item.EditDetails();
                details.vecForeignPlaces.clear();
                for (const SForeignChild& foreign : details.vecForeign) {
                    details.vecForeignPlaces.push_back(fnFind(foreign.iOffset));
                }
            }
            ForEachUnknown(item, [&](SUnknownReference& reference) { reference.place = fnFind(reference.iOffset); });
        }
    }

    SRun& m_run;
    CCommandContext& m_context;
    SPolicyFile m_file;
    SImportReport m_report;
    std::optional<EOlderLook> m_older;  ///< of a document that is read as one of the older layout
    std::optional<CItemChoice> m_choice;
    bool m_bShowsFindings = false;
    bool m_bAnswered = false;
};

/** @return whether what happened to one file keeps the next ones from being tried */
bool EndsRun(EVerdict eVerdict) {
    return GetExitCode(eVerdict) >= GetExitCode(EVerdict::STORE);
}

EVerdict ImportAll(SRun& run) {
    EVerdict eVerdict = EVerdict::DONE;
    for (const std::string& strFile : run.options.vecFiles) {
        const EVerdict eFile = CFileImport(run, strFile).Run();
        eVerdict = GetWorse(eVerdict, eFile);
        if (EndsRun(eFile)) {
            return eVerdict;
        }
    }
    // What is in memory is gone by then.
    if (run.bAnyTaken && !run.options.bDryRun && !run.context.IsJson() && !run.context.GetStorePath().empty()) {
        run.context.Note(run.door.pNext);
    }
    return eVerdict;
}

}  // namespace

EVerdict ImportFiles(CCommandContext& context, const SImportDoor& door, const SImportOptions& options) {
    RequireOneInput(options.vecFiles);
    CImportReportFile reportFile(context, door, options);
    if (options.bDryRun) {
        context.MakeNoStore();
    }
    if (door.bTemplates) {
        WarnOfMissing(context, FindPolicyFile(), NO_POLICY_FILE);
    }
    SRun run{context, door, options, reportFile, {}, {}, false};
    const EVerdict eVerdict = ImportAll(run);
    reportFile.Finish(eVerdict);
    return eVerdict;
}
