#include "quorda/rtl/persistent.h"

namespace quorda {

void TPersistent::Assign(const TPersistent* Source) {
    if (Source != nullptr) {
        Source->AssignTo(this);
    } else {
        AssignError(nullptr);
    }
}

void TPersistent::AssignTo(TPersistent* Dest) const {
    Dest->AssignError(this);
}

void TPersistent::AssignError(const TPersistent* Source) const {
    const std::string sourceName = Source != nullptr ? Source->ClassName() : std::string("nil");
    throw EAssignError(FormatMessage(SAssignError, sourceName, ClassName()));
}

} // namespace quorda
