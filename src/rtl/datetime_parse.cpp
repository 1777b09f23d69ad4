#include "datetime_p.h"
#include "number_text_p.h"
#include "quorda/rtl/datetime.h"

#include <vector>

namespace quorda {
namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// The order in which ShortDateFormat names year, month and day ("ymd", "dmy", "mdy").
std::string DateOrder(const std::string& format) {
    std::string order;
    for (size_t i = 0; i < format.size(); ++i) {
        const char c = format[i];
        if (c == '"' || c == '\'') {
            const size_t close = format.find(c, i + 1);
            if (close == std::string::npos) {
                break;
            }
            i = close;
            continue;
        }
        const char lc = char(c | 0x20);
        if ((lc == 'y' || lc == 'm' || lc == 'd') && order.find(lc) == std::string::npos) {
            order += lc;
        }
    }
    return order.size() == 3 ? order : std::string("ymd");
}

// Two-digit years land within the century window around the current year.
int ExpandYear(int year, const TFormatSettings& settings) {
    const int current = detail::ReadLocalClock().Year;
    const int window = settings.TwoDigitYearCenturyWindow;
    if (window <= 0) {
        return current / 100 * 100 + year;
    }
    const int threshold = current - window;
    year += threshold / 100 * 100;
    if (year < threshold) {
        year += 100;
    }
    return year;
}

bool ParseDate(std::string_view text, const TFormatSettings& settings, TDateTime& value) {
    text = detail::TrimBlanks(text);
    std::vector<int> numbers;
    std::vector<size_t> lengths;
    size_t i = 0;
    while (i < text.size()) {
        if (!IsDigit(text[i])) {
            return false;
        }
        int number = 0;
        size_t start = i;
        for (; i < text.size() && IsDigit(text[i]); ++i) {
            if (i - start >= 4) {
                return false;
            }
            number = number * 10 + (text[i] - '0');
        }
        numbers.push_back(number);
        lengths.push_back(i - start);
        if (i < text.size()) {
            const char separator = text[i];
            if (separator != settings.DateSeparator && separator != '-' && separator != '/' &&
                separator != '.') {
                return false;
            }
            ++i;
            if (i == text.size()) {
                return false;
            }
        }
    }
    std::string order = DateOrder(settings.ShortDateFormat);
    int year = 0, month = 0, day = 0;
    bool shortYear = false;
    if (numbers.size() == 2) {
        // Without a year: the current year, month and day in the format's order.
        order.erase(order.find('y'), 1);
        year = detail::ReadLocalClock().Year;
    } else if (numbers.size() != 3) {
        return false;
    }
    for (size_t k = 0; k < order.size(); ++k) {
        switch (order[k]) {
        case 'y':
            year = numbers[k];
            shortYear = lengths[k] <= 2;
            break;
        case 'm':
            month = numbers[k];
            break;
        default:
            day = numbers[k];
            break;
        }
    }
    if (shortYear) {
        year = ExpandYear(year, settings);
    }
    return TryEncodeDate(year, month, day, value);
}

bool ParseTime(std::string_view text, const TFormatSettings& settings, TDateTime& value) {
    text = detail::TrimBlanks(text);
    // An AM/PM marker at the end switches to the 12-hour clock.
    int meridiem = 0; // 1 am, 2 pm
    for (const auto& [marker, kind] : {std::pair<std::string_view, int>{settings.TimeAMString, 1},
                                       {settings.TimePMString, 2},
                                       {"AM", 1},
                                       {"PM", 2},
                                       {"A", 1},
                                       {"P", 2}}) {
        if (!marker.empty() && text.size() > marker.size() &&
            detail::SameAscii(text.substr(text.size() - marker.size()), marker)) {
            meridiem = kind;
            text = detail::TrimBlanks(text.substr(0, text.size() - marker.size()));
            break;
        }
    }
    int parts[3] = {0, 0, 0};
    int count = 0;
    int msec = 0;
    size_t i = 0;
    while (true) {
        if (count == 3 || i >= text.size() || !IsDigit(text[i])) {
            return false;
        }
        int number = 0;
        const size_t start = i;
        for (; i < text.size() && IsDigit(text[i]); ++i) {
            if (i - start >= 2) {
                return false;
            }
            number = number * 10 + (text[i] - '0');
        }
        parts[count++] = number;
        if (i == text.size()) {
            break;
        }
        const char separator = text[i++];
        if (count == 3 && (separator == '.' || separator == settings.DecimalSeparator)) {
            // Fraction of a second, rounded to the millisecond.
            const size_t fractionStart = i;
            double scale = 100;
            double fraction = 0;
            for (; i < text.size() && IsDigit(text[i]); ++i) {
                fraction += (text[i] - '0') * scale;
                scale /= 10;
            }
            if (i == fractionStart || i != text.size()) {
                return false;
            }
            msec = int(fraction + 0.5);
            if (msec > 999) {
                msec = 999;
            }
            break;
        }
        if (separator != settings.TimeSeparator && separator != ':') {
            return false;
        }
    }
    if (count < 2 && meridiem == 0) {
        return false;
    }
    int hour = parts[0];
    if (meridiem != 0) {
        if (hour > 12) {
            return false;
        }
        hour = hour % 12 + (meridiem == 2 ? 12 : 0);
    }
    return TryEncodeTime(hour, parts[1], parts[2], msec, value);
}

bool ParseDateTime(std::string_view text, const TFormatSettings& settings, TDateTime& value) {
    text = detail::TrimBlanks(text);
    // Date and time are separated by blanks or by the "T" of ISO 8601.
    size_t split = text.find_first_of(" \t");
    size_t next = split;
    if (split == std::string_view::npos) {
        split = text.find_first_of("Tt");
        next = split;
    }
    if (split != std::string_view::npos) {
        TDateTime datePart = 0;
        TDateTime timePart = 0;
        if (ParseDate(text.substr(0, split), settings, datePart) &&
            ParseTime(text.substr(next + 1), settings, timePart)) {
            value = ComposeDateTime(datePart, timePart);
            return true;
        }
    }
    return ParseDate(text, settings, value) || ParseTime(text, settings, value);
}

template <typename Parser>
TDateTime Convert(const std::string& text, const TFormatSettings& settings, Parser parser,
                  const char* message) {
    TDateTime value = 0;
    if (!parser(text, settings, value)) {
        throw EConvertError(FormatMessage(message, text));
    }
    return value;
}

} // namespace

