#pragma once

// Pieces of Variant shared by its source files.

#include "quorda/rtl/variant.h"

#include <vector>

namespace quorda {

struct Variant::ArrayData {
    int Low = 0;
    std::vector<Variant> Items;
};

} // namespace quorda
