#include "platform/common/CTime.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

using OS::CTime;
using OS::SSystemTime;
using OS::VariantTimeToSystemTime;

namespace {

/** The date and time of day with its day of the week in front; "refused" for a value out of range. */
std::string Text(double dVariantTime) {
    SSystemTime time;
    if (VariantTimeToSystemTime(dVariantTime, &time) != 1) {
        return "refused";
    }
    char aText[64];
    std::snprintf(aText, sizeof aText, "%d %04d-%02d-%02d %02d:%02d:%02d.%03d", time.iDayOfWeek, time.iYear,
                  time.iMonth, time.iDay, time.iHour, time.iMinute, time.iSecond, time.iMilliseconds);
    return aText;
}

}  // namespace

TEST(VariantTime, DayZeroIsTheLastButOneOf1899) {
    EXPECT_EQ(Text(0.0), "6 1899-12-30 00:00:00.000");
}

TEST(VariantTime, FollowsTheCalendar) {
    EXPECT_EQ(Text(2.0), "1 1900-01-01 00:00:00.000");
    EXPECT_EQ(Text(60.0), "3 1900-02-28 00:00:00.000");
    EXPECT_EQ(Text(61.0), "4 1900-03-01 00:00:00.000");
    EXPECT_EQ(Text(25569.0), "4 1970-01-01 00:00:00.000");
    EXPECT_EQ(Text(36585.0), "2 2000-02-29 00:00:00.000");
    EXPECT_EQ(Text(36586.0), "3 2000-03-01 00:00:00.000");
    EXPECT_EQ(Text(-657434.0), "5 0100-01-01 00:00:00.000");
    EXPECT_EQ(Text(2958465.0), "5 9999-12-31 00:00:00.000");
}

TEST(VariantTime, FractionIsTheTimeOfDayAlsoBelowZero) {
    EXPECT_EQ(Text(1.25), "0 1899-12-31 06:00:00.000");
    EXPECT_EQ(Text(-1.25), "5 1899-12-29 06:00:00.000");
    EXPECT_EQ(Text(-0.25), "6 1899-12-30 06:00:00.000");
    EXPECT_EQ(Text(25569.0 + 12345.678 / 86400), "4 1970-01-01 03:25:45.678");
    EXPECT_EQ(Text(-657434.75), "5 0100-01-01 18:00:00.000");
}

TEST(VariantTime, LessThanHalfAMillisecondBeforeMidnightIsTheNextDay) {
    EXPECT_EQ(Text(3.0 - 1e-10), "2 1900-01-02 00:00:00.000");
    EXPECT_EQ(Text(std::nextafter(2958466.0, 0.0)), "5 9999-12-31 23:59:59.999");
}

TEST(VariantTime, OutOfRangeIsRefusedAndLeavesTheFields) {
    EXPECT_EQ(Text(-657435.0), "refused");
    EXPECT_EQ(Text(2958466.0), "refused");
    EXPECT_EQ(Text(std::numeric_limits<double>::infinity()), "refused");
    EXPECT_EQ(Text(-std::numeric_limits<double>::infinity()), "refused");
    EXPECT_EQ(Text(std::numeric_limits<double>::quiet_NaN()), "refused");

    SSystemTime time;
    time.iYear = 1234;
    EXPECT_EQ(VariantTimeToSystemTime(1e300, &time), 0);
    EXPECT_EQ(time.iYear, 1234);
}

TEST(Time, HoldsADateBefore1970) {
    SSystemTime fields;
    ASSERT_EQ(VariantTimeToSystemTime(0.75, &fields), 1);
    const CTime time(fields);
    EXPECT_EQ(time.GetYear(), 1899);
    EXPECT_EQ(time.GetMonth(), 12);
    EXPECT_EQ(time.GetDay(), 30);
    EXPECT_EQ(time.GetDayOfWeek(), 6);
    EXPECT_EQ(time.GetHour(), 18);
    EXPECT_EQ(time.GetMinute(), 0);
    EXPECT_EQ(time.GetSecond(), 0);
}
