// The Qt table model over a dataset, checked by Qt's own model tester while it fetches, edits and
// follows changes made elsewhere; saved column layouts captured from a grid and restored into one.
#include "grid_test_support.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

namespace quorda::gridtest {
namespace {

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
