#include "cli/check/DiagnosticCodes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/xml/CXMLParser.h"
#include "tests/cli/ToolRun.h"

namespace {

using Json = nlohmann::json;
using Codes = std::vector<std::string>;

/** What examples refer to: an expression "card" and a keyword list "words". */
constexpr const char STORED[] =
    R"(<SAPolicy template_version="3.0.1000"><digitalAssets>)"
    R"(<entity name="card" type="Generic" display_name="Card"><regularExpression>\d{16}</regularExpression></entity>)"
    R"(<dictionary name="words" type="Any" display_name="Words"><keyword score="1">card</keyword></dictionary>)"
    R"(<entity name="built-in" type="Generic" display_name="Built in" pre-defined="true">)"
    R"(<regularExpression>\d{9}</regularExpression></entity>)"
    R"(</digitalAssets><complianceTemplates><template name="stored" display_name="Stored"/></complianceTemplates>)"
    R"(</SAPolicy>)";

std::string MakeUser(const std::string& strName, const std::string& strBlock) {
    return "<template name=\"" + strName + "\" display_name=\"" + strName + "\"><matchRule>" + strBlock +
           "<buildingBlock sourceType=\"ENTITY\" entityHits=\"7\" sourceName=\"card\" operation=\"OR\"/>"
           "</matchRule></template>";
}

/**
 * @param strExample a whole policy, or items of one
 * @return a policy with the items in it, in which each asset is used by a template
 */
std::string MakeDocument(const std::string& strExample) {
    CXMLParser items;
    if (!items.LoadUtf8("<x>" + strExample + "</x>") || strExample.find("Policy") != std::string::npos) {
        return strExample;
    }
    std::string strAssets;
    std::string strTemplates = MakeUser("user", R"(<buildingBlock sourceType="KEYWORD" sourceName="words"/>)");
    std::set<std::string> setNames;
    for (CXMLView item = items.RootView().FirstChild(); item; item = item.NextSibling()) {
        const std::string strName(item.Attribute("name"));
        item.AppendMarkup(item.Name() == "template" ? strTemplates : strAssets);
        if (item.Name() == "entity" && setNames.insert(strName).second && !strName.empty()) {
            strTemplates += MakeUser("user of " + strName,
                                     "<buildingBlock sourceType=\"ENTITY\" entityHits=\"1\" "
                                     "sourceName=\"" +
                                         strName + "\"/>");
        } else if (item.Name() == "dictionary" && setNames.insert(strName).second) {
            strTemplates += MakeUser("user of " + strName,
                                     "<buildingBlock sourceType=\"KEYWORD\" sourceName=\"" + strName + "\"/>");
        }
    }
    return "<SAPolicy template_version=\"3.0.1000\"><digitalAssets>" + strAssets +
           "</digitalAssets><complianceTemplates>" + strTemplates + "</complianceTemplates></SAPolicy>";
}

class CheckCodes : public CToolTest {
  protected:
    /** With the lists that come with the tool: examples are to be tried with it. */
    CheckCodes() {
        ::setenv("DLP_INSTALL_PATH", DLP_SOURCE_DIR, 1);
        Import(STORED);
    }

    /** @return the codes of what is found, each once */
    Codes Find(const std::string& strDocument) const {
        const Json report = Json::parse(Run({"--json", "check", "-"}, strDocument).strOut);
        std::set<std::string> setCodes;
        for (const Json& diagnostic : report["files"][0]["diagnostics"]) {
            setCodes.insert(diagnostic["code"]);
        }
        return {setCodes.begin(), setCodes.end()};
    }

