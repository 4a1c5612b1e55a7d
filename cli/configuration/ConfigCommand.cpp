#include "cli/configuration/ConfigCommand.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <unistd.h>

#include <nlohmann/json.hpp>

#include "api/CDLPDigitalAssetsParser.h"
#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/NearestName.h"
#include "cli/Text.h"
#include "cli/Verdict.h"
#include "cli/check/DiagnosticCodes.h"
#include "cli/configuration/Configuration.h"
#include "cli/edit/GivenOption.h"
#include "platform/common/TextConversion.h"
#include "platform/common/TextTools.h"
#include "platform/system/InstallPath.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr SCommandHelp HELP = {
    "config",
    "config [--origin]",
    "list every option with its value",
    "An option is set on the command line, else by its environment variable, else in config.toml below\n"
    "$XDG_CONFIG_HOME/dlpctl (or ~/.config/dlpctl), else it has its default. --origin names these places; --json\n"
    "lists the variables and keys as well. An empty variable counts as none. In the file, options of every command\n"
    "stand at the top, others in a table per command:\n"
    "\n"
    "  language = \"English\"\n"
    "  [check]\n"
    "  strict = true\n"
    "  allow = [\"unused-asset\", \"DLP034\"]\n"
    "  [assets-export]\n"
    "  indent = true\n"
    "\n"
    "The variables are DLP_STORE, DLP_INSTALL_PATH (--home), DLPCTL_LANGUAGE, DLPCTL_CHECK_STRICT and so on; one\n"
    "that takes several values has each on a line. A flag that is set elsewhere is taken back by --strict=false.\n",
    "  dlpctl config\n"
    "  dlpctl config --origin\n"
    "  dlpctl --json config\n",
    "dlpctl-config/1",
};

// How the help of an option writes what its value is.
constexpr std::string_view CODE_FORM = "CODE";
constexpr std::string_view NUMBER_FORM = "N";
constexpr char CHOICE_END = '|';

/** The commands that edit assets read words in any case of letters; the others as they stand. */
constexpr const char* ANY_CASE[] = {"expression", "keywords"};

constexpr const char VARIABLE_PREFIX[] = "DLPCTL_";
constexpr const char* ORIGINS[] = {"default", "file", "environment", "command line"};

std::string GetStore(const CCommandContext& context) {
    return context.GetStoreUrl();
}
std::string GetHome(const CCommandContext&) {
    return OS::Utf8Lenient(SYS::GetInstallPath());
}
std::string GetLanguage(const CCommandContext&) {
    return OS::Utf8Lenient(CDLPDigitalAssetsParser::GetLanguage());
}

/** Options whose default is found out. */
struct SFoundDefault {
    const char* pKey;
    std::string (*fnFind)(const CCommandContext& context);
};
constexpr SFoundDefault FOUND_DEFAULTS[] = {{"store", GetStore}, {"home", GetHome}, {"language", GetLanguage}};

std::vector<std::string> FindValues(const CCommandContext& context, const SSetting& setting) {
    if (!setting.vecValues.empty()) {
        return setting.vecValues;
    }
    for (const SFoundDefault& found : FOUND_DEFAULTS) {
        if (setting.strTable.empty() && setting.strKey == found.pKey) {
            return {found.fnFind(context)};
        }
    }
    const std::string strDefault = setting.IsFlag() ? "false" : setting.pOption->get_default_str();
    return strDefault.empty() ? std::vector<std::string>() : std::vector<std::string>{strDefault};
}

Json MakeValue(const SSetting& setting, const std::vector<std::string>& vecValues) {
    if (setting.IsFlag()) {
        return vecValues.back() == "true";
    }
    if (setting.TakesSeveral()) {
        return vecValues;
    }
    return vecValues.empty() ? Json() : Json(vecValues.back());
}

Json MakeOption(const CCommandContext& context, const SSetting& setting) {
    return {{"command", setting.strCommand},
            {"option", "--" + setting.strKey},
            {"key", setting.strTable.empty() ? setting.strKey : setting.strTable + '.' + setting.strKey},
            {"variable", setting.strVariable},
            {"value", MakeValue(setting, FindValues(context, setting))},
            {"origin", ORIGINS[static_cast<std::size_t>(setting.eOrigin)]},
            {"place", setting.strPlace.empty() ? Json() : Json(setting.strPlace)}};
}

Json MakeJson(const CCommandContext& context, const CConfiguration& configuration) {
    std::error_code error;
    const std::string& strFile = configuration.GetFile();
    Json object = {{"format", HELP.pFormat},
                   {"verdict", GetVerdictName(EVerdict::DONE)},
                   {"file", strFile.empty() ? Json() : Json(strFile)},
                   {"found", !strFile.empty() && std::filesystem::exists(strFile, error)},
                   {"options", Json::array()}};
    for (const SSetting& setting : configuration.GetSettings()) {
        object["options"].push_back(MakeOption(context, setting));
    }
    return object;
}

