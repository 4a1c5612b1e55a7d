#include "cli/Progress.h"

#include <gtest/gtest.h>

#include <sstream>
#include <thread>

namespace {

constexpr auto A_MOMENT = std::chrono::milliseconds(1050);

}  // namespace

TEST(Progress, NothingIsShownForShortWorkOrWithoutATerminal) {
    std::ostringstream err;
    {
        const CProgress quick(err, true, "file");
        CProgress::Expect(3);
        CProgress::Step();
        const CProgress hidden(err, false, "file");
        std::this_thread::sleep_for(A_MOMENT);
        CProgress::Step();
    }
    EXPECT_EQ(err.str(), "");
    CProgress::Expect(1);
    CProgress::Step();
}

TEST(Progress, LongWorkShowsABarThatIsWipedAway) {
    std::ostringstream err;
    {
        const CProgress progress(err, true, "file");
        CProgress::Expect(1);
        CProgress::Expect(3);
        std::this_thread::sleep_for(A_MOMENT);
        CProgress::Step();
        EXPECT_EQ(err.str(), "\r\x1b[Kfile [#######                       ] 25%");
        CProgress::Step();  // too soon to be drawn again
    }
    EXPECT_EQ(err.str(), "\r\x1b[Kfile [#######                       ] 25%\r\x1b[K");
}

TEST(Progress, MoreStepsThanExpectedStayAtTheEnd) {
    std::ostringstream err;
    const CProgress progress(err, true, "file");
    std::this_thread::sleep_for(A_MOMENT);
    CProgress::Step(7);
    EXPECT_NE(err.str().find("] 100%"), std::string::npos);
}

TEST(Progress, InnermostBarIsTheOneThatSteps) {
    std::ostringstream err;
    const CProgress outer(err, true, "outer");
    CProgress::Expect(2);
    {
        const CProgress inner(err, true, "inner");
        std::this_thread::sleep_for(A_MOMENT);
        CProgress::Step();
    }
    CProgress::Step();
    EXPECT_EQ(err.str(),
              "\r\x1b[Kinner [##############################] 100%\r\x1b[K"
              "\r\x1b[Kouter [###############               ] 50%");
}
