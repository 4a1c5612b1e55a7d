#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/cli/ToolRun.h"

namespace {

using Json = nlohmann::json;
using namespace Documents;

/** The fates of all items: "kind name disposition reason line:column", a line each. */
std::string Fates(const Json& report) {
    std::string strFates;
    for (const Json& item : report["items"]) {
        strFates += item["kind"].get<std::string>() + ' ' + item["name"].get<std::string>() + ' ' +
                    item["disposition"].get<std::string>() + ' ' + item["reason"].get<std::string>() + ' ' +
                    item["line"].dump() + ':' + item["column"].dump() + '\n';
    }
    return strFates;
}

std::string Replace(std::string strText, const std::string& strWhat, const std::string& strWith) {
    for (std::size_t i = strText.find(strWhat); i != std::string::npos; i = strText.find(strWhat, i)) {
        strText.replace(i, strWhat.size(), strWith);
        i += strWith.size();
    }
    return strText;
}

class ImportLedger : public CToolTest {
  protected:
    ImportLedger() { Import(Small()); }

    Json Report(std::vector<std::string> vecOptions, const std::string& strDocument) const {
        vecOptions.insert(vecOptions.begin(), {"--json", "import", "-"});
        return Json::parse(Run(vecOptions, strDocument).strOut);
    }
};

/** The children that stand in a template beside its rules, and the places of what they hold. */
constexpr const char FOREIGN[] = R"(<SAPolicy template_version="3.0.1000">
<complianceTemplates>
<template name="t" display_name="T">
<note><buildingBlock sourceType="ENTITY" entityHits="5" sourceName="one"/><x sourceType="keyword" sourceName="words" operation="OR"/></note>
<matchRule><block sourceType="ENTITY" entityHits="2" sourceName="two"/><hint/></matchRule>
<remark>text</remark>
</template>
</complianceTemplates>
</SAPolicy>)";

constexpr const char DANGLING[] = R"(<SAPolicy template_version="3.0.1000">
<complianceTemplates>
<template name="t" display_name="T">
<matchrule><buildingBlock sourceType="ENTITY" entityHits="1" sourceName="tow"/></matchrule>
</template>
</complianceTemplates>
</SAPolicy>)";

constexpr const char NAMELESS[] = R"(<SAPolicy template_version="3.0.1000">
<complianceTemplates><template name="t" display_name="T"><matchRule>
<buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule></template></complianceTemplates><regions>
<region><template_id>t</template_id></region>
</regions>
</SAPolicy>)";

constexpr const char LOST[] = R"(<SAPolicy template_version="3.0.1000">
<digitalAssets><Entity name="e" display_name="E"/><template name="t" display_name="T"/></digitalAssets>
<complianceTemplates><template name="t" display_name="T"/><templte name="gone" display_name="Gone"/></complianceTemplates>
<industries><industry name="finance"><templateId>t</templateId></industry><branch/></industries>
<regions><Region name="r"/></regions>
<extras/>
</SAPolicy>)";

}  // namespace

TEST_F(ImportLedger, ACategoryWithoutANameIsAFinding) {
    const std::string strDump = Dump();
    const char* pRow = "-:4:1: category entry \"\" skipped: it has no name; give it one\n";
    const SToolRun refused = Run({"-q", "import", "--fail-on-skip", "-"}, NAMELESS);
    EXPECT_EQ(refused.iCode, 2);
    EXPECT_EQ(refused.strOut, pRow);
    EXPECT_EQ(Dump(), strDump);

    const SToolRun run = Run({"-q", "import", "-"}, NAMELESS);
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut, pRow);
    EXPECT_EQ(Json::parse(Dump())["templates"][1]["regions"], Json::array({""}));
    EXPECT_EQ(Report({}, NAMELESS)["items"][1]["reason"], "no-name");
    EXPECT_EQ(Run({"-q", "import", "-", "--report", "-", "--report-format", "github"}, NAMELESS).strOut,
              "::error file=-,line=4,col=1,title=DLP020 no-name::the category entry has no name; give it one, by which "
              "others can refer to it\n");
    EXPECT_EQ(Run({"check", "--format", "github", "-"}, NAMELESS).strOut,
              "::error file=-,line=4,col=1,title=DLP020 no-name::the region has no name; give it one, by which others "
              "can refer to it\n");
}

