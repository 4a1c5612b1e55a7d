#include "cli/IndentXml.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <vector>

namespace {

constexpr std::size_t STEP = 2;

/** Pieces that follow each other in a document. */
enum class EPiece { START, EMPTY, END, TEXT, OTHER };

struct SPiece {
    EPiece ePiece;
    std::string_view strText;
};

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
    if (strTag[1] == '/') {
        return {EPiece::END, strTag};
    }
    return {strTag[strTag.size() - 2] == '/' ? EPiece::EMPTY : EPiece::START, strTag};
}

SPiece TakePiece(std::string_view strRest) {
    struct SOpening {
        std::string_view strStart;
        std::string_view strEnd;
        EPiece ePiece;
    };
    static constexpr SOpening OPENINGS[] = {
        {"<!--", "-->", EPiece::OTHER}, {"<?", "?>", EPiece::OTHER}, {"<![CDATA[", "]]>", EPiece::TEXT}};
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

std::vector<SPiece> Split(std::string_view strDocument) {
    std::vector<SPiece> vecPieces;
    while (!strDocument.empty()) {
        vecPieces.push_back(TakePiece(strDocument));
        strDocument.remove_prefix(vecPieces.back().strText.size());
    }
    return vecPieces;
}

/** What stands directly in an element. */
struct SContent {
    bool bText = false;
    bool bElements = false;
};

/**
 * White space is dropped when a document is read only between elements, so only an element that holds elements and no
 * text may be spread over lines; a lone comment does not make it one.
 * @return for each piece whether it is the start tag of another element than that
 */
std::vector<bool> FindElementsToKeep(const std::vector<SPiece>& vecPieces) {
    std::vector<SContent> vecContents(vecPieces.size());
    std::vector<std::size_t> vecOpen;
    for (std::size_t i = 0; i < vecPieces.size(); ++i) {
        const EPiece ePiece = vecPieces[i].ePiece;
        if (!vecOpen.empty()) {
            SContent& content = vecContents[vecOpen.back()];
            content.bText = content.bText || ePiece == EPiece::TEXT;
            content.bElements = content.bElements || ePiece == EPiece::START || ePiece == EPiece::EMPTY;
        }
        if (ePiece == EPiece::START) {
            vecOpen.push_back(i);
        } else if (ePiece == EPiece::END) {
            vecOpen.pop_back();
        }
    }
    std::vector<bool> vecKeep;
    std::transform(vecContents.begin(), vecContents.end(), std::back_inserter(vecKeep),
                   [](const SContent& content) { return content.bText || !content.bElements; });
    return vecKeep;
}

}  // namespace

std::string IndentXml(std::string_view strDocument) {
    const std::vector<SPiece> vecPieces = Split(strDocument);
    const std::vector<bool> vecKeep = FindElementsToKeep(vecPieces);
    std::string strIndented;
    std::size_t iDepth = 0;
    std::size_t iKept = 0;  // open elements from the outermost one that is kept as it is
    for (std::size_t i = 0; i < vecPieces.size(); ++i) {
        const EPiece ePiece = vecPieces[i].ePiece;
        iDepth -= ePiece == EPiece::END ? 1 : 0;
        if (i != 0 && iKept == 0) {
            strIndented += '\n' + std::string(iDepth * STEP, ' ');
        }
        strIndented += vecPieces[i].strText;
        if (ePiece == EPiece::START) {
            ++iDepth;
            iKept += iKept != 0 || vecKeep[i] ? 1 : 0;
        } else if (ePiece == EPiece::END && iKept != 0) {
            --iKept;
        }
    }
    return strIndented + '\n';
}
