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

std::string MakeCheckText(const SCheckReport& report) {
    std::string strText;
    std::size_t iRows = 0;
    std::size_t iMore = 0;
    for (const SFileReport& file : report.vecFiles) {
        iMore += file.CountOmitted();
        for (const SDiagnostic& diagnostic : file.vecDiagnostics) {
            if (iRows == CDiagnostics::MAX_SHOWN && !report.bAll) {
                ++iMore;
            } else {
                strText += MakeRow(file.strFile, diagnostic, report.bColour);
                ++iRows;
            }
        }
    }
    if (iMore != 0) {
        strText += std::to_string(iMore) + " more; --all shows them\n";
    }
    if (report.CountFixed() != 0) {
        strText += Text::Counted(report.CountFixed(), "value was", "values were") + " fixed\n";
    }
    if (report.CountLeft() != 0) {
        strText += MakeLeft(report.CountLeft());
    }
    return report.bQuiet && strText.empty() ? std::string() : strText + MakeSummary(report);
}
