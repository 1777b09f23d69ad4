// TODBCDataSet: construction and destruction, the cursor settings and the link to its database.

#include "quorda/core/odbc_dataset.h"

#include "odbc_dataset_p.h"
#include "quorda/core/odbc_database.h"
#include "quorda/odbc/odbc_check.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/messages.h"
#include "quorda/rtl/strings.h"

namespace quorda {

TODBCDataSet::TODBCDataSet(TComponent* AOwner)
    : TDataSet(AOwner), FCurrentRow(kRowNotNumbered), FEngine(std::make_unique<TODBCDataSetEngine>()),
      FSQL(std::make_unique<TStringList>()), FParams(std::make_unique<TODBCParams>()) {
    FEngine->RowStatus.assign(static_cast<std::size_t>(FRowSetSize), 0);
    SetBookmarkSize(sizeof(TODBCBookmark));
    FSQL->OnChange = [this](TObject* Sender) { QueryChanged(Sender); };
}

SQLHSTMT TODBCDataSet::StatementHandle() const {
    return FEngine->Stmt.Get();
}

bool TODBCDataSet::HoldsStatement() const {
    return static_cast<bool>(FEngine->Stmt);
}

bool TODBCDataSet::IsCursorOpen() {
    return static_cast<bool>(FEngine->Stmt);
}

TODBCDataSet::~TODBCDataSet() {
    // The framework part closes first, while the overrides of this class are still in place.
    CloseForDestroy();
    FSQL->OnChange = nullptr;
    if (FEngine->Stmt) {
        TraceODBC(SQLFreeStmt(FEngine->Stmt.Get(), SQL_RESET_PARAMS), "SQLFreeStmt(SQL_RESET_PARAMS)");
        TraceODBC(SQLFreeStmt(FEngine->Stmt.Get(), SQL_UNBIND), "SQLFreeStmt(SQL_UNBIND)");
        ResetStmtHandle(SQL_NULL_HSTMT);
    }
    // No binding refers to the value items any more.
    FParamValues.clear();
    FFieldValues.clear();
    if (FODBCDatabase != nullptr) {
        FODBCDatabase->RemoveDataSet(this);
        RemoveFreeNotification(FODBCDatabase);
        FODBCDatabase = nullptr;
    }
}

// ---- the database link

void TODBCDataSet::SetODBCDatabase(TODBCDatabase* Value) {
    if (Value == FODBCDatabase) {
        return;
    }
    // An open dataset closes the framework way first: releasing only the statement would leave
    // fields and record buffers of a cursor that no longer exists.
    if (Active()) {
        Close();
    }
    if (FEngine->Stmt) {
        InternalClose();
    }
    if (FODBCDatabase != nullptr) {
        FODBCDatabase->RemoveDataSet(this);
        RemoveFreeNotification(FODBCDatabase);
    }
    FODBCDatabase = Value;
    if (FODBCDatabase != nullptr) {
        FODBCDatabase->AddDataSet(this);
        FreeNotification(FODBCDatabase);
    }
}

void TODBCDataSet::Notification(TComponent* AComponent, TOperation Operation) {
    TDataSet::Notification(AComponent, Operation);
    if (Operation != opRemove || FODBCDatabase == nullptr || AComponent != FODBCDatabase) {
        return;
    }
    if (AComponent->ComponentState().Contains(csDestroying)) {
        // Only the component part of the database is left: nothing of it may be called. Its
        // connection (and with it the statement) is gone, so the handle is given up, not freed.
        FEngine->Stmt.Detach();
        FODBCDatabase = nullptr;
        return;
    }
    SetODBCDatabase(nullptr);
}

// ---- what the database asks of an attached dataset

void TODBCDataSet::CloseForDatabase() {
    Close();
}

void TODBCDataSet::ReleaseStatement() {
    InternalClose();
}

void TODBCDataSet::DetachFromDatabase() {
    SetODBCDatabase(nullptr);
}

// ---- settings

void TODBCDataSet::SetBlobBufferSize(std::int32_t Value) {
    if (Value > 0 && Value < 8193) {
        FBlobBufferSize = Value;
        return;
    }
    DatabaseErrorFmt(LoadStr(SODBCMaxStringSize), Value);
}

void TODBCDataSet::SetMaxBlobBuffer(std::int32_t Value) {
    if (Value < 1) {
        DatabaseErrorFmt(LoadStr(SODBCMaxBlobBuffer), Value);
    }
    FMaxBlobBuffer = Value;
}

void TODBCDataSet::SetUniDirectional(bool Value) {
    if (Value == FUniDirectional) {
        return;
    }
    FUniDirectional = Value;
    if (FEngine->Stmt) {
        CheckCall(SQLSetStmtOption(FEngine->Stmt.Get(), SQL_CURSOR_TYPE,
                                   Value ? SQL_CURSOR_FORWARD_ONLY : SQL_CURSOR_KEYSET_DRIVEN),
                  "SQLSetStmtOption(SQL_CURSOR_TYPE)");
    }
    // Reached only when the statement took the type (or there is none yet).
    FForwardOnlyCursor = Value;
}

void TODBCDataSet::SetBlockCursor(bool Value) {
    if (Value == FBlockCursor) {
        return;
    }
    if (Active()) {
        DatabaseError(LoadStr(SODBCDataSetOpen));
    }
    FBlockCursor = Value;
}

void TODBCDataSet::SetRowSetSize(std::int32_t Value) {
    if (Value != FRowSetSize && Active()) {
        DatabaseError(LoadStr(SODBCDataSetOpen));
    }
    if (Value >= 0) {
        FRowSetSize = Value;
    }
    FEngine->RowStatus.assign(static_cast<std::size_t>(FRowSetSize), 0);
}

} // namespace quorda
