// Statement entry points of the fault-injection driver: allocation, options, execution with
// parameters (data at execution included) and the two catalog calls.
#include "fault_handles.h"

#include <algorithm>
#include <cstring>
#include <strings.h>

#define FAULT_EXPORT extern "C" __attribute__((visibility("default")))

namespace quorda_fault {
namespace {

// The statement's parameters are complete: log them and produce the result.
SQLRETURN Finish(Stmt& stmt) {
    Conn& conn = *stmt.Owner;
    for (const auto& [number, param] : stmt.Params) {
        auto sent = stmt.PutValues.find(number);
        std::string indicator = param.Indicator != nullptr ? std::to_string(*param.Indicator) : "-";
        conn.Log("param " + std::to_string(number) + " " + std::to_string(param.CType) + " " +
                 std::to_string(param.SqlType) + " " + std::to_string(param.ColumnSize) + " " + indicator +
                 " " + RenderParameter(param, sent == stmt.PutValues.end() ? nullptr : &sent->second));
    }
    stmt.Pending.clear();
    stmt.PutValues.clear();
    stmt.CloseCursor();
    stmt.Result = {};
    if (IsQuery(stmt.Sql) && conn.Rules.HasResult()) {
        stmt.Result.Columns = conn.Rules.Columns();
        stmt.Result.Rows = conn.Rules.Rows();
        stmt.Open = true;
    }
    stmt.RowCount = stmt.Open ? static_cast<long long>(stmt.Result.Rows.size()) : 0;
    return SQL_SUCCESS;
}

// The driver manager refuses a statement with an open cursor or out of sequence before it gets here.
SQLRETURN Execute(Stmt& stmt) {
    stmt.Pending.clear();
    stmt.PutValues.clear();
    stmt.PendingIndex = 0;
    stmt.PutStarted = false;
    for (const auto& [number, param] : stmt.Params) {
        if (param.AtExecution()) {
            stmt.Pending.push_back(number);
        }
    }
    return stmt.Pending.empty() ? Finish(stmt) : SQL_NEED_DATA;
}

std::string CatalogArg(SQLCHAR* text, SQLSMALLINT length) {
    std::string shown = text == nullptr ? "null" : EscapeForLog(ArgText(text, length));
    return shown + "/" + std::to_string(length);
}

void OpenCatalog(Stmt& stmt, std::vector<ScriptColumn> columns, std::vector<std::vector<Value>> rows) {
    stmt.CloseCursor();
    stmt.Result.Columns = std::move(columns);
    stmt.Result.Rows = std::move(rows);
    stmt.RowCount = static_cast<long long>(stmt.Result.Rows.size());
    stmt.Open = true;
}

} // namespace

bool IsQuery(const std::string& sql) {
    const auto begin = std::min(sql.find_first_not_of(" \t\r\n"), sql.size());
    for (std::string_view start : {"select", "with", "values", "call", "{"}) {
        if (strncasecmp(sql.c_str() + begin, start.data(), start.size()) == 0) {
            return true;
        }
    }
    return false;
}

} // namespace quorda_fault

using namespace quorda_fault;

