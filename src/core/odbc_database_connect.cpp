#include "connection_string_p.h"
#include "core/driver_quirks_p.h"
#include "odbc/odbc_api_p.h"
#include "quorda/core/connection_string.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/session.h"
#include "quorda/odbc/odbc_check.h"
#include "quorda/rtl/application.h"
#include "quorda/rtl/exception.h"
#include "quorda/rtl/messages.h"

#include <climits>
#include <exception>
#include <string_view>
#include <vector>

namespace quorda {
namespace {

// A writable zero-terminated copy: the driver manager takes SQLCHAR* even for input strings. The whole
// string is passed (length SQL_NTS), however long.
std::vector<SQLCHAR> InputBuffer(const std::string& text) {
    std::vector<SQLCHAR> buffer(text.begin(), text.end());
    buffer.push_back(0);
    return buffer;
}

// The completed connection string must arrive whole (psqlODBC's is several hundred bytes), and
// SQLDriverConnect cannot be asked twice, so the buffer takes the longest length ODBC can report.
constexpr SQLSMALLINT kCompletedBufferSize = SHRT_MAX;

// Connection inputs go to the driver manager zero-terminated: a NUL byte would silently cut them (a
// password "secret\0x" logging in as "secret"), so such input is refused before any call.
void RefuseNulByte(const std::string& Value, const char* What) {
    if (Value.find('\0') != std::string::npos) {
        DatabaseErrorFmt(LoadStr(SODBCConnectInputNul), std::string(What));
    }
}

} // namespace

void TODBCDatabase::Open() {
    if (FConnected) {
        return;
    }
    if (OnBeforeConnect) {
        OnBeforeConnect(this);
    }
    CheckConnectInputs();
    SetConnectOption(SQL_ODBC_CURSORS, ODBCSQLCursorOption[FSQLCursorOption],
                     "SQLSetConnectOption(SQL_ODBC_CURSORS)");
    // Only set when asked for: 0 is every driver's default already.
    if (FLoginTimeout > 0) {
        SetConnectOption(SQL_LOGIN_TIMEOUT, FLoginTimeout, "SQLSetConnectOption(SQL_LOGIN_TIMEOUT)");
    }
    if (FConnectionTimeout > 0) {
        SetConnectOption(SQL_ATTR_CONNECTION_TIMEOUT, FConnectionTimeout,
                         "SQLSetConnectOption(SQL_ATTR_CONNECTION_TIMEOUT)");
    }

    SQLHDBC handle = GetDBC();
    const bool connected = FConnectStyle == csConnect ? DataSourceConnect(handle) : DriverConnect(handle);
    if (!connected) {
        return; // the user cancelled the driver's dialog: no error, no after-connect event
    }
    FConnected = true;
    if (OnAfterConnect) {
        OnAfterConnect(this);
    }
    if (FIsolationLevel != ilDontCare) {
        SetConnectOption(SQL_TXN_ISOLATION, ODBCIsolationLevel[FIsolationLevel],
                         "SQLSetConnectOption(SQL_TXN_ISOLATION)");
    }
}

void TODBCDatabase::CheckConnectInputs() const {
    if (FConnectStyle == csConnect) {
        RefuseNulByte(FDSNName, "Data source name");
        RefuseNulByte(FUserID, "User");
        RefuseNulByte(FPassword, "Password");
        return;
    }
    RefuseNulByte(FConnectStr, "Connection string");
    // An empty DRIVER= or DSN= makes the driver manager pick a driver or data source of its own.
    if (const std::string_view key = BlankDataSourceKey(FConnectStr); !key.empty()) {
        DatabaseErrorFmt(LoadStr(SODBCEmptyConnectValue), std::string(key) + "=");
    }
}

bool TODBCDatabase::DataSourceConnect(SQLHDBC Handle) {
    std::vector<SQLCHAR> dsn = InputBuffer(FDSNName);
    std::vector<SQLCHAR> user = InputBuffer(FUserID);
    std::vector<SQLCHAR> password = InputBuffer(FPassword);
    std::unique_lock connecting(ConnectLock());
    const SQLRETURN ret = CheckODBC(
        SQLConnect(Handle, dsn.data(), SQL_NTS, user.data(), SQL_NTS, password.data(), SQL_NTS), odbcEnv(),
        Handle, nullptr,
        ODBCTraceEnabled() ? "SQLConnect " + FDSNName + " " + FUserID + (FPassword.empty() ? "" : " ****")
                           : std::string("SQLConnect"));
    connecting.unlock();
    return ret != SQL_NO_DATA_FOUND;
}

bool TODBCDatabase::DriverConnect(SQLHDBC Handle) {
    std::vector<SQLCHAR> input = InputBuffer(FConnectStr);
    std::vector<SQLCHAR> completed(static_cast<size_t>(kCompletedBufferSize) + 1, 0);
    SQLSMALLINT completedLength = 0;
    const auto window = static_cast<SQLHWND>(Application::MainWindowHandle());
    std::unique_lock connecting(ConnectLock());
    const SQLRETURN ret =
        CheckODBC(SQLDriverConnect(Handle, window, input.data(), SQL_NTS, completed.data(),
                                   kCompletedBufferSize, &completedLength,
                                   static_cast<SQLUSMALLINT>(ODBCDriverConnectOption[FDriverConnectOption])),
                  odbcEnv(), Handle, nullptr,
                  ODBCTraceEnabled() ? "SQLDriverConnect " + MaskConnectionPassword(FConnectStr)
                                     : std::string("SQLDriverConnect"));
    connecting.unlock();
    if (ret == SQL_NO_DATA_FOUND) {
        return false;
    }
    // The completed string replaces the input only when it can reopen the same connection: not when
    // the buffer could not hold it whole, and not when it names no driver and no data source (SQLite
    // ODBC answers "DSN=;Database=..."), which would send the next Open to the driver manager's
    // default data source; nor when it holds an empty DRIVER= or DSN=, which the next Open refuses.
    if (completedLength >= 0 && completedLength < kCompletedBufferSize) {
        std::string text(reinterpret_cast<const char*>(completed.data()),
                         static_cast<size_t>(completedLength));
        if ((NamesDataSource(text) && BlankDataSourceKey(text).empty()) || !NamesDataSource(FConnectStr)) {
            FConnectStr = std::move(text);
        }
    }
    return true;
}

void TODBCDatabase::Close() {
    CloseDatasets();
    if (!FConnected) {
        return; // an allocated handle is kept for the next Open
    }
    std::exception_ptr rollbackError;
    if (FInTransaction) {
        try {
            Rollback();
        } catch (...) {
            // Disconnect all the same (the server ends the transaction with the connection), else
            // a connection whose rollback keeps failing could be neither closed nor opened again.
            rollbackError = std::current_exception();
        }
    }
    SQLHDBC handle = FHandle.Get();
    {
        const std::lock_guard disconnecting(ConnectLock());
        CheckODBC(SQLDisconnect(handle), odbcEnv(), handle, nullptr, "SQLDisconnect");
    }
    FConnected = false;
    FInTransaction = false;
    CheckODBC(FHandle.Free(), odbcEnv(), handle, nullptr, "SQLFreeConnect");
    if (rollbackError) {
        std::rethrow_exception(rollbackError);
    }
}

void TODBCDatabase::StartTransaction() {
    if (FAutoCommitOption != acoNoAutoCommit) {
        return;
    }
    SetConnectOption(SQL_AUTOCOMMIT, ODBCAutoCommitOption[acoNoAutoCommit],
                     "SQLSetConnectOption(SQL_AUTOCOMMIT)");
    FInTransaction = true;
}

void TODBCDatabase::EndTransaction(SQLUSMALLINT Type, const char* Call) {
    SQLHDBC handle = GetDBC();
    CheckODBC(SQLTransact(odbcEnv(), handle, Type), odbcEnv(), handle, nullptr, Call);
    FInTransaction = false;
    if (FAutoCommitOption == acoNoAutoCommit) {
        SetConnectOption(SQL_AUTOCOMMIT, ODBCAutoCommitOption[acoAutoCommit],
                         "SQLSetConnectOption(SQL_AUTOCOMMIT)");
    }
}

void TODBCDatabase::Commit() {
    EndTransaction(SQL_COMMIT, "SQLTransact(SQL_COMMIT)");
}

void TODBCDatabase::Rollback() {
    EndTransaction(SQL_ROLLBACK, "SQLTransact(SQL_ROLLBACK)");
}

} // namespace quorda
