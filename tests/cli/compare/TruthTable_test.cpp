#include "cli/compare/TruthTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <random>

namespace {

constexpr EOperator OPERATORS[] = {EOperator::AND, EOperator::OR, EOperator::EXCEPT, EOperator::UNKNOWN};

bool Join(bool bLeft, EOperator eOperator, bool bRight) {
    return eOperator == EOperator::OR ? bLeft || bRight : bLeft && bRight != (eOperator == EOperator::EXCEPT);
}

/** The table that is true in one way alone. */
CTruthTable Only(std::size_t iConditions, std::size_t iWay) {
    CTruthTable table(iConditions, true);
    for (std::size_t i = 0; i < iConditions; ++i) {
        table.Join((iWay >> i & 1U) != 0 ? EOperator::AND : EOperator::EXCEPT, CTruthTable::Of(iConditions, i));
    }
    return table;
}

}  // namespace

TEST(TruthTable, AgreesWithEachWayAlone) {
    std::mt19937 random(1);
    for (const std::size_t iConditions : {0U, 1U, 2U, 5U, 6U, 7U, 9U}) {
        const std::size_t iWays = std::size_t{1} << iConditions;
        for (int iRound = 0; iRound < 20; ++iRound) {
            const bool bStart = random() % 2 == 0;
            CTruthTable table(iConditions, bStart);
            std::vector<bool> vecTrue(iWays, bStart);
            for (std::size_t i = 0; iConditions != 0 && i < 2 * iConditions; ++i) {
                const std::size_t iCondition = random() % iConditions;
                const EOperator eOperator = OPERATORS[random() % std::size(OPERATORS)];
                table.Join(eOperator, CTruthTable::Of(iConditions, iCondition));
                for (std::size_t iWay = 0; iWay < iWays; ++iWay) {
                    vecTrue[iWay] = Join(vecTrue[iWay], eOperator, (iWay >> iCondition & 1U) != 0);
                }
            }
            std::optional<int> fewest;
            for (std::size_t iWay = 0; iWay < iWays; ++iWay) {
                CTruthTable one = Only(iConditions, iWay);
                one.Join(EOperator::AND, table);
                ASSERT_EQ(one.FindFewest().has_value(), vecTrue[iWay]) << iConditions << ' ' << iWay;
                if (vecTrue[iWay]) {
                    ASSERT_EQ(*one.FindFewest(), iWay);
                    fewest = std::min(fewest.value_or(64), std::popcount(iWay));
                }
            }
            const std::optional<std::uint32_t> found = table.FindFewest();
            ASSERT_EQ(found.has_value(), fewest.has_value());
            if (found) {
                ASSERT_EQ(std::popcount(*found), *fewest);
            }
        }
    }
}

TEST(TruthTable, LargestOneKnowsItsLastCondition) {
    constexpr std::size_t LAST = CTruthTable::MAX_CONDITIONS - 1;
    EXPECT_EQ(CTruthTable::Of(CTruthTable::MAX_CONDITIONS, LAST).FindFewest(), std::uint32_t{1} << LAST);
    EXPECT_EQ(CTruthTable(CTruthTable::MAX_CONDITIONS, false).FindFewest(), std::nullopt);
}
