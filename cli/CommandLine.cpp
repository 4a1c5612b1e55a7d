#include "cli/CommandLine.h"

#include <algorithm>
#include <utility>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include "cli/CommandContext.h"
#include "cli/Kinds.h"
#include "cli/LogFile.h"
#include "cli/NearestName.h"
#include "cli/Text.h"

namespace {

constexpr const char PROGRAM[] = "dlpctl";
constexpr const char GENERAL_FORMAT[] = "dlpctl/1";
constexpr const char SUMMARY[] = "Moves data-loss-prevention policies between a settings store and XML.";
constexpr const char EMPTY_VALUE[] = "the value is empty";
constexpr const char NOT_EMPTY[] = "not empty";
constexpr const char USAGE[] = "; usage: dlpctl ";
constexpr const char SEE_OPTIONS[] = "\nOptions of every command: dlpctl --help\n";
constexpr const char FIRST_STEPS[] =
    "First steps:\n"
    "  dlpctl check policy.xml                     what is wrong in a policy\n"
    "  dlpctl import policy.xml                    read it into the store\n"
    "  dlpctl list templates                       see what is there\n"
    "  dlpctl show template NAME                   see one with its rules\n"
    "  dlpctl export --all --indent -o policy.xml  write it all out again\n"
    "\n"
    "A policy to begin with, examples/starter-policy.xml, and the pages of docs/ are installed in share/dlpparser\n"
    "and share/doc/dlpparser; man dlp-policy tells what a policy consists of.\n"
    "\n"
    "dlpctl help COMMAND says more about a command. \"-\" as a FILE is standard input or output. Every option can\n"
    "also be set by an environment variable or in a file: dlpctl config --help.\n"
    "Exit codes: 0 done; 1 done, but something was skipped, left out or not found; 2 invalid input, nothing\n"
    "written; 3 usage or configuration; 4 the store, the output or memory failed; 129, 130, 143 interrupted.\n";

/**
 * The parser takes a value in square brackets for a list, and looks for an empty one in the next argument. Both go
 * through it behind this mark, and so does a value that begins with the mark.
 */
constexpr char MARK = '\x01';

bool IsOption(const std::string& strWord) {
    return strWord.size() > 1 && strWord.front() == '-';
}

std::string ProtectValue(const std::string& strValue) {
    const bool bLooksLikeList = strValue.size() > 1 && strValue.front() == '[' && strValue.back() == ']';
    const bool bMarked = !strValue.empty() && strValue.front() == MARK;
    return bLooksLikeList || bMarked ? MARK + strValue : strValue;
}

std::string Protect(const std::string& strArgument) {
    const bool bEmptyValue = IsOption(strArgument) && strArgument.back() == '=';
    return bEmptyValue ? strArgument + MARK : ProtectValue(strArgument);
}

std::string Unprotect(const std::string& strArgument) {
    return !strArgument.empty() && strArgument.front() == MARK ? strArgument.substr(1) : strArgument;
}

std::string RefuseEmpty(const std::string& strValue) {
    return strValue.empty() ? EMPTY_VALUE : "";
}

CLI::Option* Finish(CLI::Option* pOption, const char* pValue) {
    return pOption->transform(Unprotect, "", "")
        ->check(RefuseEmpty, "", NOT_EMPTY)
        ->type_name(pOption->get_positional() ? "" : pValue);
}

void AddGlobalOptions(CLI::App& app, SGlobalOptions& options) {
    static const std::string s_strLevels = "which of them, separated by commas: " + CLogFile::GetLevelNames();
    CCommandLine::AddText(app, "--store", "URL", options.strStore,
                          "the store: sqlite:PATH or memory:; otherwise $DLP_STORE, else a file below your home")
        ->take_last();
    CCommandLine::AddText(app, "--home", "DIR", options.strHome,
                          "the installation directory, which holds config/; otherwise $DLP_INSTALL_PATH")
        ->take_last();
    CCommandLine::AddText(app, "--language", "NAME", options.strLanguage,
                          "the language of documents: written into them, and asked of those imported")
        ->take_last();
    CCommandLine::AddText(app, "--scope", "TEXT", options.strScope, "kept with each record that is written")
        ->take_last()
        ->get_validator(NOT_EMPTY)
        ->active(false);
    CCommandLine::AddText(app, "--log", "FILE", options.strLog,
                          "append the library's log lines to FILE; - is standard error")
        ->take_last();
    CCommandLine::AddText(app, "--log-level", "NAMES", options.strLogLevels, s_strLevels.c_str())->take_last();
    CCommandLine::AddFlag(app, "--json", options.bJson, "answer in JSON, also when something fails");
    CCommandLine::AddFlag(app, "-q,--quiet", options.bQuiet,
                          "no notes, no progress, and of an import only what was not taken; errors are always shown");
    CCommandLine::AddFlag(app, "-v,--verbose", options.bVerbose,
                          "say what is opened and how long it took, and the library's log lines of level info");
}

std::string Capitalised(std::string strText) {
    strText[0] = static_cast<char>(strText[0] - 'a' + 'A');
    return strText;
}

/** @return a question after the nearest name, or strElse when there is none */
std::string Ask(const std::string& strNearest, const std::string& strElse) {
    return strNearest.empty() ? strElse : "; did you mean " + Text::Quoted(strNearest) + '?';
}

/** @param pCommand null: none was given */
std::string ExplainOption(const std::string& strWord, const CLI::App& top, const CLI::App* pCommand,
                          const std::string& strSeeHelp) {
    std::vector<std::string> vecNames;
    for (const CLI::App* pApp : {&top, pCommand == nullptr ? &top : pCommand}) {
        for (const CLI::Option* pOption : pApp->get_options()) {
            for (const std::string& strName : pOption->get_lnames()) {
                vecNames.push_back(strName);
            }
        }
    }
    const std::string strOption = strWord.substr(0, strWord.find('='));
    const std::size_t iName = std::min(strOption.find_first_not_of('-'), strOption.size());
    const std::string strNearest = FindNearestName(strOption.substr(iName), vecNames);
    return "there is no option " + Text::Quoted(strOption) +
           Ask(strNearest.empty() ? "" : "--" + strNearest, strSeeHelp);
}

/** @return the option whose name stands as a word before its value; empty when none does */
std::string FindMeantOption(const CLI::App& command, const std::string& strValue) {
    for (const CLI::Option* pOption : command.get_options()) {
        const std::string strWord =
            pOption->get_positional() && !pOption->empty() ? "--" + Unprotect(pOption->results().back()) : "";
        if (!strWord.empty() && command.get_option_no_throw(strWord) != nullptr) {
            return strWord + ' ' + strValue;
        }
    }
    return {};
}

/** The parser names the option first, then what it lacks. */
std::string ExplainMissingValue(const CLI::ArgumentMismatch& error) {
    const std::string strWhy = error.what();
    return strWhy.substr(0, strWhy.find(':')) + " needs a value";
}

std::string ListOptions(const CLI::App& app, std::size_t iWidth) {
    CTextTable table;
    table.WrapLast();
    for (const CLI::Option* pOption : app.get_options()) {
        if (!pOption->get_positional()) {
            const std::string strType = pOption->get_type_name();
            table.Add({"  " + pOption->get_name(false, true) + (strType.empty() ? "" : ' ' + strType),
                       pOption->get_description()});
        }
    }
    return table.ToString(iWidth);
}

/** @return whether the word is nearly a group's name, and the group has a command of that name too: "keyword show" */
bool IsNearlyGroup(const CLI::App& top, const CLI::App& command, const std::string& strWord) {
    std::vector<std::string> vecGroups;
    for (const CLI::App* pGroup : top.get_subcommands([](const CLI::App*) { return true; })) {
        const auto vecSame =
            pGroup->get_subcommands([&](const CLI::App* pApp) { return pApp->get_name() == command.get_name(); });
        if (!vecSame.empty()) {
            vecGroups.push_back(pGroup->get_name());
        }
    }
    const bool bGroup = std::find(vecGroups.begin(), vecGroups.end(), strWord) != vecGroups.end();
    return command.get_parent() == &top && !bGroup && !FindNearestName(strWord, vecGroups).empty();
}

/** Of a kind that is none, the name that is missing behind it says little. @throws CToolError (USAGE) */
void CheckKind(const CLI::App& command) {
    const CLI::Option* pKind = command.get_option_no_throw("KIND");
    if (pKind != nullptr && pKind->count() != 0) {
        FindKind(pKind->results().front());
    }
}

}  // namespace

