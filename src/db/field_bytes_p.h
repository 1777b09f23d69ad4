#pragma once

#include "quorda/db/field.h"
#include "quorda/rtl/variant.h"

namespace quorda {

// The elements of a variant array as byte values: how blob and binary fields take an array value.
TBytes VarArrayToBytes(const Variant& Value);

} // namespace quorda
