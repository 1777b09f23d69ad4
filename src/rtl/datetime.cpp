#include "quorda/rtl/datetime.h"

#include "datetime_p.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>

namespace quorda {
namespace detail {

namespace {

// The day number of 1970-01-01, where std::chrono::sys_days counts from.
constexpr std::int64_t kSysDaysEpoch = 719163;

} // namespace

std::int32_t DayNumber(int year, int month, int day) {
    const std::chrono::sys_days date{std::chrono::year(year) / static_cast<unsigned>(month) /
                                     static_cast<unsigned>(day)};
    return static_cast<std::int32_t>(date.time_since_epoch().count() + kSysDaysEpoch);
}

void CivilFromDayNumber(std::int32_t dayNumber, int& year, int& month, int& day) {
    const std::chrono::year_month_day date{
        std::chrono::sys_days{std::chrono::days{dayNumber - kSysDaysEpoch}}};
    year = static_cast<int>(date.year());
    month = static_cast<int>(static_cast<unsigned>(date.month()));
    day = static_cast<int>(static_cast<unsigned>(date.day()));
}

LocalClock ReadLocalClock() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::tm parts{};
    localtime_r(&now.tv_sec, &parts);
    return LocalClock{
        parts.tm_year + 1900, parts.tm_mon + 1,          parts.tm_mday, parts.tm_hour, parts.tm_min,
        parts.tm_sec,         int(now.tv_nsec / 1000000)};
}

} // namespace detail

namespace {

// Beyond this many days from 1899-12-30 a value has no time stamp (and no calendar date).
constexpr double kDayLimit = 1.0e8;

} // namespace

bool IsLeapYear(int year) {
    return std::chrono::year(year).is_leap();
}

int DaysInAMonth(int year, int month) {
    if (month < 1 || month > 12) {
        return 0;
    }
    const auto last = std::chrono::year(year) / static_cast<unsigned>(month) / std::chrono::last;
    return static_cast<int>(static_cast<unsigned>(last.day()));
}

bool TryEncodeDate(int year, int month, int day, TDateTime& result) {
    if (year < 1 || year > 9999 || day < 1 || day > DaysInAMonth(year, month)) {
        return false;
    }
    result = double(detail::DayNumber(year, month, day) - DateDelta);
    return true;
}

bool TryEncodeTime(int hour, int minute, int second, int msec, TDateTime& result) {
    if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59 || msec < 0 ||
        msec > 999) {
        return false;
    }
    result = double(((hour * 60 + minute) * 60 + second) * 1000 + msec) / MSecsPerDay;
    return true;
}

bool TryEncodeDateTime(int year, int month, int day, int hour, int minute, int second, int msec,
                       TDateTime& result) {
    TDateTime datePart = 0;
    TDateTime timePart = 0;
    if (!TryEncodeDate(year, month, day, datePart) || !TryEncodeTime(hour, minute, second, msec, timePart)) {
        return false;
    }
    result = ComposeDateTime(datePart, timePart);
    return true;
}

TDateTime EncodeDate(int year, int month, int day) {
    TDateTime result = 0;
    if (!TryEncodeDate(year, month, day, result)) {
        throw EConvertError("Invalid argument to date encode");
    }
    return result;
}

TDateTime EncodeTime(int hour, int minute, int second, int msec) {
    TDateTime result = 0;
    if (!TryEncodeTime(hour, minute, second, msec, result)) {
        throw EConvertError("Invalid argument to time encode");
    }
    return result;
}

TDateTime EncodeDateTime(int year, int month, int day, int hour, int minute, int second, int msec) {
    return ComposeDateTime(EncodeDate(year, month, day), EncodeTime(hour, minute, second, msec));
}

TDateTime ComposeDateTime(TDateTime datePart, TDateTime timePart) {
    const double days = std::trunc(datePart);
    const double time = std::fabs(timePart - std::trunc(timePart));
    return days < 0 ? days - time : days + time;
}

TTimeStamp DateTimeToTimeStamp(TDateTime value) {
    if (!std::isfinite(value) || std::fabs(value) > kDayLimit) {
        throw EConvertError(FormatMessage("%f is not a valid date/time value.", value));
    }
    // The integral part is the day and the fraction, whatever the sign, the time of that day. The
    // time is rounded to the millisecond; a time that rounds to 24:00 is midnight of the next day.
    double days = std::trunc(value);
    std::int32_t msec = std::int32_t(detail::RoundHalfAway(std::fabs(value - days) * MSecsPerDay));
    if (msec >= MSecsPerDay) {
        msec = 0;
        days += 1;
    }
    return TTimeStamp{msec, std::int32_t(days) + DateDelta};
}

