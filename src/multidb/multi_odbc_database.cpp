// TMultiODBCDataBase: a pooled connection whose dataset list and open/close run under its lock.

#include "quorda/multidb/multi_odbc_database.h"

namespace quorda {

TMultiODBCDataBase::TMultiODBCDataBase(TComponent* AOwner) : TODBCDatabase(AOwner) {}

TMultiODBCDataBase::~TMultiODBCDataBase() {
    // Out of the session first: a thread choosing a connection must not find one being freed.
    LeaveSession();
    // Closed and emptied while this class's locked operations are still in place; what fails here
    // is settled by the database's own destructor.
    TCriticalSectionGuard guard(FSection);
    try {
        Close();
    } catch (...) {
    }
    try {
        FreeDatasets();
    } catch (...) {
    }
}

void TMultiODBCDataBase::Lock() {
    FSection.Enter();
    FLocked = true;
    ++FCounter;
}

void TMultiODBCDataBase::UnLock() {
    FLocked = false;
    FSection.Leave();
}

std::int32_t TMultiODBCDataBase::GetCounter() {
    TCriticalSectionGuard guard(FSection);
    return FCounter;
}

int TMultiODBCDataBase::GetDatasetCount() const {
    auto* self = const_cast<TMultiODBCDataBase*>(this);
    TMultiLockGuard guard(self);
    return TODBCDatabase::GetDatasetCount();
}

TODBCDataSet* TMultiODBCDataBase::GetDataset(int Index) const {
    auto* self = const_cast<TMultiODBCDataBase*>(this);
    TMultiLockGuard guard(self);
    return TODBCDatabase::GetDataset(Index);
}

void TMultiODBCDataBase::CloseDatasets() {
    TMultiLockGuard guard(this);
    TODBCDatabase::CloseDatasets();
}

void TMultiODBCDataBase::FreeDatasets() {
    TMultiLockGuard guard(this);
    TODBCDatabase::FreeDatasets();
}

void TMultiODBCDataBase::Open() {
    TMultiLockGuard guard(this);
    TODBCDatabase::Open();
}

void TMultiODBCDataBase::Close() {
    TMultiLockGuard guard(this);
    TODBCDatabase::Close();
}

} // namespace quorda
