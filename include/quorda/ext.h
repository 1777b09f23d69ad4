#pragma once

// The editable dataset: edits kept in memory and written by the application's update events.
#include "quorda/ext/odbc_ext_blob_stream.h"
#include "quorda/ext/odbc_ext_dataset.h"
