#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

#include "cli/compare/RuleConditions.h"

/** @return the condition as rule texts have it, such as P:Card number(2) */
std::string FormatCondition(const SCondition& condition);
/** @return it as dumps have it: source_type, entity_hits, source_name */
nlohmann::ordered_json ConditionToJson(const SCondition& condition);
