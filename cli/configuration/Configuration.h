#pragma once

#include <string>
#include <vector>

namespace CLI {
class Option;
}

class CCommandContext;
class CCommandLine;
struct SConfigEntry;

/** Where an option's value comes from; a later one counts before an earlier one. */
enum class EOrigin { DEFAULT, CONFIG_FILE, ENVIRONMENT, COMMAND_LINE };

/** An option, the names by which it can be set elsewhere than on the command line, and what it is set to. */
struct SSetting {
    CLI::Option* pOption = nullptr;
    std::string strCommand;   ///< the command's words; "" for the options of every command
    std::string strTable;     ///< the same joined by dashes: the table in the file
    std::string strKey;       ///< in that table
    std::string strVariable;  ///< in the environment
    EOrigin eOrigin = EOrigin::DEFAULT;
    std::string strPlace;                ///< printable: FILE:LINE:COLUMN or $VARIABLE; "" for the other origins
    std::vector<std::string> vecValues;  ///< of a flag "true" or "false"; empty: the default

    bool IsFlag() const;
    bool TakesSeveral() const;
};

/**
 * The options that the environment and a file set. All of them can be set there but --help and --version; what stands
 * on the command line by its place (files, names) cannot.
 */
class CConfiguration {
  public:
    /** @param line must outlive this object */
    explicit CConfiguration(CCommandLine& line) : m_line(line) {}

    /**
     * Gives every option of every command its value, unless the command line did.
     * @throws CToolError (USAGE) for what names no option, and for a value that its option does not take
     */
    void Apply(CCommandContext& context);
    /** Warns of variables that are set and look as if they were those of --store and --home, which have other ones. */
    static void WarnOfUnread(CCommandContext& context);
    static bool IsUnread(const std::string& strVariable);
    /** @return all options in the order of the help; what they are set to after Apply */
    const std::vector<SSetting>& GetSettings() const { return m_vecSettings; }
    /** @return where the file is looked for; "" nowhere */
    const std::string& GetFile() const { return m_strFile; }
    /** @return the message of a usage error, behind the place where the option that it names was set, if elsewhere */
    std::string Explain(const std::string& strMessage) const;

  private:
    void ListSettings();
    void ApplyFile(CCommandContext& context);
    SSetting& FindSetting(const SConfigEntry& entry, const std::string& strPlace);
    void ApplyEnvironment();
    static void Set(SSetting& setting);

    CCommandLine& m_line;
    std::string m_strFile;
    std::vector<SSetting> m_vecSettings;
};