TEST_F(ImportLedger, WhatAForeignChildOfATemplateIsReadAsIsSaid) {
    const SToolRun run = Run({"import", "--fail-on-skip", "-"}, FOREIGN);
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut,
              "-:\n"
              "           CREATED  UPDATED  UNCHANGED  SKIPPED  FAILED\n"
              "templates        1        0          0        0       0\n"
              "-:4:1: template \"t\": the child element \"note\" is read as a rule: P:one(5) OR K:words\n"
              "-:5:12: template \"t\": the child element \"block\" is read as a building block: P:two(2)\n"
              "-:5:72: template \"t\": the child element \"hint\" is read as a building block that refers to nothing\n"
              "-:6:1: template \"t\": the child element \"remark\" is read as a rule that refers to nothing\n");
    EXPECT_EQ(Report({}, FOREIGN)["items"][0]["foreign_children"],
              Json::parse(
                  R"x([{"element": "note", "read_as": "rule", "text": "P:one(5) OR K:words", "line": 4, "column": 1},)x"
                  R"x({"element": "block", "read_as": "building block", "text": "P:two(2)", "line": 5, "column": 12},)x"
                  R"x({"element": "hint", "read_as": "building block", "text": "", "line": 5, "column": 72},)x"
                  R"x({"element": "remark", "read_as": "rule", "text": "", "line": 6, "column": 1}])x"));
}

TEST_F(ImportLedger, AReferenceToNothingInAForeignChildIsAFinding) {
    const SToolRun run = Run({"import", "-"}, DANGLING);
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut,
              "-:\n"
              "           CREATED  UPDATED  UNCHANGED  SKIPPED  FAILED\n"
              "templates        1        0          0        0       0\n"
              "-:4:1: template \"t\": the child element \"matchrule\" is read as a rule: P:tow(1)\n"
              "-:4:12: template \"t\": it refers to the expression \"tow\", which is not stored, so that it cannot be "
              "exported; did you mean \"two\"?\n");
    const Json report = Report({}, DANGLING);
    EXPECT_EQ(report["verdict"], "findings");
    EXPECT_EQ(report["items"][0]["disposition"], "unchanged");
    EXPECT_EQ(report["items"][0]["unknown_references"],
              Json::parse(R"([{"kind": "expression", "name": "tow", "nearest": "two", "line": 4, "column": 12}])"));
    EXPECT_EQ(Run({"import", "--report", "-", "--report-format", "github", "-"}, DANGLING).strOut,
              "::warning file=-,line=4,col=1,title=DLP016 foreign-rule::\"matchrule\" is read as a rule: P:tow(1), "
              "whatever its name; did you mean \"matchRule\"?\n"
              "::error file=-,line=4,col=12,title=DLP030 unknown-asset::neither the document nor the store has the "
              "expression \"tow\"; did you mean \"two\"?\n");
}

TEST_F(ImportLedger, AReferenceToNothingInAForeignChildIsRefusedOnRequest) {
    const std::string strDump = Dump();
    const SToolRun run = Run({"import", "--fail-on-skip", "-"}, DANGLING);
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.strErr, "dlpctl: -: 1 item cannot be taken, and --fail-on-skip is given; nothing was written\n");
    EXPECT_NE(run.strOut.find("it refers to the expression \"tow\""), std::string::npos) << run.strOut;
    EXPECT_EQ(Dump(), strDump);
}

TEST_F(ImportLedger, AForeignChildMayReferToWhatTheDocumentBrings) {
    EXPECT_EQ(Run({"import", "-"}, Policy(Entity("new"),
                                          "<template name=\"t\" display_name=\"T\"><rule><b "
                                          "sourceType=\"ENTITY\" sourceName=\"new\"/></rule></template>"))
                  .iCode,
              0);
}

