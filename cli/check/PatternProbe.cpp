#include "cli/check/PatternProbe.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <algorithm>
#include <array>
#include <new>
#include <set>

#include "cli/check/PatternSample.h"
#include "platform/common/TextConversion.h"

namespace {

/** Steps grow with a power of this; with MAX_STEPS, two repetitions within each other pass and three do not. */
constexpr std::size_t SUBJECT_CHARACTERS = 240;

/** What is repeated: pieces of the sample, up to so many characters. */
constexpr std::size_t MAX_PUMP = 3;
constexpr std::size_t MAX_PUMPS = 12;

/** Matches hardly anything, so that a match fails where it is almost done. */
constexpr const char STOPPER[] = "\x01";

/** Most patterns need no more than the first of these, and two repetitions within each other no more than the second.
 */
constexpr std::uint32_t STEPS[] = {1000, 40000, CPatternProbe::MAX_STEPS};

/** Not to see at a glance that a text lacks a character that every match has: any text may have it somewhere. */
constexpr std::uint32_t OPTIONS = PCRE2_UTF | PCRE2_NO_START_OPTIMIZE;

constexpr std::uint32_t MAX_HEAP_KIB = 16 * 1024;

/** At one place only: a match that is tried from every place takes longer, but in proportion to the text. */
constexpr std::uint32_t HERE = PCRE2_ANCHORED | PCRE2_NO_UTF_CHECK;

/** What usual conditions on the surroundings of a place ask for stands in one of them. */
constexpr std::string_view SHORT_TEXTS[] = {"", "a", " ", "a1 B-2.\n_"};

bool IsLimit(int iResult) {
    return iResult == PCRE2_ERROR_MATCHLIMIT || iResult == PCRE2_ERROR_HEAPLIMIT || iResult == PCRE2_ERROR_DEPTHLIMIT;
}

bool IsWithinCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

std::string Repeat(const std::string& strPump) {
    const std::size_t iTimes = SUBJECT_CHARACTERS / std::max<std::size_t>(OS::CountCodePoints(strPump), 1);
    std::string strRepeated;
    for (std::size_t i = 0; i < iTimes; ++i) {
        strRepeated += strPump;
    }
    return strRepeated;
}

/** @return what to repeat, and what to put before each: all that the sample has before it */
std::vector<std::pair<std::string, std::string>> MakePumps(const std::vector<std::string>& vecCharacters) {
    std::vector<std::pair<std::string, std::string>> vecPumps;
    std::set<std::string> setSeen;
    for (std::size_t iLength = 1; iLength <= MAX_PUMP; ++iLength) {
        std::string strBefore;
        for (std::size_t i = 0; i + iLength <= vecCharacters.size() && vecPumps.size() < MAX_PUMPS; ++i) {
            std::string strPump;
            for (std::size_t j = i; j < i + iLength; ++j) {
                strPump += vecCharacters[j];
            }
            if (setSeen.insert(strPump).second) {
                vecPumps.emplace_back(strPump, strBefore);
            }
            strBefore += vecCharacters[i];
        }
    }
    return vecPumps;
}

}  // namespace

struct CPatternProbe::SEngine {
    pcre2_code* pCode = nullptr;
    pcre2_match_data* pMatch = nullptr;
    pcre2_match_context* pContext = nullptr;

    ~SEngine() {
        pcre2_match_context_free(pContext);
        pcre2_match_data_free(pMatch);
        pcre2_code_free(pCode);
    }

    int Match(const std::string& strSubject, std::size_t iStart, std::uint32_t iOptions, std::uint32_t iSteps) const {
        pcre2_set_match_limit(pContext, iSteps);
        const int iResult = pcre2_match(pCode, reinterpret_cast<PCRE2_SPTR>(strSubject.data()), strSubject.size(),
                                        iStart, iOptions, pMatch, pContext);
        if (iResult == PCRE2_ERROR_NOMEMORY) {
            throw std::bad_alloc();
        }
        return iResult;
    }

