#include "quorda/rtl/numbers.h"
#include "quorda/rtl/variant.h"
#include "variant_p.h"

#include <cmath>
#include <limits>

namespace quorda {
namespace {

[[noreturn]] void Overflow(TVarType source, TVarType target) {
    throw EVariantOverflowError(FormatMessage("Overflow while converting variant of type (%s) into type (%s)",
                                              VarTypeAsText(source), VarTypeAsText(target)));
}

// Round half to even, as the classic conversions of floats and currency to integers do.
double RoundHalfEven(double value) {
    const double rounded = std::round(value);
    if (std::fabs(value - std::trunc(value)) == 0.5) {
        return 2.0 * std::round(value / 2.0);
    }
    return rounded;
}

std::int64_t RoundCurrencyHalfEven(Currency value) {
    const std::int64_t raw = value.Raw();
    std::int64_t whole = raw / Currency::Scale;
    const std::int64_t rest = raw % Currency::Scale;
    const std::int64_t half = Currency::Scale / 2;
    if (rest > half || (rest == half && (whole & 1) != 0)) {
        ++whole;
    } else if (rest < -half || (rest == -half && (whole & 1) != 0)) {
        --whole;
    }
    return whole;
}

// Booleans and every whole-number type but the unsigned 64-bit varQWord read as signed.
bool IsSignedStorage(TVarType type) {
    return type == varBoolean || (VarTypeIsInteger(type) && type != varQWord);
}

} // namespace

void Variant::CastError(TVarType target) const {
    throw EVariantTypeCastError(FormatMessage("Could not convert variant of type (%s) into type (%s)",
                                              VarTypeAsText(FType), VarTypeAsText(target)));
}

bool Variant::AsBoolean() const {
    if (FType == varEmpty) {
        return false;
    }
    if (IsSignedStorage(FType)) {
        return std::get<std::int64_t>(FValue) != 0;
    }
    switch (FType) {
    case varQWord:
        return std::get<std::uint64_t>(FValue) != 0;
    case varSingle:
    case varDouble:
    case varDate:
        return std::get<double>(FValue) != 0;
    case varCurrency:
        return std::get<Currency>(FValue).Raw() != 0;
    case varString: {
        bool result = false;
        if (!TryStrToBool(std::get<std::string>(FValue), result)) {
            CastError(varBoolean);
        }
        return result;
    }
    default:
        CastError(varBoolean);
    }
}

std::int64_t Variant::AsInt64() const {
    if (FType == varEmpty) {
        return 0;
    }
    if (FType == varBoolean) {
        return std::get<std::int64_t>(FValue) != 0 ? -1 : 0;
    }
    if (IsSignedStorage(FType)) {
        return std::get<std::int64_t>(FValue);
    }
    switch (FType) {
    case varQWord: {
        const std::uint64_t value = std::get<std::uint64_t>(FValue);
        if (value > std::uint64_t(std::numeric_limits<std::int64_t>::max())) {
            Overflow(FType, varInt64);
        }
        return std::int64_t(value);
    }
    case varSingle:
    case varDouble:
    case varDate: {
        const double rounded = RoundHalfEven(std::get<double>(FValue));
        // 2^63 is the first double beyond the range; NaN fails both tests.
        if (!(rounded < 9223372036854775808.0 && rounded >= -9223372036854775808.0)) {
            Overflow(FType, varInt64);
        }
        return std::int64_t(rounded);
    }
    case varCurrency:
        return RoundCurrencyHalfEven(std::get<Currency>(FValue));
    case varString: {
        std::int64_t result = 0;
        if (!TryStrToInt64(std::get<std::string>(FValue), result)) {
            CastError(varInt64);
        }
        return result;
    }
    default:
        CastError(varInt64);
    }
}

std::int32_t Variant::AsInteger() const {
    if (FType == varString) {
        std::int32_t result = 0;
        if (!TryStrToInt(std::get<std::string>(FValue), result)) {
            CastError(varInteger);
        }
        return result;
    }
    if (FType == varNull || IsArray()) {
        CastError(varInteger);
    }
    std::int64_t value = 0;
    try {
        value = AsInt64();
    } catch (const EVariantOverflowError&) {
        Overflow(FType, varInteger);
    }
    if (value < std::numeric_limits<std::int32_t>::min() ||
        value > std::numeric_limits<std::int32_t>::max()) {
        Overflow(FType, varInteger);
    }
    return std::int32_t(value);
}

double Variant::AsDouble() const {
    if (FType == varEmpty) {
        return 0;
    }
    if (FType == varBoolean) {
        return std::get<std::int64_t>(FValue) != 0 ? -1.0 : 0.0;
    }
    if (IsSignedStorage(FType)) {
        return double(std::get<std::int64_t>(FValue));
    }
    switch (FType) {
    case varQWord:
        return double(std::get<std::uint64_t>(FValue));
    case varSingle:
    case varDouble:
    case varDate:
        return std::get<double>(FValue);
    case varCurrency:
        return std::get<Currency>(FValue).ToDouble();
    case varString: {
        double result = 0;
        if (!TryStrToFloat(std::get<std::string>(FValue), result)) {
            CastError(varDouble);
        }
        return result;
    }
    default:
        CastError(varDouble);
    }
}

Currency Variant::AsCurrency() const {
    try {
        switch (FType) {
        case varEmpty:
            return Currency();
        case varCurrency:
            return std::get<Currency>(FValue);
        case varSingle:
        case varDouble:
        case varDate:
            return Currency(std::get<double>(FValue));
        case varQWord: {
            const std::uint64_t value = std::get<std::uint64_t>(FValue);
            if (value > std::uint64_t(std::numeric_limits<std::int64_t>::max())) {
                Overflow(FType, varCurrency);
            }
            return Currency(std::int64_t(value));
        }
        case varString: {
            Currency result;
            if (!TryStrToCurr(std::get<std::string>(FValue), result)) {
                CastError(varCurrency);
            }
            return result;
        }
        default:
            if (IsSignedStorage(FType)) {
                return Currency(AsInt64());
            }
            CastError(varCurrency);
        }
    } catch (const EIntOverflow&) {
        // A float beyond the currency range is a failed conversion, an integer one an overflow.
        if (FType == varSingle || FType == varDouble || FType == varDate) {
            CastError(varCurrency);
        }
        Overflow(FType, varCurrency);
    }
}

TDateTime Variant::AsDateTime() const {
    double result = 0;
    switch (FType) {
    case varString:
        if (!TryStrToDateTime(std::get<std::string>(FValue), result)) {
            CastError(varDate);
        }
        break;
    case varNull:
        CastError(varDate);
    default:
        if (IsArray()) {
            CastError(varDate);
        }
        result = AsDouble();
        break;
    }
    if (!(result >= MinDateTime && result <= MaxDateTime)) {
        CastError(varDate);
    }
    return result;
}

std::string Variant::AsString() const {
    if (FType == varEmpty || FType == varNull) {
        return {};
    }
    if (FType == varBoolean) {
        return BoolToStr(std::get<std::int64_t>(FValue) != 0, true);
    }
    if (IsSignedStorage(FType)) {
        return std::to_string(std::get<std::int64_t>(FValue));
    }
    switch (FType) {
    case varQWord:
        return std::to_string(std::get<std::uint64_t>(FValue));
    case varSingle:
        // A single carries about seven significant digits; more would show binary noise.
        return FloatToStrF(std::get<double>(FValue), ffGeneral, 7, 0);
    case varDouble:
        return FloatToStr(std::get<double>(FValue));
    case varCurrency:
        return CurrToStr(std::get<Currency>(FValue));
    case varDate: {
        // A value without a day part is a time of day.
        const double value = std::get<double>(FValue);
        return std::trunc(value) == 0 ? TimeToStr(value) : DateTimeToStr(value);
    }
    case varString:
        return std::get<std::string>(FValue);
    default:
        CastError(varString);
    }
}

std::string VarToStr(const Variant& value) {
    return value.AsString();
}

Variant VarAsType(const Variant& value, TVarType type) {
    auto checked = [&](std::int64_t number, std::int64_t low, std::int64_t high) {
        if (number < low || number > high) {
            Overflow(value.VarType(), type);
        }
        return number;
    };
    switch (type) {
    case varEmpty:
        return Variant();
    case varNull:
        return Variant::Null();
    case varVariant:
        return value;
    case varSmallint:
        return Variant(short(checked(value.AsInteger(), INT16_MIN, INT16_MAX)));
    case varInteger:
        return Variant(value.AsInteger());
    case varShortInt:
        return Variant(static_cast<signed char>(checked(value.AsInteger(), INT8_MIN, INT8_MAX)));
    case varByte:
        return Variant(static_cast<unsigned char>(checked(value.AsInteger(), 0, UINT8_MAX)));
    case varWord:
        return Variant(static_cast<unsigned short>(checked(value.AsInteger(), 0, UINT16_MAX)));
    case varLongWord:
        return Variant(static_cast<unsigned int>(checked(value.AsInt64(), 0, UINT32_MAX)));
    case varInt64:
        return Variant(static_cast<long long>(value.AsInt64()));
    case varQWord:
        if (value.VarType() == varQWord) {
            return value;
        }
        return Variant(static_cast<unsigned long long>(checked(value.AsInt64(), 0, INT64_MAX)));
    case varSingle:
        return Variant(float(value.AsDouble()));
    case varDouble:
        return Variant(value.AsDouble());
    case varCurrency:
        return Variant(value.AsCurrency());
    case varDate:
        return Variant::FromDateTime(value.AsDateTime());
    case varBoolean:
        return Variant(value.AsBoolean());
    case varString:
    case varOleStr:
        return Variant(value.AsString());
    default:
        throw EVariantTypeCastError(FormatMessage("Could not convert variant of type (%s) into type (%s)",
                                                  VarTypeAsText(value.VarType()), VarTypeAsText(type)));
    }
}

} // namespace quorda
