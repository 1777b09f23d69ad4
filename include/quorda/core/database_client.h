#pragma once

#include "quorda/export.h"

namespace quorda {

class TODBCDataSet;

// What a TODBCDatabase needs of a dataset attached to it. TODBCDataSet implements it; the database
// keeps its attached datasets through this seam, so the connection does not depend on the dataset
// engine (and tests can attach simple fakes).
//
// Contract: a client joins a database with AddDataSet and leaves with RemoveDataSet; Detach must
// leave the database's list (SetODBCDatabase(nullptr) does exactly that).
class QUORDA_API IODBCDatabaseClient {
public:
    virtual ~IODBCDatabaseClient() = default;

    // The dataset behind the client; null for clients that are not datasets.
    virtual TODBCDataSet* ClientDataSet() = 0;
    // Closes the dataset the way the application would (the framework Close).
    virtual void CloseForDatabase() = 0;
    // True while the dataset still holds a statement handle.
    virtual bool HoldsStatement() const = 0;
    // Releases the statement (the dataset's InternalClose).
    virtual void ReleaseStatement() = 0;
    // Drops the link to the database (SetODBCDatabase(nullptr)), which removes it from the list.
    virtual void DetachFromDatabase() = 0;
};

} // namespace quorda
