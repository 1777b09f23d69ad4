#pragma once

#include <string>

namespace quorda::testing_support {

// The text of the E that Action raises, or "<no exception>".
template <typename E, typename F>
std::string MessageOf(F&& Action) {
    try {
        Action();
    } catch (const E& e) {
        return e.what();
    }
    return "<no exception>";
}

} // namespace quorda::testing_support
