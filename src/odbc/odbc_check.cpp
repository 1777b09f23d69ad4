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

std::atomic<bool>& TraceFlag() {
    static std::atomic<bool> enabled{TraceRequestedByEnvironment()};
    return enabled;
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

bool ODBCTraceEnabled() {
    return TraceFlag().load(std::memory_order_relaxed);
}

void SetODBCTraceEnabled(bool enabled) {
    TraceFlag().store(enabled, std::memory_order_relaxed);
}

TODBCTraceSink SetODBCTraceSink(TODBCTraceSink sink) {
    std::lock_guard guard(traceLock);
    return std::exchange(traceSink, std::move(sink));
}

} // namespace quorda
