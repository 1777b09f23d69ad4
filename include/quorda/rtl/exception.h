#pragma once

#include "quorda/export.h"

#include <array>
#include <cstddef>
#include <exception>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

namespace quorda {

// Root of every exception the library raises.
class QUORDA_API Exception : public std::exception {
public:
    explicit Exception(std::string message) : FMessage(std::move(message)) {}

    const std::string& Message() const noexcept { return FMessage; }
    void SetMessage(std::string message) { FMessage = std::move(message); }
    int HelpContext() const noexcept { return FHelpContext; }
    void SetHelpContext(int value) noexcept { FHelpContext = value; }

    const char* what() const noexcept override { return FMessage.c_str(); }

private:
    std::string FMessage;
    int FHelpContext = 0;
};

// Raised for rule violations of datasets and connections.
class QUORDA_API EDatabaseError : public Exception {
public:
    using Exception::Exception;
};

// One argument of a printf-style message. Each integer keeps its own width and signedness so that
// the conversions of the format (%d, %x, %u ...) see what the caller passed.
using TFormatArg = std::variant<bool, char, int, unsigned, long, unsigned long, long long, unsigned long long,
                                double, long double, const char*, std::string_view, const void*>;

// Formats a classic printf-style message (%s %d %x ...) from arguments already packed. A mismatch
// between the format and the arguments never throws a different exception type: the raw format
// text is returned instead.
QUORDA_API std::string FormatMessageArgs(const std::string& format, std::span<const TFormatArg> args);

namespace detail {
// The argument kind a value is passed as: small integers widen as in a variadic call, enumerations
// pass their underlying value, strings pass as views of the caller's text.
template <typename T>
TFormatArg ToFormatArg(const T& value) {
    if constexpr (std::is_enum_v<T>) {
        return ToFormatArg(static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, char>) {
        return value;
    } else if constexpr (std::is_integral_v<T> && sizeof(T) < sizeof(int)) {
        if constexpr (std::is_signed_v<T>) {
            return static_cast<int>(value);
        } else {
            return static_cast<unsigned>(value);
        }
    } else if constexpr (std::is_same_v<T, float>) {
        return static_cast<double>(value);
    } else if constexpr (std::is_convertible_v<const T&, const char*>) {
        return static_cast<const char*>(value);
    } else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
        return std::string_view(value);
    } else if constexpr (std::is_pointer_v<T>) {
        return static_cast<const void*>(value);
    } else {
        return value;
    }
}
} // namespace detail

template <typename... Args>
std::string FormatMessage(const std::string& format, const Args&... args) {
    if constexpr (sizeof...(Args) == 0) {
        return format;
    } else {
        const std::array<TFormatArg, sizeof...(Args)> packed{detail::ToFormatArg(args)...};
        return FormatMessageArgs(format, packed);
    }
}

[[noreturn]] QUORDA_API void DatabaseError(const std::string& message);

template <typename... Args>
[[noreturn]] void DatabaseErrorFmt(const std::string& format, const Args&... args) {
    DatabaseError(FormatMessage(format, args...));
}

} // namespace quorda