TEST_F(ImportLedger, ForeignChildrenOfTheOlderLayoutHaveTheirPlaces) {
    const Json item = Report({},
                             "<SAPolicy>\n<complianceTemplates><template name=\"t\" displayName=\"T\">\n<rule/>"
                             "</template></complianceTemplates></SAPolicy>")["items"][0];
    EXPECT_EQ(item["foreign_children"][0]["line"], 3);
    EXPECT_EQ(item["foreign_children"][0]["column"], 1);
}

TEST_F(ImportLedger, OfManyForeignChildrenTheFirstThousandAreTold) {
    std::string strMany;
    for (int i = 0; i < 1002; ++i) {
        strMany += "<x/>";
    }
    const std::string strKnown = "<x><y sourceType=\"ENTITY\" sourceName=\"e\"/></x>";
    const std::string strUnknown = Replace(strKnown, "\"e\"", "\"no\"");
    const std::string strDocument =
        Policy(Entity("e"), "<template name=\"t\" display_name=\"T\">" + strKnown + strMany + strKnown + strUnknown +
                                strUnknown + "</template>");
    const Json item = Report({}, strDocument)["items"][1];
    EXPECT_EQ(item["foreign_children"].size(), 1001U);
    EXPECT_EQ(item["foreign_children"][1000]["text"], "P:no(0)");
    EXPECT_EQ(item["untold_foreign_children"], 5);
    EXPECT_EQ(item["unknown_references"].size(), 1U);
    const SToolRun run = Run({"import", "-"}, strDocument);
    EXPECT_EQ(run.iCode, 1);
    EXPECT_NE(run.strOut.find(": template \"t\": 5 more child elements are read as rules or building blocks\n"),
              std::string::npos)
        << run.strOut.substr(0, 400);
    const std::string strSarif = Run({"import", "--report", "-", "--report-format", "text", "-"}, strDocument).strOut;
    EXPECT_NE(strSarif.find("5 more child elements"), std::string::npos) << strSarif.substr(0, 400);
}

TEST_F(ImportLedger, ElementsThatStandWhereItemsDoAndAreNoneAreSkipped) {
    const SToolRun run = Run({"import", "-"}, LOST);
    EXPECT_EQ(run.iCode, 1);
    EXPECT_NE(run.strOut.find("unknown elements        0        0          0        7       0\n"), std::string::npos)
        << run.strOut;
    EXPECT_NE(run.strOut.find("-:3:59: element \"templte\" skipped: no policy has it in complianceTemplates; did you "
                              "mean \"template\"?\n"),
              std::string::npos)
        << run.strOut;
    EXPECT_EQ(Fates(Report({}, LOST)),
              "element Entity skipped unknown-element 2:16\n"
              "element template skipped unknown-element 2:51\n"
              "template t unchanged  3:22\n"
              "element templte skipped unknown-element 3:59\n"
              "element templateId skipped unknown-element 4:38\n"
              "element branch skipped unknown-element 4:75\n"
              "element Region skipped unknown-element 5:10\n"
              "element extras skipped unknown-element 6:1\n");
    EXPECT_EQ(Run({"import", "--fail-on-skip", "-"}, LOST).iCode, 2);
    EXPECT_EQ(
        Run({"import", "--report", "-", "--report-format", "github", "-"},
            "<SAPolicy template_version=\"1\">\n<extras/><complianceTemplates><template name=\"t\" "
            "display_name=\"T\"/></complianceTemplates></SAPolicy>")
            .strOut,
        "::error file=-,line=2,col=1,title=DLP018 lost-element::no policy has \"extras\" in \"SAPolicy\": an import "
        "passes it over with all that it holds; correct its name, or remove it\n");
}

