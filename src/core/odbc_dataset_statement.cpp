// TODBCDataSet, statement side: the handle, preparation, execution (with data sent at execution
// time), cursor names, the row count and releasing the statement.

#include "odbc_dataset_p.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/core/session.h"
#include "quorda/odbc/odbc_check.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/messages.h"

#include <algorithm>
#include <array>

namespace quorda {

// ---- call checking

bool TODBCDataSet::RetCodeIsSuccessful(SQLRETURN RetCode) {
    return quorda::RetCodeIsSuccessful(RetCode);
}

SQLRETURN TODBCDataSet::CheckReturnedCode(SQLRETURN Ret, std::string_view Call) {
    TraceODBC(Ret, Call);
    if (!RetCodeIsSuccessful(Ret)) {
        RefuseMissingStatement(Ret);
        throw CreateODBCError(odbcEnv(), GetDBC(), FEngine->Stmt.Get());
    }
    return Ret;
}

SQLRETURN TODBCDataSet::CheckStmtCall(SQLRETURN Ret, std::string_view Call) {
    TraceODBC(Ret, Call);
    if (!RetCodeIsSuccessful(Ret)) {
        RefuseMissingStatement(Ret);
        throw CreateODBCError(nullptr, nullptr, FEngine->Stmt.Get());
    }
    return Ret;
}

void TODBCDataSet::RefuseMissingStatement(SQLRETURN Ret) const {
    // A call on a statement that does not exist leaves no diagnostics: say what is missing instead of
    // raising an error without a message.
    if (Ret == SQL_INVALID_HANDLE && !FEngine->Stmt) {
        DatabaseError(LoadStr(SODBCNoStatement));
    }
}

// ---- the database side

SQLHDBC TODBCDataSet::GetDBC() const {
    return FODBCDatabase != nullptr ? FODBCDatabase->GetDBC() : nullptr;
}

void TODBCDataSet::CheckDBOpenError() const {
    if (FODBCDatabase == nullptr || !FODBCDatabase->Connected() || GetDBC() == nullptr) {
        DatabaseError(LoadStr(SODBCDataBaseNotOpen));
    }
}

// ---- the handle

void TODBCDataSet::CreateHandle() {
    if (FEngine->Stmt) {
        return;
    }
    CheckDBOpenError();
    SQLHSTMT handle = SQL_NULL_HSTMT;
    CheckCall(SQLAllocStmt(GetDBC(), &handle), "SQLAllocStmt");
    ResetStmtHandle(handle);
    try {
        if (!FUniDirectional) {
            CheckCall(SQLSetStmtOption(FEngine->Stmt.Get(), SQL_CURSOR_TYPE, SQL_CURSOR_KEYSET_DRIVEN),
                      "SQLSetStmtOption(SQL_CURSOR_TYPE)");
        }
        if (FQueryTimeout > 0) {
            CheckCall(
                SQLSetStmtOption(FEngine->Stmt.Get(), SQL_QUERY_TIMEOUT, static_cast<SQLULEN>(FQueryTimeout)),
                "SQLSetStmtOption(SQL_QUERY_TIMEOUT)");
        }
        if (FBlockCursor && FUniDirectional) {
            CheckCall(
                SQLSetStmtOption(FEngine->Stmt.Get(), SQL_ROWSET_SIZE, static_cast<SQLULEN>(FRowSetSize)),
                "SQLSetStmtOption(SQL_ROWSET_SIZE)");
            // The driver may grant fewer rows per block than asked.
            SQLULEN granted = 0;
            CheckCall(SQLGetStmtOption(FEngine->Stmt.Get(), SQL_ROWSET_SIZE, &granted),
                      "SQLGetStmtOption(SQL_ROWSET_SIZE)");
            FRowSetSize = static_cast<std::int32_t>(granted);
            FEngine->RowStatus.assign(static_cast<std::size_t>(FRowSetSize), 0);
        }
        FForwardOnlyCursor = FUniDirectional;
    } catch (...) {
        // Without its options the handle is not the one asked for: the next attempt starts afresh.
        ResetStmtHandle(SQL_NULL_HSTMT);
        throw;
    }
}

void TODBCDataSet::ResetStmtHandle(SQLHSTMT Handle) {
    const std::lock_guard guard(FEngine->StmtLock);
    FEngine->Stmt.Reset(Handle);
}

SQLRETURN TODBCDataSet::FreeStmtHandle() {
    const std::lock_guard guard(FEngine->StmtLock);
    return FEngine->Stmt.Free();
}

void TODBCDataSet::InternalFreeStmt(SQLUSMALLINT Option) {
    if (Option == SQL_DROP) {
        // A dropped handle must not stay in the wrapper; Free keeps it only when the driver refuses.
        CheckCall(FreeStmtHandle(), "SQLFreeStmt(SQL_DROP)");
        return;
    }
    CheckCall(SQLFreeStmt(FEngine->Stmt.Get(), Option), "SQLFreeStmt");
}

void TODBCDataSet::DropStatement() {
    // Reset and unbind may fail on a statement in a bad state; dropping it settles everything.
    TraceODBC(SQLFreeStmt(FEngine->Stmt.Get(), SQL_RESET_PARAMS), "SQLFreeStmt(SQL_RESET_PARAMS)");
    TraceODBC(SQLFreeStmt(FEngine->Stmt.Get(), SQL_UNBIND), "SQLFreeStmt(SQL_UNBIND)");
    CheckCall(FreeStmtHandle(), "SQLFreeStmt(SQL_DROP)");
    // Nothing is bound any more, and the next statement may belong to another connection.
    FParamValues.clear();
    FEngine->Quirks.reset();
}

void TODBCDataSet::InternalClose() {
    UnPrepare();
    BindFields(false);
    if (DefaultFields()) {
        DestroyFields();
    }
    if (FEngine->Stmt) {
        DropStatement();
    }
}

void TODBCDataSet::Disconnect() {
    Close();
    // Prepared or executed without opening: the statement is still held.
    if (FEngine->Stmt) {
        InternalClose();
    }
}

// ---- preparation

void TODBCDataSet::SetPrepared(bool Value) {
    if (Value == FPrepared) {
        return;
    }
    if (Value) {
        CheckDBOpenError();
        CreateHandle();
        if (FRealSQL.size() < 2) {
            DatabaseError(LoadStr(SODBCEmptySQLStatement));
        }
        PrepareSQL(FRealSQL);
    } else if (FEngine->Stmt) {
        InternalFreeStmt(SQL_RESET_PARAMS);
        // Nothing is bound any more.
        FParamValues.clear();
    }
    FPrepared = Value;
}

void TODBCDataSet::PrepareSQL(const std::string& Text) {
    std::string text = Text;
    CheckCall(SQLPrepare(FEngine->Stmt.Get(), reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS),
              "SQLPrepare");
}

// ---- cursor names

std::string TODBCDataSet::GetCursorName() {
    std::array<SQLCHAR, 256> name{};
    SQLSMALLINT length = 0;
    CheckCall(
        SQLGetCursorName(FEngine->Stmt.Get(), name.data(), static_cast<SQLSMALLINT>(name.size()), &length),
        "SQLGetCursorName");
    name.back() = 0;
    return std::string(reinterpret_cast<const char*>(name.data()));
}

void TODBCDataSet::SetCursorName(const std::string& Name) {
    std::string name = Name;
    CheckCall(SQLSetCursorName(FEngine->Stmt.Get(), reinterpret_cast<SQLCHAR*>(name.data()), SQL_NTS),
              "SQLSetCursorName");
}

// ---- execution

void TODBCDataSet::ResetRowCounters() {
    FRecordCountCache = -1;
    FCurrentRow = kRowNotNumbered;
    FRowNumbered = false;
}

void TODBCDataSet::ExecSQL() {
    ResetRowCounters();
    InternalExecSQL();
    SetState(dsBrowse);
}

void TODBCDataSet::InternalExecSQL() {
    // Drivers answer an empty statement with unrelated errors (SQLite: "out of memory").
    if (FRealSQL.find_first_not_of(" \t\r\n") == std::string::npos) {
        DatabaseError(LoadStr(SODBCEmptySQLStatement));
    }
    CheckParamCount();
    CreateHandle();
    // The designer always prepares (so that it can describe the statement); at run time only a
    // statement with parameters needs it.
    const bool needsPrepare = IsDesigning() || GetParamsCount() > 0;
    if (needsPrepare && !FPrepared) {
        Prepare();
    }
    if (FPrepared) {
        BindAllParam();
        if (CheckCall(SQLExecute(FEngine->Stmt.Get()), "SQLExecute") == SQL_NEED_DATA) {
            SendDataAtExecution();
        }
    } else {
        std::string text = FRealSQL;
        CheckCall(SQLExecDirect(FEngine->Stmt.Get(), reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS),
                  "SQLExecDirect");
    }
    FRowsetIndex = -1;
    FRowsFetched = 0;
}

void TODBCDataSet::SendDataAtExecution() {
    try {
        SQLRETURN ret = SQL_NEED_DATA;
        while (ret == SQL_NEED_DATA) {
            SQLPOINTER token = nullptr;
            ret = CheckStmtCall(SQLParamData(FEngine->Stmt.Get(), &token), "SQLParamData");
            if (ret != SQL_NEED_DATA) {
                break;
            }
            // The token is the address of an item's parameter index; it is only compared, never
            // followed, so a token the dataset did not hand out cannot lead to foreign memory.
            auto found = std::find_if(FParamValues.begin(), FParamValues.end(),
                                      [token](const auto& item) { return &item->ParamIndex == token; });
            if (found == FParamValues.end()) {
                DatabaseErrorFmt(LoadStr(SODBCInternalComponentError), 817);
            }
            const TParamValueItem& item = **found;
            auto* data = const_cast<std::byte*>(item.Data.data());
            const SQLLEN total = static_cast<SQLLEN>(item.Data.size());
            if (item.CType != SQL_C_CHAR && item.CType != SQL_C_BINARY) {
                // Values of fixed size cannot be sent in pieces: the driver reads the whole value.
                if (SQLRETURN put = TraceODBC(SQLPutData(FEngine->Stmt.Get(), data, total), "SQLPutData");
                    put != SQL_SUCCESS) {
                    throw CreateODBCError(nullptr, nullptr, FEngine->Stmt.Get());
                }
                continue;
            }
            // Text never sends its terminating zero: the piece that reaches the end is one shorter.
            const bool text = item.CType == SQL_C_CHAR;
            const SQLLEN chunk = FBlobBufferSize;
            for (SQLLEN offset = 0; offset < total; offset += chunk) {
                SQLLEN length = std::min(chunk, total - offset);
                if (text && offset + length >= total) {
                    --length;
                }
                if (length <= 0) {
                    continue;
                }
                // Unlike every other call, a warning here fails the execution as well.
                if (SQLRETURN put =
                        TraceODBC(SQLPutData(FEngine->Stmt.Get(), data + offset, length), "SQLPutData");
                    put != SQL_SUCCESS) {
                    throw CreateODBCError(nullptr, nullptr, FEngine->Stmt.Get());
                }
            }
        }
    } catch (...) {
        // Leave the statement ready for the next execution instead of stuck waiting for data.
        TraceODBC(SQLCancel(FEngine->Stmt.Get()), "SQLCancel");
        throw;
    }
}

void TODBCDataSet::CancelStatement() {
    const std::lock_guard guard(FEngine->StmtLock);
    if (!FEngine->Stmt) {
        return;
    }
    // Only the statement's own diagnostics: the connection is in use by the thread that runs it.
    if (!quorda::RetCodeIsSuccessful(TraceODBC(SQLCancel(FEngine->Stmt.Get()), "SQLCancel"))) {
        throw CreateODBCError(nullptr, nullptr, FEngine->Stmt.Get());
    }
}

int TODBCDataSet::GetRowsAffected() {
    SQLLEN count = 0;
    if (!RetCodeIsSuccessful(TraceODBC(SQLRowCount(FEngine->Stmt.Get(), &count), "SQLRowCount"))) {
        return -1;
    }
    return static_cast<int>(count);
}

} // namespace quorda
