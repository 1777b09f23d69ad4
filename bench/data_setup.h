#pragma once

// Creates and fills the bench table on one data source, or keeps it when it already holds exactly
// the generator's rows.

#include "workload.h"

#include <cstdint>
#include <iosfwd>
#include <string>

namespace quorda::bench {

class TRawConnection;

// Returns true when the table had to be (re)filled. Throws on any failure, including a table whose
// content does not read back as generated.
bool EnsureBenchTable(const std::string& ConnectString, std::int64_t Rows, std::ostream& Log);

// (Re)creates an empty table with the bench table's columns, for the insert workload.
void RecreateTable(TRawConnection& Connection, const std::string& Table);

std::string CreateTableSql(const std::string& Table, bool Mariadb = false);

} // namespace quorda::bench
