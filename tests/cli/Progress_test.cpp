#include "cli/Progress.h"

#include <gtest/gtest.h>

#include <sstream>
#include <thread>

TEST(Progress, NothingIsShownForShortWorkOrWithoutATerminal) {
    std::ostringstream err;
    {
        CProgress quick(err, true, "file", 3);
        quick.Step();
        CProgress hidden(err, false, "file", 1);
        std::this_thread::sleep_for(std::chrono::milliseconds(600));
        hidden.Step();
    }
    EXPECT_EQ(err.str(), "");
}

TEST(Progress, LongWorkShowsABarThatIsWipedAway) {
    std::ostringstream err;
    {
        CProgress progress(err, true, "file", 4);
        std::this_thread::sleep_for(std::chrono::milliseconds(600));
        progress.Step();
        EXPECT_EQ(err.str(), "\r\x1b[Kfile [#######                       ] 25%");
        progress.Step();  // too soon to be drawn again
    }
    EXPECT_EQ(err.str(), "\r\x1b[Kfile [#######                       ] 25%\r\x1b[K");
}

TEST(Progress, MoreStepsThanExpectedStayAtTheEnd) {
    std::ostringstream err;
    CProgress progress(err, true, "file", 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(600));
    progress.Step();
    EXPECT_NE(err.str().find("] 100%"), std::string::npos);
}
