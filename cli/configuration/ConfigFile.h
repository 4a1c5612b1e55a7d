#pragma once

#include <string>
#include <vector>

#include "platform/common/SourcePlaces.h"

class CCommandContext;

/** What a value of the configuration file is. */
enum class EConfigValue { TEXT, FLAG, TEXTS, OTHER };

/** One line "key = value" of the configuration file. */
struct SConfigEntry {
    std::string strTable;  ///< "" above the first table
    std::string strKey;    ///< "" for the table's own line
    SPlace place;
    EConfigValue eValue = EConfigValue::OTHER;
    std::vector<std::string> vecValues;  ///< of a flag "true" or "false"
};

/** @return where the configuration file is looked for; "" when neither $XDG_CONFIG_HOME nor $HOME says where */
std::string FindConfigFile();

/**
 * @param strPath "", or a path at which nothing stands: no entries
 * @return what the file says, in its order
 * @throws CToolError (USAGE) naming the file, with the place when it is no TOML
 */
std::vector<SConfigEntry> ReadConfigFile(CCommandContext& context, const std::string& strPath);
