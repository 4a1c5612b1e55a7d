#include "templates/DLPTemplate.h"

#include <gtest/gtest.h>

#include "platform/common/TextConversion.h"
#include "platform/xml/CXMLParser.h"
#include "tests/support/LogRecorder.h"

namespace {

using Texts = std::vector<OS::x_wstring>;

std::string Narrow(const std::wstring& strText) {
    return OS::Utf8Lenient(strText);
}

/** @return such as "Name|Display|Description|1: AND[UNKNOWN ENTITY 2 <a>; OR KEYWORD 0 <b>]" */
std::string Dump(const STemplate& data) {
    std::string strResult = Narrow(data.strName) + "|" + Narrow(data.strDisplayName) + "|" +
                            Narrow(data.strDescription) + "|" + (data.bPreDefined ? "1:" : "0:");
    for (const SMatchRule& rule : data.vecRules) {
        strResult += std::string(" ") + OperatorText(rule.eOperator) + "[";
        for (const SRuleElement& element : rule.vecElements) {
            strResult += std::string(&element == &rule.vecElements.front() ? "" : "; ") +
                         OperatorText(element.eOperator) + " " + ElementTypeText(element.eType) + " " +
                         std::to_string(element.iCount) + " <" + Narrow(element.strName) + ">";
        }
        strResult += "]";
    }
    return strResult;
}

std::string Read(const wchar_t* pXml) {
    return Dump(CComplianceTemplates(OS::x_wstring(pXml)).GetTemplate());
}

/** @return the text after reading and writing it */
std::string Rewritten(const wchar_t* pXml) {
    return Narrow(CComplianceTemplates(OS::x_wstring(pXml)).ToXmlString());
}

CComplianceTemplates Made(const Texts& vecRules, const Texts& vecOperators) {
    return CComplianceTemplates(L"Name", L"Display", L"Description", vecRules, vecOperators);
}

const OS::x_wstring FORBIDDEN(1, L'\x01');
const std::string CANNOT_WRITE = "0x1003 DLPTemplate.cpp Fail to construct CComplianceTemplates, Error: ";

}  // namespace

TEST(TemplateRead, AttributesRulesAndBlocksInDocumentOrder) {
    EXPECT_EQ(Read(LR"(<template name="n" display_name="d" description="x" pre-defined="true">)"
                   LR"(<matchRule operation="OR"><buildingBlock sourceType="ENTITY" entityHits="2" sourceName="a"/>)"
                   LR"(<buildingBlock sourceType="KEYWORD" sourceName="b" operation="EXCEPT"/></matchRule>)"
                   LR"(<matchRule><buildingBlock sourceType="KEYWORD" sourceName="c"/></matchRule></template>)"),
              "n|d|x|1: OR[UNKNOWN ENTITY 2 <a>; EXCEPT KEYWORD 0 <b>] UNKNOWN[UNKNOWN KEYWORD 0 <c>]");
}

TEST(TemplateRead, AbsentAttributesAreEmpty) {
    EXPECT_EQ(Read(L"<template><matchRule><buildingBlock/></matchRule></template>"),
              "|||0: UNKNOWN[UNKNOWN UNKNOWN 0 <>]");
}

TEST(TemplateRead, PreDefinedIsExactlyTrue) {
    EXPECT_EQ(Read(LR"(<template pre-defined="true"/>)"), "|||1:");
    for (const wchar_t* pXml : {LR"(<template pre-defined="TRUE"/>)", LR"(<template pre-defined=" true"/>)",
                                LR"(<template pre-defined="1"/>)", LR"(<template pre-defined=""/>)", L"<template/>"}) {
        EXPECT_EQ(Read(pXml), "|||0:") << Narrow(pXml);
    }
}

TEST(TemplateRead, CountOfAKeywordIsReadAllTheSame) {
    EXPECT_EQ(Read(LR"(<template><matchRule><buildingBlock sourceType="KEYWORD" entityHits=" 12abc" sourceName="k"/>)"
                   LR"(</matchRule></template>)"),
              "|||0: UNKNOWN[UNKNOWN KEYWORD 12 <k>]");
}

TEST(TemplateRead, CountsEndAtTheEdgesOfTheirNumber) {
    struct SCase {
        const char* pText;
        std::int32_t iCount;
    };
    const SCase aCases[] = {{"", 0},
                            {"-", 0},
                            {"- 5", 0},
                            {"0x10", 0},
                            {"+7", 7},
                            {" \t-3 ", -3},
                            {"2147483647", 2147483647},
                            {"2147483648", 2147483647},
                            {"4294967297", 2147483647},
                            {"-2147483648", -2147483647 - 1},
                            {"-2147483649", -2147483647 - 1},
                            {"99999999999999999999", 2147483647}};
    for (const SCase& row : aCases) {
        const CComplianceTemplates compliance(
            OS::WideText(std::string("<template><matchRule><buildingBlock sourceType=\"ENTITY\" entityHits=\"") +
                         row.pText + "\"/></matchRule></template>"));
        EXPECT_EQ(compliance.GetTemplate().vecRules.at(0).vecElements.at(0).iCount, row.iCount) << row.pText;
        EXPECT_NE(compliance.ToXmlString().find(L" entityHits=\"" + std::to_wstring(row.iCount) + L"\""),
                  std::wstring::npos)
            << row.pText;
    }
}

