#pragma once

#include "platform/common/PlatformExport.h"

namespace OS {

/** A calendar date and time of day, without time zone; holds dates long before 1970. */
struct SSystemTime {
    int iYear = 0;
    int iMonth = 0;      ///< 1 to 12
    int iDay = 0;        ///< 1 to 31
    int iDayOfWeek = 0;  ///< 0 = Sunday
    int iHour = 0;
    int iMinute = 0;
    int iSecond = 0;
    int iMilliseconds = 0;
};

/** A point in calendar time, kept as its fields. */
class DLP_PLATFORM_API CTime {
  public:
    CTime() = default;
    explicit CTime(const SSystemTime& time) : m_time(time) {}

    int GetYear() const { return m_time.iYear; }
    int GetMonth() const { return m_time.iMonth; }
    int GetDay() const { return m_time.iDay; }
    int GetDayOfWeek() const { return m_time.iDayOfWeek; }
    int GetHour() const { return m_time.iHour; }
    int GetMinute() const { return m_time.iMinute; }
    int GetSecond() const { return m_time.iSecond; }

  private:
    SSystemTime m_time;
};

/**
 * Converts an OLE automation date (days since 1899-12-30 00:00, the fraction is the time of day, also for negative
 * values) into calendar fields of the proleptic Gregorian calendar, to the nearest millisecond.
 * @param dVariantTime days; above -657435.0 (the last day before year 100) and below 2958466.0 (year 10000)
 * @param time receives the fields; unchanged on failure
 * @return 1 on success, 0 when the value is outside the range
 */
DLP_PLATFORM_API int VariantTimeToSystemTime(double dVariantTime, SSystemTime* time);

}  // namespace OS
