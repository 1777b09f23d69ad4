#pragma once

#include "quorda/rtl/exception.h"
#include "quorda/rtl/format_settings.h"

#include <initializer_list>
#include <string>
#include <type_traits>
#include <vector>

namespace quorda::testing_support {

// The text of the E that Action raises, or "<no exception>".
template <typename E = Exception, typename F>
std::string MessageOf(F&& Action) {
    try {
        Action();
    } catch (const E& e) {
        return e.what();
    }
    return "<no exception>";
}

using Strings = std::vector<std::string>;

// Function applied to every input in order: one comparison checks a whole table of cases.
template <typename In, typename F>
auto Map(std::initializer_list<In> Inputs, F&& Function) {
    std::vector<std::decay_t<decltype(Function(*Inputs.begin()))>> results;
    for (const In& input : Inputs) {
        results.push_back(Function(input));
    }
    return results;
}

// Restores the process-wide format settings a test changes.
struct SettingsGuard {
    TFormatSettings Saved = FormatSettings();
    ~SettingsGuard() { FormatSettings() = Saved; }
};

} // namespace quorda::testing_support