std::string MakeText(const CCommandContext& context, const CConfiguration& configuration, bool bOrigin) {
    CTextTable table(bOrigin ? std::vector<std::string>{"OPTION", "VALUE", "ORIGIN"}
                             : std::vector<std::string>{"OPTION", "VALUE"});
    for (const SSetting& setting : configuration.GetSettings()) {
        std::string strValues;
        for (const std::string& strValue : FindValues(context, setting)) {
            strValues += (strValues.empty() ? "" : ", ") + strValue;
        }
        std::vector<std::string> vecCells = {
            (setting.strCommand.empty() ? "" : setting.strCommand + ' ') + "--" + setting.strKey, strValues};
        if (bOrigin) {
            vecCells.push_back(setting.strPlace.empty() ? ORIGINS[static_cast<std::size_t>(setting.eOrigin)]
                                                        : setting.strPlace);
        }
        table.Add(vecCells);
    }
    return table.ToString(context.GetDataWidth());
}

/** A name that means nothing is most likely a slip; whether it is one, only its author knows. */
void WarnOfUnknownVariables(CCommandContext& context, const CConfiguration& configuration) {
    std::vector<std::string> vecNames;
    for (const SSetting& setting : configuration.GetSettings()) {
        vecNames.push_back(setting.strVariable);
    }
    for (char** ppVariable = environ; *ppVariable != nullptr; ++ppVariable) {
        const std::string strVariable = *ppVariable;
        const std::string strName = strVariable.substr(0, strVariable.find('='));
        if (strName.rfind(VARIABLE_PREFIX, 0) == 0 && !CConfiguration::IsUnread(strName) &&
            std::find(vecNames.begin(), vecNames.end(), strName) == vecNames.end()) {
            const std::string strNearest = FindNearestName(strName, vecNames);
            context.Warn('$' + Text::Printable(strName) + " is the variable of no option" +
                         (strNearest.empty() ? "" : "; did you mean " + Text::Quoted(strNearest) + '?'));
        }
    }
}

bool IsAllowed(const std::string& strCode) {
    try {
        FindAllowed(strCode);
        return true;
    } catch (const CToolError&) {
        return false;
    }
}

bool ReadsAnyCase(const SSetting& setting) {
    return std::any_of(std::begin(ANY_CASE), std::end(ANY_CASE),
                       [&](const char* pGroup) { return setting.strCommand.rfind(pGroup, 0) == 0; });
}

/** @return whether the option's own command takes the value, as far as the help's word for it tells */
bool IsTaken(const SSetting& setting, const std::string& strValue) {
    const std::string strForm = setting.pOption->get_type_name();
    if (strForm == CODE_FORM) {
        return IsAllowed(strValue);
    }
    if (strForm == NUMBER_FORM) {
        return ReadNumber(strValue).has_value();
    }
    std::istringstream choices(strForm);
    bool bAny = strForm.find(CHOICE_END) == std::string::npos;
    for (std::string strChoice; !bAny && std::getline(choices, strChoice, CHOICE_END);) {
        bAny =
            strChoice == strValue || (ReadsAnyCase(setting) && OS::EqualsNoCase(strChoice, std::string_view(strValue)));
    }
    return bAny;
}

/** No other command looks at the values of its options. */
void WarnOfRefusedValues(CCommandContext& context, const CConfiguration& configuration) {
    for (const SSetting& setting : configuration.GetSettings()) {
        for (const std::string& strValue : setting.vecValues) {
            if (!setting.strPlace.empty() && !setting.IsFlag() && !IsTaken(setting, strValue)) {
                context.Warn(setting.strPlace + ": dlpctl " + setting.strCommand + " does not take " +
                             Text::Quoted(strValue) + " for --" + setting.strKey);
            }
        }
    }
}

EVerdict List(CCommandContext& context, const CConfiguration& configuration, bool bOrigin) {
    WarnOfUnknownVariables(context, configuration);
    WarnOfRefusedValues(context, configuration);
    if (context.IsJson()) {
        context.WriteJson(MakeJson(context, configuration));
    } else {
        context.Write(MakeText(context, configuration, bOrigin));
    }
    return EVerdict::DONE;
}

}  // namespace

void AddConfigCommand(CCommandLine& line, const CConfiguration& configuration) {
    const auto pOrigin = std::make_shared<bool>(false);
    CLI::App& command = line.AddCommand(line.GetTop(), HELP, [&configuration, pOrigin](CCommandContext& context) {
        return List(context, configuration, *pOrigin);
    });
    CCommandLine::AddFlag(command, "--origin", *pOrigin, "say where each value comes from");
}
