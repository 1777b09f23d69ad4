// A grid over a 100,000-row SQLite query reads no more rows than it shows, at either end.
#include "grid_test_support.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_query.h"

#include <quorda_test/profiles.h>
#include <quorda_test/raw_odbc.h>

namespace quorda::gridtest {
namespace {

// A query that counts the records the framework fetches and shows its ring.
class TCountingQuery : public TODBCQuery {
public:
    using TDataSet::BufferCount;
    using TODBCQuery::TODBCQuery;

    int Reads = 0;

protected:
    TGetResult GetRecord(TRecordBuffer Buffer, TGetMode GetMode, bool DoCheck) override {
        ++Reads;
        return TODBCQuery::GetRecord(Buffer, GetMode, DoCheck);
    }
};

constexpr int kRows = 100000;

TEST(GridLargeQuery, ReachesTheLastRowAndBackReadingAScreenAtATime) {
    const quorda_test::DataSourceProfile profile = quorda_test::SqliteProfile();
    {
        quorda_test::RawOdbc raw(profile.ConnectionString);
        raw.Exec("create table big_rows (id integer primary key, name varchar(20))");
        raw.Exec("with recursive n(x) as (select 1 union all select x + 1 from n where x < " +
                 std::to_string(kRows) + ") insert into big_rows select x, 'row' || x from n");
    }
    TODBCDatabase db(nullptr);
    db.SetDriverConnectOption(dcoDriverNoPrompt);
    db.SetConnectStr(profile.ConnectionString);
    db.Open();
    TCountingQuery query(nullptr);
    query.SetODBCDatabase(&db);
    query.SQL().SetText("select id, name from big_rows order by id");
    TDataSource source(nullptr);
    source.SetDataSet(&query);

    TExtDBGrid grid;
    grid.resize(300, grid.TitleRowHeight() + 25 * grid.DefaultRowHeight() + 2 * grid.frameWidth());
    grid.SetDataSource(&source);
    grid.show();
    query.Open();
    const int screen = grid.VisibleRowCount();
    auto id = [&query] { return query.FieldByName("id")->AsInteger(); };
    auto paintAndCountReads = [&] {
        (void)grid.viewport()->grab();
        return std::exchange(query.Reads, 0);
    };
    EXPECT_EQ(query.BufferCount(), screen);
    EXPECT_LE(paintAndCountReads(), screen + 1);

    QTest::keyClick(&grid, Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(id(), kRows);
    EXPECT_EQ(grid.verticalScrollBar()->value(), 2); // not numbered: the bottom of three positions
    EXPECT_LE(paintAndCountReads(), screen + 1);

    QTest::keyClick(&grid, Qt::Key_PageUp);
    EXPECT_EQ(id(), kRows - screen);
    EXPECT_EQ(grid.verticalScrollBar()->value(), 1);
    EXPECT_LE(paintAndCountReads(), screen + 1);

    QTest::keyClick(&grid, Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(id(), 1);
    EXPECT_EQ(grid.verticalScrollBar()->value(), 0);
    EXPECT_LE(paintAndCountReads(), screen + 1);
    EXPECT_EQ(query.BufferCount(), screen);
    grid.SetDataSource(nullptr);
}

} // namespace
} // namespace quorda::gridtest
