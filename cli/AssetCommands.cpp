#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/ExportReport.h"
#include "cli/FileImport.h"
#include "cli/ImportOptions.h"
#include "cli/ImportReport.h"
#include "cli/Kinds.h"
#include "cli/Progress.h"
#include "cli/StoreSession.h"
#include "cli/Suggestion.h"
#include "cli/Text.h"
#include "digital_assets/DigitalAssets.h"
#include "digital_assets/ExportObserver.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"

namespace {

constexpr const char GROUP[] = "assets";
constexpr const char GROUP_SUMMARY[] = "expressions and keyword lists alone";

constexpr SCommandHelp IMPORT = {
    "import",
    "assets import FILE…",
    "read expressions and keyword lists alone into the store",
    "Templates in a FILE are passed over, and their number is told. Otherwise as dlpctl import; --only with the name\n"
    "of a template takes the assets that it refers to.\n",
    "  dlpctl assets import assets.xml\n"
    "  dlpctl assets import --dry-run --only card policy.xml\n",
    "dlpctl-assets-import/1",
};
constexpr SCommandHelp EXPORT = {
    "export",
    "assets export [--expression NAME]… [--keyword NAME]… | --all",
    "write expressions and keyword lists alone as one document",
    "NAMEs are internal names, the first column of dlpctl list.\n",
    "  dlpctl assets export --all --indent -o assets.xml\n"
    "  dlpctl assets export --expression iban --keyword payment-card-words\n",
    "dlpctl-assets-export/1",
};

int Import(CCommandContext& context, CPolicyDocument& document, SImportReport& report, CImportObserver& observer) {
    std::vector<OS::x_wstring> vecSkipped;
    const int iResult =
        DigitalAssets::Import(DigitalAssets::EImport::ALL, context.GetScope(), document, vecSkipped, &observer);
    for (const OS::x_wstring& strSkipped : vecSkipped) {
        report.vecSkippedAssets.push_back(OS::Utf8Lenient(strSkipped));
    }
    for (const SReportItem& item : report.vecItems) {
        if (item.IsTaken()) {
            report.vecImported.push_back(item.strDisplayName);
        }
    }
    return iResult;
}

constexpr SImportDoor DOOR = {
    "assets import",
    IMPORT.pFormat,
    "Next: dlpctl list expressions\n"
    "      dlpctl list keywords\n"
    "      dlpctl assets export --all -o FILE",
    false,
    Import,
};

struct SArguments : SExportOptions {
    std::vector<std::string> vecExpressions;
    std::vector<std::string> vecKeywords;
};

class CAssetExportCommand : public CExportObserver {
  public:
    CAssetExportCommand(CCommandContext& context, const SArguments& arguments)
        : m_context(context), m_arguments(arguments) {
        m_report.pFormat = EXPORT.pFormat;
    }

    EVerdict Run() {
        StartExport(m_context, m_arguments, m_report,
                    !m_arguments.vecExpressions.empty() || !m_arguments.vecKeywords.empty());
        const CStoreSession& store = m_context.GetStoreToRead();
        {
            CSettingsTransaction unit(EUnitOfWork::READ);
            const Subjects vecExpressions = FindSubjects(ESettingsKind::EXPRESSION, m_arguments.vecExpressions);
            const Subjects vecKeywords = FindSubjects(ESettingsKind::KEYWORD, m_arguments.vecKeywords);
            const CProgress progress(m_context, EXPORT.pName);
            CProgress::Expect(vecExpressions.size() + vecKeywords.size());
            if (!DigitalAssets::Export(vecExpressions, vecKeywords, m_report.strDocument, this)) {
                store.ThrowIfFailed();
                throw CToolError(EVerdict::INVALID, m_strFailure + "; nothing was written");
            }
            store.ThrowIfFailed();
            unit.Commit();
        }
        return FinishExport(m_context, m_arguments, m_report);
    }

    void OnRecord() override { CProgress::Step(); }

    void OnText(std::string& strText) override { TakeText(m_arguments, m_report, strText); }

    void OnLeftOut(const std::string&, ELeftOut, const std::string&) override {}

    void OnRecordFailed(const std::string& strSubject, const std::string& strMessage) override {
        m_strFailure = Text::Printable(strSubject) + " cannot be written: " + Text::Printable(strMessage);
    }

  private:
    using Subjects = std::vector<OS::x_wstring>;

    /** The subjects of the assets that are asked for; those that are not stored are left out. */
    Subjects FindSubjects(ESettingsKind eKind, const std::vector<std::string>& vecNames) {
        CSettingsStore& settings = CSettingsStore::Current();
        std::vector<std::string> vecSubjects;
        if (m_arguments.bAll) {
            settings.ReadColumn(eKind, AssetColumn::SUBJECT, vecSubjects);
        } else {
            std::vector<std::unique_ptr<CSettingsRow>> vecRows;
            settings.Find(eKind, NAME_COLUMN, vecNames, vecRows);
            for (std::size_t i = 0; i < vecNames.size(); ++i) {
                if (vecRows[i] == nullptr) {
                    LeaveOut(eKind, vecNames[i]);
                } else {
                    vecSubjects.push_back(vecRows[i]->GetSubject());
                }
            }
        }
        const std::set<std::string> lstDistinct(vecSubjects.begin(), vecSubjects.end());
        m_report.counts[eKind] = {vecSubjects.size(), settings.Count(eKind) - lstDistinct.size()};
        Subjects vecWide;
        for (const std::string& strSubject : vecSubjects) {
            vecWide.push_back(OS::WideText(strSubject));
        }
        return vecWide;
    }

    void LeaveOut(ESettingsKind eKind, const std::string& strName) {
        const SKind& kind = GetKind(eKind);
        m_report.vecLeftOut.push_back(
            {&kind, strName, "not-stored", "it is not stored; " + SuggestStoredName(kind, strName)});
    }

    CCommandContext& m_context;
    const SArguments& m_arguments;
    SExportReport m_report;
    std::string m_strFailure = "the export failed; --log - --log-level all shows where";
};

}  // namespace

void AddAssetCommands(CCommandLine& line) {
    CLI::App& group = line.AddGroup(GROUP, GROUP_SUMMARY);
    const auto pOptions = std::make_shared<SImportOptions>();
    CLI::App& import = line.AddCommand(
        group, IMPORT, [pOptions](CCommandContext& context) { return ImportFiles(context, DOOR, *pOptions); });
    AddImportOptions(import, *pOptions, "documents");

    const auto pArguments = std::make_shared<SArguments>();
    CLI::App& command = line.AddCommand(group, EXPORT, [pArguments](CCommandContext& context) {
        return CAssetExportCommand(context, *pArguments).Run();
    });
    CCommandLine::AddTexts(command, "--expression", "NAME", pArguments->vecExpressions,
                           "an expression; may be repeated");
    CCommandLine::AddTexts(command, "--keyword", "NAME", pArguments->vecKeywords, "a keyword list; may be repeated");
    AddExportOptions(command, *pArguments);
}
