// Value conversion between the script's text values and the application's C buffers.
#include "fault_handles.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace quorda_fault {
namespace {

bool ParseInteger(const std::string& text, long long& out) {
    const char* begin = text.c_str();
    char* end = nullptr;
    errno = 0;
    out = std::strtoll(begin, &end, 10);
    return errno == 0 && end != begin && *end == '\0';
}

bool ParseDouble(const std::string& text, double& out) {
    const char* begin = text.c_str();
    char* end = nullptr;
    out = std::strtod(begin, &end);
    return end != begin && *end == '\0';
}

// "YYYY-MM-DD", "HH:MM:SS" and "YYYY-MM-DD HH:MM:SS[.fraction]"; the fraction is read as nanoseconds.
bool ParseTimestamp(const std::string& text, SQL_TIMESTAMP_STRUCT& out) {
    out = {};
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, used = 0;
    const char* rest = text.c_str();
    if (std::sscanf(rest, "%d-%d-%d%n", &year, &month, &day, &used) == 3) {
        rest += used;
        if (*rest == ' ' || *rest == 'T') {
            ++rest;
        }
    } else {
        year = 0;
    }
    if (*rest != '\0') {
        if (std::sscanf(rest, "%d:%d:%d%n", &hour, &minute, &second, &used) != 3) {
            return false;
        }
        rest += used;
        if (*rest == '.') {
            std::string digits;
            for (++rest; *rest >= '0' && *rest <= '9'; ++rest) {
                digits += *rest;
            }
            digits.resize(9, '0');
            out.fraction = static_cast<SQLUINTEGER>(std::strtoul(digits.c_str(), nullptr, 10));
        }
        if (*rest != '\0') {
            return false;
        }
    }
    out.year = static_cast<SQLSMALLINT>(year);
    out.month = static_cast<SQLUSMALLINT>(month);
    out.day = static_cast<SQLUSMALLINT>(day);
    out.hour = static_cast<SQLUSMALLINT>(hour);
    out.minute = static_cast<SQLUSMALLINT>(minute);
    out.second = static_cast<SQLUSMALLINT>(second);
    return true;
}

template <typename T>
SQLRETURN Put(T value, SQLPOINTER buffer, SQLLEN* indicator) {
    std::memcpy(buffer, &value, sizeof value);
    if (indicator != nullptr) {
        *indicator = static_cast<SQLLEN>(sizeof value);
    }
    return SQL_SUCCESS;
}

std::string Number(double value) {
    char text[64];
    auto result = std::to_chars(text, text + sizeof text, value);
    return std::string(text, result.ptr);
}

} // namespace

std::string ArgText(const SQLCHAR* text, SQLINTEGER length) {
    if (text == nullptr) {
        return {};
    }
    const char* chars = reinterpret_cast<const char*>(text);
    return length == SQL_NTS || length < 0 ? std::string(chars)
                                           : std::string(chars, static_cast<size_t>(length));
}

SQLRETURN CopyOut(Handle& handle, const std::string& text, SQLCHAR* buffer, SQLLEN bufferLength,
                  SQLSMALLINT* length) {
    if (length != nullptr) {
        *length = static_cast<SQLSMALLINT>(text.size());
    }
    if (buffer == nullptr || bufferLength <= 0) {
        return text.empty() ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
    }
    size_t n = std::min(text.size(), static_cast<size_t>(bufferLength - 1));
    std::memcpy(buffer, text.data(), n);
    buffer[n] = '\0';
    if (n < text.size()) {
        handle.Post("01004", "[Quorda][Fault] String data, right truncated");
        return SQL_SUCCESS_WITH_INFO;
    }
    return SQL_SUCCESS;
}

