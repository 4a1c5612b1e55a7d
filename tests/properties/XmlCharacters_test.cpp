// Every character, set alone and between blanks, is read back after writing and loading, or is refused when set.

#include <gtest/gtest.h>

#include "tests/support/Sanitized.h"
#include "tests/support/XmlText.h"

namespace {

constexpr wchar_t BLOCK = 0x1000;
constexpr wchar_t STEP = SANITIZED ? 13 * BLOCK : BLOCK;  // with the characters around the surrogates

std::wstring BetweenBlanks(wchar_t c) {
    return {L' ', c, L' '};
}

/** Appends an element with a text, which its attribute repeats. */
void Append(CXMLParser& document, CXMLElement& parent, const std::wstring& strText) {
    OS::CAutoObjPtr<CXMLNode> pNode = document.CreateNode(XMLPARSER_NODE_ELEMENT, L"c");
    pNode->SetText(strText);
    pNode->ToElement()->SetAttribute(L"a", strText);
    parent.AppendChild(pNode);
}

/** A document with an element for each character from iFirst that XML carries alone, and one between blanks. */
CXMLParser Written(wchar_t iFirst) {
    CXMLParser document;
    EXPECT_TRUE(document.LoadUtf8("<r/>"));
    const auto pRoot = document.GetRootElement();
    for (wchar_t c = iFirst; c < iFirst + BLOCK; ++c) {
        if (Xml::IsCarried(c)) {
            Append(document, *pRoot, std::wstring(1, c));
            Append(document, *pRoot, BetweenBlanks(c));
        }
    }
    return document;
}

/** Compares the next element with a text, and goes on. @return false when it differs */
bool Take(OS::CAutoObjPtr<CXMLNode>& pNode, const std::wstring& strText) {
    const bool bSame = pNode != nullptr && pNode->GetText() == strText && pNode->GetAttribute(L"a") == strText;
    if (pNode != nullptr) {
        pNode = pNode->GetNextSibling();
    }
    return bSame;
}

/** @return how many characters were read back */
std::size_t ReadBack(const CXMLParser& document, wchar_t iFirst) {
    std::size_t iRead = 0;
    auto pNode = document.GetRootElement()->GetFirstChild();
    for (wchar_t c = iFirst; c < iFirst + BLOCK; ++c) {
        if (Xml::IsCarried(c)) {
            ++iRead;
            EXPECT_TRUE(Take(pNode, std::wstring(1, c))) << "U+" << std::hex << static_cast<int>(c);
            EXPECT_TRUE(Take(pNode, BetweenBlanks(c))) << "between blanks, U+" << std::hex << static_cast<int>(c);
        }
    }
    EXPECT_TRUE(pNode == nullptr);
    return iRead;
}

}  // namespace

TEST(XmlCharacters, EachIsReadBackAloneAndBetweenBlanks) {
    std::size_t iWritten = 0;
    std::size_t iRead = 0;
    for (wchar_t iFirst = 0; iFirst <= Xml::LAST_CHARACTER && !HasFailure(); iFirst += STEP) {
        const CXMLParser document = Written(iFirst);
        iWritten += ReadBack(document, iFirst);
        OS::x_wstring strText;
        ASSERT_TRUE(document.SaveXML(strText));
        CXMLParser loaded;
        ASSERT_TRUE(loaded.LoadXML(strText));
        iRead += ReadBack(loaded, iFirst);
    }
    EXPECT_EQ(SANITIZED ? iWritten : Xml::CARRIED_CHARACTERS, iRead);
}

TEST(XmlCharacters, WhatXmlCannotCarryIsRefusedWhenSetAndChangesNothing) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8("<r a=\"b\">t</r>"));
    const auto pRoot = document.GetRootElement();
    std::size_t iRefused = 0;
    for (wchar_t c = 0; c <= Xml::LAST_CHARACTER + 1; ++c) {
        if (Xml::IsCarried(c)) {
            continue;
        }
        ++iRefused;
        for (const std::wstring& strText : {std::wstring(1, c), BetweenBlanks(c)}) {
            EXPECT_NE("nothing thrown", Xml::Thrown([&] { pRoot->SetText(strText); })) << static_cast<int>(c);
            EXPECT_NE("nothing thrown", Xml::Thrown([&] { pRoot->SetAttribute(L"a", strText); }))
                << static_cast<int>(c);
            EXPECT_NE("nothing thrown", Xml::Thrown([&] { pRoot->SetAttribute(L"n", strText); }))
                << static_cast<int>(c);
        }
    }
    EXPECT_EQ(0x110000 + 1 - Xml::CARRIED_CHARACTERS, iRefused);
    EXPECT_EQ("<r a=\"b\">t</r>", Xml::Saved(document));
}
