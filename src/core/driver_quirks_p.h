#pragma once

// Known behaviours of particular drivers that the engine works around, each a named flag probed once
// per connection handle. docs/odbc-quirks.md lists each with the test that pins it down.
#include "odbc/odbc_api_p.h"

namespace quorda {

struct TDriverQuirks {
    // The driver takes arrays of parameter sets (SQL_ATTR_PARAMSET_SIZE) and reports how it counts
    // their rows (SQL_PARAM_ARRAY_ROW_COUNTS answers).
    bool ParamArrays = false;
    // SQLite ODBC 0.9998 takes parameter arrays but runs them as single executions inside the
    // driver, a little slower than the library executing each row itself: batches execute row by row.
    bool ParamArraysSlowerThanSingleExecutes = false;

    // Whether a batch should go through parameter arrays.
    bool UseParamArrays() const { return ParamArrays && !ParamArraysSlowerThanSingleExecutes; }
};

// Asks the driver behind the connection handle (SQLGetInfo).
TDriverQuirks ProbeDriverQuirks(SQLHDBC Connection);

} // namespace quorda
