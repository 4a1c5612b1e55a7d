#pragma once

#include <stdexcept>
#include <string>

/** How a command ended. Exit codes and their names in JSON stand in one table. */
enum class EVerdict {
    DONE,         ///< all of it
    FINDINGS,     ///< done, but something was skipped, left out, not stored or found wanting
    INVALID,      ///< the input is invalid, nothing was written
    USAGE,        ///< wrong command line or configuration
    STORE,        ///< the store cannot be used, or reported a failure
    OUTPUT,       ///< the output cannot be written
    MEMORY,       ///< memory ran out
    INTERRUPTED,  ///< by a signal
};

const char* GetVerdictName(EVerdict eVerdict);
/** @return the program's exit code; for an interruption that of the signal which was caught */
int GetExitCode(EVerdict eVerdict);
/** @return the one of higher exit code; the first when they are equal */
EVerdict GetWorse(EVerdict eFirst, EVerdict eSecond);

/** Ends a command, or what it does with one file. */
class CToolError : public std::runtime_error {
  public:
    /** @param strMessage one line for people, without control characters; empty: end without a word */
    CToolError(EVerdict eVerdict, const std::string& strMessage)
        : std::runtime_error(strMessage), m_eVerdict(eVerdict) {}
    EVerdict GetVerdict() const { return m_eVerdict; }

  private:
    EVerdict m_eVerdict;
};
