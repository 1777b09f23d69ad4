// grid: open a query and show its first screen, then reach its last row; through a multi-select grid
// on Qt's offscreen platform (impl grid) and through TODBCQuery alone reading the same rows (impl
// quorda), which is the grid's baseline.

#include "grid_checksum.h"
#include "quorda_common.h"
#include "raw_odbc.h"
#include "workload.h"

#include <QApplication>
#include <QKeyEvent>
#include <cstdio>
#include <memory>
#include <quorda/db/data_source.h>
#include <quorda/grid/ext_db_grid.h>
#include <stdexcept>

namespace quorda::bench {

namespace {

// The application object of a child that measures a grid, on Qt's offscreen platform unless told
// otherwise; Qt's warnings (no runtime folder, and the like) stay out of the progress lines.
std::unique_ptr<QApplication> MakeApplication() {
    static int argc = 1;
    static char name[] = "quorda_bench";
    static char* argv[] = {name, nullptr};
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    qInstallMessageHandler([](QtMsgType Type, const QMessageLogContext&, const QString& Message) {
        if (Type == QtCriticalMsg || Type == QtFatalMsg) {
            std::fprintf(stderr, "%s\n", qPrintable(Message));
        }
    });
    return std::make_unique<QApplication>(argc, argv);
}

// The query alone: the first screen's rows, then the last row and the screen that ends with it.
class TQueryScreens : public TBenchRun {
public:
    explicit TQueryScreens(const TBenchContext& Context)
        : FConnection(Context.ScrollConnect),
          FQuery(FConnection.NewQuery(BenchSelect(Context.Rows, Context.TableRows))) {}

    std::int64_t Execute() override {
        FQuery->Open();
        const TBenchFields fields(*FQuery);
        TChecksum sum;
        for (int i = 0; i < kGridScreenRows; ++i) {
            fields.Fold(sum);
            FQuery->Next();
        }
        FQuery->Last();
        FQuery->MoveBy(1 - kGridScreenRows);
        for (int i = 0; i < kGridScreenRows; ++i) {
            fields.Fold(sum);
            FQuery->Next();
        }
        FQuery->Close();
        FChecksum = sum.Value();
        return 2 * kGridScreenRows;
    }

    std::uint64_t Checksum() override { return FChecksum; }

private:
    TQuordaConnection FConnection;
    std::unique_ptr<TODBCQuery> FQuery;
    std::uint64_t FChecksum = 0;
};

// The same query in a grid of kGridScreenRows rows: opened and painted, Ctrl+End and painted again.
// The rows folded are those of the grid's window, read where the grid's buffers hold them.
class TGridScreens : public TBenchRun {
public:
    explicit TGridScreens(const TBenchContext& Context)
        : FApplication(MakeApplication()), FConnection(Context.ScrollConnect),
          FQuery(FConnection.NewQuery(BenchSelect(Context.Rows, Context.TableRows))) {
        FSource.SetDataSet(FQuery.get());
        FGrid = std::make_unique<TExtDBGrid>();
        TDBGridOptions options = FGrid->Options();
        options.insert(dgMultiSelect);
        FGrid->SetOptions(options);
        FGrid->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        FGrid->resize(640, FGrid->TitleRowHeight() + kGridScreenRows * FGrid->DefaultRowHeight() +
                               2 * FGrid->frameWidth());
        FGrid->SetDataSource(&FSource);
        FGrid->show();
        if (FGrid->VisibleRowCount() != kGridScreenRows) {
            throw std::runtime_error("the grid shows " + std::to_string(FGrid->VisibleRowCount()) +
                                     " rows, not " + std::to_string(kGridScreenRows));
        }
    }
    ~TGridScreens() override { FGrid->SetDataSource(nullptr); }

    std::int64_t Execute() override {
        FQuery->Open();
        const TBenchFields fields(*FQuery);
        TChecksum sum;
        FGrid->viewport()->repaint();
        FoldWindow(fields, sum);
        QKeyEvent end(QEvent::KeyPress, Qt::Key_End, Qt::ControlModifier);
        QApplication::sendEvent(FGrid.get(), &end);
        FGrid->viewport()->repaint();
        FoldWindow(fields, sum);
        FQuery->Close();
        FChecksum = sum.Value();
        return 2 * kGridScreenRows;
    }

    std::uint64_t Checksum() override { return FChecksum; }

private:
    void FoldWindow(const TBenchFields& Fields, TChecksum& Sum) {
        TGridDataLink& link = *FGrid->DataLink();
        const int current = link.ActiveRecord();
        for (int i = 0; i < link.RecordCount(); ++i) {
            link.SetActiveRecord(i);
            Fields.Fold(Sum);
        }
        link.SetActiveRecord(current);
    }

    // First in, last out: the widgets go before the application.
    std::unique_ptr<QApplication> FApplication;
    TQuordaConnection FConnection;
    std::unique_ptr<TODBCQuery> FQuery;
    TDataSource FSource{nullptr};
    std::unique_ptr<TExtDBGrid> FGrid;
    std::uint64_t FChecksum = 0;
};

const TRegisterRun query("grid", "quorda", "screens", [](const TBenchContext& Context) {
    return std::make_unique<TQueryScreens>(Context);
});
const TRegisterRun grid("grid", "grid", "screens",
                        [](const TBenchContext& Context) { return std::make_unique<TGridScreens>(Context); });

} // namespace

} // namespace quorda::bench
