#pragma once

#include "odbc/odbc_api_p.h"
#include "quorda/core/odbc_database.h"
#include "quorda/odbc.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace quorda::testing {

// Runs a statement on the database's own connection (there is no dataset to do it yet), so that the
// test sees exactly the transaction state the database set. The statement is handed back for reading.
inline TODBCStatementHandle ExecOn(TODBCDatabase& db, const std::string& sql) {
    SQLHDBC dbc = db.GetDBC();
    TODBCStatementHandle stmt;
    CheckODBC(SQLAllocStmt(dbc, stmt.Receive()), nullptr, dbc, nullptr, "SQLAllocStmt");
    std::string text = sql;
    CheckODBC(SQLExecDirect(stmt.Get(), reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS), nullptr, dbc,
              stmt.Get(), "SQLExecDirect");
    return stmt;
}

// The first column of the first row as text, read on the database's own connection.
inline std::optional<std::string> ScalarOn(TODBCDatabase& db, const std::string& sql) {
    const TODBCStatementHandle stmt = ExecOn(db, sql);
    if (CheckODBC(SQLFetch(stmt.Get()), nullptr, db.GetDBC(), stmt.Get(), "SQLFetch") == SQL_NO_DATA_FOUND) {
        ADD_FAILURE() << "no row for " << sql;
        return std::nullopt;
    }
    char value[1024] = {};
    SQLLEN indicator = 0;
    CheckODBC(SQLGetData(stmt.Get(), 1, SQL_C_CHAR, value, sizeof value, &indicator), nullptr, db.GetDBC(),
              stmt.Get(), "SQLGetData");
    return indicator == SQL_NULL_DATA ? std::nullopt : std::optional<std::string>(value);
}

// Records the connect events in order.
struct EventLog {
    std::vector<std::string> Lines;
    void Attach(TODBCDatabase& db) {
        db.OnBeforeConnect = [this, &db](TObject* sender) {
            Lines.push_back(sender == &db ? "before" : "before(wrong sender)");
        };
        db.OnAfterConnect = [this, &db](TObject* sender) {
            Lines.push_back(sender == &db ? "after" : "after(wrong sender)");
        };
    }
};

} // namespace quorda::testing
