#include "cli/check/SourceExcerpt.h"

#include <algorithm>
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

std::vector<SCell> MakeCells(std::string_view strPart) {
    std::vector<SCell> vecCells;
    for (const wchar_t c : OS::WideLenient(strPart)) {
        if (c != BYTE_ORDER_MARK) {
            const std::string strCell = Text::Printable(OS::Utf8Lenient(c == L'\t' ? TAB : std::wstring_view(&c, 1)));
            vecCells.push_back({strCell, GetTextWidth(OS::WideLenient(strCell))});
        }
    }
    return vecCells;
}

/** Takes cells from the end on until they would be wider than iMax. @return whether some are left */
bool TakeLast(const std::vector<SCell>& vecCells, std::size_t iMax, std::string& strText, std::size_t& iWidth) {
    auto itFirst = vecCells.end();
    while (itFirst != vecCells.begin() && iWidth + std::prev(itFirst)->iWidth <= iMax) {
        iWidth += (--itFirst)->iWidth;
    }
    std::for_each(itFirst, vecCells.end(), [&](const SCell& cell) { strText += cell.strText; });
    return itFirst != vecCells.begin();
}

bool TakeFirst(const std::vector<SCell>& vecCells, std::size_t iMax, std::string& strText, std::size_t& iWidth) {
    auto itEnd = vecCells.begin();
    while (itEnd != vecCells.end() && iWidth + itEnd->iWidth <= iMax) {
        iWidth += itEnd->iWidth;
        strText += (itEnd++)->strText;
    }
    return itEnd != vecCells.end();
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
    const std::vector<SCell> vecBefore = MakeCells(BeforeCaret(strBytes, iOffset));
    const std::vector<SCell> vecBehind = MakeCells(FromCaret(strBytes, iOffset));
    std::string strBehind;
    std::size_t iBehind = 0;
    if (TakeFirst(vecBehind, MAX_BEHIND, strBehind, iBehind)) {
        strBehind += ELLIPSIS;
    }
    SExcerpt excerpt;
    if (TakeLast(vecBefore, MAX_COLUMNS - iBehind, excerpt.strLine, excerpt.iCaret)) {
        excerpt.strLine.insert(0, ELLIPSIS);
        ++excerpt.iCaret;
    }
    excerpt.strLine += strBehind;
    return excerpt;
}

std::string MakeExcerptLines(const SExcerpt& excerpt, std::size_t iLine, const std::string& strCaret) {
    const std::string strNumber = std::to_string(iLine);
    const std::string strMargin(std::max(strNumber.size(), MARGIN) + 1, ' ');
    return std::string(strMargin.size() - strNumber.size(), ' ') + strNumber + " | " + excerpt.strLine + '\n' +
           strMargin + " | " + std::string(excerpt.iCaret, ' ') + strCaret + '\n';
}
