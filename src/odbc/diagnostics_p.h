#pragma once

#include "odbc/odbc_api_p.h"
#include "quorda/odbc/odbc_error.h"

#include <functional>

namespace quorda::detail {

// The buffers one SQLError call fills. They are deliberately not cleared between calls: the record
// text of an exception includes what the final (end of queue) call left in them.
struct TDiagnosticBuffers {
    SQLCHAR State[6] = {};
    SQLINTEGER Native = 0;
    SQLCHAR Message[514] = {};
    SQLSMALLINT Length = 0;
};

// One diagnostic call; the real one is SQLError on the handle triple.
using TDiagnosticReader = std::function<SQLRETURN(TDiagnosticBuffers&)>;

// Builds the exception from successive reads until the end of the queue or a failing read. Exported
// for the unit tests of a shared build; the header is never installed.
QUORDA_API EODBCError BuildODBCError(const TDiagnosticReader& read, SQLHENV henv, SQLHDBC hdbc,
                                     SQLHSTMT hstmt);

} // namespace quorda::detail
