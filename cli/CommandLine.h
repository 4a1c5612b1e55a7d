#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "cli/Verdict.h"

class CCommandContext;
struct SGlobalOptions;

/** What the help says of a command. */
struct SCommandHelp {
    const char* pName;      ///< its last word
    const char* pSynopsis;  ///< whole, without the program's name
    const char* pSummary;   ///< one line
    const char* pDetails;   ///< more lines, or ""
    const char* pExamples;  ///< lines
    const char* pFormat;    ///< name of its JSON form
};

/** The command line: which commands there are, what they take, and what a given one asks for. */
class CCommandLine {
  public:
    using Run = std::function<EVerdict(CCommandContext&)>;

    /** @param iWidth of the terminal that help is for; 0: no bound */
    CCommandLine(SGlobalOptions& options, std::size_t iWidth);

    /** Adds a word that several commands begin with. */
    CLI::App& AddGroup(const char* pName, const char* pSummary);
    /** @param fnRun called when this command was given @return where its own options are added */
    CLI::App& AddCommand(CLI::App& parent, const SCommandHelp& help, Run fnRun);
    CLI::App& GetTop() { return m_app; }
    /** @return what the help says of a command; null for words that several commands begin with */
    const SCommandHelp* FindHelp(const CLI::App& command) const;

    /** @param pNames as -o,--output; without dashes: by its place @param pValue how the help calls the value */
    static CLI::Option* AddText(CLI::App& command, const char* pNames, const char* pValue, std::string& strText,
                                const char* pSummary);
    /** Lets the value of an option be empty. */
    static CLI::Option* AllowEmpty(CLI::Option* pOption);
    static CLI::Option* AddTexts(CLI::App& command, const char* pNames, const char* pValue,
                                 std::vector<std::string>& vecTexts, const char* pSummary);
    static void AddFlag(CLI::App& command, const char* pNames, bool& bFlag, const char* pSummary);
    /** Gives an option these values as if they stood on the command line. @throws CLI::ParseError */
    static void Give(CLI::Option& option, const std::vector<std::string>& vecValues);

    /**
     * Every option and argument: those of every command first (the command's words are ""), then command by command in
     * the order of the help.
     */
    void ForEachOption(const std::function<void(const std::string& strCommand, CLI::Option&)>& fnOption);

    struct SParsed {
        Run fnRun;  ///< empty: show strShow, and be done
        std::string strShow;
        bool bVersion = false;
    };
    /** @param vecArguments without the program's name @throws CToolError (USAGE) */
    SParsed Parse(const std::vector<std::string>& vecArguments);
    /** @return the name of the JSON form of the command that was given, as far as it is known */
    const char* GetFormat() const;

    struct SCommand {
        CLI::App* pApp;
        SCommandHelp help;
        Run fnRun;
    };
    /** In the order of the help. */
    const std::vector<SCommand>& GetCommands() const { return m_vecCommands; }
    /** @return the command's words, as store dump */
    std::string GetWords(const SCommand& command) const;
    /** @return the end of the tool's help: where to begin, what holds for all commands */
    static const char* GetFirstSteps();

    /** @param vecWords a command's words; none: the tool's help @throws CToolError (USAGE) */
    std::string GetHelp(const std::vector<std::string>& vecWords) const;

  private:
    const SCommand* FindGiven() const;
    /** @return the command that was given, else the words that several begin with, else the tool */
    const CLI::App& FindAsked() const;
    std::string MakeHelp(const CLI::App& app) const;
    std::string ListCommands(const CLI::App& parent) const;
    std::string SeeCommands(const CLI::App& parent) const;
    /** @param strWhy empty: no known command is given @param bShowsUsage what the command takes says more than its help
     */
    [[noreturn]] void Refuse(const std::string& strWhy, bool bShowsUsage = false) const;
    [[noreturn]] void RefuseCommand(const CLI::App& parent, const std::string& strWord) const;

    CLI::App m_app;
    std::size_t m_iWidth;
    std::vector<SCommand> m_vecCommands;
};
