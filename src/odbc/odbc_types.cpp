// The public aliases of quorda/odbc/odbc_types.h are the driver manager's types and codes.
#include "odbc/odbc_api_p.h"

#include <type_traits>

namespace quorda {

static_assert(std::is_same_v<SQLHANDLE, ::SQLHANDLE>);
static_assert(std::is_same_v<SQLHENV, ::SQLHENV>);
static_assert(std::is_same_v<SQLHDBC, ::SQLHDBC>);
static_assert(std::is_same_v<SQLHSTMT, ::SQLHSTMT>);
static_assert(std::is_same_v<SQLHDESC, ::SQLHDESC>);
static_assert(std::is_same_v<SQLPOINTER, ::SQLPOINTER>);
static_assert(std::is_same_v<SQLCHAR, ::SQLCHAR>);
static_assert(std::is_same_v<SQLSMALLINT, ::SQLSMALLINT>);
static_assert(std::is_same_v<SQLUSMALLINT, ::SQLUSMALLINT>);
static_assert(std::is_same_v<SQLINTEGER, ::SQLINTEGER>);
static_assert(std::is_same_v<SQLUINTEGER, ::SQLUINTEGER>);
static_assert(std::is_same_v<SQLLEN, ::SQLLEN>);
static_assert(std::is_same_v<SQLULEN, ::SQLULEN>);
static_assert(std::is_same_v<SQLRETURN, ::SQLRETURN>);

static_assert(kSQLSuccess == SQL_SUCCESS);
static_assert(kSQLSuccessWithInfo == SQL_SUCCESS_WITH_INFO);
static_assert(kSQLStillExecuting == SQL_STILL_EXECUTING);
static_assert(kSQLError == SQL_ERROR);
static_assert(kSQLInvalidHandle == SQL_INVALID_HANDLE);

} // namespace quorda
