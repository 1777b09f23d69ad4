// The subcommands of quorda. Each writes its result to standard output and raises on failure.
#pragma once

#include "quorda/core/odbc_database.h"

#include <string>
#include <vector>

namespace quorda::cli {

struct QueryOptions {
    std::string Sql;
    std::vector<std::string> Params; // "name=value"
    bool Csv = false;
};

void ListDsns();
void ListDrivers();
void ListTables(TODBCDatabase& Db);
void ListColumns(TODBCDatabase& Db, const std::string& Table);
void RunQuery(TODBCDatabase& Db, const QueryOptions& Options);
void RunExec(TODBCDatabase& Db, const QueryOptions& Options);
// Source is a table name or, when it holds a blank, a query.
void RunExport(TODBCDatabase& Db, const std::string& Source, const std::string& File);
// Without a key condition every line is appended; all or nothing either way.
void RunImport(TODBCDatabase& Db, const std::string& File, const std::string& Table, const std::string& Key,
               bool Update);

} // namespace quorda::cli
