#include "cli/configuration/ConfigFile.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <tuple>

#include <toml++/toml.h>

#include "cli/InputFile.h"
#include "cli/Text.h"
#include "cli/Verdict.h"
#include "platform/common/TextConversion.h"

namespace {

constexpr const char FILE_BELOW_CONFIG[] = "/dlpctl/config.toml";
constexpr const char BELOW_HOME[] = "/.config";

/** The parser takes many times as much memory as the file, and what it makes of each part of a key holds the next one.
 */
constexpr std::size_t MOST_BYTES = std::size_t{1} << 20U;
constexpr const char TOO_LARGE[] = "it is larger than 1 MiB, and settings are not";
constexpr std::ptrdiff_t MOST_DOTS = 5000;
constexpr const char TOO_DEEP[] = "it has more than 5,000 dots, and settings have not";

std::string GetVariable(const char* pName) {
    const char* pValue = std::getenv(pName);
    return pValue != nullptr ? pValue : "";
}

SPlace ToPlace(const toml::source_region& region) {
    return {region.begin.line, region.begin.column};
}

/** Numbers are texts here: no option asks for more of them. */
bool AddText(const toml::node& node, std::vector<std::string>& vecValues) {
    if (const auto* pText = node.as_string()) {
        vecValues.push_back(pText->get());
    } else if (const auto* pNumber = node.as_integer()) {
        vecValues.push_back(std::to_string(pNumber->get()));
    } else {
        return false;
    }
    return true;
}

void ReadValue(const toml::node& node, SConfigEntry& entry) {
    if (const auto* pFlag = node.as_boolean()) {
        entry.eValue = EConfigValue::FLAG;
        entry.vecValues = {pFlag->get() ? "true" : "false"};
    } else if (const auto* pTexts = node.as_array()) {
        const bool bTexts = std::all_of(pTexts->begin(), pTexts->end(),
                                        [&](const toml::node& text) { return AddText(text, entry.vecValues); });
        entry.eValue = bTexts ? EConfigValue::TEXTS : EConfigValue::OTHER;
    } else if (AddText(node, entry.vecValues)) {
        entry.eValue = EConfigValue::TEXT;
    }
}

/** @throws CInputError for what the parser should not see */
std::string ReadText(CCommandContext& context, const std::string& strPath) {
    std::string strText = ReadBytes(context, strPath);
    if (strText.size() > MOST_BYTES) {
        throw CInputError(strPath, TOO_LARGE);
    }
    if (std::count(strText.begin(), strText.end(), '.') > MOST_DOTS) {
        throw CInputError(strPath, TOO_DEEP);
    }
    return strText;
}

void ReadTable(const toml::table& table, const std::string& strTable, std::vector<SConfigEntry>& vecEntries) {
    for (const auto& [key, node] : table) {
        SConfigEntry entry{strTable, std::string(key.str()), ToPlace(key.source()), EConfigValue::OTHER, {}};
        if (strTable.empty() && node.is_table()) {
            vecEntries.push_back({entry.strKey, "", entry.place, EConfigValue::OTHER, {}});
            ReadTable(*node.as_table(), entry.strKey, vecEntries);
        } else {
            ReadValue(node, entry);
            vecEntries.push_back(std::move(entry));
        }
    }
}

}  // namespace

std::string FindConfigFile() {
    // A relative XDG_CONFIG_HOME counts as none, as the base directory rules want it.
    const std::string strConfig = GetVariable("XDG_CONFIG_HOME");
    if (!strConfig.empty() && strConfig[0] == '/') {
        return strConfig + FILE_BELOW_CONFIG;
    }
    const std::string strHome = GetVariable("HOME");
    return strHome.empty() ? std::string() : strHome + BELOW_HOME + FILE_BELOW_CONFIG;
}

std::vector<SConfigEntry> ReadConfigFile(CCommandContext& context, const std::string& strPath) {
    std::error_code error;
    if (strPath.empty() ||
        std::filesystem::symlink_status(strPath, error).type() == std::filesystem::file_type::not_found) {
        return {};
    }
    try {
        std::vector<SConfigEntry> vecEntries;
        ReadTable(toml::parse(ReadText(context, strPath)), "", vecEntries);
        std::sort(vecEntries.begin(), vecEntries.end(), [](const SConfigEntry& left, const SConfigEntry& right) {
            return std::tie(left.place.iLine, left.place.iColumn) < std::tie(right.place.iLine, right.place.iColumn);
        });
        return vecEntries;
    } catch (const toml::parse_error& fault) {
        throw CToolError(EVerdict::USAGE,
                         FormatPlace(strPath, ToPlace(fault.source())) + ": " + Text::Printable(fault.description()));
    } catch (const CInputError& fault) {
        throw CToolError(EVerdict::USAGE, fault.what());
    }
}
