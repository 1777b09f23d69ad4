// An ODBC 2 connection made the way the library makes its own, for checks through the real driver
// manager.
#pragma once

#include <ostream>
#include <sql.h>
#include <sqlext.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace quorda_test {

struct Record {
    std::string State;
    SQLINTEGER Native;
    std::string Message;

    bool operator==(const Record&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Record& r) {
    return out << r.State << "/" << r.Native << "/" << r.Message;
}

// An ODBC 2 environment and connection, as the library allocates them.
class Odbc2 {
public:
    Odbc2() {
        SQLAllocEnv(&FEnv);
        SQLAllocConnect(FEnv, &FDbc);
    }
    Odbc2(const Odbc2&) = delete;
    Odbc2& operator=(const Odbc2&) = delete;
    ~Odbc2() {
        if (FStmt != SQL_NULL_HSTMT) {
            SQLFreeStmt(FStmt, SQL_DROP);
        }
        SQLDisconnect(FDbc);
        SQLFreeConnect(FDbc);
        SQLFreeEnv(FEnv);
    }

    SQLRETURN Connect(const std::string& connectionString) {
        SQLCHAR out[251];
        SQLSMALLINT length = 0;
        return SQLDriverConnect(FDbc, nullptr, Text(connectionString), SQL_NTS, out, sizeof out, &length,
                                SQL_DRIVER_COMPLETE);
    }
    SQLHSTMT Stmt() {
        if (FStmt == SQL_NULL_HSTMT && SQLAllocStmt(FDbc, &FStmt) != SQL_SUCCESS) {
            throw std::runtime_error("SQLAllocStmt failed");
        }
        return FStmt;
    }
    SQLRETURN Exec(const std::string& sql) { return SQLExecDirect(Stmt(), Text(sql), SQL_NTS); }

    // Every record SQLError hands out for the handle triple, in order.
    std::vector<Record> Errors(bool statement) {
        std::vector<Record> records;
        while (true) {
            SQLCHAR state[6] = {};
            SQLINTEGER native = 0;
            SQLCHAR message[514] = {};
            SQLSMALLINT length = 0;
            SQLRETURN rc = SQLError(FEnv, FDbc, statement ? FStmt : SQL_NULL_HSTMT, state, &native, message,
                                    sizeof message, &length);
            if (rc != SQL_SUCCESS && rc != SQL_SUCCESS_WITH_INFO) {
                return records;
            }
            records.push_back({reinterpret_cast<char*>(state), native, reinterpret_cast<char*>(message)});
        }
    }

    SQLHENV Env() const { return FEnv; }
    SQLHDBC Dbc() const { return FDbc; }

    static SQLCHAR* Text(const std::string& text) {
        return reinterpret_cast<SQLCHAR*>(const_cast<char*>(text.c_str()));
    }

private:
    SQLHENV FEnv = SQL_NULL_HENV;
    SQLHDBC FDbc = SQL_NULL_HDBC;
    SQLHSTMT FStmt = SQL_NULL_HSTMT;
};

} // namespace quorda_test
