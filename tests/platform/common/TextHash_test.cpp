#include "platform/common/TextHash.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <set>
#include <string>

#include "tests/support/TextsOfOneHash.h"

namespace {

constexpr std::size_t COUNT = 1000;

/** @return how many values it gives to texts of which the standard library's has only one */
template <class F>
std::size_t CountHashes(const F& fnHash) {
    std::set<std::uint64_t> setHashes;
    for (const std::string& strText : MakeTextsOfOneHash(COUNT)) {
        setHashes.insert(fnHash(strText));
    }
    return setHashes.size();
}

/** From here on the system has no random numbers for this process. */
bool TakeRandomNumbersAway() {
    sock_filter aFilter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_getrandom, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EAGAIN),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program{sizeof aFilter / sizeof *aFilter, aFilter};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

constexpr int NO_FILTER = 77;

[[noreturn]] void DrawWithoutRandomNumbers() {
    const bool bTaken = TakeRandomNumbersAway();
    const std::uint64_t iSecret = OS::DrawSecret();
    const bool bDrawn = iSecret != 0 && iSecret != OS::DrawSecret();
    _exit(!bTaken ? NO_FILTER : bDrawn ? 0 : 1);
}

}  // namespace

TEST(TextHash, TextsOfOneHashOfTheStandardLibraryHaveManyHere) {
#if defined(__GLIBCXX__) && __SIZEOF_SIZE_T__ == 8
    EXPECT_EQ(CountHashes(std::hash<std::string>()), 1U);
#endif
    EXPECT_EQ(CountHashes(OS::STextHash()), COUNT);
}

TEST(TextHash, AnotherSecretGivesAnotherHash) {
    for (const char* pText : {"", "a", "payment-card-words", "a text that is longer than what is hashed in one step"}) {
        EXPECT_EQ(OS::HashText(pText, 1), OS::HashText(pText, 1)) << pText;
        EXPECT_NE(OS::HashText(pText, 1), OS::HashText(pText, 2)) << pText;
    }
}

TEST(TextHash, SecretIsDrawnAnewAndThatOfTheProcessOnce) {
    EXPECT_NE(OS::DrawSecret(), OS::DrawSecret());
    EXPECT_EQ(OS::ProcessSecret(), OS::ProcessSecret());
    EXPECT_EQ(OS::STextHash()("a"), OS::HashText("a", OS::ProcessSecret()));
}

TEST(TextHash, WithoutRandomNumbersThereIsASecretToo) {
    EXPECT_EXIT(
        DrawWithoutRandomNumbers(),
        [](int iStatus) { return testing::ExitedWithCode(0)(iStatus) || testing::ExitedWithCode(NO_FILTER)(iStatus); },
        "");
}