FAULT_EXPORT SQLRETURN SQL_API SQLAllocStmt(SQLHDBC dbc, SQLHSTMT* out) {
    if (out == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    return ConnCall(dbc, "SQLAllocStmt", {}, [&](Conn& conn) -> SQLRETURN {
        auto* stmt = new Stmt;
        stmt->Owner = &conn;
        stmt->CursorName = "SQL_CUR" + std::to_string(++conn.CursorNumber);
        conn.Statements.push_back(stmt);
        *out = stmt;
        return SQL_SUCCESS;
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLFreeStmt(SQLHSTMT handle, SQLUSMALLINT option) {
    SQLRETURN rc = StmtCall(handle, "SQLFreeStmt", std::to_string(option), [&](Stmt& stmt) -> SQLRETURN {
        switch (option) {
        case SQL_CLOSE:
            stmt.CloseCursor();
            return SQL_SUCCESS;
        case SQL_DROP:
            return SQL_SUCCESS;
        case SQL_UNBIND:
            stmt.Columns.clear();
            return SQL_SUCCESS;
        case SQL_RESET_PARAMS:
            stmt.Params.clear();
            return SQL_SUCCESS;
        default:
            return stmt.Error("S1092", "Option type out of range");
        }
    });
    if (option == SQL_DROP && (rc == SQL_SUCCESS || rc == SQL_SUCCESS_WITH_INFO)) {
        std::lock_guard lock(DriverLock());
        Stmt* stmt = static_cast<Stmt*>(handle);
        auto& list = stmt->Owner->Statements;
        list.erase(std::remove(list.begin(), list.end(), stmt), list.end());
        delete stmt;
    }
    return rc;
}

FAULT_EXPORT SQLRETURN SQL_API SQLPrepare(SQLHSTMT handle, SQLCHAR* text, SQLINTEGER length) {
    std::string sql = ArgText(text, length);
    return StmtCall(handle, "SQLPrepare", sql, [&](Stmt& stmt) -> SQLRETURN {
        stmt.Sql = sql;
        return SQL_SUCCESS;
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLExecute(SQLHSTMT handle) {
    return StmtCall(handle, "SQLExecute", {}, [&](Stmt& stmt) { return Execute(stmt); });
}

FAULT_EXPORT SQLRETURN SQL_API SQLExecDirect(SQLHSTMT handle, SQLCHAR* text, SQLINTEGER length) {
    std::string sql = ArgText(text, length);
    return StmtCall(handle, "SQLExecDirect", sql, [&](Stmt& stmt) -> SQLRETURN {
        stmt.Sql = sql;
        return Execute(stmt);
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLBindParameter(SQLHSTMT handle, SQLUSMALLINT number, SQLSMALLINT ioType,
                                                SQLSMALLINT cType, SQLSMALLINT sqlType, SQLULEN columnSize,
                                                SQLSMALLINT digits, SQLPOINTER data, SQLLEN bufferLength,
                                                SQLLEN* indicator) {
    std::string arguments = std::to_string(number) + " " + std::to_string(ioType) + " " +
                            std::to_string(cType) + " " + std::to_string(sqlType) + " " +
                            std::to_string(columnSize) + " " + std::to_string(digits) + " " +
                            std::to_string(bufferLength);
    return StmtCall(handle, "SQLBindParameter", arguments, [&](Stmt& stmt) -> SQLRETURN {
        stmt.Params[number] = {cType, sqlType, columnSize, data, bufferLength, indicator};
        return SQL_SUCCESS;
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLParamData(SQLHSTMT handle, SQLPOINTER* value) {
    return StmtCall(handle, "SQLParamData", {}, [&](Stmt& stmt) -> SQLRETURN {
        if (stmt.PutStarted) {
            stmt.PutValues.try_emplace(stmt.Pending[stmt.PendingIndex], std::string());
            ++stmt.PendingIndex;
        }
        stmt.PutStarted = true;
        if (stmt.PendingIndex < stmt.Pending.size()) {
            if (value != nullptr) {
                *value = stmt.Params[stmt.Pending[stmt.PendingIndex]].Data;
            }
            return SQL_NEED_DATA;
        }
        return Finish(stmt);
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLPutData(SQLHSTMT handle, SQLPOINTER data, SQLLEN length) {
    return StmtCall(handle, "SQLPutData", std::to_string(length), [&](Stmt& stmt) -> SQLRETURN {
        Value& sent =
            stmt.PutValues.try_emplace(stmt.Pending[stmt.PendingIndex], std::string()).first->second;
        size_t count =
            length == SQL_NTS ? std::strlen(static_cast<const char*>(data)) : static_cast<size_t>(length);
        sent->append(static_cast<const char*>(data), count);
        return SQL_SUCCESS;
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLRowCount(SQLHSTMT handle, SQLLEN* count) {
    return StmtCall(handle, "SQLRowCount", {}, [&](Stmt& stmt) -> SQLRETURN {
        if (count != nullptr) {
            *count = static_cast<SQLLEN>(stmt.RowCount);
        }
        return SQL_SUCCESS;
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLMoreResults(SQLHSTMT handle) {
    return StmtCall(handle, "SQLMoreResults", {}, [&](Stmt& stmt) -> SQLRETURN {
        stmt.CloseCursor();
        return SQL_NO_DATA;
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLCancel(SQLHSTMT handle) {
    return StmtCall(handle, "SQLCancel", {}, [&](Stmt& stmt) -> SQLRETURN {
        stmt.Pending.clear();
        return SQL_SUCCESS;
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLSetStmtOption(SQLHSTMT handle, SQLUSMALLINT option, SQLULEN value) {
    return StmtCall(handle, "SQLSetStmtOption", std::to_string(option) + " " + std::to_string(value),
                    [&](Stmt& stmt) -> SQLRETURN {
                        SQLULEN granted = value;
                        const Script& rules = stmt.Owner->Rules;
                        if (option == SQL_ROWSET_SIZE && rules.MaxRowsetSize() &&
                            value > *rules.MaxRowsetSize()) {
                            granted = *rules.MaxRowsetSize();
                        }
                        stmt.Options[option] = granted;
                        if (granted != value) {
                            stmt.Post("01S02", "[Quorda][Fault] Option value changed");
                            return SQL_SUCCESS_WITH_INFO;
                        }
                        return SQL_SUCCESS;
                    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLGetStmtOption(SQLHSTMT handle, SQLUSMALLINT option, SQLPOINTER value) {
    return StmtCall(handle, "SQLGetStmtOption", std::to_string(option), [&](Stmt& stmt) -> SQLRETURN {
        // The library asks for the rowset size only, and reads it as a full SQLULEN like psqlODBC writes it.
        const SQLULEN answer = stmt.Option(option, option == SQL_ROWSET_SIZE ? 1 : 0);
        if (value != nullptr) {
            std::memcpy(value, &answer, sizeof answer);
        }
        return SQL_SUCCESS;
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLSetCursorName(SQLHSTMT handle, SQLCHAR* name, SQLSMALLINT length) {
    std::string text = ArgText(name, length);
    return StmtCall(handle, "SQLSetCursorName", text, [&](Stmt& stmt) -> SQLRETURN {
        stmt.CursorName = text;
        return SQL_SUCCESS;
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLGetCursorName(SQLHSTMT handle, SQLCHAR* name, SQLSMALLINT bufferLength,
                                                SQLSMALLINT* length) {
    return StmtCall(handle, "SQLGetCursorName", std::to_string(bufferLength), [&](Stmt& stmt) -> SQLRETURN {
        return CopyOut(stmt, stmt.CursorName, name, bufferLength, length);
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLTables(SQLHSTMT handle, SQLCHAR* catalog, SQLSMALLINT catalogLength,
                                         SQLCHAR* schema, SQLSMALLINT schemaLength, SQLCHAR* table,
                                         SQLSMALLINT tableLength, SQLCHAR* type, SQLSMALLINT typeLength) {
    std::string arguments = CatalogArg(catalog, catalogLength) + " " + CatalogArg(schema, schemaLength) +
                            " " + CatalogArg(table, tableLength) + " " + CatalogArg(type, typeLength);
    return StmtCall(handle, "SQLTables", arguments, [&](Stmt& stmt) -> SQLRETURN {
        std::vector<std::vector<Value>> rows;
        for (const auto& entry : stmt.Owner->Rules.Tables()) {
            rows.push_back({std::nullopt, entry.Owner, entry.Name, entry.Type, entry.Remarks});
        }
        OpenCatalog(stmt,
                    {{"TABLE_QUALIFIER", SQL_VARCHAR, 128, 0, ""},
                     {"TABLE_OWNER", SQL_VARCHAR, 128, 0, ""},
                     {"TABLE_NAME", SQL_VARCHAR, 128, 0, ""},
                     {"TABLE_TYPE", SQL_VARCHAR, 128, 0, ""},
                     {"REMARKS", SQL_VARCHAR, 254, 0, ""}},
                    std::move(rows));
        return SQL_SUCCESS;
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLColumns(SQLHSTMT handle, SQLCHAR* catalog, SQLSMALLINT catalogLength,
                                          SQLCHAR* schema, SQLSMALLINT schemaLength, SQLCHAR* table,
                                          SQLSMALLINT tableLength, SQLCHAR* column,
                                          SQLSMALLINT columnLength) {
    std::string arguments = CatalogArg(catalog, catalogLength) + " " + CatalogArg(schema, schemaLength) +
                            " " + CatalogArg(table, tableLength) + " " + CatalogArg(column, columnLength);
    std::string tableName = ArgText(table, tableLength);
    return StmtCall(handle, "SQLColumns", arguments, [&](Stmt& stmt) -> SQLRETURN {
        std::vector<std::vector<Value>> rows;
        for (const auto& entry : stmt.Owner->Rules.CatalogColumns()) {
            if (!tableName.empty() && entry.Table != tableName) {
                continue;
            }
            rows.push_back(
                {std::nullopt, std::nullopt, entry.Table, entry.Name, std::to_string(entry.SqlType)});
        }
        // The leading columns of the catalog's answer: the library reads the column names only.
        OpenCatalog(stmt,
                    {{"TABLE_QUALIFIER", SQL_VARCHAR, 128, 0, ""},
                     {"TABLE_OWNER", SQL_VARCHAR, 128, 0, ""},
                     {"TABLE_NAME", SQL_VARCHAR, 128, 0, ""},
                     {"COLUMN_NAME", SQL_VARCHAR, 128, 0, ""},
                     {"DATA_TYPE", SQL_SMALLINT, 5, 0, ""}},
                    std::move(rows));
        return SQL_SUCCESS;
    });
}
