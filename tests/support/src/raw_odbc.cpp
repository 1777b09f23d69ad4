#include "quorda_test/raw_odbc.h"

#include "quorda_test/environment.h"

#include <stdexcept>

namespace quorda_test {
namespace {

bool Ok(SQLRETURN rc) {
    return rc == SQL_SUCCESS || rc == SQL_SUCCESS_WITH_INFO;
}

// Every diagnostic record of a handle as "[state] (native) message; ...".
std::string OdbcDiagnostics(SQLSMALLINT handleType, SQLHANDLE handle) {
    std::string text;
    for (SQLSMALLINT record = 1;; ++record) {
        SQLCHAR state[6] = {};
        SQLINTEGER native = 0;
        SQLCHAR message[1024] = {};
        SQLSMALLINT length = 0;
        SQLRETURN rc =
            SQLGetDiagRec(handleType, handle, record, state, &native, message, sizeof message, &length);
        if (!Ok(rc)) {
            break;
        }
        if (!text.empty()) {
            text += "; ";
        }
        text += "[" + std::string(reinterpret_cast<char*>(state)) + "] (" + std::to_string(native) + ") " +
                reinterpret_cast<char*>(message);
    }
    return text.empty() ? "no diagnostics" : text;
}

[[noreturn]] void Fail(const std::string& what, SQLSMALLINT handleType, SQLHANDLE handle) {
    throw std::runtime_error(what + ": " + OdbcDiagnostics(handleType, handle));
}

// A statement handle freed on every path.
class Statement {
public:
    explicit Statement(SQLHDBC dbc) {
        if (!Ok(SQLAllocHandle(SQL_HANDLE_STMT, dbc, &FStmt))) {
            Fail("SQLAllocHandle(STMT)", SQL_HANDLE_DBC, dbc);
        }
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement() { SQLFreeHandle(SQL_HANDLE_STMT, FStmt); }

    SQLHSTMT Get() const { return FStmt; }
    void Check(SQLRETURN rc, const std::string& what) const {
        if (!Ok(rc)) {
            Fail(what, SQL_HANDLE_STMT, FStmt);
        }
    }

private:
    SQLHSTMT FStmt = SQL_NULL_HSTMT;
};

SQLCHAR* Text(const std::string& text) {
    return reinterpret_cast<SQLCHAR*>(const_cast<char*>(text.c_str()));
}

// One value as text, read in pieces so that no length is too long.
std::optional<std::string> ReadText(const Statement& stmt, SQLUSMALLINT column, const std::string& sql) {
    std::string value;
    char buffer[1024];
    while (true) {
        SQLLEN indicator = 0;
        SQLRETURN rc = SQLGetData(stmt.Get(), column, SQL_C_CHAR, buffer, sizeof buffer, &indicator);
        if (rc == SQL_NO_DATA) {
            return value;
        }
        stmt.Check(rc, "SQLGetData(" + std::to_string(column) + ") of " + sql);
        if (indicator == SQL_NULL_DATA) {
            return std::nullopt;
        }
        bool whole = rc == SQL_SUCCESS;
        size_t piece = whole && indicator >= 0 ? static_cast<size_t>(indicator) : sizeof buffer - 1;
        value.append(buffer, std::min(piece, sizeof buffer - 1));
        if (whole) {
            return value;
        }
    }
}

} // namespace

RawOdbc::RawOdbc(const std::string& connectionString) {
    EnsureOdbcEnvironment();
    if (!Ok(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &FEnv))) {
        throw std::runtime_error("SQLAllocHandle(ENV) failed");
    }
    SQLSetEnvAttr(FEnv, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    SQLRETURN rc = SQLAllocHandle(SQL_HANDLE_DBC, FEnv, &FDbc);
    if (Ok(rc)) {
        SQLCHAR out[1024];
        SQLSMALLINT outLength = 0;
        rc = SQLDriverConnect(FDbc, nullptr, Text(connectionString), SQL_NTS, out, sizeof out, &outLength,
                              SQL_DRIVER_NOPROMPT);
    }
    if (!Ok(rc)) {
        std::string diagnostics = FDbc != SQL_NULL_HDBC ? OdbcDiagnostics(SQL_HANDLE_DBC, FDbc)
                                                        : OdbcDiagnostics(SQL_HANDLE_ENV, FEnv);
        Release();
        throw std::runtime_error("SQLDriverConnect(" + connectionString + ") returned " + std::to_string(rc) +
                                 ": " + diagnostics);
    }
}

RawOdbc::~RawOdbc() {
    Release();
}

void RawOdbc::Release() noexcept {
    if (FDbc != SQL_NULL_HDBC) {
        SQLDisconnect(FDbc);
        SQLFreeHandle(SQL_HANDLE_DBC, FDbc);
        FDbc = SQL_NULL_HDBC;
    }
    if (FEnv != SQL_NULL_HENV) {
        SQLFreeHandle(SQL_HANDLE_ENV, FEnv);
        FEnv = SQL_NULL_HENV;
    }
}

long long RawOdbc::Exec(const std::string& sql) {
    Statement stmt(FDbc);
    SQLRETURN rc = SQLExecDirect(stmt.Get(), Text(sql), SQL_NTS);
    if (rc == SQL_NO_DATA) {
        return 0;
    }
    stmt.Check(rc, sql);
    SQLLEN count = -1;
    stmt.Check(SQLRowCount(stmt.Get(), &count), "SQLRowCount of " + sql);
    return count;
}

std::vector<Row> RawOdbc::QueryStrings(const std::string& sql) {
    Statement stmt(FDbc);
    stmt.Check(SQLExecDirect(stmt.Get(), Text(sql), SQL_NTS), sql);
    SQLSMALLINT columns = 0;
    stmt.Check(SQLNumResultCols(stmt.Get(), &columns), "SQLNumResultCols of " + sql);
    std::vector<Row> rows;
    while (true) {
        SQLRETURN rc = SQLFetch(stmt.Get());
        if (rc == SQL_NO_DATA) {
            break;
        }
        stmt.Check(rc, "SQLFetch of " + sql);
        Row row;
        for (SQLUSMALLINT column = 1; column <= columns; ++column) {
            row.push_back(ReadText(stmt, column, sql));
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

std::optional<std::string> RawOdbc::Scalar(const std::string& sql) {
    auto rows = QueryStrings(sql);
    if (rows.empty() || rows.front().empty()) {
        throw std::runtime_error("no value from " + sql);
    }
    return rows.front().front();
}

void RawOdbc::SetAutoCommit(bool on) {
    SQLRETURN rc = SQLSetConnectAttr(
        FDbc, SQL_ATTR_AUTOCOMMIT,
        reinterpret_cast<SQLPOINTER>(static_cast<SQLULEN>(on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF)), 0);
    if (!Ok(rc)) {
        Fail("SQLSetConnectAttr(AUTOCOMMIT)", SQL_HANDLE_DBC, FDbc);
    }
}

void RawOdbc::Commit() {
    if (!Ok(SQLEndTran(SQL_HANDLE_DBC, FDbc, SQL_COMMIT))) {
        Fail("SQLEndTran(COMMIT)", SQL_HANDLE_DBC, FDbc);
    }
}

void RawOdbc::Rollback() {
    if (!Ok(SQLEndTran(SQL_HANDLE_DBC, FDbc, SQL_ROLLBACK))) {
        Fail("SQLEndTran(ROLLBACK)", SQL_HANDLE_DBC, FDbc);
    }
}

} // namespace quorda_test
