#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <sstream>

#include <nlohmann/json.hpp>

#include "api/CDLPDigitalAssetsParser.h"
#include "cli/Signals.h"
#include "cli/Tool.h"
#include "tests/cli/ToolRun.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char OLDER[] =
    R"(<?xml version="1.0"?><!--top-->
<SAPolicy localization_language="English">
  <?go on?> stray
  <complianceTemplates command="merge" x="1"><!--in-->
    <template name="a" displayName="A" builtin="0" severity="high"><!--kept-->
      <matchRule><buildingBlock sourceType="ENTITY" sourceName="Old One"/><buildingBlock/></matchRule>
    </template>
    <template name="b" builtin="1"/>
    <template display_name="Old" displayName="New" pre-defined="false"/>
    <template name="d" display_name="Lost"/>
    <other name="o"/>
  </complianceTemplates>
  <industries><!--gone with it--></industries>
</SAPolicy>
)";

constexpr const char CONVERTED[] =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<SAPolicy template_version="3.0.1000" localization_language="">
  <complianceTemplates command="overwrite">
    <template name="a" severity="medium" display_name="A" pre-defined="false"> <!--kept-->
      <matchRule>
        <buildingBlock sourceType="ENTITY" sourceName="one"/>
        <buildingBlock sourceName=""/>
      </matchRule>
    </template>
    <template display_name="New" pre-defined="false" severity="medium"/>
    <template name="d" display_name="" pre-defined="false" severity="medium"/>
  </complianceTemplates>
</SAPolicy>
)";

/** Behind the file's name. */
constexpr const char* LINES[] = {
    ":1:22: a comment is dropped",
    ":2:1: SAPolicy: template_version=\"3.0.1000\" is set",
    ":2:11: SAPolicy: localization_language=\"English\" becomes \"\"",
    ":3:3: SAPolicy: a processing instruction is dropped",
    ":3:13: SAPolicy: text is dropped",
    ":4:24: complianceTemplates: command=\"merge\" becomes \"overwrite\"",
    ":4:40: complianceTemplates: x=\"1\" is dropped",
    ":4:46: complianceTemplates: a comment is dropped",
    ":5:5: template \"a\": pre-defined=\"false\" is set",
    ":5:24: template \"a\": displayName becomes display_name",
    ":5:40: template \"a\": builtin=\"0\" is dropped",
    ":5:52: template \"a\": severity=\"high\" becomes \"medium\"",
    ":6:53: template \"a\": the reference \"Old One\" becomes \"one\"",
    ":6:75: template \"a\": sourceName=\"\" is set",
    ":8:5: complianceTemplates: template \"b\" is dropped: built-in templates are not taken",
    ":9:5: template: severity=\"medium\" is set",
    ":9:15: template: display_name=\"Old\" is dropped",
    ":9:34: template: displayName becomes display_name",
    ":10:5: template \"d\": pre-defined=\"false\" is set",
    ":10:5: template \"d\": severity=\"medium\" is set",
    ":10:24: template \"d\": display_name=\"Lost\" becomes \"\"",
    ":11:5: complianceTemplates: other \"o\" is dropped",
    ":13:3: SAPolicy: industries is dropped",
};
constexpr const char COUNTS[] = "3 renamed, 10 set, 10 dropped.\n";

class ConvertCommand : public CToolTest {
  protected:
    std::string List() const {
        std::string strList;
        for (const char* pLine : LINES) {
            strList += m_strOlder + pLine + '\n';
        }
        return strList;
    }

    /** The document has something of each layout. */
    std::string Warning() const {
        return "dlpctl: warning: " + m_strOlder +
               ": template_version is missing or empty, so the document is read as one of the older layout; add "
               "template_version=\"3.0.1000\" if that is not what it is\n";
    }

    Json Answer(std::vector<std::string> vecArguments) const {
        vecArguments.insert(vecArguments.begin(), "--json");
        return Json::parse(Run(vecArguments).strOut);
    }

    std::string m_strOlder = m_dir.Write("older.xml", OLDER);
};

}  // namespace

TEST_F(ConvertCommand, EveryDifferenceIsTold) {
    const SToolRun run = Run({"convert", m_strOlder, "-o", m_dir.Path("out.xml")});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut, List());
    EXPECT_EQ(run.strErr, Warning() + m_strOlder + " was converted: " + COUNTS);
    EXPECT_EQ(m_dir.Read("out.xml"), CONVERTED);
}

TEST_F(ConvertCommand, DocumentOnStandardOutputIsAlone) {
    const SToolRun run = Run({"convert", m_strOlder});
    EXPECT_EQ(run.strOut, CONVERTED);
    EXPECT_EQ(run.strErr, Warning() + List() + m_strOlder + " was converted: " + COUNTS);
    EXPECT_EQ(Run({"-q", "convert", m_strOlder}).strErr, Warning());
}