SQLRETURN WriteValue(Handle& handle, const Value& value, SQLSMALLINT cType, SQLPOINTER buffer,
                     SQLLEN bufferLength, SQLLEN* indicator, size_t& offset, bool noTotal, bool& done) {
    if (done) {
        return SQL_NO_DATA;
    }
    if (!value) {
        if (indicator == nullptr) {
            return handle.Error("22002", "Indicator variable required but not supplied");
        }
        *indicator = SQL_NULL_DATA;
        done = true;
        return SQL_SUCCESS;
    }
    const std::string& text = *value;

    if (cType == SQL_C_CHAR || cType == SQL_C_BINARY) {
        bool character = cType == SQL_C_CHAR;
        size_t remaining = text.size() - std::min(offset, text.size());
        size_t room = bufferLength <= 0 ? 0 : static_cast<size_t>(bufferLength) - (character ? 1 : 0);
        size_t n = std::min(remaining, room);
        if (buffer != nullptr && bufferLength > 0) {
            std::memcpy(buffer, text.data() + offset, n);
            if (character) {
                static_cast<char*>(buffer)[n] = '\0';
            }
        }
        bool cut = n < remaining || (character && bufferLength <= 0);
        if (indicator != nullptr) {
            *indicator = cut && noTotal ? SQL_NO_TOTAL : static_cast<SQLLEN>(remaining);
        }
        offset += n;
        if (cut) {
            handle.Post("01004", "[Quorda][Fault] String data, right truncated");
            return SQL_SUCCESS_WITH_INFO;
        }
        done = true;
        return SQL_SUCCESS;
    }

    done = true;
    long long integer = 0;
    double real = 0;
    SQL_TIMESTAMP_STRUCT stamp{};
    switch (cType) {
    case SQL_C_SHORT:
    case SQL_C_LONG:
    case SQL_C_SBIGINT:
        if (!ParseInteger(text, integer)) {
            return handle.Error("22018", "Invalid character value for cast");
        }
        return cType == SQL_C_SHORT  ? Put(static_cast<std::int16_t>(integer), buffer, indicator)
               : cType == SQL_C_LONG ? Put(static_cast<std::int32_t>(integer), buffer, indicator)
                                     : Put(static_cast<std::int64_t>(integer), buffer, indicator);
    case SQL_C_DOUBLE:
        if (!ParseDouble(text, real)) {
            return handle.Error("22018", "Invalid character value for cast");
        }
        return Put(real, buffer, indicator);
    case SQL_C_DATE:
    case SQL_C_TIME:
    case SQL_C_TIMESTAMP:
        if (!ParseTimestamp(text, stamp)) {
            return handle.Error("22008", "Datetime field overflow");
        }
        if (cType == SQL_C_DATE) {
            return Put(SQL_DATE_STRUCT{stamp.year, stamp.month, stamp.day}, buffer, indicator);
        }
        if (cType == SQL_C_TIME) {
            return Put(SQL_TIME_STRUCT{stamp.hour, stamp.minute, stamp.second}, buffer, indicator);
        }
        return Put(stamp, buffer, indicator);
    default:
        done = false;
        return handle.Error("S1003", "Program type out of range");
    }
}

std::string RenderParameter(const ParamBinding& param, const Value* sent) {
    SQLLEN indicator = param.Indicator != nullptr ? *param.Indicator : SQL_NTS;
    if (sent != nullptr) {
        return *sent ? std::to_string((*sent)->size()) + ":" + EscapeForLog((*sent)->substr(0, 200)) : "NULL";
    }
    if (indicator == SQL_NULL_DATA) {
        return "NULL";
    }
    const char* data = static_cast<const char*>(param.Data);
    auto bytes = [&](size_t length) {
        return std::to_string(length) + ":" +
               EscapeForLog(std::string_view(data, std::min<size_t>(length, 200)));
    };
    std::int32_t integer = 0;
    const auto* date = static_cast<const SQL_DATE_STRUCT*>(param.Data);
    const auto* clock = static_cast<const SQL_TIME_STRUCT*>(param.Data);
    const auto* stamp = static_cast<const SQL_TIMESTAMP_STRUCT*>(param.Data);
    char text[64];
    switch (param.CType) {
    case SQL_C_LONG:
        std::memcpy(&integer, param.Data, sizeof integer);
        return std::to_string(integer);
    case SQL_C_CHAR:
        return bytes(static_cast<size_t>(indicator));
    case SQL_C_BINARY:
        return bytes(static_cast<size_t>(param.Indicator == nullptr ? param.BufferLength : indicator));
    case SQL_C_DOUBLE:
        return Number(*static_cast<const double*>(param.Data));
    case SQL_C_DATE:
        std::snprintf(text, sizeof text, "%d-%02u-%02u", date->year, date->month, date->day);
        return text;
    case SQL_C_TIME:
        std::snprintf(text, sizeof text, "%02u:%02u:%02u", clock->hour, clock->minute, clock->second);
        return text;
    case SQL_C_TIMESTAMP:
        std::snprintf(text, sizeof text, "%d-%02u-%02u %02u:%02u:%02u.%u", stamp->year, stamp->month,
                      stamp->day, stamp->hour, stamp->minute, stamp->second,
                      static_cast<unsigned>(stamp->fraction));
        return text;
    default:
        return "?";
    }
}

} // namespace quorda_fault
