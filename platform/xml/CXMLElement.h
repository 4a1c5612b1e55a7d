#pragma once

#include "platform/xml/CXMLNode.h"
#include "platform/xml/CXMLNodeList.h"

/** A node that is an element. An XPath beginning with "/" is evaluated from the top of the element's tree. */
class DLP_PLATFORM_API CXMLElement : public CXMLNode {
  public:
    using CXMLNode::CXMLNode;
    ~CXMLElement() override;

    /** Replaces the value in place, or adds the attribute as the last. @throws for a character XML cannot carry */
    virtual void SetAttribute(const wchar_t* pName, const wchar_t* pValue);
    /** Removing an absent attribute is no error. */
    virtual void RemoveAttribute(const wchar_t* pName);
    /** @return the first match in document order, null if none */
    virtual OS::CAutoObjPtr<CXMLNode> XPathSelectSingleNode(const wchar_t* pXPath) const;
    /** @return all matches, possibly none; never null */
    virtual OS::CAutoObjPtr<CXMLNodeList> XPathSelectNodes(const wchar_t* pXPath) const;
    /** @return the element's own markup with all its content, as CXMLView::AppendMarkup gives it */
    virtual OS::x_wstring GetXML() const;

    void SetAttribute(const wchar_t* pName, const wchar_t* pValue, std::size_t iLength);
    void SetAttribute(const std::wstring& strName, const std::wstring& strValue) {
        SetAttribute(strName.c_str(), strValue.data(), strValue.size());
    }
    void RemoveAttribute(const std::wstring& strName) { RemoveAttribute(strName.c_str()); }
    OS::CAutoObjPtr<CXMLNode> XPathSelectSingleNode(const std::wstring& strXPath) const {
        return XPathSelectSingleNode(strXPath.c_str());
    }
    OS::CAutoObjPtr<CXMLNodeList> XPathSelectNodes(const std::wstring& strXPath) const {
        return XPathSelectNodes(strXPath.c_str());
    }
};
