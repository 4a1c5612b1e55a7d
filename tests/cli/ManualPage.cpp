#include "tests/cli/ManualPage.h"

#include <fstream>
#include <regex>
#include <sstream>

namespace {

constexpr const char PROGRAM[] = "dlpctl ";

bool BeginsWith(const std::string& strLine, const std::string& strStart) {
    return strLine.compare(0, strStart.size(), strStart) == 0;
}

}  // namespace

namespace ManualPage {

std::vector<std::string> GetCommandLines(const std::string& strCommand) {
    std::ifstream page(DLP_SOURCE_DIR "/docs/dlpctl.md");
    std::vector<std::string> vecLines;
    bool bInside = false;
    for (std::string strLine; std::getline(page, strLine);) {
        if (BeginsWith(strLine, "## ")) {
            bInside = strLine == "## " + strCommand;
        } else if (bInside && BeginsWith(strLine, PROGRAM)) {
            vecLines.push_back(strLine);
        }
    }
    return vecLines;
}

std::vector<std::string> GetCommandLines() {
    std::ifstream page(DLP_SOURCE_DIR "/docs/dlpctl.md");
    std::vector<std::string> vecLines;
    for (std::string strLine; std::getline(page, strLine);) {
        if (BeginsWith(strLine, PROGRAM)) {
            vecLines.push_back(strLine);
        }
    }
    return vecLines;
}

std::vector<std::string> GetCommands(const std::string& strHelp) {
    static const std::regex s_command("^  ([a-z]+( [a-z]+)?)(?=  | [^a-z]| [a-z]+[|])");
    std::istringstream help(strHelp.substr(strHelp.find("Commands:\n")));
    std::vector<std::string> vecCommands;
    std::string strLine;
    std::getline(help, strLine);
    for (std::smatch match; std::getline(help, strLine) && std::regex_search(strLine, match, s_command);) {
        vecCommands.push_back(match[1]);
    }
    return vecCommands;
}

std::vector<std::string> GetExamples(const std::string& strHelp) {
    std::istringstream help(strHelp);
    std::vector<std::string> vecLines;
    bool bInside = false;
    for (std::string strLine; std::getline(help, strLine);) {
        if (bInside && BeginsWith(strLine, "  ")) {
            vecLines.push_back(strLine.substr(2));
        } else {
            bInside = strLine == "Examples:";
        }
    }
    return vecLines;
}

std::string ToShell(const std::string& strLine) {
    return BeginsWith(strLine, PROGRAM) ? "\"$DLPCTL\" " + strLine.substr(sizeof(PROGRAM) - 1) : strLine;
}

}  // namespace ManualPage
