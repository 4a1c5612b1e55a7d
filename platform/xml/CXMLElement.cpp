#include "platform/xml/CXMLElement.h"

#include <cwchar>

#include "platform/common/TextConversion.h"
#include "platform/xml/CXMLTree.hpp"
#include "platform/xml/FaultPoint.h"
#include "platform/xml/XMLPath.hpp"
#include "platform/xml/XMLText.hpp"

CXMLElement::~CXMLElement() = default;

void CXMLElement::SetAttribute(const wchar_t* pName, const wchar_t* pValue) {
    SetAttribute(pName, pValue, pValue == nullptr ? 0 : std::wcslen(pValue));
}

void CXMLElement::SetAttribute(const wchar_t* pName, const wchar_t* pValue, std::size_t iLength) {
    XML_STEP("SetAttribute");
    const std::string strName = OS::Utf8Lenient(pName == nullptr ? L"" : pName);
    pugi::xml_node element = XmlTree::Node(m_pNode);
    const auto fnSubject = [&] { return XmlText::AttributeOf(element.name(), strName); };
    const std::string strValue = XmlText::ToUtf8(std::wstring_view(pValue, iLength), fnSubject);
    pugi::xml_attribute attribute = element.attribute(strName.c_str());
    if (!attribute) {
        if (!XmlText::IsName(strName)) {
            XmlText::Throw(fnSubject(), "this is no name");
        }
        attribute = element.append_attribute(strName.c_str());
    }
    XmlTree::Require(attribute.set_value(strValue.c_str()));
    m_pTree->NoteAttribute(element, strName);
}

void CXMLElement::RemoveAttribute(const wchar_t* pName) {
    XML_STEP("RemoveAttribute");
    const std::string strName = OS::Utf8Lenient(pName == nullptr ? L"" : pName);
    pugi::xml_node element = XmlTree::Node(m_pNode);
    element.remove_attribute(strName.c_str());
    m_pTree->NoteAttribute(element, strName);
}

OS::CAutoObjPtr<CXMLNode> CXMLElement::XPathSelectSingleNode(const wchar_t* pXPath) const {
    XML_STEP("XPathSelectSingleNode");
    if (XML_FINDS_NOTHING()) {
        return nullptr;
    }
    const XmlPath::CHandles vecMatches = XmlPath::Select(*m_pTree, XmlTree::Node(m_pNode), pXPath, true);
    return vecMatches.empty() ? nullptr : OS::CAutoObjPtr<CXMLNode>(new CXMLNode(m_pTree, vecMatches[0]));
}

OS::CAutoObjPtr<CXMLNodeList> CXMLElement::XPathSelectNodes(const wchar_t* pXPath) const {
    XML_STEP("XPathSelectNodes");
    if (XML_FINDS_NOTHING()) {
        return OS::CAutoObjPtr<CXMLNodeList>(new CXMLNodeList(m_pTree, {}));
    }
    return OS::CAutoObjPtr<CXMLNodeList>(
        new CXMLNodeList(m_pTree, XmlPath::Select(*m_pTree, XmlTree::Node(m_pNode), pXPath, false)));
}

OS::x_wstring CXMLElement::GetXML() const {
    std::string strMarkup;
    View().AppendMarkup(strMarkup);
    return OS::WideText(strMarkup);
}
