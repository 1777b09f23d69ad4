// The multi-select grid: indicator images, the delete question, editing, column sizing and moving,
// dragging, the vertical scroll bar, and anchor-based row selection key by key and click by click;
// the Qt table model over a dataset, and saved column layouts.
#include "grid_test_support.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QImage>
#include <QKeySequence>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace quorda::gridtest {
namespace {

// One Qt application for the whole run, the browser's tests included.
class QtEnvironment : public ::testing::Environment {
public:
    void SetUp() override { FApp = std::make_unique<QApplication>(FArgc, FArgv); }
    void TearDown() override { FApp.reset(); }

private:
    int FArgc = 1;
    char FName[16] = "quorda_grid";
    char* FArgv[2] = {FName, nullptr};
    std::unique_ptr<QApplication> FApp;
};

[[maybe_unused]] ::testing::Environment* const kQtEnvironment =
    ::testing::AddGlobalTestEnvironment(new QtEnvironment);

// Solid indicator images, one colour per index.
const QColor kImageColors[] = {Qt::red, Qt::green, Qt::blue, Qt::yellow, Qt::magenta};

class Indicators : public GridTest {
protected:
    Indicators() {
        for (const QColor& color : kImageColors) {
            QPixmap image(Images.Width(), Images.Height());
            image.fill(color);
            Images.Add(image);
        }
        Grid.SetIndicators(&Images);
    }
    // The colour painted in the indicator cell of data row DataRow.
    QColor Painted(int DataRow) {
        const QImage shot = Grid.viewport()->grab().toImage();
        const QRect cell = Grid.CellRect(0, Grid.TitleOffset() + DataRow);
        return shot.pixelColor(cell.left() + 4, cell.center().y());
    }
    TImageList Images{10, 10};
};

struct IndicatorCase {
    const char* Name;
    std::function<void(GridTest&)> Setup;
    int Probe; // the row looked at, counted from the current one
    int Image; // -1: none
};

const IndicatorCase kIndicatorCases[] = {
    {"CurrentRow", [](GridTest&) {}, 0, iiCurrent},
    {"OtherRow", [](GridTest&) {}, 1, -1},
    {"Editing", [](GridTest& T) { T.DataSet.Edit(); }, 0, iiEdit},
    {"Inserting", [](GridTest& T) { T.DataSet.Insert(); }, 0, iiInsert},
    {"SelectedCurrentRow", [](GridTest& T) { T.Grid.SelectedRows().SetCurrentRowSelected(true); }, 0,
     iiSelectedCurrent},
    {"SelectedOtherRow",
     [](GridTest& T) {
         T.Grid.SelectedRows().SetCurrentRowSelected(true);
         T.DataSet.Next();
     },
     -1, iiSelected}};

class IndicatorImages : public Indicators, public ::testing::WithParamInterface<IndicatorCase> {};

TEST_P(IndicatorImages, FollowTheRowAndDataSetState) {
    GoTo(5);
    GetParam().Setup(*this);
    const int row = Grid.DataLink()->ActiveRecord() + GetParam().Probe;
    EXPECT_EQ(Grid.IndicatorImageFor(row), GetParam().Image);
    const QColor expected = GetParam().Image < 0 ? Grid.FixedColor() : kImageColors[GetParam().Image];
    EXPECT_EQ(Painted(row), expected);
}

INSTANTIATE_TEST_SUITE_P(Grid, IndicatorImages, ::testing::ValuesIn(kIndicatorCases),
                         [](const auto& Info) { return std::string(Info.param.Name); });

TEST_F(Indicators, IndicatorSizeTakesOnlyValuesFromOneToFortyNine) {
    for (int refused : {0, 50, 51, -3, 10}) {
        Grid.SetIndicatorSize(refused);
        EXPECT_EQ(Grid.IndicatorSize(), 10) << refused;
        EXPECT_EQ(Grid.ColWidths(0), 10) << refused;
    }
    Grid.SetIndicatorSize(49);
    EXPECT_EQ(Grid.ColWidths(0), 49);
    {
        // The image list going away leaves the grid without one, painting on.
        TImageList temporary(10, 10);
        Grid.SetIndicators(&temporary);
    }
    EXPECT_EQ(Grid.Indicators(), nullptr);
    (void)Grid.viewport()->grab();
}

TEST_F(GridTest, TypedTextIsPostedWithEnterAndCancelledWithEscapeAndDownOnTheLastRowAppends) {
    GoTo(3);
    Grid.MoveCol(2); // NAME
    QTest::keyClicks(&Grid, "new");
    ASSERT_NE(Grid.InplaceEditor(), nullptr);
    EXPECT_EQ(DataSet.State(), dsEdit);
    QTest::keyClick(Grid.InplaceEditor(), Qt::Key_Return);
    EXPECT_EQ(DataSet.State(), dsBrowse);
    EXPECT_EQ(DataSet.FieldByName("NAME")->AsString(), "new");
    Key(Qt::Key_F2);
    QTest::keyClicks(Grid.InplaceEditor(), "X");
    QTest::keyClick(Grid.InplaceEditor(), Qt::Key_Escape);
    EXPECT_EQ(DataSet.State(), dsBrowse);
    EXPECT_EQ(DataSet.FieldByName("NAME")->AsString(), "new");
    EXPECT_FALSE(Grid.EditorMode());
    // A pending edit (F2 selects the text, so typing replaces it) is posted when the row is left.
    Key(Qt::Key_F2);
    QTest::keyClicks(Grid.InplaceEditor(), "Z");
    QTest::keyClick(Grid.InplaceEditor(), Qt::Key_Down);
    EXPECT_EQ(CurrentId(), 4);
    GoTo(3);
    EXPECT_EQ(DataSet.FieldByName("NAME")->AsString(), "Z");
    // A dataset error raised by a key goes to the application's exception display; the edit stays.
    testing_support::TShownErrors errors;
    DataSet.BeforePost = [](TDataSet*) { throw EDatabaseError("refused"); };
    QTest::keyClicks(&Grid, "x");
    QTest::keyClick(Grid.InplaceEditor(), Qt::Key_Return);
    EXPECT_EQ(errors.Shown, std::vector<std::string>{"refused"});
    EXPECT_EQ(DataSet.State(), dsEdit);
    DataSet.BeforePost = nullptr;
    DataSet.Cancel();
    GoTo(40);
    Key(Qt::Key_Down);
    EXPECT_EQ(DataSet.State(), dsInsert);
    Key(Qt::Key_Down); // at the end of an unchanged insert: nothing
    EXPECT_EQ(DataSet.State(), dsInsert);
    Key(Qt::Key_Up);
    EXPECT_EQ(DataSet.State(), dsBrowse);
    EXPECT_EQ(DataSet.RecordCount(), 40);
}

TEST_F(GridTest, ColumnsAreSizedAndMovedOnTheTitlesAndDragStartsAfterSixPixels) {
    std::vector<std::string> log;
    Grid.OnColumnMoved = [&log](TObject*, int From, int To) {
        log.push_back("moved " + std::to_string(From) + ">" + std::to_string(To));
    };
    Grid.OnTitleClick = [&log](TColumn* Column) { log.push_back("title " + Column->FieldName()); };
    const int titleY = Grid.TitleRowHeight() / 2;
    const int border = Grid.CellRect(1, 0).right() + 1;
    const int width = Grid.ColWidths(1);
    Grid.MouseDown(Qt::LeftButton, {}, border, titleY);
    Grid.MouseMove(Qt::LeftButton, {}, border + 30, titleY);
    Grid.MouseUp(Qt::LeftButton, {}, border + 30, titleY);
    EXPECT_EQ(Grid.ColWidths(1), width + 30);

    const QPoint idTitle = Grid.CellRect(1, 0).center();
    QTest::mouseClick(Grid.viewport(), Qt::LeftButton, {}, idTitle);
    const QPoint nameTitle = Grid.CellRect(2, 0).center();
    Grid.MouseDown(Qt::LeftButton, {}, idTitle.x(), titleY);
    Grid.MouseMove(Qt::LeftButton, {}, idTitle.x() + 10, titleY);
    EXPECT_EQ(Grid.GridState(), gsColMoving);
    Grid.MouseMove(Qt::LeftButton, {}, nameTitle.x(), titleY);
    Grid.MouseUp(Qt::LeftButton, {}, nameTitle.x(), titleY);
    EXPECT_EQ(Grid.Columns()[0]->FieldName(), "NAME");
    EXPECT_EQ(log, (std::vector<std::string>{"title ID", "moved 1>2"}));
    int drags = 0;
    Grid.OnStartDrag = [&drags](TObject*) { ++drags; };
    const QPoint p = CellPoint(3);
    Grid.MouseDown(Qt::LeftButton, {}, p.x(), p.y());
    Grid.MouseMove(Qt::LeftButton, {}, p.x() + 5, p.y() - 5);
    EXPECT_EQ(drags, 0);
    Grid.MouseMove(Qt::LeftButton, {}, p.x(), p.y() + 6);
    EXPECT_EQ(drags, 1);
    EXPECT_TRUE(Grid.Dragging());
    Grid.MouseUp(Qt::LeftButton, {}, p.x(), p.y() + 6);
    // Moving without the button pressed first is no drag.
    Grid.MouseMove(Qt::NoButton, {}, p.x() + 20, p.y());
    EXPECT_EQ(drags, 1);
}

// Over a numbered table (an unnumbered one shows three positions, see the query grid).
TEST_F(GridTest, ScrollBarFollowsTheRecordNumberAndDeleteAsksBeforeDeleting) {
    QScrollBar* bar = Grid.verticalScrollBar();
    GoTo(25);
    EXPECT_EQ(bar->maximum(), 39);
    EXPECT_EQ(bar->value(), 24);
    bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
    EXPECT_EQ(CurrentId(), 25 + kVisibleRows);
    EXPECT_EQ(bar->value(), 24 + kVisibleRows);
    // The dataset's window follows the visible rows.
    EXPECT_EQ(DataSet.BufferCount(), kVisibleRows);
    Grid.resize(Grid.width(), Grid.height() + 3 * Grid.DefaultRowHeight());
    EXPECT_EQ(DataSet.BufferCount(), kVisibleRows + 3);
    // No keeps the rows; one row gets the single question. Nothing is asked when the dataset cannot
    // change or confirmation is off.
    GoTo(1);
    TConfirmAnswers Confirm;
    Click(4);
    Click(5, Qt::ControlModifier);
    Click(9, Qt::ControlModifier);
    Confirm.Answer = false;
    Key(Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_EQ(DataSet.RecordCount(), 40);
    Click(7);
    Confirm.Answer = true;
    Key(Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_EQ(Confirm.Asked,
              (std::vector<std::string>{SDeleteMultipleRecordsQuestion, SDeleteRecordQuestion}));
    EXPECT_EQ(DataSet.RecordCount(), 39);
    EXPECT_EQ(DataSet.Locate("ID", 7, {}), false);

    Confirm.Asked.clear();
    DataSet.SetReadOnly(true);
    Key(Qt::Key_Delete, Qt::ControlModifier);
    DataSet.SetReadOnly(false);
    TDBGridOptions options = Grid.Options();
    options.erase(dgConfirmDelete);
    Grid.SetOptions(options);
    Click(2);
    Key(Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_TRUE(Confirm.Asked.empty());
    EXPECT_EQ(DataSet.RecordCount(), 38);
}

// Row-select mode: whole rows move with Left and Right, Home and End go to the first and last row.
class RowSelect : public GridTest {
protected:
    RowSelect() {
        TDBGridOptions options = Grid.Options();
        options.insert(dgRowSelect);
        Grid.SetOptions(options);
    }
    QColor PixelAt(const QPoint& Point) { return Grid.viewport()->grab().toImage().pixelColor(Point); }
};

TEST_F(RowSelect, ArrowsMoveRowsAndSelectedRowsTakeButtonColoursWithoutTheFocus) {
    GoTo(5);
    Key(Qt::Key_Right, Qt::ShiftModifier);
    Key(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(SelectedIds(), Range(5, 7));
    Key(Qt::Key_Left);
    EXPECT_EQ(SelectedIds(), std::vector<int>{6});
    Key(Qt::Key_End);
    EXPECT_EQ(CurrentId(), 40);
    EXPECT_EQ(SelectedIds(), std::vector<int>{40});
    Key(Qt::Key_Home);
    EXPECT_EQ(CurrentId(), 1);
    EXPECT_FALSE(Grid.CanEditShow());
    GoTo(3);
    Click(4);
    Click(6, Qt::ShiftModifier);
    const QPoint inside = CellPoint(5) + QPoint(10, 0);
    ASSERT_TRUE(Grid.hasFocus());
    EXPECT_EQ(PixelAt(inside), Grid.palette().color(QPalette::Highlight));
    // The frame's pixels alternate between the caption colour and its inverse along the top edge.
    const QRect current = Grid.CellRect(1, Grid.Row());
    const QColor a = PixelAt(current.topLeft() + QPoint(4, 0));
    const QColor b = PixelAt(current.topLeft() + QPoint(5, 0));
    EXPECT_EQ(a.rgb() ^ b.rgb(), 0x00FFFFFFu);
    QWidget other;
    other.show();
    other.activateWindow();
    other.setFocus();
    Grid.clearFocus();
    EXPECT_EQ(PixelAt(inside), Grid.palette().color(QPalette::Button));
}

struct SelectionCase {
    const char* Name;
    int Start;
    // Key sequences ("Shift+Down") and left clicks on the row showing an ID ("Ctrl+5"), in turn.
    const char* Steps;
    std::vector<int> Selected;
    int Current;
};

const SelectionCase kCases[] = {
    {"ShiftUpAfterwardsDropsTheLastRow", 5, "Shift+Down Shift+Down Shift+Down Shift+Up", Range(5, 7), 7},
    {"ShiftUpExtendsAboveTheAnchor", 5, "Shift+Up Shift+Up", Range(3, 5), 3},
    {"BackAcrossTheAnchor", 5, "Shift+Down Shift+Up Shift+Up", Range(4, 5), 4},
    {"ShiftClickAfterPlainClick", 1, "3 Shift+9", Range(3, 9), 9},
    {"ShiftClickOnAnEmptySelectionStartsOne", 4, "Shift+7 Shift+9", Range(7, 9), 9},
    {"CtrlClickUnselectsASelectedRow", 1, "3 Shift+6 Ctrl+5", {3, 4, 6}, 5},
    {"CtrlClickKeepsTheAnchor", 1, "3 Shift+6 Ctrl+5 Shift+7", Range(3, 7), 7},
    {"CtrlSpaceUnselectsTheCurrentRow", 1, "3 Shift+6 Ctrl+Space", Range(3, 5), 6},
    {"PageDownSelectsOnlyTheNewRow", 1, "3 Shift+6 PgDown", {16}, 16},
    {"PlainDownSelectsOnlyTheNewRow", 1, "3 Shift+6 Down", {7}, 7},
    {"CtrlDownLeavesTheSelection", 1, "3 Ctrl+Down Ctrl+Down", {3}, 5},
    {"EscapeStartsAgainAtTheCurrentRow", 1, "3 Shift+5 Esc", {5}, 5},
    {"CtrlEndMovesWithoutSelecting", 1, "2 Ctrl+End", {2}, 40}};

class Selection : public GridTest, public ::testing::WithParamInterface<SelectionCase> {};

TEST_P(Selection, FollowsTheAnchorRules) {
    const SelectionCase& c = GetParam();
    GoTo(c.Start);
    int changes = 0;
    Grid.OnSelectionChange = [&changes](TObject*) { ++changes; };
    for (const QString& step : QString(c.Steps).split(' ')) {
        SCOPED_TRACE(step.toStdString());
        const int before = changes;
        const QString target = step.section('+', -1);
        const QKeyCombination key = QKeySequence(step.chopped(target.size()) + "A")[0];
        bool isRow = false;
        const int id = target.toInt(&isRow);
        if (isRow) {
            Click(id, key.keyboardModifiers());
        } else {
            QTest::keySequence(&Grid, QKeySequence(step));
        }
        // Ctrl with a moving key leaves the selection alone, so it reports nothing.
        const bool quietKey = !isRow && (key.keyboardModifiers() & Qt::ControlModifier) && target != "Space";
        EXPECT_EQ(changes > before, !quietKey);
    }
    EXPECT_EQ(SelectedIds(), c.Selected);
    EXPECT_EQ(CurrentId(), c.Current);
}

INSTANTIATE_TEST_SUITE_P(Grid, Selection, ::testing::ValuesIn(kCases),
                         [](const auto& Info) { return std::string(Info.param.Name); });

TEST_F(GridTest,
       ShiftSelectionKeepsTheRowsOnScreenAddSelectSortsKeysAndWithoutMultiSelectOnlyTheAnchorMoves) {
    GoTo(20);
    const int top = TopId();
    const int place = Grid.DataLink()->ActiveRecord();
    Click(14);
    Click(18, Qt::ShiftModifier);
    EXPECT_EQ(TopId(), top);
    EXPECT_EQ(CurrentId(), 18);
    // A range reaching far beyond the screen on both sides, set directly.
    GoTo(2);
    const TBookmarkStr from = Grid.CurrentRow();
    GoTo(35);
    const TBookmarkStr to = Grid.CurrentRow();
    GoTo(20);
    EXPECT_EQ(TopId(), top);
    Grid.SelectedRows().Clear();
    Grid.SetShiftSelection(to, from);
    EXPECT_EQ(TopId(), top);
    EXPECT_EQ(CurrentId(), 20);
    EXPECT_EQ(Grid.DataLink()->ActiveRecord(), place);
    EXPECT_EQ(SelectedIds(), Range(2, 35));
    EXPECT_EQ(Grid.DoAddSelect(true), "");
    Grid.OnGetDataSetKey = [](const TDataSet* Sender, std::string& Key) {
        Key = const_cast<TDataSet*>(Sender)->FieldByName("NAME")->AsString();
    };
    for (int id : {7, 3, 7, 12}) {
        GoTo(id);
        Grid.DoAddSelect(true);
    }
    GoTo(9);
    EXPECT_EQ(Grid.DoAddSelect(false), "name9");
    EXPECT_EQ(Grid.SelectedKeys().Text(), "name12\nname3\nname7\n");
    TDBGridOptions options = Grid.Options();
    options.erase(dgMultiSelect);
    Grid.SetOptions(options);
    GoTo(3);
    Key(Qt::Key_Down, Qt::ShiftModifier);
    Key(Qt::Key_Down);
    EXPECT_EQ(Grid.SelectedRows().Count(), 0);
    EXPECT_TRUE(Grid.Selecting());
    EXPECT_EQ(Grid.Anchor(), Grid.CurrentRow());
    Grid.ClearSelection(); // only with multi-select
    EXPECT_TRUE(Grid.Selecting());
}

class DataSetModelTest : public ::testing::Test {
protected:
    DataSetModelTest() {
        FillNumbers(DataSet, 1000);
        DataSet.FieldByName("ID")->SetDisplayLabel("Number");
        Source.SetDataSet(&DataSet);
        Model.SetChunkSize(300);
        Model.SetDataSource(&Source);
    }
    QString Text(int Row, int Column, int Role = Qt::DisplayRole) {
        return Model.data(Model.index(Row, Column), Role).toString();
    }

    TMemDataSet DataSet{nullptr};
    TDataSource Source{nullptr};
    TDataSetModel Model;
    QAbstractItemModelTester Tester{&Model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(DataSetModelTest, FetchesInChunksWithoutMovingTheDataSetAndEditsGoThroughTheFields) {
    DataSet.SetRecNo(500);
    EXPECT_EQ(Model.columnCount(), 2);
    EXPECT_EQ(Model.headerData(0, Qt::Horizontal).toString(), "Number");
    EXPECT_EQ(Model.headerData(1, Qt::Horizontal).toString(), "NAME");
    // The tester has asked for rows already.
    std::vector<int> counts{Model.rowCount()};
    while (Model.canFetchMore(QModelIndex())) {
        Model.fetchMore(QModelIndex());
        counts.push_back(Model.rowCount());
    }
    EXPECT_EQ(counts.front() % 300, 0);
    for (std::size_t i = 1; i < counts.size(); ++i) {
        EXPECT_EQ(counts[i] - counts[i - 1], counts[i] == 1000 ? 1000 - counts[i - 1] : 300);
    }
    EXPECT_EQ(counts.back(), 1000);
    EXPECT_EQ(Text(999, 1), "name1000");
    EXPECT_EQ(DataSet.RecNo(), 500);
    Model.fetchMore(QModelIndex());
    QSignalSpy changed(&Model, &QAbstractItemModel::dataChanged);
    ASSERT_TRUE(Model.flags(Model.index(4, 1)) & Qt::ItemIsEditable);
    EXPECT_TRUE(Model.setData(Model.index(4, 1), "five"));
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(Text(4, 1, Qt::EditRole), "five");
    EXPECT_TRUE(DataSet.Locate("NAME", "five", {}));
    EXPECT_EQ(DataSet.FieldByName("ID")->AsInteger(), 5);

    QSignalSpy reset(&Model, &QAbstractItemModel::modelReset);
    DataSet.Delete();
    EXPECT_EQ(reset.count(), 1);
    Model.fetchMore(QModelIndex());
    EXPECT_EQ(Text(4, 0), "6");
    DataSet.Close();
    EXPECT_EQ(Model.columnCount(), 0);
    EXPECT_FALSE(Model.canFetchMore(QModelIndex()));

    DataSet.SetReadOnly(true);
    DataSet.Open();
    Model.fetchMore(QModelIndex());
    EXPECT_FALSE(Model.flags(Model.index(0, 1)) & Qt::ItemIsEditable);
    EXPECT_FALSE(Model.setData(Model.index(0, 1), "no"));
}

// A grid over a table with the fields A, B and C (and D for the tests that need an extra one).
class FieldSaveTest : public ::testing::Test {
protected:
    FieldSaveTest() {
        for (const char* name : {"A", "B", "C", "D"}) {
            DataSet.FieldDefs().Add(name, ftInteger);
        }
        DataSet.CreateDataSet();
        Source.SetDataSet(&DataSet);
        Grid.SetDataSource(&Source);
    }
    // Customized columns for the given fields ("" for an unbound column), widths 10, 20, 30, ...
    void Layout(const std::vector<std::string>& Names) {
        Grid.Columns().Clear();
        int width = 10;
        for (const std::string& name : Names) {
            TColumn* column = Grid.Columns().Add();
            column->SetFieldName(name);
            column->SetWidth(width);
            width += 10;
        }
    }
    std::vector<std::string> GridOrder() {
        std::vector<std::string> names;
        for (const auto& column : Grid.Columns()) {
            names.push_back(column->FieldName() + ":" + std::to_string(column->Width()));
        }
        return names;
    }
    std::vector<std::string> SavedOrder() {
        std::vector<std::string> names;
        for (int i = 0; i < Save.FieldCount(); ++i) {
            const TFieldSaveItem* item = Save.Fields(i);
            names.push_back(item->FieldName + "@" + std::to_string(item->Index) + ":" +
                            std::to_string(item->Width));
        }
        return names;
    }

    TMemDataSet DataSet{nullptr};
    TDataSource Source{nullptr};
    TExtDBGrid Grid;
    TFieldSave Save;
};

TEST_F(FieldSaveTest, CapturingFollowsTheGridAndRestoringMovesSavedColumns) {
    Layout({"A", "B", "C"});
    Save.GetInfoGrid(Grid);
    EXPECT_EQ(SavedOrder(), (std::vector<std::string>{"A@0:10", "B@1:20", "C@2:30"}));
    Grid.Columns()[2]->SetIndex(0);
    Grid.Columns()[0]->Title().SetCaption("Sea");
    Save.GetInfoGrid(Grid);
    EXPECT_EQ(SavedOrder(), (std::vector<std::string>{"C@0:30", "A@1:10", "B@2:20"}));
    EXPECT_EQ(Save.FieldByName("c")->Caption, "Sea");
    // The shown columns come in the grid's order among themselves; C, no longer shown, keeps its entry.
    Layout({"B", "A"});
    Save.GetInfoGrid(Grid);
    EXPECT_EQ(SavedOrder(), (std::vector<std::string>{"C@0:30", "B@0:10", "A@1:20"}));
    Save.Clear();
    EXPECT_EQ(Save.FieldCount(), 0);
    EXPECT_EQ(Save.FieldByName("A"), nullptr);
    Layout({"C", "A", "B"});
    Grid.Columns()[0]->SetWidth(33);
    Save.GetInfoGrid(Grid);
    Layout({"A", "B", "C"});
    Save.SetInfoGrid(Grid);
    EXPECT_EQ(GridOrder(), (std::vector<std::string>{"C:33", "A:20", "B:30"}));
    // A layout kept elsewhere and read back item by item restores the same way. Columns without an
    // entry (D, and an unbound one standing first) keep their width and let the saved ones pass.
    TFieldSave readBack;
    readBack.Add("B", "", 0, 44);
    readBack.Add("a", "", 1, 55);
    readBack.Add("B", "", 0, 66); // the same name again updates the entry
    Layout({"", "D", "A", "B"});
    readBack.SetInfoGrid(Grid);
    EXPECT_EQ(readBack.FieldCount(), 2);
    EXPECT_EQ(GridOrder(), (std::vector<std::string>{"B:66", "a:55", ":10", "D:20"}));
}

} // namespace
} // namespace quorda::gridtest
