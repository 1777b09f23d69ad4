// scan and scroll through QtSql's QSqlQuery over QODBC.

#include "qtsql_common.h"
#include "raw_odbc.h"
#include "row_generator.h"
#include "workload.h"

#include <stdexcept>

namespace quorda::bench {

namespace {

QString Select(std::int64_t Rows, std::int64_t TableRows) {
    return QString::fromStdString(BenchSelect(Rows, TableRows));
}

// Forward-only, every value read through value(i).
class TQtScan : public TBenchRun {
public:
    explicit TQtScan(const TBenchContext& Context)
        : FConnection(Context.StreamConnect), FSql(Select(Context.Rows, Context.TableRows)) {}

    std::int64_t Execute() override {
        QSqlQuery query(FConnection.Database());
        query.setForwardOnly(true);
        if (!query.exec(FSql))
            ThrowQueryError(query, "exec");
        TChecksum sum;
        std::int64_t count = 0;
        while (query.next()) {
            FoldQtRow(query, sum);
            ++count;
        }
        FChecksum = sum.Value();
        return count;
    }

    std::uint64_t Checksum() override { return FChecksum; }

private:
    TQtConnection FConnection;
    QString FSql;
    std::uint64_t FChecksum = 0;
};

// Scrollable query: forward, back to the start, then seek() to the jump targets.
class TQtScroll : public TBenchRun {
public:
    explicit TQtScroll(const TBenchContext& Context)
        : FContext(Context), FConnection(Context.ScrollConnect),
          FSql(Select(Context.TableRows, Context.TableRows)),
          FTargets(ScrollJumpTargets(Context.Rows, Context.Jumps)) {}

    std::int64_t Execute() override {
        QSqlQuery query(FConnection.Database());
        if (!query.exec(FSql))
            ThrowQueryError(query, "exec");
        TChecksum sum;
        std::int64_t visited = 0;
        for (std::int64_t i = 0; i < FContext.Rows && query.next(); ++i, ++visited)
            FoldQtRow(query, sum);
        for (std::int64_t i = 1; i < visited && query.previous(); ++i)
            FoldQtRow(query, sum);
        std::int64_t handled = visited * 2 - 1;
        for (std::int64_t target : FTargets) {
            if (!query.seek(static_cast<int>(target - 1)))
                throw std::runtime_error("QtSql seek to row " + std::to_string(target) + " failed");
            FoldQtRow(query, sum);
            ++handled;
        }
        FChecksum = sum.Value();
        return handled;
    }

    std::uint64_t Checksum() override { return FChecksum; }

private:
    TBenchContext FContext;
    TQtConnection FConnection;
    QString FSql;
    std::vector<std::int64_t> FTargets;
    std::uint64_t FChecksum = 0;
};

template <class T>
std::unique_ptr<TBenchRun> Make(const TBenchContext& Context) {
    return std::make_unique<T>(Context);
}

const TRegisterRun scan("scan", "qtsql", "forward", Make<TQtScan>);
const TRegisterRun scroll("scroll", "qtsql", "scrollable", Make<TQtScroll>);

} // namespace

} // namespace quorda::bench
