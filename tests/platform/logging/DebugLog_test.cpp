#include "platform/logging/DebugLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <ios>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/support/LogRecorder.h"
#include "tests/support/MisleadingCharacters.h"

static constexpr const char* LOG_SOURCE = ".\\DLPTemplateMgr.cpp";

namespace {

std::wstring LastMessage(const CLogRecorder& log) {
    return log.Records().back().strMessage;
}

}  // namespace

TEST(DebugLog, RecordCarriesLevelSourceLineAndMessage) {
    const CLogRecorder log;
    const int iLine = __LINE__ + 1;
    DLP_LOG(DBG::LEVEL_INFO, L"srcName = %s", L"a");
    ASSERT_EQ(log.Records().size(), 1U);
    const DBG::CLogRecord record = log.Records().front();
    EXPECT_EQ(record.iLevel, 0x102);
    EXPECT_EQ(record.strSource, ".\\DLPTemplateMgr.cpp");
    EXPECT_EQ(record.iLine, iLine);
    EXPECT_EQ(record.strMessage, L"srcName = a");
}

TEST(DebugLog, LevelsHaveTheirNumbers) {
    EXPECT_EQ(DBG::LEVEL_INFO, 258);
    EXPECT_EQ(DBG::LEVEL_ENTER, 272);
    EXPECT_EQ(DBG::LEVEL_LEAVE, 273);
    EXPECT_EQ(DBG::LEVEL_CONTENT, 4097);
    EXPECT_EQ(DBG::LEVEL_ERROR, 4099);
    EXPECT_EQ(DBG::LEVEL_FAILURE, 4100);
}

TEST(DebugLog, TextArgumentsOfEveryKind) {
    const CLogRecorder log;
    const std::wstring strText = L"text";
    const OS::x_wstring strOther = L"other";
    wchar_t aText[] = L"array";
    wchar_t* const pText = aText;
    DLP_LOG(DBG::LEVEL_INFO, L"%s %s %s %s %s", strText, strOther, strText.c_str(), aText, pText);
    EXPECT_EQ(LastMessage(log), L"text other text array array");
}

TEST(DebugLog, TextIsKeptWholeAndAsItIs) {
    const CLogRecorder log;
    const std::wstring strLong(3000000, L'\u4E2D');
    DLP_LOG(DBG::LEVEL_INFO, L"<%s>", strLong);
    EXPECT_TRUE(LastMessage(log) == L"<" + strLong + L">");

    const std::wstring strOdd = std::wstring(L"%s\0\n{}", 6) + static_cast<wchar_t>(0xD800);
    DLP_LOG(DBG::LEVEL_INFO, L"<%s>", strOdd);
    EXPECT_EQ(LastMessage(log), L"<" + strOdd + L">");
}

TEST(DebugLog, NullTextIsWrittenOut) {
    const CLogRecorder log;
    DLP_LOG(DBG::LEVEL_INFO, L"<%s>", static_cast<const wchar_t*>(nullptr));
    EXPECT_EQ(LastMessage(log), L"<(null)>");
    DLP_LOG(DBG::LEVEL_INFO, "<%s>", static_cast<const wchar_t*>(nullptr));
    EXPECT_EQ(LastMessage(log), L"<(null)>");
}

TEST(DebugLog, NumbersAndTruthValues) {
    const CLogRecorder log;
    DLP_LOG(DBG::LEVEL_INFO, L"%d %d %d %d", -2147483647 - 1, 2147483647, true, false);
    EXPECT_EQ(LastMessage(log), L"-2147483648 2147483647 1 0");
}

TEST(DebugLog, PointersAreHexadecimal) {
    const CLogRecorder log;
    int iThing = 0;
    DLP_LOG(DBG::LEVEL_INFO, L"return %p", &iThing);
    EXPECT_EQ(LastMessage(log).substr(0, 9), L"return 0x");
    DLP_LOG(DBG::LEVEL_INFO, L"return %p", static_cast<int*>(nullptr));
    EXPECT_EQ(LastMessage(log).substr(0, 7), L"return ");
}

TEST(DebugLog, PercentSignsAndRunsOfBlanksStay) {
    const CLogRecorder log;
    DLP_LOG(DBG::LEVEL_INFO, L"100%%                    done");
    EXPECT_EQ(LastMessage(log), L"100%                    done");
}

