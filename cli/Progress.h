#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <string>

/** A bar on a terminal for work that takes longer than a moment; nothing anywhere else. */
class CProgress {
  public:
    /** @param strWhat printable @param iSteps how many are expected */
    CProgress(std::ostream& err, bool bShown, std::string strWhat, std::size_t iSteps);
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;
    /** Wipes the bar away. */
    ~CProgress();

    void Step();

  private:
    void Draw();

    std::ostream& m_err;
    std::string m_strWhat;
    std::size_t m_iSteps;
    std::size_t m_iDone = 0;
    bool m_bShown;
    bool m_bDrawn = false;
    std::chrono::steady_clock::time_point m_next;
};
