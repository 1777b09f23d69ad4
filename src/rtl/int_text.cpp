#include "number_text_p.h"
#include "quorda/rtl/numbers.h"

#include <limits>

namespace quorda {
namespace {

// Sign, then decimal digits or "$"/"0x" hexadecimal; the magnitude must fit the target.
bool ParseInteger(const std::string& text, std::int64_t minimum, std::int64_t maximum, std::int64_t& value) {
    std::string_view s = detail::TrimBlanks(text);
    bool negative = false;
    if (!s.empty() && (s.front() == '+' || s.front() == '-')) {
        negative = s.front() == '-';
        s.remove_prefix(1);
    }
    unsigned base = 10;
    if (!s.empty() && s.front() == '$') {
        base = 16;
        s.remove_prefix(1);
    } else if (s.size() > 1 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X')) {
        base = 16;
        s.remove_prefix(2);
    }
    if (s.empty()) {
        return false;
    }
    const std::uint64_t limit = negative ? std::uint64_t(-(minimum + 1)) + 1 : std::uint64_t(maximum);
    std::uint64_t magnitude = 0;
    for (char c : s) {
        unsigned digit;
        if (c >= '0' && c <= '9') {
            digit = unsigned(c - '0');
        } else if (base == 16 && c >= 'a' && c <= 'f') {
            digit = unsigned(c - 'a' + 10);
        } else if (base == 16 && c >= 'A' && c <= 'F') {
            digit = unsigned(c - 'A' + 10);
        } else {
            return false;
        }
        if (magnitude > (limit - digit) / base) {
            return false;
        }
        magnitude = magnitude * base + digit;
    }
    value = negative ? std::int64_t(0 - magnitude) : std::int64_t(magnitude);
    return true;
}

} // namespace

bool TryStrToInt(const std::string& text, std::int32_t& value) {
    std::int64_t wide = 0;
    if (!ParseInteger(text, std::numeric_limits<std::int32_t>::min(),
                      std::numeric_limits<std::int32_t>::max(), wide)) {
        return false;
    }
    value = std::int32_t(wide);
    return true;
}

bool TryStrToInt64(const std::string& text, std::int64_t& value) {
    return ParseInteger(text, std::numeric_limits<std::int64_t>::min(),
                        std::numeric_limits<std::int64_t>::max(), value);
}

std::int32_t StrToInt(const std::string& text) {
    std::int32_t value = 0;
    if (!TryStrToInt(text, value)) {
        throw EConvertError(FormatMessage("\"%s\" is an invalid integer", text));
    }
    return value;
}

std::int64_t StrToInt64(const std::string& text) {
    std::int64_t value = 0;
    if (!TryStrToInt64(text, value)) {
        throw EConvertError(FormatMessage("\"%s\" is an invalid integer", text));
    }
    return value;
}

std::int32_t StrToIntDef(const std::string& text, std::int32_t fallback) {
    std::int32_t value = 0;
    return TryStrToInt(text, value) ? value : fallback;
}

std::int64_t StrToInt64Def(const std::string& text, std::int64_t fallback) {
    std::int64_t value = 0;
    return TryStrToInt64(text, value) ? value : fallback;
}

bool TryStrToBool(const std::string& text, bool& value) {
    const std::string_view s = detail::TrimBlanks(text);
    if (detail::SameAscii(s, "True")) {
        value = true;
        return true;
    }
    if (detail::SameAscii(s, "False")) {
        value = false;
        return true;
    }
    double number = 0;
    if (TryStrToFloat(std::string(s), number)) {
        value = number != 0;
        return true;
    }
    return false;
}

bool StrToBool(const std::string& text) {
    bool value = false;
    if (!TryStrToBool(text, value)) {
        throw EConvertError(FormatMessage("\"%s\" is not a valid boolean.", text));
    }
    return value;
}

std::string BoolToStr(bool value, bool useBoolStrs) {
    if (useBoolStrs) {
        return value ? "True" : "False";
    }
    return value ? "-1" : "0";
}

} // namespace quorda
