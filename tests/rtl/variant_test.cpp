#include "quorda/rtl/variant.h"
#include "rtl_test_support.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>

using namespace quorda;

namespace {

using testing_support::MessageOf;
using testing_support::SettingsGuard;

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
    EXPECT_EQ(VarTypeAsText(varInteger), "Integer");
    EXPECT_EQ(VarTypeAsText(TVarType(varArray | varVariant)), "Array of Variant");

    EXPECT_TRUE(VarIsOrdinal(Variant(true)));
    EXPECT_TRUE(VarIsFloat(Variant(Currency(1))));
    EXPECT_FALSE(VarIsFloat(Variant::FromDateTime(1)));
    EXPECT_TRUE(VarIsNumeric(Variant(std::uint64_t(1))));
    EXPECT_FALSE(VarIsNumeric(Variant("1")));
    EXPECT_TRUE(VarIsStr(Variant("")));
    EXPECT_TRUE(VarIsClear(Variant()));
    EXPECT_FALSE(VarIsClear(Variant::Null()));
}

TEST(VariantConversion, EmptyReadsAsZeroButNullRefusesEveryTargetExceptText) {
    const Variant empty;
    EXPECT_EQ(empty.AsInteger(), 0);
    EXPECT_EQ(empty.AsDouble(), 0.0);
    EXPECT_EQ(empty.AsString(), "");
    EXPECT_FALSE(empty.AsBoolean());
    EXPECT_EQ(empty.AsCurrency(), Currency());
    EXPECT_EQ(empty.AsDateTime(), 0.0);

    const Variant null = Variant::Null();
    EXPECT_EQ(null.AsString(), "");
    EXPECT_EQ(VarToStr(null), "");
    EXPECT_EQ(MessageOf<EVariantTypeCastError>([&] { null.AsInteger(); }),
              "Could not convert variant of type (Null) into type (Integer)");
    EXPECT_EQ(MessageOf<EVariantTypeCastError>([&] { null.AsDouble(); }),
              "Could not convert variant of type (Null) into type (Double)");
    EXPECT_EQ(MessageOf<EVariantTypeCastError>([&] { null.AsBoolean(); }),
              "Could not convert variant of type (Null) into type (Boolean)");
    EXPECT_THROW(null.AsInt64(), EVariantTypeCastError);
    EXPECT_THROW(null.AsCurrency(), EVariantTypeCastError);
    EXPECT_THROW(null.AsDateTime(), EVariantTypeCastError);
}

TEST(VariantConversion, StringsConvertOnlyWhenTheyAreNumbers) {
    EXPECT_EQ(Variant("12").AsInteger(), 12);
    EXPECT_EQ(Variant(" -12 ").AsInt64(), -12);
    EXPECT_EQ(Variant("12.5").AsDouble(), 12.5);
    EXPECT_EQ(Variant("1.23456").AsCurrency().Raw(), 12346);
    EXPECT_EQ(MessageOf<EVariantTypeCastError>([] { Variant("1x").AsInteger(); }),
              "Could not convert variant of type (String) into type (Integer)");
    EXPECT_THROW(Variant("12.5").AsInteger(), EVariantTypeCastError);
    EXPECT_THROW(Variant("").AsDouble(), EVariantTypeCastError);
    EXPECT_THROW(Variant("1,5").AsDouble(), EVariantTypeCastError);
    EXPECT_THROW(Variant("3000000000").AsInteger(), EVariantTypeCastError);
    EXPECT_EQ(Variant("3000000000").AsInt64(), 3000000000LL);

    SettingsGuard guard;
    FormatSettings().DecimalSeparator = ',';
    EXPECT_EQ(Variant("1,5").AsDouble(), 1.5);
    EXPECT_THROW(Variant("1.5").AsDouble(), EVariantTypeCastError);
    EXPECT_EQ(Variant(2.25).AsString(), "2,25");
}

