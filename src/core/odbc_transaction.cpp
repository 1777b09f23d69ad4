#include "quorda/core/odbc_transaction.h"

#include "quorda/core/odbc_database.h"
#include "quorda/rtl/application.h"

#include <exception>

namespace quorda {

TODBCTransaction::TODBCTransaction(TODBCDatabase& Database) : FDatabase(Database) {
    FDatabase.StartTransaction();
}

TODBCTransaction::~TODBCTransaction() {
    if (!FPending || !FDatabase.InTransaction()) {
        return; // committed, rolled back, or ended by closing the connection
    }
    try {
        FDatabase.Rollback();
    } catch (const std::exception& e) {
        try {
            Application::HandleException(e);
        } catch (...) { // a handler that throws is ignored: destructors never throw
        }
    } catch (...) {
    }
}

void TODBCTransaction::Commit() {
    FDatabase.Commit();
    FPending = false;
}

void TODBCTransaction::Rollback() {
    FDatabase.Rollback();
    FPending = false;
}

} // namespace quorda
