#include "core/driver_quirks_p.h"
#include "odbc/odbc_api_p.h"
#include "quorda/odbc/odbc_check.h"
#include "quorda/odbc/odbc_error.h"

#include <array>

namespace quorda {

std::mutex& ConnectLock() {
    static std::mutex lock;
    return lock;
}

TDriverQuirks DriverQuirksFor(std::string_view DriverName) {
    TDriverQuirks quirks;
    // psqlodbca.so and psqlodbcw.so, the ANSI and Unicode builds.
    if (DriverName.find("psqlodbc") != std::string_view::npos) {
        quirks.MaxParams = kSmallestKnownMaxParams;
        quirks.TextRejectsNul = true;
    }
    // SQLite ODBC stores text parameters up to their first NUL byte, inline and sent at execution.
    if (DriverName.find("sqlite3odbc") != std::string_view::npos) {
        quirks.TextRejectsNul = true;
        quirks.ParamArraysSlowerThanSingleExecutes = true;
    }
    // libmaodbc.so, MariaDB Connector/ODBC.
    if (DriverName.find("maodbc") != std::string_view::npos) {
        quirks.UpdateCountsChangedRows = true;
    }
    return quirks;
}

TDriverQuirks DriverQuirksOf(SQLHDBC Connection) {
    std::array<SQLCHAR, 256> name{};
    SQLSMALLINT length = 0;
    const SQLRETURN ret = TraceODBC(
        SQLGetInfo(Connection, SQL_DRIVER_NAME, name.data(), static_cast<SQLSMALLINT>(name.size()), &length),
        "SQLGetInfo(SQL_DRIVER_NAME)");
    if (!SQL_SUCCEEDED(ret)) {
        return {};
    }
    name.back() = 0;
    return DriverQuirksFor(reinterpret_cast<const char*>(name.data()));
}

TDriverQuirks ProbeDriverQuirks(SQLHDBC Connection) {
    TDriverQuirks quirks = DriverQuirksOf(Connection);
    SQLUINTEGER rowCounts = 0;
    quirks.ParamArrays = quorda::RetCodeIsSuccessful(
        SQLGetInfo(Connection, SQL_PARAM_ARRAY_ROW_COUNTS, &rowCounts, sizeof rowCounts, nullptr));
    return quirks;
}

} // namespace quorda
