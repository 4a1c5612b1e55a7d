#pragma once

#include <cstddef>
#include <memory>

#include "platform/common/CAutoObjPtr.h"
#include "platform/common/PlatformExport.h"
#include "platform/common/x_wstring.h"
#include "platform/xml/CXMLView.h"

class CXMLElement;
class CXMLTree;

/**
 * One node of a document. A small wrapper that shares ownership of the tree it points into, so it stays usable after
 * the document object is gone. Not safe for use on several threads at once, nor are two wrappers of one tree.
 * Operations throw CXMLCOMException<OS::CException> when they fail.
 */
class DLP_PLATFORM_API CXMLNode {
  public:
    /** Made by the XML layer only. */
    CXMLNode(std::shared_ptr<CXMLTree> pTree, void* pNode);
    CXMLNode(const CXMLNode&) = delete;
    CXMLNode& operator=(const CXMLNode&) = delete;
    virtual ~CXMLNode();

    /** @return all text and CDATA below the node, joined, untrimmed */
    virtual OS::x_wstring GetText() const;
    /** Replaces all children by one text node; "" leaves none. @throws for a character that XML cannot carry */
    virtual void SetText(const wchar_t* pText);
    /** @return the parent element; null for a root or a node that is not attached */
    virtual OS::CAutoObjPtr<CXMLNode> GetParentNode() const;
    /** @return the first child element, null if none (text, comments and the like are not yielded) */
    virtual OS::CAutoObjPtr<CXMLNode> GetFirstChild() const;
    /** @return the next sibling element, null after the last */
    virtual OS::CAutoObjPtr<CXMLNode> GetNextSibling() const;
    /**
     * Appends a node as the last child. A node of the same document moves; a node of another document is copied in with
     * all it holds and pNode points to the copy afterwards. Namespace declarations in scope come along.
     * @throws when pNode is null, this node itself or one of its ancestors
     */
    virtual void AppendChild(OS::CAutoObjPtr<CXMLNode>& pNode);
    /** @return a new wrapper of the same node seen as an element; null when it is none */
    virtual OS::CAutoObjPtr<CXMLElement> ToElement() const;
    /** @return the attribute's value; empty when it is absent or the node is no element */
    virtual OS::x_wstring GetAttribute(const wchar_t* pName) const;

    /** As SetText, for text of iLength characters. @throws for any character XML cannot carry, U+0000 included */
    void SetText(const wchar_t* pText, std::size_t iLength);
    void SetText(const std::wstring& strText) { SetText(strText.data(), strText.size()); }
    OS::x_wstring GetAttribute(const std::wstring& strName) const { return GetAttribute(strName.c_str()); }

    /** The same node in UTF-8; valid while this wrapper lives. */
    CXMLView View() const { return CXMLView(m_pTree.get(), m_pNode); }

  protected:
    std::shared_ptr<CXMLTree> m_pTree;
    void* m_pNode;
};
