#include "quorda/odbc/odbc_handle.h"

#include "quorda/odbc/odbc_check.h"

namespace quorda {

SQLRETURN TODBCConnectionTraits::Free(SQLHDBC handle) noexcept {
    return TraceODBC(SQLFreeConnect(handle), "SQLFreeConnect");
}

SQLRETURN TODBCStatementTraits::Free(SQLHSTMT handle) noexcept {
    return TraceODBC(SQLFreeStmt(handle, SQL_DROP), "SQLFreeStmt(SQL_DROP)");
}

} // namespace quorda
