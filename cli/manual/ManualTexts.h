#pragma once

/** Pages of docs/ as they stand there; the build puts them into the program. */
namespace ManualText {

extern const char COMMANDS[];  ///< dlpctl.md
extern const char FORMATS[];   ///< formats.md

}  // namespace ManualText
