// insert, raw ODBC: one prepared statement with bound parameters executed per row inside one
// transaction; and, as the outer limit, the same with parameter arrays.

#include "data_setup.h"
#include "raw_odbc.h"
#include "row_generator.h"
#include "workload.h"

namespace quorda::bench {

namespace {

// Each implementation writes its own table, so that the children measured side by side never meet
// each other's tables; the two raw modes are never measured side by side.
constexpr const char* kTarget = "bench_ins_raw";
constexpr std::size_t kArraySize = 1000;

class TRawInsert : public TBenchRun {
public:
    TRawInsert(const TBenchContext& Context, std::size_t ArraySize)
        : FConnection(Context.ScrollConnect), FRows(GenerateRows(Context.Rows)), FArraySize(ArraySize) {}

    void Prepare() override { RecreateTable(FConnection, kTarget); }

    std::int64_t Execute() override {
        FConnection.SetAutoCommit(false);
        TRawStatement stmt(FConnection);
        stmt.Prepare(BenchInsert(kTarget));
        TParamRows params(FArraySize);
        params.Bind(stmt);
        SQLULEN processed = 0;
        for (std::size_t first = 0; first < FRows.size(); first += FArraySize) {
            const std::size_t batch = std::min(FArraySize, FRows.size() - first);
            for (std::size_t i = 0; i < batch; ++i)
                params.Set(i, FRows[first + i]);
            if (FArraySize > 1)
                stmt.Check(SQLParamOptions(stmt.Handle(), batch, &processed), "SQLParamOptions");
            stmt.Check(SQLExecute(stmt.Handle()), "SQLExecute");
        }
        FConnection.Commit();
        FConnection.SetAutoCommit(true);
        return static_cast<std::int64_t>(FRows.size());
    }

    std::uint64_t Checksum() override {
        const auto count = static_cast<std::int64_t>(FRows.size());
        return ScanChecksum(FConnection, BenchSelect(count, count, kTarget));
    }

private:
    TRawConnection FConnection;
    std::vector<TBenchRow> FRows;
    std::size_t FArraySize;
};

const TRegisterRun prepared("insert", "raw", "prepared", [](const TBenchContext& Context) {
    return std::make_unique<TRawInsert>(Context, 1);
});
const TRegisterRun array("insert", "raw", "array", [](const TBenchContext& Context) {
    return std::make_unique<TRawInsert>(Context, kArraySize);
});

} // namespace

} // namespace quorda::bench
