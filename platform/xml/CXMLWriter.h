#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/common/PlatformExport.h"
#include "platform/xml/CXMLView.h"

/**
 * Writes markup in UTF-8, front to back, escaped so that what is set is what is read back: & < > " and, in attributes,
 * TAB LF CR as character references; in text CR. Empty elements are <a/>; nothing is indented.
 * A character that XML cannot carry throws CXMLCOMException<OS::CException>, which names its number; text that is not
 * strict UTF-8 likewise.
 */
class DLP_PLATFORM_API CXMLWriter {
  public:
    /** May take what is written so far and leave an empty text. */
    using Taker = std::function<void(std::string& strOut)>;

    /**
     * Appends to strOut, which must outlive the writer.
     * @param fnTake asked before an element begins when strOut is long; what it throws passes
     */
    explicit CXMLWriter(std::string& strOut, Taker fnTake = {}) : m_strOut(strOut), m_fnTake(std::move(fnTake)) {}

    /** The declaration of version 1.0 and UTF-8; only at the very start. */
    void Declaration();
    /** @param pName must outlive the writer */
    void StartElement(const char* pName);
    /** Only between StartElement and the first content. */
    void Attribute(const char* pName, std::string_view strValue);
    void Attribute(const char* pName, int iValue);
    void Text(std::string_view strText);
    /** An element with text and no attributes. */
    void TextElement(const char* pName, std::string_view strText);
    /** Content that such a writer has written: elements, whole. */
    void Raw(std::string_view strMarkup);
    /**
     * Writes what stands between the tags of an element that such a writer has written and that holds nothing but
     * elements of one name. Any text may be handed in: it is looked through first.
     * @return false, nothing written, when it is not surely such an element; reading it tells what it is
     */
    bool Content(std::string_view strText, std::string_view strElement, std::string_view strChild);
    /** The markup of a node of a loaded document, whole. */
    void Node(const CXMLView& node);
    void EndElement();

    /** @return whether content would now go into an element of this name */
    bool IsIn(const char* pName) const;
    /** @return whether the element ended last has this name and nests no deeper than is read; Raw counts as flat */
    bool HasEnded(const char* pName) const;
    /** @return how deep elements nest that were written so far, counted from below those that are open now */
    std::size_t DepthWritten() const { return m_iDeepest - m_vecOpen.size(); }

  private:
    void OfferText();
    void MakeRoom();
    void CloseStartTag();

    std::string& m_strOut;
    Taker m_fnTake;
    std::vector<const char*> m_vecOpen;
    const char* m_pEnded = "";
    std::size_t m_iDeepest = 0;
    bool m_bInStartTag = false;
};

/** @return whether markup that a writer has written begins with an element of this name */
DLP_PLATFORM_API bool StartsWithElement(std::string_view strMarkup, std::string_view strName);

/** Appends text escaped for an attribute value or for element content. @throws as CXMLWriter */
DLP_PLATFORM_API void AppendEscaped(std::string& strOut, std::string_view strText, bool bAttribute);
