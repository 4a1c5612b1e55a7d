#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

/**
 * A compiled pattern of a small dialect; immutable, so one object serves every search and thread.
 *
 *     a  .  [a-z] [^a-z]    one character: itself, any, one of a class
 *     ( )  { }              a group; a group that captures, numbered from 0 by its opening brace
 *     *  +  ?  *?  +?  ??   the unit before it repeated, as often as possible or as seldom as possible
 *     a|b                   the unit on the left or else the one on the right; binds tighter than concatenation:
 *                           P|p: is P or p, then a colon
 *     \a \b \c \d \h        [a-zA-Z0-9], blank or TAB, [a-zA-Z], [0-9], [0-9a-fA-F]
 *     \n \q \w \z           a line end, a quoted text, [a-zA-Z]+, [0-9]+
 *     \ and another one     that character; inside a class any character
 */
class CPattern {
  public:
    enum class EStep : std::uint8_t { CHARACTER, ANY, CLASS, SPLIT, JUMP, SAVE, MATCH };

    /** One step of the program that a search runs. Targets are relative to the step. */
    struct SStep {
        EStep eStep = EStep::MATCH;
        bool bFlag = false;     ///< CLASS: the characters outside it
        wchar_t character = 0;  ///< CHARACTER
        int iFirst = 0;         ///< SPLIT, JUMP: where to go first; CLASS: which; SAVE: which end of which group
        int iSecond = 0;        ///< SPLIT: where to go when that fails
    };
    using Class = std::vector<std::pair<wchar_t, wchar_t>>;

    /** @throws CResultException INVALID_ARGUMENT when the text is no pattern of the dialect */
    explicit CPattern(std::wstring_view strPattern);

    const std::vector<SStep>& GetSteps() const { return m_vecSteps; }
    bool IsInClass(const SStep& step, wchar_t character) const;
    std::size_t GetGroupCount() const { return m_iGroups; }

  private:
    friend class CPatternCompiler;

    std::vector<SStep> m_vecSteps;
    std::vector<Class> m_vecClasses;
    std::size_t m_iGroups = 0;
};
