// TMultiODBCDataBase: a pooled connection whose dataset list and open/close run under its lock.

#include "quorda/multidb/multi_odbc_database.h"

#include "pooled_registry_p.h"

#include <mutex>
#include <unordered_set>

namespace quorda {

namespace multidb_detail {
namespace {
std::mutex gReadyLock;
std::unordered_set<const TODBCDatabase*> gReady;
thread_local int gDeferReady = 0;
} // namespace

TDeferPooledReady::TDeferPooledReady() {
    ++gDeferReady;
}

TDeferPooledReady::~TDeferPooledReady() {
    --gDeferReady;
}

void MarkPooledReady(TMultiODBCDataBase* DataBase, bool Ready) {
    const TODBCDatabase* key = DataBase;
    std::lock_guard<std::mutex> guard(gReadyLock);
    if (Ready) {
        gReady.insert(key);
    } else {
        gReady.erase(key);
    }
}

TMultiODBCDataBase* ReadyPooled(TODBCDatabase* Database) {
    std::lock_guard<std::mutex> guard(gReadyLock);
    // Only whole pooled connections are in the set, so the cast needs no look at the object.
    return gReady.count(Database) != 0 ? static_cast<TMultiODBCDataBase*>(Database) : nullptr;
}
} // namespace multidb_detail

TMultiODBCDataBase::TMultiODBCDataBase(TComponent* AOwner) : TODBCDatabase(AOwner) {
    if (multidb_detail::gDeferReady == 0) {
        multidb_detail::MarkPooledReady(this, true);
    }
}

TMultiODBCDataBase::~TMultiODBCDataBase() {
    multidb_detail::MarkPooledReady(this, false);
    // Out of the session first: a thread choosing a connection holds the session's lock while it
    // looks at one, so leaving waits until no thread does.
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
