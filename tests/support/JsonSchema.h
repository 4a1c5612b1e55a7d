#pragma once

#include <string>

#include <nlohmann/json.hpp>

/**
 * Holds a value against a JSON Schema (draft 2020-12) that uses no more than type, const, enum, properties, required,
 * additionalProperties, items, anyOf and references to $defs; a schema with any other keyword is refused.
 * @return the first violation as "/place/in/the/value: what is wrong"; "" when there is none
 */
std::string FindSchemaViolation(const nlohmann::json& schema, const nlohmann::json& value);

/** The same for the schema docs/schemas/NAME.schema.json and a text. */
std::string CheckAnswer(const std::string& strName, const std::string& strJson);

/**
 * The same for what a run of the tool wrote, if that is JSON: one object, or one on each line. The schema is the one
 * that the member "format" names; an object without one must name its own schema.
 */
std::string CheckAnswers(const std::string& strOutput);
