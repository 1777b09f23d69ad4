#include "quorda/rtl/format_settings.h"

#include <clocale>

namespace quorda {

TFormatSettings DefaultFormatSettings() {
    TFormatSettings settings;
    // localeconv() reflects whatever setlocale() the host application chose; the C locale yields "."
    // and an empty thousand separator, for which the "," default stays.
    if (const std::lconv* conv = std::localeconv()) {
        if (conv->decimal_point && conv->decimal_point[0] != '\0' && conv->decimal_point[1] == '\0') {
            settings.DecimalSeparator = conv->decimal_point[0];
        }
        if (conv->thousands_sep && conv->thousands_sep[0] != '\0' && conv->thousands_sep[1] == '\0' &&
            conv->thousands_sep[0] != settings.DecimalSeparator) {
            settings.ThousandSeparator = conv->thousands_sep[0];
        }
        if (conv->currency_symbol) {
            settings.CurrencyString = conv->currency_symbol;
        }
    }
    if (settings.ThousandSeparator == settings.DecimalSeparator) {
        settings.ThousandSeparator = settings.DecimalSeparator == ',' ? '.' : ',';
    }
    return settings;
}

TFormatSettings& FormatSettings() {
    static TFormatSettings settings = DefaultFormatSettings();
    return settings;
}

} // namespace quorda
