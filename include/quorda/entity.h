#pragma once

// Entities: field items, generated SQL, open and find, settings, reread notification and the
// design-time user entity.

#include "quorda/entity/entity.h"
#include "quorda/entity/entity_types.h"
#include "quorda/entity/field_item.h"
#include "quorda/entity/user_entity.h"
