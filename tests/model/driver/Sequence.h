#pragma once

#include <iosfwd>
#include <string>

#include <nlohmann/json.hpp>

using Json = nlohmann::ordered_json;

/** Which store a sequence runs on; each sequence begins with an empty one. */
enum class EStoreMake { MEMORY, SQLITE };

/**
 * Runs the operations of one sequence in a folder of its own, which is installation directory and working directory at
 * once, and writes one line of JSON per operation: what it gave, what it logged, and the store after it. Versions,
 * languages, name maps and policy lists last as long as a process, so each sequence wants one of its own.
 */
void RunSequence(const Json& sequence, EStoreMake eStore, std::ostream& out);
