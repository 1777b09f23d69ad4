#pragma once

#include "quorda/core/odbc_database.h"

#include <string>

namespace quorda::demo {

// Edits, inserts and deletes the lines of the newest order through an editable query whose update
// events run parameterised UPDATE, INSERT and DELETE statements, showing the refreshed rows.
void EditOrderLines(TODBCDatabase& db);

// Four threads read a checksum of the orders through a pool of three connections to the file.
void ReadThroughPool(const std::string& file, TODBCDatabase& db);

} // namespace quorda::demo
