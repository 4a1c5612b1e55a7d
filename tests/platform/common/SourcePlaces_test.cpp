#include "platform/common/SourcePlaces.h"

#include <gtest/gtest.h>

namespace {

std::pair<std::size_t, std::size_t> Find(const CSourcePlaces& places, std::size_t iOffset) {
    const SPlace place = places.Find(iOffset);
    return {place.iLine, place.iColumn};
}

using Place = std::pair<std::size_t, std::size_t>;

}  // namespace

TEST(SourcePlaces, CountLinesAndCodePointsFromOne) {
    const CSourcePlaces places("a\nbé𐍈c\n");
    EXPECT_EQ(Find(places, 0), Place(1, 1));
    EXPECT_EQ(Find(places, 1), Place(1, 2));
    EXPECT_EQ(Find(places, 2), Place(2, 1));
    EXPECT_EQ(Find(places, 3), Place(2, 2));
    EXPECT_EQ(Find(places, 5), Place(2, 3));   // after two bytes
    EXPECT_EQ(Find(places, 9), Place(2, 4));   // after four more
    EXPECT_EQ(Find(places, 11), Place(3, 1));  // the end
    EXPECT_EQ(Find(places, 12), Place(0, 0));  // beyond it
    EXPECT_EQ(Find(places, std::string::npos), Place(0, 0));
}

TEST(SourcePlaces, EveryKindOfLineEndIsOne) {
    const CSourcePlaces places("a\r\nb\rc\nd");
    EXPECT_EQ(Find(places, 3), Place(2, 1));
    EXPECT_EQ(Find(places, 5), Place(3, 1));
    EXPECT_EQ(Find(places, 7), Place(4, 1));
    EXPECT_EQ(Find(places, 2), Place(1, 3));  // the LF of CR LF
}

TEST(SourcePlaces, LongLinesAreCountedInBlocks) {
    std::string strText(10000, 'x');
    strText[5000] = '\n';
    strText.replace(8000, 2, "é");
    const CSourcePlaces places(strText);
    EXPECT_EQ(Find(places, 255), Place(1, 256));
    EXPECT_EQ(Find(places, 256), Place(1, 257));
    EXPECT_EQ(Find(places, 5001), Place(2, 1));
    EXPECT_EQ(Find(places, 9000), Place(2, 3999));
    EXPECT_EQ(Find(places, 10000), Place(2, 4999));
}

TEST(SourcePlaces, BytesThatAreNoTextAreFine) {
    const CSourcePlaces places("\xff\xfe\x80<");
    EXPECT_EQ(Find(places, 3), Place(1, 3));
    EXPECT_EQ(Find(CSourcePlaces(""), 0), Place(1, 1));
}

TEST(SourcePlaces, LinesAreCountedInBlocks) {
    std::string strText;
    for (int i = 0; i < 2000; ++i) {
        strText += std::string(static_cast<std::size_t>(i % 5), 'x') + (i % 3 == 0 ? "\r" : i % 3 == 1 ? "\r\n" : "\n");
    }
    const CSourcePlaces places(strText);
    Place expected(1, 1);
    for (std::size_t i = 0; i <= strText.size(); ++i) {
        ASSERT_EQ(Find(places, i), expected) << i;
        const bool bEnd = strText[i] == '\n' || (strText[i] == '\r' && strText[i + 1] != '\n');
        expected = bEnd ? Place(expected.first + 1, 1) : Place(expected.first, expected.second + 1);
    }
}
