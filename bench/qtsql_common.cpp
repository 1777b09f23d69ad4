#include "qtsql_common.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QSqlError>
#include <QVariant>
#include <stdexcept>

namespace quorda::bench {

namespace {

// QtSql loads its driver plugins only with an application object in place. It is never destroyed:
// at process exit Qt's own globals may already be gone.
void EnsureApplication() {
    static int argc = 1;
    static char name[] = "quorda_bench";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = QCoreApplication::instance() ? nullptr : new QCoreApplication(argc, argv);
    (void)app;
}

} // namespace

TQtConnection::TQtConnection(const std::string& ConnectString) : FName(QStringLiteral("quorda_bench")) {
    EnsureApplication();
    FDatabase = QSqlDatabase::addDatabase(QStringLiteral("QODBC"), FName);
    FDatabase.setDatabaseName(QString::fromStdString(ConnectString));
    if (!FDatabase.open())
        throw std::runtime_error("QODBC open failed: " + FDatabase.lastError().text().toStdString());
}

TQtConnection::~TQtConnection() {
    FDatabase.close();
    FDatabase = QSqlDatabase();
    QSqlDatabase::removeDatabase(FName);
}

void TQtConnection::Exec(const QString& Sql) {
    QSqlQuery query(FDatabase);
    if (!query.exec(Sql))
        ThrowQueryError(query, "exec");
}

void ThrowQueryError(const QSqlQuery& Query, const char* What) {
    throw std::runtime_error(std::string("QtSql ") + What +
                             " failed: " + Query.lastError().text().toStdString());
}

void FoldQtRow(const QSqlQuery& Query, TChecksum& Sum) {
    const QByteArray name = Query.value(3).toString().toUtf8();
    const QDateTime created = Query.value(4).toDateTime();
    const QDate date = created.date();
    const QTime time = created.time();
    Sum.AddRow(
        {Query.value(0).toLongLong(),
         Query.value(1).toLongLong(),
         Query.value(2).toDouble(),
         std::string_view(name.constData(), static_cast<std::size_t>(name.size())),
         {date.year(), date.month(), date.day(), time.hour(), time.minute(), time.second(), time.msec()}});
}

} // namespace quorda::bench
