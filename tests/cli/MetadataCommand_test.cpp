#include <gtest/gtest.h>

#include "tests/cli/ToolRun.h"

namespace {
using MetadataCommand = CToolTest;
}

TEST_F(MetadataCommand, ListsAreShownAsPlainText) {
    EXPECT_EQ(Get({"metadata"}),
              "Validators\n"
              "  a&b   A < B\n"
              "  luhn  Luhn\n"
              "\n"
              "Expression types\n"
              "  Generic  Generic\n"
              "\n"
              "Keyword conditions\n"
              "  All  All\n"
              "\n"
              "Industries\n"
              "  finance  Finance\n"
              "\n"
              "Regions\n"
              "  eu  Europe\n");
}

TEST_F(MetadataCommand, JsonHoldsTheFiveLists) {
    EXPECT_EQ(Get({"--json", "metadata"}),
              R"({"format":"dlpctl-metadata/1","verdict":"done",)"
              R"("validators":[{"name":"a&b","display_name":"A < B"},{"name":"luhn","display_name":"Luhn"}],)"
              R"("expression_types":[{"name":"Generic","display_name":"Generic"}],)"
              R"("keyword_conditions":[{"name":"All","display_name":"All"}],)"
              R"("industries":[{"name":"finance","display_name":"Finance"}],)"
              R"("regions":[{"name":"eu","display_name":"Europe"}]})"
              "\n");
}

TEST_F(MetadataCommand, AMissingFileIsAMatterOfConfiguration) {
    m_dir.Write("none/readme", "");
    const SToolRun run = Run({"--home", m_dir.Path("none"), "metadata"});
    EXPECT_EQ(run.iCode, 3);
    EXPECT_EQ(run.strErr, "dlpctl: " + m_dir.Path("none/config/PredefinedDLPPolicy.xml") +
                              " is missing; --home DIR or $DLP_INSTALL_PATH sets the installation directory\n");
}

TEST_F(MetadataCommand, AFileThatIsNoXmlIsSaidToBeOne) {
    m_dir.Write("bad/config/PredefinedDLPPolicy.xml", "<SAPolicy>");
    const SToolRun run = Run({"--home", m_dir.Path("bad"), "metadata"});
    EXPECT_EQ(run.iCode, 3);
    EXPECT_EQ(run.strOut, "");
    EXPECT_NE(run.strErr.find("PredefinedDLPPolicy.xml"), std::string::npos) << run.strErr;
}

TEST_F(MetadataCommand, NeedsNoStore) {
    EXPECT_EQ(RunOn("sqlite:/dev/null/store.db", {"metadata"}).iCode, 0);
}
