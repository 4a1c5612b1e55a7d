#include "cli/NearestName.h"

#include <gtest/gtest.h>

TEST(NearestName, IsTheOneOfFewestChanges) {
    const std::vector<std::string> vecNames = {"payment-card", "payment-cards", "bank", "großer Name"};
    const struct {
        const char* pWanted;
        const char* pNearest;
    } rows[] = {
        {"payment-cord", "payment-card"},
        {"paymentcards", "payment-cards"},
        {"PAYMENT-CARD", "payment-card"},  // the case of letters is no change
        {" bank ", "bank"},                // nor are blanks around a name
        {"bnk", "bank"},
        {"bakn", "bank"},  // neighbours that are swapped are one change
        {"abnk", "bank"},
        {"grosser Name", "großer Name"},  // two changes of twelve code points
        {"bonds", ""},                    // two of five are too many
        {"health", ""},
        {"", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FindNearestName(row.pWanted, vecNames), row.pNearest) << row.pWanted;
    }
}

TEST(NearestName, OfSeveralThatAreAsNearIsTheFirst) {
    EXPECT_EQ(FindNearestName("cart", {"card", "care"}), "card");
    EXPECT_EQ(FindNearestName("cart", {}), "");
}
