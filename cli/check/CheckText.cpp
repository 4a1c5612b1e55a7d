#include <algorithm>

#include "cli/Colours.h"
#include "cli/InputFile.h"
#include "cli/Text.h"
#include "cli/check/CheckFormats.h"

namespace {

struct SLook {
    const char* pOne;
    const char* pMany;
    const char* pColour;
};
/** In the order of ESeverity. */
constexpr SLook SEVERITIES[] = {
    {"error", "errors", Colours::RED}, {"warning", "warnings", Colours::YELLOW}, {"note", "notes", Colours::CYAN}};

std::string MakeAdvice(const SDiagnostic& diagnostic) {
    const std::string strFix = diagnostic.fix ? Text::Quoted(diagnostic.fix->strReplacement) : std::string();
    if (diagnostic.bFixed) {
        return "fixed: " + strFix + " is written there now";
    }
    return diagnostic.strAdvice + (diagnostic.fix ? "; --fix writes " + strFix : std::string());
}

std::string MakeRow(const std::string& strFile, const SDiagnostic& diagnostic, bool bColour) {
    const SCodeRow& row = GetCodeRow(diagnostic.eCode);
    const std::string strColour =
        bColour ? SEVERITIES[static_cast<std::size_t>(diagnostic.eSeverity)].pColour : std::string();
    const std::string strPlain = bColour ? Colours::PLAIN : "";
    std::string strRow = FormatPlace(strFile, diagnostic.place) + ": " + strColour +
                         GetSeverityName(diagnostic.eSeverity) + strPlain + ": " + row.pCode + ' ' + row.pName + ": " +
                         diagnostic.strMessage + '\n';
    if (diagnostic.place.iLine != 0) {
        strRow += MakeExcerptLines(diagnostic.excerpt, diagnostic.place.iLine, strColour + CARET + strPlain);
    }
    strRow += "  " + MakeAdvice(diagnostic) + '\n';
    if (diagnostic.related) {
        strRow += "  " + FormatPlace(strFile, diagnostic.related->place) + ": " + diagnostic.related->strMessage + '\n';
    }
    return strRow;
}

std::string MakeSummary(const SCheckReport& report) {
    const auto aCounts = report.Count();
    std::string strSummary;
    for (std::size_t i = 0; i < aCounts.size(); ++i) {
        if (aCounts[i] != 0) {
            strSummary +=
                (strSummary.empty() ? "" : ", ") + Text::Counted(aCounts[i], SEVERITIES[i].pOne, SEVERITIES[i].pMany);
        }
    }
    return (strSummary.empty() ? "nothing to report" : strSummary) + " in " +
           Text::Counted(report.vecFiles.size(), "file", "files") + '\n';
}

std::string MakeLeft(std::size_t iLeft) {
    return iLeft == 1
               ? "1 value that may be a mistake was left as it is: correct it by hand\n"
               : std::to_string(iLeft) + " values that may be mistakes were left as they are: correct them by hand\n";
}

}  // namespace

void WriteCheckText(const SCheckReport& report, const ReportTaker& fnTake) {
    std::size_t iRows = 0;
    std::size_t iMore = 0;
    for (const SFileReport& file : report.vecFiles) {
        const std::size_t iShown =
            report.bAll ? file.findings.size() : std::min(file.findings.size(), CDiagnostics::MAX_SHOWN - iRows);
        for (std::size_t i = 0; i < iShown; ++i) {
            fnTake(MakeRow(file.strFile, file.findings.Get(i), report.bColour));
        }
        iRows += iShown;
        iMore += file.findings.size() - iShown + file.CountOmitted();
    }
    const std::size_t iFixed = report.CountFixed();
    const std::size_t iLeft = report.CountLeft();
    if (iMore != 0) {
        fnTake(std::to_string(iMore) + " more; --all shows them\n");
    }
    if (iFixed != 0) {
        fnTake(Text::Counted(iFixed, "value was", "values were") + " fixed\n");
    }
    if (iLeft != 0) {
        fnTake(MakeLeft(iLeft));
    }
    if (!report.bQuiet || iRows + iMore + iFixed + iLeft != 0) {
        fnTake(MakeSummary(report));
    }
}
