#include "quorda/rtl/exception.h"

namespace quorda {

void DatabaseError(const std::string& message) {
    throw EDatabaseError(message);
}

} // namespace quorda
