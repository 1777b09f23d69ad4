#pragma once

// Calendar arithmetic shared by the date/time conversions.

#include <cstdint>

namespace quorda::detail {

// Days of the proleptic Gregorian calendar counted from 0001-01-01 = 1 (the time stamp numbering).
std::int32_t DayNumber(int year, int month, int day);
void CivilFromDayNumber(std::int32_t dayNumber, int& year, int& month, int& day);

// Rounds half away from zero like std::llround, without the library call: field reads convert every
// date-time value through here. Valid for finite values within the 64-bit range.
inline std::int64_t RoundHalfAway(double value) {
    auto whole = static_cast<std::int64_t>(value); // toward zero
    const double rest = value - static_cast<double>(whole);
    if (rest >= 0.5) {
        ++whole;
    } else if (rest <= -0.5) {
        --whole;
    }
    return whole;
}

// The local date and time now, to the millisecond.
struct LocalClock {
    int Year, Month, Day, Hour, Minute, Second, MSec;
};
LocalClock ReadLocalClock();

} // namespace quorda::detail
