#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/store/CSettingsRow.h"
#include "templates/MatchRule.h"

/** @return what its columns hold, a line each, but for markup @param iWidth of the terminal; 0: no bound */
std::string MakeFieldTable(const CSettingsRow& row, std::size_t iWidth);

/** @return the keywords of a keyword list as a table, a line each */
std::string MakeKeywordTable(const CSettingsRow& row, std::size_t iWidth);

/** @return the parts of a rule, as P:card(2) AND K:words */
std::string MakeRuleText(const SMatchRule& rule);
/** @return a text for each rule, as P:card(2) AND K:words, with the rule's own operator before it if it has one */
std::vector<std::string> MakeRuleLines(const std::vector<SMatchRule>& vecRules);