CCommandLine::CCommandLine(SGlobalOptions& options, std::size_t iWidth) : m_app(SUMMARY, PROGRAM), m_iWidth(iWidth) {
    m_app.fallthrough();
    m_app.require_subcommand(1);
    m_app.set_help_flag("-h,--help", "show this help");
    m_app.set_version_flag("--version", DLP_VERSION, "show the version");
    AddGlobalOptions(m_app, options);
}

CLI::App& CCommandLine::AddGroup(const char* pName, const char* pSummary) {
    CLI::App* pGroup = m_app.add_subcommand(pName, pSummary);
    pGroup->require_subcommand(1);
    return *pGroup;
}

CLI::App& CCommandLine::AddCommand(CLI::App& parent, const SCommandHelp& help, Run fnRun) {
    CLI::App* pCommand = parent.add_subcommand(help.pName, help.pSummary);
    m_vecCommands.push_back({pCommand, help, std::move(fnRun)});
    return *pCommand;
}

CLI::Option* CCommandLine::AddText(CLI::App& command, const char* pNames, const char* pValue, std::string& strText,
                                   const char* pSummary) {
    return Finish(command.add_option(pNames, strText, pSummary), pValue);
}

CLI::Option* CCommandLine::AddTexts(CLI::App& command, const char* pNames, const char* pValue,
                                    std::vector<std::string>& vecTexts, const char* pSummary) {
    CLI::Option* pOption = command.add_option(pNames, vecTexts, pSummary);
    pOption->allow_extra_args(pOption->get_positional());
    return Finish(pOption, pValue);
}

