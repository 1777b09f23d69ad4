#pragma once

#include "quorda/rtl/exception.h"
#include "quorda/rtl/format_settings.h"

#include <compare>
#include <cstdint>
#include <string>

namespace quorda {

// Integer arithmetic that leaves the range of its type.
class QUORDA_API EIntOverflow : public Exception {
public:
    EIntOverflow() : Exception("Arithmetic overflow") {}
};

// Integer (and currency) division by zero.
class QUORDA_API EDivByZero : public Exception {
public:
    EDivByZero() : Exception("Division by zero") {}
};

// A fixed-point amount with four decimals, held as a 64-bit integer scaled by 10000. Conversions from
// floating point round half away from zero; results outside the range raise EIntOverflow.
class QUORDA_API Currency {
public:
    static constexpr std::int64_t Scale = 10000;

    constexpr Currency() noexcept = default;
    explicit Currency(double value);
    constexpr explicit Currency(std::int32_t value) noexcept : FRaw(std::int64_t(value) * Scale) {}
    explicit Currency(std::int64_t value);

    static constexpr Currency FromRaw(std::int64_t raw) noexcept {
        Currency result;
        result.FRaw = raw;
        return result;
    }
    constexpr std::int64_t Raw() const noexcept { return FRaw; }

    double ToDouble() const noexcept { return double(FRaw) / double(Scale); }
    // Rounds half away from zero to a whole amount.
    std::int64_t Round() const noexcept;

    Currency operator-() const;
    Currency& operator+=(Currency other);
    Currency& operator-=(Currency other);
    Currency& operator*=(Currency other);
    Currency& operator/=(Currency other);

    friend Currency operator+(Currency a, Currency b) { return a += b; }
    friend Currency operator-(Currency a, Currency b) { return a -= b; }
    friend Currency operator*(Currency a, Currency b) { return a *= b; }
    friend Currency operator/(Currency a, Currency b) { return a /= b; }

    friend constexpr bool operator==(Currency a, Currency b) noexcept = default;
    friend constexpr auto operator<=>(Currency a, Currency b) noexcept = default;

private:
    std::int64_t FRaw = 0;
};

inline constexpr Currency MinCurrency = Currency::FromRaw(INT64_MIN);
inline constexpr Currency MaxCurrency = Currency::FromRaw(INT64_MAX);

// Exact text of the amount: no trailing zeros ("12.5", "-0.0001", "3"), DecimalSeparator.
QUORDA_API std::string CurrToStr(Currency value);
QUORDA_API std::string CurrToStr(Currency value, const TFormatSettings& settings);

// Exact parse of decimal text by DecimalSeparator; more than four decimals round half away from zero,
// exponent forms go through floating point. Invalid text raises EConvertError
// "\"%s\" is an invalid float".
QUORDA_API bool TryStrToCurr(const std::string& text, Currency& value);
QUORDA_API bool TryStrToCurr(const std::string& text, Currency& value, const TFormatSettings& settings);
QUORDA_API Currency StrToCurr(const std::string& text);
QUORDA_API Currency StrToCurr(const std::string& text, const TFormatSettings& settings);

} // namespace quorda
