#include "quorda/rtl/exception.h"

#include <fmt/args.h>
#include <fmt/printf.h>
#include <functional>

namespace quorda {

std::string FormatMessageArgs(const std::string& format, std::span<const TFormatArg> args) {
    fmt::dynamic_format_arg_store<fmt::printf_context> store;
    for (const TFormatArg& arg : args) {
        std::visit(
            [&store](const auto& value) {
                // A C string is passed by reference: the store would otherwise copy it into a
                // std::string, which a null pointer cannot become.
                if constexpr (std::is_same_v<std::decay_t<decltype(value)>, const char*>) {
                    store.push_back(std::cref(value));
                } else {
                    store.push_back(value);
                }
            },
            arg);
    }
    try {
        return fmt::vsprintf(format, store);
    } catch (const fmt::format_error&) {
        return format;
    }
}

void DatabaseError(const std::string& message) {
    throw EDatabaseError(message);
}

} // namespace quorda
