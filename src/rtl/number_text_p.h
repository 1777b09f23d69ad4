#pragma once

// Shared pieces of the number, currency and date text conversions.

#include <string>
#include <string_view>

namespace quorda::detail {

// Without leading and trailing blanks (spaces and tabs).
std::string_view TrimBlanks(std::string_view text);

// ASCII case-insensitive equality, enough for "True"/"False", "AM"/"PM" and month names.
bool SameAscii(std::string_view left, std::string_view right);

// A finite double as decimal digits: value = Digits[0].Digits[1..] x 10^Exponent, no trailing zeros
// except the single "0" of zero.
struct DecimalDigits {
    bool Negative = false;
    std::string Digits = "0";
    int Exponent = 0;
};

// Correctly rounded to the given number of significant digits (1 to 17).
DecimalDigits ToDecimalDigits(double value, int significant);

// Fewer significant digits of a decimal, rounded half away from zero.
DecimalDigits RoundSignificant(DecimalDigits number, int significant);

// Fixed notation of a decimal with exactly `decimals` fraction digits, rounded half away from zero.
// IntPart has no leading zeros ("" for zero); AllZero tells that every digit came out 0.
struct FixedDigits {
    bool Negative = false;
    std::string IntPart;
    std::string FracPart;
    bool AllZero = true;
};
FixedDigits ToFixedDigits(const DecimalDigits& number, int decimals);

// Inserts the separator every three digits from the right.
std::string GroupThousands(const std::string& digits, char separator);

} // namespace quorda::detail
