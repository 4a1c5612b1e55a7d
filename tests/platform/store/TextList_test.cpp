#include "platform/store/TextList.h"

#include <gtest/gtest.h>

namespace {

TEST(TextList, IsOneLinePerText) {
    const struct {
        std::vector<std::string> vecTexts;
        std::string strJoined;
    } CASES[] = {
        {{}, ""},
        {{""}, "\n"},
        {{"", ""}, "\n\n"},
        {{"b", "a", "b"}, "b\na\nb\n"},
        {{"two\nlines", "back\\slash", "\\n"}, "two\\nlines\nback\\\\slash\n\\\\n\n"},
        {{std::string("nul\0", 4)}, std::string("nul\0\n", 5)},
    };
    for (const auto& test : CASES) {
        EXPECT_EQ(test.strJoined, JoinTextList(test.vecTexts));
        EXPECT_EQ(test.vecTexts, SplitTextList(test.strJoined));
    }
}

TEST(TextList, DamagedTextGivesSomeList) {
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), SplitTextList("a\nb"));
    EXPECT_EQ((std::vector<std::string>{"ax", "b"}), SplitTextList("a\\x\nb\\"));
    EXPECT_EQ((std::vector<std::string>{"a\nb"}), SplitTextList("a\\\nb"));
    EXPECT_EQ(std::vector<std::string>(), SplitTextList("\\"));
}

}  // namespace
