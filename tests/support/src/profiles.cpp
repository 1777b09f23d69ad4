#include "quorda_test/profiles.h"

#include <fstream>
#include <map>
#include <stdexcept>

namespace quorda_test {
namespace {

// KEY=value lines of pg.env; single quotes around a value are removed.
std::map<std::string, std::string> ReadEnvFile(const std::filesystem::path& path) {
    std::ifstream in(path);
    if (!in) {
        throw std::runtime_error(
            "the PostgreSQL test cluster is not running: " + path.string() +
            " is missing. Run the suite through ctest (fixture pg_start) or start the cluster with "
            "scripts/pg-cluster start " +
            (TestEnvDir() / "pg").string() + " --odbc-ini " + (TestEnvDir() / "odbc.ini").string());
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

std::string Required(const std::map<std::string, std::string>& values, const std::string& key,
                     const std::filesystem::path& path) {
    auto found = values.find(key);
    if (found == values.end() || found->second.empty()) {
        throw std::runtime_error(path.string() + " has no " + key);
    }
    return found->second;
}

} // namespace

DataSourceProfile SqliteProfile() {
    DataSourceProfile profile;
    profile.Name = "sqlite";
    profile.DatabaseFile = std::make_shared<TempFile>(UniquePath("sqlite", "db"));
    // Timeout is the busy timeout (ms): tests that open a second connection wait for the writer.
    profile.ConnectionString =
        "Driver=SQLite3;Database=" + profile.DatabaseFile->Path().string() + ";Timeout=5000";
    profile.Dsn = "QuordaTestSQLite";
    profile.Traits.ConcurrentWriters = false;
    profile.Traits.KeysetCursors = false;
    profile.Traits.ServerSqlStates = false;
    return profile;
}

DataSourceProfile PostgresProfile(bool unicode) {
    auto path = TestEnvDir() / "pg" / "pg.env";
    auto values = ReadEnvFile(path);
    DataSourceProfile profile;
    profile.Name = unicode ? "pgsql-unicode" : "pgsql";
    profile.ConnectionString =
        Required(values, unicode ? "QUORDA_PG_CONNSTR_UNICODE" : "QUORDA_PG_CONNSTR_ANSI", path);
    profile.Dsn = Required(values, unicode ? "QUORDA_PG_DSN_UNICODE" : "QUORDA_PG_DSN_ANSI", path);
    profile.User = Required(values, "QUORDA_PG_USER", path);
    // The cluster trusts local connections: any password is accepted.
    profile.Password = "quorda";
    profile.PasswordUser = Required(values, "QUORDA_PG_PASSWORD_USER", path);
    profile.CheckedPassword = Required(values, "QUORDA_PG_PASSWORD", path);
    profile.Traits.ConcurrentWriters = true;
    profile.Traits.KeysetCursors = true;
    profile.Traits.ServerSqlStates = true;
    profile.Traits.UnicodeDriver = unicode;
    return profile;
}

DataSourceProfile MakeProfile(const std::string& name) {
    if (name == "sqlite") {
        return SqliteProfile();
    }
    if (name == "pgsql") {
        return PostgresProfile(false);
    }
    if (name == "pgsql-unicode") {
        return PostgresProfile(true);
    }
    throw std::invalid_argument("no driver profile named '" + name + "'");
}

std::vector<std::string> AllProfiles() {
    return {"sqlite", "pgsql", "pgsql-unicode"};
}

std::string ProfileTestName(const testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    for (auto& c : name) {
        if (c == '-') {
            c = '_';
        }
    }
    return name;
}

} // namespace quorda_test