TEST_F(ImportLedger, WhatIsLostOfAnAssetIsToldByImportAndCheck) {
    const std::string strDocument =
        "<SAPolicy template_version=\"3\"><digitalAssets>\n<dictionary name=\"d\" type=\"Any\" display_name=\"D\">"
        "<keyword score=\"1\">a</keyword>\n<word>b</word></dictionary>\n<entity name=\"e\" type=\"Generic\" "
        "display_name=\"E\"><regularExpression>x</regularExpression>\n<example>x</example></entity></digitalAssets>"
        "<complianceTemplates><template name=\"t\" display_name=\"T\"/></complianceTemplates></SAPolicy>";
    EXPECT_EQ(Fates(Report({}, strDocument)),
              "keyword d created  2:1\n"
              "element word skipped unknown-element 3:1\n"
              "expression e created  4:1\n"
              "element example skipped unknown-element 5:1\n"
              "template t created  5:67\n");
    const SToolRun run = Run({"-q", "import", "-"}, strDocument);
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut,
              "-:3:1: element \"word\" skipped: no policy has it in dictionary; did you mean \"keyword\"?\n"
              "-:5:1: element \"example\" skipped: no policy has it in entity; did you mean \"examples\"?\n");
    EXPECT_EQ(
        Run({"check", "--format", "github", "--allow", "DLP035", "--allow", "DLP060", "-"}, strDocument).strOut,
        "::error file=-,line=3,col=1,title=DLP018 lost-element::no policy has \"word\" in \"dictionary\": an import "
        "passes it over with all that it holds; did you mean \"keyword\"?\n"
        "::error file=-,line=5,col=1,title=DLP018 lost-element::no policy has \"example\" in \"entity\": an import "
        "passes it over with all that it holds; did you mean \"examples\"?\n");
}

TEST_F(ImportLedger, WhatIsLostOfAChosenAssetIsTold) {
    const std::string strDocument =
        Policy(Entity("card") + "\n" + Replace(Dictionary("terms"), "</dictionary>", "<word>two</word></dictionary>") +
                   "\n" + Replace(Dictionary("others"), "</dictionary>", "<word>six</word></dictionary>"),
               Template("cards", "card", "terms"));
    const std::string strLost = "element word skipped unknown-element 2:";
    for (const char* pName : {"cards", "terms"}) {
        const std::string strFates = Fates(Report({"--only", pName}, strDocument));
        EXPECT_NE(strFates.find(strLost), std::string::npos) << strFates;
        EXPECT_EQ(strFates.find("element word"), strFates.rfind("element word")) << strFates;
        EXPECT_EQ(Run({"import", "--only", pName, "--fail-on-skip", "-"}, strDocument).iCode, 2);
    }
    EXPECT_EQ(Fates(Report({"--only", "card"}, strDocument)).find("element word"), std::string::npos);
    const SToolRun assets = Run({"assets", "import", "--only", "cards", "--fail-on-skip", "-"}, strDocument);
    EXPECT_EQ(assets.iCode, 2);
    EXPECT_NE(
        assets.strOut.find("element \"word\" skipped: no policy has it in dictionary; did you mean \"keyword\"?\n"),
        std::string::npos)
        << assets.strOut;
}

TEST_F(ImportLedger, AnElementNamedAsACategoryIsToldHowToWriteIt) {
    const std::string strDocument = Replace(Small(), "</industries>", "\n<banking/></industries>");
    const std::string strAdvice = "; write <industry name=\"banking\"> if that is its name, or remove it\n";
    const SToolRun run = Run({"-q", "import", "-"}, strDocument);
    EXPECT_NE(run.strOut.find("element \"banking\" skipped: no policy has it in industries" + strAdvice),
              std::string::npos)
        << run.strOut;
    const std::string strFound = Run({"check", "--format", "github", "-"}, strDocument).strOut;
    EXPECT_NE(strFound.find("passes it over with all that it holds" + strAdvice), std::string::npos) << strFound;
}