CLI::Option* CCommandLine::AllowEmpty(CLI::Option* pOption) {
    pOption->get_validator(NOT_EMPTY)->active(false);
    return pOption;
}

void CCommandLine::AddFlag(CLI::App& command, const char* pNames, bool& bFlag, const char* pSummary) {
    command.add_flag(pNames, bFlag, pSummary);
}

void CCommandLine::Give(CLI::Option& option, const std::vector<std::string>& vecValues) {
    for (const std::string& strValue : vecValues) {
        option.add_result(ProtectValue(strValue));
    }
    option.run_callback();
}

void CCommandLine::ForEachOption(const std::function<void(const std::string&, CLI::Option&)>& fnOption) {
    for (CLI::Option* pOption : m_app.get_options()) {
        fnOption("", *pOption);
    }
    for (const SCommand& command : m_vecCommands) {
        for (CLI::Option* pOption : command.pApp->get_options()) {
            fnOption(GetWords(command), *pOption);
        }
    }
}

CCommandLine::SParsed CCommandLine::Parse(const std::vector<std::string>& vecArguments) {
    std::vector<std::string> vecReversed;
    std::transform(vecArguments.rbegin(), vecArguments.rend(), std::back_inserter(vecReversed), Protect);
    try {
        m_app.parse(vecReversed);
    } catch (const CLI::CallForHelp&) {
        return {{}, MakeHelp(FindAsked())};
    } catch (const CLI::CallForVersion& version) {
        return {{}, version.what(), true};
    } catch (const CLI::RequiredError& error) {
        Refuse(FindGiven() == nullptr ? std::string() : error.what(), true);
    } catch (const CLI::ArgumentMismatch& error) {
        Refuse(ExplainMissingValue(error));
    } catch (const CLI::ParseError& error) {
        Refuse(error.what());
    }
    return {FindGiven()->fnRun, {}};
}

const char* CCommandLine::GetFormat() const {
    const SCommand* pGiven = FindGiven();
    return pGiven == nullptr ? GENERAL_FORMAT : pGiven->help.pFormat;
}

const SCommandHelp* CCommandLine::FindHelp(const CLI::App& command) const {
    const auto itCommand = std::find_if(m_vecCommands.begin(), m_vecCommands.end(),
                                        [&](const SCommand& known) { return known.pApp == &command; });
    return itCommand == m_vecCommands.end() ? nullptr : &itCommand->help;
}

const char* CCommandLine::GetFirstSteps() {
    return FIRST_STEPS;
}

const CCommandLine::SCommand* CCommandLine::FindGiven() const {
    const auto itGiven = std::find_if(m_vecCommands.begin(), m_vecCommands.end(),
                                      [](const SCommand& command) { return command.pApp->parsed(); });
    return itGiven == m_vecCommands.end() ? nullptr : &*itGiven;
}

const CLI::App& CCommandLine::FindAsked() const {
    const SCommand* pGiven = FindGiven();
    if (pGiven != nullptr) {
        return *pGiven->pApp;
    }
    return m_app.get_subcommands().empty() ? m_app : *m_app.get_subcommands().front();
}

std::string CCommandLine::GetHelp(const std::vector<std::string>& vecWords) const {
    const CLI::App* pApp = &m_app;
    for (const std::string& strWord : vecWords) {
        const auto vecFound =
            pApp->get_subcommands([&](const CLI::App* pCommand) { return pCommand->get_name() == strWord; });
        if (!vecFound.empty()) {
            pApp = vecFound.front();
        } else if (FindHelp(*pApp) == nullptr) {
            RefuseCommand(*pApp, strWord);
        } else {
            throw CToolError(EVerdict::USAGE, Text::Quoted(strWord) + " is one word too many: " +
                                                  Text::Quoted(pApp->get_name()) + " is a whole command");
        }
    }
    return MakeHelp(*pApp);
}

