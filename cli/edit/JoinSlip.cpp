#include "cli/edit/JoinSlip.h"

#include <algorithm>

#include "cli/Text.h"
#include "platform/common/TextConversion.h"
#include "platform/common/TextTools.h"
#include "templates/MatchRule.h"

namespace {

using View = std::wstring_view;

constexpr View PART_LETTERS = L"PpKk";
constexpr const char NO_OPERATOR[] = "AND, OR or EXCEPT is missing before this part";

std::size_t SkipBlanks(View strText, std::size_t iFrom) {
    const auto itFrom = strText.begin() + static_cast<std::ptrdiff_t>(iFrom);
    return static_cast<std::size_t>(std::find_if_not(itFrom, strText.end(), OS::IsSpace) - strText.begin());
}

/** @return where a word ends: a blank follows it, or it ends in the bracket behind a count */
std::size_t FindEnd(View strText, std::size_t iFrom) {
    std::size_t iEnd = iFrom;
    while (iEnd < strText.size() && !OS::IsSpace(strText[iEnd])) {
        if (strText[iEnd++] == L')') {
            break;
        }
    }
    return iEnd;
}

}  // namespace

bool StartsRulePart(View strText) {
    return strText.size() > 1 && PART_LETTERS.find(strText[0]) != View::npos && strText[1] == L':';
}

std::vector<SJoinSlip> FindJoinSlips(View strPart) {
    std::vector<SJoinSlip> vecSlips;
    bool bPart = false;
    bool bJoined = false;
    for (std::size_t iWord = 0; iWord < strPart.size();) {
        const std::size_t iEnd = FindEnd(strPart, iWord);
        const std::size_t iNext = SkipBlanks(strPart, iEnd);
        const View strWord = strPart.substr(iWord, iEnd - iWord);
        const View strNext = strPart.substr(iNext);
        const EOperator eOperator = ToOperator(strWord);
        const bool bStarts = StartsRulePart(strPart.substr(iWord));
        if (bStarts && bPart && !bJoined) {
            vecSlips.push_back({iWord, NO_OPERATOR});
        }
        bPart = bPart || bStarts;
        // In capitals it would have joined.
        bJoined = eOperator != EOperator::UNKNOWN && (strNext.empty() || StartsRulePart(strNext));
        if (bJoined) {
            vecSlips.push_back({iWord, Text::Quoted(OS::Utf8Lenient(strWord)) +
                                           " joins nothing: operators are written in capitals, here " +
                                           OperatorText(eOperator)});
        }
        iWord = iNext;
    }
    return vecSlips;
}
