#include "quorda/rtl/datetime.h"
#include "rtl_test_support.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <tuple>
#include <vector>

using namespace quorda;

namespace {

struct Ymd {
    int Year, Month, Day;
};

// Year, month, day, hour, minute, second and millisecond of a value.
std::vector<int> Parts(TDateTime value) {
    std::uint16_t y, m, d, h, n, s, z;
    DecodeDateTime(value, y, m, d, h, n, s, z);
    return {y, m, d, h, n, s, z};
}

using namespace testing_support;

} // namespace

TEST(DateTimeCalendar, CalendarTextAndParsing) {
    // The classic day numbering: 1899-12-30 is day 0, there is no 1900-02-29, and the calendar is
    // proleptic Gregorian (1582-10-04 is 11 days before 1582-10-15). Weekdays count from Sunday = 1.
    const std::tuple<Ymd, int, int> cases[] = {
        {{1899, 12, 30}, 0, 7},       {{1899, 12, 31}, 1, 1},       {{1899, 12, 29}, -1, 6},
        {{1900, 1, 1}, 2, 2},         {{1900, 2, 28}, 60, 4},       {{1900, 3, 1}, 61, 5},
        {{2000, 1, 1}, 36526, 7},     {{2000, 2, 29}, 36585, 3},    {{1, 1, 1}, -693593, 2},
        {{9999, 12, 31}, 2958465, 6}, {{1582, 10, 15}, -115858, 6}, {{1582, 10, 4}, -115869, 2},
        {{2024, 6, 2}, 45445, 1}};
    for (const auto& [date, serial, weekday] : cases) {
        SCOPED_TRACE(testing::Message() << date.Year << "-" << date.Month << "-" << date.Day);
        EXPECT_EQ(EncodeDate(date.Year, date.Month, date.Day), serial);
        EXPECT_EQ(DayOfWeek(serial), weekday);
        // The last millisecond of the day keeps its day in the time stamp and back.
        const TDateTime value = EncodeDateTime(date.Year, date.Month, date.Day, 23, 59, 59, 999);
        const TTimeStamp stamp = DateTimeToTimeStamp(value);
        EXPECT_EQ(stamp.Date, serial + DateDelta);
        EXPECT_EQ(stamp.Time, MSecsPerDay - 1);
        EXPECT_EQ(TimeStampToDateTime(stamp), value);
        EXPECT_EQ(TimeStampToMSecs(stamp), double(stamp.Date) * MSecsPerDay + stamp.Time);
        EXPECT_EQ(MSecsToTimeStamp(TimeStampToMSecs(stamp)), stamp);
        EXPECT_EQ(Parts(value), (std::vector<int>{date.Year, date.Month, date.Day, 23, 59, 59, 999}));
        // 7 ms is the classic victim of decoding that rounds the wrong way.
        EXPECT_EQ(Parts(EncodeDateTime(date.Year, date.Month, date.Day, 12, 0, 0, 7))[6], 7);
    }
    // Before day 0 the time of day still counts forwards: -1.25 is 1899-12-29 06:00, a Friday.
    EXPECT_EQ(EncodeDateTime(1899, 12, 29, 6, 0, 0, 0), -1.25);
    EXPECT_EQ(DayOfWeek(-1.25), 6);
    EXPECT_EQ(DateTimeToTimeStamp(-1.25), (TTimeStamp{6 * 3600000, DateDelta - 1}));
    EXPECT_EQ(TimeStampToDateTime(DateTimeToTimeStamp(-1.25)), -1.25);
    TDateTime value = 0;
    EXPECT_TRUE(TryEncodeDate(2000, 2, 29, value));
    const Ymd badDates[] = {{1900, 2, 29}, {0, 1, 1}, {10000, 1, 1}, {2000, 13, 1}, {2000, 4, 31}};
    for (const Ymd& d : badDates) {
        EXPECT_FALSE(TryEncodeDate(d.Year, d.Month, d.Day, value))
            << d.Year << "-" << d.Month << "-" << d.Day;
    }
    const int badTimes[][4] = {{24, 0, 0, 0}, {0, 60, 0, 0}, {0, 0, 60, 0}, {0, 0, 0, 1000}, {-1, 0, 0, 0}};
    for (const auto& t : badTimes) {
        EXPECT_FALSE(TryEncodeTime(t[0], t[1], t[2], t[3], value)) << t[0] << ":" << t[1] << ":" << t[2];
    }
    EXPECT_THROW(EncodeDate(2023, 2, 30), EConvertError);
    EXPECT_EQ(MessageOf<EConvertError>([] { EncodeTime(24, 0, 0, 0); }), "Invalid argument to time encode");
    // Day 0 and day -5 with a time a hair before 24:00.
    EXPECT_EQ(Parts(0.99999999999), (std::vector<int>{1899, 12, 31, 0, 0, 0, 0}));
    EXPECT_EQ(Parts(-5.99999999999), (std::vector<int>{1899, 12, 26, 0, 0, 0, 0}));
    EXPECT_EQ(DateTimeToTimeStamp(-5.99999999999).Date, DateDelta - 4);
    // Halves of a millisecond round away from zero.
    for (auto [msecs, time] : {std::pair{1000.5, 1001}, {1000.4999, 1000}, {-1000.5, -1001}}) {
        EXPECT_EQ(MSecsToTimeStamp(msecs).Time, time) << msecs;
    }
    // Whole milliseconds split in integers; a quarter millisecond further from zero takes the
    // floating-point route and must land on the same stamp, across the calendar and its day edges.
    std::mt19937_64 random(7);
    std::uniform_int_distribution<std::int64_t> any(-3652059LL * MSecsPerDay, 3652059LL * MSecsPerDay);
    std::vector<double> values = {0, 1, -1, MSecsPerDay, -MSecsPerDay, double(DateDelta) * MSecsPerDay - 1};
    for (int i = 0; i < 2000; ++i) {
        values.push_back(double(any(random)));
    }
    for (double msecs : values) {
        ASSERT_EQ(MSecsToTimeStamp(msecs), MSecsToTimeStamp(msecs + std::copysign(0.25, msecs))) << msecs;
    }
    EXPECT_THROW(DateTimeToTimeStamp(NAN), EConvertError);
    EXPECT_THROW(DateTimeToTimeStamp(INFINITY), EConvertError);
    EXPECT_THROW(MSecsToTimeStamp(NAN), EConvertError);
    // Before 0001-01-01 there is no calendar date.
    EXPECT_EQ(Parts(MinDateTime - 1), (std::vector<int>{0, 0, 0, 0, 0, 0, 0}));
    // The clock reads today.
    const TDateTime today = Date();
    const TDateTime now = Now();
    EXPECT_EQ(std::trunc(today), today);
    EXPECT_GE(now, today);
    EXPECT_LT(now, today + 1.0 + 1e-6);
    EXPECT_GE(Time(), 0.0);
    EXPECT_LT(Time(), 1.0);
    const TDateTime sample = EncodeDateTime(2005, 3, 7, 0, 5, 9, 42);
    EXPECT_EQ(DateTimeToStr(-1.25), "1899-12-29 06:00:00");
    EXPECT_EQ(DateTimeToStr(EncodeDate(1, 1, 1)), "0001-01-01"); // midnight: no time part
    EXPECT_EQ(DateToStr(sample) + "|" + TimeToStr(sample), "2005-03-07|00:05:09");
    TFormatSettings settings;
    const std::tuple<const char*, double, const char*> formats[] = {
        {"yyyy-mm-dd hh:nn:ss.zzz", 0, "2005-03-07 00:05:09.042"},
        {"yy/m/d h:n:s.z", 0, "05-3-7 0:5:9.42"},
        {"ddd dddd mmm mmmm", 0, "Mon Monday Mar March"},
        {"h:mm am/pm", 0, "12:05 am"},
        {"hh:mm AM/PM", 0.5, "12:05 PM"},
        {"h a/p", 0.55, "1 p"},
        {"hh ampm", 0.75, "06 PM"},
        {"'Day' d \"of\" mmmm", 0, "Day 7 of March"},
        {"c", 0, "2005-03-07 00:05:09"},
        {"ddddd t", 0, "2005-03-07 00:05"}};
    for (const auto& [format, offset, text] : formats) {
        EXPECT_EQ(FormatDateTime(format, sample + offset, settings), text) << format;
    }
    settings.DateSeparator = '.';
    settings.TimeSeparator = 'h';
    settings.ShortDateFormat = "dd/mm/yyyy";
    EXPECT_EQ(FormatDateTime("c", sample, settings), "07.03.2005 00h05h09");
    EXPECT_EQ(FormatDateTime("hh:nn", sample, settings), "00h05");
    // A format that names itself stops instead of recursing forever.
    settings.ShortDateFormat = "ddddd";
    EXPECT_EQ(FormatDateTime("ddddd", sample, settings), "");
    // Nested formats that switch to the 12-hour clock, short years, milliseconds and the edges of
    // the year: where the stack-buffer text could part from the field-by-field route.
    TFormatSettings clock;
    clock.LongTimeFormat = "h:nn:ss.zzz am/pm";
    const std::tuple<const char*, TDateTime, const char*> edges[] = {
        {"c", EncodeDateTime(5, 1, 2, 23, 59, 59, 999), "0005-01-02 11:59:59.999 pm"},
        {"yy yyyy d/m", EncodeDateTime(999, 12, 31, 0, 0, 0, 1), "99 0999 31-12"},
        {"t 'h:nn am/pm' hh", EncodeDateTime(2020, 6, 1, 0, 7, 0, 0), "00:07 h:nn am/pm 00"},
        {"tt", EncodeDateTime(2020, 6, 1, 12, 0, 0, 40), "12:00:00.040 pm"},
        {"z zzz", EncodeTime(0, 0, 0, 7), "7 007"}};
    for (const auto& [format, edge, text] : edges) {
        EXPECT_EQ(FormatDateTime(format, edge, clock), text) << format;
    }
    EXPECT_EQ(StrToDate("2000-02-29"), EncodeDate(2000, 2, 29));
    EXPECT_EQ(StrToDate(" 0001-01-01 "), MinDateTime);
    EXPECT_EQ(Map<const char*>({"13:05:07.008", "13:05", "1:05 PM", "12:00 am", "10:00:00.5"},
                               [](const char* text) { return StrToTime(text); }),
              (std::vector<TDateTime>{EncodeTime(13, 5, 7, 8), EncodeTime(13, 5, 0, 0),
                                      EncodeTime(13, 5, 0, 0), 0.0, EncodeTime(10, 0, 0, 500)}));
    EXPECT_EQ(StrToDateTime("2000-02-29 13:05:07"), EncodeDateTime(2000, 2, 29, 13, 5, 7, 0));
    EXPECT_EQ(StrToDateTime("2000-02-29T13:05:07.250"), EncodeDateTime(2000, 2, 29, 13, 5, 7, 250));
    EXPECT_EQ(StrToDateTime("1899-12-29 06:00"), -1.25);
    EXPECT_EQ(StrToDateTime("2000-02-29"), EncodeDate(2000, 2, 29));
    EXPECT_EQ(StrToDateTime("06:30"), EncodeTime(6, 30, 0, 0));
    // Day first; two-digit years fall within 50 years of today.
    TFormatSettings dmy;
    dmy.ShortDateFormat = "dd/mm/yyyy";
    dmy.DateSeparator = '/';
    EXPECT_EQ(Map<const char*>({"29/02/2000", "1.3.1900", "28/02/99", "01/01/24"},
                               [&](const char* text) { return StrToDate(text, dmy); }),
              (std::vector<TDateTime>{EncodeDate(2000, 2, 29), EncodeDate(1900, 3, 1),
                                      EncodeDate(1999, 2, 28), EncodeDate(2024, 1, 1)}));
    TDateTime parsed = 0;
    for (const char* bad :
         {"", "2000-02-30", "2000-02", "2000--02-01", "x2000-01-01", "2000-01-01-", "12345-1-1"}) {
        EXPECT_FALSE(TryStrToDate(bad, parsed)) << bad;
    }
    for (const char* bad : {"", "24:00", "12:60", "13:00 PM", "1:2:3:4", "12:00:00.", "12", "12:00x"}) {
        EXPECT_FALSE(TryStrToTime(bad, parsed)) << bad;
    }
    EXPECT_THROW(StrToDate("2000-02-30"), EConvertError);
    EXPECT_THROW(StrToTime("25:00"), EConvertError);
    EXPECT_THROW(StrToDateTime("2000-01-01 25:00"), EConvertError);
    // The short forms follow the global settings both ways.
    SettingsGuard guard;
    FormatSettings().ShortDateFormat = "mm/dd/yyyy";
    FormatSettings().DateSeparator = '/';
    EXPECT_EQ(DateTimeToStr(EncodeDateTime(2001, 2, 3, 4, 5, 6, 0)), "02/03/2001 04:05:06");
    EXPECT_EQ(StrToDateTime("02/03/2001 04:05:06"), EncodeDateTime(2001, 2, 3, 4, 5, 6, 0));
}
