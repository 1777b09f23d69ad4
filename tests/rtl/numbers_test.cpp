#include "quorda/rtl/currency.h"
#include "quorda/rtl/numbers.h"
#include "rtl_test_support.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <tuple>

using namespace quorda;

namespace {

using namespace testing_support;

constexpr double Inf = std::numeric_limits<double>::infinity();

// Carries through nines that add a digit or change the notation, rounding to 15 digits before the
// precision, and three-digit exponents are where the stack-buffer text could part from a plain
// decimal-digit route.
TEST(FloatText, FormatsWithPrecisionDigitsAndPictures) {
    EXPECT_EQ(Map<double>({0, -0.0, 1.5, -1.5, 0.1 + 0.2, 1.0 / 3, 2.0 / 3, 100, 123456789012345.0, 1e15,
                           1234567890123456789.0, 1e-5, 1.5e-6, -2.5e-300, std::numeric_limits<double>::max(),
                           std::numeric_limits<double>::quiet_NaN(), Inf, -Inf},
                          [](double value) { return FloatToStr(value); }),
              (Strings{"0", "0", "1.5", "-1.5", "0.3", "0.333333333333333", "0.666666666666667", "100",
                       "123456789012345", "1E15", "1.23456789012346E18", "0.00001", "1.5E-6", "-2.5E-300",
                       "1.79769313486232E308", "Nan", "+Inf", "-Inf"}));
    EXPECT_EQ(Map<double>({0.99999999999999999, 999999999999999.9, -9.9999999999999995e-6,
                           4.9406564584124654e-324, -1e-100},
                          [](double value) { return FloatToStr(value); }),
              (Strings{"1", "1E15", "-0.00001", "4.94065645841247E-324", "-1E-100"}));
    EXPECT_EQ(FloatToStrF(1234.5678, ffGeneral, 6, 0), "1234.57");
    EXPECT_EQ(FloatToStrF(1234567.0, ffGeneral, 4, 0), "1.235E6");
    EXPECT_EQ(FloatToStrF(0.1249999999999999, ffGeneral, 2, 0), "0.13");
    EXPECT_EQ(FloatToStrF(99.95, ffGeneral, 3, 0), "100");
    EXPECT_EQ(FloatToStrF(123456.789, ffGeneral, 1, 0), "1E5");
    EXPECT_EQ(FloatToStrF(1234567.891, ffNumber, 15, 2), "1,234,567.89");
    EXPECT_EQ(FloatToStrF(-1234567.891, ffNumber, 15, 2), "-1,234,567.89");
    EXPECT_EQ(FloatToStrF(999.995, ffNumber, 15, 2), "1,000.00");
    EXPECT_EQ(FloatToStrF(123, ffNumber, 15, 0), "123");
    EXPECT_EQ(FloatToStrF(-0.001, ffNumber, 15, 2), "0.00");
    EXPECT_EQ(FloatToStrF(2.5, ffFixed, 15, 0), "3");
    EXPECT_EQ(FloatToStrF(1.005, ffFixed, 15, 2), "1.01");
    EXPECT_EQ(FloatToStrF(1234567.891, ffFixed, 15, 1), "1234567.9");
    EXPECT_EQ(FloatToStrF(0.5, ffFixed, 15, -1), "0.50");
    EXPECT_EQ(FloatToStrF(1234.5, ffExponent, 4, 2), "1.235E+03");
    EXPECT_EQ(FloatToStrF(-0.00012, ffExponent, 3, 0), "-1.20E-4");
    EXPECT_EQ(FloatToStrF(1.0, ffExponent, 15, 9), "1.00000000000000E+0000");
    // The layout code picks the positive form for positive and the negative form for negative amounts.
    TFormatSettings settings;
    settings.CurrencyString = "$";
    settings.CurrencyDecimals = 2;
    const std::tuple<double, int, const char*> currency[] = {
        {1234.5, 0, "$1,234.50"},  {1234.5, 1, "1,234.50$"}, {1234.5, 2, "$ 1,234.50"},
        {1234.5, 3, "1,234.50 $"}, {-1.5, 0, "($1.50)"},     {-1.5, 1, "-$1.50"},
        {-1.5, 5, "-1.50$"},       {-1.5, 8, "-1.50 $"},     {-1.5, 12, "$ -1.50"},
        {-1.5, 15, "(1.50 $)"}};
    for (const auto& [value, layout, text] : currency) {
        settings.CurrencyFormat = settings.NegCurrFormat = static_cast<unsigned char>(layout);
        EXPECT_EQ(FloatToStrF(value, ffCurrency, 15, -1, settings), text) << value << " in layout " << layout;
    }
    const std::tuple<const char*, double, const char*> cases[] = {{"#,##0.00", 1234567.891, "1,234,567.89"},
                                                                  {"#,##0.00", -1234.5, "-1,234.50"},
                                                                  {"#,##0.00", 0, "0.00"},
                                                                  {"0.###", 0.5, "0.5"},
                                                                  {"0.###", 12345, "12345"},
                                                                  {"#.##", 0.5, ".5"},
                                                                  {"#.##", 0, ""},
                                                                  {"000", 1, "001"},
                                                                  {"000", -1234.5, "-1235"},
                                                                  {"0.00E+00", 1234567.891, "1.23E+06"},
                                                                  {"0.00E+00", 0.004, "4.00E-03"},
                                                                  {"0.0E-0", 9.99, "1.0E1"},
                                                                  {"00.0e+0", 12345, "12.3e+3"},
                                                                  {"0.00;-0.00;'zero'", 0.001, "zero"},
                                                                  {"0.00;;'zero'", -2, "-2.00"},
                                                                  {"\"#\"0", 5, "#5"},
                                                                  {"0 'items'", 3, "3 items"},
                                                                  {"", 0.25, "0.25"}};
    for (const auto& [format, value, text] : cases) {
        EXPECT_EQ(FormatFloat(format, value), text) << format << " with " << value;
    }
    EXPECT_EQ(Map<double>({1234.5, -1234.5, 0},
                          [](double value) { return FormatFloat("$#,##0.00;($#,##0.00);'zero'", value); }),
              (Strings{"$1,234.50", "($1,234.50)", "zero"}));
}

TEST(FloatText, ParsingSeparatorsIntegersAndBooleans) {
    EXPECT_EQ(Map<const char*>({"  -1.25e2 ", "+5", ".5", "5.", "1E+3", "1e-400", "0e999"},
                               [](const char* text) { return StrToFloat(text); }),
              (std::vector<double>{-125, 5, 0.5, 5, 1000, 0, 0}));
    EXPECT_EQ(StrToFloatDef("x", 7.5), 7.5);
    double value = 0;
    for (const char* bad :
         {"", " ", ".", "-", "1x", "1e", "1e+", "e5", "1 2", "1e400", "--1", "0x10", "inf", "nan"}) {
        EXPECT_FALSE(TryStrToFloat(bad, value)) << bad;
    }
    // Every text route takes the separators of the settings it is given.
    TFormatSettings settings;
    settings.DecimalSeparator = ',';
    settings.ThousandSeparator = '.';
    EXPECT_EQ(FloatToStr(1.5, settings), "1,5");
    EXPECT_EQ(FloatToStr(1.5e-6, settings), "1,5E-6");
    EXPECT_EQ(FloatToStrF(1234567.891, ffNumber, 15, 2, settings), "1.234.567,89");
    EXPECT_EQ(FormatFloat("#,##0.00", 1234567.891, settings), "1.234.567,89");
    EXPECT_EQ(CurrToStr(Currency(-1.25), settings), "-1,25");
    EXPECT_EQ(StrToFloat("-1,5e3", settings), -1500);
    EXPECT_EQ(StrToCurr("1,5", settings).Raw(), 15000);
    EXPECT_FALSE(TryStrToFloat("1.5", value, settings));
    EXPECT_FALSE(TryStrToFloat("1.000,5", value, settings)); // no thousand separators
    EXPECT_EQ(Map<const char*>({"42", " -42 ", "+7", "$FF", "0x1f", "2147483647", "-2147483648"},
                               [](const char* text) { return StrToInt(text); }),
              (std::vector<std::int32_t>{42, -42, 7, 255, 31, 2147483647,
                                         std::numeric_limits<std::int32_t>::min()}));
    EXPECT_EQ(StrToInt64("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(StrToInt64("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(StrToIntDef("x", -1), -1);
    EXPECT_EQ(StrToInt64Def("", 5), 5);
    std::int32_t whole = 0;
    for (const char* bad : {"", "-", "$", "0x", "2147483648", "-2147483649", "12a", "1 2", "1.0", "--1"}) {
        EXPECT_FALSE(TryStrToInt(bad, whole)) << bad;
    }
    std::int64_t wide = 0;
    EXPECT_FALSE(TryStrToInt64("9223372036854775808", wide));
    EXPECT_FALSE(TryStrToInt64("99999999999999999999", wide));
    EXPECT_EQ(MessageOf<EConvertError>([] { StrToInt("2147483648"); }),
              "\"2147483648\" is an invalid integer");
    EXPECT_EQ(
        Map<const char*>({"TRUE", "false", "-1", "0"}, [](const char* text) { return StrToBool(text); }),
        (std::vector<bool>{true, false, true, false}));
    EXPECT_EQ(BoolToStr(true), "-1");
    EXPECT_EQ(BoolToStr(false, true), "False");
    EXPECT_EQ(MessageOf<EConvertError>([] { StrToBool("maybe"); }), "\"maybe\" is not a valid boolean.");
}

// Half away from zero on the decimal value, from floats, text and products alike.
TEST(CurrencyValue, RoundingArithmeticAndText) {
    EXPECT_EQ(Map<double>({1.00005, -1.00005, 0.12344, 123456789012.3456},
                          [](double v) { return Currency(v).Raw(); }),
              (std::vector<std::int64_t>{10001, -10001, 1234, 1234567890123456}));
    EXPECT_EQ(Currency(2.5).Round(), 3);
    EXPECT_EQ(Currency(-2.5).Round(), -3);
    EXPECT_THROW(Currency(1e300), EIntOverflow);
    EXPECT_THROW(Currency(std::numeric_limits<double>::quiet_NaN()), EIntOverflow);
    EXPECT_THROW(Currency(std::numeric_limits<std::int64_t>::max()), EIntOverflow);
    EXPECT_EQ(StrToCurr("922337203685477.5807"), MaxCurrency);
    EXPECT_EQ(StrToCurr("-922337203685477.5808"), MinCurrency);
    EXPECT_EQ(Map<const char*>({"1.23455", "-1.23455", "1.23454999", " 1e3 "},
                               [](const char* text) { return StrToCurr(text).Raw(); }),
              (std::vector<std::int64_t>{12346, -12346, 12345, 10000000}));
    Currency value;
    for (const char* bad : {"", "x", "1.2.3", "922337203685477.5808", "1e300", "1,5"}) {
        EXPECT_FALSE(TryStrToCurr(bad, value)) << bad;
    }
    EXPECT_THROW(StrToCurr("x"), EConvertError);
    EXPECT_EQ(Currency(1.5) * Currency(2.25), Currency(3.375));
    EXPECT_EQ(Map<int>({1, 2, -2}, [](int n) { return (Currency(n) / Currency(3)).Raw(); }),
              (std::vector<std::int64_t>{3333, 6667, -6667}));
    EXPECT_EQ((Currency::FromRaw(5) * Currency(0.5)).Raw(), 3); // 0.00025 rounds away from zero
    EXPECT_EQ(Currency(1) + Currency(2) - Currency(0.5), Currency(2.5));
    EXPECT_LT(Currency(-1), Currency(0.0001));
    EXPECT_THROW(Currency(1) / Currency(), EDivByZero);
    EXPECT_THROW(MaxCurrency + Currency::FromRaw(1), EIntOverflow);
    EXPECT_THROW(-MinCurrency, EIntOverflow);
    EXPECT_THROW(MaxCurrency * Currency(2), EIntOverflow);
    EXPECT_EQ(Map<Currency>({Currency(12.5), Currency(3), Currency::FromRaw(-1), MinCurrency},
                            [](Currency amount) { return CurrToStr(amount); }),
              (Strings{"12.5", "3", "-0.0001", "-922337203685477.5808"}));
    EXPECT_EQ(Currency(0.1).ToDouble(), 0.1);
}

} // namespace
