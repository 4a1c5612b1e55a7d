#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/cli/ToolRun.h"
#include "tests/cli/Unprivileged.h"
#include "tests/support/FaultStore.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char POLICY[] = R"(<SAPolicy template_version="3.0.1000">
  <digitalAssets>
    <entity name="card" display_name="Card"><regularExpression/></entity>
    <entity name="card number"/>
    <entity name="iban" type="Type 1" display_name="Iban"><regularExpression/></entity>
  </digitalAssets>
  <complianceTemplates>
    <template name="a" display_name="A"><matchRule><buildingBlock sourceType="ENTITY" sourceName="crad"/></matchRule></template>
    <template name="b" display_name="B"><matchRule><buildingBlock sourceType="x" sourceName="card"/></matchRule></template>
    <template name="c" display_name="C"><matchRule operation="EXCEPT"/></template>
    <template name="d" display_name="D"/>
  </complianceTemplates>
  <industries><industry name="i"><template_id>gone</template_id></industry></industries>
</SAPolicy>
)";

class ImportReportFile : public CToolTest {
  protected:
    ImportReportFile() : m_strFile(m_dir.Write("policy.xml", POLICY)) {}

    /** @return what stands in the report of that name */
    std::string Report(const std::string& strName, std::vector<std::string> vecMore = {}, int iCode = 1) const {
        std::vector<std::string> vecArguments{"import", m_strFile, "--report", m_dir.Path(strName)};
        vecArguments.insert(vecArguments.end(), vecMore.begin(), vecMore.end());
        EXPECT_EQ(Run(vecArguments).iCode, iCode);
        return m_dir.Read(strName);
    }

    std::string m_strFile;
};

}  // namespace

TEST_F(ImportReportFile, TextIsWhatTheCommandWrites) {
    const std::string strReport = Report("report.txt", {"--dry-run"});
    EXPECT_EQ(strReport, Run({"import", "--dry-run", m_strFile}).strOut);
    const std::string strBad = m_dir.Write("bad.xml", "<a/>");
    Run({"import", strBad, "--report", m_dir.Path("r"), "--report-format", "text"});
    EXPECT_EQ(m_dir.Read("r"),
              strBad + ":1:1: no policy: the root element is \"a\", not \"SAPolicy\"; nothing was written\n");
}

TEST_F(ImportReportFile, JsonIsWhatTheCommandWritesInThatForm) {
    const std::string strNone = m_dir.Path("none");
    const SToolRun run = Run({"--json", "import", "--dry-run", m_strFile, strNone});
    EXPECT_EQ(Report("report.json", {"--dry-run", strNone}, 2), run.strOut);
    EXPECT_EQ(Report("report", {"--dry-run", strNone}, 2), run.strOut);
    EXPECT_EQ(Run({"--json", "import", "--dry-run", m_strFile, strNone, "--report", m_dir.Path("both.json")}).strOut,
              run.strOut);
    EXPECT_EQ(m_dir.Read("both.json"), run.strOut);
}

TEST_F(ImportReportFile, SarifHoldsWhatWasNotTakenByCodeAndPlace) {
    const Json run = Json::parse(Report("report.sarif"))["runs"][0];
    std::string strResults;
    for (const Json& result : run["results"]) {
        const Json& location = result["locations"][0]["physicalLocation"];
        EXPECT_EQ(location["artifactLocation"]["uri"], "file://" + m_strFile);
        strResults += result["ruleId"].get<std::string>() + ' ' + result["level"].get<std::string>() + ' ' +
                      location["region"]["startLine"].dump() + ':' + location["region"]["startColumn"].dump() + ' ' +
                      result["message"]["text"].get<std::string>() + '\n';
    }
    EXPECT_EQ(
        strResults,
        "DLP021 error 4:5 the expression \"card number\" has no display_name; give it one, for people\n"
        "DLP022 error 5:5 the expression \"iban\" has no child element \"alphabetCharset\"; add it\n"
        "DLP030 error 8:5 neither the document nor the store has the expression \"crad\"; did you mean \"card\"?\n"
        "DLP031 error 9:5 sourceType is \"x\"; only ENTITY and KEYWORD are taken; write one of the two, in "
        "capitals and without blanks\n"
        "DLP032 error 10:5 the operation \"EXCEPT\" is not taken; write AND or OR; what EXCEPT says must be said "
        "without it\n"
        "DLP033 error 13:47 \"i\" names the template \"gone\", which is not in the document; correct the name or "
        "remove the entry\n");
    EXPECT_EQ(run["invocations"], Json::parse(R"([{"executionSuccessful":true,"exitCode":1}])"));
}

TEST_F(ImportReportFile, JunitHasASuiteForEachFile) {
    const std::string strGood = m_dir.Write("good.xml", Documents::Small());
    const std::string strReport = Report("report.xml", {strGood, m_dir.Path("none")}, 2);
    EXPECT_NE(strReport.find("<testsuites name=\"dlpctl import\" tests=\"8\" failures=\"6\" errors=\"1\">"),
              std::string::npos)
        << strReport;
    EXPECT_NE(strReport.find("<testcase name=\"import\" classname=\"" + strGood + "\" time=\"0\"/>"), std::string::npos)
        << strReport;
}

