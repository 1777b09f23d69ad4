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
struct TTimeStamp {
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

bool IsLeapYear(int year);
// Days of the month (0 for a month outside 1..12).
int DaysInAMonth(int year, int month);

// Years 1..9999. Invalid parts raise EConvertError ("Invalid argument to date encode",
// "Invalid argument to time encode").
bool TryEncodeDate(int year, int month, int day, TDateTime& result);
bool TryEncodeTime(int hour, int minute, int second, int msec, TDateTime& result);
bool TryEncodeDateTime(int year, int month, int day, int hour, int minute, int second, int msec,
                       TDateTime& result);
TDateTime EncodeDate(int year, int month, int day);
TDateTime EncodeTime(int hour, int minute, int second, int msec);
TDateTime EncodeDateTime(int year, int month, int day, int hour, int minute, int second, int msec);

// Joins a date and a time of day under the rule for dates before 1899-12-30.
TDateTime ComposeDateTime(TDateTime datePart, TDateTime timePart);

// Decoding first rounds to the nearest millisecond, so 23:59:59.9999 decodes as the next day
// 00:00:00.000. Values before 0001-01-01 decode as 0-0-0.
void DecodeDate(TDateTime value, std::uint16_t& year, std::uint16_t& month, std::uint16_t& day);
void DecodeTime(TDateTime value, std::uint16_t& hour, std::uint16_t& minute, std::uint16_t& second,
                std::uint16_t& msec);
void DecodeDateTime(TDateTime value, std::uint16_t& year, std::uint16_t& month, std::uint16_t& day,
                    std::uint16_t& hour, std::uint16_t& minute, std::uint16_t& second, std::uint16_t& msec);

// 1 = Sunday ... 7 = Saturday.
int DayOfWeek(TDateTime value);

TTimeStamp DateTimeToTimeStamp(TDateTime value);
TDateTime TimeStampToDateTime(const TTimeStamp& stamp);
// Milliseconds since 0001-01-01 counted as day 1 (Date * MSecsPerDay + Time).
double TimeStampToMSecs(const TTimeStamp& stamp);
TTimeStamp MSecsToTimeStamp(double msecs);

// The local clock.
TDateTime Now();
TDateTime Date();
TDateTime Time();

// Tokens: yyyy yy (year), m mm mmm mmmm (month), d dd ddd dddd (day), ddddd (ShortDateFormat),
// dddddd (LongDateFormat), h hh, n nn, s ss, z zzz, t (ShortTimeFormat), tt (LongTimeFormat),
// am/pm a/p ampm (12-hour clock), c (ShortDateFormat, then LongTimeFormat unless the time is
// midnight), / (DateSeparator), : (TimeSeparator), '...' and "..." literal text. "m" right after an
// hour is minutes. Letters are case-insensitive.
std::string FormatDateTime(const std::string& format, TDateTime value);
std::string FormatDateTime(const std::string& format, TDateTime value, const TFormatSettings& settings);

std::string DateTimeToStr(TDateTime value);
std::string DateTimeToStr(TDateTime value, const TFormatSettings& settings);
std::string DateToStr(TDateTime value);
std::string DateToStr(TDateTime value, const TFormatSettings& settings);
std::string TimeToStr(TDateTime value);
std::string TimeToStr(TDateTime value, const TFormatSettings& settings);

// Text to date/time following the order of ShortDateFormat (y, m, d) with any of DateSeparator, '-',
// '/' or '.' between parts; times as h[:n[:s[.z]]] with an optional AM/PM. Two-digit years follow
// TwoDigitYearCenturyWindow; a date with two parts takes the current year. The Str* functions raise
// EConvertError "\"%s\" is not a valid date", "... time" or "... date and time".
bool TryStrToDate(const std::string& text, TDateTime& value);
bool TryStrToDate(const std::string& text, TDateTime& value, const TFormatSettings& settings);
bool TryStrToTime(const std::string& text, TDateTime& value);
bool TryStrToTime(const std::string& text, TDateTime& value, const TFormatSettings& settings);
bool TryStrToDateTime(const std::string& text, TDateTime& value);
bool TryStrToDateTime(const std::string& text, TDateTime& value, const TFormatSettings& settings);
TDateTime StrToDate(const std::string& text);
TDateTime StrToDate(const std::string& text, const TFormatSettings& settings);
TDateTime StrToTime(const std::string& text);
TDateTime StrToTime(const std::string& text, const TFormatSettings& settings);
TDateTime StrToDateTime(const std::string& text);
TDateTime StrToDateTime(const std::string& text, const TFormatSettings& settings);

} // namespace quorda
