#include "cli/check/FixedText.h"

#include <gtest/gtest.h>

namespace {

CFindings MakeFindings(const std::vector<SFix>& vecFixes) {
    CFindings findings;
    for (const SFix& fix : vecFixes) {
        findings.Add({.eCode = ECode::OTHER_SPELLING,
                      .eSeverity = ESeverity::NOTE,
                      .strMessage = {},
                      .strAdvice = {},
                      .iOffset = fix.iOffset,
                      .place = {},
                      .excerpt = {},
                      .related = {},
                      .fix = fix});
    }
    return findings;
}

}  // namespace

TEST(FixedText, PlacesFollowWhatWasReplaced) {
    const CFixedText fixed("a TRUE b 0 c", MakeFindings({{2, 4, "no"}, {9, 1, "false"}}));
    EXPECT_EQ(fixed.GetText(), "a no b false c");
    const std::pair<std::size_t, std::size_t> aOffsets[] = {{0, 0}, {2, 2}, {3, 3},   {5, 4},   {6, 4},
                                                            {7, 5}, {9, 7}, {10, 12}, {11, 13}, {12, 14}};
    for (const auto& [iBefore, iNow] : aOffsets) {
        EXPECT_EQ(fixed.Find(iBefore), iNow) << iBefore;
    }
}

TEST(FixedText, WithoutReplacementsNothingMoves) {
    const CFixedText fixed("abc", CFindings());
    EXPECT_EQ(fixed.GetText(), "abc");
    EXPECT_EQ(fixed.Find(3), 3U);
}
