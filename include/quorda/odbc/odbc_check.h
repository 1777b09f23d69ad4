#pragma once

#include "quorda/export.h"
#include "quorda/odbc/odbc_types.h"

#include <atomic>
#include <functional>
#include <string_view>

namespace quorda {

// Every ODBC call of the library passes its return code through CheckODBC: when RetCodeIsSuccessful
// is false it raises the EODBCError that CreateODBCError builds for the handles given; otherwise it
// returns the code (so callers can tell SQL_NO_DATA from a row). `call` names the function for the
// trace.
QUORDA_API SQLRETURN CheckODBC(SQLRETURN ret, SQLHENV henv, SQLHDBC hdbc, SQLHSTMT hstmt,
                               std::string_view call);

// For the few calls whose result is deliberately not raised (allocation of the environment, releases
// in destructors, release before raising): traces the call and returns the code untouched.
QUORDA_API SQLRETURN TraceODBC(SQLRETURN ret, std::string_view call) noexcept;

// The call trace goes to stderr, one line per call, when the environment variable QUORDA_ODBC_TRACE
// is "1" at the first traced call. Tests and tools may switch it and redirect the lines.
QUORDA_API void SetODBCTraceEnabled(bool enabled);

namespace detail {
// -1 until the environment was read, then 0 or 1. Constant-initialised, so a check during another
// library's start-up is safe; read by every checked call, so the check stays inline.
QUORDA_API extern std::atomic<signed char> ODBCTraceState;
QUORDA_API bool ReadODBCTraceState();
} // namespace detail

inline bool ODBCTraceEnabled() {
    const signed char state = detail::ODBCTraceState.load(std::memory_order_relaxed);
    return state < 0 ? detail::ReadODBCTraceState() : state != 0;
}
using TODBCTraceSink = std::function<void(std::string_view line)>;
// Replaces where trace lines go (empty: stderr); returns the previous sink.
QUORDA_API TODBCTraceSink SetODBCTraceSink(TODBCTraceSink sink);

} // namespace quorda
