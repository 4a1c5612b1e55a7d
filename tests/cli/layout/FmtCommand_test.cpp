#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <sstream>

#include <nlohmann/json.hpp>

#include <sys/stat.h>

#include "cli/Signals.h"
#include "tests/cli/ToolRun.h"

namespace {

using Json = nlohmann::json;

constexpr const char OTHER[] = "<a>\r\n<b x='1'></b></a>";
constexpr const char FORM[] = "<a>\n  <b x=\"1\"/>\n</a>\n";

class FmtCommand : public CToolTest {
  protected:
    /** Runs with --json. @return what each line says */
    std::vector<Json> Answers(std::vector<std::string> vecArguments) const {
        vecArguments.insert(vecArguments.begin(), "--json");
        std::vector<Json> vecAnswers;
        std::istringstream out(Run(vecArguments).strOut);
        for (std::string strLine; std::getline(out, strLine);) {
            vecAnswers.push_back(Json::parse(strLine));
        }
        return vecAnswers;
    }

    std::string m_strOther = m_dir.Write("other.xml", OTHER);
    std::string m_strForm = m_dir.Write("form.xml", FORM);
};

}  // namespace

TEST_F(FmtCommand, DocumentGoesToStandardOutputOrAFile) {
    EXPECT_EQ(Get({"fmt", m_strOther}), FORM);
    EXPECT_EQ(Run({"fmt", "-"}, OTHER).strOut, FORM);
    const SToolRun run = Run({"fmt", m_strOther, "-o", m_dir.Path("out.xml")});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.strOut, "");
    EXPECT_EQ(run.strErr, m_strOther + ": written to " + m_dir.Path("out.xml") + '\n');
    EXPECT_EQ(m_dir.Read("out.xml"), FORM);
    EXPECT_EQ(m_dir.Read("other.xml"), OTHER);
}

TEST_F(FmtCommand, CheckNamesFilesOfAnotherFormAndWhereItShows) {
    const SToolRun run = Run({"fmt", "--check", m_strForm, m_strOther});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.strOut, m_strOther + ":1:4: of another form; dlpctl fmt --write changes it\n");
    EXPECT_EQ(run.strErr, "");
    EXPECT_EQ(Get({"fmt", "--check", m_strForm}), "");
    EXPECT_EQ(m_dir.Read("other.xml"), OTHER);
    EXPECT_EQ(Answers({"fmt", "--check", m_strForm, m_strOther}), (std::vector<Json>{{{"format", "dlpctl-fmt/1"},
                                                                                      {"file", m_strForm},
                                                                                      {"verdict", "done"},
                                                                                      {"changed", false},
                                                                                      {"line", nullptr},
                                                                                      {"column", nullptr}},
                                                                                     {{"format", "dlpctl-fmt/1"},
                                                                                      {"file", m_strOther},
                                                                                      {"verdict", "findings"},
                                                                                      {"changed", true},
                                                                                      {"line", 1},
                                                                                      {"column", 4}}}));
}

TEST_F(FmtCommand, CheckSeesAMissingLineEnd) {
    EXPECT_EQ(Run({"fmt", "--check", "-"}, "<a/>").strOut, "-:1:5: of another form; dlpctl fmt --write changes it\n");
    EXPECT_EQ(Run({"fmt", "--check", "-"}, "<a/>\n").strOut, "");
    EXPECT_EQ(Run({"fmt", "--check", "-"}, "\xEF\xBB\xBF<a/>\n").iCode, 1);
}

TEST_F(FmtCommand, WriteReplacesOnlyFilesOfAnotherForm) {
    ::chmod(m_strOther.c_str(), 0640);
    const auto time = std::filesystem::last_write_time(m_strForm) - std::chrono::hours(1);
    std::filesystem::last_write_time(m_strForm, time);
    EXPECT_EQ(Get({"fmt", "--write", m_strForm, m_strOther}), m_strOther + ": written anew\n");
    EXPECT_EQ(m_dir.Read("other.xml"), FORM);
    EXPECT_EQ(std::filesystem::last_write_time(m_strForm), time);
    EXPECT_EQ(static_cast<unsigned>(std::filesystem::status(m_strOther).permissions()), 0640U);
    EXPECT_EQ(Get({"fmt", "--write", m_strOther}), "");
}

TEST_F(FmtCommand, FoldersStandForTheFilesBelow) {
    m_dir.Write("all/b/two.XML", OTHER);
    m_dir.Write("all/one.xml", OTHER);
    m_dir.Write("all/other.txt", OTHER);
    const std::string strFolder = m_dir.Path("all");
    EXPECT_EQ(Get({"fmt", "--write", strFolder}),
              strFolder + "/b/two.XML: written anew\n" + strFolder + "/one.xml: written anew\n");
    EXPECT_EQ(m_dir.Read("all/other.txt"), OTHER);
    std::filesystem::create_directory(m_dir.Path("none"));
    const SToolRun run = Run({"fmt", "--check", m_dir.Path("none")});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.strErr, "dlpctl: " + m_dir.Path("none") + ": no .xml file is below it\n");
}

