#include "Toy.h"

namespace {

constexpr const char* GREETINGS[] = {"Hi ", "Good day, "};
constexpr int GREETING_COUNT = 2;
static_assert(sizeof(GREETINGS) / sizeof(GREETINGS[0]) == GREETING_COUNT);

}  // namespace

bool IsGrown(int iAge) {
    return iAge >= GROWN;
}

std::string Greet(const std::string& strName, bool bGrown) {
    return GREETINGS[bGrown ? 1 : 0] + strName;
}

void Note(std::vector<int>& vecAges, int iAge) {
    vecAges.reserve(vecAges.size() + 1);
    if (iAge > 0 && iAge < 150) {
        vecAges.push_back(iAge);
    }
}

int Between(int iLeft, int iRight) {
    return iLeft < iRight ? iRight - iLeft : Between(iRight, iLeft);
}
