#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <string>

class CCommandContext;

/**
 * A bar on a terminal for work that takes longer than a second; nothing anywhere else. Work tells what it expects and
 * each step it does where these are known, without knowing who shows them: the innermost bar that there is does.
 */
class CProgress {
  public:
    CProgress(CCommandContext& context, const std::string& strWhat);
    /** @param strWhat printable */
    CProgress(std::ostream& err, bool bShown, std::string strWhat);
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;
    /** Wipes the bar away. */
    ~CProgress();

    /** More steps are to come. */
    static void Expect(std::size_t iSteps);
    static void Step(std::size_t iSteps = 1);

  private:
    void Draw();

    static CProgress* s_pInnermost;

    CProgress* m_pOuter;
    std::ostream& m_err;
    std::string m_strWhat;
    std::size_t m_iExpected = 0;
    std::size_t m_iDone = 0;
    bool m_bShown;
    bool m_bDrawn = false;
    std::chrono::steady_clock::time_point m_next;
};
