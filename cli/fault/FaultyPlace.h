#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "cli/layout/MarkupReader.h"
#include "platform/common/SourcePlaces.h"

/** The place where the engine stopped, in its piece of markup, and what is open there. */
class CFaultyPlace {
  public:
    /** @param places of the file @param iStart where in the file the text begins */
    CFaultyPlace(std::string_view strText, std::size_t iOffset, const CSourcePlaces& places, std::size_t iStart);

    std::size_t GetOffset() const { return m_iOffset; }
    std::size_t GetLine(std::size_t iOffset) const { return m_places.Find(m_iStart + iOffset).iLine; }
    /** @return null at the end of the text */
    const SPiece* GetPiece() const { return m_bInside ? &m_piece : nullptr; }
    /** @return the element that is open; null when there is none */
    const SPiece* GetOpen() const { return m_vecOpen.empty() ? nullptr : &m_vecOpen.back(); }
    bool IsOpen(std::string_view strName) const;
    /** @return how many elements are open */
    std::size_t GetDepth() const { return m_vecOpen.size(); }
    bool IsBehindRoot() const { return m_bAnyElement && m_vecOpen.empty(); }
    bool IsIn(EPiece ePiece) const { return m_bInside && m_piece.ePiece == ePiece; }
    bool IsInStartTag() const { return IsIn(EPiece::START) || IsIn(EPiece::EMPTY); }
    bool IsInCdata() const;
    /**
     * @param iOffset in the piece of the place or in the one before
     * @return whether text or a value is read there, in which references stand for characters
     */
    bool HasReferences(std::size_t iOffset) const;
    /** @return whether words stand before that place, so that what begins there may be a part of them */
    bool IsBehindText(std::size_t iOffset) const;
    std::string_view GetText() const { return m_strText; }
    /** @return the text from the place on */
    std::string_view Rest() const { return m_strText.substr(m_iOffset); }
    /** @return what the piece holds before the place */
    std::string_view Before() const {
        return m_strText.substr(m_piece.iOffset, m_iOffset - std::min(m_piece.iOffset, m_iOffset));
    }
    bool Reads(std::string_view strStart) const { return IsStart(Rest(), strStart); }

    static bool IsStart(std::string_view strText, std::string_view strStart) {
        return strText.substr(0, strStart.size()) == strStart;
    }

  private:
    std::string_view m_strText;
    std::size_t m_iOffset;
    const CSourcePlaces& m_places;
    std::size_t m_iStart;
    SPiece m_piece;
    SPiece m_previous;
    bool m_bInside = false;
    bool m_bAnyElement = false;
    std::vector<SPiece> m_vecOpen;
};
