#include "cli/configuration/Configuration.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <iterator>
#include <sstream>

#include <CLI/App.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/InputFile.h"
#include "cli/NearestName.h"
#include "cli/Text.h"
#include "cli/Verdict.h"
#include "cli/configuration/ConfigFile.h"
#include "platform/common/TextConversion.h"
#include "platform/common/TextTools.h"

namespace {

constexpr const char VARIABLE_PREFIX[] = "DLPCTL_";
constexpr const char TRUE[] = "true";
constexpr const char FALSE[] = "false";

/** What the library reads by itself has no second name. */
struct SKnownVariable {
    const char* pKey;
    const char* pVariable;
};
constexpr SKnownVariable KNOWN_VARIABLES[] = {{"store", "DLP_STORE"}, {"home", "DLP_INSTALL_PATH"}};

std::string MakeOwnVariable(std::string strName) {
    std::transform(strName.begin(), strName.end(), strName.begin(),
                   [](unsigned char c) { return c == '-' ? '_' : static_cast<char>(std::toupper(c)); });
    return VARIABLE_PREFIX + strName;
}

/** The words for a flag in the environment. */
struct SFlagWord {
    const char* pWord;
    const char* pValue;
};
constexpr SFlagWord FLAG_WORDS[] = {{TRUE, TRUE},   {"1", TRUE},  {"yes", TRUE}, {"on", TRUE},
                                    {FALSE, FALSE}, {"0", FALSE}, {"no", FALSE}, {"off", FALSE}};

std::string MakeVariable(const std::string& strTable, const std::string& strKey) {
    for (const SKnownVariable& known : KNOWN_VARIABLES) {
        if (strTable.empty() && strKey == known.pKey) {
            return known.pVariable;
        }
    }
    return MakeOwnVariable(strTable.empty() ? strKey : strTable + '-' + strKey);
}

/** @return null when it is empty too */
const char* FindVariable(const std::string& strVariable) {
    const char* pValue = std::getenv(strVariable.c_str());
    return pValue != nullptr && *pValue != '\0' ? pValue : nullptr;
}

[[noreturn]] void Refuse(const std::string& strPlace, const std::string& strWhy) {
    throw CToolError(EVerdict::USAGE, strPlace + ": " + strWhy);
}

std::string Ask(const std::string& strWanted, const std::vector<std::string>& vecNames) {
    const std::string strNearest = FindNearestName(strWanted, vecNames);
    return strNearest.empty() ? "; dlpctl config lists what there is"
                              : "; did you mean " + Text::Quoted(strNearest) + '?';
}

void CheckValue(const SConfigEntry& entry, const SSetting& setting, const std::string& strPlace) {
    const bool bText = entry.eValue == EConfigValue::TEXT;
    const bool bTexts = entry.eValue == EConfigValue::TEXTS && setting.TakesSeveral();
    if (setting.IsFlag() ? entry.eValue != EConfigValue::FLAG : !bText && !bTexts) {
        Refuse(strPlace, entry.strKey + ": " +
                             (setting.IsFlag()         ? "write true or false"
                              : setting.TakesSeveral() ? "write a text in quotes, or a list of them in square brackets"
                                                       : "write a text in quotes"));
    }
}

/** Several values stand on lines of their own: a name may hold any other character. */
std::vector<std::string> SplitLines(const std::string& strText) {
    std::vector<std::string> vecLines;
    std::istringstream text(strText);
    for (std::string strLine; std::getline(text, strLine);) {
        vecLines.push_back(strLine);
    }
    return vecLines;
}

std::vector<std::string> ReadVariable(const SSetting& setting, const std::string& strValue) {
    if (OS::FindInvalidUtf8(strValue) != std::string::npos) {
        Refuse(setting.strPlace, "its value is not UTF-8");
    }
    if (!setting.IsFlag()) {
        return setting.TakesSeveral() ? SplitLines(strValue) : std::vector<std::string>{strValue};
    }
    for (const SFlagWord& word : FLAG_WORDS) {
        if (OS::EqualsNoCase(strValue, std::string_view(word.pWord))) {
            return {word.pValue};
        }
    }
    Refuse(setting.strPlace, Text::Quoted(strValue) + " is neither true nor false");
}

/** @return whether a message speaks of the option */
bool Names(const std::string& strMessage, const std::string& strOption) {
    const std::size_t iStart = strMessage.find(strOption);
    if (iStart == std::string::npos) {
        return false;
    }
    const std::size_t iEnd = iStart + strOption.size();
    return iEnd == strMessage.size() ||
           (strMessage[iEnd] != '-' && std::isalpha(static_cast<unsigned char>(strMessage[iEnd])) == 0);
}

}  // namespace

bool SSetting::IsFlag() const {
    return pOption->get_expected_min() == 0;
}

bool SSetting::TakesSeveral() const {
    return pOption->get_expected_max() > 1;
}

