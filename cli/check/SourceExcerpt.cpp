#include "cli/check/SourceExcerpt.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "cli/Text.h"
#include "cli/TextWidth.h"
#include "platform/common/TextConversion.h"

namespace {

constexpr std::size_t MAX_COLUMNS = 100;
constexpr std::size_t MAX_BEHIND = 52;  ///< columns from the caret on
constexpr std::size_t MARGIN = 5;       ///< of a line's number
constexpr std::size_t MAX_BYTES = 512;  ///< looked at on either side
constexpr const char LINE_ENDS[] = "\r\n";
constexpr const char ELLIPSIS[] = "…";
constexpr std::wstring_view TAB = L"    ";
constexpr wchar_t BYTE_ORDER_MARK = L'\uFEFF';

/** A character as it is shown. */
struct SCell {
    std::string strText;
    std::size_t iWidth;
};

bool ContinuesCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

SCell MakeCell(wchar_t c) {
    if (c == BYTE_ORDER_MARK) {
        return {{}, 0};
    }
    if (c >= L' ' && c <= L'~') {
        return {std::string(1, static_cast<char>(c)), 1};
    }
    const std::string strCell = Text::Printable(OS::Utf8Lenient(c == L'\t' ? TAB : std::wstring_view(&c, 1)));
    return {strCell, GetTextWidth(OS::WideLenient(strCell))};
}

/** The characters of a text, from one end on, that find room. */
struct STaken {
    std::vector<SCell> vecCells;
    std::size_t iWidth = 0;
    bool bCut = false;  ///< whether some are left
};

/** Looks at no more of them than it takes: of a long line each excerpt shows a few. */
template <class ITERATOR>
STaken Take(ITERATOR it, ITERATOR itEnd, std::size_t iMax) {
    STaken taken;
    for (; it != itEnd && !taken.bCut; ++it) {
        SCell cell = MakeCell(*it);
        taken.bCut = taken.iWidth + cell.iWidth > iMax;
        if (!taken.bCut) {
            taken.iWidth += cell.iWidth;
            taken.vecCells.push_back(std::move(cell));
        }
    }
    return taken;
}

std::string_view BeforeCaret(std::string_view strBytes, std::size_t iOffset) {
    std::size_t iStart = iOffset - std::min(iOffset, MAX_BYTES);
    while (iStart > 0 && iStart < iOffset && ContinuesCharacter(strBytes[iStart])) {
        ++iStart;
    }
    const std::string_view strBefore = strBytes.substr(iStart, iOffset - iStart);
    return strBefore.substr(strBefore.find_last_of(LINE_ENDS) + 1);
}

std::string_view FromCaret(std::string_view strBytes, std::size_t iOffset) {
    std::string_view strRest = strBytes.substr(iOffset, MAX_BYTES);
    strRest = strRest.substr(0, strRest.find_first_of(LINE_ENDS));
    std::size_t iEnd = strRest.size();
    while (iEnd > 0 && iOffset + iEnd < strBytes.size() && ContinuesCharacter(strBytes[iOffset + iEnd])) {
        --iEnd;
    }
    return strRest.substr(0, iEnd);
}

}  // namespace

SExcerpt MakeExcerpt(std::string_view strBytes, std::size_t iOffset) {
    iOffset = std::min(iOffset, strBytes.size());
    const std::wstring strBefore = OS::WideLenient(BeforeCaret(strBytes, iOffset));
    const std::wstring strBehind = OS::WideLenient(FromCaret(strBytes, iOffset));
    const STaken behind = Take(strBehind.begin(), strBehind.end(), MAX_BEHIND);
    const STaken before = Take(strBefore.rbegin(), strBefore.rend(), MAX_COLUMNS - behind.iWidth);
    SExcerpt excerpt{before.bCut ? ELLIPSIS : "", before.iWidth + (before.bCut ? 1 : 0)};
    const auto fnAdd = [&](const SCell& cell) { excerpt.strLine += cell.strText; };
    std::for_each(before.vecCells.rbegin(), before.vecCells.rend(), fnAdd);
    std::for_each(behind.vecCells.begin(), behind.vecCells.end(), fnAdd);
    excerpt.strLine += behind.bCut ? ELLIPSIS : "";
    return excerpt;
}

std::string MakeExcerptLines(const SExcerpt& excerpt, std::size_t iLine, const std::string& strCaret) {
    const std::string strNumber = std::to_string(iLine);
    const std::string strMargin(std::max(strNumber.size(), MARGIN) + 1, ' ');
    return std::string(strMargin.size() - strNumber.size(), ' ') + strNumber + " | " + excerpt.strLine + '\n' +
           strMargin + " | " + std::string(excerpt.iCaret, ' ') + strCaret + '\n';
}
