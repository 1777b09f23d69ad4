#include "data_setup.h"

#include "raw_odbc.h"
#include "row_generator.h"

#include <chrono>
#include <ostream>

namespace quorda::bench {

namespace {

constexpr std::size_t kFillBatch = 1000;

bool TableHolds(TRawConnection& Connection, std::int64_t Rows) {
    try {
        if (Connection.ScalarInt("select count(*) from bench") != Rows)
            return false;
    } catch (const TOdbcError&) {
        return false; // no table yet
    }
    std::int64_t read = 0;
    return ScanChecksum(Connection, BenchSelect(Rows, Rows), &read) == ExpectedRangeChecksum(1, Rows) &&
           read == Rows;
}

void Fill(TRawConnection& Connection, std::int64_t Rows) {
    RecreateTable(Connection, "bench");
    Connection.SetAutoCommit(false);
    TRawStatement stmt(Connection);
    stmt.Prepare(BenchInsert("bench"));
    TParamRows params(kFillBatch);
    params.Bind(stmt);
    SQLULEN processed = 0;
    TBenchRow row;
    for (std::int64_t first = 1; first <= Rows; first += kFillBatch) {
        const std::size_t batch =
            static_cast<std::size_t>(std::min<std::int64_t>(kFillBatch, Rows - first + 1));
        for (std::size_t i = 0; i < batch; ++i) {
            MakeBenchRow(first + static_cast<std::int64_t>(i), row);
            params.Set(i, row);
        }
        // Parameter arrays: one round trip per batch where the driver supports it.
        stmt.Check(SQLParamOptions(stmt.Handle(), batch, &processed), "SQLParamOptions");
        stmt.Check(SQLExecute(stmt.Handle()), "SQLExecute");
    }
    Connection.Commit();
    Connection.SetAutoCommit(true);
}

} // namespace

std::string CreateTableSql(const std::string& Table, bool Mariadb) {
    // MariaDB's timestamp keeps whole seconds and ends in 2038.
    return "create table " + Table +
           " (id integer primary key, qty integer, price double precision, name varchar(40), created " +
           (Mariadb ? "datetime(3)" : "timestamp") + ")";
}

void RecreateTable(TRawConnection& Connection, const std::string& Table) {
    Connection.Exec("drop table if exists " + Table);
    Connection.Exec(CreateTableSql(Table, Connection.IsMariadb()));
}

bool EnsureBenchTable(const std::string& ConnectString, std::int64_t Rows, std::ostream& Log) {
    TRawConnection connection(ConnectString);
    if (TableHolds(connection, Rows))
        return false;
    const auto start = std::chrono::steady_clock::now();
    Log << "  filling bench with " << Rows << " rows ..." << std::flush;
    Fill(connection, Rows);
    // Planner statistics for PostgreSQL; SQLite accepts the same word, MariaDB wants "table".
    connection.Exec(connection.IsMariadb() ? "analyze table bench" : "analyze bench");
    if (!TableHolds(connection, Rows))
        throw TOdbcError("the bench table does not read back as written");
    Log << " " << std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() << " s\n";
    return true;
}

} // namespace quorda::bench
