#include "cli/check/CheckFormats.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "platform/xml/CXMLParser.h"
#include "tests/cli/ToolRun.h"

namespace {

using Json = nlohmann::json;

SDiagnostic Make(ECode eCode, SPlace place, const std::string& strMessage, const std::string& strAdvice) {
    return {.eCode = eCode,
            .eSeverity = GetCodeRow(eCode).eSeverity,
            .strMessage = strMessage,
            .strAdvice = strAdvice,
            .iOffset = 0,
            .place = place,
            .excerpt = {},
            .related = {},
            .fix = {}};
}

/** A file with an error that speaks of two places, a warning, a note; a clean one; one that is no XML. */
SCheckReport MakeReport() {
    SCheckReport report;
    SFileReport file{"a b/100%,\xC3\xA4.xml", "standard", {}, {}};
    SDiagnostic twice = Make(ECode::DUPLICATE_NAME, {3, 4}, "100%: <twice>", "rename");
    twice.related = {0, "the first one is here", {2, 4}};
    file.findings.Add(twice);
    SDiagnostic flag = Make(ECode::UNCLEAR_FLAG, {5, 6}, "flag", "write true");
    flag.fix = {0, 3, "false", {5, 12}, {5, 15}};
    file.findings.Add(flag);
    file.findings.Add(Make(ECode::UNUSED_ASSET, {7, 8}, "unused", "use it"));
    report.vecFiles = {file, {"clean.xml", "standard", {}, {}}, {"/bad.xml", nullptr, {}, {}}};
    report.vecFiles[2].findings.Add(Make(ECode::NOT_XML, {}, "no XML", "correct it"));
    return report;
}

std::string Write(void (*fnWrite)(const SCheckReport&, const ReportTaker&), const SCheckReport& report) {
    std::string strText;
    fnWrite(report, [&strText](std::string_view strPiece) { strText += strPiece; });
    return strText;
}

}  // namespace

