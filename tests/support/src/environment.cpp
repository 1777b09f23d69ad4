#include "quorda_test/environment.h"

#include <atomic>
#include <cctype>
#include <cstdlib>
#include <random>
#include <system_error>
#include <unistd.h>

namespace quorda_test {
namespace {

std::atomic<unsigned> gCounter{0};

std::string RandomHex() {
    static thread_local std::mt19937 engine{std::random_device{}()};
    static constexpr char kHex[] = "0123456789abcdef";
    std::string text;
    for (int i = 0; i < 4; ++i) {
        text += kHex[engine() % 16];
    }
    return text;
}

std::string UniqueSuffix(char separator) {
    return std::to_string(::getpid()) + separator + std::to_string(++gCounter) + separator + RandomHex();
}

// Static initialisation: in place before the first ODBC call of any test.
const bool gEnvironmentReady = (EnsureOdbcEnvironment(), true);

} // namespace

void EnsureOdbcEnvironment() {
    ::setenv("ODBCSYSINI", QUORDA_TEST_ODBC_DIR, 0);
    ::setenv("ODBCINSTINI", "odbcinst.ini", 0);
    ::setenv("ODBCINI", QUORDA_TEST_ENV_DIR_DEFAULT "/odbc.ini", 0);
    ::setenv("QUORDA_TEST_ENV_DIR", QUORDA_TEST_ENV_DIR_DEFAULT, 0);
}

std::filesystem::path TestEnvDir() {
    (void)gEnvironmentReady;
    const char* dir = std::getenv("QUORDA_TEST_ENV_DIR");
    return dir != nullptr && *dir != '\0' ? dir : QUORDA_TEST_ENV_DIR_DEFAULT;
}

std::filesystem::path UniquePath(std::string_view stem, std::string_view extension) {
    auto folder = TestEnvDir() / "tmp";
    std::filesystem::create_directories(folder);
    return folder / (std::string(stem) + "-" + UniqueSuffix('-') + "." + std::string(extension));
}

std::string UniqueTableName(std::string_view prefix) {
    std::string name;
    for (char c : prefix.substr(0, 30)) {
        name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return name + "_" + UniqueSuffix('_');
}

TempFile::~TempFile() {
    std::error_code ignored;
    for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
        std::filesystem::remove(FPath.string() + suffix, ignored);
    }
}

} // namespace quorda_test

// The suppressions of tests/support/lsan.supp, for suites started by hand without LSAN_OPTIONS.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libodbcinst.so\n";
}
