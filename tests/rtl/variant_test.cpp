#include "quorda/rtl/variant.h"
#include "rtl_test_support.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <sstream>
#include <type_traits>

using namespace quorda;

namespace {

using testing_support::Map;
using testing_support::MessageOf;
using testing_support::SettingsGuard;
using testing_support::Strings;

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

TEST(VariantConversion, ConstructorsPickTheClassicTypeCodes) {
    std::vector<TVarType> types;
    for (const Variant& value :
         {Variant(), Variant::Null(), Variant(true), Variant(std::int16_t(1)), Variant(1),
          Variant(std::int64_t(1)), Variant(1LL), Variant(std::uint8_t(1)), Variant(std::uint16_t(1)),
          Variant(1u), Variant(std::uint64_t(1)), Variant(1.0f), Variant(1.0), Variant(Currency(1)),
          Variant::FromDateTime(1.0), Variant("x"), Variant(std::string("x"))}) {
        types.push_back(value.VarType());
    }
    EXPECT_EQ(types, (std::vector<TVarType>{varEmpty, varNull, varBoolean, varSmallint, varInteger, varInt64,
                                            varInt64, varByte, varWord, varLongWord, varQWord, varSingle,
                                            varDouble, varCurrency, varDate, varString, varString}));

    EXPECT_TRUE(VarIsOrdinal(Variant(true)));
    EXPECT_TRUE(VarIsFloat(Variant(Currency(1))));
    EXPECT_FALSE(VarIsFloat(Variant::FromDateTime(1)));
    EXPECT_TRUE(VarIsNumeric(Variant(std::uint64_t(1))));
    EXPECT_FALSE(VarIsNumeric(Variant("1")));
    EXPECT_TRUE(VarIsStr(Variant("")));
    EXPECT_TRUE(VarIsClear(Variant()));
    EXPECT_FALSE(VarIsClear(Variant::Null()));
}

// Empty reads as zero, Null refuses every target except text; strings convert only when they are
// numbers; floats and currency round half to even; what does not fit overflows.
TEST(VariantConversion, EveryTargetOverTheSourcesThatMatterToIt) {
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
}

TEST(VariantConversion, TextFollowsTheGlobalDecimalSeparator) {
    SettingsGuard guard;
    FormatSettings().DecimalSeparator = ',';
    EXPECT_EQ(Reads({"1,5", "1.5"}, &Variant::AsDouble), (Strings{"1.5", "cast"}));
    EXPECT_EQ(Variant(2.25).AsString(), "2,25");
}

TEST(VariantArray, BoundsElementsAndErrors) {
    Variant a = VarArrayCreate(2, 4);
    EXPECT_EQ(a.VarType(), varArray | varVariant);
    EXPECT_TRUE(VarIsArray(a));
    EXPECT_EQ(VarArrayDimCount(a), 1);
    EXPECT_EQ(VarArrayLowBound(a), 2);
    EXPECT_EQ(VarArrayHighBound(a), 4);
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
    EXPECT_EQ(VarArrayLowBound(list), 0);
    EXPECT_EQ(VarArrayHighBound(list), 2);
    EXPECT_TRUE(VarIsNull(list[2]));
}

TEST(VariantArray, CopiesAreDeepAndSelfReferenceIsSafe) {
    Variant a = VarArrayOf({1, VarArrayOf({2, 3})});
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

TEST(VariantCompare, NullAndEmptyOnlyEqualThemselves) {
    // Null = Null is True (the loose rule); Null = anything else is False.
    EXPECT_TRUE(Variant::Null() == Variant::Null());
    EXPECT_FALSE(Variant::Null() == Variant(0));
    EXPECT_FALSE(Variant::Null() == Variant(""));
    EXPECT_TRUE(Variant::Null() != Variant(0));
    EXPECT_TRUE(Variant() == Variant());
    EXPECT_FALSE(Variant() == Variant(0));
    EXPECT_FALSE(Variant() == Variant(""));
    EXPECT_FALSE(Variant() == Variant::Null());
    EXPECT_EQ(VarCompareValue(Variant(), Variant::Null()), vrLessThan);
    EXPECT_EQ(VarCompareValue(Variant::Null(), Variant(-5)), vrLessThan);
    EXPECT_EQ(VarCompareValue(Variant("a"), Variant::Null()), vrGreaterThan);
}

TEST(VariantCompare, AcrossKinds) {
    EXPECT_TRUE(Variant(1) == Variant(1.0));
    EXPECT_TRUE(Variant(std::int16_t(7)) == Variant(std::uint64_t(7)));
    EXPECT_TRUE(Variant(Currency(1.5)) == Variant(1.5));
    EXPECT_TRUE(Variant(Currency(2)) == Variant(2));
    EXPECT_TRUE(Variant("1") == Variant(1));
    EXPECT_TRUE(Variant(1) == Variant("1.0"));
    EXPECT_TRUE(Variant("9007199254740993") == Variant(9007199254740993LL)); // exact, not via double
    EXPECT_FALSE(Variant("9007199254740993") == Variant(9007199254740992LL));
    EXPECT_THROW((void)(Variant("abc") == Variant(1)), EVariantTypeCastError);
    EXPECT_FALSE(Variant("abc") == Variant("ABC"));
    EXPECT_TRUE(Variant("abc") == "abc");
    EXPECT_TRUE(Variant(true) == Variant(5));
    EXPECT_FALSE(Variant(false) == Variant(5));
    EXPECT_TRUE(Variant(true) == Variant("True"));
    EXPECT_FALSE(Variant(true) == Variant("true"));
    EXPECT_TRUE(Variant::FromDateTime(36526.5) == Variant(36526.5));
    EXPECT_TRUE(Variant::FromDateTime(EncodeDate(2000, 1, 1)) == Variant("2000-01-01"));

    EXPECT_EQ(VarCompareValue(Variant(1), Variant(2.5)), vrLessThan);
    EXPECT_EQ(VarCompareValue(Variant("b"), Variant("a")), vrGreaterThan);
    EXPECT_EQ(VarCompareValue(Variant(std::numeric_limits<std::uint64_t>::max()),
                              Variant(std::numeric_limits<std::int64_t>::max())),
              vrGreaterThan);
    EXPECT_EQ(VarCompareValue(Variant(-1), Variant(std::numeric_limits<std::uint64_t>::max())), vrLessThan);
    EXPECT_EQ(VarCompareValue(Variant(std::numeric_limits<double>::quiet_NaN()), Variant(1.0)), vrNotEqual);
}

TEST(VariantCompare, ArraysCompareElementWiseAndOnlyWithArrays) {
    EXPECT_TRUE(VarArrayOf({1, "a"}) == VarArrayOf({1.0, "a"}));
    EXPECT_FALSE(VarArrayOf({1, "a"}) == VarArrayOf({1, "b"}));
    EXPECT_EQ(VarCompareValue(VarArrayOf({1}), VarArrayOf({1, 2})), vrNotEqual);
    EXPECT_EQ(MessageOf<EVariantInvalidOpError>([] { (void)(VarArrayOf({1}) == Variant(1)); }),
              "Invalid variant operation");
}
