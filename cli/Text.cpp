#include "cli/Text.h"

#include <algorithm>
#include <numeric>
#include <sstream>
#include <utility>

#include "cli/TextWidth.h"
#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"

namespace Text {

namespace {
/** So many bytes of what is not plain ASCII become wide text at a time. */
constexpr std::ptrdiff_t WIDENED = 4096;
/** No character goes on for more bytes. */
constexpr std::ptrdiff_t CONTINUED = 3;
}  // namespace

std::string Printable(std::string_view strText) {
    const auto fnIsPlain = [](char c) { return c >= ' ' && c <= '~'; };
    const auto fnContinues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
    std::string strPrintable;
    strPrintable.reserve(strText.size());
    for (auto it = strText.begin(); it != strText.end();) {
        // A backslash stays one: patterns are full of them, and nobody reads these texts back.
        const auto itPlainEnd = std::find_if_not(it, strText.end(), fnIsPlain);
        strPrintable.append(it, itPlainEnd);
        // The rest is widened piece by piece, whole characters each.
        const auto itMost = itPlainEnd + std::min(WIDENED, strText.end() - itPlainEnd);
        const auto itWhole =
            std::find_if_not(itMost, itMost + std::min(CONTINUED, strText.end() - itMost), fnContinues);
        it = std::find_if(itPlainEnd, itWhole, fnIsPlain);
        strPrintable += OS::Utf8Lenient(DBG::EscapeControls(OS::WideLenient({itPlainEnd, it})));
    }
    return strPrintable;
}

std::string Quoted(std::string_view strText) {
    return '"' + Printable(strText) + '"';
}

std::string Counted(std::size_t iCount, std::string_view strOne, std::string_view strMany) {
    return std::to_string(iCount).append(" ").append(iCount == 1 ? strOne : strMany);
}

const char* YesNo(bool bFlag) {
    return bFlag ? "yes" : "no";
}

std::string Unescaped(std::string_view strText) {
    static constexpr std::pair<std::string_view, char> ENTITIES[] = {
        {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
    std::string strPlain;
    while (!strText.empty()) {
        const auto* pEntity = std::find_if(std::begin(ENTITIES), std::end(ENTITIES), [&](const auto& entity) {
            return strText.substr(0, entity.first.size()) == entity.first;
        });
        const bool bFound = pEntity != std::end(ENTITIES);
        strPlain += bFound ? pEntity->second : strText.front();
        strText.remove_prefix(bFound ? pEntity->first.size() : 1);
    }
    return strPlain;
}

}  // namespace Text

namespace {

constexpr std::size_t GAP = 2;
constexpr std::size_t NARROWEST = 8;
constexpr wchar_t ELLIPSIS = L'\u2026';

std::size_t GetWidth(const std::string& strCell) {
    return GetTextWidth(OS::WideLenient(strCell));
}

/** @return the cell, or its beginning and an ellipsis */
std::string Cut(const std::string& strCell, std::size_t iWidth) {
    if (GetWidth(strCell) <= iWidth) {
        return strCell;
    }
    OS::x_wstring strWide = OS::WideLenient(strCell);
    while (GetTextWidth(strWide) + 1 > iWidth) {
        strWide.pop_back();
    }
    return OS::Utf8Lenient(strWide + ELLIPSIS);
}

/** Breaks a text at blanks; a word that is wider stays whole. @return at least one line */
std::vector<std::string> Wrap(const std::string& strText, std::size_t iWidth) {
    std::vector<std::string> vecLines(1);
    std::istringstream words(strText);
    for (std::string strWord; std::getline(words, strWord, ' ');) {
        std::string& strLine = vecLines.back();
        if (strLine.empty()) {
            strLine = strWord;
        } else if (GetWidth(strLine) + 1 + GetWidth(strWord) <= iWidth) {
            strLine += ' ' + strWord;
        } else {
            vecLines.push_back(strWord);
        }
    }
    return vecLines;
}

}  // namespace

namespace Text {

std::string Reflow(const std::string& strText, std::size_t iWidth) {
    if (iWidth == 0) {
        return strText;
    }
    std::string strLines;
    std::string strParagraph;
    const auto fnEnd = [&] {
        for (const std::string& strLine :
             strParagraph.empty() ? std::vector<std::string>() : Wrap(strParagraph, iWidth)) {
            strLines += strLine + '\n';
        }
        strParagraph.clear();
    };
    std::istringstream text(strText);
    for (std::string strLine; std::getline(text, strLine);) {
        if (strLine.empty() || strLine.front() == ' ') {
            fnEnd();
            strLines += strLine + '\n';
        } else {
            strParagraph += (strParagraph.empty() ? "" : " ") + strLine;
        }
    }
    fnEnd();
    return strLines;
}

}  // namespace Text

CTextTable::CTextTable(const std::vector<std::string>& vecHeads) {
    if (!vecHeads.empty()) {
        Add(vecHeads);
    }
}

void CTextTable::Add(const std::vector<std::string>& vecCells) {
    std::vector<std::string> vecRow;
    m_vecWidths.resize(std::max(m_vecWidths.size(), vecCells.size()));
    for (const std::string& strCell : vecCells) {
        vecRow.push_back(Text::Printable(strCell));
        std::size_t& iWidth = m_vecWidths[vecRow.size() - 1];
        iWidth = std::max(iWidth, GetWidth(vecRow.back()));
    }
    m_vecRows.push_back(std::move(vecRow));
}

/** The widest column gives way first. */
std::vector<std::size_t> CTextTable::FitWidths(std::size_t iWidth) const {
    std::vector<std::size_t> vecWidths = m_vecWidths;
    if (iWidth == 0 || vecWidths.size() < 2) {
        return vecWidths;
    }
    std::size_t iTotal = std::accumulate(vecWidths.begin(), vecWidths.end(), GAP * (vecWidths.size() - 1));
    while (iTotal > iWidth) {
        const auto itWidest = std::max_element(vecWidths.begin() + 1, vecWidths.end());
        if (*itWidest <= NARROWEST) {
            break;
        }
        --*itWidest;
        --iTotal;
    }
    return vecWidths;
}

/** The last column begins behind the others; of two, before the middle, below what is longer. */
std::string CTextTable::ToWrapped(std::size_t iWidth) const {
    std::size_t iIndent = 0;
    for (std::size_t i = 0; i + 1 < m_vecWidths.size(); ++i) {
        iIndent += m_vecWidths[i] + GAP;
    }
    iIndent = m_vecWidths.size() == 2 ? std::min(iIndent, iWidth / 2) : iIndent;
    const std::size_t iLast = iWidth - std::min(iIndent, iWidth);
    std::string strTable;
    for (const std::vector<std::string>& vecRow : m_vecRows) {
        std::string strLine;
        for (std::size_t i = 0; i + 1 < m_vecWidths.size() && i < vecRow.size(); ++i) {
            strLine += vecRow[i] + std::string(m_vecWidths[i] - GetWidth(vecRow[i]) + GAP, ' ');
        }
        strLine.erase(strLine.find_last_not_of(' ') + 1);
        for (const std::string& strPart : Wrap(vecRow.size() == m_vecWidths.size() ? vecRow.back() : "", iLast)) {
            if (GetWidth(strLine) + GAP > iIndent && !strPart.empty()) {
                strTable += strLine + '\n';
                strLine.clear();
            }
            strLine += strPart.empty() ? "" : std::string(iIndent - GetWidth(strLine), ' ') + strPart;
            strTable += strLine + '\n';
            strLine.clear();
        }
    }
    return strTable;
}

std::string CTextTable::ToString(std::size_t iWidth) const {
    const std::size_t iNeeded = std::accumulate(m_vecWidths.begin(), m_vecWidths.end(),
                                                GAP * (std::max<std::size_t>(m_vecWidths.size(), 1) - 1));
    if (m_bWrapsLast && iWidth != 0 && iNeeded > iWidth) {
        return ToWrapped(iWidth);
    }
    const std::vector<std::size_t> vecWidths = FitWidths(iWidth);
    std::string strTable;
    for (const std::vector<std::string>& vecRow : m_vecRows) {
        for (std::size_t i = 0; i < vecRow.size(); ++i) {
            const std::string strCell = Cut(vecRow[i], vecWidths[i]);
            const std::string strPadding(vecWidths[i] - GetWidth(strCell), ' ');
            strTable += i == 0 ? "" : std::string(GAP, ' ');
            strTable += i >= m_iFirstRight ? strPadding + strCell : strCell + strPadding;
        }
        strTable.erase(strTable.find_last_not_of(' ') + 1);
        strTable += '\n';
    }
    return strTable;
}
