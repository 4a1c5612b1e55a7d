#include "templates/TemplateXml.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/xml/CXMLParser.h"

TEST(TemplateXml, OnlyTheExactTypeAndTheTwoOperationsCanBeImported) {
    struct {
        const char* pAttributes;
        EElementType eType;
        bool bAccepted;
    } const aBlocks[] = {
        {"", EElementType::UNKNOWN, true},
        {R"(sourceType="ENTITY" operation="")", EElementType::ENTITY, true},
        {R"(sourceType="KEYWORD" operation=" and ")", EElementType::KEYWORD, true},
        {R"(sourceType="keyword" operation="OR")", EElementType::UNKNOWN, true},
        {R"(sourceType=" ENTITY" operation="EXCEPT")", EElementType::UNKNOWN, false},
        {R"(sourceType="ENTITY" operation=" ")", EElementType::ENTITY, false},
        {R"(sourceType="ENTITY" operation="ANDOR")", EElementType::ENTITY, false},
    };
    for (const auto& block : aBlocks) {
        CXMLParser document;
        ASSERT_TRUE(document.LoadUtf8("<buildingBlock " + std::string(block.pAttributes) + "/>"));
        EXPECT_EQ(TemplateXml::ReadExactType(document.RootView()), block.eType) << block.pAttributes;
        EXPECT_EQ(TemplateXml::IsOperationAccepted(document.RootView()), block.bAccepted) << block.pAttributes;
    }
}