TEST_F(ConvertCommand, AForgottenVersionIsWarnedOf) {
    const std::string strRead =
        "dlpctl: warning: -: template_version is missing or empty, so the document is read as one of the older layout";
    const std::string strStart = "<SAPolicy><complianceTemplates><template name='t' display_name='T'/>";
    const std::string strEnd = "</complianceTemplates></SAPolicy>";
    const std::string strForgotten = strRead + " and nothing of it is taken; add template_version=\"3.0.1000\"\n";
    EXPECT_EQ(Run({"convert", "-"}, strStart + strEnd).strErr.find(strForgotten), 0U);
    EXPECT_EQ(Run({"convert", "--check", "-"}, strStart + strEnd).strErr.find(strForgotten), 0U);
    EXPECT_EQ(Run({"convert", "-"}, strStart + "<template displayName='U'/>" + strEnd)
                  .strErr.find(strRead + "; add template_version=\"3.0.1000\" if that is not what it is\n"),
              0U);
    EXPECT_EQ(Run({"convert", "--check", "-"}, "<SAPolicy/>").strErr,
              "- is of the older layout: 0 renamed, 2 set, 0 dropped.\n");
}

TEST_F(ConvertCommand, CheckTellsWhetherItIsNeeded) {
    const SToolRun run = Run({"convert", "--check", m_strOlder});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut, List());
    EXPECT_EQ(run.strErr, Warning() + m_strOlder + " is of the older layout: " + COUNTS);
    const std::string strStandard = m_dir.Write("standard.xml", CONVERTED);
    EXPECT_EQ(Get({"convert", "--check", strStandard}), "");
    EXPECT_EQ(Run({"convert", "--check", "-"}, "<SAPolicy/>").iCode, 1);
    EXPECT_EQ(Run({"convert", "--check", "-"}, "<SAPolicy template_version='x'/>").iCode, 0);
    EXPECT_EQ(Run({"convert", "--check", "-"}, "<SAPolicy template_version=''/>").iCode, 1);
}

TEST_F(ConvertCommand, StandardLayoutIsTakenAsItIs) {
    const std::string strStandard = "\xEF\xBB\xBF<SAPolicy template_version='2'>\r\n</SAPolicy>";
    const SToolRun run = Run({"convert", "-"}, strStandard);
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut, strStandard);
    EXPECT_EQ(run.strErr, "- is of the standard layout and was taken as it is.\n");
}

TEST_F(ConvertCommand, OnlyLostContentIsAFinding) {
    const std::pair<const char*, int> aDocuments[] = {
        {"<SAPolicy x='1'><!--c--><?p?><complianceTemplates><template displayName='n' builtin='2'/>"
         "</complianceTemplates></SAPolicy>",
         0},
        {"<SAPolicy><complianceTemplates><template builtin='1'/></complianceTemplates></SAPolicy>", 1},
        {"<SAPolicy><digitalAssets/></SAPolicy>", 1},
        {"<SAPolicy>x</SAPolicy>", 1},
    };
    for (const auto& [pDocument, iCode] : aDocuments) {
        EXPECT_EQ(Run({"convert", "-"}, pDocument).iCode, iCode) << pDocument;
    }
}

TEST_F(ConvertCommand, VersionIsTheStandardOneWhateverWasReadBefore) {
    CDLPDigitalAssetsParser::SetVersion(L"9");
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    EXPECT_EQ(RunTool({"convert", m_strOlder}, in, out, err), 1);
    EXPECT_EQ(out.str(), CONVERTED);
}

TEST_F(ConvertCommand, LanguageIsThatOfTheCommandLine) {
    const SToolRun run = Run({"--language",
                              "Fran\xc3\xa7"
                              "ais",
                              "convert", "-"},
                             "<SAPolicy localization_language='English'/>");
    EXPECT_NE(run.strOut.find(" localization_language=\"Fran\xc3\xa7"
                              "ais\""),
              std::string::npos)
        << run.strOut;
}

TEST_F(ConvertCommand, ImportOfTheResultIsThatOfTheFile) {
    Import(Documents::Small());
    EXPECT_EQ(RunOn(Url("two.db"), {"store", "load", "-"}, Dump()).iCode, 0);
    const std::string strOlder = DLP_SOURCE_DIR "/examples/older-layout.xml";
    for (const std::string& strFile : {m_strOlder, strOlder}) {
        const std::string strOut = m_dir.Path("out.xml");
        EXPECT_EQ(Run({"convert", strFile, "-o", strOut}).iCode, 1);
        Run({"import", strFile});
        RunOn(Url("two.db"), {"import", strOut});
        EXPECT_EQ(RunOn(Url("two.db"), {"store", "dump"}).strOut, Dump());
        EXPECT_EQ(Get({"fmt", "--check", strOut}), "");
    }
}

