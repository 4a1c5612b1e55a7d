#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/xml/CXMLCOMException.h"
#include "platform/xml/CXMLElement.h"
#include "platform/xml/CXMLNode.h"
#include "platform/xml/CXMLNodeList.h"

/** Kinds of nodes that CreateNode makes. */
enum XMLPARSER_NODETYPE : int { XMLPARSER_NODE_ELEMENT = 1 };

/** Why a text was not loaded, and where. */
struct SXMLLoadError {
    std::string strMessage;   ///< in words, UTF-8; empty when the text was loaded
    std::size_t iOffset = 0;  ///< bytes of UTF-8 from the start of the text
    std::size_t iLine = 0;    ///< from 1; 0 when there is no place
    std::size_t iColumn = 0;  ///< from 1, in code points
};

/**
 * An XML document. Text is checked strictly before a tree is built: well-formed XML 1.0 in UTF-8, no DOCTYPE, elements
 * nested at most MAX_DEPTH deep. A declared encoding is ignored: wide text is decoded already, bytes are UTF-8.
 * White-space-only text between elements is dropped; everything else is kept.
 * Copies are deep: a change of one never shows in another. Not safe for use on several threads at once.
 */
class DLP_PLATFORM_API CXMLParser {
  public:
    static constexpr int MAX_DEPTH = 256;

    CXMLParser();
    /**
     * Loads a file (backslashes in the path may stand for slashes). UTF-16 with a byte order mark is converted first;
     * everything else is UTF-8, and declaring UTF-16 without being it is a fault. A file with no element at all gives a
     * document without root.
     * @throws CXMLCOMException<OS::CException> when it cannot be read or is not well-formed otherwise
     */
    explicit CXMLParser(const wchar_t* pPath);
    CXMLParser(const CXMLParser& other);
    CXMLParser& operator=(const CXMLParser& other);
    CXMLParser(CXMLParser&& other) noexcept;
    CXMLParser& operator=(CXMLParser&& other) noexcept;
    virtual ~CXMLParser();

    /** Replaces what was loaded. @return false for text that does not parse; the document is then empty */
    virtual bool LoadXML(const wchar_t* pText);
    /**
     * Writes the whole document: the declaration as loaded, if there was one, then the root and what stands beside it.
     * @return false for an empty document, which gives an empty text
     */
    virtual bool SaveXML(OS::x_wstring& strOut) const;
    /** @return the root element, null for an empty document */
    virtual OS::CAutoObjPtr<CXMLElement> GetRootElement() const;
    /** @return a new node of this document, not attached to anything. @throws for a bad name or another type */
    virtual OS::CAutoObjPtr<CXMLNode> CreateNode(XMLPARSER_NODETYPE eType, const wchar_t* pName);
    /** @return the first match in document order, null if none */
    virtual OS::CAutoObjPtr<CXMLNode> XPathSelectSingleNode(const wchar_t* pXPath) const;
    /** @return all matches, possibly none; null only when the document has no root */
    virtual OS::CAutoObjPtr<CXMLNodeList> XPathSelectNodes(const wchar_t* pXPath) const;

    /** As LoadXML, for text of iLength characters; U+0000 anywhere in it gives false. */
    bool LoadXML(const wchar_t* pText, std::size_t iLength);
    bool LoadXML(const std::wstring& strText) { return LoadXML(strText.data(), strText.size()); }
    /** As LoadXML, for bytes of UTF-8; a leading byte order mark is dropped. The text is copied. */
    bool LoadUtf8(std::string_view strText);
    /**
     * As LoadUtf8, for a text that is handed over.
     * @param fnEdit called with the text once it is known to be well-formed, which it must stay, and before there is a
     *        tree; may be empty
     */
    bool Load(std::string strText, const std::function<void(std::string&)>& fnEdit = {});
    /**
     * Appends the root of another document to this one's, as CXMLNode::AppendChild does with its node. Nothing is
     * copied: the other document's tree becomes this one's, and that document is empty. Nodes of this one stay behind.
     */
    void AppendRoot(CXMLParser&& other);
    /**
     * Makes a node of this document its root. Whatever else is attached goes: no node, list or view of that may be used
     * any more.
     */
    void SetRoot(const OS::CAutoObjPtr<CXMLNode>& pNode);
    /** As SaveXML, in UTF-8, appended. */
    void SaveUtf8(std::string& strOut) const;
    /** @return why the last load failed; an empty message when it did not */
    const SXMLLoadError& GetLoadError() const { return m_error; }

    OS::CAutoObjPtr<CXMLNode> CreateNode(XMLPARSER_NODETYPE eType, const std::wstring& strName) {
        return CreateNode(eType, strName.c_str());
    }
    OS::CAutoObjPtr<CXMLNode> XPathSelectSingleNode(const std::wstring& strXPath) const {
        return XPathSelectSingleNode(strXPath.c_str());
    }
    OS::CAutoObjPtr<CXMLNodeList> XPathSelectNodes(const std::wstring& strXPath) const {
        return XPathSelectNodes(strXPath.c_str());
    }
    /** The root in UTF-8; valid while the document keeps what it has loaded. */
    CXMLView RootView() const;

  private:
    CXMLView Root() const;

    std::shared_ptr<CXMLTree> m_pTree;
    SXMLLoadError m_error;
};
