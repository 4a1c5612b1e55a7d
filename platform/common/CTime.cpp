#include "platform/common/CTime.h"

#include <cmath>

namespace OS {

namespace {

constexpr int FIRST_DAY = -657434;  // 0100-01-01
constexpr int LAST_DAY = 2958465;   // 9999-12-31
constexpr int MILLISECONDS_PER_DAY = 24 * 60 * 60 * 1000;
constexpr int DAYS_FROM_YEAR_0 = 693899;  // from 0000-03-01 to day 0

/** Years counted from March end with the leap day, so months and days follow from the day number alone. */
void SetDate(int iDay, SSystemTime* time) {
    constexpr int DAYS_PER_400_YEARS = 146097;
    const int iFromYear0 = iDay + DAYS_FROM_YEAR_0;
    const int iCycle = iFromYear0 / DAYS_PER_400_YEARS;
    const int iDayOfCycle = iFromYear0 % DAYS_PER_400_YEARS;
    const int iYearOfCycle =
        (iDayOfCycle - iDayOfCycle / 1460 + iDayOfCycle / 36524 - iDayOfCycle / (DAYS_PER_400_YEARS - 1)) / 365;
    const int iDayOfYear = iDayOfCycle - (365 * iYearOfCycle + iYearOfCycle / 4 - iYearOfCycle / 100);
    const int iMonthFromMarch = (5 * iDayOfYear + 2) / 153;
    time->iDay = iDayOfYear - (153 * iMonthFromMarch + 2) / 5 + 1;
    time->iMonth = iMonthFromMarch < 10 ? iMonthFromMarch + 3 : iMonthFromMarch - 9;
    time->iYear = iCycle * 400 + iYearOfCycle + (time->iMonth <= 2 ? 1 : 0);
    constexpr int FRIDAY = 5;  // the first day
    time->iDayOfWeek = (iDay - FIRST_DAY + FRIDAY) % 7;
}

void SetTimeOfDay(int iMilliseconds, SSystemTime* time) {
    time->iMilliseconds = iMilliseconds % 1000;
    time->iSecond = iMilliseconds / 1000 % 60;
    time->iMinute = iMilliseconds / (60 * 1000) % 60;
    time->iHour = iMilliseconds / (60 * 60 * 1000);
}

}  // namespace

int VariantTimeToSystemTime(double dVariantTime, SSystemTime* time) {
    if (!(dVariantTime > FIRST_DAY - 1 && dVariantTime < LAST_DAY + 1)) {
        return 0;
    }
    int iDay = static_cast<int>(dVariantTime);
    int iMilliseconds = static_cast<int>(std::lround(std::fabs(dVariantTime - iDay) * MILLISECONDS_PER_DAY));
    if (iMilliseconds == MILLISECONDS_PER_DAY) {
        if (iDay == LAST_DAY) {
            --iMilliseconds;
        } else {
            ++iDay;
            iMilliseconds = 0;
        }
    }
    SetDate(iDay, time);
    SetTimeOfDay(iMilliseconds, time);
    return 1;
}

}  // namespace OS
