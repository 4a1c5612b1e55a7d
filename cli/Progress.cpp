#include "cli/Progress.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "cli/CommandContext.h"
#include "cli/Text.h"

namespace {
constexpr auto FIRST_AFTER = std::chrono::seconds(1);
constexpr auto NEXT_AFTER = std::chrono::milliseconds(100);
constexpr std::size_t WIDTH = 30;
constexpr const char WIPE[] = "\r\x1b[K";
}  // namespace

CProgress* CProgress::s_pInnermost = nullptr;

CProgress::CProgress(CCommandContext& context, const std::string& strWhat)
    : CProgress(context.GetError(), context.ShowsProgress(), Text::Printable(strWhat)) {}

CProgress::CProgress(std::ostream& err, bool bShown, std::string strWhat)
    : m_pOuter(std::exchange(s_pInnermost, this)),
      m_err(err),
      m_strWhat(std::move(strWhat)),
      m_bShown(bShown),
      m_next(std::chrono::steady_clock::now() + FIRST_AFTER) {}

CProgress::~CProgress() {
    s_pInnermost = m_pOuter;
    if (m_bDrawn) {
        m_err << WIPE << std::flush;
    }
}

void CProgress::Expect(std::size_t iSteps) {
    if (s_pInnermost != nullptr) {
        s_pInnermost->m_iExpected += iSteps;
    }
}

void CProgress::Step(std::size_t iSteps) {
    if (s_pInnermost == nullptr) {
        return;
    }
    s_pInnermost->m_iDone += iSteps;
    if (s_pInnermost->m_bShown && std::chrono::steady_clock::now() >= s_pInnermost->m_next) {
        s_pInnermost->Draw();
    }
}

void CProgress::Draw() {
    const std::size_t iExpected = std::max<std::size_t>(m_iExpected, 1);
    const std::size_t iDone = std::min(m_iDone, iExpected);
    const std::size_t iFilled = WIDTH * iDone / iExpected;
    m_err << WIPE << m_strWhat << " [" << std::string(iFilled, '#') << std::string(WIDTH - iFilled, ' ') << "] "
          << 100 * iDone / iExpected << '%' << std::flush;
    m_bDrawn = true;
    m_next = std::chrono::steady_clock::now() + NEXT_AFTER;
}
