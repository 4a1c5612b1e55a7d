#include "cli/edit/DelimitedText.h"

#include <algorithm>

namespace DelimitedText {

namespace {

constexpr char QUOTE = '"';
constexpr char DISARMED = '\'';
constexpr std::string_view FORMULA_STARTS = "=+-@\t\r\n";
constexpr const char ROW_END[] = "\r\n";

constexpr const char OPEN_QUOTE[] = "this quotation mark is not closed";
constexpr const char STRAY_QUOTE[] =
    "a quotation mark inside a cell needs quotation marks around the cell, and is doubled";
constexpr const char BEHIND_QUOTE[] = "the closing quotation mark must be followed by the separator or the line's end";
constexpr const char STRAY_RETURN[] = "a carriage return needs quotation marks around its cell";

class CReader {
  public:
    CReader(std::string_view strText, char cSeparator) : m_strText(strText), m_cSeparator(cSeparator) {}

    std::vector<std::vector<SCell>> Read() {
        std::vector<std::vector<SCell>> vecRows;
        while (m_iAt < m_strText.size()) {
            if (!SkipRowEnd()) {
                vecRows.push_back(ReadRow());
            }
        }
        return vecRows;
    }

  private:
    std::vector<SCell> ReadRow() {
        std::vector<SCell> vecCells = {ReadCell()};
        while (m_iAt < m_strText.size() && m_strText[m_iAt] == m_cSeparator) {
            ++m_iAt;
            vecCells.push_back(ReadCell());
        }
        if (m_iAt < m_strText.size() && !SkipRowEnd()) {
            throw CFault(m_strText[m_iAt] == '\r' ? STRAY_RETURN : BEHIND_QUOTE, m_iAt);
        }
        return vecCells;
    }

    SCell ReadCell() { return m_iAt < m_strText.size() && m_strText[m_iAt] == QUOTE ? ReadQuoted() : ReadPlain(); }

    SCell ReadPlain() {
        const std::size_t iStart = m_iAt;
        while (m_iAt < m_strText.size() && m_strText[m_iAt] != m_cSeparator && m_strText[m_iAt] != '\n' &&
               m_strText[m_iAt] != '\r') {
            if (m_strText[m_iAt] == QUOTE) {
                throw CFault(STRAY_QUOTE, m_iAt);
            }
            ++m_iAt;
        }
        return {std::string(m_strText.substr(iStart, m_iAt - iStart)), iStart};
    }

    SCell ReadQuoted() {
        SCell cell{{}, m_iAt};
        for (;;) {
            const std::size_t iEnd = m_strText.find(QUOTE, m_iAt + 1);
            if (iEnd == std::string_view::npos) {
                throw CFault(OPEN_QUOTE, cell.iOffset);
            }
            cell.strText += m_strText.substr(m_iAt + 1, iEnd - m_iAt - 1);
            m_iAt = iEnd + 1;
            if (m_iAt == m_strText.size() || m_strText[m_iAt] != QUOTE) {
                return cell;
            }
            cell.strText += QUOTE;
        }
    }

    bool SkipRowEnd() {
        const std::string_view strRest = m_strText.substr(m_iAt);
        const std::size_t iLength = strRest.front() == '\n' ? 1 : strRest.substr(0, 2) == ROW_END ? 2 : 0;
        m_iAt += iLength;
        return iLength != 0;
    }

    std::string_view m_strText;
    char m_cSeparator;
    std::size_t m_iAt = 0;
};

std::string QuoteCell(const std::string& strText, char cSeparator) {
    const bool bPlain = std::none_of(strText.begin(), strText.end(),
                                     [&](char c) { return c == cSeparator || c == QUOTE || c == '\r' || c == '\n'; });
    if (bPlain) {
        return strText;
    }
    std::string strQuoted(1, QUOTE);
    for (const char c : strText) {
        strQuoted.append(c == QUOTE ? 2 : 1, c);
    }
    return strQuoted + QUOTE;
}

/** @return whether a formula's start follows the apostrophes, if any */
bool StartsFormula(const std::string& strText) {
    const std::size_t iFirst = strText.find_first_not_of(DISARMED);
    return iFirst != std::string::npos && FORMULA_STARTS.find(strText[iFirst]) != std::string_view::npos;
}

}  // namespace

std::vector<std::vector<SCell>> Read(std::string_view strText, char cSeparator) {
    return CReader(strText, cSeparator).Read();
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

std::string Rearm(const std::string& strText) {
    return !strText.empty() && strText.front() == DISARMED && StartsFormula(strText) ? strText.substr(1) : strText;
}

}  // namespace DelimitedText
