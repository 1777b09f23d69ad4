#pragma once

#include "quorda/core/odbc_database.h"

namespace quorda::demo {

// An entity over the orders: the statements it generates, its selection ordered by a chosen column,
// and an order added, locked, edited (only the changed column reaches the UPDATE) and deleted.
void ShowOrdersEntity(TODBCDatabase& db);

} // namespace quorda::demo
