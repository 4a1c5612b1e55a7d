#include "platform/xml/CXMLView.h"

#include <algorithm>
#include <iterator>

#include "platform/xml/CXMLTree.hpp"
#include "platform/xml/FaultPoint.h"
#include "platform/xml/XMLMarkup.hpp"

namespace {
bool IsText(pugi::xml_node node) {
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}
}  // namespace

std::string_view CXMLView::Name() const {
    return XmlTree::Node(m_pNode).name();
}

std::string_view CXMLView::Attribute(const char* pName) const {
    return XmlTree::Node(m_pNode).attribute(pName).value();
}

bool CXMLView::HasAttribute(const char* pName) const {
    return !XmlTree::Node(m_pNode).attribute(pName).empty();
}

std::vector<std::pair<std::string_view, std::string_view>> CXMLView::Attributes() const {
    const auto attributes = XmlTree::Node(m_pNode).attributes();
    std::vector<std::pair<std::string_view, std::string_view>> vecAttributes;
    vecAttributes.reserve(static_cast<std::size_t>(std::distance(attributes.begin(), attributes.end())));
    for (const pugi::xml_attribute& attribute : attributes) {
        vecAttributes.emplace_back(attribute.name(), attribute.value());
    }
    return vecAttributes;
}

CXMLView CXMLView::Parent() const {
    return CXMLView(m_pTree, XmlTree::Handle(XmlTree::ParentElement(XmlTree::Node(m_pNode))));
}

CXMLView CXMLView::FirstChild(const char* pName) const {
    if (pName != nullptr && XML_FINDS_NOTHING()) {
        return CXMLView();
    }
    return CXMLView(m_pTree, XmlTree::Handle(XmlTree::FirstElement(XmlTree::Node(m_pNode), pName)));
}

CXMLView CXMLView::NextSibling(const char* pName) const {
    const pugi::xml_node node = XmlTree::Node(m_pNode);
    // What stands beside a node that is not attached is no sibling.
    const bool bMayBeDetached = m_pTree != nullptr && m_pTree->HasHolder();
    return bMayBeDetached && !XmlTree::ParentElement(node)
               ? CXMLView()
               : CXMLView(m_pTree, XmlTree::Handle(XmlTree::NextElement(node, pName)));
}

int CXMLView::Depth() const {
    const pugi::xml_node top = XmlTree::Node(m_pNode);
    int iDepth = top ? 1 : 0;
    int iDeepest = iDepth;
    for (pugi::xml_node node = XmlTree::FirstElement(top); node;) {
        iDeepest = std::max(iDeepest, iDepth + 1);
        pugi::xml_node next = XmlTree::FirstElement(node);
        iDepth += next ? 1 : 0;
        while (!next && node != top) {
            next = XmlTree::NextElement(node);
            if (!next) {
                node = node.parent();
                --iDepth;
            }
        }
        node = next;
    }
    return iDeepest;
}

std::string CXMLView::Text() const {
    std::string strText;
    const pugi::xml_node top = XmlTree::Node(m_pNode);
    for (pugi::xml_node node = top; node; node = XmlTree::Next(node, top)) {
        if (IsText(node)) {
            strText += node.value();
        }
    }
    return strText;
}

void CXMLView::AppendMarkup(std::string& strOut, const char* const* apSkip, std::size_t iSkip) const {
    XML_STEP("AppendMarkup");
    if (m_pNode != nullptr) {
        XmlMarkup::Append(strOut, *m_pTree, XmlTree::Node(m_pNode), {apSkip, iSkip});
    }
}

std::size_t CXMLView::Offset() const {
    // The engine knows where the name stands; the "<" is the byte before.
    const std::ptrdiff_t iName = XmlTree::Node(m_pNode).offset_debug();
    return iName > 0 ? static_cast<std::size_t>(iName) - 1 : std::string::npos;
}
