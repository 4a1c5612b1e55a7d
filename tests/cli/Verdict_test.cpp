#include "cli/Verdict.h"

#include <gtest/gtest.h>

#include <csignal>

#include "cli/Signals.h"

TEST(Verdict, EachHasItsNameAndExitCode) {
    const struct {
        EVerdict eVerdict;
        const char* pName;
        int iExitCode;
    } rows[] = {
        {EVerdict::DONE, "done", 0},       {EVerdict::FINDINGS, "findings", 1},
        {EVerdict::INVALID, "invalid", 2}, {EVerdict::USAGE, "usage", 3},
        {EVerdict::STORE, "store", 4},     {EVerdict::OUTPUT, "output", 4},
        {EVerdict::MEMORY, "memory", 4},   {EVerdict::INTERRUPTED, "interrupted", 130},
    };
    for (const auto& row : rows) {
        EXPECT_STREQ(GetVerdictName(row.eVerdict), row.pName);
        EXPECT_EQ(GetExitCode(row.eVerdict), row.iExitCode) << row.pName;
    }
}

TEST(Verdict, TheHigherExitCodeWins) {
    EXPECT_EQ(GetWorse(EVerdict::DONE, EVerdict::FINDINGS), EVerdict::FINDINGS);
    EXPECT_EQ(GetWorse(EVerdict::INVALID, EVerdict::FINDINGS), EVerdict::INVALID);
    EXPECT_EQ(GetWorse(EVerdict::STORE, EVerdict::OUTPUT), EVerdict::STORE);
    EXPECT_EQ(GetWorse(EVerdict::STORE, EVerdict::INTERRUPTED), EVerdict::INTERRUPTED);
}

TEST(Signals, NoneIsCaughtAtFirst) {
    EXPECT_FALSE(Signals::IsCaught());
    EXPECT_NO_THROW(Signals::ThrowIfCaught());
}

TEST(Signals, AreRememberedAndGiveTheExitCode) {
    for (const auto& [iSignal, iExitCode] : {std::pair(SIGHUP, 129), std::pair(SIGINT, 130), std::pair(SIGTERM, 143)}) {
        std::signal(iSignal, SIG_DFL);
        Signals::Watch();
        std::raise(iSignal);
        EXPECT_TRUE(Signals::IsCaught());
        EXPECT_THROW(Signals::ThrowIfCaught(), Signals::SInterrupted);
        EXPECT_EQ(GetExitCode(EVerdict::INTERRUPTED), iExitCode);
    }
}

TEST(Signals, AHangUpThatIsIgnoredStaysIgnored) {
    std::signal(SIGHUP, SIG_IGN);
    Signals::Watch();
    std::raise(SIGHUP);
    EXPECT_FALSE(Signals::IsCaught());
}

TEST(Signals, ASecondHangUpDoesNotEndTheProgram) {
    std::signal(SIGHUP, SIG_DFL);
    Signals::Watch();
    std::raise(SIGHUP);
    std::raise(SIGHUP);
    EXPECT_EQ(GetExitCode(EVerdict::INTERRUPTED), 129);
}
