#pragma once

#include "quorda/export.h"

#include <array>
#include <cstdint>

namespace quorda {

// The 10-byte little-endian x87 extended-precision layout used by streamed floats: 64-bit mantissa
// with an explicit integer bit, 15-bit exponent (bias 16383), sign bit. The conversion is done bit by
// bit and does not depend on the compiler's long double.
using TExtended80 = std::array<std::uint8_t, 10>;

// Exact: every double (denormals, infinities, NaN payload included) has an extended representation.
QUORDA_API TExtended80 DoubleToExtended(double Value);
// Rounds to nearest (ties to even); values beyond the double range become infinities, values below
// it zeros or denormals. Unnormal encodings are read by their value, pseudo-NaN/infinity as NaN.
QUORDA_API double ExtendedToDouble(const TExtended80& Bytes);

QUORDA_API void DoubleToExtendedBytes(double Value, void* Dest);
QUORDA_API double ExtendedBytesToDouble(const void* Source);

} // namespace quorda
