#pragma once

#include "quorda/core/database_client.h"
#include "quorda/odbc/odbc_handle.h"
#include "quorda/odbc/odbc_types.h"
#include "quorda/rtl/component.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace quorda {

class TODBCSession;
class TStrings;

enum TConnectStyle { csDriverConnect, csConnect };
enum TDriverConnectOption {
    dcoDriverNoPrompt,
    dcoDriverComplete,
    dcoDriverPrompt,
    dcoDriverCompleteRequired
};
enum TAutoCommitOption { acoDontCare, acoNoAutoCommit, acoAutoCommit };
enum TIsolationLevel {
    ilDontCare,
    ilDirtyRead,
    ilCommitedRead,
    ilRepeatableRead,
    ilSerializable,
    ilVersioning
};
enum TSQLCursorOption { curUseIfNeeded, curUsesODBC, curUseDriver };

// SQL_TXN_VERSIONING of ODBC 2; the ODBC 3 headers no longer declare it.
inline constexpr std::int32_t kSqlTxnVersioning = 16;

// ODBC values of the enumerations, indexed by ordinal; -1 means "leave the connection as it is".
// The values are the driver manager's SQL_DRIVER_*, SQL_AUTOCOMMIT_*, SQL_TXN_* and SQL_CUR_*
// codes, checked against its headers in the library.
inline constexpr std::array<std::int32_t, 4> ODBCDriverConnectOption{0, 1, 2, 3};
inline constexpr std::array<std::int32_t, 3> ODBCAutoCommitOption{-1, 0, 1};
inline constexpr std::array<std::int32_t, 6> ODBCIsolationLevel{-1, 1, 2, 4, 8, kSqlTxnVersioning};
inline constexpr std::array<std::int32_t, 3> ODBCSQLCursorOption{0, 1, 2};

// One ODBC connection: opened from a data source name with user and password (csConnect) or from a
// driver connection string (csDriverConnect), with the cursor-library, isolation and autocommit
// options, transactions, catalog queries and the list of datasets attached to it.
//
// With the default acoNoAutoCommit the connection runs in autocommit mode outside
// StartTransaction ... Commit/Rollback and in manual-commit mode inside.
class QUORDA_API TODBCDatabase : public TComponent {
public:
    explicit TODBCDatabase(TComponent* AOwner);
    // Closes (errors are swallowed: destructors never throw), detaches the datasets, releases the
    // handle and leaves the session.
    ~TODBCDatabase() override;

    std::string ClassName() const override { return "TODBCDatabase"; }

    // --- published properties ---
    const std::string& DatabaseName() const { return FDatabaseName; }
    // Raises EODBCDatabaseError "Database open" while connected (even for the same name), and
    // "ODBC Database with name %s allready exists" for a name another database carries.
    void SetDatabaseName(const std::string& Value);
    const std::string& DSNName() const { return FDSNName; }
    void SetDSNName(const std::string& Value) { FDSNName = Value; }
    // After a successful driver connection: the completed connection string.
    const std::string& ConnectStr() const { return FConnectStr; }
    void SetConnectStr(const std::string& Value) { FConnectStr = Value; }
    TIsolationLevel IsolationLevel() const { return FIsolationLevel; }
    // On an open connection a level other than ilDontCare is applied at once.
    void SetIsolationLevel(TIsolationLevel Value);
    TSQLCursorOption SQLCursorOption() const { return FSQLCursorOption; }
    // Refused while connected, even for the current value.
    void SetSQLCursorOption(TSQLCursorOption Value);
    TDriverConnectOption DriverConnectOption() const { return FDriverConnectOption; }
    // Refused while connected, even for the current value.
    void SetDriverConnectOption(TDriverConnectOption Value);
    TAutoCommitOption AutoCommitOption() const { return FAutoCommitOption; }
    // Takes effect at the next StartTransaction, Commit or Rollback.
    void SetAutoCommitOption(TAutoCommitOption Value) { FAutoCommitOption = Value; }
    TConnectStyle ConnectStyle() const { return FConnectStyle; }
    void SetConnectStyle(TConnectStyle Value) { FConnectStyle = Value; }
    const std::string& Password() const { return FPassword; }
    void SetPassword(const std::string& Value) { FPassword = Value; }
    const std::string& UserID() const { return FUserID; }
    void SetUserID(const std::string& Value) { FUserID = Value; }
    // Parameters whose data is larger than this many bytes are sent at execution time.
    std::int32_t ParamAtExecSize() const { return FParamAtExecSize; }
    void SetParamAtExecSize(std::int32_t Value) { FParamAtExecSize = Value; }
    bool StringTrimRight() const { return FStringTrimRight; }
    void SetStringTrimRight(bool Value) { FStringTrimRight = Value; }
    bool IgnoreOriginInfo() const { return FIgnoreOriginInfo; }
    void SetIgnoreOriginInfo(bool Value) { FIgnoreOriginInfo = Value; }
    // Seconds to wait for a login (SQL_LOGIN_TIMEOUT) and for any other request on the connection
    // (SQL_ATTR_CONNECTION_TIMEOUT); 0 waits without limit. Applied at the next Open.
    std::int32_t LoginTimeout() const { return FLoginTimeout; }
    void SetLoginTimeout(std::int32_t Value) { FLoginTimeout = Value; }
    std::int32_t ConnectionTimeout() const { return FConnectionTimeout; }
    void SetConnectionTimeout(std::int32_t Value) { FConnectionTimeout = Value; }
    TNotifyEvent OnBeforeConnect;
    TNotifyEvent OnAfterConnect;
    bool Connected() const { return FConnected; }
    bool GetConnected() const { return FConnected; }
    // Opens for true, closes for false, when the value differs from the current state. While the
    // database is being read from a stream the value waits for Loaded.
    void SetConnected(bool Value);
    void Loaded() override;

