// Plain ODBC for test setup and checks, independent of the library under test: create tables, insert
// fixtures, read back what the library wrote. Every failure throws std::runtime_error carrying the
// driver's diagnostics.
#pragma once

#include <optional>
#include <sql.h>
#include <sqlext.h>
#include <string>
#include <vector>

namespace quorda_test {

using Row = std::vector<std::optional<std::string>>; // nullopt is NULL

class RawOdbc {
public:
    // Connects with SQLDriverConnect (no prompt).
    explicit RawOdbc(const std::string& connectionString);

    RawOdbc(const RawOdbc&) = delete;
    RawOdbc& operator=(const RawOdbc&) = delete;
    ~RawOdbc();

    // Runs a statement and returns its row count (-1 when the driver has none). A statement that
    // touches no rows (SQL_NO_DATA) counts as 0.
    long long Exec(const std::string& sql);
    // Every row of a query, every value read as text.
    std::vector<Row> QueryStrings(const std::string& sql);
    // The first value of the first row; throws when the query returns no row.
    std::optional<std::string> Scalar(const std::string& sql);

    // Manual commit mode on (false) or off (true); Commit and Rollback end the open transaction.
    void SetAutoCommit(bool on);
    void Commit();
    void Rollback();

private:
    void Release() noexcept;

    SQLHENV FEnv = SQL_NULL_HENV;
    SQLHDBC FDbc = SQL_NULL_HDBC;
};

} // namespace quorda_test
