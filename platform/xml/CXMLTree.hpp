#pragma once

#include <cstddef>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

/**
 * The tree behind a document and all that points into it. Nodes that are not attached (new ones, and what SetText took
 * out) hang below a nameless holder beside the root: so they can move into place, and whoever holds one keeps it.
 * The tree knows which of its elements declare namespaces, so that nobody looks for that through their attributes.
 */
class CXMLTree {
  public:
    CXMLTree() = default;
    CXMLTree(const CXMLTree&) = delete;
    CXMLTree& operator=(const CXMLTree&) = delete;

    /** @param strText text that CheckXml has let through */
    static std::shared_ptr<CXMLTree> Parse(std::string strText);
    /** @return a deep copy of what is in the tree with this top: of all that is attached for the document */
    std::shared_ptr<CXMLTree> Clone(pugi::xml_node top) const;

    /** A namespace declaration: the attribute's name and value. */
    using CDeclaration = std::pair<std::string, std::string>;
    using CDeclarations = std::vector<CDeclaration>;

    pugi::xml_node Document() const { return m_document; }
    /** @return the root element, null when there is none */
    pugi::xml_node Root() const;
    /** @return the declaration as it was loaded, empty when there was none */
    const std::string& Declaration() const { return m_strDeclaration; }

    /** @return a new element that is not attached */
    pugi::xml_node Create(const char* pName);
    /** @return a deep copy, not attached, of a node of another tree */
    pugi::xml_node CopyIn(const CXMLTree& from, pugi::xml_node source);
    /** Puts a copy of another tree's root, with that one's declaration, around the root; behind what the other holds.
     */
    void WrapRoot(const CXMLTree& around);
    /** Puts a node of this tree in the place of all that is attached, which is destroyed. */
    void SetRoot(pugi::xml_node node);
    /** Takes a node of this tree out of its place. */
    void Detach(pugi::xml_node node);
    bool IsHolder(pugi::xml_node node) const { return node && node == m_holder; }
    bool HasHolder() const { return !m_holder.empty(); }
    /** Whether any node is not attached. A holder that holds none any more goes, so that no XPath meets it. */
    bool HasDetached();

    bool HasDeclarations() const { return !m_mapDeclarations.empty(); }
    /** @return what an element declares itself, null when that is nothing */
    const CDeclarations* DeclarationsOf(pugi::xml_node element) const;
    /** Called when an attribute of an element of this tree has been set or removed. */
    void NoteAttribute(pugi::xml_node element, std::string_view strName);

  private:
    pugi::xml_node Holder();
    void NoteDeclarations(pugi::xml_node element);
    void NoteAllDeclarations(pugi::xml_node top);

    std::string m_strText;  ///< parsed in place, so names and values point into it
    std::string m_strDeclaration;
    pugi::xml_document m_document;
    pugi::xml_node m_holder;
    std::unordered_map<void*, CDeclarations> m_mapDeclarations;  ///< by element
};

/** Walks and steps over trees; nothing here recurses. */
namespace XmlTree {

inline pugi::xml_node Node(void* pHandle) {
    return pugi::xml_node(static_cast<pugi::xml_node_struct*>(pHandle));
}
inline void* Handle(pugi::xml_node node) {
    return node.internal_object();
}

/** Whether it is an element, which the nameless holder is not. */
bool IsElement(pugi::xml_node node);
/** @return the parent element; null for a root and for a node that is not attached */
pugi::xml_node ParentElement(pugi::xml_node node);
/** @return whether a node is another one or holds it, at any depth */
bool IsSelfOrAncestor(pugi::xml_node node, pugi::xml_node of);
/** @return the topmost node of the tree that the node is in: an element, or the document when it is attached */
pugi::xml_node Top(pugi::xml_node node);

/** First child element, next sibling element; of the given name, of any name for null. */
pugi::xml_node FirstElement(pugi::xml_node node, const char* pName = nullptr);
pugi::xml_node NextElement(pugi::xml_node node, const char* pName = nullptr);

/** @return the next node in document order below top, null after the last */
pugi::xml_node Next(pugi::xml_node node, pugi::xml_node top);

/** Appends a deep copy. @return the copy @throws std::bad_alloc */
pugi::xml_node AppendCopy(pugi::xml_node parent, pugi::xml_node source);

/** Appends a child, or throws std::bad_alloc. */
pugi::xml_node Append(pugi::xml_node parent, pugi::xml_node_type eType);
/** For what the tree's engine reports as false: memory ran out. */
void Require(bool bDone);

}  // namespace XmlTree
