#pragma once

#include "quorda/rtl/exception.h"

#include <functional>
#include <string>

namespace quorda::testing {

// The message of the error Action raises, or "<no error>".
inline std::string ErrorOf(const std::function<void()>& Action) {
    try {
        Action();
    } catch (const Exception& e) {
        return e.Message();
    }
    return "<no error>";
}

} // namespace quorda::testing
