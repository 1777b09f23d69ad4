#include "quorda_test/profiles.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <stdexcept>

namespace quorda_test {
namespace {

// KEY=value lines of the env file that scripts/<script> start writes into TestEnvDir()/<folder>;
// single quotes around a value are removed.
std::map<std::string, std::string> ReadEnvFile(const std::string& server, const std::string& script,
                                               const std::string& folder, const std::string& file) {
    const auto path = TestEnvDir() / folder / file;
    std::ifstream in(path);
    if (!in) {
        throw std::runtime_error("the " + server + " test server is not running: " + path.string() +
                                 " is missing. Run the suite through ctest (fixture " + folder +
                                 "_start) or start the server with scripts/" + script + " start " +
                                 (TestEnvDir() / folder).string() + " --odbc-ini " +
                                 (TestEnvDir() / "odbc.ini").string());
    }
    std::map<std::string, std::string> values;
    std::string line;
    while (std::getline(in, line)) {
        auto equals = line.find('=');
        if (line.empty() || line[0] == '#' || equals == std::string::npos) {
            continue;
        }
        std::string value = line.substr(equals + 1);
        if (value.size() >= 2 && value.front() == '\'' && value.back() == '\'') {
            value = value.substr(1, value.size() - 2);
        }
        values[line.substr(0, equals)] = value;
    }
    return values;
}

std::string Required(const std::map<std::string, std::string>& values, const std::string& key) {
    auto found = values.find(key);
    if (found == values.end() || found->second.empty()) {
        throw std::runtime_error("the test server's env file has no " + key);
    }
    return found->second;
}

std::string Fill(const std::string& pattern, const std::string& value) {
    std::string text = pattern;
    const auto at = text.find("{}");
    return at == std::string::npos ? text : text.replace(at, 2, value);
}

} // namespace

std::string SqlDialect::Hex(const std::string& column) const {
    return Fill(HexPattern, column);
}

std::string SqlDialect::BinaryLiteral(const std::string& hex) const {
    return Fill(BinaryLiteralPattern, hex);
}

std::string SqlDialect::Milliseconds(const std::string& column) const {
    return Fill(MillisecondsPattern, column);
}

std::string SqlDialect::Text(const std::string& value) const {
    std::string literal = "'";
    for (const char c : value) {
        if (c == '\'' || (c == '\\' && BackslashEscapes)) {
            literal += c;
        }
        literal += c;
    }
    return literal + "'";
}

DataSourceProfile SqliteProfile() {
    DataSourceProfile profile;
    profile.Name = "sqlite";
    profile.DatabaseFile = std::make_shared<TempFile>(UniquePath("sqlite", "db"));
    // Timeout is the busy timeout (ms): tests that open a second connection wait for the writer.
    profile.ConnectionString =
        "Driver=SQLite3;Database=" + profile.DatabaseFile->Path().string() + ";Timeout=5000";
    profile.Dsn = "QuordaTestSQLite";
    return profile;
}

DataSourceProfile PostgresProfile(bool unicode) {
    auto values = ReadEnvFile("PostgreSQL", "pg-cluster", "pg", "pg.env");
    DataSourceProfile profile;
    profile.Name = unicode ? "pgsql-unicode" : "pgsql";
    profile.ConnectionString =
        Required(values, unicode ? "QUORDA_PG_CONNSTR_UNICODE" : "QUORDA_PG_CONNSTR_ANSI");
    profile.Dsn = Required(values, unicode ? "QUORDA_PG_DSN_UNICODE" : "QUORDA_PG_DSN_ANSI");
    profile.User = Required(values, "QUORDA_PG_USER");
    // The cluster trusts local connections: any password is accepted.
    profile.Password = "quorda";
    profile.PasswordUser = Required(values, "QUORDA_PG_PASSWORD_USER");
    profile.CheckedPassword = Required(values, "QUORDA_PG_PASSWORD");
    profile.Traits.SyntaxErrorState = "42601";
    profile.Traits.UnicodeDriver = unicode;
    profile.Sql.BlobType = "bytea";
    profile.Sql.TimestampType = "timestamp(3)";
    profile.Sql.HexPattern = "encode({}, 'hex')";
    profile.Sql.BinaryLiteralPattern = "'\\x{}'";
    profile.Sql.MillisecondsPattern = "to_char({}, 'YYYY-MM-DD HH24:MI:SS.MS')";
    profile.Sql.ShortLockWait = "SET lock_timeout = '200ms'";
    return profile;
}

DataSourceProfile MariaDbProfile() {
    auto values = ReadEnvFile("MariaDB", "mariadb-cluster", "mariadb", "mariadb.env");
    DataSourceProfile profile;
    profile.Name = "mariadb";
    profile.ConnectionString = Required(values, "QUORDA_MARIADB_CONNSTR");
    profile.Dsn = Required(values, "QUORDA_MARIADB_DSN");
    profile.User = Required(values, "QUORDA_MARIADB_USER");
    profile.Password = Required(values, "QUORDA_MARIADB_PASSWORD");
    profile.PasswordUser = profile.User;
    profile.CheckedPassword = profile.Password;
    profile.Traits.SyntaxErrorState = "37000";
    profile.Traits.UnicodeDriver = true;
    profile.Traits.PaddedChar = false;
    profile.Traits.CountsMatchedRows = false;
    profile.Traits.TextKeepsNul = true;
    // text and blob hold 64 KB; timestamp keeps whole seconds and ends in 2038.
    profile.Sql.BlobType = "longblob";
    profile.Sql.LongTextType = "longtext";
    profile.Sql.TimestampType = "datetime(3)";
    profile.Sql.MillisecondsPattern = "left(date_format({}, '%Y-%m-%d %H:%i:%s.%f'), 23)";
    profile.Sql.BackslashEscapes = true;
    profile.Sql.QuotedNames = "SET sql_mode = concat(@@sql_mode, ',ANSI_QUOTES')";
    // Whole seconds: 0 would not wait at all.
    profile.Sql.ShortLockWait = "SET innodb_lock_wait_timeout = 1";
    return profile;
}

DataSourceProfile MakeProfile(const std::string& name) {
    if (name == "sqlite") {
        return SqliteProfile();
    }
    if (name == "pgsql" || name == "pgsql-unicode") {
        return PostgresProfile(name == "pgsql-unicode");
    }
    if (name == "mariadb") {
        return MariaDbProfile();
    }
    throw std::invalid_argument("no driver profile named '" + name + "'");
}

std::vector<std::string> AllProfiles() {
    return {"sqlite", "pgsql", "pgsql-unicode", "mariadb"};
}

std::string ProfileTestName(const testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

} // namespace quorda_test