void CConfiguration::Apply(CCommandContext& context) {
    ListSettings();
    m_strFile = FindConfigFile();
    ApplyFile(context);
    ApplyEnvironment();
    for (SSetting& setting : m_vecSettings) {
        Set(setting);
    }
}

void CConfiguration::ListSettings() {
    m_vecSettings.clear();
    m_line.ForEachOption([this](const std::string& strCommand, CLI::Option& option) {
        if (option.get_positional() || !option.get_configurable()) {
            return;
        }
        SSetting setting;
        setting.pOption = &option;
        setting.strCommand = strCommand;
        setting.strTable = strCommand;
        std::replace(setting.strTable.begin(), setting.strTable.end(), ' ', '-');
        setting.strKey = option.get_lnames().front();
        setting.strVariable = MakeVariable(setting.strTable, setting.strKey);
        m_vecSettings.push_back(std::move(setting));
    });
}

void CConfiguration::ApplyFile(CCommandContext& context) {
    for (SConfigEntry& entry : ReadConfigFile(context, m_strFile)) {
        const std::string strPlace = FormatPlace(m_strFile, entry.place);
        SSetting& setting = FindSetting(entry, strPlace);
        if (!entry.strKey.empty()) {
            CheckValue(entry, setting, strPlace);
            setting.eOrigin = EOrigin::CONFIG_FILE;
            setting.strPlace = strPlace;
            setting.vecValues = std::move(entry.vecValues);
        }
    }
}

/** For the line of a table itself: any option of it. */
SSetting& CConfiguration::FindSetting(const SConfigEntry& entry, const std::string& strPlace) {
    std::vector<std::string> vecTables;
    std::vector<std::string> vecKeys;
    for (SSetting& setting : m_vecSettings) {
        vecTables.push_back(setting.strTable);
        if (setting.strTable != entry.strTable) {
            continue;
        }
        if (entry.strKey.empty() || setting.strKey == entry.strKey) {
            return setting;
        }
        vecKeys.push_back(setting.strKey);
    }
    if (entry.strKey.empty()) {
        Refuse(strPlace, "there is no table " + Text::Quoted(entry.strTable) + Ask(entry.strTable, vecTables));
    }
    Refuse(strPlace, "there is no key " + Text::Quoted(entry.strKey) + Ask(entry.strKey, vecKeys));
}

void CConfiguration::ApplyEnvironment() {
    for (SSetting& setting : m_vecSettings) {
        if (const char* pValue = FindVariable(setting.strVariable)) {
            setting.eOrigin = EOrigin::ENVIRONMENT;
            setting.strPlace = '$' + setting.strVariable;
            setting.vecValues = ReadVariable(setting, pValue);
        }
    }
}

void CConfiguration::Set(SSetting& setting) {
    CLI::Option& option = *setting.pOption;
    if (option.count() > 0) {
        setting.eOrigin = EOrigin::COMMAND_LINE;
        setting.strPlace.clear();
        setting.vecValues = option.results();
        return;
    }
    const bool bOwnVariable = setting.strVariable.rfind(VARIABLE_PREFIX, 0) == 0;
    if (setting.vecValues.empty() || (setting.eOrigin == EOrigin::ENVIRONMENT && !bOwnVariable)) {
        return;
    }
    try {
        CCommandLine::Give(option, setting.vecValues);
    } catch (const CLI::ParseError& error) {
        const std::string strWhy = error.what();
        const std::string strName = option.get_name() + ": ";
        Refuse(setting.strPlace,
               Text::Printable(strWhy.rfind(strName, 0) == 0 ? setting.strKey + strWhy.substr(strName.size() - 2)
                                                             : setting.strKey + ": " + strWhy));
    }
}

void CConfiguration::WarnOfUnread(CCommandContext& context) {
    for (const SKnownVariable& known : KNOWN_VARIABLES) {
        const std::string strUnread = MakeOwnVariable(known.pKey);
        if (FindVariable(strUnread) != nullptr) {
            context.Warn('$' + strUnread + " is not read; the variable of --" + known.pKey + " is " + known.pVariable);
        }
    }
}

bool CConfiguration::IsUnread(const std::string& strVariable) {
    return std::any_of(std::begin(KNOWN_VARIABLES), std::end(KNOWN_VARIABLES),
                       [&](const SKnownVariable& known) { return strVariable == MakeOwnVariable(known.pKey); });
}

std::string CConfiguration::Explain(const std::string& strMessage) const {
    const auto itNamed = std::find_if(m_vecSettings.begin(), m_vecSettings.end(), [&](const SSetting& setting) {
        return !setting.strPlace.empty() && Names(strMessage, "--" + setting.strKey);
    });
    return itNamed == m_vecSettings.end() ? strMessage : itNamed->strPlace + ": " + strMessage;
}
