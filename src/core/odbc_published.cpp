// What the database and the query publish to designers and component streams, in their classic
// order, and how a streamed Connected waits for the whole set to be read.
#include "quorda/core/odbc_published.h"

#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_query.h"

namespace quorda {

const TPropertyList& ODBCDatabaseProperties() {
    using D = TODBCDatabase;
    static const TPropertyList list =
        TPublished<D>(&ComponentProperties())
            .Property("DatabaseName", &D::DatabaseName, &D::SetDatabaseName)
            .Property("DSNName", &D::DSNName, &D::SetDSNName)
            .Property("ConnectStr", &D::ConnectStr, &D::SetConnectStr)
            .Enum("IsolationLevel", &D::IsolationLevel, &D::SetIsolationLevel,
                  {"ilDontCare", "ilDirtyRead", "ilCommitedRead", "ilRepeatableRead", "ilSerializable",
                   "ilVersioning"})
            .Enum("SQLCursorOption", &D::SQLCursorOption, &D::SetSQLCursorOption,
                  {"curUseIfNeeded", "curUsesODBC", "curUseDriver"})
            .Enum("DriverConnectOption", &D::DriverConnectOption, &D::SetDriverConnectOption,
                  {"dcoDriverNoPrompt", "dcoDriverComplete", "dcoDriverPrompt", "dcoDriverCompleteRequired"})
            .Enum("AutoCommitOption", &D::AutoCommitOption, &D::SetAutoCommitOption,
                  {"acoDontCare", "acoNoAutoCommit", "acoAutoCommit"})
            .Enum("ConnectStyle", &D::ConnectStyle, &D::SetConnectStyle, {"csDriverConnect", "csConnect"})
            .Property("Password", &D::Password, &D::SetPassword)
            .Property("UserID", &D::UserID, &D::SetUserID)
            .Property("ParamAtExecSize", &D::ParamAtExecSize, &D::SetParamAtExecSize)
            .Property("StringTrimRight", &D::StringTrimRight, &D::SetStringTrimRight)
            .Property("IgnoreOriginInfo", &D::IgnoreOriginInfo, &D::SetIgnoreOriginInfo)
            .Event("OnBeforeConnect")
            .Event("OnAfterConnect")
            .Property("Connected", &D::GetConnected, &D::SetConnected, false)
            .Build();
    return list;
}

const TPropertyList& ODBCQueryProperties() {
    // Declared on the dataset, so that every query class of the library can publish the same list.
    using Q = TODBCDataSet;
    static const TPropertyList list =
        TPublished<Q>(&ComponentProperties())
            .Property("Active", &Q::Active, &Q::SetActive, false)
            .Property("ODBCDatabase", &Q::ODBCDatabase, &Q::SetODBCDatabase)
            .Property("BlobBufferSize", &Q::BlobBufferSize, &Q::SetBlobBufferSize, 8192)
            .Property("MaxBlobBuffer", &Q::MaxBlobBuffer, &Q::SetMaxBlobBuffer, 100000)
            .Property("UniDirectional", &Q::UniDirectional, &Q::SetUniDirectional, false)
            .Property("BlockCursor", &Q::BlockCursor, &Q::SetBlockCursor, false)
            .Property("RowSetSize", &Q::RowSetSize, &Q::SetRowSetSize, 100)
            .Object("Params", [](Q& Query) -> TODBCParams& { return Query.Params(); })
            .Event("BeforeOpen")
            .Event("AfterOpen")
            .Event("BeforeClose")
            .Event("AfterClose")
            .Event("OnCalcFields")
            .Property("Filtered", &Q::Filtered, &Q::SetFiltered, false)
            .Event("OnFilterRecord")
            .Object("SQL", &Q::SQL)
            .Build();
    return list;
}

void RegisterODBCClasses() {
    RegisterClass<TODBCDatabase>("TODBCDatabase", ODBCDatabaseProperties());
    RegisterClass<TODBCQuery>("TODBCQuery", ODBCQueryProperties());
}

namespace {

const bool kRegistered = [] {
    RegisterODBCClasses();
    return true;
}();

} // namespace

// Defined here so that every program with a database links (and runs) the registration above.
void TODBCDatabase::Loaded() {
    TComponent::Loaded();
    if (FStreamedConnected) {
        FStreamedConnected = false;
        SetConnected(true);
    }
}

} // namespace quorda