TEST_F(ImportReportFile, GithubOnStandardOutputTakesThePlaceOfTheText) {
    const SToolRun run = Run({"import", "--skip-existing", "--only", "card", "--only", "x", "--report", "-",
                              "--report-format", "github", m_strFile, m_dir.Write("again.xml", POLICY)});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut, "::error file=" + m_strFile +
                              ",title=DLP071 not-in-document::no item of the document has the name \"x\"; correct the "
                              "name after --only\n"
                              "::error file=" +
                              m_dir.Path("again.xml") +
                              ",title=DLP071 not-in-document::no item of the document has the name \"x\"; correct the "
                              "name after --only\n"
                              "::notice file=" +
                              m_dir.Path("again.xml") +
                              ",line=3,col=5,title=DLP070 already-stored::the store has the expression \"card\" "
                              "already; import without --skip-existing to replace it\n");
}

TEST_F(ImportReportFile, ARefusedFileIsToldByTheCodeOfItsFault) {
    const std::pair<std::string, std::string> aFiles[] = {
        {"", "DLP003 null the file is no XML: it is empty; check that this is the file you meant"},
        {"<a>\n\xff</a>", "DLP002 2 the file is not UTF-8 from here on; save it as UTF-8"},
        {"<a/>", "DLP004 1 no policy: the root element is \"a\", not \"SAPolicy\""},
        {"<SAPolicy template_version='1' localization_language='x'/>",
         "DLP005 1 the document's language is \"x\", and none is set here; --language \"x\" takes it"},
        {"<SAPolicy/>", "DLP006 1 the document holds no template"},
    };
    for (const auto& [strBytes, strExpected] : aFiles) {
        Run({"import", m_dir.Write("bad.xml", strBytes), "--report", m_dir.Path("r.sarif")});
        const Json run = Json::parse(m_dir.Read("r.sarif"))["runs"][0];
        ASSERT_EQ(run["results"].size(), 1U);
        const Json& result = run["results"][0];
        const Json& physical = result["locations"][0]["physicalLocation"];
        EXPECT_EQ(result["ruleId"].get<std::string>() + ' ' +
                      (physical.contains("region") ? physical["region"]["startLine"] : Json()).dump() + ' ' +
                      result["message"]["text"].get<std::string>(),
                  strExpected + "; nothing of the file was written");
        EXPECT_EQ(run["invocations"][0]["executionSuccessful"], false);
    }
}

TEST_F(ImportReportFile, AFailureOfTheStoreIsToldToo) {
    CStoreFaults faults;
    faults.FailAt(2);
    EXPECT_EQ(Run({"import", m_strFile, "--report", m_dir.Path("r.sarif")}).iCode, 4);
    const Json run = Json::parse(m_dir.Read("r.sarif"))["runs"][0];
    EXPECT_EQ(run["results"][0]["ruleId"], "DLP072");
    EXPECT_EQ(run["results"][0]["message"]["text"], "the store does not answer; nothing of the file was written");
    EXPECT_EQ(run["invocations"], Json::parse(R"([{"executionSuccessful":false,"exitCode":4}])"));
}

TEST_F(ImportReportFile, WhatCannotBeAskedForIsRefusedBeforeAnythingIsImported) {
    const std::string strCopy = m_dir.Path("./policy.xml");
    const std::string strOther = m_dir.Write("other.xml", POLICY);
    const std::pair<std::vector<std::string>, std::string> aRuns[] = {
        {{"--report-format", "json"}, "--report-format needs --report FILE"},
        {{"--report", m_dir.Path("r"), "--report-format", "xml"},
         "--report-format: there is no format \"xml\"; write text, json, sarif, junit or github"},
        {{"--report", "-", "--json"}, "write either --json or --report -"},
        {{"--report", strCopy}, "--report: " + strCopy + " is what is to be imported; name another file"},
        {{"--report", strOther},
         "--report: " + strOther + " is a policy, which a report would replace; name another file"},
        {{"--report", m_dir.Path("store.db")}, m_dir.Path("store.db") + ": is the store itself; name another file"},
    };
    for (const auto& [vecMore, strMessage] : aRuns) {
        std::vector<std::string> vecArguments{"import", m_strFile};
        vecArguments.insert(vecArguments.end(), vecMore.begin(), vecMore.end());
        const SToolRun run = Run(vecArguments);
        EXPECT_EQ(run.iCode, 3);
        EXPECT_EQ(run.strErr, "dlpctl: " + strMessage + "\n");
    }
    const SToolRun run = Run({"import", m_strFile, "--report", m_dir.Path("none/r")});
    EXPECT_EQ(run.iCode, 4);
    EXPECT_EQ(run.strOut, "");
    EXPECT_EQ(m_dir.Read("policy.xml"), POLICY);
    EXPECT_EQ(m_dir.Read("other.xml"), POLICY);
    EXPECT_EQ(Get({"list", "expressions"}), "");
}
