#include "quorda/rtl/variant.h"
#include "rtl_test_support.h"

#include <gtest/gtest.h>
#include <limits>
#include <sstream>
#include <tuple>
#include <type_traits>

using namespace quorda;

namespace {

using namespace testing_support;

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
const TDateTime LeapNoon = EncodeDateTime(2000, 2, 29, 12, 0, 0, 0);

} // namespace

TEST(VariantConversion, TypeCodesEveryTargetAndArrays) {
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
    // Text follows the global decimal separator.
    SettingsGuard guard;
    FormatSettings().DecimalSeparator = ',';
    EXPECT_EQ(Reads({"1,5", "1.5"}, &Variant::AsDouble), (Strings{"1.5", "cast"}));
    EXPECT_EQ(Variant(2.25).AsString(), "2,25");
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
}

// Null = Null is True (the loose rule), Null and Empty equal nothing else; across kinds values compare
// by value, strings as numbers when the other side is one (exactly, not through a double).
TEST(VariantCompare, EqualityAndOrderAcrossKinds) {
    const Variant null = Variant::Null(), empty, big = 9007199254740993LL, below = 9007199254740992LL;
    const Variant digits = "9007199254740993", y2k = Variant::FromDateTime(EncodeDate(2000, 1, 1)),
                  y2kText = "2000-01-01", day = Variant::FromDateTime(36526.5), cur = Currency(1.5);
    const Variant u64 = std::numeric_limits<std::uint64_t>::max(),
                  i64 = std::numeric_limits<std::int64_t>::max();
    const Variant list = VarArrayOf({1, "a"}), same = VarArrayOf({1.0, "a"}), other = VarArrayOf({1, "b"});
    const std::tuple<Variant, Variant, bool> equality[] = {
        {null, null, true},     {null, 0, false},       {null, "", false},    {empty, empty, true},
        {empty, 0, false},      {empty, "", false},     {empty, null, false}, {1, 1.0, true},
        {short(7), 7ULL, true}, {Currency(2), 2, true}, {"1", 1, true},       {1, "1.0", true},
        {"abc", "ABC", false},  {"abc", "abc", true},   {true, 5, true},      {false, 5, false},
        {true, "True", true},   {true, "true", false},  {day, 36526.5, true}, {y2k, y2kText, true},
        {list, same, true},     {list, other, false},   {cur, 1.5, true},     {digits, big, true},
        {digits, below, false}};
    for (std::size_t i = 0; i < std::size(equality); ++i) {
        const auto& [a, b, equal] = equality[i];
        EXPECT_EQ(a == b, equal) << "row " << i;
        EXPECT_EQ(a != b, !equal) << "row " << i;
    }
    const std::tuple<Variant, Variant, TVariantRelationship> order[] = {
        {empty, null, vrLessThan}, {null, -5, vrLessThan},    {"a", null, vrGreaterThan},
        {1, 2.5, vrLessThan},      {"b", "a", vrGreaterThan}, {u64, i64, vrGreaterThan},
        {-1, u64, vrLessThan},     {NaN, 1.0, vrNotEqual},    {list, VarArrayOf({1}), vrNotEqual}};
    for (std::size_t i = 0; i < std::size(order); ++i) {
        EXPECT_EQ(VarCompareValue(std::get<0>(order[i]), std::get<1>(order[i])), std::get<2>(order[i]))
            << "row " << i;
    }
    EXPECT_THROW((void)(Variant("abc") == Variant(1)), EVariantTypeCastError);
    EXPECT_EQ(MessageOf<EVariantInvalidOpError>([&] { (void)(list == Variant(1)); }),
              "Invalid variant operation");
}
