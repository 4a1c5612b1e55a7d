#pragma once

#include <cstddef>
#include <string_view>

/** Pieces that follow each other in a document. */
enum class EPiece {
    START,
    EMPTY,  ///< an element without content, in one tag
    END,
    TEXT,  ///< also a CDATA section
    COMMENT,
    INSTRUCTION,  ///< also the declaration
};

struct SPiece {
    EPiece ePiece = EPiece::TEXT;
    std::string_view strText;  ///< as it stands in the document, delimiters included
    std::size_t iOffset = 0;

    /** @return whether it is text that is nothing but white space, as it stands */
    bool IsBlank() const;
    /** @return whether it is the document's declaration */
    bool IsDeclaration() const;
    /** @return of text the offset of the first of it that is no white space; of blank text its end */
    std::size_t GetWordOffset() const;
    /** @return of a tag the element's name */
    std::string_view GetElement() const;
};

/** Takes a document apart, front to back, without copying. */
class CMarkupReader {
  public:
    /** @param strDocument from its first "<" on, well-formed as far as its pieces matter; must outlive them */
    explicit CMarkupReader(std::string_view strDocument) : m_strDocument(strDocument) {}
    /** @return false past the last piece */
    bool Next(SPiece& piece);

  private:
    std::string_view m_strDocument;
    std::size_t m_iPosition = 0;
};
