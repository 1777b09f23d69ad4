#pragma once

#include "quorda/core/odbc_database.h"
#include "quorda/rtl/critical_section.h"

#include <cstdint>

namespace quorda {

namespace multidb_detail {
// Holds the connection's critical section. As a base listed before the database it exists before
// the database is constructed and after it is destroyed.
struct TSectionHolder {
    TCriticalSection FSection;
};
} // namespace multidb_detail

// A pooled connection: a TODBCDatabase whose dataset list and open/close are serialised by a
// critical section of its own, which TODBCMultiQuery also takes around each of its cursor operations.
class QUORDA_API TMultiODBCDataBase : private multidb_detail::TSectionHolder, public TODBCDatabase {
public:
    explicit TMultiODBCDataBase(TComponent* AOwner);
    ~TMultiODBCDataBase() override;

    std::string ClassName() const override { return "TMultiODBCDataBase"; }

    // Enters the critical section (re-entrant for the holding thread) and counts the call.
    void Lock();
    void UnLock();
    // How many times Lock was called since creation; never decreases (it is not the number of
    // current holders).
    std::int32_t GetCounter();
    // The section itself, for a holder that must not count (a query being destroyed).
    TCriticalSection& CriticalSection() { return FSection; }

    int GetDatasetCount() const override;
    TODBCDataSet* GetDataset(int Index) const override;
    void CloseDatasets() override;
    void FreeDatasets() override;
    void Open() override;
    void Close() override;

private:
    std::int32_t FCounter = 0;
    bool FLocked = false;
};

// Lock ... UnLock of a pooled connection for a scope, released also when the scope is left by an
// exception; a null connection is not locked.
class QUORDA_API TMultiLockGuard {
public:
    explicit TMultiLockGuard(TMultiODBCDataBase* DataBase) : FDataBase(DataBase) {
        if (FDataBase != nullptr) {
            FDataBase->Lock();
        }
    }
    ~TMultiLockGuard() {
        if (FDataBase != nullptr) {
            FDataBase->UnLock();
        }
    }
    TMultiLockGuard(const TMultiLockGuard&) = delete;
    TMultiLockGuard& operator=(const TMultiLockGuard&) = delete;

private:
    TMultiODBCDataBase* FDataBase;
};

} // namespace quorda
