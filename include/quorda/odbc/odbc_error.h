#pragma once

#include "quorda/odbc/odbc_types.h"
#include "quorda/rtl/exception.h"

#include <string>

namespace quorda {

// False exactly for SQL_ERROR, SQL_INVALID_HANDLE and SQL_STILL_EXECUTING. SQL_NEED_DATA and
// SQL_NO_DATA count as success: callers that must tell the end of a result set test for it.
constexpr bool RetCodeIsSuccessful(SQLRETURN RetCode) noexcept {
    return RetCode != kSQLError && RetCode != kSQLInvalidHandle && RetCode != kSQLStillExecuting;
}

// A failed ODBC call, with the diagnostics the driver manager reported for its handles.
class QUORDA_API EODBCError : public EDatabaseError {
public:
    EODBCError(std::string message, SQLHENV henv, SQLHDBC hdbc, SQLHSTMT hstmt, SQLINTEGER nativeError,
               std::string sqlState, std::string nativeMessage);

    SQLHENV Henv() const noexcept { return FHenv; }
    SQLHDBC Hdbc() const noexcept { return FHdbc; }
    SQLHSTMT Hstmt() const noexcept { return FHstmt; }
    // The first non-zero native code among the records read; 0 when every record had 0.
    SQLINTEGER NativeError() const noexcept { return FNativeError; }
    // The state of every diagnostic call, joined with ";".
    const std::string& SQLState() const noexcept { return FSQLState; }
    // The text of the record that supplied NativeError, else the text of the first record.
    const std::string& NativeMessage() const noexcept { return FNativeMessage; }

private:
    SQLHENV FHenv;
    SQLHDBC FHdbc;
    SQLHSTMT FHstmt;
    SQLINTEGER FNativeError;
    std::string FSQLState;
    std::string FNativeMessage;
};

// Raised by the components themselves with a fixed English text ("Database open", "Parameter type not
// supported"). It derives from Exception on purpose, not from EDatabaseError.
class QUORDA_API EODBCDatabaseError : public Exception {
public:
    using Exception::Exception;
};

// Reads the pending diagnostics of the handle triple (each may be null) and returns the exception
// that describes them, not yet raised. Pass the most specific handles of the failed call.
QUORDA_API EODBCError CreateODBCError(SQLHENV henv, SQLHDBC hdbc, SQLHSTMT hstmt);

} // namespace quorda
