#include "number_text_p.h"
#include "quorda/rtl/datetime.h"

#include <charconv>
#include <string_view>

namespace quorda {
namespace {

struct Parts {
    int Year, Month, Day, Hour, Minute, Second, MSec;
    TDateTime Value; // for the day of the week, worked out only by the formats that name the day
};

// Appends the value with at least `width` digits, zero-padded on the left; never allocates beyond
// the growth of the output.
void AppendPadded(std::string& out, int value, int width) {
    if (value >= 0 && value < 100 && width <= 2) { // months, days, hours, minutes, seconds
        if (value >= 10 || width == 2) {
            out += char('0' + value / 10);
        }
        out += char('0' + value % 10);
        return;
    }
    char digits[16];
    const auto [end, ec] = std::to_chars(digits, digits + sizeof digits, value);
    const auto length = static_cast<int>(end - digits);
    if (length < width) {
        out.append(static_cast<std::size_t>(width - length), '0');
    }
    out.append(digits, end);
}

// Format letters are ASCII: no locale lookup per character.
char Lower(char c) {
    return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c;
}

bool StartsWithNoCase(std::string_view text, size_t pos, std::string_view prefix) {
    return text.size() - pos >= prefix.size() && detail::SameAscii(text.substr(pos, prefix.size()), prefix);
}

// True when the format (outside quotes) holds an AM/PM marker, which switches hours to the 12-hour clock.
bool UsesTwelveHourClock(std::string_view format) {
    for (size_t i = 0; i < format.size(); ++i) {
        const char c = format[i];
        if (c == '"' || c == '\'') {
            const size_t close = format.find(c, i + 1);
            if (close == std::string_view::npos) {
                return false;
            }
            i = close;
        } else if (Lower(c) == 'a' &&
                   (StartsWithNoCase(format, i, "am/pm") || StartsWithNoCase(format, i, "a/p") ||
                    StartsWithNoCase(format, i, "ampm"))) {
            return true;
        }
    }
    return false;
}

class Formatter {
public:
    Formatter(const Parts& parts, const TFormatSettings& settings) : FParts(parts), FSettings(settings) {
        FOut.reserve(32); // "yyyy-mm-dd hh:nn:ss.zzz" and its kin without regrowing
    }

    void Format(std::string_view format, int depth) {
        // Nested formats (ShortDateFormat inside "c" ...) may refer to each other; two levels suffice
        // for every sensible setting and stop a format that names itself.
        if (depth > 2) {
            return;
        }
        // Worked out at the first hour token only: most formats have none.
        int twelveHour = -1;
        size_t i = 0;
        while (i < format.size()) {
            const char c = format[i];
            const char lc = Lower(c);
            size_t run = 1;
            while (i + run < format.size() && Lower(format[i + run]) == lc) {
                ++run;
            }
            switch (lc) {
            case '"':
            case '\'': {
                const size_t close = format.find(c, i + 1);
                const size_t end = close == std::string_view::npos ? format.size() : close;
                FOut.append(format.substr(i + 1, end - i - 1));
                i = close == std::string_view::npos ? format.size() : close + 1;
                continue;
            }
            case 'y':
                if (run <= 2) {
                    AppendPadded(FOut, FParts.Year % 100, 2);
                } else {
                    AppendPadded(FOut, FParts.Year, 4);
                }
                FAfterHour = false;
                break;
            case 'm':
                if (FAfterHour && run <= 2) {
                    AppendPadded(FOut, FParts.Minute, int(run));
                } else if (run <= 2) {
                    AppendPadded(FOut, FParts.Month, int(run));
                } else if (FParts.Month >= 1) {
                    FOut += run == 3 ? FSettings.ShortMonthNames[size_t(FParts.Month - 1)]
                                     : FSettings.LongMonthNames[size_t(FParts.Month - 1)];
                }
                FAfterHour = false;
                break;
            case 'd':
                if (run <= 2) {
                    AppendPadded(FOut, FParts.Day, int(run));
                } else if (run == 3) {
                    FOut += FSettings.ShortDayNames[size_t(DayOfWeek(FParts.Value) - 1)];
                } else if (run == 4) {
                    FOut += FSettings.LongDayNames[size_t(DayOfWeek(FParts.Value) - 1)];
                } else if (run == 5) {
                    Format(FSettings.ShortDateFormat, depth + 1);
                } else {
                    Format(FSettings.LongDateFormat, depth + 1);
                }
                FAfterHour = false;
                break;
            case 'h': {
                int hour = FParts.Hour;
                if (twelveHour < 0) {
                    twelveHour = UsesTwelveHourClock(format) ? 1 : 0;
                }
                if (twelveHour == 1) {
                    hour %= 12;
                    if (hour == 0) {
                        hour = 12;
                    }
                }
                AppendPadded(FOut, hour, run >= 2 ? 2 : 1);
                FAfterHour = true;
                break;
            }
            case 'n':
                AppendPadded(FOut, FParts.Minute, run >= 2 ? 2 : 1);
                FAfterHour = false;
                break;
            case 's':
                AppendPadded(FOut, FParts.Second, run >= 2 ? 2 : 1);
                FAfterHour = false;
                break;
            case 'z':
                AppendPadded(FOut, FParts.MSec, run >= 3 ? 3 : 1);
                FAfterHour = false;
                break;
            case 't':
                Format(run >= 2 ? FSettings.LongTimeFormat : FSettings.ShortTimeFormat, depth + 1);
                FAfterHour = false;
                break;
            case 'c':
                Format(FSettings.ShortDateFormat, depth + 1);
                if (FParts.Hour != 0 || FParts.Minute != 0 || FParts.Second != 0 || FParts.MSec != 0) {
                    FOut += ' ';
                    Format(FSettings.LongTimeFormat, depth + 1);
                }
                FAfterHour = false;
                break;
            case 'a':
                run = AmPm(format, i);
                break;
            case '/':
                FOut.append(run, FSettings.DateSeparator);
                break;
            case ':':
                FOut.append(run, FSettings.TimeSeparator);
                break;
            default:
                FOut.append(format.substr(i, run));
                break;
            }
            i += run;
        }
    }

