// Grids over SQLite queries: a million-row result read a screen at a time and held in no more memory
// than the query alone, selections over rows whose bookmarks are numbered from either end, and
// Ctrl+Delete over the editable query.
#include "grid_test_support.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_query.h"
#include "quorda/ext/odbc_ext_dataset.h"

#include <fstream>
#include <quorda_test/profiles.h>
#include <quorda_test/raw_odbc.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorda::gridtest {
namespace {

// A query that counts the records the framework fetches and shows its ring.
template <class TQuery>
class TCounting : public TQuery {
public:
    using TDataSet::BufferCount;
    using TQuery::TQuery;

    int Reads = 0;

protected:
    TGetResult GetRecord(TRecordBuffer Buffer, TGetMode GetMode, bool DoCheck) override {
        ++Reads;
        return TQuery::GetRecord(Buffer, GetMode, DoCheck);
    }
};

// The resident size of this process in kB.
long ResidentKb() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:")) {
            return std::stol(line.substr(6));
        }
    }
    return -1;
}

// How much Body adds to the resident size, measured in a child forked from this process: the child
// starts from the same pages, and nothing it allocates stays behind here.
long ResidentGrowthInChild(const std::function<void()>& Body) {
    int fds[2];
    if (pipe(fds) != 0) {
        return -1;
    }
    const pid_t child = fork();
    if (child == 0) {
        close(fds[0]);
        const long before = ResidentKb();
        Body();
        const long growth = ResidentKb() - before;
        (void)!write(fds[1], &growth, sizeof growth);
        _exit(0);
    }
    close(fds[1]);
    long growth = -1;
    if (read(fds[0], &growth, sizeof growth) != static_cast<ssize_t>(sizeof growth)) {
        growth = -1;
    }
    close(fds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return growth;
}

// A multi-select grid of 25 rows over "select id, name from numbers order by id" on a new SQLite
// database.
template <class TQuery>
class SqliteGridOf : public ::testing::Test {
protected:
    void CreateTable(int Rows) {
        quorda_test::RawOdbc raw(Profile.ConnectionString);
        raw.Exec("create table numbers (id integer primary key, name varchar(20))");
        raw.Exec("with recursive n(x) as (select 1 union all select x + 1 from n where x < " +
                 std::to_string(Rows) + ") insert into numbers select x, 'row' || x from n");
    }
    void Connect(TODBCDataSet& DataSet) {
        if (!Db.Connected()) {
            Db.SetDriverConnectOption(dcoDriverNoPrompt);
            Db.SetConnectStr(Profile.ConnectionString);
            Db.Open();
        }
        DataSet.SetODBCDatabase(&Db);
        DataSet.SQL().SetText("select id, name from numbers order by id");
    }
    void ShowGrid() {
        Grid.resize(300, Grid.TitleRowHeight() + 25 * Grid.DefaultRowHeight() + 2 * Grid.frameWidth());
        TDBGridOptions options = Grid.Options();
        options.insert(dgMultiSelect);
        Grid.SetOptions(options);
        Grid.show();
    }
    void Open(int Rows) {
        CreateTable(Rows);
        Connect(Query);
        Source.SetDataSet(&Query);
        Grid.SetDataSource(&Source);
        ShowGrid();
        Query.Open();
    }
    ~SqliteGridOf() override { Grid.SetDataSource(nullptr); }
    int Id() { return Query.FieldByName("id")->AsInteger(); }
    // Paints the grid and returns how many records were fetched since the last call.
    int PaintAndCountReads() {
        (void)Grid.viewport()->grab();
        return std::exchange(Query.Reads, 0);
    }

    quorda_test::DataSourceProfile Profile = quorda_test::SqliteProfile();
    TODBCDatabase Db{nullptr};
    TCounting<TQuery> Query{nullptr};
    TDataSource Source{nullptr};
    TExtDBGrid Grid;
};

using SqliteGrid = SqliteGridOf<TODBCQuery>;
using EditableSqliteGrid = SqliteGridOf<TODBCExtQuery>;

TEST_F(SqliteGrid, AMillionRowsAreReadAScreenAtATimeInTheMemoryOfTheQueryAlone) {
    constexpr int rows = 1000000;
    CreateTable(rows);
    // The first paint of any widget loads fonts and styles: not a cost of the rows.
    ShowGrid();
    (void)Grid.viewport()->grab();
    const long queryAlone = ResidentGrowthInChild([this] {
        TODBCQuery plain(nullptr);
        Connect(plain);
        plain.Open();
        plain.Last();
        plain.First();
    });
    const long before = ResidentKb();

    Connect(Query);
    Source.SetDataSet(&Query);
    Grid.SetDataSource(&Source);
    Query.Open();
    const int screen = Grid.VisibleRowCount();
    EXPECT_EQ(Query.BufferCount(), screen);
    EXPECT_LE(PaintAndCountReads(), screen + 1);

    QTest::keyClick(&Grid, Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(Id(), rows);
    EXPECT_EQ(Grid.verticalScrollBar()->value(), 2); // not numbered: the bottom of three positions
    EXPECT_LE(PaintAndCountReads(), screen + 1);

    QTest::keyClick(&Grid, Qt::Key_PageUp);
    EXPECT_EQ(Id(), rows - screen);
    EXPECT_EQ(Grid.verticalScrollBar()->value(), 1);
    EXPECT_LE(PaintAndCountReads(), screen + 1);

    QTest::keyClick(&Grid, Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(Id(), 1);
    EXPECT_EQ(Grid.verticalScrollBar()->value(), 0);
    EXPECT_LE(PaintAndCountReads(), screen + 1);
    EXPECT_EQ(Query.BufferCount(), screen);
    // Both hold the driver's copy of the result; the grid adds one screen of buffers and its paint.
    const long withGrid = ResidentKb() - before;
    ASSERT_GT(queryAlone, 0);
    EXPECT_LT(withGrid - queryAlone, 8 * 1024)
        << "grid " << withGrid << " kB, query alone " << queryAlone << " kB";
}

TEST_F(SqliteGrid, ShiftSelectionSpansRowsNumberedFromEitherEnd) {
    Open(60);
    QTest::keyClick(&Grid, Qt::Key_Down);
    QTest::keyClick(&Grid, Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(&Grid, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(Grid.SelectedRows().Count(), 3);
    // The last rows are numbered from the end: the anchor (row 2) still orders before them.
    QTest::keyClick(&Grid, Qt::Key_End, Qt::ControlModifier);
    const QPoint row58 = Grid.CellRect(1, Grid.Row() - 2).center();
    QTest::mouseClick(Grid.viewport(), Qt::LeftButton, Qt::ShiftModifier, row58);
    EXPECT_EQ(Id(), 58);
    EXPECT_EQ(Grid.SelectedRows().Count(), 57);
    QTest::keyClick(&Grid, Qt::Key_Space, Qt::ControlModifier);
    EXPECT_EQ(Grid.SelectedRows().Count(), 56);
    EXPECT_FALSE(Grid.SelectedRows().CurrentRowSelected());
    Query.Prior();
    EXPECT_TRUE(Grid.SelectedRows().CurrentRowSelected());
}

TEST_F(EditableSqliteGrid, CtrlDeleteAsksTheSeveralRecordsQuestionAndDeletesTheThreeRows) {
    Open(12);
    TODBCQuery remove(nullptr);
    remove.SetODBCDatabase(&Db);
    remove.SQL().SetText("delete from numbers where id = :id");
    Query.OnDeleteRec = [&](TDataSet* DataSet, TUpdateKind, TUpdateAction&) {
        remove.ParamByName("id")->SetAsInteger(DataSet->FieldByName("id")->AsInteger());
        remove.ExecSQL();
    };
    TConfirmAnswers confirm;
    // Rows 3, 4 and 8: a range and a row added with Ctrl.
    for (int i = 0; i < 2; ++i) {
        QTest::keyClick(&Grid, Qt::Key_Down);
    }
    QTest::keyClick(&Grid, Qt::Key_Down, Qt::ShiftModifier);
    Query.MoveBy(4);
    QTest::keyClick(&Grid, Qt::Key_Space, Qt::ControlModifier);
    ASSERT_EQ(Grid.SelectedRows().Count(), 3);

    QTest::keyClick(&Grid, Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_EQ(confirm.Asked, std::vector<std::string>{SDeleteMultipleRecordsQuestion});
    EXPECT_EQ(Grid.SelectedRows().Count(), 0);
    EXPECT_EQ(quorda_test::RawOdbc(Profile.ConnectionString).Scalar("select group_concat(id) from numbers"),
              "1,2,5,6,7,9,10,11,12");
}

} // namespace
} // namespace quorda::gridtest
