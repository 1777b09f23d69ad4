// Values as text and back: floating-point and currency text, dates and times, and the variant's
// conversions, arrays and comparisons.
#include "quorda/rtl/currency.h"
#include "quorda/rtl/datetime.h"
#include "quorda/rtl/numbers.h"
#include "quorda/rtl/variant.h"
#include "rtl_test_support.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

using namespace quorda;

namespace {

using namespace testing_support;

struct Ymd {
    int Year, Month, Day;
};

// Year, month, day, hour, minute, second and millisecond of a value.
std::vector<int> Parts(TDateTime value) {
    std::uint16_t y, m, d, h, n, s, z;
    DecodeDateTime(value, y, m, d, h, n, s, z);
    return {y, m, d, h, n, s, z};
}

// What Target reads from each source: the value as text, or "cast" / "overflow" for the error raised.
template <typename T>
Strings Reads(std::initializer_list<Variant> Sources, T (Variant::*Target)() const) {
    return Map(Sources, [Target](const Variant& source) -> std::string {
        try {
            const T value = (source.*Target)();
            if constexpr (std::is_same_v<T, Currency>) {
                return CurrToStr(value);
            } else {
                std::ostringstream text;
                text << std::boolalpha << value;
                return text.str();
            }
        } catch (const EVariantOverflowError&) {
            return "overflow";
        } catch (const EVariantTypeCastError&) {
            return "cast";
        }
    });
}

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double Inf = std::numeric_limits<double>::infinity();
const TDateTime LeapNoon = EncodeDateTime(2000, 2, 29, 12, 0, 0, 0);

TEST(FloatText, FormatsParsingSeparatorsIntegersBooleansAndCurrency) {
    EXPECT_EQ(Map<const char*>({"  -1.25e2 ", "+5", ".5", "5.", "1E+3", "1e-400", "0e999"},
                               [](const char* text) { return StrToFloat(text); }),
              (std::vector<double>{-125, 5, 0.5, 5, 1000, 0, 0}));
    EXPECT_EQ(StrToFloatDef("x", 7.5), 7.5);
    double parsedFloat = 0;
    for (const char* bad :
         {"", " ", ".", "-", "1x", "1e", "1e+", "e5", "1 2", "1e400", "--1", "0x10", "inf", "nan"}) {
        EXPECT_FALSE(TryStrToFloat(bad, parsedFloat)) << bad;
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
    EXPECT_FALSE(TryStrToFloat("1.5", parsedFloat, settings));
    EXPECT_FALSE(TryStrToFloat("1.000,5", parsedFloat, settings)); // no thousand separators
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
    // Half away from zero on the decimal value, from floats, text and products alike.
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
    Currency parsedAmount;
    for (const char* bad : {"", "x", "1.2.3", "922337203685477.5808", "1e300", "1,5"}) {
        EXPECT_FALSE(TryStrToCurr(bad, parsedAmount)) << bad;
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
    // Carries through nines that add a digit or change the notation, rounding to 15 digits before the
    // precision, and three-digit exponents are where the stack-buffer text could part from a plain
    // decimal-digit route.
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
    EXPECT_EQ((Strings{FloatToStrF(1234.5678, ffGeneral, 6, 0), FloatToStrF(1234567.0, ffGeneral, 4, 0),
                       FloatToStrF(0.1249999999999999, ffGeneral, 2, 0), FloatToStrF(99.95, ffGeneral, 3, 0),
                       FloatToStrF(123456.789, ffGeneral, 1, 0), FloatToStrF(1234567.891, ffNumber, 15, 2),
                       FloatToStrF(-1234567.891, ffNumber, 15, 2), FloatToStrF(999.995, ffNumber, 15, 2),
                       FloatToStrF(123, ffNumber, 15, 0), FloatToStrF(-0.001, ffNumber, 15, 2),
                       FloatToStrF(2.5, ffFixed, 15, 0), FloatToStrF(1.005, ffFixed, 15, 2),
                       FloatToStrF(1234567.891, ffFixed, 15, 1), FloatToStrF(0.5, ffFixed, 15, -1),
                       FloatToStrF(1234.5, ffExponent, 4, 2), FloatToStrF(-0.00012, ffExponent, 3, 0),
                       FloatToStrF(1.0, ffExponent, 15, 9)}),
              (Strings{"1234.57", "1.235E6", "0.13", "100", "1E5", "1,234,567.89", "-1,234,567.89",
                       "1,000.00", "123", "0.00", "3", "1.01", "1234567.9", "0.50", "1.235E+03", "-1.20E-4",
                       "1.00000000000000E+0000"}));
    // The layout code picks the positive form for positive and the negative form for negative amounts.
    TFormatSettings currencySettings;
    currencySettings.CurrencyString = "$";
    currencySettings.CurrencyDecimals = 2;
    const std::tuple<double, int, const char*> currency[] = {
        {1234.5, 0, "$1,234.50"},  {1234.5, 1, "1,234.50$"}, {1234.5, 2, "$ 1,234.50"},
        {1234.5, 3, "1,234.50 $"}, {-1.5, 0, "($1.50)"},     {-1.5, 1, "-$1.50"},
        {-1.5, 5, "-1.50$"},       {-1.5, 8, "-1.50 $"},     {-1.5, 12, "$ -1.50"},
        {-1.5, 15, "(1.50 $)"}};
    for (const auto& [value, layout, text] : currency) {
        currencySettings.CurrencyFormat = currencySettings.NegCurrFormat = static_cast<unsigned char>(layout);
        EXPECT_EQ(FloatToStrF(value, ffCurrency, 15, -1, currencySettings), text)
            << value << " in layout " << layout;
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

} // namespace

TEST(DateTimeAndVariant, CalendarTextConversionsArraysAndComparisons) {
    EXPECT_EQ(Map<Variant>({Variant(), Variant::Null(), Variant(true), Variant(std::int16_t(1)), Variant(1),
                            Variant(std::int64_t(1)), Variant(1LL), Variant(std::uint8_t(1)),
                            Variant(std::uint16_t(1)), Variant(1u), Variant(std::uint64_t(1)), Variant(1.0f),
                            Variant(1.0), Variant(Currency(1)), Variant::FromDateTime(1.0), Variant("x"),
                            Variant(std::string("x"))},
                           [](const Variant& value) { return value.VarType(); }),
              (std::vector<TVarType>{varEmpty, varNull, varBoolean, varSmallint, varInteger, varInt64,
                                     varInt64, varByte, varWord, varLongWord, varQWord, varSingle, varDouble,
                                     varCurrency, varDate, varString, varString}));
    EXPECT_EQ((std::vector<bool>{VarIsOrdinal(Variant(true)), VarIsFloat(Variant(Currency(1))),
                                 VarIsFloat(Variant::FromDateTime(1)),
                                 VarIsNumeric(Variant(std::uint64_t(1))), VarIsNumeric(Variant("1")),
                                 VarIsStr(Variant("")), VarIsClear(Variant()), VarIsClear(Variant::Null())}),
              (std::vector<bool>{true, true, false, true, false, true, true, false}));
    // Empty reads as zero, Null refuses every target except text; strings convert only when they are
    // numbers; floats and currency round half to even; what does not fit overflows.
    EXPECT_EQ(Reads({Variant(), Variant::Null(), "12", "1x", "12.5", "3000000000", true, false, 2.5, 3.5,
                     -2.5, 2.6, Currency(2.5), Currency(-3.5), 3e9, std::int64_t(1) << 40},
                    &Variant::AsInteger),
              (Strings{"0", "cast", "12", "cast", "cast", "cast", "-1", "0", "2", "4", "-2", "3", "2", "-4",
                       "overflow", "overflow"}));
    EXPECT_EQ(Reads({Variant::Null(), " -12 ", "3000000000", 3e9, 1e300, NaN,
                     std::numeric_limits<std::uint64_t>::max()},
                    &Variant::AsInt64),
              (Strings{"cast", "-12", "3000000000", "3000000000", "overflow", "overflow", "overflow"}));
    EXPECT_EQ(Reads({Variant(), Variant::Null(), "12.5", "", "1,5", true, Currency(12)}, &Variant::AsDouble),
              (Strings{"0", "cast", "12.5", "cast", "cast", "-1", "12"}));
    // Beyond the currency range a float does not convert at all.
    EXPECT_EQ(Reads({Variant(), Variant::Null(), "1.23456", 1e300}, &Variant::AsCurrency),
              (Strings{"0", "cast", "1.2346", "cast"}));
    EXPECT_EQ(Reads({Variant(), Variant::Null(), "true", "FALSE", "0", "-2", 0.5, Currency(), "yes"},
                    &Variant::AsBoolean),
              (Strings{"false", "cast", "true", "false", "false", "true", "true", "false", "cast"}));
    EXPECT_EQ(Reads({Variant(), Variant::Null(), true, false, std::numeric_limits<std::uint64_t>::max(),
                     std::numeric_limits<std::int64_t>::min(), 0.1f, 0.1, Currency::FromRaw(-15),
                     Variant::FromDateTime(LeapNoon), Variant::FromDateTime(0.5)},
                    &Variant::AsString),
              (Strings{"", "", "True", "False", "18446744073709551615", "-9223372036854775808", "0.1", "0.1",
                       "-0.0015", "2000-02-29 12:00:00", "12:00:00"}));
    EXPECT_EQ(Reads({Variant(), Variant::Null(), "2000-02-29 12:00", 36526, "not a date", 1e9},
                    &Variant::AsDateTime),
              (Strings{"0", "cast", "36585.5", "36526", "cast", "cast"}));
    EXPECT_EQ(VarToStr(Variant::Null()), "");
    // The messages name both types.
    EXPECT_EQ(MessageOf<EVariantTypeCastError>([] { Variant::Null().AsInteger(); }),
              "Could not convert variant of type (Null) into type (Integer)");
    EXPECT_EQ(MessageOf<EVariantTypeCastError>([] { Variant("yes").AsBoolean(); }),
              "Could not convert variant of type (String) into type (Boolean)");
    EXPECT_EQ(MessageOf<EVariantOverflowError>([] { Variant(3e9).AsInteger(); }),
              "Overflow while converting variant of type (Double) into type (Integer)");
    EXPECT_EQ(MessageOf<EVariantOverflowError>([] { VarAsType(Variant(300), varByte); }),
              "Overflow while converting variant of type (Integer) into type (Byte)");
    EXPECT_EQ(VarAsType(Variant(" 7 "), varSmallint).VarType(), varSmallint);
    EXPECT_EQ(VarAsType(Variant(2.0), varString).AsString(), "2");
    Variant a = VarArrayCreate(2, 4);
    EXPECT_EQ(a.VarType(), varArray | varVariant);
    EXPECT_TRUE(VarIsArray(a));
    EXPECT_EQ((std::vector<int>{VarArrayDimCount(a), VarArrayLowBound(a), VarArrayHighBound(a)}),
              (std::vector<int>{1, 2, 4}));
    EXPECT_TRUE(VarIsEmpty(a[3]));
    a.SetArrayElement(2, "two");
    a[4] = 4.5;
    EXPECT_EQ(a.ArrayElement(2).AsString(), "two");
    EXPECT_EQ(a[4].AsDouble(), 4.5);
    EXPECT_EQ(MessageOf<EVariantBadIndexError>([&] { a.ArrayElement(1); }),
              "Variant array index out of bounds");
    EXPECT_THROW(a.SetArrayElement(5, 1), EVariantBadIndexError);
    EXPECT_THROW(a[5], EVariantBadIndexError);
    EXPECT_THROW(VarArrayHighBound(a, 2), EVariantInvalidArgError);
    EXPECT_EQ(MessageOf<EVariantTypeCastError>([&] { a.AsInteger(); }),
              "Could not convert variant of type (Array of Variant) into type (Integer)");
    EXPECT_THROW(a.AsString(), EVariantTypeCastError);
    const Variant scalar = 1;
    EXPECT_EQ(VarArrayDimCount(scalar), 0);
    EXPECT_THROW(VarArrayLowBound(scalar), EVariantInvalidArgError);
    EXPECT_THROW(scalar[0], EVariantInvalidArgError);
    const Variant none = VarArrayCreate(0, -1);
    EXPECT_EQ(VarArrayHighBound(none), -1);
    EXPECT_THROW(VarArrayCreate(0, -2), EVariantInvalidArgError);
    const Variant list = VarArrayOf({1, "x", Variant::Null()});
    EXPECT_EQ((std::vector<int>{VarArrayLowBound(list), VarArrayHighBound(list)}), (std::vector<int>{0, 2}));
    EXPECT_TRUE(VarIsNull(list[2]));
    // Copies are deep.
    a = VarArrayOf({1, VarArrayOf({2, 3})});
    Variant b = a;
    b[0] = 10;
    b[1][0] = 20;
    EXPECT_EQ(a[0].AsInteger(), 1);
    EXPECT_EQ(a[1][0].AsInteger(), 2);
    EXPECT_EQ(b[1][0].AsInteger(), 20);
    // An array stored into itself, and an element assigned over its array.
    a.SetArrayElement(0, a);
    EXPECT_EQ(a[0][0].AsInteger(), 1);
    a[1] = a;
    EXPECT_TRUE(VarIsArray(a[1][1]));
    a = a[1][1];
    EXPECT_EQ(a[0].AsInteger(), 2);
    a = std::move(a[1]);
    EXPECT_EQ(a.AsInteger(), 3);
    Variant moved = VarArrayOf({1});
    Variant target = std::move(moved);
    EXPECT_TRUE(VarIsEmpty(moved)); // NOLINT(bugprone-use-after-move): a moved-from variant is Empty
    EXPECT_EQ(target[0].AsInteger(), 1);
    // Null = Null is True (the loose rule), Null and Empty equal nothing else; across kinds values compare
    // by value, strings as numbers when the other side is one (exactly, not through a double).
    const Variant null = Variant::Null(), empty, big = 9007199254740993LL, below = 9007199254740992LL;
    const Variant digits = "9007199254740993", y2k = Variant::FromDateTime(EncodeDate(2000, 1, 1)),
                  y2kText = "2000-01-01", day = Variant::FromDateTime(36526.5), cur = Currency(1.5);
    const Variant u64 = std::numeric_limits<std::uint64_t>::max(),
                  i64 = std::numeric_limits<std::int64_t>::max();
    const Variant pair = VarArrayOf({1, "a"}), same = VarArrayOf({1.0, "a"}), other = VarArrayOf({1, "b"});
    const std::tuple<Variant, Variant, bool> equality[] = {
        {null, null, true},     {null, 0, false},       {null, "", false},    {empty, empty, true},
        {empty, 0, false},      {empty, "", false},     {empty, null, false}, {1, 1.0, true},
        {short(7), 7ULL, true}, {Currency(2), 2, true}, {"1", 1, true},       {1, "1.0", true},
        {"abc", "ABC", false},  {"abc", "abc", true},   {true, 5, true},      {false, 5, false},
        {true, "True", true},   {true, "true", false},  {day, 36526.5, true}, {y2k, y2kText, true},
        {pair, same, true},     {pair, other, false},   {cur, 1.5, true},     {digits, big, true},
        {digits, below, false}};
    for (std::size_t i = 0; i < std::size(equality); ++i) {
        const auto& [left, right, equal] = equality[i];
        EXPECT_EQ(left == right, equal) << "row " << i;
        EXPECT_EQ(left != right, !equal) << "row " << i;
    }
    const std::tuple<Variant, Variant, TVariantRelationship> order[] = {
        {empty, null, vrLessThan}, {null, -5, vrLessThan},    {"a", null, vrGreaterThan},
        {1, 2.5, vrLessThan},      {"b", "a", vrGreaterThan}, {u64, i64, vrGreaterThan},
        {-1, u64, vrLessThan},     {NaN, 1.0, vrNotEqual},    {pair, VarArrayOf({1}), vrNotEqual}};
    for (std::size_t i = 0; i < std::size(order); ++i) {
        EXPECT_EQ(VarCompareValue(std::get<0>(order[i]), std::get<1>(order[i])), std::get<2>(order[i]))
            << "row " << i;
    }
    EXPECT_THROW((void)(Variant("abc") == Variant(1)), EVariantTypeCastError);
    EXPECT_EQ(MessageOf<EVariantInvalidOpError>([&] { (void)(pair == Variant(1)); }),
              "Invalid variant operation");
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
    SettingsGuard dateGuard;
    FormatSettings().ShortDateFormat = "mm/dd/yyyy";
    FormatSettings().DateSeparator = '/';
    EXPECT_EQ(DateTimeToStr(EncodeDateTime(2001, 2, 3, 4, 5, 6, 0)), "02/03/2001 04:05:06");
    EXPECT_EQ(StrToDateTime("02/03/2001 04:05:06"), EncodeDateTime(2001, 2, 3, 4, 5, 6, 0));
    // Text follows the global decimal separator.
    SettingsGuard guard;
    FormatSettings().DecimalSeparator = ',';
    EXPECT_EQ(Reads({"1,5", "1.5"}, &Variant::AsDouble), (Strings{"1.5", "cast"}));
    EXPECT_EQ(Variant(2.25).AsString(), "2,25");
}
