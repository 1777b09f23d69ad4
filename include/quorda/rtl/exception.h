#pragma once

#include "quorda/export.h"

#include <exception>
#include <fmt/printf.h>
#include <string>
#include <utility>

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

// Formats a classic printf-style message (%s %d %x ...). A mismatch between the format and the
// arguments never throws a different exception type: the raw format text is returned instead.
template <typename... Args>
std::string FormatMessage(const std::string& format, const Args&... args) {
    if constexpr (sizeof...(Args) == 0) {
        return format;
    } else {
        try {
            return fmt::sprintf(format, args...);
        } catch (const fmt::format_error&) {
            return format;
        }
    }
}

[[noreturn]] QUORDA_API void DatabaseError(const std::string& message);

template <typename... Args>
[[noreturn]] void DatabaseErrorFmt(const std::string& format, const Args&... args) {
    DatabaseError(FormatMessage(format, args...));
}

} // namespace quorda
