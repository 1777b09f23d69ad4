#pragma once

#include "quorda/core/odbc_database.h"

namespace quorda::demo {

// True when the demo tables exist on the connection.
bool SchemaExists(TODBCDatabase& db);

// Creates customers, products, orders, order_lines and the order_totals view with their rows, in
// one transaction.
void CreateSchema(TODBCDatabase& db);

} // namespace quorda::demo
