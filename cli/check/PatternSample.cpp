#include "cli/check/PatternSample.h"

#include <algorithm>
#include <cstdlib>

namespace {

/** A repetition of at most so many times cannot make a match slow. */
constexpr int FEW = 10;

/** Longer patterns are sampled in part. */
constexpr std::size_t MAX_CHARACTERS = 64;
constexpr std::size_t MAX_TEXT = 256;

struct SClass {
    char cEscape;
    const char* pMember;  ///< null: the escape stands for no character
};
constexpr SClass CLASSES[] = {
    {'d', "1"},     {'D', "a"},     {'w', "a"},     {'W', "-"},     {'s', " "},     {'S', "a"},     {'h', " "},
    {'H', "a"},     {'v', "\n"},    {'V', "a"},     {'N', "a"},     {'R', "\n"},    {'X', "a"},     {'t', "\t"},
    {'n', "\n"},    {'r', "\r"},    {'b', nullptr}, {'B', nullptr}, {'A', nullptr}, {'z', nullptr}, {'Z', nullptr},
    {'G', nullptr}, {'K', nullptr}, {'Q', nullptr}, {'E', nullptr}, {'k', nullptr}, {'g', nullptr},
};

class CSampler {
  public:
    explicit CSampler(std::string_view strPattern) : m_strPattern(strPattern) {}

    SPatternSample Run() {
        while (m_i < m_strPattern.size() && m_sample.vecCharacters.size() < MAX_CHARACTERS) {
            Step(m_strPattern[m_i]);
        }
        // One repetition alone walks a text once; a second one, or alternatives within, may walk it again.
        m_sample.bCanRunAway = m_iLong > 0 && (m_iRepeats > 1 || m_bAlternatives);
        return std::move(m_sample);
    }

  private:
    void Step(char c) {
        switch (c) {
            case '\\':
                Escape();
                break;
            case '[':
                Class();
                break;
            case '(':
                ++m_i;
                m_vecGroups.push_back(m_sample.strText.size());
                SkipGroupHead();
                break;
            case '*':
            case '+':
                Repeat(true);
                ++m_i;
                break;
            case '?':
                // Behind a repetition it only says how that goes about.
                Repeat(false);
                ++m_i;
                break;
            case '{':
                Braces();
                break;
            case '|':
                m_bAlternatives = true;
                ++m_i;
                break;
            case ')':
                EndGroup();
                ++m_i;
                break;
            case '^':
            case '$':
                ++m_i;
                break;
            case '.':
                Add("a");
                ++m_i;
                break;
            default:
                AddHere();
        }
    }

    void Repeat(bool bLong) {
        ++m_iRepeats;
        m_iLong += bLong ? 1 : 0;
    }

    void EndGroup() {
        if (!m_vecGroups.empty()) {
            m_iUnit = m_vecGroups.back();
            m_vecGroups.pop_back();
        }
    }

    void Add(std::string strCharacter) {
        m_iUnit = m_sample.strText.size();
        m_sample.strText += strCharacter;
        m_sample.vecCharacters.push_back(std::move(strCharacter));
    }

    /** Writes the last character or group as often as it is asked for, once being written. */
    void AddAgain(int iTimes) {
        const std::string strUnit = m_sample.strText.substr(m_iUnit);
        for (int i = 1; i < iTimes && m_sample.strText.size() + strUnit.size() <= MAX_TEXT; ++i) {
            m_sample.strText += strUnit;
        }
    }

    /** The character at the current place, whole. */
    void AddHere() {
        std::size_t iEnd = m_i + 1;
        while (iEnd < m_strPattern.size() && (static_cast<unsigned char>(m_strPattern[iEnd]) & 0xC0U) == 0x80U) {
            ++iEnd;
        }
        Add(std::string(m_strPattern.substr(m_i, iEnd - m_i)));
        m_i = iEnd;
    }

    void Escape() {
        const char c = m_i + 1 < m_strPattern.size() ? m_strPattern[m_i + 1] : '\0';
        m_i = std::min(m_i + 1, m_strPattern.size());
        const auto* pClass =
            std::find_if(std::begin(CLASSES), std::end(CLASSES), [c](const SClass& row) { return row.cEscape == c; });
        if (pClass == std::end(CLASSES)) {
            if (m_i < m_strPattern.size()) {
                AddHere();
            }
            return;
        }
        ++m_i;
        if (pClass->pMember != nullptr) {
            Add(pClass->pMember);
        }
    }

    /** Takes its first member; of one that excludes, a letter. */
    void Class() {
        const bool bNegated = m_i + 1 < m_strPattern.size() && m_strPattern[m_i + 1] == '^';
        m_i += bNegated ? 2 : 1;
        if (bNegated) {
            Add("a");
        } else if (m_strPattern.compare(m_i, 1, "\\") == 0) {
            Escape();
        } else if (m_strPattern.compare(m_i, 2, "[:") == 0) {
            Add(m_strPattern.compare(m_i, 5, "[:dig") == 0 ? "1" : "a");
            m_i = std::min(m_strPattern.find(":]", m_i), m_strPattern.size() - 2) + 2;
        } else if (m_i < m_strPattern.size()) {
            AddHere();
        }
        while (m_i < m_strPattern.size() && m_strPattern[m_i] != ']') {
            m_i += m_strPattern[m_i] == '\\' ? 2 : 1;
        }
        m_i = std::min(m_i + 1, m_strPattern.size());
    }

