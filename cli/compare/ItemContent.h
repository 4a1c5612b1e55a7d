#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/store/CSettingsRow.h"

/** @return whether a difference in the column is one of the policy, and not of names or marks of the store */
bool IsCompared(ESettingsKind eKind, std::size_t iColumn);

/** @return the same text for two items of a kind just when they differ in no column that is compared but the display
 * name */
std::string MakeFieldContent(const CSettingsRow& row);

/** @return the same text for two keyword lists just when they hold the same keywords */
std::string MakeKeywordContent(const CSettingsRow& row);

/** @param vecRules a text each @return the same text just for the same rules */
std::string MakeRuleContent(const std::vector<std::string>& vecRules);