TEST(DebugLog, FormatThatDoesNotFitItsArgumentsIsWrittenAsItIs) {
    const CLogRecorder log;
    DLP_LOG(DBG::LEVEL_INFO, L"%d of %d", 1);
    DLP_LOG(DBG::LEVEL_INFO, L"%d", L"text");
    DLP_LOG(DBG::LEVEL_INFO, L"%");
    EXPECT_EQ(log.Messages(DBG::LEVEL_INFO), (std::vector<std::string>{"%d of %d", "%d", "%"}));
}

TEST(DebugLog, NarrowEntryReadsTheBytesUpToTheFirstZero) {
    const CLogRecorder log;
    const std::wstring strText = L"Abc";
    const std::wstring strOther = L"\u4E2Db";
    const std::wstring strPadded = L"\U00104241z";
    DLP_LOG(DBG::LEVEL_ERROR, "Fail to find tag %s, skip entity: %s", L"./regularExpression", strText);
    DLP_LOG(DBG::LEVEL_ERROR, "%s|%s|%s|%d", strOther.c_str(), strPadded, std::wstring(), 7);
    EXPECT_EQ(log.Records()[0].strMessage, L"Fail to find tag ., skip entity: A");
    EXPECT_EQ(log.Records()[1].strMessage, L"-N|AB\x10||7");
}

TEST(DebugLog, NarrowEntryTakesEachByteOfTheFormatAsACharacter) {
    const CLogRecorder log;
    DLP_LOG(DBG::LEVEL_ERROR, "\xC3\xA9");
    EXPECT_EQ(LastMessage(log), L"\u00C3\u00A9");
}

TEST(DebugLog, WithoutAListenerNoArgumentIsEvaluated) {
    int iEvaluated = 0;
    const auto fnArgument = [&iEvaluated] { return ++iEvaluated; };
    DBG::SetLogSink({});
    DLP_LOG(DBG::LEVEL_INFO, L"%d", fnArgument());
    EXPECT_EQ(iEvaluated, 0);

    std::vector<int> vecLevels;
    DBG::SetLogSink([&](const DBG::CLogRecord& record) { vecLevels.push_back(record.iLevel); });
    DBG::SetLogFilter([](int iLevel) { return iLevel != DBG::LEVEL_ENTER; });
    DLP_LOG(DBG::LEVEL_ENTER, L"%d", fnArgument());
    EXPECT_EQ(iEvaluated, 0);
    DLP_LOG(DBG::LEVEL_LEAVE, L"%d", fnArgument());
    EXPECT_EQ(iEvaluated, 1);
    EXPECT_EQ(vecLevels, std::vector<int>{DBG::LEVEL_LEAVE});
}

TEST(DebugLog, DirectCallHeedsTheFilterToo) {
    const CLogRecorder log;
    DBG::SetLogFilter([](int iLevel) { return iLevel == DBG::LEVEL_FAILURE; });
    DBG::DebugLogEx(DBG::MODULE, DBG::LEVEL_INFO, LOG_SOURCE, 1, L"not listened to");
    DBG::DebugLogEx(DBG::MODULE, DBG::LEVEL_FAILURE, LOG_SOURCE, 1, L"listened to");
    EXPECT_EQ(log.Lines(), std::vector<std::string>{"0x1004 DLPTemplateMgr.cpp listened to"});
}

TEST(DebugLog, IsListenedTellsOfSinkAndFilter) {
    EXPECT_FALSE(DBG::IsListened(DBG::LEVEL_INFO));
    DBG::SetLogSink([](const DBG::CLogRecord&) {});
    EXPECT_TRUE(DBG::IsListened(DBG::LEVEL_INFO));
    DBG::SetLogFilter([](int iLevel) { return iLevel == DBG::LEVEL_ERROR; });
    EXPECT_FALSE(DBG::IsListened(DBG::LEVEL_INFO));
    EXPECT_TRUE(DBG::IsListened(DBG::LEVEL_ERROR));
    DBG::SetLogFilter({});
    EXPECT_TRUE(DBG::IsListened(DBG::LEVEL_INFO));
    DBG::SetLogSink({});
    EXPECT_FALSE(DBG::IsListened(DBG::LEVEL_INFO));
}

