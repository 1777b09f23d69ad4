#include "quorda/rtl/datetime.h"
#include "rtl_test_support.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <string>
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

using testing_support::MessageOf;
using testing_support::SettingsGuard;

} // namespace

TEST(DateTimeCalendar, LandmarkDatesSerialNumbersWeekdaysAndTimeStamps) {
    // The classic day numbering: 1899-12-30 is day 0, there is no 1900-02-29, and the calendar is
    // proleptic Gregorian (1582-10-04 is 11 days before 1582-10-15). Weekdays count from Sunday = 1.
    const struct {
        Ymd Date;
        int Serial;
        int Weekday;
    } cases[] = {{{1899, 12, 30}, 0, 7},       {{1899, 12, 31}, 1, 1},       {{1899, 12, 29}, -1, 6},
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
}

TEST(DateTimeCalendar, InvalidPartsAreRefused) {
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
}

TEST(DateTimeCalendar, TimeThatRoundsToMidnightBelongsToTheNextDay) {
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
}

TEST(DateTimeCalendar, NonFiniteValuesHaveNoTimeStampAndTheClockReadsToday) {
    EXPECT_THROW(DateTimeToTimeStamp(NAN), EConvertError);
    EXPECT_THROW(DateTimeToTimeStamp(INFINITY), EConvertError);
    EXPECT_THROW(MSecsToTimeStamp(NAN), EConvertError);
    // Before 0001-01-01 there is no calendar date.
    EXPECT_EQ(Parts(MinDateTime - 1), (std::vector<int>{0, 0, 0, 0, 0, 0, 0}));

    const TDateTime today = Date();
    const TDateTime now = Now();
    EXPECT_EQ(std::trunc(today), today);
    EXPECT_GE(now, today);
    EXPECT_LT(now, today + 1.0 + 1e-6);
    EXPECT_GE(Time(), 0.0);
    EXPECT_LT(Time(), 1.0);
}

TEST(DateTimeText, DefaultFormatsAreIso) {
    const TDateTime value = EncodeDateTime(2000, 2, 29, 13, 5, 7, 8);
    EXPECT_EQ(DateTimeToStr(value), "2000-02-29 13:05:07");
    EXPECT_EQ(DateToStr(value), "2000-02-29");
    EXPECT_EQ(TimeToStr(value), "13:05:07");
    EXPECT_EQ(DateTimeToStr(EncodeDate(1, 1, 1)), "0001-01-01"); // midnight: no time part
    EXPECT_EQ(DateTimeToStr(-1.25), "1899-12-29 06:00:00");
}

TEST(DateTimeText, FormatTokens) {
    TFormatSettings settings;
    const TDateTime value = EncodeDateTime(2005, 3, 7, 0, 5, 9, 42);
    EXPECT_EQ(FormatDateTime("yyyy-mm-dd hh:nn:ss.zzz", value, settings), "2005-03-07 00:05:09.042");
    EXPECT_EQ(FormatDateTime("yy/m/d h:n:s.z", value, settings), "05-3-7 0:5:9.42");
    EXPECT_EQ(FormatDateTime("ddd dddd mmm mmmm", value, settings), "Mon Monday Mar March");
    EXPECT_EQ(FormatDateTime("h:mm am/pm", value, settings), "12:05 am");
    EXPECT_EQ(FormatDateTime("hh:mm AM/PM", value + 0.5, settings), "12:05 PM");
    EXPECT_EQ(FormatDateTime("h a/p", value + 0.55, settings), "1 p");
    EXPECT_EQ(FormatDateTime("hh ampm", value + 0.75, settings), "06 PM");
    EXPECT_EQ(FormatDateTime("'Day' d \"of\" mmmm", value, settings), "Day 7 of March");
    EXPECT_EQ(FormatDateTime("c", value, settings), "2005-03-07 00:05:09");
    EXPECT_EQ(FormatDateTime("ddddd t", value, settings), "2005-03-07 00:05");

    settings.DateSeparator = '.';
    settings.TimeSeparator = 'h';
    settings.ShortDateFormat = "dd/mm/yyyy";
    EXPECT_EQ(FormatDateTime("c", value, settings), "07.03.2005 00h05h09");
    EXPECT_EQ(FormatDateTime("hh:nn", value, settings), "00h05");
    // A format that names itself stops instead of recursing forever.
    settings.ShortDateFormat = "ddddd";
    EXPECT_EQ(FormatDateTime("ddddd", value, settings), "");
}

TEST(DateTimeText, ParseDatesAndTimes) {
    EXPECT_EQ(StrToDate("2000-02-29"), EncodeDate(2000, 2, 29));
    EXPECT_EQ(StrToDate(" 0001-01-01 "), MinDateTime);
    EXPECT_EQ(StrToTime("13:05:07.008"), EncodeTime(13, 5, 7, 8));
    EXPECT_EQ(StrToTime("13:05"), EncodeTime(13, 5, 0, 0));
    EXPECT_EQ(StrToTime("1:05 PM"), EncodeTime(13, 5, 0, 0));
    EXPECT_EQ(StrToTime("12:00 am"), 0.0);
    EXPECT_EQ(StrToTime("10:00:00.5"), EncodeTime(10, 0, 0, 500));
    EXPECT_EQ(StrToDateTime("2000-02-29 13:05:07"), EncodeDateTime(2000, 2, 29, 13, 5, 7, 0));
    EXPECT_EQ(StrToDateTime("2000-02-29T13:05:07.250"), EncodeDateTime(2000, 2, 29, 13, 5, 7, 250));
    EXPECT_EQ(StrToDateTime("1899-12-29 06:00"), -1.25);
    EXPECT_EQ(StrToDateTime("2000-02-29"), EncodeDate(2000, 2, 29));
    EXPECT_EQ(StrToDateTime("06:30"), EncodeTime(6, 30, 0, 0));

    TFormatSettings dmy;
    dmy.ShortDateFormat = "dd/mm/yyyy";
    dmy.DateSeparator = '/';
    EXPECT_EQ(StrToDate("29/02/2000", dmy), EncodeDate(2000, 2, 29));
    EXPECT_EQ(StrToDate("1.3.1900", dmy), EncodeDate(1900, 3, 1));
    // Two-digit years fall within 50 years of today.
    EXPECT_EQ(StrToDate("28/02/99", dmy), EncodeDate(1999, 2, 28));
    EXPECT_EQ(StrToDate("01/01/24", dmy), EncodeDate(2024, 1, 1));

    TDateTime value = 0;
    for (const char* bad :
         {"", "2000-02-30", "2000-02", "2000--02-01", "x2000-01-01", "2000-01-01-", "12345-1-1"}) {
        EXPECT_FALSE(TryStrToDate(bad, value)) << bad;
    }
    for (const char* bad : {"", "24:00", "12:60", "13:00 PM", "1:2:3:4", "12:00:00.", "12", "12:00x"}) {
        EXPECT_FALSE(TryStrToTime(bad, value)) << bad;
    }
    EXPECT_THROW(StrToDate("2000-02-30"), EConvertError);
    EXPECT_THROW(StrToTime("25:00"), EConvertError);
    EXPECT_THROW(StrToDateTime("2000-01-01 25:00"), EConvertError);
}

TEST(DateTimeText, ShortFormsFollowTheGlobalSettings) {
    SettingsGuard guard;
    FormatSettings().ShortDateFormat = "mm/dd/yyyy";
    FormatSettings().DateSeparator = '/';
    const TDateTime value = EncodeDateTime(2001, 2, 3, 4, 5, 6, 0);
    EXPECT_EQ(DateTimeToStr(value), "02/03/2001 04:05:06");
    EXPECT_EQ(StrToDateTime("02/03/2001 04:05:06"), value);
}
