#pragma once

#include "quorda/rtl/application.h"
#include "quorda/rtl/exception.h"
#include "quorda/rtl/format_settings.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
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

// The exception of type E that Action raises; a failure and no value when it raises none.
template <typename E, typename Action>
std::optional<E> Raised(Action&& action) {
    try {
        std::forward<Action>(action)();
    } catch (const E& e) {
        return e;
    }
    ADD_FAILURE() << "the expected exception was not raised";
    return std::nullopt;
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

// The whole content of a file ("" when there is none), and a file written with Text, its folder made.
inline std::string ReadFile(const std::filesystem::path& Path) {
    std::ifstream File(Path, std::ios::binary);
    return {std::istreambuf_iterator<char>(File), {}};
}
inline void WriteFile(const std::filesystem::path& Path, const std::string& Text) {
    std::filesystem::create_directories(Path.parent_path());
    std::ofstream(Path, std::ios::binary) << Text;
}

// Collects what the application shows while it lives, then puts the previous display back.
class TShownErrors {
public:
    TShownErrors()
        : FSaved(Application::SetExceptionHandler(
              [this](const std::exception& E) { Shown.push_back(E.what()); })) {}
    ~TShownErrors() { Application::SetExceptionHandler(FSaved); }

    std::vector<std::string> Shown;

private:
    TExceptionHandler FSaved;
};

// Restores the process-wide format settings a test changes.
struct SettingsGuard {
    TFormatSettings Saved = FormatSettings();
    ~SettingsGuard() { FormatSettings() = Saved; }
};

} // namespace quorda::testing_support
