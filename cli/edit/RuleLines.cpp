#include "cli/edit/RuleLines.h"

#include <algorithm>
#include <utility>

#include "cli/InputFile.h"
#include "cli/Kinds.h"
#include "cli/RecordText.h"
#include "cli/Suggestion.h"
#include "cli/Text.h"
#include "cli/compare/RuleText.h"
#include "cli/edit/JoinSlip.h"
#include "platform/common/TextConversion.h"
#include "platform/common/TextTools.h"
#include "platform/store/CSettingsStore.h"
#include "templates/CAssetNames.h"

namespace RuleLines {

namespace {

constexpr const char NOT_UTF8[] = "not UTF-8: save the file in that encoding";
constexpr const char NO_ELEMENT[] = "an expression as P:NAME(COUNT) or a keyword list as K:NAME is needed here";
constexpr const char NO_NOT[] = "there is no NOT: EXCEPT comes before what must not be found, as in P:a(1) EXCEPT K:b";
constexpr const char NO_PARENTHESES[] =
    "there are no parentheses: write one rule a line, which begins with AND, OR or EXCEPT to join the lines before it";
constexpr const char NO_COUNT[] = "the count is missing: write ";
constexpr wchar_t NOT[] = L"NOT";
constexpr wchar_t OPENING = L'(';
constexpr wchar_t EXPRESSION_START[] = L"P:";
constexpr const char GLUED[] =
    " joins parts of a rule wherever it stands: put blanks around it; a name that holds it cannot stand in a rule";
constexpr const char NOT_READ[] =
    "from here on nothing is read: a part is P:NAME(COUNT), where COUNT is a number of 32 bits, or K:NAME";
constexpr wchar_t COMMENT = L'#';
constexpr wchar_t SAYS_NOTHING[] = L"0+ \t";  ///< beside a count

/** A reference to an asset, and where its name stands. */
struct SReference {
    EElementType eType;
    std::string strName;
    std::size_t iOffset;
    std::vector<SJoinSlip> vecSlips;  ///< which explain why there is no such asset; in the whole text
};

std::wstring WithoutAny(std::wstring strText, std::wstring_view strCharacters) {
    std::erase_if(strText, [=](wchar_t c) { return strCharacters.find(c) != std::wstring_view::npos; });
    return strText;
}

/** @return where its first word ends */
std::size_t FindBlank(std::wstring_view strText) {
    return static_cast<std::size_t>(std::find_if(strText.begin(), strText.end(), OS::IsSpace) - strText.begin());
}

/** @return what is wrong with a part that is no reference */
std::string ExplainPart(std::wstring_view strPart) {
    if (OS::EqualsNoCase(strPart.substr(0, FindBlank(strPart)), std::wstring_view(NOT))) {
        return NO_NOT;
    }
    if (!strPart.empty() && strPart.front() == OPENING) {
        return NO_PARENTHESES;
    }
    const std::wstring_view strNamed = strPart.substr(0, strPart.find(OPENING));
    const bool bExpression = OS::ToUpper(strNamed.substr(0, 2)) == EXPRESSION_START && strNamed.size() > 2;
    return bExpression ? NO_COUNT + Text::Quoted(OS::Utf8Lenient(strNamed) + "(1)") + ", or a greater one" : NO_ELEMENT;
}

class CReader {
  public:
    /** @param strText UTF-8 */
    explicit CReader(const std::string& strText) : m_strText(strText) {}

    void Read() {
        std::size_t iStart = 0;
        while (iStart < m_strText.size()) {
            const std::size_t iEnd = std::min(m_strText.find('\n', iStart), m_strText.size());
            m_iLine = iStart;
            ReadLine(OS::WideText(std::string_view(m_strText).substr(iStart, iEnd - iStart)));
            iStart = iEnd + 1;
        }
    }

    /** @throws OS::CException when the store fails */
    void CheckReferences() {
        CAssetNames names;
        for (const SReference& reference : m_vecReferences) {
            names.Add(reference.eType, reference.strName);
        }
        names.Ask();
        for (const SReference& reference : m_vecReferences) {
            if (!names.IsStored(reference.eType, reference.strName)) {
                TellUnknown(reference);
            }
        }
    }

    const std::vector<SMatchRule>& GetRules() const { return m_vecRules; }
    std::vector<std::pair<std::size_t, std::string>> TakeFaults() {
        std::stable_sort(m_vecFaults.begin(), m_vecFaults.end(),
                         [](const auto& left, const auto& right) { return left.first < right.first; });
        return std::move(m_vecFaults);
    }

  private:
    using View = std::wstring_view;

    void ReadLine(const std::wstring& strLine) {
        m_strLine = strLine;
        CountFromStart();
        const View strTrimmed = OS::Trim(m_strLine);
        if (strTrimmed.empty() || strTrimmed.front() == COMMENT) {
            return;
        }
        const View strWord = strTrimmed.substr(0, FindBlank(strTrimmed));
        const EOperator eOperator = ToOperator(strWord);
        const bool bOperator = eOperator != EOperator::UNKNOWN && OS::WideText(OperatorText(eOperator)) == strWord;
        ReadRule(bOperator ? strTrimmed.substr(strWord.size()) : strTrimmed, bOperator ? strWord : View());
    }

