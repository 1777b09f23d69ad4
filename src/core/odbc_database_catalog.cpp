#include "odbc/odbc_api_p.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/session.h"
#include "quorda/odbc/odbc_check.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/strings.h"

#include <climits>
#include <cstring>

namespace quorda {
namespace {

// Catalog names arrive in 129-byte buffers of which 127 bytes (terminator included) are offered to
// the driver, so longer names arrive cut to 126 characters.
constexpr size_t kCatalogBufferSize = 129;
constexpr SQLLEN kCatalogBufferLength = 127;

struct CatalogColumn {
    SQLCHAR Buffer[kCatalogBufferSize] = {};
    SQLLEN Indicator = 0;

    // A null column reads as empty; the buffer would otherwise still hold the row before.
    std::string Text() const {
        if (Indicator == SQL_NULL_DATA) {
            return {};
        }
        const char* text = reinterpret_cast<const char*>(Buffer);
        return {text, strnlen(text, kCatalogBufferSize)};
    }
};

void AddTo(TStrings* List, const CatalogColumn& Column) {
    if (List != nullptr) {
        List->Add(Column.Text());
    }
}

void Bind(SQLHSTMT Stmt, SQLHDBC Dbc, SQLUSMALLINT Number, CatalogColumn& Column) {
    CheckODBC(SQLBindCol(Stmt, Number, SQL_C_CHAR, Column.Buffer, kCatalogBufferLength, &Column.Indicator),
              odbcEnv(), Dbc, Stmt, "SQLBindCol");
}

// The statement of one catalog call, dropped when the call ends (also when it fails).
TODBCStatementHandle AllocCatalogStatement(SQLHDBC Dbc) {
    TODBCStatementHandle stmt;
    SQLHSTMT handle = nullptr;
    const SQLRETURN ret = SQLAllocStmt(Dbc, &handle);
    if (RetCodeIsSuccessful(ret)) {
        stmt.Reset(handle);
    }
    CheckODBC(ret, odbcEnv(), Dbc, stmt.Get(), "SQLAllocStmt");
    return stmt;
}

bool Fetch(SQLHSTMT Stmt, SQLHDBC Dbc) {
    return CheckODBC(SQLFetch(Stmt), odbcEnv(), Dbc, Stmt, "SQLFetch") != SQL_NO_DATA_FOUND;
}

void Drop(TODBCStatementHandle& Stmt, SQLHDBC Dbc) {
    SQLHSTMT handle = Stmt.Get();
    CheckODBC(Stmt.Free(), odbcEnv(), Dbc, handle, "SQLFreeStmt(SQL_DROP)");
}

} // namespace

void TODBCDatabase::GetTables(TStrings* TableNames, TStrings* Owners, TStrings* TableTypes,
                              TStrings* Remarks) {
    SQLHDBC dbc = GetDBC();
    TODBCStatementHandle stmt = AllocCatalogStatement(dbc);
    for (TStrings* list : {TableNames, Owners, TableTypes, Remarks}) {
        if (list != nullptr) {
            list->Clear();
        }
    }
    CheckODBC(SQLTables(stmt.Get(), nullptr, 0, nullptr, 0, nullptr, 0, nullptr, 0), odbcEnv(), dbc,
              stmt.Get(), "SQLTables");

    // Qualifier, owner, name, type, remarks; the qualifier is read but delivered nowhere.
    CatalogColumn columns[5];
    for (SQLUSMALLINT i = 0; i < 5; ++i) {
        Bind(stmt.Get(), dbc, static_cast<SQLUSMALLINT>(i + 1), columns[i]);
    }
    while (Fetch(stmt.Get(), dbc)) {
        AddTo(TableNames, columns[2]);
        AddTo(Owners, columns[1]);
        AddTo(TableTypes, columns[3]);
        AddTo(Remarks, columns[4]);
    }
    Drop(stmt, dbc);
}

void TODBCDatabase::GetColumns(const std::string& TableName, TStrings* ColumnNames) {
    SQLHDBC dbc = GetDBC();
    TODBCStatementHandle stmt = AllocCatalogStatement(dbc);
    if (ColumnNames != nullptr) {
        ColumnNames->Clear();
    }
    // The exact length is passed; a name too long for a length word goes zero-terminated instead of
    // being cut to a different name.
    std::string name = TableName;
    const SQLSMALLINT length = name.size() <= static_cast<size_t>(SHRT_MAX)
                                   ? static_cast<SQLSMALLINT>(name.size())
                                   : SQLSMALLINT(SQL_NTS);
    CheckODBC(SQLColumns(stmt.Get(), nullptr, 0, nullptr, 0, reinterpret_cast<SQLCHAR*>(name.data()), length,
                         nullptr, 0),
              odbcEnv(), dbc, stmt.Get(), "SQLColumns");

    CatalogColumn column;
    Bind(stmt.Get(), dbc, 4, column);
    while (Fetch(stmt.Get(), dbc)) {
        AddTo(ColumnNames, column);
    }
    Drop(stmt, dbc);
}

} // namespace quorda
