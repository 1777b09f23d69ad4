#pragma once

#include "quorda/rtl/exception.h"

#include <string>

namespace quorda {

// A file could not be opened, read or written. ErrorCode is the operating system's error number
// (errno); the message names the file and the reason.
class QUORDA_API EInOutError : public Exception {
public:
    EInOutError(std::string message, int errorCode) : Exception(std::move(message)), FErrorCode(errorCode) {}

    int ErrorCode() const noexcept { return FErrorCode; }

private:
    int FErrorCode;
};

// Raises EInOutError "<action> \"<file>\": <strerror(errorCode)>".
[[noreturn]] QUORDA_API void RaiseInOutError(const std::string& action, const std::string& fileName,
                                             int errorCode);

} // namespace quorda
