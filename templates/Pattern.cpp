#include "templates/Pattern.h"

#include <iterator>

#include "templates/CResultException.h"

namespace {

struct SAbbreviation {
    wchar_t letter;
    const wchar_t* pPattern;
};

constexpr SAbbreviation ABBREVIATIONS[] = {
    {L'a', L"([a-zA-Z0-9])"},
    {L'b', L"([ \t])"},
    {L'c', L"([a-zA-Z])"},
    {L'd', L"([0-9])"},
    {L'h', L"([0-9a-fA-F])"},
    {L'n', L"(\r|(\r?\n))"},
    {L'q', L"((\"[^\"]*\")|('[^']*'))"},
    {L'w', L"([a-zA-Z]+)"},
    {L'z', L"([0-9]+)"},
};

const wchar_t* FindAbbreviation(wchar_t letter) {
    for (const SAbbreviation& abbreviation : ABBREVIATIONS) {
        if (abbreviation.letter == letter) {
            return abbreviation.pPattern;
        }
    }
    return nullptr;
}

[[noreturn]] void Refuse() {
    throw CResultException(CResultException::INVALID_ARGUMENT);
}

}  // namespace

/**
 * Turns a pattern into steps, front to back. Each unit becomes a piece of code with relative targets, so pieces can be
 * put behind each other; open groups wait on a stack of their own.
 */
class CPatternCompiler {
  public:
    explicit CPatternCompiler(CPattern& pattern) : m_pattern(pattern) {}

    std::vector<CPattern::SStep> Compile(std::wstring_view strPattern);

  private:
    using EStep = CPattern::EStep;
    using SStep = CPattern::SStep;
    using Code = std::vector<SStep>;

    static constexpr int NO_GROUP = -1;

    /** What stands between two parentheses or braces, as far as it is read. */
    struct SGroup {
        wchar_t end = 0;
        int iNumber = NO_GROUP;
        Code vecCode;                ///< the finished units
        std::vector<Code> vecChain;  ///< units joined by |, not yet finished
        bool bJoin = false;          ///< a | waits for the unit on its right
    };

    wchar_t Next();
    bool Accept(wchar_t character);
    void Open(wchar_t end);
    void Close(wchar_t end);
    void Join();
    void AddUnit(Code vecUnit);
    Code Finish(SGroup& group);
    Code Repeat(Code vecUnit);
    Code Escape();
    Code ReadClass();
    wchar_t NextInClass();

    static void Append(Code& vecCode, const Code& vecMore) {
        vecCode.insert(vecCode.end(), vecMore.begin(), vecMore.end());
    }

    CPattern& m_pattern;
    std::wstring_view m_strPattern;
    std::size_t m_iPosition = 0;
    std::vector<SGroup> m_vecGroups;
};

CPatternCompiler::Code CPatternCompiler::Compile(std::wstring_view strPattern) {
    m_strPattern = strPattern;
    m_vecGroups.emplace_back();
    while (m_iPosition < m_strPattern.size()) {
        const wchar_t character = Next();
        switch (character) {
            case L'(':
                Open(L')');
                break;
            case L'{':
                Open(L'}');
                break;
            case L')':
            case L'}':
                Close(character);
                break;
            case L'|':
                Join();
                break;
            case L'*':
            case L'+':
            case L'?':
                Refuse();
            case L'.':
                AddUnit({{EStep::ANY}});
                break;
            case L'[':
                AddUnit(ReadClass());
                break;
            case L'\\':
                AddUnit(Escape());
                break;
            default:
                AddUnit({{EStep::CHARACTER, false, character}});
        }
    }
    if (m_vecGroups.size() != 1) {
        Refuse();
    }
    return Finish(m_vecGroups.back());
}

wchar_t CPatternCompiler::Next() {
    if (m_iPosition == m_strPattern.size()) {
        Refuse();
    }
    return m_strPattern[m_iPosition++];
}

bool CPatternCompiler::Accept(wchar_t character) {
    const bool bThere = m_iPosition < m_strPattern.size() && m_strPattern[m_iPosition] == character;
    m_iPosition += bThere ? 1 : 0;
    return bThere;
}

void CPatternCompiler::Open(wchar_t end) {
    SGroup group;
    group.end = end;
    group.iNumber = end == L'}' ? static_cast<int>(m_pattern.m_iGroups++) : NO_GROUP;
    m_vecGroups.push_back(std::move(group));
}

