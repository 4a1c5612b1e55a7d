#include "cli/check/FileCheck.h"

#include <algorithm>
#include <utility>

#include "api/CDLPDigitalAssetsParser.h"
#include "cli/CommandContext.h"
#include "cli/ImportRefusal.h"
#include "cli/ImportReport.h"
#include "cli/InputFile.h"
#include "cli/InstalledFiles.h"
#include "cli/KeptSettings.h"
#include "cli/OlderLook.h"
#include "cli/OutputFile.h"
#include "cli/Progress.h"
#include "cli/Signals.h"
#include "cli/StoreSession.h"
#include "cli/TemplateSuggestions.h"
#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "cli/check/FixedText.h"
#include "cli/check/ImportTrial.h"
#include "cli/check/ItemDiagnostics.h"
#include "digital_assets/DigitalAssets.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "templates/PolicyFile.h"
#include "xml/CPolicyDocument.h"

namespace {

constexpr const char AS_IF[] = "; the rest is told as if it were there";
constexpr const char STANDARD_LAYOUT[] = "standard";
constexpr const char OLDER_LAYOUT[] = "older";

/** How often an item is looked at, about: by each check that is about its kind, and by the import. */
constexpr std::size_t STEPS_OF_ITEM = 6;

/** Nothing else ends an import of such a document: the store has been asked. */
constexpr const char NO_FAULT[] = "memory ran out while the import was tried";

class CFileCheck {
  public:
    CFileCheck(CCommandContext& context, const SFileCheck& check, const std::string& strFile)
        : m_context(context), m_check(check), m_choice(check.choice), m_diagnostics(m_choice) {
        m_choice.bKeepFixable = check.bFix;  // whatever can be replaced is
        m_report.strFile = strFile;
    }

    SFileReport Run() {
        if (Read()) {
            CheckDocument();
        }
        m_report.findings = m_diagnostics.Finish(m_file.strBytes);
        m_report.aOmitted = m_diagnostics.GetOmitted();
        if (m_check.bFix && !m_report.IsInvalid()) {
            Fix();
        }
        if (m_choice.bAll) {
            m_report.findings.KeepText(std::move(m_file.strBytes));
        }
        return std::move(m_report);
    }

  private:
    /** @return whether the file holds text that may be a document; what keeps it from that is told */
    bool Read() {
        try {
            m_file = TakeBytes(ReadBytes(m_context, m_report.strFile));
        } catch (const CInputError& error) {
            m_diagnostics.Add(ECode::UNREADABLE, std::string::npos, {error.GetReason()});
            return false;
        }
        const std::optional<SInputFault> fault = FindTextFault(m_file);
        if (fault) {
            Tell(*fault);
        }
        m_diagnostics.SetStart(m_file.iStart);
        return !fault;
    }

    /** Offsets count from the start of the file here. */
    void Tell(const SInputFault& fault) {
        SDiagnostic* pDiagnostic = m_diagnostics.Add(fault.eCode, fault.iOffset, fault.vecWhat, fault.vecAdvice);
        pDiagnostic->related = fault.related;
    }

    void CheckDocument() {
        CPolicyDocument document(m_file.Text());
        const CXMLParser& parser = document.Load();
        const SXMLLoadError& error = parser.GetLoadError();
        if (!error.strMessage.empty()) {
            m_diagnostics.SetStart(0);
            Tell(MakeXmlFault(m_file, error));
            return;
        }
        const CXMLView root = parser.RootView();
        if (root.Name() != TagUtf8::SA_POLICY) {
            m_diagnostics.Add(ECode::WRONG_ROOT, root.Offset(),
                              {Text::Quoted(root.Name()), Text::Quoted(TagUtf8::SA_POLICY)});
            return;
        }
        const CProgress progress(m_context, m_report.strFile);
        CProgress::Expect(STEPS_OF_ITEM * CountItems(root));
        const bool bVersion = m_check.bAssetsOnly || !IsOlderLayout(root);
        m_report.pLayout = bVersion ? STANDARD_LAYOUT : OLDER_LAYOUT;
        const bool bOlder = !bVersion && !TellOlder(parser);
        m_iLayoutErrors = m_diagnostics.GetErrors();
        const SCheckedDocument checked{m_file.Text(), root, bOlder, m_check.bAssetsOnly, m_diagnostics};
        CheckAlone(checked);
        CheckWithStore(checked, document);
    }

    /** @return whether the rest is to be looked at as if the version were there */
    bool TellOlder(const CXMLParser& parser) {
        const CXMLView root = parser.RootView();
        const EOlderLook eLook = LookAtOlder(root);
        const SOlderWords& words = GetOlderWords(eLook);
        SDiagnostic* pOlder = m_diagnostics.Add(ECode::OLDER_LAYOUT, root.Offset(), {words.pWhat}, {words.pAdvice});
        if (eLook == EOlderLook::FORGOTTEN && pOlder != nullptr) {
            m_diagnostics.Spell(*pOlder).strAdvice += AS_IF;
            m_diagnostics.Raise(pOlder, ESeverity::ERROR);
            // What follows from it would be told as if it were the fault.
            parser.GetRootElement()->SetAttribute(Tag::TEMPLATE_VERSION, DigitalAssets::STANDARD_VERSION);
            return true;
        }
        if (eLook == EOlderLook::MIXED) {
            m_diagnostics.Raise(pOlder, ESeverity::WARNING);
        }
        WarnOfMissing(m_context, FindMapFile(), NO_MAP_FILE);
        return false;
    }

