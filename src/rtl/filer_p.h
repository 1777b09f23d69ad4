#pragma once

#include "quorda/rtl/filer.h"

namespace quorda {

// Deeper nesting than this is a damaged stream, not a real form.
inline constexpr int kMaxNesting = 256;

// Counts one level of nesting for as long as it lives; too deep raises "Invalid property value".
class TNestingGuard {
public:
    explicit TNestingGuard(int& Depth) : FDepth(Depth) {
        if (++FDepth > kMaxNesting) {
            --FDepth;
            throw EReadError(SInvalidPropertyValue);
        }
    }
    ~TNestingGuard() { --FDepth; }
    TNestingGuard(const TNestingGuard&) = delete;
    TNestingGuard& operator=(const TNestingGuard&) = delete;

private:
    int& FDepth;
};

} // namespace quorda
