// Edges where the stack-buffer float and date-time texts could part from the decimal-digit
// route they replaced: carries through nines, rounding twice, three-digit exponents, the 12-hour
// clock switched by a nested format, short years and milliseconds.

#include "quorda/rtl/datetime.h"
#include "quorda/rtl/format_settings.h"
#include "quorda/rtl/numbers.h"

#include <gtest/gtest.h>
#include <limits>

namespace quorda {
namespace {

TEST(FastTextPaths, GeneralFloatDigitEdges) {
    struct Case {
        double Value;
        int Precision;
        const char* Text;
    };
    const Case cases[] = {
        {0.99999999999999999, 15, "1"},           // the carry adds a digit in front
        {999999999999999.9, 15, "1E15"},          // ... and crosses into exponent notation
        {-9.9999999999999995e-6, 15, "-0.00001"}, // ... and back into fixed notation
        {0.1249999999999999, 2, "0.13"},          // rounded to 15 digits first, then half away from zero
        {99.95, 3, "100"},
        {4.9406564584124654e-324, 15, "4.94065645841247E-324"}, // smallest subnormal
        {-1e-100, 15, "-1E-100"},
        {123456.789, 1, "1E5"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(FloatToStrF(c.Value, ffGeneral, c.Precision, 0), c.Text) << c.Value << " @" << c.Precision;
    }
}

TEST(FastTextPaths, DateTimeFieldEdges) {
    TFormatSettings settings;
    settings.LongTimeFormat = "h:nn:ss.zzz am/pm";
    struct Case {
        const char* Format;
        TDateTime Value;
        const char* Text;
    };
    const Case cases[] = {
        {"c", EncodeDateTime(5, 1, 2, 23, 59, 59, 999), "0005-01-02 11:59:59.999 pm"},
        {"yy yyyy d/m", EncodeDateTime(999, 12, 31, 0, 0, 0, 1), "99 0999 31-12"},
        {"t 'h:nn am/pm' hh", EncodeDateTime(2020, 6, 1, 0, 7, 0, 0), "00:07 h:nn am/pm 00"},
        {"tt", EncodeDateTime(2020, 6, 1, 12, 0, 0, 40), "12:00:00.040 pm"},
        {"z zzz", EncodeTime(0, 0, 0, 7), "7 007"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(FormatDateTime(c.Format, c.Value, settings), c.Text) << c.Format;
    }
}

} // namespace
} // namespace quorda
