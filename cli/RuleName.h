#pragma once

#include <string>

#include "templates/MatchRule.h"

/** @return whether a rule that refers to an asset of this name is the same after it was written as text and read again
 */
bool SurvivesRuleText(EElementType eType, const std::string& strName);

/**
 * @return why rules that refer to an asset of this name cannot be written as text, printable; empty when they can
 */
std::string ExplainRuleName(EElementType eType, const std::string& strName);