    /** What is of the older layout is always told to be; it is what some codes need. */
    static Codes Expect(const SCodeRow& row, const std::string& strDocument, bool bFound) {
        std::set<std::string> setCodes;
        if (strDocument.find("<SAPolicy>") != std::string::npos &&
            strDocument.find("</SAPolicy>\n<") == std::string::npos && row.eCode != ECode::NOT_XML) {
            setCodes.insert(GetCodeRow(ECode::OLDER_LAYOUT).pCode);
        }
        if (bFound) {
            setCodes.insert(row.pCode);
        }
        return {setCodes.begin(), setCodes.end()};
    }
};

/** Different patterns that take long to fail, though no longer than the square of a text's length. */
std::string MakeSlowPatterns(int iPatterns) {
    std::string strPatterns;
    for (int i = 0; i < iPatterns; ++i) {
        const std::string strNumber = std::to_string(i);
        strPatterns += "<entity name=\"slow " + strNumber + "\" type=\"Generic\" display_name=\"Slow " + strNumber +
                       "\">" + "<regularExpression>" + strNumber + "\\w+\\w+x</regularExpression></entity>";
    }
    return strPatterns;
}

/** Documents for the codes whose examples are descriptions. */
struct SDescribed {
    ECode eCode;
    std::string strBad;
    std::string strGood;
};

/** Made when they are asked for: every case is a process of its own, and they take long. */
std::vector<SDescribed> MakeDescribed() {
    return {
        {ECode::NOT_UTF8, MakeDocument("<!-- \xC3\xBC -->").replace(1, 0, "!-- \xFC --><"),
         MakeDocument("<!-- \xC3\xBC -->")},
        {ECode::BUILT_IN,
         MakeDocument(
             R"(<entity name="built-in" type="Generic" display_name="B" pre-defined="false"><regularExpression>\d)"
             R"(</regularExpression></entity>)"),
         MakeDocument(
             R"(<entity name="built-in" type="Generic" display_name="B" pre-defined="true"><regularExpression>\d)"
             R"(</regularExpression></entity>)")},
        {ECode::PATTERN_UNTRIED, MakeDocument(MakeSlowPatterns(600)), MakeDocument(MakeSlowPatterns(30))},
    };
}

}  // namespace

TEST_F(CheckCodes, TheBadExampleGivesItAloneAndTheGoodOneDoesNot) {
    for (const SCodeRow& row : GetCodeTable()) {
        if (row.pBad[0] != '(') {
            const std::string strBad = MakeDocument(row.pBad);
            const std::string strGood = MakeDocument(row.pGood);
            EXPECT_EQ(Find(strBad), Expect(row, strBad, true)) << row.pCode << ' ' << row.pName << '\n' << strBad;
            EXPECT_EQ(Find(strGood), Expect(row, strGood, false)) << row.pCode << ' ' << row.pName << '\n' << strGood;
        }
    }
}

TEST_F(CheckCodes, WhatTheTableOnlyDescribesIsFoundToo) {
    for (const SDescribed& described : MakeDescribed()) {
        const SCodeRow& row = GetCodeRow(described.eCode);
        EXPECT_EQ(Find(described.strBad), Codes{row.pCode});
        EXPECT_EQ(Find(described.strGood), Codes{}) << row.pCode;
    }
    const SToolRun run = Run({"--json", "check", m_dir.Path("none.xml")});
    EXPECT_EQ(Json::parse(run.strOut)["files"][0]["diagnostics"][0]["code"], "DLP001");
    EXPECT_EQ(run.iCode, 2);
}

TEST_F(CheckCodes, EachIsDescribedOrShown) {
    for (const SCodeRow& row : GetCodeTable()) {
        const bool bDescribed = row.eCode == ECode::UNREADABLE || row.eCode == ECode::NOT_UTF8 ||
                                row.eCode == ECode::BUILT_IN || row.eCode == ECode::PATTERN_UNTRIED ||
                                row.eCode >= ECode::ALREADY_STORED;
        EXPECT_EQ(row.pBad[0] == '(', bDescribed) << row.pCode;
        EXPECT_EQ(FindCode(row.pCode), &row);
        EXPECT_EQ(FindCode(row.pName), &row);
        EXPECT_EQ(FindCode(row.pCode + 3), &row);
    }
}

TEST_F(CheckCodes, WhatAnImportDoesNotTakeIsAnError) {
    for (const SCodeRow& row : GetCodeTable()) {
        if (row.pBad[0] == '(' || row.eSeverity == ESeverity::ERROR) {
            continue;
        }
        const SToolRun run = RunOn("memory:", {"import", "-"}, MakeDocument(row.pBad));
        const SToolRun check = RunOn("memory:", {"check", "-"}, MakeDocument(row.pBad));
        EXPECT_EQ(run.iCode == 0, check.iCode == 0) << row.pCode << run.strOut << check.strOut;
    }
}

TEST_F(CheckCodes, ThePoliciesThatComeWithTheToolAreClean) {
    const std::string strExamples = DLP_SOURCE_DIR "/examples/";
    const std::string strHome = DLP_SOURCE_DIR;
    EXPECT_EQ(RunOn("memory:", {"--home", strHome, "check", strExamples + "starter-policy.xml"}).strOut,
              "nothing to report in 1 file\n");
    EXPECT_EQ(RunOn("memory:", {"--home", strHome, "check", "--assets", strExamples + "digital-assets.xml"}).strOut,
              "nothing to report in 1 file\n");
}
