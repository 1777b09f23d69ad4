#pragma once

#include "quorda/grid/bookmark_list.h"
#include "quorda/grid/column.h"
#include "quorda/grid/confirm.h"
#include "quorda/grid/dataset_model.h"
#include "quorda/grid/db_grid.h"
#include "quorda/grid/ext_db_grid.h"
#include "quorda/grid/field_save.h"
#include "quorda/grid/grid_types.h"
#include "quorda/grid/image_list.h"
