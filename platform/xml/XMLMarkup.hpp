#pragma once

#include <pugixml.hpp>
#include <string>
#include <vector>

#include "platform/xml/CXMLTree.hpp"

/** Trees as markup, and the namespace declarations that must come along. */
namespace XmlMarkup {

/** Declarations of a tree; there may be as many as a document holds. */
using CDeclarationRefs = std::vector<const CXMLTree::CDeclaration*>;

/**
 * @return the declarations that an element's ancestors make for it and that it does not make itself; else none. Valid
 *         while the tree lives and those ancestors keep their attributes.
 */
CDeclarationRefs DeclarationsInScope(const CXMLTree& tree, pugi::xml_node node);
/** Adds those of the declarations that are not in scope where the element is now. */
void AddDeclarations(CXMLTree& tree, pugi::xml_node element, const CDeclarationRefs& vecDeclarations);

/** Names of attributes to leave out. */
struct SSkip {
    const char* const* apNames = nullptr;
    std::size_t iCount = 0;
};

/** Appends the markup of a node with all its content, with declarations in scope; skip holds for the node itself. */
void Append(std::string& strOut, const CXMLTree& tree, pugi::xml_node node, const SSkip& skip = {});

}  // namespace XmlMarkup