std::string CCommandLine::MakeHelp(const CLI::App& app) const {
    if (&app == &m_app) {
        return std::string(SUMMARY) + "\n\nUsage: dlpctl [OPTIONS] COMMAND …\n\nCommands:\n" + ListCommands(m_app) +
               "\nOptions, before or after the command:\n" + ListOptions(m_app, m_iWidth) + '\n' +
               Text::Reflow(FIRST_STEPS, m_iWidth);
    }
    const SCommandHelp* pHelp = FindHelp(app);
    if (pHelp == nullptr) {
        return "Commands:\n" + ListCommands(app) + SEE_OPTIONS;
    }
    return std::string("Usage: dlpctl ") + pHelp->pSynopsis + "\n\n" + Capitalised(pHelp->pSummary) + ".\n" +
           Text::Reflow(pHelp->pDetails, m_iWidth) + "\nOptions:\n" + ListOptions(app, m_iWidth) + "\nExamples:\n" +
           pHelp->pExamples + SEE_OPTIONS;
}

std::string CCommandLine::ListCommands(const CLI::App& parent) const {
    CTextTable table;
    table.WrapLast();
    for (const SCommand& command : m_vecCommands) {
        if (&parent == &m_app || command.pApp->get_parent() == &parent) {
            table.Add({std::string("  ") + command.help.pSynopsis, command.help.pSummary});
        }
    }
    return table.ToString(m_iWidth);
}

void CCommandLine::Refuse(const std::string& strWhy, bool bShowsUsage) const {
    const SCommand* pGiven = FindGiven();
    const std::string strSeeHelp = "; see dlpctl " + (pGiven == nullptr ? "" : GetWords(*pGiven) + ' ') + "--help";
    std::vector<std::string> vecRest = m_app.remaining(true);
    std::transform(vecRest.begin(), vecRest.end(), vecRest.begin(), Unprotect);
    // Before a command is known, a word is where one was meant, and what follows may be its options.
    const auto itEnd = pGiven == nullptr && !vecRest.empty() ? vecRest.begin() + 1 : vecRest.end();
    const auto itOption = std::find_if(vecRest.begin(), itEnd, IsOption);
    if (itOption != itEnd) {
        throw CToolError(EVerdict::USAGE,
                         ExplainOption(*itOption, m_app, pGiven == nullptr ? nullptr : pGiven->pApp, strSeeHelp));
    }
    if (pGiven != nullptr && !vecRest.empty()) {
        if (IsNearlyGroup(m_app, *pGiven->pApp, vecRest.front())) {
            RefuseCommand(m_app, vecRest.front());
        }
        throw CToolError(EVerdict::USAGE, Text::Quoted(vecRest.front()) + " is one argument too many" +
                                              Ask(FindMeantOption(*pGiven->pApp, vecRest.front()),
                                                  USAGE + std::string(pGiven->help.pSynopsis)));
    }
    if (!strWhy.empty()) {
        if (pGiven != nullptr) {
            CheckKind(*pGiven->pApp);
        }
        throw CToolError(EVerdict::USAGE, Text::Printable(strWhy) +
                                              (bShowsUsage ? USAGE + std::string(pGiven->help.pSynopsis) : strSeeHelp));
    }
    if (vecRest.empty()) {
        throw CToolError(EVerdict::USAGE, "no command is given" + SeeCommands(FindAsked()));
    }
    RefuseCommand(FindAsked(), vecRest.front());
}

void CCommandLine::RefuseCommand(const CLI::App& parent, const std::string& strWord) const {
    std::vector<std::string> vecNames;
    for (const CLI::App* pCommand : parent.get_subcommands([](const CLI::App*) { return true; })) {
        vecNames.push_back(pCommand->get_name());
    }
    std::string strNearest = FindNearestName(strWord, vecNames);
    if (strNearest.empty() && m_app.get_option_no_throw("--" + strWord) != nullptr) {
        strNearest = "--" + strWord;
    }
    throw CToolError(EVerdict::USAGE,
                     "there is no command " + Text::Quoted(strWord) + Ask(strNearest, SeeCommands(parent)));
}

std::string CCommandLine::SeeCommands(const CLI::App& parent) const {
    return "; dlpctl " + (&parent == &m_app ? "" : parent.get_name() + ' ') + "--help lists the commands";
}

std::string CCommandLine::GetWords(const SCommand& command) const {
    const CLI::App* pGroup = command.pApp->get_parent();
    return (pGroup == &m_app ? std::string() : pGroup->get_name() + ' ') + command.help.pName;
}
