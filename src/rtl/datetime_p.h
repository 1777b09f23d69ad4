#pragma once

// Calendar arithmetic shared by the date/time conversions.

#include <cstdint>

namespace quorda::detail {

// Days of the proleptic Gregorian calendar counted from 0001-01-01 = 1 (the time stamp numbering).
std::int32_t DayNumber(int year, int month, int day);
void CivilFromDayNumber(std::int32_t dayNumber, int& year, int& month, int& day);

// The local date and time now, to the millisecond.
struct LocalClock {
    int Year, Month, Day, Hour, Minute, Second, MSec;
};
LocalClock ReadLocalClock();

} // namespace quorda::detail
