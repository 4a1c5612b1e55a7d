#pragma once

#include "tests/model/driver/Sequence.h"

/** What a sequence can ask of the library; tests/model/README.md lists the operations with their arguments. */
namespace Operations {

/**
 * Runs one operation and adds its fields to result.
 * @throws what the library throws; std::exception for an operation that is none
 */
void Run(const Json& operation, Json& result);

}  // namespace Operations
