#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

/** What XML can carry, and how it is written. Everything here is UTF-8. */
namespace XmlText {

/** @return whether XML 1.0 can carry the code point */
constexpr bool IsChar(char32_t c) {
    return c >= 0x20 ? c <= 0xD7FF || (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF)
                     : c == U'\t' || c == U'\n' || c == U'\r';
}

/** @return whether UTF-8 begins with U+FFFE or U+FFFF, which XML cannot carry */
constexpr bool IsNonCharacter(std::string_view strText) {
    return strText.substr(0, 3) == "\xEF\xBF\xBE" || strText.substr(0, 3) == "\xEF\xBF\xBF";
}

/** What a name may begin with and go on with, byte by byte; beyond ASCII this is not all there is to say. */
constexpr bool IsNameStart(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == ':' || c >= 0x80;
}
constexpr bool IsNameByte(unsigned char c) {
    return IsNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

/** @return whether it can name an element or attribute: what the loader takes as a name, prefixes included */
bool IsName(std::string_view strName);

/** What is being written or set, for messages. */
std::string TextOf(std::string_view strElement);
std::string AttributeOf(std::string_view strElement, std::string_view strAttribute);

/** @throws CXMLCOMException<OS::CException> "strSubject: strReason", without a subject the reason alone */
[[noreturn]] void Throw(const std::string& strSubject, const std::string& strReason);

/** @throws CXMLCOMException<OS::CException> that names the character XML cannot carry, or the offset of bad UTF-8 */
[[noreturn]] void ThrowBadCharacter(const std::string& strSubject, std::string_view strText, std::size_t iOffset);

/**
 * Converts text that is to be set.
 * @param fnSubject asked for what is set when that fails
 * @throws CXMLCOMException<OS::CException> that names the first bad character
 */
std::string ToUtf8(std::wstring_view strText, const std::function<std::string()>& fnSubject);

/**
 * Appends text escaped for an attribute value or for element content.
 * @return npos; else the offset of the first byte that starts nothing XML can carry, and strOut is as it was
 */
std::size_t Append(std::string& strOut, std::string_view strText, bool bAttribute);

/** The same for text out of a tree, which is known to be good. */
void AppendKnown(std::string& strOut, std::string_view strText, bool bAttribute);

}  // namespace XmlText
