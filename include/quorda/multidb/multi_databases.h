#pragma once

#include "quorda/core/odbc_database.h"
#include "quorda/rtl/critical_section.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quorda {

class TMultiODBCDataBase;

using TOnDBNotifyEvent = std::function<void(TMultiODBCDataBase* DataBase)>;

// A pool of connections made from one template of connection settings. The pool's own lock is taken
// only by Lock/UnLock: callers that grow the pool from several threads hold it around FindDataBase.
class QUORDA_API TMultiDataBases {
public:
    TMultiDataBases() = default;
    // Frees every connection (ClearDataBase).
    ~TMultiDataBases();
    TMultiDataBases(const TMultiDataBases&) = delete;
    TMultiDataBases& operator=(const TMultiDataBases&) = delete;

    void Lock() { FSection.Enter(); }
    void UnLock() { FSection.Leave(); }

    // A new connection (not opened) with the template's settings, appended to the pool.
    TMultiODBCDataBase* AddDataBase();
    // The connection to use: the first idle one, or else a new opened one while the pool holds fewer
    // than MaxDataBases, or else the least busy (the earlier on equal counts); null for an empty pool
    // that may not grow.
    TMultiODBCDataBase* FindDataBase();
    // The same choice among the pooled connections of any list of databases (others are passed
    // over), without growing anything: the first idle one, else the least busy, else null.
    static TMultiODBCDataBase* FindDataBase(const std::vector<TODBCDatabase*>& List);
    // Frees every connection, last first, calling the on-remove event with each.
    void ClearDataBase();
    // Closes every connection, last first, and frees those no dataset uses any more.
    void CloseDataBase();

    bool Connected() const { return FConnected; }
    // True: makes sure StartDataBases connections exist and opens them all; false: CloseDataBase.
    void SetConnected(bool Value);
    void Open() { SetConnected(true); }
    void Close() { SetConnected(false); }

    int Count() const { return static_cast<int>(FItems.size()); }
    // Raises "List index (%d) out of bounds" outside the pool.
    TMultiODBCDataBase* DataBases(int Index) const;

    // --- limits
    std::int32_t MaxDataBases() const { return FMaxDataBases; }
    void SetMaxDataBases(std::int32_t Value) { FMaxDataBases = Value; }
    std::int32_t StartDataBases() const { return FStartDataBases; }
    void SetStartDataBases(std::int32_t Value) { FStartDataBases = Value; }

    // --- the template every new connection copies
    const std::string& DSNName() const { return FDSNName; }
    void SetDSNName(const std::string& Value) { FDSNName = Value; }
    const std::string& ConnectStr() const { return FConnectStr; }
    void SetConnectStr(const std::string& Value) { FConnectStr = Value; }
    const std::string& UserID() const { return FUserID; }
    void SetUserID(const std::string& Value) { FUserID = Value; }
    const std::string& Password() const { return FPassword; }
    void SetPassword(const std::string& Value) { FPassword = Value; }
    TIsolationLevel IsolationLevel() const { return FIsolationLevel; }
    void SetIsolationLevel(TIsolationLevel Value) { FIsolationLevel = Value; }
    TSQLCursorOption SQLCursorOption() const { return FSQLCursorOption; }
    void SetSQLCursorOption(TSQLCursorOption Value) { FSQLCursorOption = Value; }
    TDriverConnectOption DriverConnectOption() const { return FDriverConnectOption; }
    void SetDriverConnectOption(TDriverConnectOption Value) { FDriverConnectOption = Value; }
    TAutoCommitOption AutoCommitOption() const { return FAutoCommitOption; }
    void SetAutoCommitOption(TAutoCommitOption Value) { FAutoCommitOption = Value; }
    TConnectStyle ConnectStyle() const { return FConnectStyle; }
    void SetConnectStyle(TConnectStyle Value) { FConnectStyle = Value; }
    std::int32_t ParamAtExecSize() const { return FParamAtExecSize; }
    void SetParamAtExecSize(std::int32_t Value) { FParamAtExecSize = Value; }
    bool StringTrimRight() const { return FStringTrimRight; }
    void SetStringTrimRight(bool Value) { FStringTrimRight = Value; }
    bool IgnoreOriginInfo() const { return FIgnoreOriginInfo; }
    void SetIgnoreOriginInfo(bool Value) { FIgnoreOriginInfo = Value; }

    // Called with each new connection, and with a connection before it is freed.
    TOnDBNotifyEvent OnAddDataBase;
    TOnDBNotifyEvent OnRemoveDataBase;

private:
    TCriticalSection FSection;
    std::vector<TMultiODBCDataBase*> FItems;
    bool FConnected = false;
    std::int32_t FMaxDataBases = 1;
    std::int32_t FStartDataBases = 1;
    std::string FDSNName;
    std::string FConnectStr;
    std::string FUserID;
    std::string FPassword;
    TIsolationLevel FIsolationLevel = ilDontCare;
    TSQLCursorOption FSQLCursorOption = curUseIfNeeded;
    TDriverConnectOption FDriverConnectOption = dcoDriverComplete;
    TAutoCommitOption FAutoCommitOption = acoDontCare;
    TConnectStyle FConnectStyle = csConnect;
    std::int32_t FParamAtExecSize = 8192;
    bool FStringTrimRight = false;
    bool FIgnoreOriginInfo = false;
};

} // namespace quorda
