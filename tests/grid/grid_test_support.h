// Shared ground of the grid tests: a Qt application for the whole run, an in-memory table of numbered
// rows, and a multi-select grid over it driven with real key and mouse events.
#pragma once

#include "db_test_support.h"
#include "quorda/db.h"
#include "quorda/grid.h"

#include <QApplication>
#include <QScrollBar>
#include <QTest>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace quorda::gridtest {

using dbtest::FillNumbers;

// A grid of Rows visible rows over a table of Count numbered rows, shown and focused.
class GridTest : public ::testing::Test {
protected:
    static constexpr int kVisibleRows = 10;

    explicit GridTest(int Count = 40) {
        FillNumbers(DataSet, Count);
        Source.SetDataSet(&DataSet);
        Grid.SetOptions(Options());
        Grid.SetDataSource(&Source);
        Grid.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        Grid.resize(300,
                    Grid.TitleRowHeight() + kVisibleRows * Grid.DefaultRowHeight() + 2 * Grid.frameWidth());
        Grid.show();
        Grid.activateWindow();
        Grid.setFocus();
        (void)QTest::qWaitForWindowExposed(&Grid);
    }
    ~GridTest() override { Grid.SetDataSource(nullptr); }

    static TDBGridOptions Options() {
        TDBGridOptions options = DefaultDBGridOptions;
        options.insert(dgMultiSelect);
        return options;
    }

public:
    int CurrentId() { return DataSet.FieldByName("ID")->AsInteger(); }
    // Makes row Id current (rows are numbered from 1).
    void GoTo(int Id) { DataSet.SetRecNo(Id); }
    // The ID of the top row on screen.
    int TopId() {
        const int saved = Grid.DataLink()->ActiveRecord();
        Grid.DataLink()->SetActiveRecord(0);
        const int id = CurrentId();
        Grid.DataLink()->SetActiveRecord(saved);
        return id;
    }
    // The IDs of the selected rows, in order. Walks the table: the current record stays, the rows on
    // screen may not.
    std::vector<int> SelectedIds() {
        std::vector<int> ids;
        const TBookmark current = DataSet.GetBookmark();
        DataSet.DisableControls();
        for (DataSet.First(); !DataSet.Eof(); DataSet.Next()) {
            if (Grid.SelectedRows().CurrentRowSelected()) {
                ids.push_back(CurrentId());
            }
        }
        DataSet.GotoBookmark(current);
        DataSet.EnableControls();
        return ids;
    }
    // The middle of the cell of data column DataCol in the row showing Id.
    QPoint CellPoint(int Id, int DataCol = 0) {
        const int row = Grid.TitleOffset() + Id - TopId();
        return Grid.CellRect(Grid.IndicatorOffset() + DataCol, row).center();
    }
    void Click(int Id, Qt::KeyboardModifiers Modifiers = Qt::NoModifier) {
        QTest::mouseClick(Grid.viewport(), Qt::LeftButton, Modifiers, CellPoint(Id));
    }
    void Key(int KeyCode, Qt::KeyboardModifiers Modifiers = Qt::NoModifier) {
        QTest::keyClick(&Grid, static_cast<Qt::Key>(KeyCode), Modifiers);
    }

    dbtest::TProbeDataSet DataSet{nullptr};
    TDataSource Source{nullptr};
    TExtDBGrid Grid;
};

// Answers the application's questions with Answer and remembers them while it lives.
struct TConfirmAnswers {
    TConfirmAnswers()
        : Saved(Dialogs::SetConfirmHook([this](QWidget*, const std::string& Question) {
              Asked.push_back(Question);
              return Answer;
          })) {}
    ~TConfirmAnswers() { Dialogs::SetConfirmHook(Saved); }
    std::vector<std::string> Asked;
    bool Answer = true;
    TConfirmHook Saved;
};

inline std::vector<int> Range(int From, int To) {
    std::vector<int> ids;
    for (int i = From; i <= To; ++i) {
        ids.push_back(i);
    }
    return ids;
}

} // namespace quorda::gridtest
