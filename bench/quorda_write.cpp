// insert through one TODBCQuery with five :name parameters, executed per row in one transaction;
// params: SQL text assignment with 20 markers, which rebuilds the parameter collection each time.

#include "data_setup.h"
#include "params_text.h"
#include "quorda_common.h"
#include "raw_odbc.h"
#include "row_generator.h"
#include "workload.h"

#include <quorda/core/odbc_params.h>
#include <quorda/rtl/datetime.h>
#include <quorda/rtl/strings.h>
#include <quorda/rtl/variant.h>
#include <vector>

namespace quorda::bench {

namespace {

constexpr const char* kTarget = "bench_ins_quorda";

class TQuordaInsert : public TBenchRun {
public:
    explicit TQuordaInsert(const TBenchContext& Context)
        : FConnection(Context.ScrollConnect), FCheck(Context.ScrollConnect),
          FRows(GenerateRows(Context.Rows)),
          FQuery(FConnection.NewQuery("insert into bench_ins_quorda (id, qty, price, name, created) "
                                      "values (:id, :qty, :price, :name, :created)")) {
        // Parameter objects stay valid until the text changes, so they are looked up once.
        for (std::size_t i = 0; i < FParams.size(); ++i)
            FParams[i] = FQuery->ParamByName(kParamNames[i]);
    }

    void Prepare() override { RecreateTable(FCheck, kTarget); }

    std::int64_t Execute() override {
        FConnection.Database().StartTransaction();
        for (const TBenchRow& row : FRows) {
            const TBenchTimestamp& t = row.Created;
            FParams[0]->SetAsInteger(static_cast<std::int32_t>(row.Id));
            FParams[1]->SetAsInteger(static_cast<std::int32_t>(row.Qty));
            FParams[2]->SetAsFloat(row.Price);
            FParams[3]->SetAsString(row.Name);
            FParams[4]->SetAsDateTime(
                EncodeDateTime(t.Year, t.Month, t.Day, t.Hour, t.Minute, t.Second, t.Millisecond));
            FQuery->ExecSQL();
        }
        FConnection.Database().Commit();
        // A prepared statement may hold the table; the next Prepare drops it.
        FQuery->UnPrepare();
        return static_cast<std::int64_t>(FRows.size());
    }

    std::uint64_t Checksum() override {
        const auto count = static_cast<std::int64_t>(FRows.size());
        return ScanChecksum(FCheck, BenchSelect(count, count, kTarget));
    }

private:
    static constexpr std::array<const char*, 5> kParamNames{"id", "qty", "price", "name", "created"};

    TQuordaConnection FConnection;
    TRawConnection FCheck; // table setup and read-back, independent of the library
    std::vector<TBenchRow> FRows;
    std::unique_ptr<TODBCQuery> FQuery;
    std::array<TODBCParam*, 5> FParams{};
};

// The same rows through ExecSQLBatch: the rows of values are built in the timed part, as an
// application holding its own records would build them.
class TQuordaBatchInsert : public TBenchRun {
public:
    explicit TQuordaBatchInsert(const TBenchContext& Context)
        : FConnection(Context.ScrollConnect), FCheck(Context.ScrollConnect),
          FRows(GenerateRows(Context.Rows)),
          FQuery(FConnection.NewQuery("insert into bench_bat_quorda (id, qty, price, name, created) "
                                      "values (:id, :qty, :price, :name, :created)")) {}

    void Prepare() override { RecreateTable(FCheck, kBatchTarget); }

    std::int64_t Execute() override {
        std::vector<std::vector<Variant>> rows;
        rows.reserve(FRows.size());
        for (const TBenchRow& row : FRows) {
            const TBenchTimestamp& t = row.Created;
            rows.push_back({static_cast<std::int32_t>(row.Id), static_cast<std::int32_t>(row.Qty), row.Price,
                            row.Name,
                            Variant::FromDateTime(EncodeDateTime(t.Year, t.Month, t.Day, t.Hour, t.Minute,
                                                                 t.Second, t.Millisecond))});
        }
        FConnection.Database().StartTransaction();
        FQuery->ExecSQLBatch(rows);
        FConnection.Database().Commit();
        FQuery->UnPrepare();
        return static_cast<std::int64_t>(FRows.size());
    }

    std::uint64_t Checksum() override {
        const auto count = static_cast<std::int64_t>(FRows.size());
        return ScanChecksum(FCheck, BenchSelect(count, count, kBatchTarget));
    }

private:
    static constexpr const char* kBatchTarget = "bench_bat_quorda";

    TQuordaConnection FConnection;
    TRawConnection FCheck;
    std::vector<TBenchRow> FRows;
    std::unique_ptr<TODBCQuery> FQuery;
};

class TQuordaParams : public TBenchRun {
public:
    explicit TQuordaParams(const TBenchContext& Context)
        : FIterations(Context.Rows), FTexts{std::string(kParamsSql[0]), std::string(kParamsSql[1])},
          FQuery(std::make_unique<TODBCQuery>(nullptr)) {
        // Values to carry over by name at every rebuild.
        FQuery->SQL().SetText(FTexts[1]);
        for (int i = 0; i < FQuery->Params().Count(); ++i)
            FQuery->Params()[i]->SetAsInteger(i);
    }

    std::int64_t Execute() override {
        for (std::int64_t i = 0; i < FIterations; ++i)
            FQuery->SQL().SetText(FTexts[static_cast<std::size_t>(i % 2)]);
        return FIterations;
    }

    std::uint64_t Checksum() override {
        std::vector<std::string> names;
        for (int i = 0; i < FQuery->Params().Count(); ++i)
            names.push_back(FQuery->Params()[i]->Name());
        return FoldParamNames(names);
    }

private:
    std::int64_t FIterations;
    std::array<std::string, 2> FTexts;
    std::unique_ptr<TODBCQuery> FQuery;
};

const TRegisterRun prepared("insert", "quorda", "prepared", [](const TBenchContext& Context) {
    return std::make_unique<TQuordaInsert>(Context);
});
const TRegisterRun batch("insert", "quorda", "array", [](const TBenchContext& Context) {
    return std::make_unique<TQuordaBatchInsert>(Context);
});
const TRegisterRun markers("params", "quorda", "markers", [](const TBenchContext& Context) {
    return std::make_unique<TQuordaParams>(Context);
});

} // namespace

} // namespace quorda::bench
