#include "cli/edit/DelimitedText.h"

#include <algorithm>
#include <iterator>

namespace DelimitedText {

namespace {

constexpr char QUOTE = '"';
constexpr char DISARMED = '\'';
/** A spreadsheet for East Asia takes the wide forms for the others. */
constexpr std::string_view FORMULA_STARTS[] = {"=",  "+",      "-",      "@",      "\t",    "\r",
                                               "\n", "\uff1d", "\uff0b", "\uff0d", "\uff20"};
constexpr std::string_view QUOTED = "\"\r\n";
/** What else separates cells where a comma divides numbers, and in what is pasted. */
constexpr std::string_view QUOTED_BETWEEN_COMMAS = ";\t";
constexpr const char ROW_END[] = "\r\n";

constexpr const char OPEN_QUOTE[] = "this quotation mark is not closed";
constexpr const char STRAY_QUOTE[] =
    "a quotation mark inside a cell needs quotation marks around the cell, and is doubled";
constexpr const char BEHIND_QUOTE[] = "the closing quotation mark must be followed by the separator or the line's end";
constexpr const char STRAY_RETURN[] = "a carriage return needs quotation marks around its cell";

class CReader {
  public:
    CReader(std::string_view strText, std::size_t iStart, char cSeparator, std::size_t iMost)
        : m_strText(strText), m_cSeparator(cSeparator), m_vecUnquoted(iMost), m_iAt(iStart) {}

    /** @return false when there are no more rows */
    bool Next(SRow& row) {
        while (m_iAt < m_strText.size() && SkipRowEnd()) {
        }
        const bool bThere = m_iAt < m_strText.size();
        if (bThere) {
            ReadRow(row);
        }
        return bThere;
    }

  private:
    void ReadRow(SRow& row) {
        row.vecCells.clear();
        row.iCells = 0;
        do {
            m_iAt += row.iCells == 0 ? 0 : 1;
            const SCell cell = ReadCell(row.iCells);
            if (row.iCells++ < m_vecUnquoted.size()) {
                row.vecCells.push_back(cell);
            }
        } while (m_iAt < m_strText.size() && m_strText[m_iAt] == m_cSeparator);
        if (m_iAt < m_strText.size() && !SkipRowEnd()) {
            throw CFault(m_strText[m_iAt] == '\r' ? STRAY_RETURN : BEHIND_QUOTE, m_iAt);
        }
    }

    SCell ReadCell(std::size_t iCell) {
        return m_iAt < m_strText.size() && m_strText[m_iAt] == QUOTE ? ReadQuoted(iCell) : ReadPlain();
    }

    SCell ReadPlain() {
        const std::size_t iStart = m_iAt;
        while (m_iAt < m_strText.size() && m_strText[m_iAt] != m_cSeparator && m_strText[m_iAt] != '\n' &&
               m_strText[m_iAt] != '\r') {
            if (m_strText[m_iAt] == QUOTE) {
                throw CFault(STRAY_QUOTE, m_iAt);
            }
            ++m_iAt;
        }
        return {m_strText.substr(iStart, m_iAt - iStart), iStart};
    }

    SCell ReadQuoted(std::size_t iCell) {
        const std::size_t iStart = m_iAt;
        bool bDoubled = false;
        for (;;) {
            const std::size_t iEnd = m_strText.find(QUOTE, m_iAt + 1);
            if (iEnd == std::string_view::npos) {
                throw CFault(OPEN_QUOTE, iStart);
            }
            m_iAt = iEnd + 1;
            if (m_iAt == m_strText.size() || m_strText[m_iAt] != QUOTE) {
                break;
            }
            bDoubled = true;
        }
        const std::string_view strQuoted = m_strText.substr(iStart + 1, m_iAt - iStart - 2);
        return {bDoubled && iCell < m_vecUnquoted.size() ? Unquote(strQuoted, m_vecUnquoted[iCell]) : strQuoted,
                iStart};
    }

    /** @return the text with one of each two quotation marks, kept in strUnquoted */
    static std::string_view Unquote(std::string_view strQuoted, std::string& strUnquoted) {
        strUnquoted.clear();
        while (!strQuoted.empty()) {
            const std::size_t iQuote = std::min(strQuoted.find(QUOTE), strQuoted.size());
            strUnquoted += strQuoted.substr(0, iQuote + 1);
            strQuoted.remove_prefix(std::min(iQuote + 2, strQuoted.size()));
        }
        return strUnquoted;
    }

    bool SkipRowEnd() {
        const std::string_view strRest = m_strText.substr(m_iAt);
        const std::size_t iLength = strRest.front() == '\n' ? 1 : strRest.substr(0, 2) == ROW_END ? 2 : 0;
        m_iAt += iLength;
        return iLength != 0;
    }

    std::string_view m_strText;
    char m_cSeparator;
    std::vector<std::string> m_vecUnquoted;  ///< of a row, cells that differ from what is written between their quotes
    std::size_t m_iAt;
};

bool IsPlain(std::string_view strText, char cSeparator) {
    const bool bOthers = cSeparator == ',' && strText.find_first_of(QUOTED_BETWEEN_COMMAS) != std::string_view::npos;
    return !bOthers && strText.find(cSeparator) == std::string_view::npos &&
           strText.find_first_of(QUOTED) == std::string_view::npos;
}

std::string QuoteCell(const std::string& strText, char cSeparator) {
    if (IsPlain(strText, cSeparator)) {
        return strText;
    }
    std::string strQuoted(1, QUOTE);
    for (const char c : strText) {
        strQuoted.append(c == QUOTE ? 2 : 1, c);
    }
    return strQuoted + QUOTE;
}

/** @return whether a formula's start follows the apostrophes, if any */
bool StartsFormula(std::string_view strText) {
    const std::string_view strRest = strText.substr(std::min(strText.find_first_not_of(DISARMED), strText.size()));
    return std::any_of(std::begin(FORMULA_STARTS), std::end(FORMULA_STARTS),
                       [&](std::string_view strStart) { return strRest.starts_with(strStart); });
}

}  // namespace

void Read(std::string_view strText, std::size_t iStart, char cSeparator, std::size_t iMost,
          const std::function<void(const SRow&)>& fnRow) {
    CReader reader(strText, iStart, cSeparator, iMost);
    for (SRow row; reader.Next(row);) {
        fnRow(row);
    }
}

std::string Write(const std::vector<std::string>& vecCells, char cSeparator) {
    std::string strRow;
    for (const std::string& strCell : vecCells) {
        strRow += QuoteCell(strCell, cSeparator) + cSeparator;
    }
    strRow.pop_back();
    return strRow + ROW_END;
}

std::string Disarm(const std::string& strText) {
    return StartsFormula(strText) ? DISARMED + strText : strText;
}

std::string_view Rearm(std::string_view strText) {
    return !strText.empty() && strText.front() == DISARMED && StartsFormula(strText) ? strText.substr(1) : strText;
}

}  // namespace DelimitedText
