// The native date/time layouts of the record buffer and the TDateTime view of them.

#include "db_test_support.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace quorda;

namespace {

// Days from 0001-01-01 (day 1) in the proleptic Gregorian calendar, counted independently of the rtl.
std::int32_t DayNumber(int Year, int Month, int Day) {
    int y = Year - (Month <= 2 ? 1 : 0);
    int era = y / 400;
    int yoe = y - era * 400;
    int doy = (153 * (Month + (Month > 2 ? -3 : 9)) + 2) / 5 + Day - 1;
    int doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    int sinceMarch0 = era * 146097 + doe;
    // 0000-03-01 is 306 days before 0001-01-01.
    return sinceMarch0 - 306 + 1;
}

// Year, month, day, hour, minute, second and millisecond of a value.
std::vector<int> Parts(TDateTime Value) {
    std::uint16_t y, mo, d, h, mi, s, ms;
    DecodeDateTime(Value, y, mo, d, h, mi, s, ms);
    return {y, mo, d, h, mi, s, ms};
}

class DateTimeFieldsTest : public ::testing::Test {
protected:
    void SetUp() override {
        DataSet.FieldDefs().Add("D", ftDate);
        DataSet.FieldDefs().Add("T", ftTime);
        DataSet.FieldDefs().Add("DT", ftDateTime);
        DataSet.CreateDataSet();
        DataSet.Append();
    }

    // The 8-byte native slot of a date, time or date-time field.
    TDateTimeRec Native(const std::string& Name) {
        TDateTimeRec value;
        value.DateTime = -1;
        EXPECT_EQ(DataSet.FieldByName(Name)->DataSize(), static_cast<int>(sizeof(value)));
        EXPECT_TRUE(DataSet.FieldByName(Name)->GetData(&value));
        return value;
    }

    TMemDataSet DataSet{nullptr};
};

TEST_F(DateTimeFieldsTest, DatesBefore1900AreStoredAsDayNumbers) {
    ASSERT_EQ(DayNumber(1, 1, 1), 1);
    ASSERT_EQ(DayNumber(1899, 12, 30), DateDelta);
    TField* date = DataSet.FieldByName("D");
    date->SetAsDateTime(ComposeDateTime(EncodeDate(1850, 3, 1), EncodeTime(18, 0, 0, 0)));
    EXPECT_EQ(Native("D").Date, DayNumber(1850, 3, 1));
    EXPECT_EQ(date->AsDateTime(), EncodeDate(1850, 3, 1)) << "the time of day is not kept";
    date->SetAsDateTime(EncodeDate(1, 1, 1));
    EXPECT_EQ(Native("D").Date, 1);
}

TEST_F(DateTimeFieldsTest, TimesAreMillisecondsSinceMidnight) {
    TField* time = DataSet.FieldByName("T");
    time->SetAsDateTime(EncodeTime(13, 45, 30, 123));
    EXPECT_EQ(Native("T").Time, ((13 * 60 + 45) * 60 + 30) * 1000 + 123);
    EXPECT_EQ(Parts(time->AsDateTime()), (std::vector<int>{1899, 12, 30, 13, 45, 30, 123}));
}

TEST_F(DateTimeFieldsTest, DateTimesAreMillisecondsAndKeepEveryMillisecond) {
    TField* stamp = DataSet.FieldByName("DT");
    // 1899-12-29 06:00:00.007 lies before the zero of TDateTime.
    TDateTime value = EncodeDateTime(1899, 12, 29, 6, 0, 0, 7);
    stamp->SetAsDateTime(value);
    double expected = DayNumber(1899, 12, 29) * 86400000.0 + 6 * 3600000.0 + 7;
    EXPECT_EQ(Native("DT").DateTime, expected);
    EXPECT_EQ(Parts(stamp->AsDateTime()), (std::vector<int>{1899, 12, 29, 6, 0, 0, 7}));
    EXPECT_EQ(stamp->Value().VarType(), varDate);
    for (int milli : {0, 1, 499, 998, 999}) {
        stamp->SetAsDateTime(EncodeDateTime(2024, 2, 29, 23, 59, 59, milli));
        EXPECT_EQ(Parts(stamp->AsDateTime()), (std::vector<int>{2024, 2, 29, 23, 59, 59, milli}));
    }
}

TEST_F(DateTimeFieldsTest, ConversionsOfTheSlotMatchTheFieldsView) {
    TDateTimeRec rec = DateTimeToDateTimeRec(ftTime, EncodeTime(0, 0, 1, 500));
    EXPECT_EQ(rec.Time, 1500);
    EXPECT_DOUBLE_EQ(DateTimeRecToDateTime(ftTime, rec), EncodeTime(0, 0, 1, 500));
    rec = DateTimeToDateTimeRec(ftDate, EncodeDate(2000, 1, 1));
    EXPECT_EQ(rec.Date, DayNumber(2000, 1, 1));
    TField* date = DataSet.FieldByName("D");
    date->SetAsString("1999-12-31");
    EXPECT_EQ(date->AsDateTime(), EncodeDate(1999, 12, 31));
    EXPECT_EQ(date->AsString(), "1999-12-31");
    date->SetAsString("");
    EXPECT_TRUE(date->IsNull());
    EXPECT_THROW(date->SetAsString("not a date"), EConvertError);
}

} // namespace