bool TryStrToDate(const std::string& text, TDateTime& value) {
    return ParseDate(text, FormatSettings(), value);
}
bool TryStrToDate(const std::string& text, TDateTime& value, const TFormatSettings& settings) {
    return ParseDate(text, settings, value);
}
bool TryStrToTime(const std::string& text, TDateTime& value) {
    return ParseTime(text, FormatSettings(), value);
}
bool TryStrToTime(const std::string& text, TDateTime& value, const TFormatSettings& settings) {
    return ParseTime(text, settings, value);
}
bool TryStrToDateTime(const std::string& text, TDateTime& value) {
    return ParseDateTime(text, FormatSettings(), value);
}
bool TryStrToDateTime(const std::string& text, TDateTime& value, const TFormatSettings& settings) {
    return ParseDateTime(text, settings, value);
}

TDateTime StrToDate(const std::string& text) {
    return StrToDate(text, FormatSettings());
}
TDateTime StrToDate(const std::string& text, const TFormatSettings& settings) {
    return Convert(text, settings, ParseDate, "\"%s\" is not a valid date");
}
TDateTime StrToTime(const std::string& text) {
    return StrToTime(text, FormatSettings());
}
TDateTime StrToTime(const std::string& text, const TFormatSettings& settings) {
    return Convert(text, settings, ParseTime, "\"%s\" is not a valid time");
}
TDateTime StrToDateTime(const std::string& text) {
    return StrToDateTime(text, FormatSettings());
}
TDateTime StrToDateTime(const std::string& text, const TFormatSettings& settings) {
    return Convert(text, settings, ParseDateTime, "\"%s\" is not a valid date and time");
}

} // namespace quorda
