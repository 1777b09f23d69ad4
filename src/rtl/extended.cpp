#include "quorda/rtl/extended.h"

#include <bit>
#include <cstring>

namespace quorda {

namespace {

constexpr int kExtendedBias = 16383;
constexpr int kDoubleBias = 1023;
constexpr std::uint64_t kIntegerBit = std::uint64_t{1} << 63;
constexpr std::uint64_t kDoubleFraction = (std::uint64_t{1} << 52) - 1;

TExtended80 Pack(std::uint64_t Mantissa, unsigned Exponent, bool Negative) {
    TExtended80 bytes{};
    for (int i = 0; i < 8; ++i) {
        bytes[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(Mantissa >> (8 * i));
    }
    const unsigned top = (Exponent & 0x7FFF) | (Negative ? 0x8000U : 0U);
    bytes[8] = static_cast<std::uint8_t>(top);
    bytes[9] = static_cast<std::uint8_t>(top >> 8);
    return bytes;
}

// Mantissa >> Shift rounded to nearest, ties to even (Shift 1..127).
std::uint64_t ShiftRounded(std::uint64_t Mantissa, int Shift) {
    if (Shift > 64) {
        return 0;
    }
    const std::uint64_t quotient = Shift == 64 ? 0 : Mantissa >> Shift;
    const std::uint64_t remainder = Shift == 64 ? Mantissa : Mantissa & ((std::uint64_t{1} << Shift) - 1);
    const std::uint64_t half = std::uint64_t{1} << (Shift - 1);
    if (remainder > half || (remainder == half && (quotient & 1) != 0)) {
        return quotient + 1;
    }
    return quotient;
}

} // namespace

TExtended80 DoubleToExtended(double Value) {
    const auto bits = std::bit_cast<std::uint64_t>(Value);
    const bool negative = (bits >> 63) != 0;
    const auto exponent = static_cast<int>((bits >> 52) & 0x7FF);
    const std::uint64_t fraction = bits & kDoubleFraction;

    if (exponent == 0x7FF) {
        // Infinity keeps only the integer bit; a NaN keeps its payload (quiet bit included).
        return Pack(kIntegerBit | (fraction << 11), 0x7FFF, negative);
    }
    if (exponent == 0) {
        if (fraction == 0) {
            return Pack(0, 0, negative);
        }
        // A double denormal is a normal number in the wider exponent range.
        const int shift = std::countl_zero(fraction);
        const int unbiased = -1074 + 63 - shift;
        return Pack(fraction << shift, static_cast<unsigned>(unbiased + kExtendedBias), negative);
    }
    return Pack(kIntegerBit | (fraction << 11), static_cast<unsigned>(exponent - kDoubleBias + kExtendedBias),
                negative);
}

double ExtendedToDouble(const TExtended80& Bytes) {
    std::uint64_t mantissa = 0;
    for (int i = 7; i >= 0; --i) {
        mantissa = (mantissa << 8) | Bytes[static_cast<std::size_t>(i)];
    }
    const unsigned top = Bytes[8] | (static_cast<unsigned>(Bytes[9]) << 8);
    const bool negative = (top & 0x8000) != 0;
    const int exponent = static_cast<int>(top & 0x7FFF);
    const std::uint64_t sign = negative ? kIntegerBit : 0;

    if (exponent == 0x7FFF) {
        if (mantissa == kIntegerBit) {
            return std::bit_cast<double>(sign | (std::uint64_t{0x7FF} << 52));
        }
        std::uint64_t payload = (mantissa >> 11) & kDoubleFraction;
        if (payload == 0 || (mantissa & kIntegerBit) == 0) {
            payload |= std::uint64_t{1} << 51; // still a NaN after dropping the low bits
        }
        return std::bit_cast<double>(sign | (std::uint64_t{0x7FF} << 52) | payload);
    }
    if (mantissa == 0) {
        return std::bit_cast<double>(sign);
    }
    // value = mantissa * 2^(e - 63); normalise so the integer bit is set (unnormals included).
    int e = (exponent == 0 ? 1 : exponent) - kExtendedBias;
    const int shift = std::countl_zero(mantissa);
    mantissa <<= shift;
    e -= shift;

    if (e > kDoubleBias) {
        return std::bit_cast<double>(sign | (std::uint64_t{0x7FF} << 52));
    }
    if (e >= 1 - kDoubleBias) {
        // 53 significant bits; a carry out of the rounding moves into the exponent, and past the
        // largest exponent into infinity, by plain addition.
        const std::uint64_t rounded = ShiftRounded(mantissa, 11);
        const std::uint64_t bits =
            (static_cast<std::uint64_t>(e + kDoubleBias) << 52) + (rounded - (std::uint64_t{1} << 52));
        return std::bit_cast<double>(sign | bits);
    }
    // Denormal result: count of 2^-1074 units; rounding up to 2^52 yields the smallest normal.
    const int denormalShift = 11 + (1 - kDoubleBias - e);
    return std::bit_cast<double>(sign | ShiftRounded(mantissa, denormalShift));
}

void DoubleToExtendedBytes(double Value, void* Dest) {
    const TExtended80 bytes = DoubleToExtended(Value);
    std::memcpy(Dest, bytes.data(), bytes.size());
}

double ExtendedBytesToDouble(const void* Source) {
    TExtended80 bytes{};
    std::memcpy(bytes.data(), Source, bytes.size());
    return ExtendedToDouble(bytes);
}

} // namespace quorda
