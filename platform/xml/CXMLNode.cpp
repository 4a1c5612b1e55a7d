#include "platform/xml/CXMLNode.h"

#include <cwchar>
#include <utility>

#include "platform/common/TextConversion.h"
#include "platform/xml/CXMLElement.h"
#include "platform/xml/CXMLTree.hpp"
#include "platform/xml/FaultPoint.h"
#include "platform/xml/XMLMarkup.hpp"
#include "platform/xml/XMLText.hpp"

namespace {

OS::CAutoObjPtr<CXMLNode> Wrap(const std::shared_ptr<CXMLTree>& pTree, CXMLView view) {
    return OS::CAutoObjPtr<CXMLNode>(view ? new CXMLNode(pTree, view.Handle()) : nullptr);
}

void RequireElement(pugi::xml_node node, const char* pWhat) {
    if (!XmlTree::IsElement(node)) {
        XmlText::Throw(pWhat, "the node is no element");
    }
}

/** Nodes taken out may have holders, so they are put aside, not destroyed. */
void RemoveChildren(CXMLTree& tree, pugi::xml_node element) {
    while (const pugi::xml_node child = element.first_child()) {
        tree.Detach(child);
    }
}

/** @return the text node that is all an element holds, null when it holds anything else */
pugi::xml_node OnlyText(pugi::xml_node element) {
    const pugi::xml_node child = element.first_child();
    return child.type() == pugi::node_pcdata && !child.next_sibling() ? child : pugi::xml_node();
}

}  // namespace

CXMLNode::CXMLNode(std::shared_ptr<CXMLTree> pTree, void* pNode) : m_pTree(std::move(pTree)), m_pNode(pNode) {}

CXMLNode::~CXMLNode() = default;

OS::x_wstring CXMLNode::GetText() const {
    return OS::WideText(View().Text());
}

void CXMLNode::SetText(const wchar_t* pText) {
    SetText(pText, pText == nullptr ? 0 : std::wcslen(pText));
}

void CXMLNode::SetText(const wchar_t* pText, std::size_t iLength) {
    XML_STEP("SetText");
    pugi::xml_node node = XmlTree::Node(m_pNode);
    RequireElement(node, "setting a text");
    const std::string strText =
        XmlText::ToUtf8(std::wstring_view(pText, iLength), [&] { return XmlText::TextOf(node.name()); });
    pugi::xml_node text = OnlyText(node);
    if (!text || strText.empty()) {
        RemoveChildren(*m_pTree, node);
        if (strText.empty()) {
            return;
        }
        text = XmlTree::Append(node, pugi::node_pcdata);
    }
    XmlTree::Require(text.set_value(strText.c_str()));
}

OS::CAutoObjPtr<CXMLNode> CXMLNode::GetParentNode() const {
    return Wrap(m_pTree, View().Parent());
}

OS::CAutoObjPtr<CXMLNode> CXMLNode::GetFirstChild() const {
    return Wrap(m_pTree, View().FirstChild());
}

OS::CAutoObjPtr<CXMLNode> CXMLNode::GetNextSibling() const {
    return Wrap(m_pTree, View().NextSibling());
}

void CXMLNode::AppendChild(OS::CAutoObjPtr<CXMLNode>& pNode) {
    XML_STEP("AppendChild");
    constexpr char SUBJECT[] = "appending a node";
    if (pNode == nullptr) {
        XmlText::Throw(SUBJECT, "there is none");
    }
    pugi::xml_node parent = XmlTree::Node(m_pNode);
    RequireElement(parent, SUBJECT);
    pugi::xml_node child = XmlTree::Node(pNode->m_pNode);
    if (XmlTree::IsSelfOrAncestor(child, parent)) {
        XmlText::Throw(SUBJECT, "element " + std::string(child.name()) + " cannot hold itself");
    }
    const std::shared_ptr<CXMLTree> pFrom = pNode->m_pTree;  // keeps the declarations
    const XmlMarkup::CDeclarationRefs vecDeclarations = XmlMarkup::DeclarationsInScope(*pFrom, child);
    if (pFrom != m_pTree) {
        child = m_pTree->CopyIn(*pFrom, child);
        pNode->m_pTree = m_pTree;
        pNode->m_pNode = XmlTree::Handle(child);
    }
    parent.append_move(child);
    XmlMarkup::AddDeclarations(*m_pTree, child, vecDeclarations);
}

OS::CAutoObjPtr<CXMLElement> CXMLNode::ToElement() const {
    return XmlTree::IsElement(XmlTree::Node(m_pNode)) ? OS::CAutoObjPtr<CXMLElement>(new CXMLElement(m_pTree, m_pNode))
                                                      : nullptr;
}

OS::x_wstring CXMLNode::GetAttribute(const wchar_t* pName) const {
    const std::string strName = OS::Utf8Lenient(pName == nullptr ? L"" : pName);
    return OS::WideText(View().Attribute(strName.c_str()));
}
