#pragma once

// The dataset framework: datasets, fields, field definitions, data sources and links, bookmarks and
// the in-memory dataset.

#include "quorda/db/bookmark.h"
#include "quorda/db/data_link.h"
#include "quorda/db/data_source.h"
#include "quorda/db/dataset.h"
#include "quorda/db/db_consts.h"
#include "quorda/db/field.h"
#include "quorda/db/field_classes.h"
#include "quorda/db/field_def.h"
#include "quorda/db/fields.h"
#include "quorda/db/mem_dataset.h"
#include "quorda/db/types.h"
