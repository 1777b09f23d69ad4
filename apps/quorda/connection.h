// How quorda reaches its data source: a DSN, a driver connection string or the embedded default.
#pragma once

#include "quorda/core/odbc_database.h"

#include <memory>
#include <string>

namespace quorda::cli {

struct ConnectionOptions {
    std::string Dsn;
    std::string User;
    std::string Password;
    std::string ConnectionString;
};

// The SQLite database file used without -d and -c: $QUORDA_DATABASE, else the build's demo database.
std::string DefaultDatabaseFile();
// An open connection for the options.
std::unique_ptr<TODBCDatabase> Connect(const ConnectionOptions& Options);

} // namespace quorda::cli
