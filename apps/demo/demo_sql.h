#pragma once

#include "quorda/core/odbc_database.h"

#include <string>
#include <vector>

namespace quorda::demo {

// Plain statements on the database's own connection, so they run inside its transactions.
void Exec(TODBCDatabase& db, const std::string& sql);

// Every row of a query, each value as text ("NULL" for a null).
std::vector<std::vector<std::string>> Query(TODBCDatabase& db, const std::string& sql);

// The first value of the first row as a number.
long long Scalar(TODBCDatabase& db, const std::string& sql);

} // namespace quorda::demo
