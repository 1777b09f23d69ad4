// A time stamp read from a record buffer converts in integers where it can; every value must come out
// bit for bit as the calendar's own split and composition give it.

#include "quorda/db/field.h"
#include "quorda/rtl/datetime.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace quorda;

namespace {

TEST(DateTimeRec, TimeStampReadsAsTheCalendarComposesIt) {
    constexpr double day = MSecsPerDay;
    const double values[] = {
        0,                                  // day 0, before the calendar
        1,                                  // its first millisecond
        day,                                // 0001-01-01
        2 * day - 1,                        // its last millisecond
        (DateDelta - 1) * day + 43'200'000, // 1899-12-29 noon: a negative TDateTime
        DateDelta * day - 1,                // the last millisecond before day 0 of TDateTime
        DateDelta * day,                    // 1899-12-30
        DateDelta * day + 1.75,             // a fraction is cut
        (DateDelta + 46'000) * day + 45'296'789,
        3'652'059 * day + day - 1, // 9999-12-31 23:59:59.999
        3'652'060 * day,           // past the calendar
        -day - 1,                  // before day 0
    };
    for (const double value : values) {
        TDateTimeRec rec{};
        rec.DateTime = value;
        const TDateTime expected = TimeStampToDateTime(MSecsToTimeStamp(std::trunc(value)));
        EXPECT_EQ(DateTimeRecToDateTime(ftDateTime, rec), expected) << value;
    }
    TDateTimeRec invalid{};
    invalid.DateTime = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THROW(DateTimeRecToDateTime(ftDateTime, invalid), EConvertError);
}

} // namespace
