#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "platform/store/CSettingsRow.h"
#include "platform/xml/CXMLView.h"
#include "templates/MatchRule.h"

/** One keyword of a keyword list, as stored. */
struct SKeyword {
    std::string strKeyword;
    std::string strDescription;
    int iScore = 0;
    bool bCaseSensitive = false;

    bool operator==(const SKeyword&) const = default;
};

/** @param element of a keyword */
SKeyword ReadKeyword(const CXMLView& element);
/** @return the keywords of a keyword list's row in stored order; none when its text is no dictionary */
std::vector<SKeyword> ReadKeywords(const CSettingsRow& row);
/** @return the match rules of a template's row, as the library reads them */
std::vector<SMatchRule> ReadRules(const CSettingsRow& row);

/** @return one column's value */
nlohmann::ordered_json ColumnToJson(const CSettingsRow& row, std::size_t iColumn);
/**
 * A record as JSON and back, driven by its table's description: one member per column, named as the column. What can be
 * read from a column that holds XML follows for convenience (keywords, match_rules) and is ignored on the way back.
 */
nlohmann::ordered_json RecordToJson(const CSettingsRow& row);

/**
 * @param strPath where the object stands in its document, for messages
 * @throws CToolError (INVALID) naming the member that is missing, of a wrong type or holds what no store keeps
 */
CSettingsRow RecordFromJson(ESettingsKind eKind, const nlohmann::ordered_json& object, const std::string& strPath);
