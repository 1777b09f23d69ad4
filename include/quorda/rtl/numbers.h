#pragma once

#include "quorda/rtl/exception.h"
#include "quorda/rtl/format_settings.h"

#include <cstdint>
#include <string>

namespace quorda {

// Raised when text does not convert to a number, a boolean, a date or a time, or when values do not
// make up a valid date or time.
class QUORDA_API EConvertError : public Exception {
public:
    using Exception::Exception;
};

enum TFloatFormat { ffGeneral, ffExponent, ffFixed, ffNumber, ffCurrency };

// Shortest general form with up to 15 significant digits: no trailing zeros, plain notation for
// decimal exponents -5 to 14 and "1.5E20" / "1E-6" beyond. NaN and infinities give "Nan", "+Inf",
// "-Inf".
QUORDA_API std::string FloatToStr(double value);
QUORDA_API std::string FloatToStr(double value, const TFormatSettings& settings);

// Classic formats: ffGeneral (Precision significant digits), ffExponent ("1.2345E+003": Precision
// digits, at least Digits exponent digits, at most 4), ffFixed (Digits decimals), ffNumber (as ffFixed
// with thousand separators), ffCurrency (CurrencyString placed by CurrencyFormat/NegCurrFormat).
QUORDA_API std::string FloatToStrF(double value, TFloatFormat format, int precision, int digits);
QUORDA_API std::string FloatToStrF(double value, TFloatFormat format, int precision, int digits,
                                   const TFormatSettings& settings);

// Picture formats: "#" optional digit, "0" required digit, "." decimal point, "," anywhere in the
// integer part turns on thousand grouping, "E+"/"E-"/"e+"/"e-" scientific notation, '...' and "..."
// literal text, up to three sections "positive;negative;zero". An empty format is the general format.
QUORDA_API std::string FormatFloat(const std::string& format, double value);
QUORDA_API std::string FormatFloat(const std::string& format, double value, const TFormatSettings& settings);

// Text to float by DecimalSeparator (no thousand separators, surrounding blanks allowed, optional
// exponent). StrToFloat raises EConvertError "\"%s\" is an invalid float".
QUORDA_API bool TryStrToFloat(const std::string& text, double& value);
QUORDA_API bool TryStrToFloat(const std::string& text, double& value, const TFormatSettings& settings);
QUORDA_API double StrToFloat(const std::string& text);
QUORDA_API double StrToFloat(const std::string& text, const TFormatSettings& settings);
QUORDA_API double StrToFloatDef(const std::string& text, double fallback);

// Decimal integers with optional sign and surrounding blanks; "$1F" and "0x1F" are hexadecimal.
// Out-of-range values are invalid. StrToInt raises EConvertError "\"%s\" is an invalid integer".
QUORDA_API bool TryStrToInt(const std::string& text, std::int32_t& value);
QUORDA_API bool TryStrToInt64(const std::string& text, std::int64_t& value);
QUORDA_API std::int32_t StrToInt(const std::string& text);
QUORDA_API std::int64_t StrToInt64(const std::string& text);
QUORDA_API std::int32_t StrToIntDef(const std::string& text, std::int32_t fallback);
QUORDA_API std::int64_t StrToInt64Def(const std::string& text, std::int64_t fallback);

// "True"/"False" in any letter case, or a number (non-zero is true). StrToBool raises EConvertError
// "\"%s\" is not a valid boolean.".
QUORDA_API bool TryStrToBool(const std::string& text, bool& value);
QUORDA_API bool StrToBool(const std::string& text);

// Classic: "-1"/"0", or "True"/"False" when useBoolStrs is set.
QUORDA_API std::string BoolToStr(bool value, bool useBoolStrs = false);

} // namespace quorda