    /** @return whether the last match, one that was found, has no character */
    bool IsEmptyMatch() const {
        const PCRE2_SIZE* pEnds = pcre2_get_ovector_pointer(pMatch);
        return pEnds[0] >= pEnds[1];  // \K may set the start behind the end
    }
};

CPatternProbe::CPatternProbe(std::string_view strPattern)
    : m_strPattern(strPattern), m_pEngine(std::make_unique<SEngine>()) {
    int iError = 0;
    PCRE2_SIZE iOffset = 0;
    m_pEngine->pCode = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(m_strPattern.data()), m_strPattern.size(), OPTIONS,
                                     &iError, &iOffset, nullptr);
    if (iError == PCRE2_ERROR_HEAP_FAILED) {
        throw std::bad_alloc();
    }
    if (m_pEngine->pCode == nullptr) {
        std::array<PCRE2_UCHAR, 256> aMessage{};
        pcre2_get_error_message(iError, aMessage.data(), aMessage.size());
        m_refusal = {reinterpret_cast<const char*>(aMessage.data()), std::min(iOffset, m_strPattern.size())};
        return;
    }
    m_pEngine->pMatch = pcre2_match_data_create_from_pattern(m_pEngine->pCode, nullptr);
    m_pEngine->pContext = pcre2_match_context_create(nullptr);
    if (m_pEngine->pMatch == nullptr || m_pEngine->pContext == nullptr) {
        throw std::bad_alloc();
    }
    pcre2_set_heap_limit(m_pEngine->pContext, MAX_HEAP_KIB);
}

CPatternProbe::~CPatternProbe() = default;

EShortTrial CPatternProbe::TryShortTexts() const {
    if (m_pEngine->pCode == nullptr) {
        return EShortTrial::NOTHING_ODD;
    }
    std::vector<std::string> vecTexts(std::begin(SHORT_TEXTS), std::end(SHORT_TEXTS));
    vecTexts.push_back(SamplePattern(m_strPattern).strText);  // what it looks for ahead or behind may be its own
    EShortTrial eTrial = EShortTrial::NOTHING_ODD;
    for (const std::string& strText : vecTexts) {
        for (std::size_t i = 0; i <= strText.size(); ++i) {
            if (i < strText.size() && IsWithinCharacter(strText[i])) {
                continue;
            }
            const int iResult = m_pEngine->Match(strText, i, HERE, i == 0 ? STEPS[1] : STEPS[0]);
            if (iResult == PCRE2_ERROR_RECURSELOOP) {
                return EShortTrial::RECURSES_FOREVER;
            }
            if (iResult >= 0 && m_pEngine->IsEmptyMatch()) {
                eTrial = EShortTrial::MATCHES_EMPTY;
            }
        }
    }
    return eTrial;
}

std::optional<std::size_t> CPatternProbe::FindRunaway(std::size_t& iEffort) const {
    const SPatternSample sample = SamplePattern(m_strPattern);
    if (m_pEngine->pCode == nullptr || !sample.bCanRunAway) {
        return 0;
    }
    for (const auto& [strPump, strBefore] : MakePumps(sample.vecCharacters)) {
        const std::string strSubject = strBefore + Repeat(strPump) + STOPPER;
        for (const std::size_t iStart : std::set<std::size_t>{0, strBefore.size()}) {
            const std::optional<bool> runsAway = RunsAway(strSubject, iStart, iEffort);
            if (!runsAway) {
                return std::nullopt;
            }
            if (*runsAway) {
                return OS::CountCodePoints(strSubject);
            }
        }
    }
    return 0;
}

std::optional<bool> CPatternProbe::RunsAway(const std::string& strSubject, std::size_t iStart,
                                            std::size_t& iEffort) const {
    for (const std::uint32_t iSteps : STEPS) {
        const std::size_t iCost = iSteps / STEPS[0];
        if (iEffort < iCost) {
            return std::nullopt;  // others may need less
        }
        iEffort -= iCost;
        if (!IsLimit(m_pEngine->Match(strSubject, iStart, HERE, iSteps))) {
            return false;
        }
    }
    return true;
}
