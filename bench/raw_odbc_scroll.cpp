// scroll and count, raw ODBC: scrollable cursor (keyset requested, as the library does), positioned
// with SQLExtendedFetch.

#include "raw_odbc.h"
#include "row_generator.h"
#include "workload.h"

namespace quorda::bench {

namespace {

class TRawScrollBase : public TBenchRun {
public:
    explicit TRawScrollBase(const TBenchContext& Context)
        : FContext(Context), FConnection(Context.ScrollConnect),
          FSql(BenchSelect(Context.TableRows, Context.TableRows)) {}

    std::uint64_t Checksum() override { return FChecksum; }

protected:
    // SQL_NO_DATA is a value here: it ends loops and binary searches.
    static SQLRETURN Fetch(TRawStatement& Stmt, SQLUSMALLINT Orientation, SQLLEN Offset) {
        SQLULEN fetched = 0;
        SQLUSMALLINT status = 0;
        return Stmt.Check(SQLExtendedFetch(Stmt.Handle(), Orientation, Offset, &fetched, &status),
                          "SQLExtendedFetch", true);
    }

    void Open(TRawStatement& Stmt) {
        Stmt.SetOption(SQL_CURSOR_TYPE, SQL_CURSOR_KEYSET_DRIVEN, "SQL_CURSOR_TYPE");
        Stmt.ExecDirect(FSql);
    }

    TBenchContext FContext;
    TRawConnection FConnection;
    std::string FSql;
    std::uint64_t FChecksum = 0;
};

// Forward over the first Rows rows, back to the first, then jumps to absolute row numbers.
class TRawScroll : public TRawScrollBase {
public:
    explicit TRawScroll(const TBenchContext& Context)
        : TRawScrollBase(Context), FTargets(ScrollJumpTargets(Context.Rows, Context.Jumps)) {}

    std::int64_t Execute() override {
        TRawStatement stmt(FConnection);
        Open(stmt);
        TBoundRows row(1);
        row.Bind(stmt);
        TChecksum sum;
        std::int64_t visited = 0;
        for (std::int64_t i = 0; i < FContext.Rows && Fetch(stmt, SQL_FETCH_NEXT, 0) != SQL_NO_DATA;
             ++i, ++visited)
            row.Fold(0, sum);
        for (std::int64_t i = 1; i < visited && Fetch(stmt, SQL_FETCH_PRIOR, 0) != SQL_NO_DATA; ++i)
            row.Fold(0, sum);
        std::int64_t handled = visited * 2 - 1;
        for (std::int64_t target : FTargets) {
            if (Fetch(stmt, SQL_FETCH_ABSOLUTE, static_cast<SQLLEN>(target)) == SQL_NO_DATA)
                throw TOdbcError("absolute fetch of row " + std::to_string(target) + " found no row");
            row.Fold(0, sum);
            ++handled;
        }
        FChecksum = sum.Value();
        return handled;
    }

private:
    std::vector<std::int64_t> FTargets;
};

// Counting by stepping through every row, the way GetRecordCount does, but with nothing bound.
class TRawCountLoop : public TRawScrollBase {
public:
    using TRawScrollBase::TRawScrollBase;

    std::int64_t Execute() override {
        TRawStatement stmt(FConnection);
        Open(stmt);
        std::int64_t count = 0;
        for (SQLRETURN r = Fetch(stmt, SQL_FETCH_FIRST, 0); r != SQL_NO_DATA;
             r = Fetch(stmt, SQL_FETCH_NEXT, 0))
            ++count;
        TChecksum sum;
        sum.AddInt(count);
        FChecksum = sum.Value();
        return count;
    }
};

// Counting by absolute probes: doubling, then a binary search, as GetRecordCountExt does.
class TRawCountProbe : public TRawScrollBase {
public:
    using TRawScrollBase::TRawScrollBase;

    std::int64_t Execute() override {
        TRawStatement stmt(FConnection);
        Open(stmt);
        std::int64_t low = 0;
        std::int64_t high = 100;
        while (Fetch(stmt, SQL_FETCH_ABSOLUTE, static_cast<SQLLEN>(high)) != SQL_NO_DATA) {
            low = high;
            high *= 2;
        }
        while (high > low + 1) {
            const std::int64_t mid = low + (high - low) / 2;
            if (Fetch(stmt, SQL_FETCH_ABSOLUTE, static_cast<SQLLEN>(mid)) != SQL_NO_DATA)
                low = mid;
            else
                high = mid;
        }
        TChecksum sum;
        sum.AddInt(low);
        FChecksum = sum.Value();
        return low;
    }
};

template <class T>
std::unique_ptr<TBenchRun> Make(const TBenchContext& Context) {
    return std::make_unique<T>(Context);
}

const TRegisterRun scroll("scroll", "raw", "scrollable", Make<TRawScroll>);
const TRegisterRun countLoop("count", "raw", "loop", Make<TRawCountLoop>);
const TRegisterRun countProbe("count", "raw", "probe", Make<TRawCountProbe>);

} // namespace

} // namespace quorda::bench
