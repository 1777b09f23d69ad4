// The Qt table model over a dataset, checked by Qt's own model tester while it fetches, edits and
// follows changes made elsewhere.
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

} // namespace
} // namespace quorda::gridtest
