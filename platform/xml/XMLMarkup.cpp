#include "platform/xml/XMLMarkup.hpp"

#include <algorithm>
#include <set>
#include <string_view>

#include "platform/common/TextHash.h"
#include "platform/xml/FaultPoint.h"
#include "platform/xml/XMLText.hpp"

namespace XmlMarkup {

namespace {

void AppendAttribute(std::string& strOut, std::string_view strName, std::string_view strValue) {
    strOut.append(" ").append(strName).append("=\"");
    XmlText::AppendKnown(strOut, strValue, true);
    strOut += '"';
}

bool IsSkipped(const SSkip& skip, std::string_view strName) {
    return std::any_of(skip.apNames, skip.apNames + skip.iCount,
                       [strName](const char* pName) { return strName == pName; });
}

/** The start tag up to where it ends. */
void AppendStart(std::string& strOut, pugi::xml_node element, const SSkip& skip) {
    strOut.append("<").append(element.name());
    pugi::xml_attribute attribute = element.first_attribute();
    for (; attribute; attribute = attribute.next_attribute()) {
        const std::string_view strName = attribute.name();
        if (!IsSkipped(skip, strName)) {
            AppendAttribute(strOut, strName, attribute.value());
        }
    }
}

/** A line break in a processing instruction reads as LF, however it was written. */
void AppendInstruction(std::string& strOut, pugi::xml_node node) {
    strOut.append("<?").append(node.name());
    const std::string_view strValue = node.value();
    if (!strValue.empty()) {
        strOut += ' ';
    }
    for (std::size_t i = 0; i < strValue.size(); ++i) {
        if (strValue[i] != '\r') {
            strOut += strValue[i];
        } else if (strValue.substr(i + 1, 1) != "\n") {
            strOut += '\n';
        }
    }
    strOut += "?>";
}

void AppendLeaf(std::string& strOut, pugi::xml_node node) {
    switch (node.type()) {
        case pugi::node_cdata:
            strOut.append("<![CDATA[").append(node.value()).append("]]>");
            break;
        case pugi::node_comment:
            strOut.append("<!--").append(node.value()).append("-->");
            break;
        case pugi::node_pi:
            AppendInstruction(strOut, node);
            break;
        default:
            XmlText::AppendKnown(strOut, node.value(), false);
            break;
    }
}

/** @return whether the node was opened, so that its children and its end are still to come */
bool AppendOpening(std::string& strOut, pugi::xml_node node, const SSkip& skip,
                   const CDeclarationRefs& vecDeclarations) {
    if (node.type() != pugi::node_element) {
        AppendLeaf(strOut, node);
        return false;
    }
    AppendStart(strOut, node, skip);
    for (const CXMLTree::CDeclaration* pDeclaration : vecDeclarations) {
        AppendAttribute(strOut, pDeclaration->first, pDeclaration->second);
    }
    const bool bOpened = !node.first_child().empty();
    strOut += bOpened ? ">" : "/>";
    return bOpened;
}

}  // namespace

CDeclarationRefs DeclarationsInScope(const CXMLTree& tree, pugi::xml_node node) {
    CDeclarationRefs vecInScope;
    if (node.type() != pugi::node_element || !tree.HasDeclarations()) {
        return vecInScope;
    }
    // The nearest declaration of a name holds, and an empty value takes back what an outer element declares.
    OS::TextSet<std::string_view> lstSeen;
    for (pugi::xml_node element = node; element; element = XmlTree::ParentElement(element)) {
        const CXMLTree::CDeclarations* const pDeclarations = tree.DeclarationsOf(element);
        if (pDeclarations == nullptr) {
            continue;
        }
        for (const CXMLTree::CDeclaration& declaration : *pDeclarations) {
            XML_VISIT();
            if (lstSeen.insert(declaration.first).second && element != node && !declaration.second.empty()) {
                vecInScope.push_back(&declaration);
            }
        }
    }
    return vecInScope;
}

void AddDeclarations(CXMLTree& tree, pugi::xml_node element, const CDeclarationRefs& vecDeclarations) {
    if (vecDeclarations.empty()) {
        return;
    }
    std::set<std::pair<std::string_view, std::string_view>> lstPresent;
    for (const CXMLTree::CDeclaration* pPresent : DeclarationsInScope(tree, element)) {
        lstPresent.insert(*pPresent);
    }
    for (const CXMLTree::CDeclaration* pDeclaration : vecDeclarations) {
        const auto& [strName, strValue] = *pDeclaration;
        if (lstPresent.count(*pDeclaration) == 0) {
            XmlTree::Require(element.append_attribute(strName.c_str()).set_value(strValue.c_str()));
        }
    }
    tree.NoteAttribute(element, vecDeclarations.front()->first);
}

void Append(std::string& strOut, const CXMLTree& tree, pugi::xml_node node, const SSkip& skip) {
    const pugi::xml_node top = node;
    bool bOpened = AppendOpening(strOut, top, skip, DeclarationsInScope(tree, top));
    for (;;) {
        if (bOpened) {
            node = node.first_child();
        } else {
            while (node != top && !node.next_sibling()) {
                node = node.parent();
                strOut.append("</").append(node.name()).append(">");
            }
            if (node == top) {
                return;
            }
            node = node.next_sibling();
        }
        bOpened = AppendOpening(strOut, node, {}, {});
    }
}

}  // namespace XmlMarkup
