// edit through plain ODBC: per row the prepared UPDATE, then what the editable dataset's refresh
// after a post does: the select executed again and fetched forward to the edited row.

#include "edit_common.h"
#include "raw_odbc.h"
#include "workload.h"

#include <algorithm>

namespace quorda::bench {

namespace {

constexpr const char* kTable = "bench_edit_raw";

class TRawEdit : public TBenchRun {
public:
    explicit TRawEdit(const TBenchContext& Context)
        : FRows(std::min(Context.Rows, kEditMaxRows)), FConnection(Context.ScrollConnect),
          FCheck(Context.ScrollConnect), FUpdate(FConnection), FSelect(FConnection) {}

    void Prepare() override {
        ResetEditTable(FCheck, kTable, FRows);
        FUpdate.Prepare(std::string("update ") + kTable + " set qty = ? where id = ?");
        FUpdate.Check(SQLBindParameter(FUpdate.Handle(), 1, SQL_PARAM_INPUT, SQL_C_SLONG, SQL_INTEGER, 0, 0,
                                       &FNewQty, 0, nullptr),
                      "SQLBindParameter");
        FUpdate.Check(SQLBindParameter(FUpdate.Handle(), 2, SQL_PARAM_INPUT, SQL_C_SLONG, SQL_INTEGER, 0, 0,
                                       &FKey, 0, nullptr),
                      "SQLBindParameter");
        FSelect.Prepare(std::string("select id, qty from ") + kTable + " order by id");
        FSelect.Check(SQLBindCol(FSelect.Handle(), 1, SQL_C_SLONG, &FId, 0, &FIdLength), "SQLBindCol");
        FSelect.Check(SQLBindCol(FSelect.Handle(), 2, SQL_C_SLONG, &FQty, 0, &FQtyLength), "SQLBindCol");
    }

    std::int64_t Execute() override {
        std::int64_t edited = 0;
        Open();
        for (std::int64_t row = 1; row <= FRows; ++row) {
            if (!Fetch()) {
                break;
            }
            FKey = FId;
            FNewQty = FQty + 1;
            FUpdate.Check(SQLExecute(FUpdate.Handle()), "SQLExecute");
            ++edited;
            // The refresh: execute again and come back to the edited row.
            SQLFreeStmt(FSelect.Handle(), SQL_CLOSE);
            Open();
            for (std::int64_t i = 0; i < row; ++i) {
                Fetch();
            }
        }
        SQLFreeStmt(FSelect.Handle(), SQL_CLOSE);
        return edited;
    }

    std::uint64_t Checksum() override { return EditTableChecksum(FCheck, kTable); }

private:
    void Open() { FSelect.Check(SQLExecute(FSelect.Handle()), "SQLExecute"); }
    bool Fetch() { return FSelect.Check(SQLFetch(FSelect.Handle()), "SQLFetch", true) != SQL_NO_DATA; }

    std::int64_t FRows;
    TRawConnection FConnection;
    TRawConnection FCheck;
    TRawStatement FUpdate;
    TRawStatement FSelect;
    SQLINTEGER FId = 0;
    SQLINTEGER FQty = 0;
    SQLLEN FIdLength = 0;
    SQLLEN FQtyLength = 0;
    SQLINTEGER FKey = 0;
    SQLINTEGER FNewQty = 0;
};

const TRegisterRun edit("edit", "raw", "post",
                        [](const TBenchContext& Context) { return std::make_unique<TRawEdit>(Context); });

} // namespace

} // namespace quorda::bench