TEST_F(ConvertCommand, EveryDifferenceIsToldInJson) {
    const Json answer = Answer({"convert", m_strOlder, "-o", m_dir.Path("out.xml")});
    EXPECT_EQ(answer["verdict"], "findings");
    EXPECT_EQ(answer["layout"], "older");
    EXPECT_EQ(answer["output"], m_dir.Path("out.xml"));
    ASSERT_EQ(answer["changes"].size(), std::size(LINES));
    EXPECT_EQ(answer["changes"][2], Json({{"change", "set"},
                                          {"what", "attribute"},
                                          {"element", "SAPolicy"},
                                          {"template", ""},
                                          {"name", "localization_language"},
                                          {"from", "English"},
                                          {"to", ""},
                                          {"line", 2},
                                          {"column", 11}}));
    EXPECT_EQ(answer["changes"][12], Json({{"change", "renamed"},
                                           {"what", "reference"},
                                           {"element", "buildingBlock"},
                                           {"template", "a"},
                                           {"name", "sourceName"},
                                           {"from", "Old One"},
                                           {"to", "one"},
                                           {"line", 6},
                                           {"column", 53}}));
    EXPECT_EQ(Answer({"convert", "--check", m_strOlder})["changes"], answer["changes"]);
    const Json standard = Answer({"convert", "--check", m_dir.Path("out.xml")});
    EXPECT_EQ(standard, Json({{"format", "dlpctl-convert/1"},
                              {"file", m_dir.Path("out.xml")},
                              {"output", nullptr},
                              {"layout", "standard"},
                              {"verdict", "done"},
                              {"changes", Json::array()},
                              {"omitted", 0}}));
}

TEST_F(ConvertCommand, WhatIsNoPolicyIsRefused) {
    const std::pair<const char*, const char*> aRefused[] = {
        {"<a/>", "-: no policy: the root element is \"a\", not \"SAPolicy\"\n"},
        {"<SAPolicy>",
         "-:1:11: the file is no XML: it ends, and \"<SAPolicy>\" of line 1 is still open; close it with "
         "\"</SAPolicy>\"\n"},
        {"", "-: the file is no XML: it is empty; check that this is the file you meant\n"},
        {"<a>\xff</a>", "-:1:4: the file is not UTF-8 from here on; save it as UTF-8\n"},
    };
    for (const auto& [pDocument, pMessage] : aRefused) {
        const SToolRun run = Run({"convert", "-", "-o", m_dir.Path("never.xml")}, pDocument);
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.strErr, std::string("dlpctl: ") + pMessage);
        EXPECT_FALSE(std::filesystem::exists(m_dir.Path("never.xml")));
    }
    EXPECT_EQ(Answer({"convert", "--check", m_dir.Path()})["message"], m_dir.Path() + ": Is a directory");
    EXPECT_EQ(Answer({"convert", m_strOlder, "-o", "/dev/full"})["verdict"], "output");
}

TEST_F(ConvertCommand, MissingMapIsWarnedOf) {
    std::filesystem::remove(m_dir.Path("home/config/cfg_dlp_da_map.txt"));
    const SToolRun run = Run({"-q", "convert", m_strOlder});
    EXPECT_EQ(run.strErr.find("dlpctl: warning: " + m_dir.Path("home/config/cfg_dlp_da_map.txt") + " is missing: "),
              0U);
    EXPECT_NE(run.strOut.find("sourceName=\"Old One\""), std::string::npos);
}

TEST_F(ConvertCommand, InterruptionLeavesNoFile) {
    Signals::Watch();
    std::raise(SIGTERM);
    const SToolRun run = Run({"convert", m_strOlder, "-o", m_dir.Path("out.xml")});
    EXPECT_EQ(run.iCode, 143);
    EXPECT_EQ(run.strErr, Warning() + "dlpctl: interrupted\n");
    EXPECT_FALSE(std::filesystem::exists(m_dir.Path("out.xml")));
}

TEST_F(ConvertCommand, MillionsOfChangesAreCounted) {
    std::string strOlder = "<SAPolicy>";
    for (int i = 0; i < 100001; ++i) {
        strOlder += "<a/>";
    }
    strOlder += "</SAPolicy>";
    const SToolRun run = Run({"convert", "--check", "-"}, strOlder);
    EXPECT_EQ(run.strErr, "- is of the older layout: 0 renamed, 2 set, 100001 dropped.\n");
    EXPECT_NE(run.strOut.find("\n3 more changes\n"), std::string::npos);
}

TEST_F(ConvertCommand, TagsOfManyAttributesTakeLinearTime) {
    std::string strTemplate = "<template displayName='x'";
    for (int i = 0; i < 200000; ++i) {
        strTemplate += " a" + std::to_string(i) + "=''";
    }
    const SToolRun run = Run({"convert", "--check", "-"},
                             "<SAPolicy><complianceTemplates>" + strTemplate + "/></complianceTemplates></SAPolicy>");
    EXPECT_EQ(run.strErr, "- is of the older layout: 1 renamed, 5 set, 0 dropped.\n");
}
