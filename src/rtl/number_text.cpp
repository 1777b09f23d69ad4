#include "number_text_p.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace quorda::detail {

std::string_view TrimBlanks(std::string_view text) {
    auto blank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && blank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && blank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

bool SameAscii(std::string_view left, std::string_view right) {
    auto lower = [](char c) { return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c; };
    return left.size() == right.size() && std::equal(left.begin(), left.end(), right.begin(),
                                                     [&](char a, char b) { return lower(a) == lower(b); });
}

DecimalDigits ToDecimalDigits(double value, int significant) {
    DecimalDigits result;
    significant = std::clamp(significant, 1, 17);
    if (value == 0.0) {
        return result;
    }
    result.Negative = value < 0;
    char buffer[64];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value < 0 ? -value : value,
                                   std::chars_format::scientific, significant - 1);
    std::string_view text(buffer, ec == std::errc() ? size_t(end - buffer) : 0);
    // "d.ddde+XX" or "de+XX"
    const size_t e = text.find('e');
    result.Digits.clear();
    for (char c : text.substr(0, e)) {
        if (c != '.') {
            result.Digits += c;
        }
    }
    result.Exponent = std::atoi(std::string(text.substr(e + 1)).c_str());
    while (result.Digits.size() > 1 && result.Digits.back() == '0') {
        result.Digits.pop_back();
    }
    return result;
}

DecimalDigits RoundSignificant(DecimalDigits number, int significant) {
    significant = std::max(significant, 1);
    if (number.Digits.size() <= size_t(significant)) {
        return number;
    }
    const bool up = number.Digits[size_t(significant)] >= '5';
    number.Digits.resize(size_t(significant));
    if (up) {
        long i = significant - 1;
        while (i >= 0 && number.Digits[size_t(i)] == '9') {
            number.Digits[size_t(i)] = '0';
            --i;
        }
        if (i >= 0) {
            ++number.Digits[size_t(i)];
        } else {
            // Every kept digit was a 9 and is now a 0: the carry becomes a leading 1 one place up.
            number.Digits.front() = '1';
            ++number.Exponent;
        }
    }
    while (number.Digits.size() > 1 && number.Digits.back() == '0') {
        number.Digits.pop_back();
    }
    return number;
}

FixedDigits ToFixedDigits(const DecimalDigits& number, int decimals) {
    FixedDigits result;
    result.Negative = number.Negative;
    std::string digits = number.Digits;
    int exponent = number.Exponent;
    // Digits kept: those whose place value is at least 10^-decimals.
    const long keep = long(exponent) + 1 + decimals;
    if (keep < 0) {
        digits.assign(1, '0');
        exponent = 0;
    } else if (keep < long(digits.size())) {
        const bool up = digits[size_t(keep)] >= '5';
        digits.resize(size_t(keep));
        if (up) {
            long i = keep - 1;
            while (i >= 0 && digits[size_t(i)] == '9') {
                digits[size_t(i)] = '0';
                --i;
            }
            if (i >= 0) {
                ++digits[size_t(i)];
            } else {
                digits = '1' + digits;
                ++exponent;
            }
        }
        if (digits.empty()) {
            digits.assign(1, '0');
            exponent = 0;
        }
    }
    // Lay the digits out around the decimal point.
    for (int place = std::max(exponent, 0); place >= -decimals; --place) {
        const long index = long(exponent) - place;
        const char digit = (index >= 0 && index < long(digits.size())) ? digits[size_t(index)] : '0';
        if (digit != '0') {
            result.AllZero = false;
        }
        if (place >= 0) {
            if (!result.IntPart.empty() || digit != '0') {
                result.IntPart += digit;
            }
        } else {
            result.FracPart += digit;
        }
    }
    return result;
}

std::string GroupThousands(const std::string& digits, char separator) {
    std::string result;
    const size_t n = digits.size();
    for (size_t i = 0; i < n; ++i) {
        if (i > 0 && (n - i) % 3 == 0 && separator != '\0') {
            result += separator;
        }
        result += digits[i];
    }
    return result;
}

} // namespace quorda::detail
