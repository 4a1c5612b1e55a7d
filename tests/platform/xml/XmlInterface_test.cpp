#include <gtest/gtest.h>

#include <iterator>
#include <type_traits>

#include "platform/xml/CXMLParser.h"
#include "tests/support/VirtualSlot.h"

// Callers and their own libraries rely on these signatures; each line fails to compile when one changes.

using CNodePtr = OS::CAutoObjPtr<CXMLNode>;
using CElementPtr = OS::CAutoObjPtr<CXMLElement>;
using CListPtr = OS::CAutoObjPtr<CXMLNodeList>;
using CText = const wchar_t*;

template <auto pOperation>
struct SExists : std::true_type {};

static_assert(SExists<static_cast<int (CXMLNodeList::*)() const>(&CXMLNodeList::GetLength)>());
static_assert(SExists<static_cast<CNodePtr (CXMLNodeList::*)(int) const>(&CXMLNodeList::GetItem)>());

static_assert(SExists<static_cast<OS::x_wstring (CXMLNode::*)() const>(&CXMLNode::GetText)>());
static_assert(SExists<static_cast<void (CXMLNode::*)(CText)>(&CXMLNode::SetText)>());
static_assert(SExists<static_cast<CNodePtr (CXMLNode::*)() const>(&CXMLNode::GetParentNode)>());
static_assert(SExists<static_cast<CNodePtr (CXMLNode::*)() const>(&CXMLNode::GetFirstChild)>());
static_assert(SExists<static_cast<CNodePtr (CXMLNode::*)() const>(&CXMLNode::GetNextSibling)>());
static_assert(SExists<static_cast<void (CXMLNode::*)(CNodePtr&)>(&CXMLNode::AppendChild)>());
static_assert(SExists<static_cast<CElementPtr (CXMLNode::*)() const>(&CXMLNode::ToElement)>());
static_assert(SExists<static_cast<OS::x_wstring (CXMLNode::*)(CText) const>(&CXMLNode::GetAttribute)>());

static_assert(SExists<static_cast<void (CXMLElement::*)(CText, CText)>(&CXMLElement::SetAttribute)>());
static_assert(SExists<static_cast<void (CXMLElement::*)(CText)>(&CXMLElement::RemoveAttribute)>());
static_assert(SExists<static_cast<CNodePtr (CXMLElement::*)(CText) const>(&CXMLElement::XPathSelectSingleNode)>());
static_assert(SExists<static_cast<CListPtr (CXMLElement::*)(CText) const>(&CXMLElement::XPathSelectNodes)>());
static_assert(SExists<static_cast<OS::x_wstring (CXMLElement::*)() const>(&CXMLElement::GetXML)>());

static_assert(SExists<static_cast<bool (CXMLParser::*)(CText)>(&CXMLParser::LoadXML)>());
static_assert(SExists<static_cast<bool (CXMLParser::*)(OS::x_wstring&) const>(&CXMLParser::SaveXML)>());
static_assert(SExists<static_cast<CElementPtr (CXMLParser::*)() const>(&CXMLParser::GetRootElement)>());
static_assert(SExists<static_cast<CNodePtr (CXMLParser::*)(XMLPARSER_NODETYPE, CText)>(&CXMLParser::CreateNode)>());
static_assert(SExists<static_cast<CNodePtr (CXMLParser::*)(CText) const>(&CXMLParser::XPathSelectSingleNode)>());
static_assert(SExists<static_cast<CListPtr (CXMLParser::*)(CText) const>(&CXMLParser::XPathSelectNodes)>());

TEST(XmlInterface, ObjectsAreFreedThroughVirtualDestructors) {
    EXPECT_TRUE(std::has_virtual_destructor_v<CXMLNodeList>);
    EXPECT_TRUE(std::has_virtual_destructor_v<CXMLNode>);
    EXPECT_TRUE(std::has_virtual_destructor_v<CXMLElement>);
    EXPECT_TRUE(std::has_virtual_destructor_v<CXMLParser>);
    EXPECT_TRUE((std::is_base_of_v<CXMLNode, CXMLElement>));
}

TEST(XmlInterface, DocumentsAreValuesAndNodesAreNot) {
    EXPECT_TRUE(std::is_default_constructible_v<CXMLParser>);
    EXPECT_TRUE((std::is_constructible_v<CXMLParser, CText>));
    EXPECT_TRUE(std::is_copy_constructible_v<CXMLParser>);
    EXPECT_TRUE(std::is_copy_assignable_v<CXMLParser>);
    EXPECT_FALSE(std::is_copy_constructible_v<CXMLNode>);
    EXPECT_FALSE(std::is_copy_constructible_v<CNodePtr>);
}

TEST(XmlInterface, ExceptionIsTheCommonOneToldApartByItsType) {
    EXPECT_TRUE((std::is_base_of_v<OS::CException, CXMLCOMException<OS::CException>>));
    EXPECT_TRUE((std::is_base_of_v<std::exception, CXMLCOMException<OS::CException>>));
}

TEST(XmlInterface, VirtualsStandInTheirSlots) {
    const std::size_t NODE_SLOTS[] = {
        Slot(&CXMLNode::GetText),
        Slot(static_cast<void (CXMLNode::*)(CText)>(&CXMLNode::SetText)),
        Slot(&CXMLNode::GetParentNode),
        Slot(&CXMLNode::GetFirstChild),
        Slot(&CXMLNode::GetNextSibling),
        Slot(&CXMLNode::AppendChild),
        Slot(&CXMLNode::ToElement),
        Slot(static_cast<OS::x_wstring (CXMLNode::*)(CText) const>(&CXMLNode::GetAttribute)),
        Slot(static_cast<void (CXMLElement::*)(CText, CText)>(&CXMLElement::SetAttribute)),
        Slot(static_cast<void (CXMLElement::*)(CText)>(&CXMLElement::RemoveAttribute)),
        Slot(static_cast<CNodePtr (CXMLElement::*)(CText) const>(&CXMLElement::XPathSelectSingleNode)),
        Slot(static_cast<CListPtr (CXMLElement::*)(CText) const>(&CXMLElement::XPathSelectNodes)),
        Slot(&CXMLElement::GetXML),
    };
    for (std::size_t i = 0; i < std::size(NODE_SLOTS); ++i) {
        EXPECT_EQ(SLOT_AFTER_DESTRUCTOR + i, NODE_SLOTS[i]);
    }
    EXPECT_EQ(SLOT_AFTER_DESTRUCTOR, Slot(&CXMLNodeList::GetLength));
    EXPECT_EQ(SLOT_AFTER_DESTRUCTOR + 1, Slot(&CXMLNodeList::GetItem));
}
