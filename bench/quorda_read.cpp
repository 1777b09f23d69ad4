// scan, scroll and count through TODBCQuery.

#include "quorda_common.h"
#include "raw_odbc.h"
#include "row_generator.h"
#include "workload.h"

#include <algorithm>
#include <stdexcept>

namespace quorda::bench {

namespace {

enum class TScanMode { Scrollable, Forward, Block };

class TQuordaScan : public TBenchRun {
public:
    TQuordaScan(const TBenchContext& Context, TScanMode Mode, bool Views)
        : FViews(Views),
          FConnection(Mode == TScanMode::Scrollable ? Context.ScrollConnect : Context.StreamConnect),
          FQuery(FConnection.NewQuery(BenchSelect(Context.Rows, Context.TableRows))) {
        FQuery->SetUniDirectional(Mode != TScanMode::Scrollable);
        FQuery->SetBlockCursor(Mode == TScanMode::Block);
        FQuery->SetRowSetSize(100);
    }

    std::int64_t Execute() override {
        FQuery->Open();
        const TBenchFields fields(*FQuery);
        TChecksum sum;
        std::int64_t count = 0;
        while (!FQuery->Eof()) {
            if (FViews)
                fields.FoldViews(sum);
            else
                fields.Fold(sum);
            ++count;
            FQuery->Next();
        }
        FQuery->Close();
        FChecksum = sum.Value();
        return count;
    }

    std::uint64_t Checksum() override { return FChecksum; }

private:
    // Read through the views (impl "view") instead of the classic getters.
    bool FViews;
    TQuordaConnection FConnection;
    std::unique_ptr<TODBCQuery> FQuery;
    std::uint64_t FChecksum = 0;
};

// Forward, back to the first row, then GotoBookmark to bookmarks taken on the way forward.
class TQuordaScroll : public TBenchRun {
public:
    explicit TQuordaScroll(const TBenchContext& Context)
        : FRows(Context.Rows), FConnection(Context.ScrollConnect),
          FQuery(FConnection.NewQuery(BenchSelect(Context.TableRows, Context.TableRows))),
          FTargets(ScrollJumpTargets(Context.Rows, Context.Jumps)),
          FIsTarget(static_cast<std::size_t>(Context.Rows) + 1, false) {
        for (std::int64_t t : FTargets)
            FIsTarget[static_cast<std::size_t>(t)] = true;
    }

    std::int64_t Execute() override {
        FQuery->Open();
        const TBenchFields fields(*FQuery);
        std::vector<TBookmark> bookmarks(FIsTarget.size());
        TChecksum sum;
        std::int64_t visited = 0;
        for (std::int64_t row = 1; row <= FRows && !FQuery->Eof(); ++row) {
            if (FIsTarget[static_cast<std::size_t>(row)])
                bookmarks[static_cast<std::size_t>(row)] = FQuery->GetBookmark();
            fields.Fold(sum);
            ++visited;
            if (row < FRows)
                FQuery->Next();
        }
        for (std::int64_t row = 1; row < visited; ++row) {
            FQuery->Prior();
            fields.Fold(sum);
        }
        std::int64_t handled = visited * 2 - 1;
        for (std::int64_t target : FTargets) {
            FQuery->GotoBookmark(bookmarks[static_cast<std::size_t>(target)]);
            fields.Fold(sum);
            ++handled;
        }
        FQuery->Close();
        FChecksum = sum.Value();
        return handled;
    }

    std::uint64_t Checksum() override { return FChecksum; }

private:
    std::int64_t FRows;
    TQuordaConnection FConnection;
    std::unique_ptr<TODBCQuery> FQuery;
    std::vector<std::int64_t> FTargets;
    std::vector<bool> FIsTarget;
    std::uint64_t FChecksum = 0;
};

// GetRecordCount (stepping) or GetRecordCountExt (probing) on the whole table.
class TQuordaCount : public TBenchRun {
public:
    TQuordaCount(const TBenchContext& Context, bool Probe)
        : FProbe(Probe), FConnection(Context.ScrollConnect),
          FQuery(FConnection.NewQuery(BenchSelect(Context.TableRows, Context.TableRows))) {}

    std::int64_t Execute() override {
        FQuery->Open();
        const std::int64_t count = FProbe ? FQuery->GetRecordCountExt() : FQuery->RecordCount();
        FQuery->Close();
        TChecksum sum;
        sum.AddInt(count);
        FChecksum = sum.Value();
        return count;
    }

    std::uint64_t Checksum() override { return FChecksum; }

private:
    bool FProbe;
    TQuordaConnection FConnection;
    std::unique_ptr<TODBCQuery> FQuery;
    std::uint64_t FChecksum = 0;
};

template <TScanMode Mode, bool Views = false>
std::unique_ptr<TBenchRun> MakeScan(const TBenchContext& Context) {
    return std::make_unique<TQuordaScan>(Context, Mode, Views);
}

const TRegisterRun scrollable("scan", "quorda", "scrollable", MakeScan<TScanMode::Scrollable>);
const TRegisterRun forward("scan", "quorda", "forward", MakeScan<TScanMode::Forward>);
const TRegisterRun block("scan", "quorda", "block", MakeScan<TScanMode::Block>);
const TRegisterRun viewScrollable("scan", "view", "scrollable", MakeScan<TScanMode::Scrollable, true>);
const TRegisterRun viewForward("scan", "view", "forward", MakeScan<TScanMode::Forward, true>);
const TRegisterRun viewBlock("scan", "view", "block", MakeScan<TScanMode::Block, true>);
const TRegisterRun scroll("scroll", "quorda", "scrollable", [](const TBenchContext& Context) {
    return std::make_unique<TQuordaScroll>(Context);
});
const TRegisterRun countLoop("count", "quorda", "loop", [](const TBenchContext& Context) {
    return std::make_unique<TQuordaCount>(Context, false);
});
const TRegisterRun countProbe("count", "quorda", "probe", [](const TBenchContext& Context) {
    return std::make_unique<TQuordaCount>(Context, true);
});

} // namespace

} // namespace quorda::bench
