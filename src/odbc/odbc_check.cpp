#include "quorda/odbc/odbc_check.h"

#include "odbc/odbc_api_p.h"
#include "quorda/odbc/odbc_error.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <utility>

namespace quorda {
namespace {

bool TraceRequestedByEnvironment() {
    const char* value = std::getenv("QUORDA_ODBC_TRACE");
    return value != nullptr && std::strcmp(value, "1") == 0;
}

std::mutex traceLock;
TODBCTraceSink traceSink;

const char* ReturnCodeName(SQLRETURN ret) {
    switch (ret) {
    case SQL_SUCCESS:
        return "SQL_SUCCESS";
    case SQL_SUCCESS_WITH_INFO:
        return "SQL_SUCCESS_WITH_INFO";
    case SQL_NO_DATA_FOUND:
        return "SQL_NO_DATA";
    case SQL_ERROR:
        return "SQL_ERROR";
    case SQL_INVALID_HANDLE:
        return "SQL_INVALID_HANDLE";
    case SQL_STILL_EXECUTING:
        return "SQL_STILL_EXECUTING";
    case SQL_NEED_DATA:
        return "SQL_NEED_DATA";
    default:
        return "?";
    }
}

// The trace never changes what the call does: a failing sink is ignored.
void WriteTrace(std::string_view call, SQLRETURN ret, SQLHENV henv, SQLHDBC hdbc, SQLHSTMT hstmt) noexcept
    try {
    char handles[96];
    std::snprintf(handles, sizeof handles, " [env=%p dbc=%p stmt=%p]", henv, hdbc, hstmt);
    std::string line = "quorda-odbc: ";
    line += call;
    line += " -> ";
    line += std::to_string(ret);
    line += ' ';
    line += ReturnCodeName(ret);
    line += handles;

    std::lock_guard guard(traceLock);
    if (traceSink) {
        traceSink(line);
    } else {
        std::fprintf(stderr, "%s\n", line.c_str());
    }
} catch (...) {
}

} // namespace

SQLRETURN CheckODBC(SQLRETURN ret, SQLHENV henv, SQLHDBC hdbc, SQLHSTMT hstmt, std::string_view call) {
    if (ODBCTraceEnabled()) {
        WriteTrace(call, ret, henv, hdbc, hstmt);
    }
    if (!RetCodeIsSuccessful(ret)) {
        throw CreateODBCError(henv, hdbc, hstmt);
    }
    return ret;
}

SQLRETURN TraceODBC(SQLRETURN ret, std::string_view call) noexcept {
    if (ODBCTraceEnabled()) {
        WriteTrace(call, ret, nullptr, nullptr, nullptr);
    }
    return ret;
}

namespace detail {

std::atomic<signed char> ODBCTraceState{-1};

bool ReadODBCTraceState() {
    // Two threads may read the environment at once; both store the same answer, unless the flag was
    // switched meanwhile, which then wins.
    signed char unread = -1;
    const signed char requested = TraceRequestedByEnvironment() ? 1 : 0;
    ODBCTraceState.compare_exchange_strong(unread, requested, std::memory_order_relaxed);
    return ODBCTraceState.load(std::memory_order_relaxed) != 0;
}

} // namespace detail

void SetODBCTraceEnabled(bool enabled) {
    detail::ODBCTraceState.store(enabled ? 1 : 0, std::memory_order_relaxed);
}

TODBCTraceSink SetODBCTraceSink(TODBCTraceSink sink) {
    std::lock_guard guard(traceLock);
    return std::exchange(traceSink, std::move(sink));
}

} // namespace quorda
