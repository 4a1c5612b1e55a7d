#include "platform/xml/CXMLWriter.h"

#include <algorithm>
#include <charconv>

#include "platform/xml/CXMLParser.h"
#include "platform/xml/FaultPoint.h"
#include "platform/xml/XMLProof.hpp"
#include "platform/xml/XMLText.hpp"

void CXMLWriter::Declaration() {
    XML_STEP("Declaration");
    m_strOut += R"(<?xml version="1.0" encoding="UTF-8"?>)";
}

void CXMLWriter::StartElement(const char* pName) {
    XML_STEP("StartElement");
    CloseStartTag();
    OfferText();
    MakeRoom();
    m_strOut.append("<").append(pName);
    m_vecOpen.push_back(pName);
    m_iDeepest = std::max(m_iDeepest, m_vecOpen.size());
    m_bInStartTag = true;
}

void CXMLWriter::Attribute(const char* pName, std::string_view strValue) {
    XML_STEP("Attribute");
    m_strOut.append(" ").append(pName).append("=\"");
    const std::size_t iBad = XmlText::Append(m_strOut, strValue, true);
    if (iBad != std::string::npos) {
        XmlText::ThrowBadCharacter(XmlText::AttributeOf(m_vecOpen.back(), pName), strValue, iBad);
    }
    m_strOut += '"';
}

void CXMLWriter::Attribute(const char* pName, int iValue) {
    char aDigits[12];
    const std::to_chars_result result = std::to_chars(std::begin(aDigits), std::end(aDigits), iValue);
    Attribute(pName, std::string_view(aDigits, static_cast<std::size_t>(result.ptr - aDigits)));
}

void CXMLWriter::Text(std::string_view strText) {
    XML_STEP("Text");
    if (strText.empty()) {
        return;
    }
    CloseStartTag();
    const std::size_t iBad = XmlText::Append(m_strOut, strText, false);
    if (iBad != std::string::npos) {
        XmlText::ThrowBadCharacter(XmlText::TextOf(m_vecOpen.back()), strText, iBad);
    }
}

void CXMLWriter::TextElement(const char* pName, std::string_view strText) {
    StartElement(pName);
    Text(strText);
    EndElement();
}

void CXMLWriter::Raw(std::string_view strMarkup) {
    XML_STEP("Raw");
    if (!strMarkup.empty()) {
        CloseStartTag();
        m_strOut += strMarkup;
    }
}

bool CXMLWriter::Content(std::string_view strText, std::string_view strElement, std::string_view strChild) {
    XML_STEP("Content");
    const SXMLProof proof = ProveXml(strText);
    const bool bSure = proof.bAsWritten && proof.strRoot == strElement && proof.strChildName == strChild;
    if (bSure) {
        CloseStartTag();
        m_strOut += proof.strContent;
        m_iDeepest = std::max(m_iDeepest, m_vecOpen.size() + proof.iDepth - 1);
    }
    return bSure;
}

void CXMLWriter::Node(const CXMLView& node) {
    if (node) {
        CloseStartTag();
        node.AppendMarkup(m_strOut);
        m_iDeepest = std::max(m_iDeepest, m_vecOpen.size() + static_cast<std::size_t>(node.Depth()));
    }
}

void CXMLWriter::EndElement() {
    XML_STEP("EndElement");
    if (m_bInStartTag) {
        m_strOut += "/>";
        m_bInStartTag = false;
    } else {
        m_strOut.append("</").append(m_vecOpen.back()).append(">");
    }
    m_pEnded = m_vecOpen.back();
    m_vecOpen.pop_back();
}

bool CXMLWriter::IsIn(const char* pName) const {
    return !XML_FINDS_NOTHING() && !m_vecOpen.empty() && std::string_view(m_vecOpen.back()) == pName;
}

bool CXMLWriter::HasEnded(const char* pName) const {
    // What nests deepest may stand before this element; as deep as that one, it was too deep by itself.
    const bool bReadable = DepthWritten() <= CXMLParser::MAX_DEPTH;
    return !XML_FINDS_NOTHING() && bReadable && std::string_view(m_pEnded) == pName;
}

/** A piece that is not long is still in the processor's cache when it is passed on. */
void CXMLWriter::OfferText() {
    constexpr std::size_t PIECE = 1U << 17U;
    if (m_strOut.size() >= PIECE && m_fnTake) {
        m_fnTake(m_strOut);
    }
}

/** Left to itself a text doubles, and is copied, time and again. Room that is not used costs addresses, but no memory.
 */
void CXMLWriter::MakeRoom() {
    constexpr std::size_t LONG = 1U << 18U;
    constexpr std::size_t MOST = 1U << 26U;
    constexpr std::size_t ROOM = 1U << 16U;
    const std::size_t iCapacity = m_strOut.capacity();
    if (iCapacity >= LONG && iCapacity < MOST && iCapacity - m_strOut.size() < ROOM) {
        m_strOut.reserve(4 * iCapacity);
    }
}

void CXMLWriter::CloseStartTag() {
    if (m_bInStartTag) {
        m_strOut += '>';
        m_bInStartTag = false;
    }
}

bool StartsWithElement(std::string_view strMarkup, std::string_view strName) {
    constexpr std::string_view NAME_ENDS = " />";
    if (XML_FINDS_NOTHING() || strMarkup.substr(0, 1) != "<" || strMarkup.substr(1, strName.size()) != strName) {
        return false;
    }
    const std::size_t iEnd = 1 + strName.size();
    return iEnd < strMarkup.size() && NAME_ENDS.find(strMarkup[iEnd]) != std::string_view::npos;
}

void AppendEscaped(std::string& strOut, std::string_view strText, bool bAttribute) {
    const std::size_t iBad = XmlText::Append(strOut, strText, bAttribute);
    if (iBad != std::string::npos) {
        XmlText::ThrowBadCharacter(std::string(), strText, iBad);
    }
}
