#pragma once

#include "quorda/export.h"

#include <memory>
#include <string>

namespace quorda {

class TODBCDatabase;

// A new database, connected through the driver connection string ConnectStr ("DSN=...;UID=...",
// "Driver=SQLite3;Database=..."); the driver never prompts. Raises EODBCError when the connection
// fails.
QUORDA_API std::unique_ptr<TODBCDatabase> ODBCConnect(const std::string& ConnectStr);

} // namespace quorda
