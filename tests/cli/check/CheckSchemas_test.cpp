#include <gtest/gtest.h>

#include "tests/cli/ToolRun.h"
#include "tests/support/JsonSchema.h"

namespace {

class CheckSchemas : public CToolTest {
  protected:
    CheckSchemas() {
        m_dir.Write("policy.xml", Documents::Small());
        m_dir.Write("assets.xml", Documents::Small());
        m_dir.Write("policies/one.xml", Documents::Small());
    }
};

}  // namespace

TEST_F(CheckSchemas, EveryAnswerInJsonFollowsItsSchema) {
    using namespace Documents;
    const std::string strFile = m_dir.Write("p.xml", Policy(Entity("e", "caseSensitive=\"yes\""), ""));
    const std::vector<std::string> aRuns[] = {
        {"check", m_dir.Path("policy.xml")},
        {"check", m_dir.Write("unknown.xml", Policy("", Template("t", "e", "d")))},
        {"check", m_dir.Write("bad.xml", "<a>"), m_dir.Path("none"), m_dir.Path("policies")},
        {"check", m_dir.Write("twice.xml", Policy(Entity("e") + Entity("e"), ""))},
        {"check", m_dir.Write("older.xml", "<SAPolicy/>")},
        {"check", "--fix", strFile},
        {"check"},
        {"check", strFile, "--format", "junit"},
        {"--store", "none:", "check", strFile},
    };
    for (std::vector<std::string> vecArguments : aRuns) {
        vecArguments.insert(vecArguments.begin(), "--json");
        EXPECT_EQ(CheckAnswer("check", Run(vecArguments).strOut), "") << ::testing::PrintToString(vecArguments);
    }
    for (const std::vector<std::string>& vecArguments :
         {std::vector<std::string>{"--json", "explain"}, {"--json", "explain", "DLP001"}, {"--json", "explain", "x"}}) {
        EXPECT_EQ(CheckAnswer("explain", Run(vecArguments).strOut), "");
    }
}