    /** What stands between "(?" and the content of the group. */
    void SkipGroupHead() {
        if (m_strPattern.compare(m_i, 1, "?") == 0) {
            const std::size_t iEnd = m_strPattern.find_first_of(":=!>)", m_i);
            m_i = iEnd == std::string_view::npos ? m_strPattern.size() : iEnd + (m_strPattern[iEnd] == ')' ? 0 : 1);
        }
    }

    void Braces() {
        const std::size_t iEnd = std::min(m_strPattern.find('}', m_i), m_strPattern.size());
        const std::string strCounts(m_strPattern.substr(m_i + 1, iEnd - m_i - 1));
        if (strCounts.find_first_not_of("0123456789,") != std::string::npos || strCounts.empty()) {
            AddHere();
            return;
        }
        const std::size_t iComma = strCounts.find(',');
        const bool bEndless = iComma != std::string::npos && iComma + 1 == strCounts.size();
        const int iMost = std::atoi(strCounts.c_str() + (iComma == std::string::npos ? 0 : iComma + 1));
        AddAgain(std::atoi(strCounts.c_str()));
        if (iComma != std::string::npos || iMost > 1) {
            Repeat(iComma != std::string::npos && (bEndless || iMost > FEW));
        }
        m_i = std::min(iEnd + 1, m_strPattern.size());
    }

    std::string_view m_strPattern;
    std::size_t m_i = 0;
    SPatternSample m_sample;
    std::vector<std::size_t> m_vecGroups;  ///< where in the text each open one begins
    std::size_t m_iUnit = 0;               ///< where in the text what may be repeated begins
    int m_iRepeats = 0;
    int m_iLong = 0;
    bool m_bAlternatives = false;
};

/** What a call of the whole pattern or of one of its groups begins with; where a number follows, signed or not. */
constexpr std::string_view CALLS[] = {"(?R", "(?&", "(?P>", "\\g<", "\\g'"};
constexpr std::string_view NUMBERED_CALL = "(?";
constexpr std::string_view DIGITS = "0123456789";
constexpr std::string_view SIGNS = "+-";

bool IsCall(std::string_view strText) {
    if (std::any_of(std::begin(CALLS), std::end(CALLS),
                    [&](std::string_view strCall) { return strText.starts_with(strCall); })) {
        return true;
    }
    if (!strText.starts_with(NUMBERED_CALL)) {
        return false;
    }
    strText.remove_prefix(NUMBERED_CALL.size());
    const std::size_t iNumber = std::min(strText.find_first_not_of(SIGNS), strText.size());
    return iNumber <= 1 && DIGITS.find(strText.substr(iNumber, 1)) != std::string_view::npos &&
           iNumber < strText.size();
}

/** What stands between the two is text. */
struct SQuotation {
    std::string_view strStart;
    std::string_view strEnd;
};
constexpr SQuotation QUOTATION = {"\\Q", "\\E"};
constexpr SQuotation COMMENT = {"(?#", ")"};

/** @return the offset behind it, if it begins here, else the same offset */
std::size_t Behind(const SQuotation& quotation, std::string_view strPattern, std::size_t i) {
    if (!strPattern.substr(i).starts_with(quotation.strStart)) {
        return i;
    }
    const std::size_t iEnd = strPattern.find(quotation.strEnd, i + quotation.strStart.size());
    return iEnd == std::string_view::npos ? strPattern.size() : iEnd + quotation.strEnd.size();
}

constexpr std::string_view NAMED_START = "[:";
constexpr std::string_view NAMED_END = ":]";
constexpr std::string_view NAMED_LETTERS = "^abcdefghijklmnopqrstuvwxyz";

/** @return the offset behind a piece of a class: a named class such as [:digit:], a quotation, an escape, a character
 */
std::size_t BehindClassPiece(std::string_view strPattern, std::size_t i) {
    if (strPattern.substr(i).starts_with(NAMED_START)) {
        const std::size_t iEnd = strPattern.find_first_not_of(NAMED_LETTERS, i + NAMED_START.size());
        if (iEnd != std::string_view::npos && strPattern.substr(iEnd).starts_with(NAMED_END)) {
            return iEnd + NAMED_END.size();
        }
    }
    const std::size_t iQuoted = Behind(QUOTATION, strPattern, i);
    return iQuoted != i ? iQuoted : i + (strPattern[i] == '\\' ? 2 : 1);
}

/** @return the offset behind a class; a bracket that comes first in it does not end it */
std::size_t BehindClass(std::string_view strPattern, std::size_t i) {
    ++i;
    i += strPattern.substr(i).starts_with('^') ? 1 : 0;
    i += strPattern.substr(i).starts_with(']') ? 1 : 0;
    while (i < strPattern.size() && strPattern[i] != ']') {
        i = BehindClassPiece(strPattern, i);
    }
    return i + 1;
}

std::size_t BehindPiece(std::string_view strPattern, std::size_t i) {
    for (const SQuotation& quotation : {QUOTATION, COMMENT}) {
        const std::size_t iQuoted = Behind(quotation, strPattern, i);
        if (iQuoted != i) {
            return iQuoted;
        }
    }
    return strPattern[i] == '[' ? BehindClass(strPattern, i) : i + (strPattern[i] == '\\' ? 2 : 1);
}

}  // namespace

SPatternSample SamplePattern(std::string_view strPattern) {
    return CSampler(strPattern).Run();
}

std::size_t FindPatternCall(std::string_view strPattern) {
    for (std::size_t i = 0; i < strPattern.size(); i = BehindPiece(strPattern, i)) {
        if (IsCall(strPattern.substr(i))) {
            return i;
        }
    }
    return 0;
}
