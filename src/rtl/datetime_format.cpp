#include "number_text_p.h"
#include "quorda/rtl/datetime.h"

#include <cctype>

namespace quorda {
namespace {

struct Parts {
    int Year, Month, Day, Hour, Minute, Second, MSec, WeekDay;
};

std::string Padded(int value, int width) {
    std::string text = std::to_string(value);
    if (text.size() < size_t(width)) {
        text.insert(0, size_t(width) - text.size(), '0');
    }
    return text;
}

char Lower(char c) {
    return char(std::tolower(static_cast<unsigned char>(c)));
}

bool StartsWithNoCase(const std::string& text, size_t pos, std::string_view prefix) {
    return text.size() - pos >= prefix.size() &&
           detail::SameAscii(std::string_view(text).substr(pos, prefix.size()), prefix);
}

// True when the format (outside quotes) holds an AM/PM marker, which switches hours to the 12-hour clock.
bool UsesTwelveHourClock(const std::string& format) {
    for (size_t i = 0; i < format.size(); ++i) {
        const char c = format[i];
        if (c == '"' || c == '\'') {
            const size_t close = format.find(c, i + 1);
            if (close == std::string::npos) {
                return false;
            }
            i = close;
        } else if (StartsWithNoCase(format, i, "am/pm") || StartsWithNoCase(format, i, "a/p") ||
                   StartsWithNoCase(format, i, "ampm")) {
            return true;
        }
    }
    return false;
}

class Formatter {
public:
    Formatter(const Parts& parts, const TFormatSettings& settings) : FParts(parts), FSettings(settings) {}

    void Format(const std::string& format, int depth) {
        // Nested formats (ShortDateFormat inside "c" ...) may refer to each other; two levels suffice
        // for every sensible setting and stop a format that names itself.
        if (depth > 2) {
            return;
        }
        const bool twelveHour = UsesTwelveHourClock(format);
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
                const size_t end = close == std::string::npos ? format.size() : close;
                FOut.append(format, i + 1, end - i - 1);
                i = close == std::string::npos ? format.size() : close + 1;
                continue;
            }
            case 'y':
                FOut += run <= 2 ? Padded(FParts.Year % 100, 2) : Padded(FParts.Year, 4);
                FAfterHour = false;
                break;
            case 'm':
                if (FAfterHour && run <= 2) {
                    FOut += Padded(FParts.Minute, int(run));
                } else if (run <= 2) {
                    FOut += Padded(FParts.Month, int(run));
                } else if (FParts.Month >= 1) {
                    FOut += run == 3 ? FSettings.ShortMonthNames[size_t(FParts.Month - 1)]
                                     : FSettings.LongMonthNames[size_t(FParts.Month - 1)];
                }
                FAfterHour = false;
                break;
            case 'd':
                if (run <= 2) {
                    FOut += Padded(FParts.Day, int(run));
                } else if (run == 3) {
                    FOut += FSettings.ShortDayNames[size_t(FParts.WeekDay - 1)];
                } else if (run == 4) {
                    FOut += FSettings.LongDayNames[size_t(FParts.WeekDay - 1)];
                } else if (run == 5) {
                    Format(FSettings.ShortDateFormat, depth + 1);
                } else {
                    Format(FSettings.LongDateFormat, depth + 1);
                }
                FAfterHour = false;
                break;
            case 'h': {
                int hour = FParts.Hour;
                if (twelveHour) {
                    hour %= 12;
                    if (hour == 0) {
                        hour = 12;
                    }
                }
                FOut += Padded(hour, run >= 2 ? 2 : 1);
                FAfterHour = true;
                break;
            }
            case 'n':
                FOut += Padded(FParts.Minute, run >= 2 ? 2 : 1);
                FAfterHour = false;
                break;
            case 's':
                FOut += Padded(FParts.Second, run >= 2 ? 2 : 1);
                FAfterHour = false;
                break;
            case 'z':
                FOut += Padded(FParts.MSec, run >= 3 ? 3 : 1);
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
                FOut.append(format, i, run);
                break;
            }
            i += run;
        }
    }

    const std::string& Text() const { return FOut; }

private:
    // Writes the marker at pos and returns its length; a lone "a" is literal text.
    size_t AmPm(const std::string& format, size_t pos) {
        const bool pm = FParts.Hour >= 12;
        if (StartsWithNoCase(format, pos, "am/pm")) {
            // The case of the marker follows the format: "am/pm" gives "am", "AM/PM" gives "PM".
            const size_t at = pm ? pos + 3 : pos;
            FOut.append(format, at, 2);
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
    Parts parts{};
    std::uint16_t y, m, d, h, n, s, z;
    DecodeDateTime(value, y, m, d, h, n, s, z);
    parts = Parts{y, m, d, h, n, s, z, DayOfWeek(value)};
    Formatter formatter(parts, settings);
    formatter.Format(format.empty() ? std::string("c") : format, 0);
    return formatter.Text();
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