TEST(VariantConversion, BooleansAndTheirText) {
    EXPECT_EQ(Variant(true).AsInteger(), -1);
    EXPECT_EQ(Variant(false).AsInteger(), 0);
    EXPECT_EQ(Variant(true).AsDouble(), -1.0);
    EXPECT_EQ(Variant(true).AsString(), "True");
    EXPECT_EQ(Variant(false).AsString(), "False");
    EXPECT_TRUE(Variant("true").AsBoolean());
    EXPECT_FALSE(Variant("FALSE").AsBoolean());
    EXPECT_FALSE(Variant("0").AsBoolean());
    EXPECT_TRUE(Variant("-2").AsBoolean());
    EXPECT_TRUE(Variant(0.5).AsBoolean());
    EXPECT_FALSE(Variant(Currency()).AsBoolean());
    EXPECT_EQ(MessageOf<EVariantTypeCastError>([] { Variant("yes").AsBoolean(); }),
              "Could not convert variant of type (String) into type (Boolean)");
}

TEST(VariantConversion, FloatsRoundHalfToEvenAndOverflowIsReported) {
    EXPECT_EQ(Variant(2.5).AsInteger(), 2);
    EXPECT_EQ(Variant(3.5).AsInteger(), 4);
    EXPECT_EQ(Variant(-2.5).AsInteger(), -2);
    EXPECT_EQ(Variant(2.6).AsInteger(), 3);
    EXPECT_EQ(Variant(Currency(2.5)).AsInteger(), 2);
    EXPECT_EQ(Variant(Currency(-3.5)).AsInteger(), -4);
    EXPECT_EQ(Variant(3e9).AsInt64(), 3000000000LL);
    EXPECT_EQ(MessageOf<EVariantOverflowError>([] { Variant(3e9).AsInteger(); }),
              "Overflow while converting variant of type (Double) into type (Integer)");
    EXPECT_THROW(Variant(1e300).AsInt64(), EVariantOverflowError);
    EXPECT_THROW(Variant(std::numeric_limits<double>::quiet_NaN()).AsInt64(), EVariantOverflowError);
    EXPECT_THROW(Variant(std::numeric_limits<std::uint64_t>::max()).AsInt64(), EVariantOverflowError);
    EXPECT_THROW(Variant(std::int64_t(1) << 40).AsInteger(), EVariantOverflowError);
    // Beyond the currency range a float does not convert at all.
    EXPECT_THROW(Variant(1e300).AsCurrency(), EVariantTypeCastError);
    EXPECT_EQ(MessageOf<EVariantOverflowError>([] { VarAsType(Variant(300), varByte); }),
              "Overflow while converting variant of type (Integer) into type (Byte)");
    EXPECT_EQ(VarAsType(Variant(" 7 "), varSmallint).VarType(), varSmallint);
    EXPECT_EQ(VarAsType(Variant(2.0), varString).AsString(), "2");
}

TEST(VariantConversion, NumbersCurrencyAndDatesAsText) {
    EXPECT_EQ(Variant(std::numeric_limits<std::uint64_t>::max()).AsString(), "18446744073709551615");
    EXPECT_EQ(Variant(std::numeric_limits<std::int64_t>::min()).AsString(), "-9223372036854775808");
    EXPECT_EQ(Variant(0.1f).AsString(), "0.1");
    EXPECT_EQ(Variant(0.1).AsString(), "0.1");
    EXPECT_EQ(Variant(Currency::FromRaw(-15)).AsString(), "-0.0015");
    EXPECT_EQ(Variant(Currency(12)).AsDouble(), 12.0);

    const TDateTime leapNoon = EncodeDateTime(2000, 2, 29, 12, 0, 0, 0);
    EXPECT_EQ(Variant::FromDateTime(leapNoon).AsString(), "2000-02-29 12:00:00");
    EXPECT_EQ(Variant::FromDateTime(0.5).AsString(), "12:00:00"); // no day part: a time
    EXPECT_EQ(Variant("2000-02-29 12:00").AsDateTime(), leapNoon);
    EXPECT_EQ(Variant(36526).AsDateTime(), EncodeDate(2000, 1, 1));
    EXPECT_THROW(Variant("not a date").AsDateTime(), EVariantTypeCastError);
    EXPECT_THROW(Variant(1e9).AsDateTime(), EVariantTypeCastError);
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
