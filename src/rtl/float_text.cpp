#include "number_text_p.h"
#include "quorda/rtl/numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace quorda {
namespace {

constexpr int kDoubleDigits = 15;

bool SpecialText(double value, std::string& text) {
    if (std::isnan(value)) {
        text = "Nan";
    } else if (std::isinf(value)) {
        text = value > 0 ? "+Inf" : "-Inf";
    } else {
        return false;
    }
    return true;
}

std::string General(double value, int precision, char decimalSeparator) {
    if (precision < 1 || precision > kDoubleDigits) {
        precision = kDoubleDigits;
    }
    // Rounded half away from zero from the 15 digits a double carries, as the fixed formats are.
    const detail::DecimalDigits number =
        detail::RoundSignificant(detail::ToDecimalDigits(value, kDoubleDigits), precision);
    if (number.Digits == "0") {
        return "0";
    }
    std::string result = number.Negative ? "-" : "";
    const std::string& digits = number.Digits;
    const int e = number.Exponent;
    if (e >= -5 && e < precision) {
        if (e >= 0) {
            std::string intPart = digits.substr(0, std::min(digits.size(), size_t(e) + 1));
            intPart.append(size_t(e) + 1 - intPart.size(), '0');
            result += intPart;
            if (digits.size() > size_t(e) + 1) {
                result += decimalSeparator;
                result += digits.substr(size_t(e) + 1);
            }
        } else {
            result += '0';
            result += decimalSeparator;
            result.append(size_t(-e - 1), '0');
            result += digits;
        }
        return result;
    }
    result += digits[0];
    if (digits.size() > 1) {
        result += decimalSeparator;
        result += digits.substr(1);
    }
    result += 'E';
    if (e < 0) {
        result += '-';
    }
    result += std::to_string(std::abs(e));
    return result;
}

std::string Exponent(double value, int precision, int digits, char decimalSeparator) {
    if (precision < 1 || precision > kDoubleDigits) {
        precision = kDoubleDigits;
    }
    digits = std::clamp(digits, 0, 4);
    detail::DecimalDigits number =
        detail::RoundSignificant(detail::ToDecimalDigits(value, kDoubleDigits), precision);
    number.Digits.resize(size_t(precision), '0');
    std::string result = number.Negative ? "-" : "";
    result += number.Digits[0];
    if (precision > 1) {
        result += decimalSeparator;
        result += number.Digits.substr(1);
    }
    result += 'E';
    result += number.Exponent < 0 ? '-' : '+';
    std::string exponent = std::to_string(std::abs(number.Exponent));
    if (exponent.size() < size_t(digits)) {
        exponent.insert(0, size_t(digits) - exponent.size(), '0');
    }
    return result + exponent;
}

// The unsigned fixed text and whether the value is negative after rounding (-0.001 at two decimals
// is written without a sign).
std::string FixedAbs(double value, int digits, bool grouped, const TFormatSettings& settings,
                     bool& negative) {
    const detail::FixedDigits fixed =
        detail::ToFixedDigits(detail::ToDecimalDigits(value, kDoubleDigits), digits);
    negative = fixed.Negative && !fixed.AllZero;
    std::string intPart = fixed.IntPart.empty() ? "0" : fixed.IntPart;
    std::string result = grouped ? detail::GroupThousands(intPart, settings.ThousandSeparator) : intPart;
    if (digits > 0) {
        result += settings.DecimalSeparator;
        result += fixed.FracPart;
    }
    return result;
}

std::string CurrencyLayout(const std::string& amount, bool negative, const TFormatSettings& settings) {
    const std::string& c = settings.CurrencyString;
    if (!negative) {
        switch (settings.CurrencyFormat) {
        case 1:
            return amount + c;
        case 2:
            return c + " " + amount;
        case 3:
            return amount + " " + c;
        default:
            return c + amount;
        }
    }
    switch (settings.NegCurrFormat) {
    case 0:
        return "(" + c + amount + ")";
    case 2:
        return c + "-" + amount;
    case 3:
        return c + amount + "-";
    case 4:
        return "(" + amount + c + ")";
    case 5:
        return "-" + amount + c;
    case 6:
        return amount + "-" + c;
    case 7:
        return amount + c + "-";
    case 8:
        return "-" + amount + " " + c;
    case 9:
        return "-" + c + " " + amount;
    case 10:
        return amount + " " + c + "-";
    case 11:
        return c + " " + amount + "-";
    case 12:
        return c + " -" + amount;
    case 13:
        return amount + "- " + c;
    case 14:
        return "(" + c + " " + amount + ")";
    case 15:
        return "(" + amount + " " + c + ")";
    default:
        return "-" + c + amount;
    }
}

} // namespace

