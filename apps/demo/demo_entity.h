#pragma once

#include "quorda/core/odbc_database.h"

namespace quorda::demo {

// An entity over the orders: the statements it generates, its selection ordered by a chosen column,
// and an order added, locked, edited (only the changed column reaches the UPDATE) and deleted; then
// a user entity over the order totals opened with a filter and an ordering, and a row found in it.
void ShowOrdersEntity(TODBCDatabase& db);

} // namespace quorda::demo
