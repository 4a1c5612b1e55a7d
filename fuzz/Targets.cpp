#include "fuzz/Targets.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "tests/support/TempDir.h"

namespace Fuzz {

const STarget TARGETS[10] = {
    {"document", ImportDocument}, {"assets", ImportAssets},   {"proof", ProveDocument},
    {"matcher", Match},           {"rule", ParseRule},        {"subkeywords", ParseSubKeywords},
    {"names", ReadNameMap},       {"lists", ReadPolicyLists}, {"store", OpenStore},
    {"dump", LoadDump},
};

const STarget* FindTarget(std::string_view strName) {
    const auto* const pFound = std::find_if(std::begin(TARGETS), std::end(TARGETS),
                                            [&](const STarget& target) { return target.pName == strName; });
    return pFound == std::end(TARGETS) ? nullptr : pFound;
}

void Require(bool bHolds, const char* pWhat) {
    if (!bHolds) {
        std::fprintf(stderr, "does not hold: %s\n", pWhat);
        std::abort();
    }
}

const CTempDir& Folder() {
    static const CTempDir s_folder;
    return s_folder;
}

}  // namespace Fuzz
