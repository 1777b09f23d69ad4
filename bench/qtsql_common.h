#pragma once

// QtSql side: a QODBC connection opened with the same driver connection string as the other
// implementations.

#include "checksum.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <string>

namespace quorda::bench {

class TQtConnection {
public:
    explicit TQtConnection(const std::string& ConnectString);
    ~TQtConnection();
    TQtConnection(const TQtConnection&) = delete;
    TQtConnection& operator=(const TQtConnection&) = delete;

    QSqlDatabase& Database() { return FDatabase; }

    // Runs Sql; throws with QtSql's error text on failure.
    void Exec(const QString& Sql);

private:
    QString FName;
    QSqlDatabase FDatabase;
};

// Throws std::runtime_error with the query's error text.
[[noreturn]] void ThrowQueryError(const QSqlQuery& Query, const char* What);

// Reads the current row of a query over the bench columns, converting each value to the fold's types.
void FoldQtRow(const QSqlQuery& Query, TChecksum& Sum);

} // namespace quorda::bench
