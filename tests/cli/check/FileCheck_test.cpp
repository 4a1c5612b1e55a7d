#include "cli/check/FileCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "cli/CommandContext.h"
#include "tests/cli/ToolRun.h"

namespace {

class FileCheck : public CToolTest {
  protected:
    SFileReport Check(const SFileCheck& check, const std::string& strFile) const {
        std::istringstream in;
        std::ostringstream out;
        CCommandContext context(in, out, out);
        context.TakeEmptyStore();
        return CheckFile(context, check, m_dir.Path(strFile));
    }
};

/** @return how many were told, and how many of them with their line */
std::pair<std::size_t, std::size_t> CountTold(const SFileReport& report) {
    const auto iExcerpts =
        std::count_if(report.findings.begin(), report.findings.end(),
                      [](const SDiagnostic& diagnostic) { return !diagnostic.excerpt.strLine.empty(); });
    return {report.findings.size(), static_cast<std::size_t>(iExcerpts)};
}

using Told = std::pair<std::size_t, std::size_t>;

}  // namespace

TEST_F(FileCheck, AFixKeepsAllButMakesTheExcerptsThatAreShown) {
    constexpr std::size_t VALUES = CDiagnostics::MAX_OF_CODE + 5;
    std::string strAssets;
    for (std::size_t i = 0; i < VALUES; ++i) {
        strAssets += Documents::Entity("e" + std::to_string(i), "caseSensitive=\"no\"");
    }
    m_dir.Write("p.xml", Documents::Policy(strAssets, ""));
    SFileCheck check{.choice = {.vecAllow = {ECode::SAME_PATTERN}}, .bAssetsOnly = true};
    EXPECT_EQ(CountTold(Check(check, "p.xml")), Told(CDiagnostics::MAX_OF_CODE, CDiagnostics::MAX_SHOWN));
    check.choice.bAll = true;
    EXPECT_EQ(CountTold(Check(check, "p.xml")), Told(VALUES, VALUES));
    check.choice.bAll = false;
    check.bFix = check.bDryRun = true;
    EXPECT_EQ(CountTold(Check(check, "p.xml")), Told(VALUES, CDiagnostics::MAX_SHOWN));
    check.bDryRun = false;
    EXPECT_EQ(CountTold(Check(check, "p.xml")), Told(VALUES, CDiagnostics::MAX_SHOWN));
    EXPECT_EQ(CountTold(Check(check, "p.xml")), Told(0, 0));  // nothing is left
}

TEST_F(FileCheck, AFixKeepsNoMoreOfWhatItCannotReplace) {
    std::string strAttributes;
    for (std::size_t i = 0; i < CDiagnostics::MAX_OF_CODE + 5; ++i) {
        strAttributes += " a" + std::to_string(i) + "=\"1\"";
    }
    m_dir.Write("p.xml", Documents::Policy(Documents::Entity("e", strAttributes + " caseSensitive=\"no\""), ""));
    SFileCheck check{.choice = {}, .bAssetsOnly = true, .bFix = true};
    const SFileReport report = Check(check, "p.xml");
    EXPECT_EQ(CountTold(report), Told(CDiagnostics::MAX_OF_CODE + 1, CDiagnostics::MAX_SHOWN));
    EXPECT_EQ(report.CountOmitted(), 5U);
    EXPECT_EQ(m_dir.Read("p.xml").find("\"no\""), std::string::npos);
}
