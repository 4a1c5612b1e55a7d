#include "cli/manual/ManualPages.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include <CLI/App.hpp>

#include "cli/CommandLine.h"
#include "cli/manual/ManualTexts.h"
#include "cli/manual/Roff.h"

namespace {

constexpr const char TOOL[] = "dlpctl";
constexpr const char RELEASED[] = "2026-11-21";  ///< when DLP_VERSION was
constexpr const char CONFIG[] = "config";
constexpr const char TOOL_SUMMARY[] = "move data-loss-prevention policies between a settings store and XML";

std::string MakeTitle(const SManualPage& page) {
    return ".\\\" Made from dlpctl's table of commands and from docs/.\n.TH " + Roff::Escape(page.strName) + ' ' +
           std::to_string(page.iSection) + " \"" + RELEASED + "\" \"dlpctl " DLP_VERSION "\"\n.SH NAME\n" +
           Roff::Escape(page.strName + " - ") + Roff::Escape(page.strSummary) + '\n';
}

/** @return a page's part below "## HEADING", without it */
std::string FindSection(std::string_view strMarkdown, const std::string& strHeading) {
    const std::string strLine = "\n## " + strHeading + '\n';
    const std::size_t iStart = strMarkdown.find(strLine);
    if (iStart == std::string_view::npos) {
        return {};
    }
    const std::string_view strRest = strMarkdown.substr(iStart + strLine.size());
    return std::string(strRest.substr(0, strRest.find("\n## ")));
}

std::string ListOptions(const CLI::App& app) {
    std::string strRoff;
    for (const CLI::Option* pOption : app.get_options()) {
        if (!pOption->get_positional()) {
            const std::string strType = pOption->get_type_name();
            strRoff += Roff::MakeEntry(pOption->get_name(false, true) + (strType.empty() ? "" : ' ' + strType),
                                       Roff::Escape(pOption->get_description()));
        }
    }
    return strRoff;
}

/** Indented lines of a help are shown as they stand. */
std::string MakeText(const std::string& strText) {
    std::string strMarkdown;
    bool bBlock = false;
    for (std::size_t iStart = 0; iStart < strText.size();) {
        const std::size_t iEnd = std::min(strText.find('\n', iStart), strText.size());
        const std::string strLine = strText.substr(iStart, iEnd - iStart);
        const bool bIndented = strLine.rfind("  ", 0) == 0;
        if (bIndented != bBlock && !strLine.empty()) {
            strMarkdown += "```\n";
            bBlock = bIndented;
        }
        strMarkdown += strLine + '\n';
        iStart = iEnd + 1;
    }
    return Roff::FromMarkdown(strMarkdown + (bBlock ? "```\n" : ""));
}

std::string MakeToolPage(CCommandLine& line) {
    std::string strRoff = ".SH SYNOPSIS\n.B dlpctl\n[\\fIOPTIONS\\fR] \\fICOMMAND\\fR …\n.SH COMMANDS\n";
    for (const CCommandLine::SCommand& command : line.GetCommands()) {
        strRoff += Roff::MakeEntry(command.help.pSynopsis, Roff::Escape(command.help.pSummary));
    }
    return strRoff + ".SH OPTIONS\nBefore or after the command.\n" + ListOptions(line.GetTop()) + ".SH DESCRIPTION\n" +
           MakeText(CCommandLine::GetFirstSteps()) + ".SH SEE ALSO\n.BR dlp\\-policy (5),\n.BR dlpctl\\-config (5)\n";
}

std::string MakeCommandPage(const CCommandLine& line, const CCommandLine::SCommand& command) {
    const SCommandHelp& help = command.help;
    const std::string strSection = FindSection(ManualText::COMMANDS, line.GetWords(command));
    return ".SH SYNOPSIS\n.B dlpctl\n" + Roff::Escape(help.pSynopsis) + "\n.SH DESCRIPTION\n" +
           MakeText(*help.pDetails == '\0' ? std::string(help.pSummary) + ".\n" : help.pDetails) + ".SH OPTIONS\n" +
           ListOptions(*command.pApp) + ".SH EXAMPLES\n" + Roff::MakeBlock(help.pExamples) +
           (strSection.empty() ? "" : ".SH MORE\n" + Roff::FromMarkdown(strSection)) +
           ".SH SEE ALSO\n.BR dlpctl (1),\n.BR dlp\\-policy (5),\n.BR dlpctl\\-config (5)\n";
}

std::string MakeName(const std::string& strWords) {
    std::string strName = std::string(TOOL) + '-' + strWords;
    std::replace(strName.begin(), strName.end(), ' ', '-');
    return strName;
}

std::string MakeToolText(CCommandLine& line, const SManualPage&) {
    return MakeToolPage(line);
}

std::string MakeConfigText(CCommandLine&, const SManualPage&) {
    return ".SH DESCRIPTION\n" + Roff::FromMarkdown(FindSection(ManualText::COMMANDS, CONFIG)) +
           ".SH SEE ALSO\n.BR dlpctl\\-config (1)\n";
}

std::string MakePolicyText(CCommandLine&, const SManualPage&) {
    return ".SH DESCRIPTION\n" + Roff::FromMarkdown(ManualText::FORMATS) +
           ".SH SEE ALSO\n.BR dlpctl (1),\n.BR dlpctl\\-check (1),\n.BR dlpctl\\-import (1)\n";
}

struct SGeneralPage {
    const char* pName;
    int iSection;
    const char* pSummary;
    std::string (*fnMake)(CCommandLine& line, const SManualPage& page);
};
constexpr SGeneralPage GENERAL_PAGES[] = {
    {TOOL, 1, TOOL_SUMMARY, MakeToolText},
    {"dlpctl-config", 5, "options of dlpctl in the environment and a file", MakeConfigText},
    {"dlp-policy", 5, "the documents that policies are kept in", MakePolicyText},
};

/** A heading begins a paragraph by itself. */
std::string JoinHeadings(std::string strRoff) {
    static constexpr std::string_view PARAGRAPH = ".PP\n";
    for (std::size_t i = strRoff.find("\n.S"); i != std::string::npos; i = strRoff.find("\n.S", i + 1)) {
        const std::size_t iNext = std::min(strRoff.find('\n', i + 1), strRoff.size() - 1) + 1;
        if (strRoff.compare(iNext, PARAGRAPH.size(), PARAGRAPH) == 0) {
            strRoff.erase(iNext, PARAGRAPH.size());
        }
    }
    return strRoff;
}

}  // namespace

std::vector<SManualPage> ListManualPages(const CCommandLine& line) {
    std::vector<SManualPage> vecPages;
    for (const SGeneralPage& page : GENERAL_PAGES) {
        vecPages.push_back({page.pName, page.iSection, page.pSummary});
    }
    for (const CCommandLine::SCommand& command : line.GetCommands()) {
        vecPages.push_back({MakeName(line.GetWords(command)), 1, command.help.pSummary});
    }
    return vecPages;
}

std::string MakeManualPage(CCommandLine& line, const SManualPage& page) {
    for (const SGeneralPage& general : GENERAL_PAGES) {
        if (page.strName == general.pName && page.iSection == general.iSection) {
            return JoinHeadings(MakeTitle(page) + general.fnMake(line, page));
        }
    }
    const auto& vecCommands = line.GetCommands();
    const auto itCommand = std::find_if(vecCommands.begin(), vecCommands.end(), [&](const auto& command) {
        return MakeName(line.GetWords(command)) == page.strName;
    });
    return JoinHeadings(MakeTitle(page) + MakeCommandPage(line, *itCommand));
}
