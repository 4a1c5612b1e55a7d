#include "templates/PatternMatcher.h"

#include <algorithm>

#include "templates/CResultException.h"

// Whether the rest of a text matches from a step and a position on does not depend on how they were reached: there are
// no back references. So each pair is tried once. A match makes the pairs at its end unsure (they did not fail, or
// failed only because a loop met itself), and they are forgotten; later searches begin there and never look further
// back.

namespace {
constexpr std::size_t FIRST_ROOM = 256;
thread_local std::uint64_t s_iStepCount = 0;
}  // namespace

CPatternMatcher::CPatternMatcher(const CPattern& pattern, std::wstring_view strText)
    : m_pattern(pattern),
      m_strText(strText),
      m_vecTried(pattern.GetSteps().size() * (strText.size() + 1)),
      m_vecSlots(2 * pattern.GetGroupCount(), NOWHERE) {
    m_vecPending.reserve(FIRST_ROOM);
}

std::uint64_t CPatternMatcher::GetStepCount() {
    return s_iStepCount;
}

bool CPatternMatcher::Search(std::size_t iStart) {
    if (iStart < m_iTrusted) {
        m_vecTried.assign(m_vecTried.size(), false);
        m_iTrusted = 0;
    }
    for (; iStart <= m_strText.size(); ++iStart) {
        if (MatchAt(iStart)) {
            return true;
        }
    }
    return false;
}

CPatternMatcher::SSpan CPatternMatcher::GetGroup(std::size_t iGroup) const {
    if (iGroup >= m_pattern.GetGroupCount()) {
        throw CResultException(CResultException::INVALID_ARGUMENT);
    }
    const SSpan span = {m_vecSlots[2 * iGroup], m_vecSlots[2 * iGroup + 1]};
    if (span.iStart == NOWHERE || span.iEnd == NOWHERE) {
        throw CResultException(CResultException::FAIL);
    }
    return span;
}

bool CPatternMatcher::MatchAt(std::size_t iStart) {
    std::fill(m_vecSlots.begin(), m_vecSlots.end(), NOWHERE);
    m_vecPending.assign(1, {0, TRY, iStart});
    while (!m_vecPending.empty()) {
        const SPending pending = m_vecPending.back();
        m_vecPending.pop_back();
        if (pending.iSlot != TRY) {
            m_vecSlots[pending.iSlot] = pending.iPosition;
        } else if (Follow(pending.iStep, pending.iPosition)) {
            m_match.iStart = iStart;
            return true;
        }
    }
    return false;
}

/** Runs until the way ends in a match (true) or fails. */
bool CPatternMatcher::Follow(std::size_t iStep, std::size_t iPosition) {
    const auto Target = [&](int iOffset) { return iStep + static_cast<std::size_t>(iOffset); };
    while (!IsTried(iStep, iPosition)) {
        const CPattern::SStep& step = m_pattern.GetSteps()[iStep];
        const bool bMore = iPosition < m_strText.size();
        bool bTaken = true;
        switch (step.eStep) {
            case CPattern::EStep::CHARACTER:
                bTaken = bMore && m_strText[iPosition++] == step.character;
                ++iStep;
                break;
            case CPattern::EStep::ANY:
                bTaken = bMore;
                ++iPosition;
                ++iStep;
                break;
            case CPattern::EStep::CLASS:
                bTaken = bMore && m_pattern.IsInClass(step, m_strText[iPosition++]);
                ++iStep;
                break;
            case CPattern::EStep::SPLIT:
                m_vecPending.push_back({Target(step.iSecond), TRY, iPosition});
                iStep = Target(step.iFirst);
                break;
            case CPattern::EStep::JUMP:
                iStep = Target(step.iFirst);
                break;
            case CPattern::EStep::SAVE: {
                std::size_t& iSlot = m_vecSlots[static_cast<std::size_t>(step.iFirst)];
                m_vecPending.push_back({0, static_cast<std::size_t>(step.iFirst), iSlot});
                iSlot = iPosition;
                ++iStep;
                break;
            }
            case CPattern::EStep::MATCH:
                m_match.iEnd = iPosition;
                ForgetAt(iPosition);
                return true;
        }
        if (!bTaken) {
            return false;
        }
    }
    return false;
}

bool CPatternMatcher::IsTried(std::size_t iStep, std::size_t iPosition) {
    ++s_iStepCount;
    const std::size_t iPair = iPosition * m_pattern.GetSteps().size() + iStep;
    if (m_vecTried[iPair]) {
        return true;
    }
    m_vecTried[iPair] = true;
    return false;
}

void CPatternMatcher::ForgetAt(std::size_t iPosition) {
    m_iTrusted = iPosition;
    const auto itColumn = m_vecTried.begin() + static_cast<std::ptrdiff_t>(iPosition * m_pattern.GetSteps().size());
    std::fill_n(itColumn, m_pattern.GetSteps().size(), false);
}