    // --- public ---
    bool InTransaction() const { return FInTransaction; }
    bool GetInTransaction() const { return FInTransaction; }
    // The connection handle, allocated on first need.
    SQLHDBC GetDBC();

    virtual void Open();
    virtual void Close();

    void StartTransaction();
    void Commit();
    void Rollback();

    // Attached datasets (not owned). A dataset joins and leaves when its ODBCDatabase changes.
    void AddDataSet(IODBCDatabaseClient* DataSet);
    void RemoveDataSet(IODBCDatabaseClient* DataSet);
    virtual int GetDatasetCount() const;
    virtual TODBCDataSet* GetDataset(int Index) const;
    int DatasetCount() const { return GetDatasetCount(); }
    TODBCDataSet* Datasets(int Index) const { return GetDataset(Index); }
    // The attached client at Index, whether or not it is a dataset.
    IODBCDatabaseClient* DatasetClient(int Index) const;
    // Closes every attached dataset, last first, releasing a statement it still holds.
    virtual void CloseDatasets();
    // Detaches every attached dataset, last first.
    virtual void FreeDatasets();

    // Catalog: tables with owner, type and remarks (lists aligned by index; any may be null) and the
    // column names of one table. Each runs on a statement of its own.
    void GetTables(TStrings* TableNames, TStrings* Owners, TStrings* TableTypes, TStrings* Remarks);
    void GetColumns(const std::string& TableName, TStrings* ColumnNames);

protected:
    void ValidateName(const std::string& Name);
    // Leaves the session's list (a second call does nothing). A descendant whose overrides other
    // threads may call through the list leaves first thing in its destructor.
    void LeaveSession();

    // A flag and a reference for descendants (the connection pool marks and links its members);
    // the database itself never reads them.
    bool FReservedFlag = false;
    void* FReservedRef = nullptr;

private:
    bool FStreamedConnected = false;

    void SetConnectOption(SQLUSMALLINT Option, std::int32_t Value, const char* Call);
    void EndTransaction(SQLUSMALLINT Type, const char* Call);
    bool DriverConnect(SQLHDBC Handle);
    bool DataSourceConnect(SQLHDBC Handle);
    // Refuses inputs the driver manager would misread: NUL bytes, an empty DRIVER= or DSN=.
    void CheckConnectInputs() const;

    TODBCSession* FSession;
    std::string FDatabaseName;
    std::vector<IODBCDatabaseClient*> FDataSets;
    TODBCConnectionHandle FHandle;
    bool FConnected = false;
    std::string FConnectStr;
    TConnectStyle FConnectStyle = csDriverConnect;
    TDriverConnectOption FDriverConnectOption = dcoDriverComplete;
    TAutoCommitOption FAutoCommitOption = acoNoAutoCommit;
    TIsolationLevel FIsolationLevel = ilDontCare;
    TSQLCursorOption FSQLCursorOption = curUseIfNeeded;
    std::string FDSNName;
    std::string FPassword;
    std::string FUserID;
    std::int32_t FParamAtExecSize = 8192;
    bool FStringTrimRight = false;
    bool FIgnoreOriginInfo = false;
    bool FInTransaction = false;
    std::int32_t FLoginTimeout = 0;
    std::int32_t FConnectionTimeout = 0;
};

} // namespace quorda
