// TODBCMultiQuery: a dataset that attaches itself to a pooled connection and holds its lock around
// every cursor operation.

#include "quorda/multidb/odbc_multi_query.h"

#include "quorda/core/session.h"
#include "quorda/multidb/multi_databases.h"
#include "quorda/multidb/multi_odbc_database.h"

namespace quorda {

multidb_detail::TSectionExit::~TSectionExit() {
    if (FEntered != nullptr) {
        FEntered->Leave();
    }
}

TODBCMultiQuery::~TODBCMultiQuery() {
    if (FMultiDataBase != nullptr) {
        // Entered directly: freeing a query is not a use of the connection to count. Left by the
        // TSectionExit base, after the dataset's own destructor has run.
        FEntered = &FMultiDataBase->CriticalSection();
        FEntered->Enter();
    }
    try {
        SetMultiODBCDataBase(nullptr);
    } catch (...) {
        // Destructors never throw; the dataset's destructor releases what is left.
    }
    CloseForDestroy();
}

// ---- the connection

void TODBCMultiQuery::UpdateMultiLink() {
    FMultiDataBase = dynamic_cast<TMultiODBCDataBase*>(ODBCDatabase());
}

TMultiODBCDataBase* TODBCMultiQuery::FindDB() {
    if (FMultiDataBase != nullptr) {
        return FMultiDataBase;
    }
    // Chosen and attached while no connection can leave the session.
    return ODBCSession()->WithDatabases([this](const std::vector<TODBCDatabase*>& List) {
        TMultiODBCDataBase* found = TMultiDataBases::FindDataBase(List);
        if (found != nullptr) {
            SetMultiODBCDataBase(found);
        }
        return found;
    });
}

void TODBCMultiQuery::SetMultiODBCDataBase(TMultiODBCDataBase* Value) {
    SetODBCDatabase(Value);
}

void TODBCMultiQuery::SetODBCDatabase(TODBCDatabase* Value) {
    if (Value == ODBCDatabase()) {
        return;
    }
    // Each connection's list of datasets changes only under that connection's lock, which other
    // threads hold while they count or walk it.
    if (ODBCDatabase() != nullptr) {
        TMultiLockGuard guard(FMultiDataBase);
        TODBCDataSet::SetODBCDatabase(nullptr);
        UpdateMultiLink();
    }
    if (Value != nullptr) {
        TMultiLockGuard guard(dynamic_cast<TMultiODBCDataBase*>(Value));
        TODBCDataSet::SetODBCDatabase(Value);
        UpdateMultiLink();
    }
}

void TODBCMultiQuery::Notification(TComponent* AComponent, TOperation Operation) {
    TODBCDataSet::Notification(AComponent, Operation);
    UpdateMultiLink();
}

// ---- operations under the lock of the attached connection (found first when none is)

bool TODBCMultiQuery::RetCodeIsSuccessful(SQLRETURN RetCode) {
    TMultiLockGuard guard(FindDB());
    return TODBCDataSet::RetCodeIsSuccessful(RetCode);
}

void TODBCMultiQuery::InternalOpen() {
    TMultiLockGuard guard(FindDB());
    TODBCDataSet::InternalOpen();
}

void TODBCMultiQuery::InternalClose() {
    TMultiLockGuard guard(FindDB());
    TODBCDataSet::InternalClose();
}

void TODBCMultiQuery::InternalFirst() {
    TMultiLockGuard guard(FindDB());
    TODBCDataSet::InternalFirst();
}

void TODBCMultiQuery::InternalLast() {
    TMultiLockGuard guard(FindDB());
    TODBCDataSet::InternalLast();
}

void TODBCMultiQuery::InternalFreeStmt(SQLUSMALLINT Option) {
    TMultiLockGuard guard(FindDB());
    TODBCDataSet::InternalFreeStmt(Option);
}

void TODBCMultiQuery::InternalExecSQL() {
    TMultiLockGuard guard(FindDB());
    TODBCDataSet::InternalExecSQL();
}

void TODBCMultiQuery::PrepareSQL(const std::string& Text) {
    TMultiLockGuard guard(FindDB());
    TODBCDataSet::PrepareSQL(Text);
}

int TODBCMultiQuery::GetRecordCount() {
    TMultiLockGuard guard(FindDB());
    return TODBCDataSet::GetRecordCount();
}

int TODBCMultiQuery::GetRecordCountExt() {
    TMultiLockGuard guard(FindDB());
    return TODBCDataSet::GetRecordCountExt();
}

TGetResult TODBCMultiQuery::GetRecord(TRecordBuffer Buffer, TGetMode GetMode, bool DoCheck) {
    TMultiLockGuard guard(FindDB());
    return TODBCDataSet::GetRecord(Buffer, GetMode, DoCheck);
}

// Repositioning, refresh and blob reads call the driver too: they take the lock as well.

void TODBCMultiQuery::InternalGotoBookmark(const void* ABookmark) {
    TMultiLockGuard guard(FindDB());
    TODBCDataSet::InternalGotoBookmark(ABookmark);
}

void TODBCMultiQuery::InternalSetToRecord(TRecordBuffer Buffer) {
    TMultiLockGuard guard(FindDB());
    TODBCDataSet::InternalSetToRecord(Buffer);
}

void TODBCMultiQuery::InternalRefresh() {
    TMultiLockGuard guard(FindDB());
    TODBCDataSet::InternalRefresh();
}

std::unique_ptr<TStream> TODBCMultiQuery::CreateBlobStream(TField* Field, TBlobStreamMode Mode) {
    TMultiLockGuard guard(FindDB());
    return TODBCDataSet::CreateBlobStream(Field, Mode);
}

// ---- operations under the lock of a connection already attached

void TODBCMultiQuery::OpenCursor(bool InfoQuery) {
    // Nothing attached yet would leave nothing to lock: attach first.
    TMultiLockGuard guard(FindDB());
    TODBCDataSet::OpenCursor(InfoQuery);
}

void TODBCMultiQuery::QueryChanged(TObject* Sender) {
    TMultiLockGuard guard(FMultiDataBase);
    TODBCDataSet::QueryChanged(Sender);
}

void TODBCMultiQuery::InternalInitFieldDefs() {
    TMultiLockGuard guard(FMultiDataBase);
    TODBCDataSet::InternalInitFieldDefs();
}

} // namespace quorda
