#include "quorda/rtl/in_out_error.h"

#include <cstring>

namespace quorda {

void RaiseInOutError(const std::string& action, const std::string& fileName, int errorCode) {
    throw EInOutError(action + " \"" + fileName + "\": " + std::strerror(errorCode), errorCode);
}

} // namespace quorda