void CPatternCompiler::Close(wchar_t end) {
    if (m_vecGroups.back().end != end) {
        Refuse();
    }
    const int iNumber = m_vecGroups.back().iNumber;
    Code vecInner = Finish(m_vecGroups.back());
    m_vecGroups.pop_back();
    if (iNumber == NO_GROUP) {
        AddUnit(std::move(vecInner));
        return;
    }
    Code vecUnit = {{EStep::SAVE, false, 0, 2 * iNumber}};
    Append(vecUnit, vecInner);
    vecUnit.push_back({EStep::SAVE, false, 0, 2 * iNumber + 1});
    AddUnit(std::move(vecUnit));
}

void CPatternCompiler::Join() {
    SGroup& group = m_vecGroups.back();
    if (group.vecChain.empty() || group.bJoin) {
        Refuse();
    }
    group.bJoin = true;
}

void CPatternCompiler::AddUnit(Code vecUnit) {
    vecUnit = Repeat(std::move(vecUnit));
    SGroup& group = m_vecGroups.back();
    if (!group.bJoin) {
        group.vecCode = Finish(group);
        group.vecChain.clear();
    }
    group.bJoin = false;
    group.vecChain.push_back(std::move(vecUnit));
}

CPatternCompiler::Code CPatternCompiler::Finish(SGroup& group) {
    if (group.bJoin) {
        Refuse();
    }
    Code vecCode = std::move(group.vecCode);
    group.vecCode.clear();
    if (group.vecChain.empty()) {
        return vecCode;
    }
    Code vecChoice = std::move(group.vecChain.back());
    for (auto it = std::next(group.vecChain.rbegin()); it != group.vecChain.rend(); ++it) {
        const int iLeft = static_cast<int>(it->size());
        Code vecBoth = {{EStep::SPLIT, false, 0, 1, iLeft + 2}};
        Append(vecBoth, *it);
        vecBoth.push_back({EStep::JUMP, false, 0, static_cast<int>(vecChoice.size()) + 1});
        Append(vecBoth, vecChoice);
        vecChoice = std::move(vecBoth);
    }
    Append(vecCode, vecChoice);
    return vecCode;
}

CPatternCompiler::Code CPatternCompiler::Repeat(Code vecUnit) {
    const wchar_t mark = Accept(L'*') ? L'*' : Accept(L'+') ? L'+' : Accept(L'?') ? L'?' : L'\0';
    if (mark == L'\0') {
        return vecUnit;
    }
    const bool bFew = Accept(L'?');
    const int iSize = static_cast<int>(vecUnit.size());
    const auto Split = [bFew](int iInto, int iPast) {
        return bFew ? SStep{EStep::SPLIT, false, 0, iPast, iInto} : SStep{EStep::SPLIT, false, 0, iInto, iPast};
    };
    Code vecCode;
    if (mark == L'+') {
        vecCode = std::move(vecUnit);
        vecCode.push_back(Split(-iSize, 1));
        return vecCode;
    }
    const bool bLoop = mark == L'*';
    vecCode.push_back(Split(1, iSize + (bLoop ? 2 : 1)));
    Append(vecCode, vecUnit);
    if (bLoop) {
        vecCode.push_back({EStep::JUMP, false, 0, -iSize - 1});
    }
    return vecCode;
}

CPatternCompiler::Code CPatternCompiler::Escape() {
    const wchar_t letter = Next();
    const wchar_t* pAbbreviation = FindAbbreviation(letter);
    if (pAbbreviation == nullptr) {
        return {{EStep::CHARACTER, false, letter}};
    }
    return CPatternCompiler(m_pattern).Compile(pAbbreviation);
}

CPatternCompiler::Code CPatternCompiler::ReadClass() {
    const bool bOutside = Accept(L'^');
    CPattern::Class vecRanges;
    while (!Accept(L']')) {
        const wchar_t first = NextInClass();
        const bool bRange = m_strPattern.substr(m_iPosition, 1) == L"-" && m_strPattern.substr(m_iPosition, 2) != L"-]";
        m_iPosition += bRange ? 1 : 0;
        vecRanges.emplace_back(first, bRange ? NextInClass() : first);
    }
    m_pattern.m_vecClasses.push_back(std::move(vecRanges));
    return {{EStep::CLASS, bOutside, 0, static_cast<int>(m_pattern.m_vecClasses.size()) - 1}};
}

wchar_t CPatternCompiler::NextInClass() {
    const wchar_t character = Next();
    return character == L'\\' ? Next() : character;
}

CPattern::CPattern(std::wstring_view strPattern) {
    m_vecSteps = CPatternCompiler(*this).Compile(strPattern);
    m_vecSteps.push_back({EStep::MATCH});
}

bool CPattern::IsInClass(const SStep& step, wchar_t character) const {
    for (const auto& [first, last] : m_vecClasses[static_cast<std::size_t>(step.iFirst)]) {
        if (first <= character && character <= last) {
            return !step.bFlag;
        }
    }
    return step.bFlag;
}
