#pragma once

// The ODBC declarations of the driver manager, for the library's own sources. Public headers name
// the types through quorda/odbc/odbc_types.h only; this header brings the functions and macros.
#include "quorda/odbc/odbc_types.h"

#include <sql.h>
#include <sqlext.h>

namespace quorda {

// Length indicator for a parameter whose value is sent at execution time (-100 - length).
// sqlext.h defines a macro SQL_LEN_DATA_AT_EXEC with the same rule; this is the typed form.
constexpr SQLLEN SqlLenDataAtExec(SQLLEN length) noexcept {
    return SQL_LEN_DATA_AT_EXEC_OFFSET - length;
}

} // namespace quorda
