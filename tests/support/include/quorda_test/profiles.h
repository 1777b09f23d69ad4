// Driver profiles: one test body, run against every real data source.
//
//   class Orders : public quorda_test::ProfileTest {};
//   TEST_P(Orders, ...) { quorda_test::RawOdbc db(Profile.ConnectionString); ... }
//   INSTANTIATE_TEST_SUITE_P(Drivers, Orders, testing::ValuesIn(quorda_test::AllProfiles()),
//                            quorda_test::ProfileTestName);
//
// The profile is made inside each test, so every test gets a SQLite file of its own. A profile that
// cannot be made (the PostgreSQL or MariaDB server is not running) throws, and the test fails: never
// a skip.
#pragma once

#include "quorda_test/environment.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace quorda_test {

// Known differences between the drivers, for tests whose expectations depend on them.
struct DriverTraits {
    // The SQLSTATE of a syntax error, as an ODBC 2 application (the library) sees it: the server's
    // 42601 (PostgreSQL), 37000 (MariaDB's 42000, renamed by the driver manager), or S1000 (SQLite,
    // native 1).
    std::string SyntaxErrorState = "S1000";
    // The Unicode build of the driver: with ODBC 3 behaviour it may report the wide character types.
    bool UnicodeDriver = false;
    // CHAR(n) values read back with their trailing blanks (MariaDB removes them when it reads).
    bool PaddedChar = true;
    // An UPDATE reports the rows it matched; MariaDB reports those it changed (unless the connection
    // string sets OPTION=2), so setting a row to the values it holds counts 0.
    bool CountsMatchedRows = true;
    // A NUL byte inside a text parameter arrives whole (MariaDB); the others cut the value there, so
    // the library refuses it.
    bool TextKeepsNul = false;
};

// SQL the data sources spell differently, for tests that write their own. In the patterns "{}"
// stands for the column or the hex digits.
struct SqlDialect {
    std::string BlobType = "blob";           // binary data of any length
    std::string LongTextType = "text";       // text of a megabyte and more
    std::string TimestampType = "timestamp"; // date and time to the millisecond
    std::string HexPattern = "lower(hex({}))";
    std::string BinaryLiteralPattern = "x'{}'";
    std::string MillisecondsPattern = "strftime('%Y-%m-%d %H:%M:%f', {})";
    // A statement after which double quotes delimit names on this connection, as the standard has
    // it (MariaDB reads them as strings otherwise); empty where they always do.
    std::string QuotedNames;
    // A statement that makes this connection give up waiting for a row lock after a moment; empty
    // where the connection string sets the wait (SQLite's busy timeout).
    std::string ShortLockWait;
    // A backslash in a string literal starts an escape (MariaDB), so a literal one is written twice.
    bool BackslashEscapes = false;

    // Lower-case hexadecimal digits of a binary column.
    std::string Hex(const std::string& column) const;
    // A binary literal of lower-case hexadecimal digits.
    std::string BinaryLiteral(const std::string& hex) const;
    // A date-time column as "yyyy-mm-dd hh:mm:ss.zzz".
    std::string Milliseconds(const std::string& column) const;
    // A string literal holding exactly value (quotes, backslashes and line breaks included).
    std::string Text(const std::string& value) const;
};

struct DataSourceProfile {
    std::string Name;             // "sqlite", "pgsql", "pgsql-unicode", "mariadb"
    std::string ConnectionString; // for SQLDriverConnect, without a data source name
    std::string Dsn;              // for SQLConnect, with User and Password
    std::string User;
    std::string Password;
    // A role whose logins are checked (empty for SQLite): PasswordUser connects with CheckedPassword
    // and with nothing else. MariaDB checks every login, so there it is User with Password.
    std::string PasswordUser;
    std::string CheckedPassword;
    DriverTraits Traits;
    SqlDialect Sql;
    std::shared_ptr<TempFile> DatabaseFile; // SQLite: removed when the last copy of the profile goes
};

// SQLite ODBC on a new, empty database file.
DataSourceProfile SqliteProfile();
// psqlODBC (ANSI or Unicode build) on the private cluster that scripts/pg-cluster started; throws
// std::runtime_error when the cluster's pg.env is missing.
DataSourceProfile PostgresProfile(bool unicode = false);
// MariaDB Connector/ODBC on the private server that scripts/mariadb-cluster started; throws
// std::runtime_error when the server's mariadb.env is missing.
DataSourceProfile MariaDbProfile();
// The profile of a name from AllProfiles(); throws std::invalid_argument for any other name.
DataSourceProfile MakeProfile(const std::string& name);
// "sqlite", "pgsql", "pgsql-unicode", "mariadb".
std::vector<std::string> AllProfiles();
// Test-name generator for INSTANTIATE_TEST_SUITE_P over profile names ("pgsql_unicode").
std::string ProfileTestName(const testing::TestParamInfo<std::string>& info);

// Fixture of value-parameterised tests over profile names: Profile is made for each test.
class ProfileTest : public testing::TestWithParam<std::string> {
protected:
    DataSourceProfile Profile = MakeProfile(GetParam());
};

} // namespace quorda_test
