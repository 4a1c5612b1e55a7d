#include "templates/PolicyFile.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/ExceptionText.h"
#include "tests/support/TempDir.h"

namespace {

std::string OpenFailure(const std::string& strPath) {
    try {
        ReadPolicyFile(strPath);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "nothing thrown";
}

}  // namespace

TEST(PolicyFile, TextBeginsAtTheFirstMarkup) {
    const CTempDir folder;
    const SPolicyFile file = ReadPolicyFile(folder.Write("a.xml", "\xEF\xBB\xBF\xFF\r\n<a>\r\n<b/></a>\n"));
    EXPECT_EQ(file.strBytes, "\xEF\xBB\xBF\xFF\r\n<a>\r\n<b/></a>\n");
    EXPECT_EQ(file.iStart, 6U);
    EXPECT_EQ(file.Text(), "<a>\r\n<b/></a>\n");
}

TEST(PolicyFile, FileWithoutMarkupHasNoText) {
    const CTempDir folder;
    for (const std::string strContent : {"", "text", "\xFF"}) {
        const SPolicyFile file = ReadPolicyFile(folder.Write("a.xml", strContent));
        EXPECT_EQ(file.iStart, strContent.size());
        EXPECT_EQ(file.Text(), "");
    }
}

TEST(PolicyFile, ZeroBytesArePartOfTheText) {
    const CTempDir folder;
    const std::string strContent("\0<a\0/>", 6);
    EXPECT_EQ(ReadPolicyFile(folder.Write("a.xml", strContent)).Text(), std::string_view("<a\0/>", 5));
}

TEST(PolicyFile, FileThatCannotBeReadIsAnError) {
    const CTempDir folder;
    for (const std::string& strPath : {std::string(), folder.Path("none"), folder.Path()}) {
        EXPECT_EQ(OpenFailure(strPath), "Open DLP template policy file failed!");
    }
}

TEST(PolicyFile, TextThatIsNotUtf8IsAnErrorWithItsOffset) {
    const CTempDir folder;
    const std::string strPath = folder.Write("a.xml", "12345<a>\xC3</a>");
    EXPECT_EQ(ExceptionText([&] { ReadPolicyFile(strPath); }), "the text is not UTF-8 at byte offset 3");
}