/** What the published schema demands of a log: the members that are required, their types and their bounds. */
TEST(CheckFormats, SarifKeepsTheRulesOfItsSchema) {
    const Json log = Json::parse(Write(WriteCheckSarif, MakeReport()));
    EXPECT_EQ(log["version"], "2.1.0");
    ASSERT_EQ(log["runs"].size(), 1U);
    const Json& run = log["runs"][0];
    const Json& driver = run["tool"]["driver"];
    EXPECT_EQ(driver["name"], "dlpctl");
    ASSERT_EQ(driver["rules"].size(), GetCodeTable().size());
    for (const Json& rule : driver["rules"]) {
        EXPECT_TRUE(rule["id"].is_string());
        EXPECT_TRUE(rule["shortDescription"]["text"].is_string());
        EXPECT_TRUE(rule["fullDescription"]["text"].is_string());
        EXPECT_TRUE(rule["help"]["text"].is_string());
        EXPECT_EQ(rule.dump().find("{}"), std::string::npos) << rule;
    }
    EXPECT_EQ(run["columnKind"], "unicodeCodePoints");
    EXPECT_EQ(run["invocations"][0]["executionSuccessful"], false);
    ASSERT_EQ(run["results"].size(), 4U);
    for (const Json& result : run["results"]) {
        const std::size_t iRule = result["ruleIndex"];
        EXPECT_EQ(driver["rules"][iRule]["id"], result["ruleId"]);
        EXPECT_TRUE(result["level"] == "error" || result["level"] == "warning" || result["level"] == "note");
        EXPECT_FALSE(result["message"]["text"].get<std::string>().empty());
        for (const Json& location : result["locations"]) {
            const std::string strUri = location["physicalLocation"]["artifactLocation"]["uri"];
            EXPECT_EQ(strUri.find_first_of(" \\^`{}<>\""), std::string::npos);
            if (location["physicalLocation"].contains("region")) {
                EXPECT_GE(location["physicalLocation"]["region"]["startLine"].get<int>(), 1);
                EXPECT_GE(location["physicalLocation"]["region"]["startColumn"].get<int>(), 1);
            }
        }
    }
    EXPECT_EQ(run["results"][0]["locations"][0]["physicalLocation"],
              Json::parse(R"({"artifactLocation": {"uri": "a%20b/100%25%2C%C3%A4.xml"},)"
                          R"( "region": {"startLine": 3, "startColumn": 4}})"));
    EXPECT_EQ(run["results"][0]["relatedLocations"][0]["physicalLocation"]["region"]["startLine"], 2);
    EXPECT_EQ(run["results"][1]["fixes"],
              Json::parse(R"([{"description": {"text": "write \"false\""}, "artifactChanges": [{)"
                          R"("artifactLocation": {"uri": "a%20b/100%25%2C%C3%A4.xml"}, "replacements": [{)"
                          R"("deletedRegion": {"startLine": 5, "startColumn": 12, "endLine": 5, "endColumn": 15},)"
                          R"("insertedContent": {"text": "false"}}]}]}])"));
    EXPECT_FALSE(run["results"][0].contains("fixes"));
    EXPECT_EQ(run["results"][3]["locations"][0]["physicalLocation"],
              Json::parse(R"({"artifactLocation": {"uri": "file:///bad.xml"}})"));
}

TEST(CheckFormats, JunitHasASuiteForEachFileAndACaseForEachDiagnostic) {
    EXPECT_EQ(Write(WriteCheckJunit, MakeReport()),
              R"(<?xml version="1.0" encoding="UTF-8"?>
<testsuites name="dlpctl check" tests="5" failures="1" errors="1">
  <testsuite name="a b/100%,ä.xml" tests="3" failures="1" errors="0" time="0">
    <testcase name="DLP024 duplicate-name a b/100%,ä.xml:3:4" classname="a b/100%,ä.xml" time="0">
      <failure message="100%: &lt;twice&gt;" type="DLP024">a b/100%,ä.xml:3:4: error: 100%: &lt;twice&gt;; rename</failure>
    </testcase>
    <testcase name="DLP026 unclear-flag a b/100%,ä.xml:5:6" classname="a b/100%,ä.xml" time="0">
      <system-out>a b/100%,ä.xml:5:6: warning: flag; write true</system-out>
    </testcase>
    <testcase name="DLP035 unused-asset a b/100%,ä.xml:7:8" classname="a b/100%,ä.xml" time="0">
      <system-out>a b/100%,ä.xml:7:8: note: unused; use it</system-out>
    </testcase>
  </testsuite>
  <testsuite name="clean.xml" tests="1" failures="0" errors="0" time="0">
    <testcase name="check" classname="clean.xml" time="0"/>
  </testsuite>
  <testsuite name="/bad.xml" tests="1" failures="0" errors="1" time="0">
    <testcase name="DLP003 not-xml /bad.xml" classname="/bad.xml" time="0">
      <error message="no XML" type="DLP003">/bad.xml: error: no XML; correct it</error>
    </testcase>
  </testsuite>
</testsuites>
)");
}

TEST(CheckFormats, JunitCountsWhatItHolds) {
    SCheckReport report = MakeReport();
    report.eFailOn = ESeverity::NOTE;
    CXMLParser document;
    ASSERT_TRUE(document.LoadUtf8(Write(WriteCheckJunit, report)));
    const CXMLView root = document.RootView();
    EXPECT_EQ(root.Attribute("failures"), "3");
    for (CXMLView suite = root.FirstChild("testsuite"); suite; suite = suite.NextSibling("testsuite")) {
        int iCases = 0;
        int iFailures = 0;
        for (CXMLView node = suite.FirstChild("testcase"); node; node = node.NextSibling("testcase")) {
            ++iCases;
            iFailures += node.FirstChild("failure") ? 1 : 0;
        }
        EXPECT_EQ(suite.Attribute("tests"), std::to_string(iCases));
        EXPECT_EQ(suite.Attribute("failures"), std::to_string(iFailures));
    }
}

TEST(CheckFormats, GithubHasOneCommandForEachDiagnostic) {
    EXPECT_EQ(
        Write(WriteCheckGithub, MakeReport()),
        "::error file=a b/100%25%2C\xC3\xA4.xml,line=3,col=4,title=DLP024 duplicate-name::100%25: <twice>; rename\n"
        "::warning file=a b/100%25%2C\xC3\xA4.xml,line=5,col=6,title=DLP026 unclear-flag::flag; write true\n"
        "::notice file=a b/100%25%2C\xC3\xA4.xml,line=7,col=8,title=DLP035 unused-asset::unused; use it\n"
        "::error file=/bad.xml,title=DLP003 not-xml::no XML; correct it\n");
}

class CheckFormatsOfRuns : public CToolTest {};

TEST_F(CheckFormatsOfRuns, WhatIsNoXmlIsToldInEachFormat) {
    for (const char* pFormat : {"text", "json", "sarif", "junit", "github"}) {
        const SToolRun run = Run({"check", "--format", pFormat, "-"}, "<a>");
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.strErr, "");
        EXPECT_NE(run.strOut.find("DLP003"), std::string::npos) << pFormat;
    }
}