TEST(DebugLog, WhatSinkOrFilterThrowsIsDropped) {
    DBG::SetLogSink([](const DBG::CLogRecord&) { throw std::runtime_error("disk full"); });
    EXPECT_NO_THROW(DLP_LOG(DBG::LEVEL_INFO, L"wide"));
    EXPECT_NO_THROW(DLP_LOG(DBG::LEVEL_INFO, "narrow"));
    DBG::SetLogFilter([](int) -> bool { throw 1; });
    EXPECT_FALSE(DBG::IsListened(DBG::LEVEL_INFO));
}

TEST(DebugLog, SinkIsCalledOnTheThreadThatLogs) {
    std::thread::id idSink;
    DBG::SetLogSink([&idSink](const DBG::CLogRecord&) { idSink = std::this_thread::get_id(); });
    std::thread thread([] { DLP_LOG(DBG::LEVEL_INFO, L"hello"); });
    const std::thread::id idThread = thread.get_id();
    thread.join();
    EXPECT_EQ(idSink, idThread);
}

TEST(DebugLog, ThreadsLogAtOnce) {
    const CLogRecorder log;
    std::vector<std::thread> vecThreads;
    for (int iThread = 0; iThread < 4; ++iThread) {
        vecThreads.emplace_back([iThread] {
            for (int i = 0; i < 100; ++i) {
                DLP_LOG(DBG::LEVEL_INFO, L"%d %s", iThread * 100 + i, L"line");
            }
        });
    }
    std::for_each(vecThreads.begin(), vecThreads.end(), [](std::thread& thread) { thread.join(); });
    std::vector<std::string> vecMessages = log.Messages(DBG::LEVEL_INFO);
    std::sort(vecMessages.begin(), vecMessages.end());
    EXPECT_EQ(std::unique(vecMessages.begin(), vecMessages.end()), vecMessages.end());
    EXPECT_EQ(vecMessages.size(), 400U);
}

TEST(DebugLog, HeedsNoLocale) {
    const CLogRecorder log;
    for (const char* pLocale : {"C", "C.UTF-8"}) {
        std::setlocale(LC_ALL, pLocale);
        DLP_LOG(DBG::LEVEL_INFO, L"%s %d", L"\u4E2D", 1234567);
        EXPECT_EQ(LastMessage(log), L"\u4E2D 1234567");
    }
}

TEST(EscapeControls, ControlsSeparatorsAndBackslashAreWrittenOut) {
    EXPECT_EQ(DBG::EscapeControls(L"a\nb\tc\x1B[31m\\d"), L"a\\u000Ab\\u0009c\\u001B[31m\\\\d");
    EXPECT_EQ(DBG::EscapeControls(std::wstring(L"\0", 1)), L"\\u0000");
    EXPECT_EQ(DBG::EscapeControls(L"\u00AD\u180E\u200B\u2060\uFEFF\uFFF9\uFFFB\U000E0041"),
              L"\\u00AD\\u180E\\u200B\\u2060\\uFEFF\\uFFF9\\uFFFB\\uE0041");
    EXPECT_EQ(DBG::EscapeControls(L"\u200C\u200D\u3164\uFE0F\U0001D173\U000E0FFF"),
              L"\\u200C\\u200D\\u3164\\uFE0F\\u1D173\\uE0FFF");
    EXPECT_EQ(DBG::EscapeControls(L"\u00AC\u00AE\uFFFC\U000E1000"), L"\u00AC\u00AE\uFFFC\U000E1000");
    EXPECT_EQ(DBG::EscapeControls(L"\u0080\u0085\u009F\u007F\u2028\u2029"),
              L"\\u0080\\u0085\\u009F\\u007F\\u2028\\u2029");
    EXPECT_EQ(DBG::EscapeControls(L"\u061C\u200E\u200F\u202A\u202E\u2066\u2069"),
              L"\\u061C\\u200E\\u200F\\u202A\\u202E\\u2066\\u2069");
}

TEST(IsControl, IsWhatMisleadsAndNothingElse) {
    for (std::uint32_t i = 0; i <= 0x10FFFF; ++i) {
        const auto c = static_cast<wchar_t>(i);
        ASSERT_EQ(DBG::IsControl(c), IsMisleading(c)) << std::hex << i;
    }
}

TEST(EscapeControls, OtherTextStays) {
    EXPECT_EQ(DBG::EscapeControls(L""), L"");
    EXPECT_EQ(DBG::EscapeControls(L"plain ~\u00A0\u00E9\u2027\u202F\u4E2D\U0001F600 \"<&"),
              L"plain ~\u00A0\u00E9\u2027\u202F\u4E2D\U0001F600 \"<&");
}
