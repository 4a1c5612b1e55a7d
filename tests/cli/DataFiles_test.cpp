#include <gtest/gtest.h>

#include <filesystem>

#include "tests/cli/ToolRun.h"

// The library goes on without the lists, names and texts of the installation directory when it cannot read them; a
// command that would give less because of that fails instead. A link to itself is there and cannot be opened by anyone.

namespace {

constexpr const char OLDER[] =
    R"(<SAPolicy><complianceTemplates><template name="t" displayName="T"><matchRule>)"
    R"(<buildingBlock sourceType="ENTITY" entityHits="1" sourceName="Old One"/></matchRule></template>)"
    R"(</complianceTemplates></SAPolicy>)";

class DataFiles : public CToolTest {
  protected:
    void MakeUnreadable(const std::string& strFile) const {
        const std::string strPath = m_dir.Path("home/config/" + strFile);
        std::filesystem::remove(strPath);
        std::filesystem::create_symlink(strFile, strPath);
    }

    std::string Refusal(const std::string& strFile) const {
        return "cannot read " + m_dir.Path("home/config/" + strFile) + ": Too many levels of symbolic links\n";
    }
};

}  // namespace

TEST_F(DataFiles, AnExportWithoutTheListsThatAreThereIsRefused) {
    Import(Documents::Small());
    MakeUnreadable("PredefinedDLPPolicy.xml");
    const SToolRun run = Run({"-q", "export", "--all", "-o", m_dir.Path("out")});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.strErr, "dlpctl: " + Refusal("PredefinedDLPPolicy.xml"));
    EXPECT_EQ(m_dir.Read("out"), "");
}

TEST_F(DataFiles, AnImportWithoutTheNamesThatAreThereIsRefused) {
    Import(Documents::Small());
    const std::string strDump = Dump();
    MakeUnreadable("cfg_dlp_da_map.txt");
    const SToolRun run = Run({"-q", "import", "-"}, OLDER);
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(
        run.strErr,
        "dlpctl: -: cannot read config/cfg_dlp_da_map.txt: Too many levels of symbolic links; nothing was written\n");
    EXPECT_EQ(Dump(), strDump);
}

TEST_F(DataFiles, WhatIsReadOfTheOlderLayoutWithoutThemIsRefused) {
    MakeUnreadable("cfg_dlp_da_map.txt");
    const std::string strFile = m_dir.Write("older.xml", OLDER);
    m_dir.Write("out.xml", "former");
    const std::vector<std::string> aCommands[] = {{"convert", strFile, "-o", m_dir.Path("out.xml")},
                                                  {"convert", "--check", strFile},
                                                  {"diff", strFile, "memory:"},
                                                  {"refs", strFile},
                                                  {"check", strFile}};
    for (const std::vector<std::string>& vecCommand : aCommands) {
        const SToolRun run = Run(vecCommand);
        EXPECT_EQ(run.iCode, 2) << vecCommand.front();
        EXPECT_NE(run.strErr.find("cannot read config/cfg_dlp_da_map.txt: Too many levels of symbolic links\n"),
                  std::string::npos)
            << vecCommand.front() << ": " << run.strErr;
    }
    EXPECT_EQ(m_dir.Read("out.xml"), "former");
}

TEST_F(DataFiles, AfterTheRefusalTheyAreReadAgain) {
    Import(Documents::Small());
    MakeUnreadable("cfg_dlp_da_map.txt");
    EXPECT_EQ(Run({"-q", "import", "-"}, OLDER).iCode, 2);
    std::filesystem::remove(m_dir.Path("home/config/cfg_dlp_da_map.txt"));
    m_dir.Write("home/config/cfg_dlp_da_map.txt", "Old One\tone\n");
    EXPECT_EQ(Run({"-q", "import", "-"}, OLDER).iCode, 0);
}

TEST_F(DataFiles, MissingOnesAreWarnedOfAndDoneWithout) {
    Import(Documents::Small());
    std::filesystem::remove(m_dir.Path("home/config/PredefinedDLPPolicy.xml"));
    EXPECT_EQ(Run({"export", "--all"}).iCode, 0);
}
