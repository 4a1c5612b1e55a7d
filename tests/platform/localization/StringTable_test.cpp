#include "platform/localization/StringTable.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/common/TextConversion.h"
#include "platform/system/InstallPath.h"
#include "tests/support/TempDir.h"

namespace {

/** An installation directory with these texts. */
class CTexts {
  public:
    explicit CTexts(const std::string& strContent) {
        m_folder.Write("config/strings.txt", strContent);
        SYS::SetInstallPath(OS::WideText(m_folder.Path()));
    }

  private:
    CTempDir m_folder;
};

}  // namespace

TEST(StringTable, TextComesFromTheFile) {
    const CTexts texts("1009\tEnglish\n7\tseven\tand more\n8\t\n");
    EXPECT_EQ(SYS::LoadStringW(SYS::STRING_LANGUAGE), L"English");
    EXPECT_EQ(SYS::LoadStringW(7), L"seven\tand more");
    EXPECT_EQ(SYS::LoadStringW(8), L"");
}

TEST(StringTable, NumberWithoutTextIsEmpty) {
    const CTexts texts("7\tseven\n");
    EXPECT_EQ(SYS::LoadStringW(SYS::STRING_LANGUAGE), L"");
    EXPECT_EQ(SYS::LoadStringW(-1), L"");
}

TEST(StringTable, MissingFileHasNoTexts) {
    const CTempDir folder;
    SYS::SetInstallPath(OS::WideText(folder.Path()));
    EXPECT_EQ(SYS::LoadStringW(7), L"");
}

TEST(StringTable, FileIsReadAsItsWritersLeaveIt) {
    const CTexts texts(
        "\xEF\xBB\xBF"
        "1\t\xC3\xA9t\xC3\xA9 \r\n#2\tcomment\n\n\tno number\n3x\tno number\n 4\tno number\n"
        "5 no tab\n6\t\xFF\n7\tfirst\n7\tlast");
    EXPECT_EQ(SYS::LoadStringW(1), L"\u00E9t\u00E9 ");
    for (const int iNumber : {0, 2, 3, 4, 5, 6}) {
        EXPECT_EQ(SYS::LoadStringW(iNumber), L"") << iNumber;
    }
    EXPECT_EQ(SYS::LoadStringW(7), L"last");
}

TEST(StringTable, SetTextWinsAlsoWhenEmpty) {
    const CTexts texts("1009\tEnglish\n");
    SYS::SetStringW(SYS::STRING_LANGUAGE, L"Deutsch");
    EXPECT_EQ(SYS::LoadStringW(SYS::STRING_LANGUAGE), L"Deutsch");
    SYS::SetStringW(SYS::STRING_LANGUAGE, L"");
    EXPECT_EQ(SYS::LoadStringW(SYS::STRING_LANGUAGE), L"");
}

TEST(StringTable, FileIsReadAgainWhenTheInstallationDirectoryChanged) {
    const CTexts first("1\tone\n2\ttwo\n");
    EXPECT_EQ(SYS::LoadStringW(1), L"one");
    const CTexts second("1\tuno\n");
    EXPECT_EQ(SYS::LoadStringW(1), L"uno");
    EXPECT_EQ(SYS::LoadStringW(2), L"");
}

TEST(StringTable, FileIsReadOnceForOneDirectory) {
    const CTempDir folder;
    folder.Write("config/strings.txt", "1\tone\n");
    SYS::SetInstallPath(OS::WideText(folder.Path()));
    EXPECT_EQ(SYS::LoadStringW(1), L"one");
    folder.Write("config/strings.txt", "1\tuno\n");
    EXPECT_EQ(SYS::LoadStringW(1), L"one");
}

TEST(StringTable, ThreadsReadAndSetAtOnce) {
    const CTexts texts("1\tone\n");
    std::atomic<int> iWrong = 0;
    std::vector<std::thread> vecThreads;
    for (int iThread = 0; iThread < 4; ++iThread) {
        vecThreads.emplace_back([iThread, &iWrong] {
            for (int i = 0; i < 200; ++i) {
                SYS::SetStringW(100 + iThread, L"own");
                iWrong += SYS::LoadStringW(1) == L"one" && SYS::LoadStringW(100 + iThread) == L"own" ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : vecThreads) {
        thread.join();
    }
    EXPECT_EQ(iWrong, 0);
}
