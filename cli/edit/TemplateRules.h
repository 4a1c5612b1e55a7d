#pragma once

#include <vector>

#include "platform/store/CSettingsRow.h"
#include "templates/MatchRule.h"

/**
 * Writes rules into a template's record, as an import of its element would store them. The element then holds nothing
 * but its name and the rules.
 * @param row with its name; not a built-in one
 * @throws CToolError (INVALID) for what XML cannot carry
 */
void SetTemplateRules(const std::vector<SMatchRule>& vecRules, CSettingsRow& row);
