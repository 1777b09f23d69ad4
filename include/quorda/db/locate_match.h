#pragma once

#include "quorda/db/types.h"
#include "quorda/rtl/variant.h"

#include <vector>

namespace quorda {

class TField;

// Whether fields of this type hold text (compared as text by Locate).
QUORDA_API bool IsTextFieldType(TFieldType Type);

// Whether the current record's Fields match KeyValues, the way Locate compares: one field takes the
// value itself, several take the elements of a variant array in order. Text compares as text
// (optionally ignoring case, optionally as a prefix), everything else by variant equality; a null or
// empty key matches only a null value.
QUORDA_API bool LocateKeysMatch(const std::vector<TField*>& Fields, const Variant& KeyValues,
                                bool CaseInsensitive, bool PartialKey);

} // namespace quorda
