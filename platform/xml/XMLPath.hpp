#pragma once

#include <pugixml.hpp>
#include <vector>

#include "platform/xml/CXMLTree.hpp"

/** Selection by XPath 1.0. Only what is attached where the context is is seen; "/" is the top of the context's tree. */
namespace XmlPath {

/** Nodes, as the wrappers hold them. */
using CHandles = std::vector<void*>;

/**
 * @param context an element or the document
 * @param bFirstOnly stop at the first match
 * @return the matches in document order: elements and what stands in them, never the document itself
 * @throws CXMLCOMException<OS::CException> for a faulty XPath or one that selects anything but nodes of the tree
 */
CHandles Select(CXMLTree& tree, pugi::xml_node context, const wchar_t* pXPath, bool bFirstOnly);

}  // namespace XmlPath
