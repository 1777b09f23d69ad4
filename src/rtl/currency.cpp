#include "quorda/rtl/currency.h"

#include "number_text_p.h"
#include "quorda/rtl/numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quorda {
namespace {

using Wide = __int128;

std::int64_t Narrow(Wide value) {
    if (value > std::numeric_limits<std::int64_t>::max() ||
        value < std::numeric_limits<std::int64_t>::min()) {
        throw EIntOverflow();
    }
    return std::int64_t(value);
}

// Quotient rounded half away from zero.
Wide DivideRounded(Wide numerator, Wide denominator) {
    Wide quotient = numerator / denominator;
    const Wide remainder = numerator % denominator;
    const Wide absRemainder = remainder < 0 ? -remainder : remainder;
    const Wide absDenominator = denominator < 0 ? -denominator : denominator;
    if (absRemainder * 2 >= absDenominator) {
        quotient += (numerator < 0) != (denominator < 0) ? -1 : 1;
    }
    return quotient;
}

} // namespace

Currency::Currency(double value) {
    const double scaled = value * double(Scale);
    // 2^63 is exactly representable; anything at or beyond it does not fit.
    if (!(scaled < 9223372036854775808.0 && scaled >= -9223372036854775808.0)) {
        throw EIntOverflow();
    }
    // Round half away from zero on the decimal value the double stands for: 1.00005 is stored as
    // 1.0000499999..., so the decision is made on 15 significant digits (more only when 15 do not reach
    // the fourth decimal) rather than on the raw binary value.
    detail::DecimalDigits digits = detail::ToDecimalDigits(value, 15);
    if (digits.Exponent + 5 > 15) {
        digits = detail::ToDecimalDigits(value, std::min(digits.Exponent + 5, 17));
    }
    const detail::FixedDigits fixed = detail::ToFixedDigits(digits, 4);
    Wide raw = 0;
    for (char c : fixed.IntPart + fixed.FracPart) {
        raw = raw * 10 + (c - '0');
    }
    FRaw = Narrow(fixed.Negative ? -raw : raw);
}

Currency::Currency(std::int64_t value) : FRaw(Narrow(Wide(value) * Scale)) {}

std::int64_t Currency::Round() const noexcept {
    return std::int64_t(DivideRounded(FRaw, Scale));
}

Currency Currency::operator-() const {
    return FromRaw(Narrow(-Wide(FRaw)));
}

Currency& Currency::operator+=(Currency other) {
    FRaw = Narrow(Wide(FRaw) + other.FRaw);
    return *this;
}

Currency& Currency::operator-=(Currency other) {
    FRaw = Narrow(Wide(FRaw) - other.FRaw);
    return *this;
}

Currency& Currency::operator*=(Currency other) {
    FRaw = Narrow(DivideRounded(Wide(FRaw) * other.FRaw, Scale));
    return *this;
}

Currency& Currency::operator/=(Currency other) {
    if (other.FRaw == 0) {
        throw EDivByZero();
    }
    FRaw = Narrow(DivideRounded(Wide(FRaw) * Scale, other.FRaw));
    return *this;
}

std::string CurrToStr(Currency value) {
    return CurrToStr(value, FormatSettings());
}

std::string CurrToStr(Currency value, const TFormatSettings& settings) {
    const std::int64_t raw = value.Raw();
    // Work on the unsigned magnitude so that the minimum value has one too.
    const std::uint64_t magnitude = raw < 0 ? 0 - std::uint64_t(raw) : std::uint64_t(raw);
    std::string text = raw < 0 ? "-" : "";
    text += std::to_string(magnitude / Currency::Scale);
    std::string fraction = std::to_string(magnitude % Currency::Scale);
    fraction.insert(0, 4 - fraction.size(), '0');
    while (!fraction.empty() && fraction.back() == '0') {
        fraction.pop_back();
    }
    if (!fraction.empty()) {
        text += settings.DecimalSeparator;
        text += fraction;
    }
    return text;
}

bool TryStrToCurr(const std::string& text, Currency& value) {
    return TryStrToCurr(text, value, FormatSettings());
}

bool TryStrToCurr(const std::string& text, Currency& value, const TFormatSettings& settings) {
    const std::string_view s = detail::TrimBlanks(text);
    size_t i = 0;
    bool negative = false;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) {
        negative = s[i] == '-';
        ++i;
    }
    // Exact decimal arithmetic for the plain form; 19 integer digits already overflow.
    Wide raw = 0;
    int digits = 0;
    for (; i < s.size() && s[i] >= '0' && s[i] <= '9'; ++i, ++digits) {
        raw = raw * 10 + (s[i] - '0');
        if (raw > Wide(std::numeric_limits<std::int64_t>::max()) * 2) {
            return false;
        }
    }
    raw *= Currency::Scale;
    if (i < s.size() && s[i] == settings.DecimalSeparator) {
        ++i;
        Wide place = Currency::Scale / 10;
        bool roundUp = false;
        bool first = true;
        for (; i < s.size() && s[i] >= '0' && s[i] <= '9'; ++i, ++digits) {
            if (place > 0) {
                raw += (s[i] - '0') * place;
                place /= 10;
            } else if (first) {
                roundUp = s[i] >= '5';
                first = false;
            }
        }
        if (roundUp) {
            ++raw;
        }
    }
    if (digits == 0) {
        return false;
    }
    if (i < s.size()) {
        // Exponent forms ("1.5E3") go through floating point.
        if (s[i] != 'e' && s[i] != 'E') {
            return false;
        }
        double number = 0;
        if (!TryStrToFloat(text, number, settings)) {
            return false;
        }
        try {
            value = Currency(number);
        } catch (const EIntOverflow&) {
            return false;
        }
        return true;
    }
    if (negative) {
        raw = -raw;
    }
    if (raw > std::numeric_limits<std::int64_t>::max() || raw < std::numeric_limits<std::int64_t>::min()) {
        return false;
    }
    value = Currency::FromRaw(std::int64_t(raw));
    return true;
}

Currency StrToCurr(const std::string& text) {
    return StrToCurr(text, FormatSettings());
}

Currency StrToCurr(const std::string& text, const TFormatSettings& settings) {
    Currency value;
    if (!TryStrToCurr(text, value, settings)) {
        throw EConvertError(FormatMessage("\"%s\" is an invalid float", text));
    }
    return value;
}

} // namespace quorda
