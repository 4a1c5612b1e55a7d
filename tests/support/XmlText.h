#pragma once

#include <string>

#include "platform/common/TextConversion.h"
#include "platform/xml/CXMLParser.h"

/** Documents as texts, for expectations that stand beside their input. */
namespace Xml {

inline std::string Narrow(const std::wstring& strText) {
    return OS::Utf8Lenient(strText);
}

/** @return the whole document; "" for an empty one */
inline std::string Saved(const CXMLParser& document) {
    OS::x_wstring strText;
    document.SaveXML(strText);
    return Narrow(strText);
}

/** @return the document after loading and writing it; "refused" when it does not load */
inline std::string Reread(const std::string& strText) {
    CXMLParser document;
    return document.LoadUtf8(strText) ? Saved(document) : "refused";
}

inline std::string Markup(const OS::CAutoObjPtr<CXMLNode>& pNode) {
    return pNode == nullptr ? "null" : Narrow(pNode->ToElement()->GetXML());
}

/** @return the message of the XML exception that an action throws; "nothing thrown" without one */
template <class F>
std::string Thrown(F fnAction) {
    try {
        fnAction();
    } catch (const CXMLCOMException<OS::CException>& error) {
        return Narrow(error.GetErrorMessage());
    }
    return "nothing thrown";
}

}  // namespace Xml
