// export: ExportDataSet of a forward-only block cursor (RowSetSize 100) over the read workload's
// rows; import: ImportDataSet of a file of the generated rows with the existence check
// ("where id = :id", itIgnoreExists) into an empty table.

#include "data_setup.h"
#include "quorda_common.h"
#include "raw_odbc.h"
#include "transfer_files.h"
#include "workload.h"

#include <cstdio>
#include <quorda/tools/query_helpers.h>
#include <quorda/tools/text_transfer.h>

namespace quorda::bench {

namespace {

class TQuordaExport : public TBenchRun {
public:
    explicit TQuordaExport(const TBenchContext& Context)
        : FConnection(Context.StreamConnect), FPath(TransferFilePath("export")),
          FQuery(FConnection.NewQuery(BenchSelect(Context.Rows, Context.TableRows))) {
        FQuery->SetUniDirectional(true);
        FQuery->SetBlockCursor(true);
        FQuery->SetRowSetSize(100);
    }
    ~TQuordaExport() override { std::remove(FPath.c_str()); }

    std::int64_t Execute() override {
        FQuery->Open();
        std::int64_t rows = 0;
        ExportDataSet(FQuery.get(), FPath, [&rows](std::int64_t Done) { rows = Done; });
        FQuery->Close();
        return rows;
    }

    // Read back untimed: the ids the file holds, in order.
    std::uint64_t Checksum() override { return FoldExportedIds(FPath); }

private:
    TQuordaConnection FConnection;
    std::string FPath;
    std::unique_ptr<TODBCQuery> FQuery;
};

constexpr const char* kImportTarget = "bench_imp_quorda";

class TQuordaImport : public TBenchRun {
public:
    explicit TQuordaImport(const TBenchContext& Context)
        : FConnection(Context.ScrollConnect), FCheck(Context.ScrollConnect), FRows(Context.Rows),
          FPath(TransferFilePath("import")) {
        WriteImportFile(FPath, FRows);
    }
    ~TQuordaImport() override {
        DataBase = nullptr;
        std::remove(FPath.c_str());
    }

    void Prepare() override { RecreateTable(FCheck, kImportTarget); }

    std::int64_t Execute() override {
        DataBase = &FConnection.Database();
        ImportDataSet(FPath, kImportTarget, "where id = :id", itIgnoreExists);
        return FRows;
    }

    std::uint64_t Checksum() override {
        return ScanChecksum(FCheck, BenchSelect(FRows, FRows, kImportTarget));
    }

private:
    TQuordaConnection FConnection;
    TRawConnection FCheck;
    std::int64_t FRows;
    std::string FPath;
};

const TRegisterRun exportRun("export", "quorda", "block", [](const TBenchContext& Context) {
    return std::make_unique<TQuordaExport>(Context);
});
const TRegisterRun importRun("import", "quorda", "check", [](const TBenchContext& Context) {
    return std::make_unique<TQuordaImport>(Context);
});

} // namespace

} // namespace quorda::bench