std::string FloatToStr(double value) {
    return FloatToStr(value, FormatSettings());
}

std::string FloatToStr(double value, const TFormatSettings& settings) {
    return FloatToStrF(value, ffGeneral, kDoubleDigits, 0, settings);
}

std::string FloatToStrF(double value, TFloatFormat format, int precision, int digits) {
    return FloatToStrF(value, format, precision, digits, FormatSettings());
}

std::string FloatToStrF(double value, TFloatFormat format, int precision, int digits,
                        const TFormatSettings& settings) {
    std::string special;
    if (SpecialText(value, special)) {
        return special;
    }
    bool negative = false;
    switch (format) {
    case ffExponent:
        return Exponent(value, precision, digits, settings.DecimalSeparator);
    case ffFixed:
    case ffNumber: {
        digits = digits < 0 ? 2 : std::min(digits, 18);
        std::string text = FixedAbs(value, digits, format == ffNumber, settings, negative);
        return negative ? "-" + text : text;
    }
    case ffCurrency: {
        digits = digits < 0 ? settings.CurrencyDecimals : std::min(digits, 18);
        const std::string text = FixedAbs(value, digits, true, settings, negative);
        return CurrencyLayout(text, negative, settings);
    }
    case ffGeneral:
    default:
        return General(value, precision, settings.DecimalSeparator);
    }
}

bool TryStrToFloat(const std::string& text, double& value) {
    return TryStrToFloat(text, value, FormatSettings());
}

bool TryStrToFloat(const std::string& text, double& value, const TFormatSettings& settings) {
    const std::string_view s = detail::TrimBlanks(text);
    // Validate [+-]digits[DS digits][(e|E)[+-]digits] and build the same number with a "." so that
    // the conversion does not depend on the C library's locale.
    std::string plain;
    size_t i = 0;
    bool negative = false;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) {
        negative = s[i] == '-';
        ++i;
    }
    int mantissaDigits = 0;
    int magnitude = 0; // decimal exponent of the first significant digit, before the exponent part
    bool seenSignificant = false;
    for (; i < s.size() && s[i] >= '0' && s[i] <= '9'; ++i) {
        plain += s[i];
        ++mantissaDigits;
        if (!seenSignificant && s[i] != '0') {
            seenSignificant = true;
            magnitude = 0;
        } else if (seenSignificant) {
            ++magnitude;
        }
    }
    if (i < s.size() && s[i] == settings.DecimalSeparator) {
        plain += '.';
        ++i;
        int place = -1;
        for (; i < s.size() && s[i] >= '0' && s[i] <= '9'; ++i, --place) {
            plain += s[i];
            ++mantissaDigits;
            if (!seenSignificant && s[i] != '0') {
                seenSignificant = true;
                magnitude = place;
            }
        }
    }
    if (mantissaDigits == 0) {
        return false;
    }
    long exponent = 0;
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
        plain += 'e';
        ++i;
        bool negativeExponent = false;
        if (i < s.size() && (s[i] == '+' || s[i] == '-')) {
            negativeExponent = s[i] == '-';
            plain += s[i];
            ++i;
        }
        const size_t start = i;
        for (; i < s.size() && s[i] >= '0' && s[i] <= '9'; ++i) {
            plain += s[i];
            if (exponent < 100000) {
                exponent = exponent * 10 + (s[i] - '0');
            }
        }
        if (i == start) {
            return false;
        }
        if (negativeExponent) {
            exponent = -exponent;
        }
    }
    if (i != s.size()) {
        return false;
    }
    double result = 0;
    const auto [end, ec] = std::from_chars(plain.data(), plain.data() + plain.size(), result);
    if (end != plain.data() + plain.size()) {
        return false;
    }
    if (ec == std::errc::result_out_of_range) {
        if (!seenSignificant || magnitude + exponent < 0) {
            result = 0; // too small to represent: reads as zero
        } else {
            return false;
        }
    } else if (ec != std::errc()) {
        return false;
    }
    value = negative ? -result : result;
    return true;
}

double StrToFloat(const std::string& text) {
    return StrToFloat(text, FormatSettings());
}

double StrToFloat(const std::string& text, const TFormatSettings& settings) {
    double value = 0;
    if (!TryStrToFloat(text, value, settings)) {
        throw EConvertError(FormatMessage("\"%s\" is an invalid float", text));
    }
    return value;
}

double StrToFloatDef(const std::string& text, double fallback) {
    double value = 0;
    return TryStrToFloat(text, value) ? value : fallback;
}

} // namespace quorda
