#include "demo_sql.h"

#include "quorda/core/session.h"
#include "quorda/odbc.h"

// The demo calls ODBC itself for its raw statements.
#include <sql.h>
#include <sqlext.h>

namespace quorda::demo {
namespace {

TODBCStatementHandle Run(TODBCDatabase& db, const std::string& sql) {
    SQLHDBC dbc = db.GetDBC();
    TODBCStatementHandle stmt;
    CheckODBC(SQLAllocStmt(dbc, stmt.Receive()), odbcEnv(), dbc, nullptr, "SQLAllocStmt");
    std::string text = sql;
    CheckODBC(SQLExecDirect(stmt.Get(), reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS), odbcEnv(), dbc,
              stmt.Get(), "SQLExecDirect");
    return stmt;
}

} // namespace

void Exec(TODBCDatabase& db, const std::string& sql) {
    Run(db, sql);
}

std::vector<std::vector<std::string>> Query(TODBCDatabase& db, const std::string& sql) {
    TODBCStatementHandle stmt = Run(db, sql);
    SQLHDBC dbc = db.GetDBC();
    SQLSMALLINT columns = 0;
    CheckODBC(SQLNumResultCols(stmt.Get(), &columns), odbcEnv(), dbc, stmt.Get(), "SQLNumResultCols");
    std::vector<std::vector<std::string>> rows;
    while (CheckODBC(SQLFetch(stmt.Get()), odbcEnv(), dbc, stmt.Get(), "SQLFetch") != SQL_NO_DATA_FOUND) {
        std::vector<std::string> row;
        for (SQLUSMALLINT column = 1; column <= static_cast<SQLUSMALLINT>(columns); ++column) {
            char value[256] = {};
            SQLLEN indicator = 0;
            CheckODBC(SQLGetData(stmt.Get(), column, SQL_C_CHAR, value, sizeof value, &indicator), odbcEnv(),
                      dbc, stmt.Get(), "SQLGetData");
            row.emplace_back(indicator == SQL_NULL_DATA ? "NULL" : value);
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

long long Scalar(TODBCDatabase& db, const std::string& sql) {
    const auto rows = Query(db, sql);
    return rows.empty() || rows[0].empty() ? 0 : std::stoll(rows[0][0]);
}

} // namespace quorda::demo