    std::string TakeText() { return std::move(FOut); }

private:
    // Writes the marker at pos and returns its length; a lone "a" is literal text.
    size_t AmPm(std::string_view format, size_t pos) {
        const bool pm = FParts.Hour >= 12;
        if (StartsWithNoCase(format, pos, "am/pm")) {
            // The case of the marker follows the format: "am/pm" gives "am", "AM/PM" gives "PM".
            const size_t at = pm ? pos + 3 : pos;
            FOut.append(format.substr(at, 2));
            return 5;
        }
        if (StartsWithNoCase(format, pos, "a/p")) {
            FOut += format[pm ? pos + 2 : pos];
            return 3;
        }
        if (StartsWithNoCase(format, pos, "ampm")) {
            FOut += pm ? FSettings.TimePMString : FSettings.TimeAMString;
            return 4;
        }
        FOut += format[pos];
        return 1;
    }

    const Parts& FParts;
    const TFormatSettings& FSettings;
    std::string FOut;
    bool FAfterHour = false;
};

} // namespace

std::string FormatDateTime(const std::string& format, TDateTime value) {
    return FormatDateTime(format, value, FormatSettings());
}

std::string FormatDateTime(const std::string& format, TDateTime value, const TFormatSettings& settings) {
    std::uint16_t y, m, d, h, n, s, z;
    DecodeDateTime(value, y, m, d, h, n, s, z);
    const Parts parts{y, m, d, h, n, s, z, value};
    Formatter formatter(parts, settings);
    formatter.Format(format.empty() ? std::string_view("c") : std::string_view(format), 0);
    return formatter.TakeText();
}

std::string DateTimeToStr(TDateTime value) {
    return FormatDateTime("c", value, FormatSettings());
}
std::string DateTimeToStr(TDateTime value, const TFormatSettings& settings) {
    return FormatDateTime("c", value, settings);
}
std::string DateToStr(TDateTime value) {
    return FormatDateTime(FormatSettings().ShortDateFormat, value);
}
std::string DateToStr(TDateTime value, const TFormatSettings& settings) {
    return FormatDateTime(settings.ShortDateFormat, value, settings);
}
std::string TimeToStr(TDateTime value) {
    return FormatDateTime(FormatSettings().LongTimeFormat, value);
}
std::string TimeToStr(TDateTime value, const TFormatSettings& settings) {
    return FormatDateTime(settings.LongTimeFormat, value, settings);
}

} // namespace quorda