TEST(TemplateRead, TypesAndOperationsAreReadWithoutCaseAndBlanks) {
    EXPECT_EQ(Read(LR"(<template><matchRule operation=" and "><buildingBlock sourceType=" entity " operation="or"/>)"
                   LR"(</matchRule></template>)"),
              "|||0: AND[OR ENTITY 0 <>]");
}

TEST(TemplateRead, EveryChildElementCountsAndNothingElse) {
    EXPECT_EQ(Read(L"<template>\n  <!-- c --><?p i?>text<industries><industry/></industries>\n  <matchRule> x "
                   L"<!-- c --><other sourceType=\"KEYWORD\" sourceName=\"k\"/></matchRule></template>"),
              "|||0: UNKNOWN[UNKNOWN UNKNOWN 0 <>] UNKNOWN[UNKNOWN KEYWORD 0 <k>]");
}

TEST(TemplateRead, OtherTextGivesAnEmptyTemplateWithoutALine) {
    CLogRecorder log;
    for (const wchar_t* pXml : {L"", L"<template", L"<Template name=\"n\"/>", L"<a><template name=\"n\"/></a>",
                                L"<template name=\"n\"/><template/>"}) {
        EXPECT_EQ(Read(pXml), "|||0:") << Narrow(pXml);
    }
    EXPECT_TRUE(log.Lines().empty());
}

TEST(TemplateRead, TextWithEmbeddedZeroIsNoTemplate) {
    OS::x_wstring strXml = L"<template name=\"n\"/>";
    strXml += L'\0';
    EXPECT_EQ(Dump(CComplianceTemplates(strXml).GetTemplate()), "|||0:");
}

TEST(TemplateRead, ElementOfALoadedDocumentIsReadAlike) {
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8(R"(<a><template name="n"><matchRule operation="AND"/></template></a>)"));
    EXPECT_EQ(Dump(CComplianceTemplates(document.RootView().FirstChild()).GetTemplate()), "n|||0: AND[]");
}

TEST(TemplateFromTexts, RulesAndOperatorsGoInPairs) {
    EXPECT_EQ(Dump(Made({L"P:a(1) AND K:b", L"K:c"}, {L"OR", L"SKIP"}).GetTemplate()),
              "Name|Display|Description|0: OR[UNKNOWN ENTITY 1 <a>; AND KEYWORD 0 <b>] UNKNOWN[UNKNOWN KEYWORD 0 <c>]");
}

TEST(TemplateFromTexts, ShorterListEndsTheWalkWithoutALine) {
    CLogRecorder log;
    EXPECT_EQ(Dump(Made({L"K:a", L"K:b"}, {L"OR"}).GetTemplate()),
              "Name|Display|Description|0: OR[UNKNOWN KEYWORD 0 <a>]");
    EXPECT_EQ(Dump(Made({L"K:a"}, {L"OR", L"AND"}).GetTemplate()),
              "Name|Display|Description|0: OR[UNKNOWN KEYWORD 0 <a>]");
    EXPECT_EQ(Dump(Made({}, {L"OR"}).GetTemplate()), "Name|Display|Description|0:");
    EXPECT_TRUE(log.Lines().empty());
}

TEST(TemplateFromTexts, TextThatIsNoRuleIsKeptAsUnknown) {
    EXPECT_EQ(Dump(Made({L"", L"nonsense"}, {L"", L""}).GetTemplate()),
              "Name|Display|Description|0: UNKNOWN[UNKNOWN UNKNOWN 0 <>] UNKNOWN[UNKNOWN UNKNOWN 0 <>]");
}

TEST(TemplateTexts, RulesAreShownAsTexts) {
    Texts vecRules = {L"before"};
    Texts vecOperators;
    CComplianceTemplates(
        OS::x_wstring(
            LR"(<template><matchRule operation="OR"><buildingBlock sourceType="ENTITY" entityHits="2" sourceName="a"/>)"
            LR"(<buildingBlock sourceType="KEYWORD" sourceName="b" operation="AND"/></matchRule><matchRule/></template>)"))
        .GetRuleTexts(vecRules, vecOperators);
    EXPECT_EQ(vecRules, (Texts{L"before", L"P:a(2)\tAND\tK:b", L""}));
    EXPECT_EQ(vecOperators, (Texts{L"OR", L"SKIP"}));
}

TEST(TemplateWrite, AttributesInOrderAndOnlyWhatApplies) {
    EXPECT_EQ(Narrow(Made({L"P:a(2) AND K:b EXCEPT P:c(0)", L"x"}, {L"OR", L"SKIP"}).ToXmlString()),
              R"(<template name="Name" display_name="Display" description="Description" pre-defined="false">)"
              R"(<matchRule operation="OR"><buildingBlock sourceType="ENTITY" entityHits="2" sourceName="a"/>)"
              R"(<buildingBlock sourceType="KEYWORD" sourceName="b" operation="AND"/>)"
              R"(<buildingBlock sourceType="ENTITY" entityHits="0" sourceName="c" operation="EXCEPT"/></matchRule>)"
              R"(<matchRule><buildingBlock sourceType="UNKNOWN" sourceName=""/></matchRule></template>)");
}

