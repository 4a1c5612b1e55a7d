#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/common/PlatformExport.h"

class CXMLTree;

/**
 * A look at one node of a loaded document, in UTF-8, without copying and without owning: valid while any node, element,
 * list or document object of the same tree lives and the node is not removed. Null when nothing is looked at; every
 * operation of a null view gives nothing.
 */
class DLP_PLATFORM_API CXMLView {
  public:
    CXMLView() = default;
    /** Wraps a node of the tree behind the XML classes. */
    CXMLView(const CXMLTree* pTree, void* pNode) : m_pTree(pTree), m_pNode(pNode) {}

    explicit operator bool() const { return m_pNode != nullptr; }
    void* Handle() const { return m_pNode; }

    /** @return the element's name as written, prefix included */
    std::string_view Name() const;
    /** @return the attribute's value, empty when it is absent */
    std::string_view Attribute(const char* pName) const;
    bool HasAttribute(const char* pName) const;
    /** @return all attributes, each its name and value, in document order */
    std::vector<std::pair<std::string_view, std::string_view>> Attributes() const;

    CXMLView Parent() const;
    /** First child element, of any name or of the one given. */
    CXMLView FirstChild(const char* pName = nullptr) const;
    /** Next sibling element, of any name or of the one given. */
    CXMLView NextSibling(const char* pName = nullptr) const;

    /** @return how deep elements nest here, this one counted; 0 for a null view */
    int Depth() const;

    /** @return all text and CDATA below the node, joined, untrimmed */
    std::string Text() const;

    /**
     * Appends the element's own markup with all its content. Namespace declarations in scope from its ancestors come
     * along, behind its own attributes. Empty elements are <a/>; no declaration, indentation or line break is added.
     * @param apSkip attributes of the element itself to leave out
     */
    void AppendMarkup(std::string& strOut, const char* const* apSkip = nullptr, std::size_t iSkip = 0) const;

    /** @return the byte offset of the start tag's "<" in the text that was loaded; npos when there is none */
    std::size_t Offset() const;

  private:
    const CXMLTree* m_pTree = nullptr;
    void* m_pNode = nullptr;
};
