#include <algorithm>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/ExportReport.h"
#include "cli/ImportReport.h"
#include "cli/InstalledFiles.h"
#include "cli/Kinds.h"
#include "cli/Progress.h"
#include "cli/RecordJson.h"
#include "cli/StoreSession.h"
#include "cli/Suggestion.h"
#include "cli/Text.h"
#include "cli/edit/Referrers.h"
#include "digital_assets/ExportObserver.h"
#include "platform/common/TextConversion.h"
#include "platform/common/TextHash.h"
#include "platform/store/CSettingsStore.h"
#include "templates/DLPTemplateMgr.h"
#include "templates/MatchRule.h"

namespace {

constexpr SCommandHelp HELP = {
    "export",
    "export NAME… | --all",
    "write templates with all they refer to as one document",
    "NAMEs are internal names, the first column of dlpctl list templates; --all takes them all, in that order.\n"
    "What is asked for and not in the document is named, with the reason.\n",
    "  dlpctl export --all --indent -o policy.xml\n"
    "  dlpctl export payment-cards > one.xml\n",
    "dlpctl-export/1",
};

struct SArguments : SExportOptions {
    std::vector<std::string> vecNames;
};

struct SReason {
    const char* pCode;
    const char* pWhy;  ///< more follows
};

/** By ELeftOut. */
constexpr SReason REASONS[] = {
    {"not-stored", "it is not stored; "},
    {"invalid-assets", "a rule refers to what is not stored: "},
    {"no-template", "its stored element is no template"},
};
constexpr SReason NO_NAME = {"no-name", "its element has no name to ask for; its display name is "};
constexpr SReason SAME_NAME = {"same-name", "another template of this name comes first in the store: "};

/** What every document holds that has a rule with this operator. */
constexpr const char EXCEPT_VALUE[] = "\"EXCEPT\"";
constexpr const char EXCEPT_WARNING[] =
    " holds EXCEPT, which no import takes: an import of the document skips it; dlpctl store dump and load carry it";

bool IsExcept(EOperator eOperator) {
    return eOperator == EOperator::EXCEPT;
}

bool HoldsExcept(const std::vector<SMatchRule>& vecRules) {
    return std::any_of(vecRules.begin(), vecRules.end(), [](const SMatchRule& rule) {
        return IsExcept(rule.eOperator) ||
               std::any_of(rule.vecElements.begin(), rule.vecElements.end(),
                           [](const SRuleElement& element) { return IsExcept(element.eOperator); });
    });
}

constexpr const char NO_REASON[] = "the export failed; --log - --log-level all shows where";

class CTemplateExportCommand : public CExportObserver {
  public:
    CTemplateExportCommand(CCommandContext& context, const SArguments& arguments)
        : m_context(context), m_arguments(arguments) {
        m_report.pFormat = HELP.pFormat;
    }

    EVerdict Run() {
        StartExport(m_context, m_arguments, m_report, !m_arguments.vecNames.empty());
        WarnOfMissing(m_context, FindPolicyFile(), NO_POLICY_FILE);
        const CStoreSession& store = m_context.GetStoreToRead();
        {
            CSettingsTransaction unit(EUnitOfWork::READ);
            Export(m_arguments.bAll ? ListAllNames() : m_arguments.vecNames);
            store.ThrowIfFailed();
            if (m_report.strDocument.empty()) {
                throw CToolError(EVerdict::INVALID, ExplainFailure() + "; nothing was written");
            }
            unit.Commit();
        }
        return FinishExport(m_context, m_arguments, m_report);
    }

    void OnRecord() override { CProgress::Step(); }

    void OnText(std::string& strText) override { TakeText(m_arguments, m_report, strText); }

    void OnLeftOut(const std::string& strName, ELeftOut eReason, const std::string& strDetail) override {
        const bool bNotStored = eReason == ELeftOut::NOT_STORED;
        LeaveOut(
            strName, REASONS[static_cast<std::size_t>(eReason)],
            bNotStored ? SuggestStoredName(GetKind(ESettingsKind::TEMPLATE), strName) : Text::Printable(strDetail));
    }

    void OnRecordFailed(const std::string& strSubject, const std::string& strMessage) override {
        m_strFailed = strSubject;
        m_strMessage = strMessage;
    }

  private:
    /** @param strMore printable */
    void LeaveOut(const std::string& strName, const SReason& reason, const std::string& strMore) {
        m_report.vecLeftOut.push_back(
            {&GetKind(ESettingsKind::TEMPLATE), strName, reason.pCode, reason.pWhy + strMore});
    }

    /** Names the templates that no name leads to, and returns the names of the others. */
    std::vector<std::string> ListAllNames() {
        CSettingsStore& settings = CSettingsStore::Current();
        std::vector<std::string> vecStored;
        std::vector<std::string> vecDisplayNames;
        settings.ReadColumn(ESettingsKind::TEMPLATE, NAME_COLUMN, vecStored);
        settings.ReadColumn(ESettingsKind::TEMPLATE, DISPLAY_NAME_COLUMN, vecDisplayNames);
        std::vector<std::string> vecNames;
        OS::TextSet<std::string> lstSeen;
        for (std::size_t i = 0; i < vecStored.size(); ++i) {
            if (vecStored[i].empty()) {
                LeaveOut(vecStored[i], NO_NAME, Text::Quoted(vecDisplayNames[i]));
            } else if (!lstSeen.insert(vecStored[i]).second) {
                LeaveOut(vecStored[i], SAME_NAME, Text::Quoted(vecDisplayNames[i]));
            } else {
                vecNames.push_back(vecStored[i]);
            }
        }
        return vecNames;
    }

