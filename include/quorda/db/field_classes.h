#pragma once

#include "quorda/db/binary_fields.h"
#include "quorda/db/blob_field.h"
#include "quorda/db/boolean_field.h"
#include "quorda/db/date_time_fields.h"
#include "quorda/db/field.h"
#include "quorda/db/numeric_fields.h"
#include "quorda/db/string_field.h"

namespace quorda {

// Creates a field of one class for an owner (the role of a class reference in the classic framework).
using TFieldClass = TField* (*)(TComponent* Owner);

// The standard field class of a type; null for types without one (ftUnknown, ftCursor, ftADT, ...).
QUORDA_API TFieldClass DefaultFieldClass(TFieldType Type);

} // namespace quorda
