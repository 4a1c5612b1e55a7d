#pragma once

#include <string>

#include "platform/common/TextConversion.h"
#include "platform/xml/CXMLParser.h"

/** Documents as texts, for expectations that stand beside their input. */
namespace Xml {

inline constexpr wchar_t LAST_CHARACTER = 0x10FFFF;

/** What XML 1.0 can carry, by its definition. */
inline bool IsCarried(wchar_t c) {
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD) ||
           (c >= 0x10000 && c <= LAST_CHARACTER);
}

/** How many characters those are: all but surrogates, control characters, U+0000, U+FFFE and U+FFFF. */
inline constexpr std::size_t CARRIED_CHARACTERS = 0x110000 - 0x800 - 28 - 1 - 2;

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
