#include "platform/xml/CXMLTree.hpp"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "platform/xml/FaultPoint.h"

namespace {

constexpr char BLANKS[] = " \t\r\n";
constexpr unsigned PARSE_OPTIONS =
    (pugi::parse_full & ~(pugi::parse_doctype | pugi::parse_declaration)) | pugi::parse_ws_pcdata;

bool IsBlank(const char* pText) {
    return pText[std::strspn(pText, BLANKS)] == '\0';
}

bool IsBlankText(pugi::xml_node node) {
    return node.type() == pugi::node_pcdata && IsBlank(node.value());
}

/** Blank text stands between elements when there are elements and no other text beside it. */
bool HasBlanksBetweenElements(pugi::xml_node element) {
    bool bBlank = false;
    bool bElement = false;
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
        const pugi::xml_node_type eType = child.type();
        if (eType == pugi::node_element) {
            bElement = true;
        } else if (eType == pugi::node_pcdata || eType == pugi::node_cdata) {
            if (!IsBlank(child.value())) {
                return false;
            }
            bBlank = bBlank || eType == pugi::node_pcdata;
        }
    }
    return bBlank && bElement;
}

void DropBlanksBetweenElements(pugi::xml_node top) {
    for (pugi::xml_node node = top; node; node = XmlTree::Next(node, top)) {
        if (!HasBlanksBetweenElements(node)) {
            continue;
        }
        for (pugi::xml_node child = node.first_child(); child;) {
            const pugi::xml_node next = child.next_sibling();
            if (IsBlankText(child)) {
                node.remove_child(child);
            }
            child = next;
        }
    }
}

