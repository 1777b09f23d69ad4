// Handles of the fault-injection driver and the one place every entry point goes through.
#pragma once

#include "fault_script.h"

#include <cstdio>
#include <deque>
#include <map>
#include <mutex>
#include <sql.h>
#include <sqlext.h>
#include <string>
#include <type_traits>
#include <vector>

namespace quorda_fault {

// One lock for the whole driver: tests are small, and it keeps threaded pool tests safe.
std::mutex& DriverLock();

struct Handle {
    std::deque<DiagRecord> Diags;

    void Post(std::string state, std::string message, long native = 0) {
        Diags.push_back({std::move(state), native, std::move(message)});
    }
    SQLRETURN Error(std::string state, std::string message) {
        Post(std::move(state), "[Quorda][Fault] " + message);
        return SQL_ERROR;
    }
};

struct Stmt;

struct Env : Handle {};

struct Conn : Handle {
    Script Rules;
    std::FILE* LogFile = nullptr;
    std::vector<Stmt*> Statements;
    int CursorNumber = 0;

    ~Conn();
    // Records a call in the log file (when one is open).
    void Log(const std::string& line);
    // Installs the script of a new connection and opens its log; throws std::invalid_argument.
    void Configure(const std::string& script, const std::string& logPath);
};

struct ColumnBinding {
    SQLSMALLINT CType = SQL_C_CHAR;
    SQLPOINTER Data = nullptr;
    SQLLEN BufferLength = 0;
    SQLLEN* Indicator = nullptr;
};

struct ParamBinding {
    SQLSMALLINT CType = SQL_C_CHAR;
    SQLSMALLINT SqlType = SQL_CHAR;
    SQLULEN ColumnSize = 0;
    SQLPOINTER Data = nullptr;
    SQLLEN BufferLength = 0;
    SQLLEN* Indicator = nullptr;

    bool AtExecution() const {
        return Indicator != nullptr &&
               (*Indicator == SQL_DATA_AT_EXEC || *Indicator <= SQL_LEN_DATA_AT_EXEC_OFFSET);
    }
};

struct ResultSet {
    std::vector<ScriptColumn> Columns;
    std::vector<std::vector<Value>> Rows;
};

struct Stmt : Handle {
    Conn* Owner = nullptr;
    std::string Sql;
    bool Open = false; // a cursor is open on Result
    ResultSet Result;
    long long RowCount = 0;
    // 1-based number of the first row of the current rowset; 0 before the first row, rows + 1 after the
    // last. RowsetRows is how many rows the current rowset holds.
    long long Position = 0;
    long long RowsetRows = 0;
    long long LastRowsetSize = 1;
    std::map<SQLUSMALLINT, ColumnBinding> Columns;
    std::map<SQLUSMALLINT, ParamBinding> Params;
    std::map<int, SQLULEN> Options;
    // SQLGetData reads a column in pieces: the column being read and how far.
    int GetDataColumn = 0;
    size_t GetDataOffset = 0;
    bool GetDataDone = false;
    // Data at execution: parameters still to be sent and what was sent so far.
    std::vector<SQLUSMALLINT> Pending;
    size_t PendingIndex = 0;
    bool PutStarted = false;
    std::map<SQLUSMALLINT, Value> PutValues;
    std::string CursorName;

    SQLULEN Option(int option, SQLULEN fallback) const {
        auto found = Options.find(option);
        return found == Options.end() ? fallback : found->second;
    }
    void CloseCursor() {
        Open = false;
        Position = 0;
        RowsetRows = 0;
        LastRowsetSize = 1;
        GetDataColumn = 0;
    }
};

// Runs one entry point: clears the handle's diagnostics, logs and counts the call on its connection,
// applies the scripted outcome and otherwise runs the body. Body: SQLRETURN(const CallOutcome&).
// The caller holds DriverLock().
template <typename Body>
SQLRETURN Dispatch(Handle& target, Conn* conn, const char* call, const std::string& arguments, Body&& body) {
    target.Diags.clear();
    CallOutcome outcome;
    if (conn != nullptr) {
        conn->Log(arguments.empty() ? std::string(call) : std::string(call) + " " + arguments);
        outcome = conn->Rules.Decide(call);
    }
    if (outcome.What == Effect::Fail) {
        target.Diags.insert(target.Diags.end(), outcome.Diags.begin(), outcome.Diags.end());
        return SQL_ERROR;
    }
    if (outcome.What == Effect::NoData) {
        return SQL_NO_DATA;
    }
    SQLRETURN rc = body(outcome);
    if (outcome.What == Effect::Info && rc == SQL_SUCCESS) {
        target.Diags.insert(target.Diags.end(), outcome.Diags.begin(), outcome.Diags.end());
        rc = SQL_SUCCESS_WITH_INFO;
    }
    return rc;
}

// An entry point on a connection or statement handle: the handle checked, the driver locked, the call
// dispatched. Body: SQLRETURN(Conn&), or SQLRETURN(Stmt&) / SQLRETURN(Stmt&, const CallOutcome&).
template <typename Body>
SQLRETURN ConnCall(SQLHDBC handle, const char* call, const std::string& arguments, Body&& body) {
    if (handle == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    std::lock_guard lock(DriverLock());
    Conn& conn = *static_cast<Conn*>(handle);
    return Dispatch(conn, &conn, call, arguments, [&](const CallOutcome&) { return body(conn); });
}

template <typename Body>
SQLRETURN StmtCall(SQLHSTMT handle, const char* call, const std::string& arguments, Body&& body) {
    if (handle == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    std::lock_guard lock(DriverLock());
    Stmt& stmt = *static_cast<Stmt*>(handle);
    return Dispatch(stmt, stmt.Owner, call, arguments, [&](const CallOutcome& outcome) -> SQLRETURN {
        if constexpr (std::is_invocable_v<Body, Stmt&, const CallOutcome&>) {
            return body(stmt, outcome);
        } else {
            return body(stmt);
        }
    });
}

// Text of a (pointer, length) argument: SQL_NTS means zero-terminated.
std::string ArgText(const SQLCHAR* text, SQLINTEGER length);
// Copies text into an output buffer of the application, zero-terminated; SQL_SUCCESS_WITH_INFO and
// 01004 when it had to be cut.
SQLRETURN CopyOut(Handle& handle, const std::string& text, SQLCHAR* buffer, SQLLEN bufferLength,
                  SQLSMALLINT* length);

// Converts one value into an application buffer of C type cType. offset is how much of a character or
// binary value earlier SQLGetData calls have taken; the indicator gets the remaining length, or
// SQL_NO_TOTAL when noTotal and the value is cut.
SQLRETURN WriteValue(Handle& handle, const Value& value, SQLSMALLINT cType, SQLPOINTER buffer,
                     SQLLEN bufferLength, SQLLEN* indicator, size_t& offset, bool noTotal, bool& done);
// Statements that answer with the scripted result set: those that begin with SELECT, WITH, VALUES,
// CALL or '{'.
bool IsQuery(const std::string& sql);

// The bytes of a bound parameter as the log shows them; at-execution data comes from sent.
std::string RenderParameter(const ParamBinding& param, const Value* sent);

} // namespace quorda_fault