    static void CheckAlone(const SCheckedDocument& checked) {
        constexpr void (*CHECKS[])(const SCheckedDocument&) = {CheckShape, CheckValues,   CheckLists,
                                                               CheckNames, CheckPatterns, CheckKeywords};
        for (const auto fnCheck : CHECKS) {
            Signals::ThrowIfCaught();
            fnCheck(checked);
        }
    }

    void CheckWithStore(SCheckedDocument checked, CPolicyDocument& document) {
        const CStoreSession& store = m_context.GetStore();
        const CKeptSettings kept;
        const CSettingsTransaction unit(EUnitOfWork::WRITE);
        const auto fnTry = [&] {
            STrial trial = TryImport(m_context, document, m_check.bAssetsOnly);
            if (checked.bOlder) {
                checked.root = document.Load().RootView();  // the import has taken the tree
            }
            return trial;
        };
        STrial trial = fnTry();
        if (trial.iResult == DigitalAssets::RESULT_WRONG_LANGUAGE) {
            TellLanguage(checked);
            trial = fnTry();
        }
        Signals::ThrowIfCaught();
        store.ThrowIfFailed();
        CTemplateSuggestions templates(checked.root);
        for (SReportItem& item : trial.vecItems) {
            const bool bNameless = item.eKind == EItemKind::CATEGORY && item.eReason == EReason::NO_NAME;
            if (item.eReason != EReason::UNKNOWN_ELEMENT && !bNameless) {  // told of with the shape and the lists
                if (checked.bOlder) {
                    item.older = EOlderLook::OLDER;
                }
                if (item.eReason == EReason::UNKNOWN_TEMPLATE) {
                    item.EditDetails().strNearest = templates.Find(item.Details().strDetail);
                }
                TellItem(item, checked.strText, m_diagnostics);
            }
        }
        CheckReferences(checked);
        CheckRules(checked);
        CheckSameTemplates(checked);
        store.ThrowIfFailed();
        if (trial.iResult != 0 && m_diagnostics.GetErrors() == m_iLayoutErrors) {
            if (CountTemplates(checked.root) != 0 && !checked.bOlder) {
                throw CToolError(EVerdict::MEMORY, NO_FAULT);
            }
            m_diagnostics.Add(ECode::NO_TEMPLATES, checked.root.Offset(),
                              {ExplainRefusal(checked.root, trial.iResult)});
        }
    }

    /** The rest is looked at as if the language were the right one. */
    void TellLanguage(const SCheckedDocument& checked) {
        const std::string_view strLanguage = checked.root.Attribute(TagUtf8::LOCALIZATION_LANGUAGE);
        const OS::x_wstring strExpected(CDLPDigitalAssetsParser::GetLanguage());
        if (strLanguage.empty() || strExpected.CompareNoCase(OS::WideText(strLanguage)) == 0) {
            throw CToolError(EVerdict::MEMORY, NO_FAULT);
        }
        const std::string strOurs = OS::Utf8Lenient(strExpected);
        m_diagnostics.Add(
            ECode::WRONG_LANGUAGE, checked.Find(checked.root, TagUtf8::LOCALIZATION_LANGUAGE).iName,
            {Text::Quoted(strLanguage), strOurs.empty() ? "none is set here" : "here it is " + Text::Quoted(strOurs)},
            {Text::Quoted(strLanguage)});
        CDLPDigitalAssetsParser::SetLanguage(OS::WideText(strLanguage));
    }

    /** Writes the file anew. Places are those of what stands there then. */
    void Fix() {
        CFindings& findings = m_report.findings;
        if (m_check.bDryRun || findings.CountIf([](const SFindingHead& finding) { return finding.bFix; }) == 0) {
            return;
        }
        CFixedText fixed(m_file.strBytes, findings);
        COutputFile file(m_context.GetAbsolute(m_report.strFile), Text::Printable(m_report.strFile));
        file.Write(fixed.GetText());
        file.Commit();
        findings.NoteFixed([&fixed](std::size_t iOffset) { return fixed.Find(iOffset); });
        m_file.strBytes = fixed.TakeText();
        findings.Locate(m_file.strBytes);
    }

    CCommandContext& m_context;
    const SFileCheck& m_check;
    SCheckChoice m_choice;
    SPolicyFile m_file;
    CDiagnostics m_diagnostics;
    std::size_t m_iLayoutErrors = 0;  ///< how many of the errors are about the layout
    SFileReport m_report;
};

}  // namespace

SFileReport CheckFile(CCommandContext& context, const SFileCheck& check, const std::string& strFile) {
    return CFileCheck(context, check, strFile).Run();
}
