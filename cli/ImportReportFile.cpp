#include "cli/ImportReportFile.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "cli/CommandContext.h"
#include "cli/FileIdentity.h"
#include "cli/FileImport.h"
#include "cli/ImportOptions.h"
#include "cli/ImportReport.h"
#include "cli/InputFile.h"
#include "cli/Output.h"
#include "cli/StoreSession.h"
#include "cli/Text.h"
#include "cli/check/CheckFormats.h"
#include "cli/check/ItemDiagnostics.h"
#include "xml/CPolicyDocument.h"
#include "xml/Vocabulary.h"

namespace {

constexpr const char STANDARD_STREAM[] = "-";
constexpr const char FORMAT_OPTION[] = "--report-format";
constexpr const char TOO_LATE[] = ", after the store was changed";
constexpr const char NOTHING_WRITTEN[] = "nothing of the file was written";

/** What a file's end says of its format. */
constexpr std::pair<std::string_view, const char*> ENDS[] = {
    {".txt", CHECK_TEXT},
    {".sarif", "sarif"},
    {".sarif.json", "sarif"},
    {".xml", "junit"},
};

const SCheckFormat& ChooseFormat(const SImportOptions& options) {
    if (!options.strReportFormat.empty()) {
        return FindCheckFormat(FORMAT_OPTION, options.strReportFormat);
    }
    for (const auto& [strEnd, pFormat] : ENDS) {
        if (options.strReport.size() > strEnd.size() &&
            options.strReport.compare(options.strReport.size() - strEnd.size(), strEnd.size(), strEnd) == 0) {
            return FindCheckFormat(FORMAT_OPTION, pFormat);
        }
    }
    return FindCheckFormat(FORMAT_OPTION, CHECK_JSON);
}

/** A report must not take the place of what it is about. */
void CheckIsNoInput(const CCommandContext& context, const SImportOptions& options) {
    for (const std::string& strFile : options.vecFiles) {
        if (strFile != STANDARD_STREAM &&
            IsSameFile(context.GetAbsolute(strFile), context.GetAbsolute(options.strReport))) {
            throw CToolError(EVerdict::USAGE, "--report: " + Text::Printable(options.strReport) +
                                                  " is what is to be imported; name another file");
        }
    }
}

bool IsPolicy(CCommandContext& context, const std::string& strFile) {
    try {
        const SPolicyFile file = ReadPolicy(context, strFile);
        CPolicyDocument document(file.Text());
        return ParsePolicy(strFile, file, document).Name() == TagUtf8::SA_POLICY;
    } catch (const CInputError&) {
        return false;
    }
}

/** Its name may end as a policy's does. */
void CheckIsNoPolicy(CCommandContext& context, const std::string& strFile) {
    std::error_code error;
    if (std::filesystem::is_regular_file(context.GetAbsolute(strFile), error) && IsPolicy(context, strFile)) {
        throw CToolError(EVerdict::USAGE, "--report: " + Text::Printable(strFile) +
                                              " is a policy, which a report would replace; name another file");
    }
}

bool IsWrittenAtOnce(const SCheckFormat& format) {
    return format.fnWrite == WriteCheckText || format.fnWrite == WriteCheckJson;
}

std::string MakeText(const SImportReport& report) {
    if (!report.strReason.empty()) {
        return MakeRefusal(report) + '\n' + MakeFindings(report);
    }
    return Text::Printable(report.strFile) + ":\n" + MakeReportText(report);
}

void TellRefusal(const SImportReport& report, CDiagnostics& diagnostics) {
    SDiagnostic& refusal = diagnostics.Spell(*diagnostics.Add(report.eRefusal, std::string::npos));
    refusal.strMessage = report.strReason;
    refusal.strAdvice = SaysWhatWasWritten(report.strReason) ? "" : NOTHING_WRITTEN;
    refusal.place = report.place;
    refusal.related = report.related;
}

/** What a file's report says, as a check would. */
SFileReport MakeFileReport(const SImportReport& report, const SPolicyFile& file, const SCheckChoice& choice) {
    CDiagnostics diagnostics(choice);
    diagnostics.SetStart(file.iStart);
    if (!report.strReason.empty()) {
        TellRefusal(report, diagnostics);
    }
    for (const SReportItem& item : report.vecItems) {
        if (!item.IsTaken() && !TellItem(item, file.Text(), diagnostics)) {
            TellFault(item, diagnostics);
        }
        TellForeign(item, diagnostics);
    }
    for (const SMissingName& missing : report.vecMissing) {
        diagnostics.Add(ECode::NOT_IN_DOCUMENT, std::string::npos, {Text::Quoted(missing.strName)});
    }
    return {report.strFile, nullptr, diagnostics.Finish(file.strBytes), diagnostics.GetOmitted()};
}

}  // namespace

CImportReportFile::CImportReportFile(CCommandContext& context, const SImportDoor& door, const SImportOptions& options) {
    if (options.strReport.empty()) {
        if (!options.strReportFormat.empty()) {
            throw CToolError(EVerdict::USAGE, std::string(FORMAT_OPTION) + " needs --report FILE");
        }
        return;
    }
    m_pFormat = &ChooseFormat(options);
    m_bAnswer = COutput::IsStandard(context, options.strReport);
    if (m_bAnswer && context.IsJson()) {
        throw CToolError(EVerdict::USAGE, "write either --json or --report " + Text::Printable(options.strReport));
    }
    CheckIsNoInput(context, options);
    CheckIsNoPolicy(context, options.strReport);
    m_report.pCommand = door.pCommand;
    m_pOutput = std::make_unique<COutput>(context, options.strReport);
}

CImportReportFile::~CImportReportFile() = default;

bool CImportReportFile::ShowsEveryItem() const {
    return m_pFormat != nullptr && m_pFormat->fnWrite == WriteCheckJson;
}

void CImportReportFile::Add(const SImportReport& report, const SPolicyFile& file) {
    if (m_pFormat == nullptr) {
        return;
    }
    if (IsWrittenAtOnce(*m_pFormat)) {
        if (ShowsEveryItem()) {
            WriteReportJson(report, [this](std::string_view strPiece) { m_pOutput->Write(strPiece); });
        } else {
            m_pOutput->Write(MakeText(report));
        }
    } else {
        SCheckChoice choice;
        choice.bKeepAll = true;
        m_report.vecFiles.push_back(MakeFileReport(report, file, choice));
    }
}

void CImportReportFile::Finish(EVerdict eVerdict) {
    if (m_pFormat == nullptr) {
        return;
    }
    m_report.verdict = eVerdict;
    try {
        if (!IsWrittenAtOnce(*m_pFormat)) {
            m_pFormat->fnWrite(m_report, [this](std::string_view strPiece) { m_pOutput->Write(strPiece); });
        }
        m_pOutput->Commit();
    } catch (const CToolError& error) {
        throw CToolError(error.GetVerdict(), error.what() + std::string(CStoreSession::IsChanged() ? TOO_LATE : ""));
    }
}
