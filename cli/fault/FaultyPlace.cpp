#include "cli/fault/FaultyPlace.h"

#include <algorithm>

#include "cli/fault/FaultyText.h"

namespace {

constexpr std::string_view CDATA = "<![CDATA[";

}  // namespace

CFaultyPlace::CFaultyPlace(std::string_view strText, std::size_t iOffset, const CSourcePlaces& places,
                           std::size_t iStart)
    : m_strText(strText), m_iOffset(iOffset), m_places(places), m_iStart(iStart) {
    CMarkupReader reader(strText);
    for (SPiece piece; reader.Next(piece);) {
        m_previous = m_piece;
        m_piece = piece;
        if (piece.iOffset + piece.strText.size() > iOffset) {
            m_bInside = true;
            return;
        }
        m_bAnyElement = m_bAnyElement || piece.ePiece == EPiece::START || piece.ePiece == EPiece::EMPTY;
        if (piece.ePiece == EPiece::START) {
            m_vecOpen.push_back(piece);
        } else if (piece.ePiece == EPiece::END && !m_vecOpen.empty()) {
            m_vecOpen.pop_back();
        }
    }
}

bool CFaultyPlace::IsOpen(std::string_view strName) const {
    return std::any_of(m_vecOpen.begin(), m_vecOpen.end(),
                       [&](const SPiece& piece) { return piece.GetElement() == strName; });
}

bool CFaultyPlace::IsInCdata() const {
    return IsStart(m_piece.strText, CDATA);
}

bool CFaultyPlace::HasReferences(std::size_t iOffset) const {
    const SPiece& piece = iOffset < m_piece.iOffset ? m_previous : m_piece;
    if (piece.ePiece == EPiece::START || piece.ePiece == EPiece::EMPTY) {
        return FaultyText::IsInValue(piece.strText.substr(0, iOffset - piece.iOffset));
    }
    return piece.ePiece == EPiece::TEXT && !IsStart(piece.strText, CDATA);
}

bool CFaultyPlace::IsBehindText(std::size_t iOffset) const {
    const std::string_view strBefore = FaultyText::TrimEnd(m_strText.substr(0, iOffset));
    return !strBefore.empty() && strBefore.back() != '>';
}
