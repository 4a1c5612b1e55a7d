#include "platform/xml/XMLText.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

#include "platform/common/TextConversion.h"
#include "platform/xml/CXMLCOMException.h"
#include "platform/xml/XMLGate.hpp"

namespace XmlText {

namespace {

/** What to do with a byte of UTF-8. */
enum EByte : unsigned char {
    PLAIN,    ///< goes out as it is
    ESCAPE,   ///< goes out as a reference
    BAD,      ///< cannot go out
    SUSPECT,  ///< begins U+FFFE and U+FFFF, which cannot go out, and much that can
};

using CByteTable = std::array<EByte, 256>;

constexpr unsigned char SUSPECT_START = 0xEF;

constexpr CByteTable MakeTable(std::string_view strEscape) {
    CByteTable aTable{};
    for (std::size_t i = 0; i < 0x20; ++i) {
        aTable[i] = IsChar(static_cast<char32_t>(i)) ? PLAIN : BAD;
    }
    for (const char c : strEscape) {
        aTable[static_cast<unsigned char>(c)] = ESCAPE;
    }
    aTable[SUSPECT_START] = SUSPECT;
    return aTable;
}

constexpr CByteTable TEXT_BYTES = MakeTable("&<>\"\r");
constexpr CByteTable ATTRIBUTE_BYTES = MakeTable("&<>\"\r\n\t");

const char* Reference(char c) {
    switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\t':
            return "&#9;";
        case '\n':
            return "&#10;";
        default:
            return "&#13;";
    }
}

/** Well-formed UTF-8 in. */
std::size_t AppendChecked(std::string& strOut, std::string_view strText, const CByteTable& aTable) {
    std::size_t iDone = 0;
    for (std::size_t i = 0; i < strText.size(); ++i) {
        switch (aTable[static_cast<unsigned char>(strText[i])]) {
            case PLAIN:
                break;
            case ESCAPE:
                strOut.append(strText, iDone, i - iDone).append(Reference(strText[i]));
                iDone = i + 1;
                break;
            case BAD:
                return i;
            case SUSPECT:
                if (IsNonCharacter(strText.substr(i))) {
                    return i;
                }
                break;
        }
    }
    strOut.append(strText, iDone);
    return std::string::npos;
}

const CByteTable& TableOf(bool bAttribute) {
    return bAttribute ? ATTRIBUTE_BYTES : TEXT_BYTES;
}

std::string CharacterReason(char32_t c) {
    char aNumber[16];
    std::snprintf(aNumber, sizeof(aNumber), "U+%04X", static_cast<unsigned>(c));
    return std::string("the character ") + aNumber + " cannot be written in XML";
}

}  // namespace

bool IsName(std::string_view strName) {
    const auto isNameByte = [](char c) { return IsNameByte(static_cast<unsigned char>(c)); };
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    if (strName.empty() || !IsNameStart(static_cast<unsigned char>(strName.front())) ||
        !std::all_of(strName.begin(), strName.end(), isNameByte)) {
        return false;
    }
    // Beyond ASCII the loader itself is asked.
    return std::all_of(strName.begin(), strName.end(), isAscii) ||
           CheckXml("<" + std::string(strName) + "/>").bWellFormed;
}

std::string TextOf(std::string_view strElement) {
    return "text of element " + std::string(strElement);
}

std::string AttributeOf(std::string_view strElement, std::string_view strAttribute) {
    return "attribute " + std::string(strAttribute) + " of element " + std::string(strElement);
}

void Throw(const std::string& strSubject, const std::string& strReason) {
    throw CXMLException(0, OS::WideLenient(strSubject.empty() ? strReason : strSubject + ": " + strReason), 0);
}

void ThrowBadCharacter(const std::string& strSubject, std::string_view strText, std::size_t iOffset) {
    const std::string_view strRest = strText.substr(iOffset);
    if (OS::FindInvalidUtf8(strRest) == 0) {
        Throw(strSubject, "byte " + std::to_string(iOffset) + " is not UTF-8");
    }
    Throw(strSubject, CharacterReason(static_cast<char32_t>(OS::WideLenient(strRest.substr(0, 4)).front())));
}

std::string ToUtf8(std::wstring_view strText, const std::function<std::string()>& fnSubject) {
    for (const wchar_t c : strText) {
        if (!IsChar(static_cast<char32_t>(c))) {
            Throw(fnSubject(), CharacterReason(static_cast<char32_t>(c)));
        }
    }
    return OS::Utf8Lenient(strText);
}

std::size_t Append(std::string& strOut, std::string_view strText, bool bAttribute) {
    const std::size_t iInvalid = OS::FindInvalidUtf8(strText);
    if (iInvalid != std::string::npos) {
        return iInvalid;
    }
    const std::size_t iSize = strOut.size();
    const std::size_t iBad = AppendChecked(strOut, strText, TableOf(bAttribute));
    if (iBad != std::string::npos) {
        strOut.resize(iSize);
    }
    return iBad;
}

void AppendKnown(std::string& strOut, std::string_view strText, bool bAttribute) {
    AppendChecked(strOut, strText, TableOf(bAttribute));
}

}  // namespace XmlText