    void Export(const std::vector<std::string>& vecNames) {
        m_lstAsked.insert(vecNames.begin(), vecNames.end());
        std::vector<OS::x_wstring> vecWide;
        vecWide.reserve(vecNames.size());
        for (const std::string& strName : vecNames) {
            vecWide.push_back(OS::WideText(strName));
        }
        const CProgress progress(m_context, HELP.pName);
        CProgress::Expect(vecNames.size() + (m_arguments.bAll ? CountOthers(ESettingsKind::EXPRESSION, 0) +
                                                                    CountOthers(ESettingsKind::KEYWORD, 0)
                                                              : 0));
        std::set<std::wstring> lstExpressions;
        std::set<std::wstring> lstKeywords;
        m_report.strDocument =
            CTemplateMgr(m_context.GetScope()).ExportDocument(vecWide, this, &lstExpressions, &lstKeywords);
        WarnOfExcept(vecNames);
        m_report.counts[ESettingsKind::EXPRESSION] = {lstExpressions.size(),
                                                      CountOthers(ESettingsKind::EXPRESSION, lstExpressions.size())};
        m_report.counts[ESettingsKind::KEYWORD] = {lstKeywords.size(),
                                                   CountOthers(ESettingsKind::KEYWORD, lstKeywords.size())};
        std::set<std::string> lstTemplates(vecNames.begin(), vecNames.end());
        for (const SLeftOut& leftOut : m_report.vecLeftOut) {
            lstTemplates.erase(leftOut.pReason == SAME_NAME.pCode ? std::string() : leftOut.strName);
        }
        const auto iCarried = std::count_if(vecNames.begin(), vecNames.end(), [&](const std::string& strName) {
            return lstTemplates.count(strName) > 0;
        });
        m_report.counts[ESettingsKind::TEMPLATE] = {static_cast<std::size_t>(iCarried),
                                                    CountOthers(ESettingsKind::TEMPLATE, lstTemplates.size())};
    }

    /** Such rules come into a store by editing and by loading a dump. What was taken holds assets alone. */
    void WarnOfExcept(const std::vector<std::string>& vecNames) {
        if (m_report.strDocument.find(EXCEPT_VALUE) == std::string::npos) {
            return;
        }
        for (const std::string& strName : vecNames) {
            const auto pRow = CSettingsStore::Current().FindOne(ESettingsKind::TEMPLATE, NAME_COLUMN, strName);
            if (pRow != nullptr && HoldsExcept(ReadRules(*pRow))) {
                m_report.vecWarnings.push_back("template " + Text::Quoted(strName) + EXCEPT_WARNING);
            }
        }
    }

    std::string ExplainFailure() const {
        const auto* pKind = std::find_if(std::begin(KINDS), std::end(KINDS), [this](const SKind& kind) {
            return m_strFailed.rfind(OS::Utf8Lenient(kind.pSubject), 0) == 0;
        });
        if (pKind == std::end(KINDS)) {
            return m_strFailed.empty() ? NO_REASON : CannotBeWritten(Text::Printable(m_strFailed));
        }
        const std::string strName = m_strFailed.substr(OS::Utf8Lenient(pKind->pSubject).size());
        const std::string strCalled = std::string(pKind->pWord) + ' ' + Text::Quoted(strName);
        const std::vector<CSettingsRow> vecReferrers = FindReferrers(pKind->eKind, strName);
        const auto itReferrer = std::find_if(vecReferrers.begin(), vecReferrers.end(), [this](const CSettingsRow& row) {
            return m_lstAsked.count(row.GetText(NAME_COLUMN)) != 0;
        });
        const bool bStored =
            CSettingsStore::Current().FindOne(pKind->eKind, AssetColumn::SUBJECT, m_strFailed) != nullptr;
        if (bStored || itReferrer == vecReferrers.end()) {
            return CannotBeWritten("the " + strCalled);
        }
        return "the template " + Text::Quoted(itReferrer->GetText(NAME_COLUMN)) +
               " cannot be exported: it refers to the " + strCalled + ", which is not stored; " + AdviseReference({});
    }

    std::string CannotBeWritten(const std::string& strWhat) const {
        return strWhat + " cannot be written: " + Text::Printable(m_strMessage);
    }

    static std::size_t CountOthers(ESettingsKind eKind, std::size_t iCarried) {
        return CSettingsStore::Current().Count(eKind) - iCarried;
    }

    CCommandContext& m_context;
    const SArguments& m_arguments;
    SExportReport m_report;
    OS::TextSet<std::string> m_lstAsked;
    std::string m_strFailed;  ///< subject identifier of the record over which the export failed
    std::string m_strMessage;
};

}  // namespace

void AddExportCommand(CCommandLine& line) {
    const auto pArguments = std::make_shared<SArguments>();
    CLI::App& command = line.AddCommand(line.GetTop(), HELP, [pArguments](CCommandContext& context) {
        return CTemplateExportCommand(context, *pArguments).Run();
    });
    CCommandLine::AddTexts(command, "NAME", "NAME", pArguments->vecNames, "internal names of templates");
    AddExportOptions(command, *pArguments);
}