TEST(TemplateWrite, TemplateWithoutRulesHasNoChild) {
    EXPECT_EQ(Rewritten(LR"(<template pre-defined="true"/>)"),
              R"(<template name="" display_name="" description="" pre-defined="true"/>)");
}

TEST(TemplateWrite, WhatIsNotOfTheTemplateIsLeftOut) {
    EXPECT_EQ(Rewritten(LR"(<template name="n" severity="high" x="1"><matchRule y="1"><buildingBlock entityHits="3" )"
                        LR"(sourceType="keyword" sourceName="k" z="1"/></matchRule></template>)"),
              R"(<template name="n" display_name="" description="" pre-defined="false"><matchRule>)"
              R"(<buildingBlock sourceType="KEYWORD" sourceName="k"/></matchRule></template>)");
}

TEST(TemplateWrite, NamesAreKeptExactly) {
    for (const wchar_t* pName : {L" both ends ", L"\t tab\nline\r return", L"<&>\"'", L"\u00E9\U0001F600", L""}) {
        CXMLParser document;
        ASSERT_TRUE(document.LoadUtf8("<template><matchRule><buildingBlock/></matchRule></template>"));
        document.XPathSelectSingleNode(L"//buildingBlock")->ToElement()->SetAttribute(L"sourceName", pName);
        OS::x_wstring strXml;
        document.SaveXML(strXml);
        const CComplianceTemplates first(strXml);
        const CComplianceTemplates second(first.ToXmlString());
        EXPECT_EQ(second.GetTemplate().vecRules.at(0).vecElements.at(0).strName, pName);
    }
}

TEST(TemplateWrite, OperatorsAreReadBack) {
    const CComplianceTemplates first = Made({L"K:a AND K:b OR K:c EXCEPT K:d", L"K:e"}, {L"EXCEPT", L""});
    EXPECT_EQ(Dump(CComplianceTemplates(first.ToXmlString()).GetTemplate()), Dump(first.GetTemplate()));
}

TEST(TemplateWrite, TextThatXmlCannotCarryGivesNothingAndALine) {
    CLogRecorder log;
    EXPECT_EQ(CComplianceTemplates(FORBIDDEN, L"d", L"", {}, {}).ToXmlString(), L"");
    EXPECT_EQ(CComplianceTemplates(L"n", L"d", OS::x_wstring(1, L'\0'), {}, {}).ToXmlString(), L"");
    EXPECT_EQ(CComplianceTemplates(L"n", L"d", L"", {L"K:\uFFFE"}, {L""}).ToXmlString(), L"");
    EXPECT_EQ(CComplianceTemplates(L"n", OS::x_wstring(1, static_cast<wchar_t>(0xD800)), L"", {}, {}).ToXmlString(),
              L"");
    EXPECT_EQ(
        log.Lines(),
        (std::vector<std::string>{
            CANNOT_WRITE + "attribute name of element template: the character U+0001 cannot be written in XML",
            CANNOT_WRITE + "attribute description of element template: the character U+0000 cannot be written in XML",
            CANNOT_WRITE +
                "attribute sourceName of element buildingBlock: the character U+FFFE cannot be written in XML",
            CANNOT_WRITE + "cannot write the text as UTF-8: U+D800 at position 0 is no Unicode character"}));
}

TEST(TemplateDocument, HoldsTheTemplatesInOrder) {
    EXPECT_EQ(
        Narrow(CComplianceTemplates::MakeComplianceTemplatesXml(
            {Made({L"K:a"}, {L"AND"}), CComplianceTemplates(OS::x_wstring(L"<template name='2'/>"))})),
        R"(<complianceTemplates command="overwrite">)"
        R"(<template name="Name" display_name="Display" description="Description" pre-defined="false">)"
        R"(<matchRule operation="AND"><buildingBlock sourceType="KEYWORD" sourceName="a"/></matchRule></template>)"
        R"(<template name="2" display_name="" description="" pre-defined="false"/></complianceTemplates>)");
}

TEST(TemplateDocument, WithoutTemplatesIsAnEmptyElement) {
    EXPECT_EQ(CComplianceTemplates::MakeComplianceTemplatesXml({}), L"<complianceTemplates command=\"overwrite\"/>");
}

TEST(TemplateDocument, OneTemplateThatCannotBeWrittenSpoilsItWithOneLine) {
    CLogRecorder log;
    EXPECT_EQ(CComplianceTemplates::MakeComplianceTemplatesXml(
                  {Made({}, {}), CComplianceTemplates(L"n", FORBIDDEN, L"", {}, {}), Made({}, {})}),
              L"");
    EXPECT_EQ(log.Lines(),
              std::vector<std::string>{
                  CANNOT_WRITE +
                  "attribute display_name of element template: the character U+0001 cannot be written in XML"});
}
