// edit through TODBCExtQuery: every row edited and posted, OnUpdateRec running a prepared UPDATE;
// the time splits into the handler's UPDATE, the refresh after each post and the library's own
// editing path, printed to the log after each run.
// scan through TODBCMultiQuery on a pool of one connection, forward-only, to set beside TODBCQuery.

#include "edit_common.h"
#include "quorda_common.h"
#include "row_generator.h"
#include "workload.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <quorda/ext/odbc_ext_dataset.h>
#include <quorda/multidb.h>

namespace quorda::bench {

namespace {

constexpr const char* kTable = "bench_edit_quorda";

using TClock = std::chrono::steady_clock;

class TQuordaEdit : public TBenchRun {
public:
    explicit TQuordaEdit(const TBenchContext& Context)
        : FRows(std::min(Context.Rows, kEditMaxRows)), FConnection(Context.ScrollConnect),
          FCheck(Context.ScrollConnect),
          FUpdate(FConnection.NewQuery(std::string("update ") + kTable + " set qty = :qty where id = :id")) {
        FQuery.SetODBCDatabase(&FConnection.Database());
        FQuery.SQL().SetText(std::string("select id, qty from ") + kTable + " order by id");
        FQty = FUpdate->ParamByName("qty");
        FId = FUpdate->ParamByName("id");
        FQuery.OnUpdateRec = [this](TDataSet* DataSet, TUpdateKind, TUpdateAction&) {
            const auto start = TClock::now();
            FQty->SetAsInteger(FQtyField->AsInteger());
            FId->SetAsInteger(FIdField->AsInteger());
            FUpdate->ExecSQL();
            FHandler += TClock::now() - start;
        };
        FQuery.BeforeRefresh = [this](TDataSet*) { FRefreshStart = TClock::now(); };
        FQuery.AfterRefresh = [this](TDataSet*) { FRefresh += TClock::now() - FRefreshStart; };
    }
    ~TQuordaEdit() override { FQuery.Close(); }

    void Prepare() override {
        FQuery.Close();
        FUpdate->UnPrepare();
        ResetEditTable(FCheck, kTable, FRows);
        FUpdate->Prepare();
        FHandler = FRefresh = TClock::duration::zero();
    }

    std::int64_t Execute() override {
        const auto start = TClock::now();
        FQuery.Open();
        FIdField = FQuery.FieldByName("id");
        FQtyField = FQuery.FieldByName("qty");
        std::int64_t edited = 0;
        for (; edited < FRows && !FQuery.Eof(); ++edited) {
            FQuery.Edit();
            FQtyField->SetAsInteger(FQtyField->AsInteger() + 1);
            FQuery.Post();
            FQuery.Next();
        }
        FQuery.Close();
        const double total = std::chrono::duration<double>(TClock::now() - start).count();
        const double handler = std::chrono::duration<double>(FHandler).count();
        const double refresh = std::chrono::duration<double>(FRefresh).count();
        std::fprintf(stderr,
                     "edit split: total %.3f s, handler UPDATE %.3f s (%.0f %%), refresh %.3f s (%.0f %%), "
                     "editing path %.3f s (%.0f %%)\n",
                     total, handler, 100 * handler / total, refresh, 100 * refresh / total,
                     total - handler - refresh, 100 * (total - handler - refresh) / total);
        return edited;
    }

    std::uint64_t Checksum() override { return EditTableChecksum(FCheck, kTable); }

private:
    std::int64_t FRows;
    TQuordaConnection FConnection;
    TRawConnection FCheck;
    std::unique_ptr<TODBCQuery> FUpdate;
    TODBCExtQuery FQuery{nullptr};
    TODBCParam* FQty = nullptr;
    TODBCParam* FId = nullptr;
    TField* FIdField = nullptr;
    TField* FQtyField = nullptr;
    TClock::duration FHandler{};
    TClock::duration FRefresh{};
    TClock::time_point FRefreshStart{};
};

class TMultiScan : public TBenchRun {
public:
    explicit TMultiScan(const TBenchContext& Context) {
        FPool.SetConnectStyle(csDriverConnect);
        FPool.SetDriverConnectOption(dcoDriverNoPrompt);
        FPool.SetConnectStr(Context.StreamConnect);
        FPool.Open();
        FQuery.SetMultiODBCDataBase(FPool.DataBases(0));
        FQuery.SetUniDirectional(true);
        FQuery.SQL().SetText(BenchSelect(Context.Rows, Context.TableRows));
    }
    ~TMultiScan() override { FQuery.SetMultiODBCDataBase(nullptr); }

    std::int64_t Execute() override {
        FQuery.Open();
        const TBenchFields fields(FQuery);
        TChecksum sum;
        std::int64_t count = 0;
        while (!FQuery.Eof()) {
            fields.Fold(sum);
            ++count;
            FQuery.Next();
        }
        FQuery.Close();
        FChecksum = sum.Value();
        return count;
    }

    std::uint64_t Checksum() override { return FChecksum; }

private:
    TMultiDataBases FPool;
    TODBCMultiQuery FQuery{nullptr};
    std::uint64_t FChecksum = 0;
};

const TRegisterRun edit("edit", "quorda", "post",
                        [](const TBenchContext& Context) { return std::make_unique<TQuordaEdit>(Context); });
const TRegisterRun multiScan("scan", "multi", "forward", [](const TBenchContext& Context) {
    return std::make_unique<TMultiScan>(Context);
});

} // namespace

} // namespace quorda::bench
