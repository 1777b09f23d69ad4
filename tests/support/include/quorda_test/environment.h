// Where tests keep their files, and the ODBC environment they run in.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace quorda_test {

// Points unixODBC at the build tree's private configuration (ODBCSYSINI, ODBCINSTINI, ODBCINI) and sets
// QUORDA_TEST_ENV_DIR, each only when not already set: ctest sets them, a suite started by hand need
// not. Runs before main; call it again only after clearing the variables yourself.
void EnsureOdbcEnvironment();

// The folder the fixtures write to (QUORDA_TEST_ENV_DIR): pg/pg.env, temporary databases and logs.
std::filesystem::path TestEnvDir();

// A fresh path "<stem>-<pid>-<n>-<random>.<extension>" under TestEnvDir()/tmp; nothing is created.
std::filesystem::path UniquePath(std::string_view stem, std::string_view extension);

// A lower-case SQL identifier "<prefix>_<pid>_<n>_<random>", unique per process and call, so that
// parallel test processes sharing one database never collide. The prefix is cut to 30 characters.
std::string UniqueTableName(std::string_view prefix);

// Removes a file (and the journal files SQLite leaves beside it) when it goes out of scope.
class TempFile {
public:
    explicit TempFile(std::filesystem::path path) : FPath(std::move(path)) {}
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    ~TempFile();

    const std::filesystem::path& Path() const { return FPath; }

private:
    std::filesystem::path FPath;
};

} // namespace quorda_test
