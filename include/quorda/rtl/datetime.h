#pragma once

#include "quorda/rtl/format_settings.h"
#include "quorda/rtl/numbers.h"

#include <cstdint>
#include <string>

namespace quorda {

// Days since 1899-12-30; the fraction is the time of day. Before 1899-12-30 the integral part counts
// days backwards while the fraction still adds time forwards: -1.25 is 1899-12-29 06:00.
using TDateTime = double;

// Time: milliseconds since midnight; Date: days since 0001-01-01, that day being 1.
struct QUORDA_API TTimeStamp {
    std::int32_t Time = 0;
    std::int32_t Date = 0;

    friend bool operator==(const TTimeStamp&, const TTimeStamp&) = default;
};

inline constexpr std::int32_t HoursPerDay = 24;
inline constexpr std::int32_t MinsPerDay = 24 * 60;
inline constexpr std::int32_t SecsPerDay = MinsPerDay * 60;
inline constexpr std::int32_t MSecsPerDay = SecsPerDay * 1000;
// TTimeStamp::Date of 1899-12-30 (TDateTime 0).
inline constexpr std::int32_t DateDelta = 693594;
// 0001-01-01 00:00 and 9999-12-31 23:59:59.999.
inline constexpr TDateTime MinDateTime = -693593.0;
inline constexpr TDateTime MaxDateTime = 2958465.99999999;

QUORDA_API bool IsLeapYear(int year);
// Days of the month (0 for a month outside 1..12).
QUORDA_API int DaysInAMonth(int year, int month);

// Years 1..9999. Invalid parts raise EConvertError ("Invalid argument to date encode",
// "Invalid argument to time encode").
QUORDA_API bool TryEncodeDate(int year, int month, int day, TDateTime& result);
QUORDA_API bool TryEncodeTime(int hour, int minute, int second, int msec, TDateTime& result);
QUORDA_API bool TryEncodeDateTime(int year, int month, int day, int hour, int minute, int second, int msec,
                                  TDateTime& result);
QUORDA_API TDateTime EncodeDate(int year, int month, int day);
QUORDA_API TDateTime EncodeTime(int hour, int minute, int second, int msec);
QUORDA_API TDateTime EncodeDateTime(int year, int month, int day, int hour, int minute, int second, int msec);

// Joins a date and a time of day under the rule for dates before 1899-12-30.
QUORDA_API TDateTime ComposeDateTime(TDateTime datePart, TDateTime timePart);

// Decoding first rounds to the nearest millisecond, so 23:59:59.9999 decodes as the next day
// 00:00:00.000. Values before 0001-01-01 decode as 0-0-0.
QUORDA_API void DecodeDate(TDateTime value, std::uint16_t& year, std::uint16_t& month, std::uint16_t& day);
QUORDA_API void DecodeTime(TDateTime value, std::uint16_t& hour, std::uint16_t& minute, std::uint16_t& second,
                           std::uint16_t& msec);
QUORDA_API void DecodeDateTime(TDateTime value, std::uint16_t& year, std::uint16_t& month, std::uint16_t& day,
                               std::uint16_t& hour, std::uint16_t& minute, std::uint16_t& second,
                               std::uint16_t& msec);

// 1 = Sunday ... 7 = Saturday.
QUORDA_API int DayOfWeek(TDateTime value);

QUORDA_API TTimeStamp DateTimeToTimeStamp(TDateTime value);
QUORDA_API TDateTime TimeStampToDateTime(const TTimeStamp& stamp);
// Milliseconds since 0001-01-01 counted as day 1 (Date * MSecsPerDay + Time).
QUORDA_API double TimeStampToMSecs(const TTimeStamp& stamp);
QUORDA_API TTimeStamp MSecsToTimeStamp(double msecs);

// The local clock.
QUORDA_API TDateTime Now();
QUORDA_API TDateTime Date();
QUORDA_API TDateTime Time();

// Tokens: yyyy yy (year), m mm mmm mmmm (month), d dd ddd dddd (day), ddddd (ShortDateFormat),
// dddddd (LongDateFormat), h hh, n nn, s ss, z zzz, t (ShortTimeFormat), tt (LongTimeFormat),
// am/pm a/p ampm (12-hour clock), c (ShortDateFormat, then LongTimeFormat unless the time is
// midnight), / (DateSeparator), : (TimeSeparator), '...' and "..." literal text. "m" right after an
// hour is minutes. Letters are case-insensitive.
QUORDA_API std::string FormatDateTime(const std::string& format, TDateTime value);
QUORDA_API std::string FormatDateTime(const std::string& format, TDateTime value,
                                      const TFormatSettings& settings);

QUORDA_API std::string DateTimeToStr(TDateTime value);
QUORDA_API std::string DateTimeToStr(TDateTime value, const TFormatSettings& settings);
QUORDA_API std::string DateToStr(TDateTime value);
QUORDA_API std::string DateToStr(TDateTime value, const TFormatSettings& settings);
QUORDA_API std::string TimeToStr(TDateTime value);
QUORDA_API std::string TimeToStr(TDateTime value, const TFormatSettings& settings);

// Text to date/time following the order of ShortDateFormat (y, m, d) with any of DateSeparator, '-',
// '/' or '.' between parts; times as h[:n[:s[.z]]] with an optional AM/PM. Two-digit years follow
// TwoDigitYearCenturyWindow; a date with two parts takes the current year. The Str* functions raise
// EConvertError "\"%s\" is not a valid date", "... time" or "... date and time".
QUORDA_API bool TryStrToDate(const std::string& text, TDateTime& value);
QUORDA_API bool TryStrToDate(const std::string& text, TDateTime& value, const TFormatSettings& settings);
QUORDA_API bool TryStrToTime(const std::string& text, TDateTime& value);
QUORDA_API bool TryStrToTime(const std::string& text, TDateTime& value, const TFormatSettings& settings);
QUORDA_API bool TryStrToDateTime(const std::string& text, TDateTime& value);
QUORDA_API bool TryStrToDateTime(const std::string& text, TDateTime& value, const TFormatSettings& settings);
QUORDA_API TDateTime StrToDate(const std::string& text);
QUORDA_API TDateTime StrToDate(const std::string& text, const TFormatSettings& settings);
QUORDA_API TDateTime StrToTime(const std::string& text);
QUORDA_API TDateTime StrToTime(const std::string& text, const TFormatSettings& settings);
QUORDA_API TDateTime StrToDateTime(const std::string& text);
QUORDA_API TDateTime StrToDateTime(const std::string& text, const TFormatSettings& settings);

} // namespace quorda
