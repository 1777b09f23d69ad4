#include "quorda/odbc/odbc_handle.h"

#include "odbc/odbc_api_p.h"

namespace quorda {

SQLRETURN TODBCConnectionTraits::Free(SQLHDBC handle) noexcept {
    return SQLFreeConnect(handle);
}

SQLRETURN TODBCStatementTraits::Free(SQLHSTMT handle) noexcept {
    return SQLFreeStmt(handle, SQL_DROP);
}

} // namespace quorda
