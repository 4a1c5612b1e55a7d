#include "cli/Progress.h"

#include <algorithm>
#include <ostream>
#include <utility>

namespace {
constexpr auto FIRST_AFTER = std::chrono::milliseconds(500);
constexpr auto NEXT_AFTER = std::chrono::milliseconds(100);
constexpr std::size_t WIDTH = 30;
constexpr const char WIPE[] = "\r\x1b[K";
}  // namespace

CProgress::CProgress(std::ostream& err, bool bShown, std::string strWhat, std::size_t iSteps)
    : m_err(err),
      m_strWhat(std::move(strWhat)),
      m_iSteps(std::max<std::size_t>(iSteps, 1)),
      m_bShown(bShown),
      m_next(std::chrono::steady_clock::now() + FIRST_AFTER) {}

CProgress::~CProgress() {
    if (m_bDrawn) {
        m_err << WIPE << std::flush;
    }
}

void CProgress::Step() {
    ++m_iDone;
    if (m_bShown && std::chrono::steady_clock::now() >= m_next) {
        Draw();
    }
}

void CProgress::Draw() {
    const std::size_t iDone = std::min(m_iDone, m_iSteps);
    const std::size_t iFilled = WIDTH * iDone / m_iSteps;
    m_err << WIPE << m_strWhat << " [" << std::string(iFilled, '#') << std::string(WIDTH - iFilled, ' ') << "] "
          << 100 * iDone / m_iSteps << '%' << std::flush;
    m_bDrawn = true;
    m_next = std::chrono::steady_clock::now() + NEXT_AFTER;
}