TDateTime TimeStampToDateTime(const TTimeStamp& stamp) {
    return ComposeDateTime(double(stamp.Date - DateDelta), double(stamp.Time) / MSecsPerDay);
}

double TimeStampToMSecs(const TTimeStamp& stamp) {
    return double(stamp.Date) * MSecsPerDay + stamp.Time;
}

TTimeStamp MSecsToTimeStamp(double msecs) {
    if (!std::isfinite(msecs) || std::fabs(msecs) > kDayLimit * MSecsPerDay) {
        throw EConvertError(FormatMessage("%f is not a valid date/time value.", msecs / MSecsPerDay));
    }
    // Whole milliseconds within the calendar (every date-time a record holds) split exactly in
    // integers, to what the floating-point route below gives.
    constexpr double kCalendarMSecs = 3652060.0 * MSecsPerDay;
    if (msecs == std::trunc(msecs) && std::fabs(msecs) < kCalendarMSecs) {
        const auto total = static_cast<std::int64_t>(msecs);
        return TTimeStamp{std::int32_t(total % MSecsPerDay), std::int32_t(total / MSecsPerDay)};
    }
    double days = std::trunc(msecs / MSecsPerDay);
    std::int64_t time = detail::RoundHalfAway(msecs - days * MSecsPerDay);
    if (time >= MSecsPerDay) {
        time -= MSecsPerDay;
        days += 1;
    }
    return TTimeStamp{std::int32_t(time), std::int32_t(days)};
}

namespace {

void DecodeDateOf(const TTimeStamp& stamp, std::uint16_t& year, std::uint16_t& month, std::uint16_t& day) {
    if (stamp.Date <= 0) {
        year = month = day = 0;
        return;
    }
    int y = 0, m = 0, d = 0;
    detail::CivilFromDayNumber(stamp.Date, y, m, d);
    year = std::uint16_t(y);
    month = std::uint16_t(m);
    day = std::uint16_t(d);
}

void DecodeTimeOf(const TTimeStamp& stamp, std::uint16_t& hour, std::uint16_t& minute, std::uint16_t& second,
                  std::uint16_t& msec) {
    std::int32_t time = stamp.Time;
    hour = std::uint16_t(time / 3600000);
    time %= 3600000;
    minute = std::uint16_t(time / 60000);
    time %= 60000;
    second = std::uint16_t(time / 1000);
    msec = std::uint16_t(time % 1000);
}

} // namespace

void DecodeDate(TDateTime value, std::uint16_t& year, std::uint16_t& month, std::uint16_t& day) {
    DecodeDateOf(DateTimeToTimeStamp(value), year, month, day);
}

void DecodeTime(TDateTime value, std::uint16_t& hour, std::uint16_t& minute, std::uint16_t& second,
                std::uint16_t& msec) {
    DecodeTimeOf(DateTimeToTimeStamp(value), hour, minute, second, msec);
}

void DecodeDateTime(TDateTime value, std::uint16_t& year, std::uint16_t& month, std::uint16_t& day,
                    std::uint16_t& hour, std::uint16_t& minute, std::uint16_t& second, std::uint16_t& msec) {
    // One conversion serves both halves.
    const TTimeStamp stamp = DateTimeToTimeStamp(value);
    DecodeDateOf(stamp, year, month, day);
    DecodeTimeOf(stamp, hour, minute, second, msec);
}

int DayOfWeek(TDateTime value) {
    // 0001-01-01 (day 1) was a Monday.
    const std::int32_t dayNumber = DateTimeToTimeStamp(value).Date;
    const int weekday = int(((dayNumber % 7) + 7) % 7);
    return weekday + 1;
}

TDateTime Now() {
    const detail::LocalClock c = detail::ReadLocalClock();
    return EncodeDateTime(c.Year, c.Month, c.Day, c.Hour, c.Minute, std::min(c.Second, 59), c.MSec);
}

TDateTime Date() {
    const detail::LocalClock c = detail::ReadLocalClock();
    return EncodeDate(c.Year, c.Month, c.Day);
}

TDateTime Time() {
    const detail::LocalClock c = detail::ReadLocalClock();
    return EncodeTime(c.Hour, c.Minute, std::min(c.Second, 59), c.MSec);
}

} // namespace quorda