    void ReadRule(View strRule, View strOperator) {
        std::vector<View> vecTexts;
        m_vecRules.push_back(ParseMatchRule(strRule, strOperator, vecTexts));
        const std::vector<SRuleElement>& vecElements = m_vecRules.back().vecElements;
        for (std::size_t i = 1; i < vecElements.size(); ++i) {
            if (IsGlued(vecTexts[i - 1], vecTexts[i])) {
                Add(vecTexts[i - 1].data() + vecTexts[i - 1].size(),
                    OperatorText(vecElements[i].eOperator) + std::string(GLUED));
                return;
            }
        }
        for (std::size_t i = 0; i < vecElements.size(); ++i) {
            CheckElement(vecElements[i], vecTexts[i]);
        }
    }

    /** @return whether no white space stands before or behind the word between two parts, of which one may be empty */
    static bool IsGlued(View strBefore, View strAfter) {
        const wchar_t* pFirst = strBefore.data() + strBefore.size();
        const wchar_t* pLast = strAfter.data() - 1;
        return (!strBefore.empty() && !OS::IsSpace(*pFirst)) || (!strAfter.empty() && !OS::IsSpace(*pLast));
    }

    void CheckElement(const SRuleElement& element, View strText) {
        const std::vector<SJoinSlip> vecSlips = FindSlips(strText);
        const bool bUnknown = element.eType == EElementType::UNKNOWN;
        const std::wstring strRead =
            bUnknown ? std::wstring() : OS::WideText(FormatCondition({element.eType, element.strName, element.iCount}));
        std::wstring strWritten(strText);
        strWritten.replace(0, 1, OS::ToUpper(strText.substr(0, 1)));
        if (strRead == strWritten && !bUnknown) {
            m_vecReferences.push_back(
                {element.eType, OS::Utf8Lenient(element.strName), Find(strText.data() + 2), vecSlips});
        } else if (!vecSlips.empty()) {
            AddSlips(vecSlips);
        } else if (bUnknown || !StartsRulePart(strText)) {
            Add(strText.data(), ExplainPart(strText));
        } else {
            const auto itDifference =
                std::mismatch(strRead.begin(), strRead.end(), strWritten.begin(), strWritten.end()).second;
            const bool bSame = WithoutAny(strRead, SAYS_NOTHING) == WithoutAny(strWritten, SAYS_NOTHING);
            Add(strText.data() + (itDifference - strWritten.begin()),
                bSame ? "this is read as " + Text::Quoted(OS::Utf8Lenient(strRead)) + "; write it so" : NOT_READ);
        }
    }

    /** Where they are in the whole text. */
    std::vector<SJoinSlip> FindSlips(View strPart) {
        std::vector<SJoinSlip> vecSlips = FindJoinSlips(strPart);
        for (SJoinSlip& slip : vecSlips) {
            slip.iAt = Find(strPart.data() + slip.iAt);
        }
        return vecSlips;
    }
    void AddSlips(const std::vector<SJoinSlip>& vecSlips) {
        for (const SJoinSlip& slip : vecSlips) {
            AddAt(slip.iAt, slip.strWhy);
        }
    }

    void TellUnknown(const SReference& reference) {
        if (!reference.vecSlips.empty()) {
            AddSlips(reference.vecSlips);
            return;
        }
        const SKind& kind =
            GetKind(reference.eType == EElementType::ENTITY ? ESettingsKind::EXPRESSION : ESettingsKind::KEYWORD);
        const std::string strOther = SuggestOtherKind(reference);
        AddAt(reference.iOffset, std::string("no ") + kind.pWord + " is named " + Text::Quoted(reference.strName) +
                                     "; " + (strOther.empty() ? SuggestStoredName(kind, reference.strName) : strOther));
    }

    /** @return how the part is written when its name is that of the other kind; "" when it is not */
    static std::string SuggestOtherKind(const SReference& reference) {
        const bool bExpression = reference.eType == EElementType::ENTITY;
        const std::string strName =
            bExpression ? reference.strName
                        : reference.strName.substr(0, reference.strName.find(static_cast<char>(OPENING)));
        const SKind& kind = GetKind(bExpression ? ESettingsKind::KEYWORD : ESettingsKind::EXPRESSION);
        if (CSettingsStore::Current().FindOne(kind.eKind, NAME_COLUMN, strName) == nullptr) {
            return {};
        }
        return std::string("the ") + kind.pWord + " of that name is written " +
               Text::Quoted(bExpression ? "K:" + strName : "P:" + strName + "(1)");
    }

