#include "tests/support/JsonSchema.h"

#include <gtest/gtest.h>

namespace {

using Json = nlohmann::json;

struct SCase {
    const char* pSchema;
    const char* pValue;
    const char* pViolation;
};

const SCase CASES[] = {
    {R"({"type":"string"})", R"("x")", ""},
    {R"({"type":"string"})", "1", ": 1 is not of type \"string\""},
    {R"({"type":["integer","null"]})", "null", ""},
    {R"({"type":["integer","null"]})", "1.5", ": 1.5 is not of type [\"integer\",\"null\"]"},
    {R"({"const":"a/1"})", R"("a/2")", ": \"a/2\" is not \"a/1\""},
    {R"({"enum":["a","b"]})", R"("b")", ""},
    {R"({"enum":["a","b"]})", R"("c")", ": \"c\" is none of [\"a\",\"b\"]"},
    {R"({"required":["a","b"]})", R"({"a":1})", ": \"b\" is missing"},
    {R"({"properties":{"a":{"type":"null"}}})", R"({"b":1})", ""},
    {R"({"properties":{"a":{"type":"null"}}})", R"({"a":1})", "/a: 1 is not of type \"null\""},
    {R"({"properties":{"a":true},"additionalProperties":false})", R"({"a":1,"b":2})", "/b: nothing may stand here"},
    {R"({"items":{"type":"boolean"}})", "[true,3]", "/1: 3 is not of type \"boolean\""},
    {R"({"anyOf":[{"type":"null"},{"const":3}]})", "3", ""},
    {R"({"anyOf":[{"type":"null"},{"const":3}]})", "4", ": 4 is not 3"},
    {R"({"$ref":"#/$defs/a","$defs":{"a":{"const":1}}})", "2", ": 2 is not 1"},
    {R"({"$ref":"#/$defs/b"})", "2", ": the schema refers to \"#/$defs/b\", which it lacks"},
    {R"({"minimum":3})", "4", ": the schema says \"minimum\", which is not known here"},
};

}  // namespace

TEST(JsonSchema, ViolationsAreFoundAndPlaced) {
    for (const SCase& rule : CASES) {
        EXPECT_EQ(FindSchemaViolation(Json::parse(rule.pSchema), Json::parse(rule.pValue)), rule.pViolation)
            << rule.pSchema;
    }
}

TEST(JsonSchema, WhatIsMissingIsAViolation) {
    EXPECT_EQ(CheckAnswer("none", "{}"), "none has no schema");
    EXPECT_EQ(CheckAnswer("diff", "{"), "no JSON: {");
}

TEST(JsonSchema, AnswersAreHeldAgainstTheSchemaOfTheirFormat) {
    const std::string strVersion = R"({"format":"dlpctl-version/1","verdict":"done","version":"1"})";
    EXPECT_EQ(CheckAnswers(strVersion + '\n'), "");
    EXPECT_EQ(CheckAnswers(strVersion + '\n' + strVersion + '\n'), "");
    EXPECT_EQ(CheckAnswers("<a/>"), "");
    EXPECT_EQ(CheckAnswers(R"({"$schema":"its own"})"), "");
    EXPECT_EQ(CheckAnswers(R"({"format":"dlpctl/1","verdict":"done","message":""})"),
              "dlpctl/1: /verdict: \"done\" is none of [\"usage\",\"output\",\"memory\",\"interrupted\"]");
    EXPECT_EQ(CheckAnswers(R"({"format":"dlpctl-new/1"})"), "dlpctl-new/1: new has no schema");
    EXPECT_EQ(CheckAnswers("{}"), "no format is named: {}");
    EXPECT_EQ(CheckAnswers("{\n"), "no JSON: {");
}
