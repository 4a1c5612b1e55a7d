#pragma once

#include <cstdint>

/**
 * What the pattern matcher throws when it is used wrongly: a result code, and nothing that the handlers of other
 * exceptions would take for theirs.
 */
class CResultException {
  public:
    static constexpr std::uint32_t FAIL = 0x80004005U;              ///< a group that took no part in the match
    static constexpr std::uint32_t INVALID_ARGUMENT = 0x80070057U;  ///< no such group, or no pattern of the dialect

    explicit CResultException(std::uint32_t iResult) : m_iResult(iResult) {}
    std::uint32_t GetResult() const { return m_iResult; }

  private:
    std::uint32_t m_iResult;
};
