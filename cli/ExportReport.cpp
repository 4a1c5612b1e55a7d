#include "cli/ExportReport.h"

#include <algorithm>
#include <utility>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/Output.h"
#include "cli/Signals.h"
#include "cli/Text.h"
#include "cli/layout/FormatXml.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char NOTHING_WRITTEN[] = "Nothing that was asked for is there; nothing was written.";

Json MakeHead(const SExportReport& report, bool bWritten) {
    return {{"format", report.pFormat}, {"output", bWritten ? Json(report.strOutput) : Json()}};
}

/** A file is not replaced by a document without anything that was asked for; all of an empty store is a document. */
bool IsWorthWriting(const SExportOptions& options, const SExportReport& report) {
    return options.bAll || std::any_of(report.counts.begin(), report.counts.end(),
                                       [](const auto& count) { return count.second.iCarried > 0; });
}

void OpenOutput(CCommandContext& context, const SExportOptions& options, SExportReport& report) {
    report.pOutput = std::make_unique<COutput>(context, options.strOutput);
}

void Write(CCommandContext& context, const SExportOptions& options, SExportReport& report) {
    if (report.pOutput == nullptr) {
        OpenOutput(context, options, report);
    }
    COutput& output = *report.pOutput;
    output.Write(options.bIndent ? FormatXml(report.strDocument) : std::move(report.strDocument));
    if (context.IsJson()) {
        context.StartJson(MakeHead(report, true));
    }
    output.Commit();
}

Json MakeJson(const SExportReport& report, bool bWritten, EVerdict eVerdict) {
    Json object = MakeHead(report, bWritten);
    object["verdict"] = GetVerdictName(eVerdict);
    for (const auto& [eKind, count] : report.counts) {
        object["exported"][GetKind(eKind).pList] = count.iCarried;
        object["not_carried"][GetKind(eKind).pList] = count.iOthers;
    }
    object["left_out"] = Json::array();
    for (const SLeftOut& leftOut : report.vecLeftOut) {
        object["left_out"].push_back({{"kind", leftOut.pKind->pSingular},
                                      {"name", leftOut.strName},
                                      {"reason", leftOut.pReason},
                                      {"message", leftOut.strWhy}});
    }
    object["warnings"] = report.vecWarnings;
    return object;
}

void TellCounts(CCommandContext& context, const SExportReport& report) {
    std::string strCarried;
    std::string strOthers;
    for (const auto& [eKind, count] : report.counts) {
        const SKind& kind = GetKind(eKind);
        const std::string strComma = strCarried.empty() ? "" : ", ";
        strCarried += strComma + Text::Counted(count.iCarried, kind.pWord, kind.pWords);
        if (eKind != ESettingsKind::TEMPLATE && count.iOthers > 0) {
            strOthers += (strOthers.empty() ? "" : ", ") + Text::Counted(count.iOthers, kind.pWord, kind.pWords);
        }
    }
    context.Note("Exported: " + strCarried + ".");
    if (!strOthers.empty()) {
        context.Note("In the store but not in the document: " + strOthers + "; dlpctl assets export writes those.");
    }
}

}  // namespace

void AddExportOptions(CLI::App& command, SExportOptions& options) {
    CCommandLine::AddFlag(command, "--all", options.bAll, "everything that the store holds");
    CCommandLine::AddFlag(command, "--indent", options.bIndent, "one element per line, indented; it means the same");
    CCommandLine::AddText(command, "-o,--output", "FILE", options.strOutput,
                          "write to FILE, which is replaced whole or not at all");
}

void StartExport(CCommandContext& context, const SExportOptions& options, SExportReport& report, bool bNames) {
    if (bNames == options.bAll) {
        throw CToolError(EVerdict::USAGE, bNames ? "write either names or --all, not both"
                                                 : "nothing is asked for; write names or --all");
    }
    COutput::CheckLeavesAnswer(context, options.strOutput);
    if (COutput::IsUndone(context, options.strOutput)) {
        OpenOutput(context, options, report);
    }
}

void TakeText(const SExportOptions& options, SExportReport& report, std::string& strText) {
    Signals::ThrowIfCaught();
    if (report.pOutput != nullptr && !options.bIndent) {
        report.pOutput->Write(strText);
        strText.clear();
    }
}

EVerdict FinishExport(CCommandContext& context, const SExportOptions& options, SExportReport& report) {
    Signals::ThrowIfCaught();
    report.strOutput = options.strOutput;
    const bool bWritten = IsWorthWriting(options, report);
    if (bWritten) {
        Write(context, options, report);
    }
    const EVerdict eVerdict = report.vecLeftOut.empty() ? EVerdict::DONE : EVerdict::FINDINGS;
    for (const SLeftOut& leftOut : report.vecLeftOut) {
        context.Warn(std::string(leftOut.pKind->pWord) + ' ' + Text::Quoted(leftOut.strName) +
                     " is left out: " + leftOut.strWhy);
    }
    for (const std::string& strWarning : report.vecWarnings) {
        context.Warn(strWarning);
    }
    if (context.IsJson()) {
        context.WriteJson(MakeJson(report, bWritten, eVerdict));
    } else if (!bWritten) {
        context.Note(NOTHING_WRITTEN);
    } else {
        TellCounts(context, report);
    }
    return eVerdict;
}
