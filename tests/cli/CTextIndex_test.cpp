#include "cli/CTextIndex.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/TextsOfOneHash.h"

TEST(TextIndex, TextsOfOneHashAreFoundAfterAFewLooks) {
    const std::vector<std::string> vecTexts = MakeTextsOfOneHash(10000);
    CTextIndex index;
    std::size_t iLooks = 0;
    const auto fnFind = [&](const std::string& strText) -> CTextIndex::Number& {
        return index.Find(strText, [&](CTextIndex::Number i) {
            ++iLooks;
            return vecTexts[i] == strText;
        });
    };
    for (CTextIndex::Number i = 0; i < vecTexts.size(); ++i) {
        CTextIndex::Number& iNumber = fnFind(vecTexts[i]);
        ASSERT_EQ(iNumber, CTextIndex::NONE);
        iNumber = i;
        index.NoteAdded([&](CTextIndex::Number iAdded) { return std::string_view(vecTexts[iAdded]); });
    }
    for (CTextIndex::Number i = 0; i < vecTexts.size(); ++i) {
        ASSERT_EQ(fnFind(vecTexts[i]), i);
    }
    EXPECT_LT(iLooks, 20 * vecTexts.size());  // of one hash: half of their number for each
}
