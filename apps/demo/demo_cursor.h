#pragma once

#include "quorda/core/odbc_database.h"

namespace quorda::demo {

// Browses a parameterised query: its rows, backwards from the end, a bookmark, the record counts,
// and a product note (a memo) read through a blob stream.
void ShowCursor(TODBCDatabase& db);

} // namespace quorda::demo
