#pragma once

#include "quorda/export.h"

namespace quorda {

class TODBCDatabase;

// A transaction for the lifetime of a scope: the constructor calls StartTransaction, Commit commits,
// and the destructor rolls back what was neither committed nor rolled back. The destructor never
// throws: a failing rollback goes to Application::HandleException (the connection stays in the
// transaction, and closing it rolls back again).
//
//     TODBCTransaction transaction(db);
//     insert.ExecSQL();
//     transaction.Commit();
class QUORDA_API TODBCTransaction {
public:
    explicit TODBCTransaction(TODBCDatabase& Database);
    ~TODBCTransaction();
    TODBCTransaction(const TODBCTransaction&) = delete;
    TODBCTransaction& operator=(const TODBCTransaction&) = delete;

    void Commit();
    void Rollback();
    // Neither committed nor rolled back yet.
    bool Pending() const { return FPending; }

private:
    TODBCDatabase& FDatabase;
    bool FPending = true;
};

} // namespace quorda
