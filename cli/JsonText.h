#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

/**
 * @param iIndent negative: on one line
 * @return the value's JSON; control characters and others that mislead (DBG::IsControl) are \uXXXX in it
 */
std::string ToJsonText(const nlohmann::ordered_json& value, int iIndent = -1);