    /** @return the byte of the whole text that a character of the line stands for; counted from the last one asked */
    std::size_t Find(const wchar_t* pCharacter) {
        const auto iBefore = static_cast<std::size_t>(pCharacter - m_strLine.data());
        if (iBefore < m_iCounted) {
            CountFromStart();
        }
        m_iBytes += OS::Utf8Lenient(View(m_strLine).substr(m_iCounted, iBefore - m_iCounted)).size();
        m_iCounted = iBefore;
        return m_iLine + m_iBytes;
    }
    void CountFromStart() { m_iCounted = m_iBytes = 0; }
    void Add(const wchar_t* pCharacter, const std::string& strWhy) { AddAt(Find(pCharacter), strWhy); }
    void AddAt(std::size_t iOffset, const std::string& strWhy) { m_vecFaults.emplace_back(iOffset, strWhy); }

    const std::string& m_strText;
    std::size_t m_iLine = 0;  ///< where the line that is read begins
    std::wstring m_strLine;
    std::size_t m_iCounted = 0;  ///< characters of the line
    std::size_t m_iBytes = 0;    ///< that those are
    std::vector<SMatchRule> m_vecRules;
    std::vector<SReference> m_vecReferences;
    std::vector<std::pair<std::size_t, std::string>> m_vecFaults;
};

SFault MakeFault(const std::string& strText, std::size_t iOffset, const std::string& strWhy) {
    return {strWhy, CSourcePlaces(strText).Find(iOffset), MakeExcerpt(strText, iOffset)};
}

bool IsSame(const SRuleElement& left, const SRuleElement& right, bool bFirst) {
    return left.eType == right.eType && left.strName == right.strName &&
           (left.eType != EElementType::ENTITY || left.iCount == right.iCount) &&
           (bFirst || left.eOperator == right.eOperator);
}

bool IsSame(const SMatchRule& left, const SMatchRule& right) {
    bool bFirst = true;
    return left.eOperator == right.eOperator &&
           std::equal(left.vecElements.begin(), left.vecElements.end(), right.vecElements.begin(),
                      right.vecElements.end(), [&](const SRuleElement& first, const SRuleElement& second) {
                          return IsSame(first, second, std::exchange(bFirst, false));
                      });
}

bool LacksOperator(const SMatchRule& rule) {
    const auto& vecElements = rule.vecElements;
    return !vecElements.empty() && std::any_of(vecElements.begin() + 1, vecElements.end(), [](const auto& element) {
        return element.eOperator == EOperator::UNKNOWN;
    });
}

std::vector<SMatchRule> Complete(std::vector<SMatchRule> vecRules) {
    for (SMatchRule& rule : vecRules) {
        for (std::size_t i = 1; i < rule.vecElements.size(); ++i) {
            EOperator& eOperator = rule.vecElements[i].eOperator;
            eOperator = eOperator == EOperator::UNKNOWN ? EOperator::AND : eOperator;
        }
    }
    return vecRules;
}

}  // namespace

CFaults::CFaults(std::string strFile, std::vector<SFault> vecFaults)
    : CToolError(EVerdict::INVALID, FormatPlace(strFile, vecFaults.front().place) + ": " + vecFaults.front().strWhy),
      m_strFile(std::move(strFile)),
      m_vecFaults(std::move(vecFaults)) {}

std::vector<SMatchRule> Read(const std::string& strFile, const std::string& strText) {
    const std::size_t iInvalid = OS::FindInvalidUtf8(strText);
    if (iInvalid != std::string::npos) {
        throw CFaults(strFile, {MakeFault(strText, iInvalid, NOT_UTF8)});
    }
    CReader reader(strText);
    reader.Read();
    reader.CheckReferences();
    std::vector<SFault> vecFaults;
    for (const auto& [iOffset, strWhy] : reader.TakeFaults()) {
        vecFaults.push_back(MakeFault(strText, iOffset, strWhy));
    }
    if (!vecFaults.empty()) {
        throw CFaults(strFile, std::move(vecFaults));
    }
    return reader.GetRules();
}

bool IsComplete(const std::vector<SMatchRule>& vecRules) {
    return std::none_of(vecRules.begin(), vecRules.end(), LacksOperator);
}

std::string Write(const std::vector<SMatchRule>& vecRules) {
    std::string strText;
    for (const std::string& strLine : MakeRuleLines(Complete(vecRules))) {
        strText += Text::Printable(strLine) + '\n';
    }
    return strText;
}

bool Survive(const std::vector<SMatchRule>& vecRules) {
    const std::string strText = Write(vecRules);
    const std::vector<SMatchRule> vecComplete = Complete(vecRules);
    CReader reader(strText);
    reader.Read();
    return reader.TakeFaults().empty() &&
           std::equal(vecComplete.begin(), vecComplete.end(), reader.GetRules().begin(), reader.GetRules().end(),
                      [](const SMatchRule& left, const SMatchRule& right) { return IsSame(left, right); });
}

}  // namespace RuleLines
