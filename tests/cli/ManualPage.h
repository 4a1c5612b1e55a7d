#pragma once

#include <string>
#include <vector>

/** What docs/dlpctl.md and the help show of the tool, to be run as it stands. */
namespace ManualPage {

/** @return the lines of the page that begin with "dlpctl ", from the section of that command */
std::vector<std::string> GetCommandLines(const std::string& strCommand);
/** @return all lines of the page that begin with "dlpctl " */
std::vector<std::string> GetCommandLines();
/** @return the words of every command that the help of the whole tool lists, such as "store dump" */
std::vector<std::string> GetCommands(const std::string& strHelp);
/** @return the lines of a help that stand below "Examples:" */
std::vector<std::string> GetExamples(const std::string& strHelp);
/** @return the line as a command for sh, in which the program is "$DLPCTL" */
std::string ToShell(const std::string& strLine);

}  // namespace ManualPage
