#include <gtest/gtest.h>
#include <sys/resource.h>

#include <fstream>

#include "tests/support/Sanitized.h"
#include "tests/support/XmlText.h"

namespace {

constexpr std::size_t MEBIBYTE = 1U << 20U;

/** Lets the process have this much memory more than it has. */
void Allow(std::size_t iBytes) {
    std::size_t iPages = 0;
    std::ifstream("/proc/self/statm") >> iPages;
    const rlimit limit{iPages * 4096 + iBytes, RLIM_INFINITY};
    setrlimit(RLIMIT_AS, &limit);
}

/** Loads, copies and writes with more and more memory. @return how often memory ran out before it sufficed */
int CountExhaustions(const std::string& strText) {
    for (int iTry = 0; iTry < 200; ++iTry) {
        Allow(static_cast<std::size_t>(iTry) * MEBIBYTE / 4);
        try {
            CXMLParser document;
            if (!document.LoadUtf8(strText)) {
                return -1;  // sound text, called faulty
            }
            const CXMLParser copy(document);
            std::string strSaved;
            copy.SaveUtf8(strSaved);
            return strSaved == strText ? iTry : -1;
        } catch (const std::bad_alloc&) {
        }
    }
    return -1;
}

}  // namespace

TEST(XmlMemory, ExhaustionPassesAndNeverLooksLikeFaultyOrShorterText) {
    if (SANITIZED) {
        GTEST_SKIP() << "the address sanitizer needs its own memory";
    }
    std::string strText = "<a>";
    while (strText.size() < MEBIBYTE / 2) {
        strText += "<b c=\"d\">e</b>";
    }
    strText += "</a>";
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a process of its own, which holds no freed memory yet
    EXPECT_EXIT(std::_Exit(CountExhaustions(strText) > 3 ? 0 : 1), testing::ExitedWithCode(0), "");
}
