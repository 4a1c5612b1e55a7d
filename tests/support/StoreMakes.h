#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "tests/support/TempDir.h"

/** One make of the settings store, as the common tests know it. */
struct SStoreMake {
    const char* pName;
    std::string (*fnUrl)(const CTempDir& folder);  ///< of a store that holds nothing yet
};

inline const SStoreMake STORE_MAKES[] = {
    {"Memory", [](const CTempDir&) { return std::string("memory:"); }},
    {"Sqlite", [](const CTempDir& folder) { return "sqlite:" + folder.Path("store/settings.db"); }},
};

inline void PrintTo(const SStoreMake& make, std::ostream* pOut) {
    *pOut << make.pName;
}

inline std::string StoreMakeName(const testing::TestParamInfo<SStoreMake>& make) {
    return make.param.pName;
}

/** Runs the suite's tests on every make; the suite's parameter is an SStoreMake. */
#define TEST_ON_ALL_STORES(Suite) INSTANTIATE_TEST_SUITE_P(Stores, Suite, testing::ValuesIn(STORE_MAKES), StoreMakeName)
