#include <gtest/gtest.h>

#include "Toy.h"

TEST(Toy, GrownFromEighteenOn) {
    EXPECT_FALSE(IsGrown(17));
    EXPECT_TRUE(IsGrown(18));
}

TEST(Toy, GreetingDependsOnAge) {
    EXPECT_EQ("Hi Ann", Greet("Ann", false));
    EXPECT_EQ("Good day, Ann", Greet("Ann", true));
}

TEST(Toy, AgesAreNoted) {
    std::vector<int> vecAges;
    Note(vecAges, 7);
    EXPECT_EQ(std::vector<int>{7}, vecAges);
}
