#pragma once

// Entities: field items, generated SQL, settings and reread notification.

#include "quorda/entity/entity.h"
#include "quorda/entity/entity_types.h"
#include "quorda/entity/field_item.h"
