// insert through QtSql: prepare once with named placeholders, bind and exec per row, one transaction.

#include "data_setup.h"
#include "qtsql_common.h"
#include "raw_odbc.h"
#include "row_generator.h"
#include "workload.h"

#include <QDateTime>
#include <QVariant>

namespace quorda::bench {

namespace {

constexpr const char* kTarget = "bench_ins_qtsql";

class TQtInsert : public TBenchRun {
public:
    explicit TQtInsert(const TBenchContext& Context)
        : FConnection(Context.ScrollConnect), FCheck(Context.ScrollConnect),
          FRows(GenerateRows(Context.Rows)) {}

    void Prepare() override { RecreateTable(FCheck, kTarget); }

    std::int64_t Execute() override {
        QSqlDatabase& db = FConnection.Database();
        if (!db.transaction())
            throw std::runtime_error("QtSql transaction() failed");
        QSqlQuery query(db);
        if (!query.prepare(QStringLiteral("insert into bench_ins_qtsql (id, qty, price, name, created) "
                                          "values (:id, :qty, :price, :name, :created)")))
            ThrowQueryError(query, "prepare");
        for (const TBenchRow& row : FRows) {
            const TBenchTimestamp& t = row.Created;
            query.bindValue(QStringLiteral(":id"), static_cast<int>(row.Id));
            query.bindValue(QStringLiteral(":qty"), static_cast<int>(row.Qty));
            query.bindValue(QStringLiteral(":price"), row.Price);
            query.bindValue(QStringLiteral(":name"),
                            QString::fromLatin1(row.Name.data(), static_cast<int>(row.Name.size())));
            query.bindValue(
                QStringLiteral(":created"),
                QDateTime(QDate(t.Year, t.Month, t.Day), QTime(t.Hour, t.Minute, t.Second, t.Millisecond)));
            if (!query.exec())
                ThrowQueryError(query, "exec");
        }
        if (!db.commit())
            throw std::runtime_error("QtSql commit() failed");
        return static_cast<std::int64_t>(FRows.size());
    }

    std::uint64_t Checksum() override {
        const auto count = static_cast<std::int64_t>(FRows.size());
        return ScanChecksum(FCheck, BenchSelect(count, count, kTarget));
    }

private:
    TQtConnection FConnection;
    TRawConnection FCheck; // table setup and read-back, independent of QtSql
    std::vector<TBenchRow> FRows;
};

const TRegisterRun prepared("insert", "qtsql", "prepared", [](const TBenchContext& Context) {
    return std::make_unique<TQtInsert>(Context);
});

} // namespace

} // namespace quorda::bench
