#pragma once

// Quorda side: a TODBCDatabase opened with the same driver connection string as the other
// implementations, and the row fold over a query's fields.

#include "checksum.h"

#include <array>
#include <memory>
#include <quorda/core/odbc_database.h>
#include <quorda/core/odbc_query.h>
#include <string>

namespace quorda::bench {

class TQuordaConnection {
public:
    explicit TQuordaConnection(const std::string& ConnectString);
    ~TQuordaConnection();
    TQuordaConnection(const TQuordaConnection&) = delete;
    TQuordaConnection& operator=(const TQuordaConnection&) = delete;

    TODBCDatabase& Database() { return *FDatabase; }

    // A query on this connection with Sql as its text; freed before the connection.
    std::unique_ptr<TODBCQuery> NewQuery(const std::string& Sql);

private:
    std::unique_ptr<TODBCDatabase> FDatabase;
};

// The five bench columns of an open query, looked up once per open as an application would.
class TBenchFields {
public:
    explicit TBenchFields(TDataSet& DataSet);
    // Reads every value of the current record through the fields' typed accessors.
    void Fold(TChecksum& Sum) const;

    // The same through the reads that copy nothing: text as a view into the record buffer, numbers
    // and the time stamp straight from their slots.
    void FoldViews(TChecksum& Sum) const;

private:
    std::array<TField*, 5> FFields{};
};

} // namespace quorda::bench
