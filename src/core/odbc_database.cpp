#include "quorda/core/odbc_database.h"

#include "core/driver_quirks_p.h"
#include "odbc/odbc_api_p.h"
#include "quorda/core/session.h"
#include "quorda/odbc/odbc_check.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/messages.h"
#include "quorda/rtl/strings.h"

#include <algorithm>

namespace quorda {

// The public option tables carry the driver manager's codes.
static_assert(ODBCDriverConnectOption == std::array<std::int32_t, 4>{SQL_DRIVER_NOPROMPT, SQL_DRIVER_COMPLETE,
                                                                     SQL_DRIVER_PROMPT,
                                                                     SQL_DRIVER_COMPLETE_REQUIRED});
static_assert(ODBCAutoCommitOption == std::array<std::int32_t, 3>{-1, SQL_AUTOCOMMIT_OFF, SQL_AUTOCOMMIT_ON});
static_assert(ODBCIsolationLevel ==
              std::array<std::int32_t, 6>{-1, SQL_TXN_READ_UNCOMMITTED, SQL_TXN_READ_COMMITTED,
                                          SQL_TXN_REPEATABLE_READ, SQL_TXN_SERIALIZABLE, kSqlTxnVersioning});
static_assert(ODBCSQLCursorOption ==
              std::array<std::int32_t, 3>{SQL_CUR_USE_IF_NEEDED, SQL_CUR_USE_ODBC, SQL_CUR_USE_DRIVER});

TODBCDatabase::TODBCDatabase(TComponent* AOwner) : TComponent(AOwner), FSession(ODBCSession()) {
    FSession->AddDatabase(this);
}

TODBCDatabase::~TODBCDatabase() {
    try {
        Close();
    } catch (...) {
        // A failed rollback or disconnect must not escape a destructor; the connection is dropped
        // below as far as the driver lets it go.
        if (FConnected && FHandle) {
            const std::lock_guard disconnecting(ConnectLock());
            TraceODBC(SQLDisconnect(FHandle.Get()), "SQLDisconnect");
            FConnected = false;
        }
    }
    try {
        FreeDatasets();
    } catch (...) {
    }
    // Datasets that did not leave the list keep no link back to us.
    FDataSets.clear();
    FHandle.Reset();
    LeaveSession();
}

void TODBCDatabase::LeaveSession() {
    FSession->RemoveDatabase(this);
}

void TODBCDatabase::SetDatabaseName(const std::string& Value) {
    if (FConnected) {
        throw EODBCDatabaseError("Database open");
    }
    // Checked and set under the session's lock: two threads cannot give two databases one name.
    FSession->WithDatabases([&](const std::vector<TODBCDatabase*>&) {
        if (Value != FDatabaseName) {
            ValidateName(Value);
            FDatabaseName = Value;
        }
    });
}

void TODBCDatabase::ValidateName(const std::string& Name) {
    if (!Name.empty()) {
        TODBCDatabase* other = FSession->FindDatabase(Name);
        if (other != nullptr && other != this) {
            DatabaseErrorFmt(LoadStr(SODBCDatabaseExists), Name);
        }
    }
}

void TODBCDatabase::SetIsolationLevel(TIsolationLevel Value) {
    if (Value == FIsolationLevel) {
        return;
    }
    if (FConnected && Value != ilDontCare) {
        SetConnectOption(SQL_TXN_ISOLATION, ODBCIsolationLevel[Value],
                         "SQLSetConnectOption(SQL_TXN_ISOLATION)");
    }
    FIsolationLevel = Value;
}

void TODBCDatabase::SetSQLCursorOption(TSQLCursorOption Value) {
    if (FConnected) {
        DatabaseError(LoadStr(SODBCDataBaseOpen));
    }
    FSQLCursorOption = Value;
}

void TODBCDatabase::SetDriverConnectOption(TDriverConnectOption Value) {
    if (FConnected) {
        DatabaseError(LoadStr(SODBCDataBaseOpen));
    }
    FDriverConnectOption = Value;
}

void TODBCDatabase::SetConnected(bool Value) {
    if (IsLoading()) {
        FStreamedConnected = Value;
        return;
    }
    if (Value != FConnected) {
        if (Value) {
            Open();
        } else {
            Close();
        }
    }
}

SQLHDBC TODBCDatabase::GetDBC() {
    if (!FHandle) {
        SQLHENV env = odbcEnv();
        SQLHDBC handle = nullptr;
        const SQLRETURN ret = SQLAllocConnect(env, &handle);
        if (RetCodeIsSuccessful(ret)) {
            FHandle.Reset(handle);
        }
        CheckODBC(ret, env, FHandle.Get(), nullptr, "SQLAllocConnect");
    }
    return FHandle.Get();
}

void TODBCDatabase::SetConnectOption(SQLUSMALLINT Option, std::int32_t Value, const char* Call) {
    SQLHDBC handle = GetDBC();
    // The option value is passed as the unsigned word ODBC expects; -1 entries never get here.
    CheckODBC(SQLSetConnectOption(handle, Option, static_cast<SQLULEN>(Value)), odbcEnv(), handle, nullptr,
              Call);
}

void TODBCDatabase::AddDataSet(IODBCDatabaseClient* DataSet) {
    FDataSets.push_back(DataSet);
}

void TODBCDatabase::RemoveDataSet(IODBCDatabaseClient* DataSet) {
    auto it = std::find(FDataSets.begin(), FDataSets.end(), DataSet);
    if (it != FDataSets.end()) {
        FDataSets.erase(it);
    }
}

int TODBCDatabase::GetDatasetCount() const {
    return static_cast<int>(FDataSets.size());
}

IODBCDatabaseClient* TODBCDatabase::DatasetClient(int Index) const {
    if (Index < 0 || Index >= static_cast<int>(FDataSets.size())) {
        throw Exception(FormatMessage(SListIndexError, Index));
    }
    return FDataSets[static_cast<size_t>(Index)];
}

TODBCDataSet* TODBCDatabase::GetDataset(int Index) const {
    return DatasetClient(Index)->ClientDataSet();
}

void TODBCDatabase::CloseDatasets() {
    // Walked from the end: a dataset may leave the list while it closes.
    for (int i = static_cast<int>(FDataSets.size()) - 1; i >= 0; --i) {
        if (i >= static_cast<int>(FDataSets.size())) {
            continue;
        }
        IODBCDatabaseClient* client = FDataSets[static_cast<size_t>(i)];
        client->CloseForDatabase();
        if (client->HoldsStatement()) {
            client->ReleaseStatement();
        }
    }
}

void TODBCDatabase::FreeDatasets() {
    for (int i = static_cast<int>(FDataSets.size()) - 1; i >= 0; --i) {
        if (i >= static_cast<int>(FDataSets.size())) {
            continue;
        }
        IODBCDatabaseClient* client = FDataSets[static_cast<size_t>(i)];
        client->DetachFromDatabase();
        // A client that did not leave by itself is dropped, so the walk always ends with an empty list.
        RemoveDataSet(client);
    }
}

} // namespace quorda
