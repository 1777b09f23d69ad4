#include "quorda/rtl/numbers.h"
#include "quorda/rtl/variant.h"

#include <cmath>

namespace quorda {
namespace {

enum class Kind { Empty, Null, Boolean, Integer, Float, Currency, Date, String, Array, Other };

Kind KindOf(const Variant& value) {
    if (value.IsArray()) {
        return Kind::Array;
    }
    if (VarTypeIsInteger(value.VarType())) {
        return Kind::Integer;
    }
    switch (value.VarType()) {
    case varEmpty:
        return Kind::Empty;
    case varNull:
        return Kind::Null;
    case varBoolean:
        return Kind::Boolean;
    case varSingle:
    case varDouble:
        return Kind::Float;
    case varCurrency:
        return Kind::Currency;
    case varDate:
        return Kind::Date;
    case varString:
    case varOleStr:
        return Kind::String;
    default:
        return Kind::Other;
    }
}

template <typename T>
TVariantRelationship Order(const T& left, const T& right) {
    if (left < right) {
        return vrLessThan;
    }
    if (right < left) {
        return vrGreaterThan;
    }
    return vrEqual;
}

TVariantRelationship OrderFloat(double left, double right) {
    if (left == right) {
        return vrEqual;
    }
    if (left < right) {
        return vrLessThan;
    }
    if (left > right) {
        return vrGreaterThan;
    }
    return vrNotEqual; // NaN
}

// Integers of any width, QWord included, compared exactly.
__int128 WideInteger(const Variant& value) {
    if (value.VarType() == varQWord) {
        return __int128(std::stoull(value.AsString()));
    }
    return value.AsInt64();
}

// An integer against a string: exactly when the string is an integer, as floats otherwise (raising
// the conversion error when it is not a number at all).
TVariantRelationship IntegerAgainstString(const Variant& integer, const Variant& text, bool integerLeft) {
    std::int64_t parsed = 0;
    if (TryStrToInt64(text.AsString(), parsed)) {
        return integerLeft ? Order(WideInteger(integer), __int128(parsed))
                           : Order(__int128(parsed), WideInteger(integer));
    }
    return integerLeft ? OrderFloat(integer.AsDouble(), text.AsDouble())
                       : OrderFloat(text.AsDouble(), integer.AsDouble());
}

TVariantRelationship CompareArrays(const Variant& left, const Variant& right) {
    if (left.ArrayLowBound() != right.ArrayLowBound() || left.ArrayHighBound() != right.ArrayHighBound()) {
        return vrNotEqual;
    }
    for (int i = left.ArrayLowBound(); i <= left.ArrayHighBound(); ++i) {
        if (VarCompareValue(left.ArrayElement(i), right.ArrayElement(i)) != vrEqual) {
            return vrNotEqual;
        }
    }
    return vrEqual;
}

} // namespace

TVariantRelationship VarCompareValue(const Variant& left, const Variant& right) {
    const Kind l = KindOf(left);
    const Kind r = KindOf(right);
    auto either = [&](Kind kind) { return l == kind || r == kind; };

    if (either(Kind::Array) || either(Kind::Other)) {
        if (l == Kind::Array && r == Kind::Array) {
            return CompareArrays(left, right);
        }
        throw EVariantInvalidOpError("Invalid variant operation");
    }
    // Empty and Null only equal themselves; Empty sorts before Null, Null before any value.
    if (either(Kind::Empty)) {
        return Order(l != Kind::Empty, r != Kind::Empty);
    }
    if (either(Kind::Null)) {
        return Order(l != Kind::Null, r != Kind::Null);
    }
    if (either(Kind::Date)) {
        return OrderFloat(left.AsDateTime(), right.AsDateTime());
    }
    if (l == Kind::String && r == Kind::String) {
        return Order(left.AsString(), right.AsString());
    }
    if (either(Kind::Boolean)) {
        if (either(Kind::String)) {
            return Order(left.AsString(), right.AsString());
        }
        return Order(left.AsBoolean(), right.AsBoolean());
    }
    if (either(Kind::Currency)) {
        return Order(left.AsCurrency(), right.AsCurrency());
    }
    if (either(Kind::Float)) {
        return OrderFloat(left.AsDouble(), right.AsDouble());
    }
    if (l == Kind::Integer && r == Kind::Integer) {
        return Order(WideInteger(left), WideInteger(right));
    }
    // One integer, one string.
    return l == Kind::Integer ? IntegerAgainstString(left, right, true)
                              : IntegerAgainstString(right, left, false);
}

bool VarSameValue(const Variant& left, const Variant& right) {
    return VarCompareValue(left, right) == vrEqual;
}

bool operator==(const Variant& left, const Variant& right) {
    return VarCompareValue(left, right) == vrEqual;
}

} // namespace quorda
