#include "number_text_p.h"
#include "quorda/rtl/numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

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

// The shortest text of a value at `precision` significant digits: fixed notation for decimal
// exponents from -5 to precision - 1, else "d.dddE[-]x". Works on a stack buffer: this runs for every
// float a text export writes.
std::string General(double value, int precision, char decimalSeparator) {
    if (precision < 1 || precision > kDoubleDigits) {
        precision = kDoubleDigits;
    }
    if (value == 0.0) {
        return "0";
    }
    // Correctly rounded to the 15 digits a double carries: "d.dddde[+-]x". For a normal value the
    // shortest text that reads back is that rounding whenever it has at most 15 digits (it lies
    // within half a unit in the last place, closer than half a step of 15 digits), and costs a
    // fraction of it. Subnormal values have too few bits for that.
    char text[40];
    const double magnitude = std::fabs(value);
    auto converted = std::to_chars(text, text + sizeof text, magnitude, std::chars_format::scientific);
    const char* const exponentMark = std::find(text, converted.ptr, 'e');
    if (exponentMark - text > kDoubleDigits + 1 || magnitude < std::numeric_limits<double>::min()) {
        converted = std::to_chars(text, text + sizeof text, magnitude, std::chars_format::scientific,
                                  kDoubleDigits - 1);
    }
    const char* const textEnd = converted.ptr;
    char digits[kDoubleDigits + 1];
    int count = 0;
    const char* p = text;
    for (; p != textEnd && *p != 'e'; ++p) {
        if (*p != '.') {
            digits[count++] = *p;
        }
    }
    ++p; // 'e'
    if (p != textEnd && *p == '+') {
        ++p;
    }
    int e = 0;
    std::from_chars(p, textEnd, e);
    // Fewer digits: rounded half away from zero from those 15, as the fixed formats are.
    if (count > precision) {
        const bool up = digits[precision] >= '5';
        count = precision;
        if (up) {
            int i = count - 1;
            while (i >= 0 && digits[i] == '9') {
                digits[i--] = '0';
            }
            if (i >= 0) {
                ++digits[i];
            } else {
                // Every kept digit was a 9: the carry becomes a leading 1 one place up.
                digits[0] = '1';
                ++e;
            }
        }
    }
    while (count > 1 && digits[count - 1] == '0') {
        --count;
    }

    char out[48];
    char* o = out;
    if (value < 0) {
        *o++ = '-';
    }
    if (e >= -5 && e < precision) {
        if (e >= 0) {
            for (int i = 0; i <= e; ++i) {
                *o++ = i < count ? digits[i] : '0';
            }
            if (count > e + 1) {
                *o++ = decimalSeparator;
                for (int i = e + 1; i < count; ++i) {
                    *o++ = digits[i];
                }
            }
        } else {
            *o++ = '0';
            *o++ = decimalSeparator;
            for (int i = 0; i < -e - 1; ++i) {
                *o++ = '0';
            }
            for (int i = 0; i < count; ++i) {
                *o++ = digits[i];
            }
        }
        return std::string(out, o);
    }
    *o++ = digits[0];
    if (count > 1) {
        *o++ = decimalSeparator;
        for (int i = 1; i < count; ++i) {
            *o++ = digits[i];
        }
    }
    *o++ = 'E';
    if (e < 0) {
        *o++ = '-';
    }
    o = std::to_chars(o, out + sizeof out, e < 0 ? -e : e).ptr;
    return std::string(out, o);
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