TEST_F(ImportLedger, OfManyUnknownElementsTheFirstThousandAreItems) {
    std::string strMany;
    for (int i = 0; i < 1002; ++i) {
        strMany += i < 600 ? "<x/>" : "<y/>";
    }
    const std::string strDocument = Replace(Small(), "</SAPolicy>", strMany + "</SAPolicy>");
    const SToolRun run = Run({"import", "-"}, strDocument);
    EXPECT_EQ(run.iCode, 1);
    EXPECT_NE(run.strOut.find("unknown elements        0        0          0     1002       0\n"), std::string::npos)
        << run.strOut.substr(0, 400);
    EXPECT_NE(run.strOut.find("\n-: 2 more unknown elements were skipped\n"), std::string::npos);
    EXPECT_EQ(Run({"import", "--fail-on-skip", "-"}, strDocument).strErr,
              "dlpctl: -: 1002 items cannot be taken, and --fail-on-skip is given; nothing was written\n");
    const Json report = Report({}, strDocument);
    EXPECT_EQ(report["untold"], 2);
    const auto fnElement = [](const Json& item) { return item["reason"] == "unknown-element"; };
    EXPECT_EQ(std::count_if(report["items"].begin(), report["items"].end(), fnElement), 1000);
}

TEST_F(ImportLedger, OfAnyNumberOfUnknownElementsNoneIsForgotten) {
    std::string strMany;
    for (int i = 0; i < 100005; ++i) {
        strMany += "<x/>";
    }
    const std::string strDocument = Replace(Small(), "</SAPolicy>", strMany + "</SAPolicy>");
    EXPECT_EQ(Report({}, strDocument)["untold"], 99005);
    const Json chosen = Report({"--only", "t"}, strDocument);
    EXPECT_EQ(chosen.count("untold"), 0U);
    const int iOthers = Report({"--only", "t"}, Small())["passed_over"];
    EXPECT_EQ(chosen["passed_over"], iOthers + 100005);
}

TEST_F(ImportLedger, OnlyWhatAForgottenVersionMendsIsLaidToIt) {
    const SToolRun run = Run({"-q", "import", "-"},
                             "<SAPolicy><complianceTemplates>\n<template name=\"t\" display_name=\"T\"/>\n"
                             "<template name=\"u\"/></complianceTemplates></SAPolicy>");
    EXPECT_EQ(run.strOut,
              "-:2:1: template \"t\" skipped: it has no displayName; add template_version=\"3.0.1000\"\n"
              "-:3:1: template \"u\" skipped: it has no display_name; give it one\n");
}

TEST_F(ImportLedger, LostElementsOfTheOlderLayoutAreToldToo) {
    EXPECT_EQ(Fates(Report({},
                           "<SAPolicy>\n<complianceTemplates><template name=\"t\" displayName=\"T\"/><Template/>"
                           "</complianceTemplates>\n<extras/>\n</SAPolicy>")),
              "template t created  2:22\n"
              "element Template skipped unknown-element 2:58\n"
              "element extras skipped unknown-element 3:1\n");
}

TEST_F(ImportLedger, ARefusedFileHasAFateForEachItem) {
    const std::string strDocument = Replace(
        Policy(Entity("a") + Entity("b"), Template("t", "a", "words") + Template("u", "none", "words")), "><", ">\n<");
    const Json report = Report({"--fail-on-skip"}, strDocument);
    EXPECT_EQ(report["verdict"], "invalid");
    EXPECT_EQ(report["imported"], Json::array());
    EXPECT_EQ(Fates(report),
              "expression a skipped undone 4:1\n"
              "expression b skipped undone 7:1\n"
              "template t skipped undone 12:1\n"
              "template u skipped unsupported-assets 18:1\n");
    EXPECT_EQ(Fates(Report(
                  {}, Replace(strDocument, " template_version", " localization_language=\"Latin\" template_version"))),
              "expression a skipped undone 4:1\n"
              "expression b skipped undone 7:1\n"
              "template t skipped undone 12:1\n"
              "template u skipped undone 18:1\n");
    const Json chosen = Report({"--only", "b"}, Replace(strDocument, " template_version",
                                                        " localization_language=\"Latin\" template_version"));
    EXPECT_EQ(Fates(chosen), "expression b skipped undone 7:1\n");
    EXPECT_EQ(chosen["passed_over"], 3);
    EXPECT_EQ(Run({"import", "--fail-on-skip", "-"}, strDocument).strOut.find("undone"), std::string::npos);
}