/** A look that spares written documents the walk: text begins behind a ">", and blanks may be written as references. */
bool MayHoldBlankText(std::string_view strText) {
    constexpr std::string_view STARTS = " \t\r\n&";
    strText = strText.substr(0, strText.rfind('<'));
    for (std::size_t i = strText.find('>'); i != std::string_view::npos; i = strText.find('>', i + 1)) {
        if (i + 1 < strText.size() && STARTS.find(strText[i + 1]) != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

std::string FindDeclaration(std::string_view strText) {
    constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
    constexpr std::string_view START = "<?xml";
    constexpr std::string_view END = "?>";
    if (strText.substr(0, BYTE_ORDER_MARK.size()) == BYTE_ORDER_MARK) {
        strText.remove_prefix(BYTE_ORDER_MARK.size());
    }
    const bool bStarts = strText.substr(0, START.size()) == START;
    // A processing instruction may be named "xml-" and so on.
    if (!bStarts || std::strchr(BLANKS, strText[START.size()]) == nullptr) {
        return std::string();
    }
    return std::string(strText.substr(0, strText.find(END) + END.size()));
}

bool Matches(pugi::xml_node node, const char* pName) {
    return pName == nullptr ? XmlTree::IsElement(node)
                            : node.type() == pugi::node_element && std::strcmp(node.name(), pName) == 0;
}

bool IsDeclaration(std::string_view strName) {
    return strName == "xmlns" || strName.substr(0, 6) == "xmlns:";
}

void CopyContents(pugi::xml_node target, pugi::xml_node source) {
    XmlTree::Require(*source.name() == '\0' || target.set_name(source.name()));
    XmlTree::Require(*source.value() == '\0' || target.set_value(source.value()));
    for (const pugi::xml_attribute& attribute : source.attributes()) {
        pugi::xml_attribute copy = target.append_attribute(attribute.name());
        XmlTree::Require(copy.set_value(attribute.value()));
    }
}

}  // namespace

std::shared_ptr<CXMLTree> CXMLTree::Parse(std::string strText) {
    auto pTree = std::make_shared<CXMLTree>();
    pTree->m_strDeclaration = FindDeclaration(strText);
    const bool bMayHoldBlankText = MayHoldBlankText(strText);
    const bool bMayDeclare = strText.find("xmlns") != std::string::npos;
    pTree->m_strText = std::move(strText);
    // With the zero that ends the string, so that the engine need not write past what it was given.
    const pugi::xml_parse_result result = pTree->m_document.load_buffer_inplace(
        pTree->m_strText.data(), pTree->m_strText.size() + 1, PARSE_OPTIONS, pugi::encoding_utf8);
    XmlTree::Require(static_cast<bool>(result));
    if (bMayHoldBlankText) {
        DropBlanksBetweenElements(pTree->Root());
    }
    if (bMayDeclare) {
        pTree->NoteAllDeclarations(pTree->Root());
    }
    return pTree;
}

std::shared_ptr<CXMLTree> CXMLTree::Clone(pugi::xml_node top) const {
    auto pTree = std::make_shared<CXMLTree>();
    if (top != m_document) {
        XmlTree::AppendCopy(pTree->m_document, top);
    } else {
        pTree->m_strDeclaration = m_strDeclaration;
        for (const pugi::xml_node child : m_document) {
            if (!IsHolder(child)) {
                XmlTree::AppendCopy(pTree->m_document, child);
            }
        }
    }
    if (HasDeclarations()) {
        pTree->NoteAllDeclarations(pTree->Root());
    }
    return pTree;
}

pugi::xml_node CXMLTree::Root() const {
    return XmlTree::FirstElement(m_document);
}

pugi::xml_node CXMLTree::Create(const char* pName) {
    const pugi::xml_node element = XmlTree::Append(Holder(), pugi::node_element);
    XmlTree::Require(pugi::xml_node(element).set_name(pName));
    return element;
}

pugi::xml_node CXMLTree::CopyIn(const CXMLTree& from, pugi::xml_node source) {
    const pugi::xml_node copy = XmlTree::AppendCopy(Holder(), source);
    if (from.HasDeclarations()) {
        NoteAllDeclarations(copy);
    }
    return copy;
}

void CXMLTree::WrapRoot(const CXMLTree& around) {
    const pugi::xml_node inner = Root();
    pugi::xml_node outer = XmlTree::AppendCopy(m_document, around.Root());
    if (around.HasDeclarations()) {
        NoteAllDeclarations(outer);
    }
    outer.append_move(inner);
    m_strDeclaration = around.m_strDeclaration;
}

void CXMLTree::SetRoot(pugi::xml_node node) {
    Detach(node);
    for (pugi::xml_node child = m_document.first_child(); child;) {
        const pugi::xml_node next = child.next_sibling();
        if (!IsHolder(child)) {
            m_document.remove_child(child);
        }
        child = next;
    }
    m_document.append_move(node);
    if (HasDeclarations()) {
        m_mapDeclarations.clear();
        NoteAllDeclarations(node);
    }
}

void CXMLTree::Detach(pugi::xml_node node) {
    Holder().append_move(node);
}

bool CXMLTree::HasDetached() {
    if (m_holder && m_holder.first_child().empty()) {
        m_document.remove_child(m_holder);
        m_holder = pugi::xml_node();
    }
    return !m_holder.empty();
}

const CXMLTree::CDeclarations* CXMLTree::DeclarationsOf(pugi::xml_node element) const {
    const auto itElement = m_mapDeclarations.find(XmlTree::Handle(element));
    return itElement == m_mapDeclarations.end() ? nullptr : &itElement->second;
}

void CXMLTree::NoteAttribute(pugi::xml_node element, std::string_view strName) {
    if (IsDeclaration(strName)) {
        NoteDeclarations(element);
    }
}

void CXMLTree::NoteDeclarations(pugi::xml_node element) {
    const auto fnIs = [](const pugi::xml_attribute& attribute) { return IsDeclaration(attribute.name()); };
    const auto attributes = element.attributes();
    CDeclarations vecDeclarations;
    vecDeclarations.reserve(static_cast<std::size_t>(std::count_if(attributes.begin(), attributes.end(), fnIs)));
    for (const pugi::xml_attribute& attribute : attributes) {
        XML_VISIT();
        if (fnIs(attribute)) {
            vecDeclarations.emplace_back(attribute.name(), attribute.value());
        }
    }
    if (vecDeclarations.empty()) {
        m_mapDeclarations.erase(XmlTree::Handle(element));
    } else {
        m_mapDeclarations[XmlTree::Handle(element)] = std::move(vecDeclarations);
    }
}

void CXMLTree::NoteAllDeclarations(pugi::xml_node top) {
    for (pugi::xml_node node = top; node; node = XmlTree::Next(node, top)) {
        NoteDeclarations(node);
    }
}

pugi::xml_node CXMLTree::Holder() {
    if (!m_holder) {
        m_holder = XmlTree::Append(m_document, pugi::node_element);
    }
    return m_holder;
}

namespace XmlTree {

bool IsElement(pugi::xml_node node) {
    return node.type() == pugi::node_element && *node.name() != '\0';
}

pugi::xml_node ParentElement(pugi::xml_node node) {
    const pugi::xml_node parent = node.parent();
    return IsElement(parent) ? parent : pugi::xml_node();
}

bool IsSelfOrAncestor(pugi::xml_node node, pugi::xml_node of) {
    while (of && of != node) {
        of = of.parent();
    }
    return of == node;
}

pugi::xml_node Top(pugi::xml_node node) {
    while (const pugi::xml_node parent = ParentElement(node)) {
        node = parent;
    }
    const pugi::xml_node parent = node.parent();
    return parent.type() == pugi::node_document ? parent : node;
}

pugi::xml_node FirstElement(pugi::xml_node node, const char* pName) {
    const pugi::xml_node child = node.first_child();
    return !child || Matches(child, pName) ? child : NextElement(child, pName);
}

pugi::xml_node NextElement(pugi::xml_node node, const char* pName) {
    do {
        node = node.next_sibling();
    } while (!Matches(node, pName) && node);
    return node;
}

pugi::xml_node Next(pugi::xml_node node, pugi::xml_node top) {
    if (const pugi::xml_node child = node.first_child()) {
        return child;
    }
    while (node != top) {
        if (const pugi::xml_node sibling = node.next_sibling()) {
            return sibling;
        }
        node = node.parent();
    }
    return pugi::xml_node();
}

pugi::xml_node AppendCopy(pugi::xml_node parent, pugi::xml_node source) {
    const pugi::xml_node copy = Append(parent, source.type());
    CopyContents(copy, source);
    pugi::xml_node target = copy;
    for (pugi::xml_node node = source; true;) {
        if (const pugi::xml_node child = node.first_child()) {
            node = child;
            target = Append(target, node.type());
        } else {
            while (node != source && !node.next_sibling()) {
                node = node.parent();
                target = target.parent();
            }
            if (node == source) {
                return copy;
            }
            node = node.next_sibling();
            target = Append(target.parent(), node.type());
        }
        CopyContents(target, node);
    }
}

pugi::xml_node Append(pugi::xml_node parent, pugi::xml_node_type eType) {
    const pugi::xml_node child = parent.append_child(eType);
    Require(!child.empty());
    return child;
}

void Require(bool bDone) {
    if (!bDone) {
        throw std::bad_alloc();
    }
}

}  // namespace XmlTree
