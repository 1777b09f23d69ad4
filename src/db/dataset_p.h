#pragma once

namespace quorda::detail {

// Runs Body, then Cleanup also when Body raised. An exception from Cleanup during the unwinding of
// Body's exception is dropped, so the original one reaches the caller.
template <typename B, typename C>
void TryFinally(B&& Body, C&& Cleanup) {
    try {
        Body();
    } catch (...) {
        try {
            Cleanup();
        } catch (...) {
        }
        throw;
    }
    Cleanup();
}

} // namespace quorda::detail
