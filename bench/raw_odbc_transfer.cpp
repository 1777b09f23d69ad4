// export and import, raw ODBC yardsticks. export: the forward-only block scan of the same rows
// (every value fetched and folded, nothing written). import: per row the existence count and the
// insert, both prepared once, in one transaction.

#include "data_setup.h"
#include "raw_odbc.h"
#include "row_generator.h"
#include "transfer_files.h"
#include "workload.h"

namespace quorda::bench {

namespace {

class TRawExportScan : public TBenchRun {
public:
    explicit TRawExportScan(const TBenchContext& Context)
        : FConnection(Context.StreamConnect), FSql(BenchSelect(Context.Rows, Context.TableRows)) {}

    std::int64_t Execute() override {
        // The block scan of the read workloads: every value fetched and folded, nothing written.
        std::int64_t count = 0;
        FFull = ScanChecksum(FConnection, FSql, &count);
        FCount = count;
        return count;
    }

    // An export is checked by the ids it wrote; a scan of the same rows stands for them.
    std::uint64_t Checksum() override { return ExpectedIdChecksum(FCount); }

private:
    TRawConnection FConnection;
    std::string FSql;
    std::uint64_t FFull = 0;
    std::int64_t FCount = 0;
};

constexpr const char* kImportTarget = "bench_imp_raw";

class TRawImport : public TBenchRun {
public:
    explicit TRawImport(const TBenchContext& Context)
        : FConnection(Context.ScrollConnect), FRows(Context.Rows) {}

    void Prepare() override { RecreateTable(FConnection, kImportTarget); }

    std::int64_t Execute() override {
        FConnection.SetAutoCommit(false);
        TRawStatement insert(FConnection);
        insert.Prepare(BenchInsert(kImportTarget));
        TParamRows params(1);
        params.Bind(insert);
        TRawStatement count(FConnection);
        count.Prepare(std::string("select count(*) from ") + kImportTarget + " where id = ?");
        SQLINTEGER key = 0;
        SQLLEN keyInd = 0;
        count.Check(SQLBindParameter(count.Handle(), 1, SQL_PARAM_INPUT, SQL_C_SLONG, SQL_INTEGER, 10, 0,
                                     &key, 0, &keyInd),
                    "SQLBindParameter(key)");
        SQLINTEGER found = 0;
        SQLLEN foundInd = 0;
        count.Check(SQLBindCol(count.Handle(), 1, SQL_C_SLONG, &found, 0, &foundInd), "SQLBindCol");
        TBenchRow row;
        for (std::int64_t id = 1; id <= FRows; ++id) {
            MakeBenchRow(id, row);
            key = static_cast<SQLINTEGER>(id);
            count.Check(SQLExecute(count.Handle()), "SQLExecute(count)");
            count.Check(SQLFetch(count.Handle()), "SQLFetch(count)");
            count.Check(SQLFreeStmt(count.Handle(), SQL_CLOSE), "SQLFreeStmt(count)");
            if (found != 0)
                continue;
            params.Set(0, row);
            insert.Check(SQLExecute(insert.Handle()), "SQLExecute(insert)");
        }
        FConnection.Commit();
        FConnection.SetAutoCommit(true);
        return FRows;
    }

    std::uint64_t Checksum() override {
        return ScanChecksum(FConnection, BenchSelect(FRows, FRows, kImportTarget));
    }

private:
    TRawConnection FConnection;
    std::int64_t FRows;
};

const TRegisterRun exportScan("export", "raw", "block", [](const TBenchContext& Context) {
    return std::make_unique<TRawExportScan>(Context);
});
const TRegisterRun import("import", "raw", "check",
                          [](const TBenchContext& Context) { return std::make_unique<TRawImport>(Context); });

} // namespace

} // namespace quorda::bench
