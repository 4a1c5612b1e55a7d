#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/common/PlatformExport.h"
#include "platform/common/x_wstring.h"
#include "platform/xml/CXMLParser.h"
#include "xml/UnreadMarkup.h"

/**
 * One document on its way into the store: a text, read once into one tree that every step of an import works on and
 * leaves as it was read, or takes away as a whole. Wide text is made from it only where somebody asks for it. Of
 * unknown elements the tree holds no more than is told of them.
 */
class DLP_PLATFORM_API CPolicyDocument {
  public:
    /** @param strText must outlive the document */
    explicit CPolicyDocument(const OS::x_wstring& strText);
    /** @param strUtf8 must outlive the document */
    explicit CPolicyDocument(std::string_view strUtf8);
    /** A document made from another one. */
    explicit CPolicyDocument(CXMLParser&& document);
    CPolicyDocument(const CPolicyDocument&) = delete;
    CPolicyDocument& operator=(const CPolicyDocument&) = delete;

    /**
     * Parses the text at the first call; afterwards the same document is given again.
     * @return the document, empty when the text does not parse
     * @throws CXMLCOMException<OS::CException> when the XML layer fails for another reason than the text
     */
    const CXMLParser& Load();
    /**
     * Gives the tree away, so that something else is made of it: it is the largest part of a document. Whatever looks
     * at it must not be used any more. Not of a document made from another one.
     * @return what Load gives; that parses the text anew if it is called again
     */
    CXMLParser Take();

    /** @return how many unknown child elements the tree lacks, all of them behind those that it has */
    std::size_t CountBlanked(const CXMLView& parent) const;

    /** @return the length of the text in code points */
    std::size_t GetLength() const;
    /** @return the text as it was handed in, or for a document made from another one, as it would be written */
    OS::x_wstring GetText() const;

  private:
    const OS::x_wstring* m_pWide = nullptr;
    std::string_view m_strUtf8;
    std::vector<SBlanked> m_vecBlanked;
    CXMLParser m_document;
    bool m_bLoaded = false;
    bool m_bDerived = false;
};
