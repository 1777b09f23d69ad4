#pragma once

// The ODBC handle, length and return-code types that Quorda's public operations name, as plain
// aliases: user code sees no ODBC declaration or macro. They are the driver manager's own types
// (64-bit lengths here); the library checks each against <sql.h> when it is built.
namespace quorda {

using SQLHANDLE = void*;
using SQLHENV = SQLHANDLE;
using SQLHDBC = SQLHANDLE;
using SQLHSTMT = SQLHANDLE;
using SQLHDESC = SQLHANDLE;
using SQLPOINTER = void*;
using SQLCHAR = unsigned char;
using SQLSMALLINT = short;
using SQLUSMALLINT = unsigned short;
using SQLINTEGER = int;
using SQLUINTEGER = unsigned int;
using SQLLEN = long;
using SQLULEN = unsigned long;
using SQLRETURN = SQLSMALLINT;

// The return codes that inline code of the public headers tests (SQL_SUCCESS ... of the driver
// manager, checked against it in the library).
inline constexpr SQLRETURN kSQLSuccess = 0;
inline constexpr SQLRETURN kSQLSuccessWithInfo = 1;
inline constexpr SQLRETURN kSQLStillExecuting = 2;
inline constexpr SQLRETURN kSQLError = -1;
inline constexpr SQLRETURN kSQLInvalidHandle = -2;

} // namespace quorda
