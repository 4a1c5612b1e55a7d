#pragma once

#include <cstddef>
#include <string_view>

/**
 * Walks the attributes of a start tag as it stands in a text that is well-formed up to what is asked for: where things
 * are, which the tree does not tell. All offsets count from the start of the text.
 */
class CTagScanner {
  public:
    /** @param iTag offset of the tag's "<" */
    CTagScanner(std::string_view strText, std::size_t iTag);

    /** Goes on to the first attribute, then to the next. @return false past the last; the tag's end is known then */
    bool Next();
    std::string_view GetName() const { return m_strText.substr(m_iName, m_iNameEnd - m_iName); }
    std::size_t GetNameOffset() const { return m_iName; }
    /** What stands between the quotes. */
    std::size_t GetValueOffset() const { return m_iValue; }
    std::size_t GetValueLength() const { return m_iValueEnd - m_iValue; }
    /** @return the offset behind the tag's ">", once Next has given false */
    std::size_t GetEnd() const { return m_iPosition; }
    bool IsEmptyElement() const { return m_bEmptyElement; }

  private:
    void SkipTo(std::string_view strEnds);
    void SkipSpace();

    std::string_view m_strText;
    std::size_t m_iPosition;
    std::size_t m_iName = 0;
    std::size_t m_iNameEnd = 0;
    std::size_t m_iValue = 0;
    std::size_t m_iValueEnd = 0;
    bool m_bEmptyElement = false;
};

/** Where an attribute stands in the text. */
struct SAttributePlace {
    std::size_t iName = 0;
    std::size_t iValue = 0;  ///< what stands between the quotes
    std::size_t iValueLength = 0;
    bool bFound = false;
};

/** @return the place of the tag's attribute of that name; that of the tag itself when it has none */
SAttributePlace FindAttribute(std::string_view strText, std::size_t iTag, std::string_view strName);

/**
 * Character data as it is read, back to where it was written: references, CDATA, comments and line ends are seen
 * through.
 * @param iTag offset of the "<" of the element whose whole text is meant
 * @param iByte byte of the element's text in UTF-8; its length for the place right behind it
 * @return the offset in strText; the element's own when there is no such byte
 */
std::size_t FindTextOffset(std::string_view strText, std::size_t iTag, std::size_t iByte);
