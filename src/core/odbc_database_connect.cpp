#include "odbc/odbc_api_p.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/session.h"
#include "quorda/odbc/odbc_check.h"
#include "quorda/rtl/application.h"

#include <algorithm>
#include <cctype>
#include <climits>
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

bool SameKeyword(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::toupper(static_cast<unsigned char>(x)) ==
                      std::toupper(static_cast<unsigned char>(y));
           });
}

// True when the connection string names a driver or a data source (DRIVER, DSN or FILEDSN with a
// value). Values may be braced ({...}) and then hold semicolons.
bool NamesDataSource(std::string_view text) {
    size_t pos = 0;
    while (pos < text.size()) {
        const size_t equals = text.find('=', pos);
        if (equals == std::string_view::npos) {
            break;
        }
        std::string_view key = text.substr(pos, equals - pos);
        while (!key.empty() && key.front() == ' ') {
            key.remove_prefix(1);
        }
        while (!key.empty() && key.back() == ' ') {
            key.remove_suffix(1);
        }
        size_t end = equals + 1;
        if (end < text.size() && text[end] == '{') {
            end = text.find('}', end);
            end = end == std::string_view::npos ? text.size() : end;
        }
        end = text.find(';', end);
        end = end == std::string_view::npos ? text.size() : end;
        const std::string_view value = text.substr(equals + 1, end - equals - 1);
        if ((SameKeyword(key, "DRIVER") || SameKeyword(key, "DSN") || SameKeyword(key, "FILEDSN")) &&
            value.find_first_not_of(' ') != std::string_view::npos) {
            return true;
        }
        pos = end + 1;
    }
    return false;
}

} // namespace

void TODBCDatabase::Open() {
    if (FConnected) {
        return;
    }
    if (OnBeforeConnect) {
        OnBeforeConnect(this);
    }
    SetConnectOption(SQL_ODBC_CURSORS, ODBCSQLCursorOption[FSQLCursorOption],
                     "SQLSetConnectOption(SQL_ODBC_CURSORS)");

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

bool TODBCDatabase::DataSourceConnect(SQLHDBC Handle) {
    std::vector<SQLCHAR> dsn = InputBuffer(FDSNName);
    std::vector<SQLCHAR> user = InputBuffer(FUserID);
    std::vector<SQLCHAR> password = InputBuffer(FPassword);
    const SQLRETURN ret =
        CheckODBC(SQLConnect(Handle, dsn.data(), SQL_NTS, user.data(), SQL_NTS, password.data(), SQL_NTS),
                  odbcEnv(), Handle, nullptr, "SQLConnect");
    return ret != SQL_NO_DATA_FOUND;
}

bool TODBCDatabase::DriverConnect(SQLHDBC Handle) {
    std::vector<SQLCHAR> input = InputBuffer(FConnectStr);
    std::vector<SQLCHAR> completed(static_cast<size_t>(kCompletedBufferSize) + 1, 0);
    SQLSMALLINT completedLength = 0;
    const auto window = static_cast<SQLHWND>(Application::MainWindowHandle());
    const SQLRETURN ret =
        CheckODBC(SQLDriverConnect(Handle, window, input.data(), SQL_NTS, completed.data(),
                                   kCompletedBufferSize, &completedLength,
                                   static_cast<SQLUSMALLINT>(ODBCDriverConnectOption[FDriverConnectOption])),
                  odbcEnv(), Handle, nullptr, "SQLDriverConnect");
    if (ret == SQL_NO_DATA_FOUND) {
        return false;
    }
    // The completed string replaces the input only when it can reopen the same connection: not when
    // the buffer could not hold it whole, and not when it names no driver and no data source (SQLite
    // ODBC answers "DSN=;Database=..."), which would send the next Open to the driver manager's
    // default data source.
    if (completedLength >= 0 && completedLength < kCompletedBufferSize) {
        std::string text(reinterpret_cast<const char*>(completed.data()),
                         static_cast<size_t>(completedLength));
        if (NamesDataSource(text) || !NamesDataSource(FConnectStr)) {
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
    if (FInTransaction) {
        Rollback();
    }
    SQLHDBC handle = FHandle.Get();
    CheckODBC(SQLDisconnect(handle), odbcEnv(), handle, nullptr, "SQLDisconnect");
    FConnected = false;
    CheckODBC(FHandle.Free(), odbcEnv(), handle, nullptr, "SQLFreeConnect");
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
