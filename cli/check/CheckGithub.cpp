#include <utility>

#include "cli/Text.h"
#include "cli/check/CheckFormats.h"

namespace {

using Escapes = std::pair<char, const char*>;

/** What ends a message, and what ends a property as well. */
constexpr Escapes ESCAPES[] = {{'%', "%25"}, {'\r', "%0D"}, {'\n', "%0A"}, {':', "%3A"}, {',', "%2C"}};
constexpr std::size_t MESSAGE_ESCAPES = 3;

/** In the order of ESeverity. */
constexpr const char* COMMANDS[] = {"error", "warning", "notice"};

std::string Escape(const std::string& strText, std::size_t iEscapes) {
    std::string strEscaped;
    for (const char c : strText) {
        const Escapes* pEscape = ESCAPES;
        while (pEscape != ESCAPES + iEscapes && pEscape->first != c) {
            ++pEscape;
        }
        strEscaped += pEscape == ESCAPES + iEscapes ? std::string(1, c) : pEscape->second;
    }
    return strEscaped;
}

std::string MakeLine(const std::string& strFile, const SDiagnostic& diagnostic) {
    const SCodeRow& row = GetCodeRow(diagnostic.eCode);
    std::string strLine = std::string("::") + COMMANDS[static_cast<std::size_t>(diagnostic.eSeverity)] +
                          " file=" + Text::Printable(Escape(strFile, std::size(ESCAPES)));
    if (diagnostic.place.iLine != 0) {
        strLine +=
            ",line=" + std::to_string(diagnostic.place.iLine) + ",col=" + std::to_string(diagnostic.place.iColumn);
    }
    return strLine + ",title=" + row.pCode + ' ' + row.pName +
           "::" + Escape(diagnostic.strMessage + "; " + diagnostic.strAdvice, MESSAGE_ESCAPES) + '\n';
}

}  // namespace

void WriteCheckGithub(const SCheckReport& report, const ReportTaker& fnTake) {
    for (const SFileReport& file : report.vecFiles) {
        for (const SDiagnostic& diagnostic : file.findings) {
            fnTake(diagnostic.bFixed ? std::string() : MakeLine(file.strFile, diagnostic));
        }
    }
}
