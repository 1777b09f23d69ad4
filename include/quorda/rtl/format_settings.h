#pragma once

#include "quorda/export.h"

#include <array>
#include <string>

namespace quorda {

// How numbers, currency amounts, dates and times are written and read as text.
//
// The defaults are ISO-like ("yyyy-mm-dd", "hh:nn:ss") so that text written by one installation reads
// back unambiguously on another; only the decimal and thousand separators and the currency symbol
// follow the C library's current locale, read once at first use.
//
// In date/time format strings '/' stands for DateSeparator and ':' for TimeSeparator.
struct QUORDA_API TFormatSettings {
    char DecimalSeparator = '.';
    char ThousandSeparator = ',';
    char DateSeparator = '-';
    char TimeSeparator = ':';
    char ListSeparator = ',';

    std::string CurrencyString;
    // 0 "$1", 1 "1$", 2 "$ 1", 3 "1 $"
    unsigned char CurrencyFormat = 0;
    // 0 "($1)" ... 15 "(1 $)", the classic sixteen negative layouts
    unsigned char NegCurrFormat = 1;
    unsigned char CurrencyDecimals = 2;

    std::string ShortDateFormat = "yyyy-mm-dd";
    std::string LongDateFormat = "yyyy-mm-dd";
    std::string ShortTimeFormat = "hh:nn";
    std::string LongTimeFormat = "hh:nn:ss";
    std::string TimeAMString = "AM";
    std::string TimePMString = "PM";

    std::array<std::string, 12> ShortMonthNames{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::array<std::string, 12> LongMonthNames{"January",   "February", "March",    "April",
                                               "May",       "June",     "July",     "August",
                                               "September", "October",  "November", "December"};
    // Index 0 is Sunday, as DayOfWeek counts from Sunday = 1.
    std::array<std::string, 7> ShortDayNames{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    std::array<std::string, 7> LongDayNames{"Sunday",   "Monday", "Tuesday", "Wednesday",
                                            "Thursday", "Friday", "Saturday"};

    // Two-digit years are placed within this many years of the current year (0: current century).
    int TwoDigitYearCenturyWindow = 50;
};

// The process-wide settings used by every conversion that takes no explicit settings. The reference
// stays valid for the life of the process; changing it is not synchronised with other threads.
QUORDA_API TFormatSettings& FormatSettings();

// Fresh settings built from the defaults above and the C library's current locale.
QUORDA_API TFormatSettings DefaultFormatSettings();

} // namespace quorda