TEST_F(FmtCommand, VersionOfTheFileStaysAndNoneIsAdded) {
    for (const char* pRoot : {"<SAPolicy/>\n", "<SAPolicy template_version=\"1.0\"/>\n",
                              "<SAPolicy template_version=\"\" localization_language=\"English\"/>\n"}) {
        Import(Documents::Small());
        EXPECT_EQ(Run({"fmt", "-"}, pRoot).strOut, pRoot);
    }
}

TEST_F(FmtCommand, WhatIsNoDocumentIsToldWithItsPlaceAndStays) {
    struct SBad {
        const char* pName;
        std::string strBytes;
        const char* pError;
        int iLine;
    };
    std::string strDeep;
    for (int i = 0; i < 257; ++i) {
        strDeep += "<a>";
    }
    const SBad aBad[] = {
        {"cut.xml", "<a>\n<b>",
         ":2:4: the file is no XML: it ends, and \"<b>\" of line 2 is still open; close it with \"</b>\"", 2},
        {"empty.xml", "", ": the file is no XML: it is empty; check that this is the file you meant", 0},
        {"text.xml", "text", ": the file is no XML: there is no \"<\" in it; check that this is the file you meant", 0},
        {"bytes.xml", "<a>\xff</a>", ":1:4: the file is not UTF-8 from here on; save it as UTF-8", 1},
        {"doctype.xml", "<!DOCTYPE a><a/>", ":1:1: the file is no XML: a DOCTYPE is not allowed; remove it", 1},
        {"deep.xml", strDeep,
         ":1:769: the file is no XML: \"<a>\" is nested deeper than 256 elements: \"<a>\" of line 1 is still open; end "
         "some of them before it",
         1},
    };
    for (const SBad& bad : aBad) {
        const std::string strFile = m_dir.Write(bad.pName, bad.strBytes);
        for (const char* pOption : {"--check", "--write"}) {
            m_dir.Write("other.xml", OTHER);
            const SToolRun run = Run({"fmt", pOption, strFile, m_strOther});
            EXPECT_EQ(run.iCode, 2);
            EXPECT_EQ(run.strErr, "dlpctl: " + strFile + bad.pError + '\n');
            EXPECT_NE(run.strOut.find(m_strOther), std::string::npos);
            EXPECT_EQ(m_dir.Read(bad.pName), bad.strBytes);
        }
        EXPECT_EQ(Run({"fmt", strFile, "-o", m_dir.Path("never.xml")}).iCode, 2);
        EXPECT_FALSE(std::filesystem::exists(m_dir.Path("never.xml")));
        const std::vector<Json> vecAnswers = Answers({"fmt", "--check", strFile});
        ASSERT_EQ(vecAnswers.size(), 1U);
        EXPECT_EQ(vecAnswers[0]["verdict"], "invalid");
        EXPECT_EQ(vecAnswers[0]["line"], bad.iLine == 0 ? Json() : Json(bad.iLine));
    }
    EXPECT_EQ(Run({"fmt", m_dir.Path("missing")}).strErr,
              "dlpctl: " + m_dir.Path("missing") + ": No such file or directory\n");
}

TEST_F(FmtCommand, WhatCannotBeWrittenStays) {
    EXPECT_EQ(Run({"fmt", "--write", "/dev/null"}).iCode, 3);
    EXPECT_EQ(Run({"fmt", "--write", "-"}, OTHER).strErr, "dlpctl: --write needs a file that it can write\n");
    EXPECT_EQ(Run({"fmt", m_strOther, "-o", "/dev/full"}).iCode, 4);
    EXPECT_EQ(Run({"fmt", m_strOther, "-o", m_dir.Path("none/out")}).iCode, 4);
    EXPECT_EQ(Answers({"fmt", m_strOther, "-o", "/dev/full"}).at(0)["verdict"], "output");
    EXPECT_EQ(CProgram::Shell("\"$DLPCTL\" fmt '" + m_strOther + "' >/dev/full").iCode, 4);
}

TEST_F(FmtCommand, ClosedPipeEndsQuietly) {
    std::string strLong = "<a>";
    for (int i = 0; i < 100000; ++i) {
        strLong += "<b/>";
    }
    const std::string strFile = m_dir.Write("long.xml", strLong + "</a>");
    const SToolRun run = CProgram::Shell("{ \"$DLPCTL\" fmt '" + strFile + "'; echo $? >&2; } | head -n 1");
    EXPECT_EQ(run.strOut, "<a>\n");
    EXPECT_EQ(run.strErr, "4\n");
}

TEST_F(FmtCommand, InterruptionLeavesTheFile) {
    Signals::Watch();
    std::raise(SIGINT);
    const SToolRun run = Run({"fmt", "--write", m_strOther});
    EXPECT_EQ(run.iCode, 130);
    EXPECT_EQ(run.strErr, "dlpctl: interrupted\n");
    EXPECT_EQ(m_dir.Read("other.xml"), OTHER);
}
