// scan, raw ODBC: the three cursor modes the library offers, written directly against the driver.

#include "raw_odbc.h"
#include "workload.h"

#include <vector>

namespace quorda::bench {

namespace {

enum class TScanMode { Scrollable, Forward, Block };

constexpr std::size_t kRowset = 100;

class TRawScan : public TBenchRun {
public:
    TRawScan(const TBenchContext& Context, TScanMode Mode)
        : FMode(Mode),
          FConnection(Mode == TScanMode::Scrollable ? Context.ScrollConnect : Context.StreamConnect),
          FSql(BenchSelect(Context.Rows, Context.TableRows)) {}

    std::int64_t Execute() override {
        TRawStatement stmt(FConnection);
        const SQLHSTMT h = stmt.Handle();
        if (FMode == TScanMode::Scrollable)
            stmt.SetOption(SQL_CURSOR_TYPE, SQL_CURSOR_KEYSET_DRIVEN, "SQL_CURSOR_TYPE");
        if (FMode == TScanMode::Block)
            stmt.SetOption(SQL_ROWSET_SIZE, kRowset, "SQL_ROWSET_SIZE");
        stmt.ExecDirect(FSql);
        TBoundRows rows(FMode == TScanMode::Block ? kRowset : 1);
        rows.Bind(stmt);

        TChecksum sum;
        std::int64_t count = 0;
        switch (FMode) {
        case TScanMode::Forward:
            while (stmt.Check(SQLFetch(h), "SQLFetch", true) != SQL_NO_DATA) {
                rows.Fold(0, sum);
                ++count;
            }
            break;
        case TScanMode::Scrollable: {
            SQLULEN fetched = 0;
            SQLUSMALLINT status = 0;
            while (stmt.Check(SQLExtendedFetch(h, SQL_FETCH_NEXT, 0, &fetched, &status), "SQLExtendedFetch",
                              true) != SQL_NO_DATA) {
                rows.Fold(0, sum);
                ++count;
            }
            break;
        }
        case TScanMode::Block: {
            SQLULEN fetched = 0;
            std::vector<SQLUSMALLINT> status(kRowset);
            while (stmt.Check(SQLExtendedFetch(h, SQL_FETCH_NEXT, 0, &fetched, status.data()),
                              "SQLExtendedFetch", true) != SQL_NO_DATA) {
                for (std::size_t i = 0; i < fetched; ++i)
                    rows.Fold(i, sum);
                count += static_cast<std::int64_t>(fetched);
            }
            break;
        }
        }
        FChecksum = sum.Value();
        return count;
    }

    std::uint64_t Checksum() override { return FChecksum; }

private:
    TScanMode FMode;
    TRawConnection FConnection;
    std::string FSql;
    std::uint64_t FChecksum = 0;
};

template <TScanMode Mode>
std::unique_ptr<TBenchRun> Make(const TBenchContext& Context) {
    return std::make_unique<TRawScan>(Context, Mode);
}

const TRegisterRun scrollable("scan", "raw", "scrollable", Make<TScanMode::Scrollable>);
const TRegisterRun forward("scan", "raw", "forward", Make<TScanMode::Forward>);
const TRegisterRun block("scan", "raw", "block", Make<TScanMode::Block>);

} // namespace

} // namespace quorda::bench
