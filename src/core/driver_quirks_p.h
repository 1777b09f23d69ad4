// Known behaviours and limits of particular drivers that the engine works around or that the driver
// cannot be asked about, in one place. docs/odbc-quirks.md lists each with the test that pins it down.
#pragma once

#include "odbc/odbc_api_p.h"
#include "quorda/export.h"

#include <cstdint>
#include <mutex>
#include <string_view>

namespace quorda {

// ODBC numbers parameters with an unsigned 16-bit word: no driver can take more.
inline constexpr std::int32_t kODBCMaxParams = 65535;

// The lowest MaxParams of the drivers below: statements with no more parameters need no question.
inline constexpr std::int32_t kSmallestKnownMaxParams = 32767;

struct TDriverQuirks {
    // The most parameters one statement may bind. psqlODBC counts them in a signed 16-bit word and
    // corrupts its heap beyond 32767.
    std::int32_t MaxParams = kODBCMaxParams;
    // Text parameters cannot carry a NUL byte: PostgreSQL refuses one in any text value, SQLite ODBC
    // cuts the value at it.
    bool TextRejectsNul = false;
    // An UPDATE counts the rows it changed, not those it matched (MariaDB Connector/ODBC unless the
    // connection string sets OPTION=2): setting a column to itself counts 0 for a row that is there.
    bool UpdateCountsChangedRows = false;
    // The driver takes arrays of parameter sets (SQL_ATTR_PARAMSET_SIZE) and reports how it counts
    // their rows (SQL_PARAM_ARRAY_ROW_COUNTS answers).
    bool ParamArrays = false;
    // SQLite ODBC 0.9998 takes parameter arrays but runs them as single executions inside the
    // driver, a little slower than the library executing each row itself: batches execute row by row.
    bool ParamArraysSlowerThanSingleExecutes = false;

    // Whether a batch should go through parameter arrays.
    bool UseParamArrays() const { return ParamArrays && !ParamArraysSlowerThanSingleExecutes; }
};

// Taken around every connect and disconnect of the process. psqlODBC 13 changes the process locale
// (setlocale, which is not thread-safe) while it connects: two threads connecting at once freed each
// other's locale names (an AddressSanitizer heap-use-after-free inside the driver). The driver is not
// known before the connect, so every driver's connects wait for each other.
std::mutex& ConnectLock();

// The quirks known by the file name a driver reports for SQL_DRIVER_NAME ("psqlodbcw.so").
TDriverQuirks DriverQuirksFor(std::string_view DriverName);
// The quirks of the driver behind an open connection, by its name (one SQLGetInfo call; none known
// when the driver cannot tell its name).
QUORDA_API TDriverQuirks DriverQuirksOf(SQLHDBC Connection);
// DriverQuirksOf, plus what the driver answers about parameter arrays.
QUORDA_API TDriverQuirks ProbeDriverQuirks(SQLHDBC Connection);

} // namespace quorda
