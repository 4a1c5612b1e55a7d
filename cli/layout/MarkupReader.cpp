#include "cli/layout/MarkupReader.h"

#include <algorithm>

namespace {

constexpr std::string_view SPACE = " \t\r\n";
constexpr std::string_view CDATA = "<![CDATA[";
constexpr std::string_view DECLARATION = "<?xml";
constexpr std::string_view NAME_ENDS = " \t\r\n/>";

/** @return the position after the first strEnd, or the end */
std::size_t FindAfter(std::string_view strText, std::string_view strEnd) {
    const std::size_t iEnd = strText.find(strEnd);
    return iEnd == std::string_view::npos ? strText.size() : iEnd + strEnd.size();
}

/** @return the length of the tag that the text begins with; a ">" in an attribute's value does not end it */
std::size_t GetTagLength(std::string_view strText) {
    char cQuote = '\0';
    for (std::size_t i = 0; i < strText.size(); ++i) {
        const char c = strText[i];
        if (cQuote != '\0') {
            cQuote = c == cQuote ? '\0' : cQuote;
        } else if (c == '"' || c == '\'') {
            cQuote = c;
        } else if (c == '>') {
            return i + 1;
        }
    }
    return strText.size();
}

SPiece TakeTag(std::string_view strRest) {
    const std::string_view strTag = strRest.substr(0, GetTagLength(strRest));
    if (strTag.substr(0, 2) == "</") {
        return {EPiece::END, strTag};
    }
    return {strTag.ends_with("/>") ? EPiece::EMPTY : EPiece::START, strTag};
}

SPiece TakePiece(std::string_view strRest) {
    struct SOpening {
        std::string_view strStart;
        std::string_view strEnd;
        EPiece ePiece;
    };
    static constexpr SOpening OPENINGS[] = {
        {"<!--", "-->", EPiece::COMMENT}, {"<?", "?>", EPiece::INSTRUCTION}, {CDATA, "]]>", EPiece::TEXT}};
    if (strRest.front() != '<') {
        return {EPiece::TEXT, strRest.substr(0, std::min(strRest.find('<'), strRest.size()))};
    }
    for (const SOpening& opening : OPENINGS) {
        if (strRest.substr(0, opening.strStart.size()) == opening.strStart) {
            return {opening.ePiece, strRest.substr(0, FindAfter(strRest, opening.strEnd))};
        }
    }
    return TakeTag(strRest);
}

}  // namespace

bool SPiece::IsBlank() const {
    return ePiece == EPiece::TEXT && strText.find_first_not_of(SPACE) == std::string_view::npos;
}

std::size_t SPiece::GetWordOffset() const {
    const std::size_t iStart = strText.substr(0, CDATA.size()) == CDATA ? CDATA.size() : 0;
    return iOffset + std::min(strText.find_first_not_of(SPACE, iStart), strText.size());
}

bool SPiece::IsDeclaration() const {
    return strText.substr(0, DECLARATION.size()) == DECLARATION &&
           SPACE.find(strText[DECLARATION.size()]) != std::string_view::npos;
}

std::string_view SPiece::GetElement() const {
    const std::size_t iName = ePiece == EPiece::END ? 2 : 1;
    return strText.substr(iName, strText.find_first_of(NAME_ENDS, iName) - iName);
}

bool CMarkupReader::Next(SPiece& piece) {
    if (m_iPosition == m_strDocument.size()) {
        return false;
    }
    piece = TakePiece(m_strDocument.substr(m_iPosition));
    piece.iOffset = m_iPosition;
    m_iPosition += piece.strText.size();
    return true;
}
