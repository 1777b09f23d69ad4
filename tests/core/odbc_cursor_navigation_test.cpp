// Moving the cursor: both directions, the ring of a data link, row numbering from either end,
// bookmarks (also across a refresh and to rows that are gone), record counts and forward-only
// reading.

#include "odbc_cursor_fixture.h"
#include "quorda/db/db_consts.h"
#include "quorda/odbc/odbc_error.h"

#include <algorithm>
#include <numeric>

namespace quorda {
namespace {

using testing::CursorTest;
using testing::LinkedRing;
using testing::TProbeQuery;

int Id(TDataSet& DataSet) {
    return DataSet.FieldByName("id")->AsInteger();
}

// The ids of the records a data link sees, in window order.
std::vector<int> WindowIds(TDataLink& Link, TDataSet& DataSet) {
    std::vector<int> ids;
    const int active = Link.ActiveRecord();
    for (int i = 0; i < Link.RecordCount(); ++i) {
        Link.SetActiveRecord(i);
        ids.push_back(Id(DataSet));
    }
    Link.SetActiveRecord(active);
    return ids;
}

// The ids from the current row to the end.
std::vector<int> Walk(TDataSet& DataSet) {
    std::vector<int> ids;
    for (; !DataSet.Eof(); DataSet.Next()) {
        ids.push_back(Id(DataSet));
    }
    return ids;
}

// First..Last.
std::vector<int> Range(int First, int Last) {
    std::vector<int> ids(static_cast<std::size_t>(Last - First + 1));
    std::iota(ids.begin(), ids.end(), First);
    return ids;
}

class CursorNavigation : public CursorTest {};

TEST_P(CursorNavigation, MoveByCrossesTheRingOfADataLink) {
    TODBCQuery& query = Query("select id from " + NumberTable("nav_ring", 100) + " order by id");
    LinkedRing ring(query, 20);
    query.Open();
    EXPECT_EQ(WindowIds(ring.Link, query), Range(1, 20));
    EXPECT_EQ(query.MoveBy(35), 35);
    EXPECT_EQ(Id(query), 36);
    EXPECT_EQ(WindowIds(ring.Link, query), Range(17, 36));
    EXPECT_EQ(query.MoveBy(-30), -30);
    EXPECT_EQ(Id(query), 6);
    EXPECT_EQ(WindowIds(ring.Link, query), Range(6, 25));
    query.Last();
    EXPECT_EQ(WindowIds(ring.Link, query), Range(81, 100));
    EXPECT_EQ(query.MoveBy(-50), -50);
    EXPECT_EQ(Id(query), 50);
    EXPECT_EQ(query.MoveBy(60), 50);
    EXPECT_TRUE(query.Eof());
    EXPECT_EQ(Id(query), 100);
    query.First();
    EXPECT_EQ(WindowIds(ring.Link, query), Range(1, 20));
    EXPECT_EQ(query.MoveBy(-5), 0);
    EXPECT_TRUE(query.Bof());
}

TEST_P(CursorNavigation, BookmarksNumberedFromEitherEndSurviveARefresh) {
    TProbeQuery& query = Opened("select id from " + NumberTable("nav_bookmarks", 30) + " order by id");
    query.MoveBy(9);
    EXPECT_EQ(query.BookmarkPair(), std::make_pair(1, 9)); // the tenth row read forward
    const TBookmark forward = query.GetBookmark();
    query.Last();
    EXPECT_EQ(query.BookmarkPair(), std::make_pair(-1, 0));
    query.MoveBy(-4);
    EXPECT_EQ(query.BookmarkPair(), std::make_pair(-1, -4));
    const TBookmark fromEnd = query.GetBookmark();
    EXPECT_EQ(Id(query), 26);

    query.GotoBookmark(forward);
    EXPECT_EQ(Id(query), 10);
    query.GotoBookmark(fromEnd);
    EXPECT_EQ(Id(query), 26);
    query.Next();
    EXPECT_EQ(Id(query), 27);

    query.Refresh();
    EXPECT_EQ(Id(query), 27);
    query.GotoBookmark(forward);
    EXPECT_EQ(Id(query), 10);
    query.Prior();
    EXPECT_EQ(Id(query), 9);
    query.GotoBookmark(fromEnd);
    EXPECT_EQ(Id(query), 26);
}

TEST_P(CursorNavigation, BookmarksToRowsDeletedByAnotherConnection) {
    const std::string table = NumberTable("nav_deleted", 10);
    TProbeQuery& query = Opened("select id from " + table + " order by id");
    query.MoveBy(4);
    const TBookmark fifth = query.GetBookmark();
    query.MoveBy(5);
    const TBookmark tenth = query.GetBookmark();
    query.Last();
    query.MoveBy(-8);
    const TBookmark second = query.GetBookmark(); // numbered from the end
    EXPECT_EQ(query.BookmarkPair(), std::make_pair(-1, -8));
    query.First();
    Raw->Exec("delete from " + table + " where id = 5 or id > 7");
    // Without a refresh the cursor still holds the rows it was opened on: a static cursor is a
    // snapshot, a keyset keeps the deleted row's last values.
    query.GotoBookmark(fifth);
    EXPECT_EQ(Id(query), 5);
    // Re-executed, the fifth row is the old sixth, and a bookmark past either end of the shorter
    // result lands on the row at that end.
    query.Refresh();
    query.GotoBookmark(fifth);
    EXPECT_EQ(Id(query), 6);
    query.GotoBookmark(tenth);
    EXPECT_EQ(Id(query), 7);
    EXPECT_EQ(query.BookmarkPair(), std::make_pair(-1, 0));
    query.GotoBookmark(second); // psqlODBC itself places a fetch before the start on the first row
    EXPECT_EQ(Id(query), 1);
}

TEST_P(CursorNavigation, RecordCountsByStepsAndByProbes) {
    for (int rows : {0, 1, 100, 101, 10000}) {
        SCOPED_TRACE(rows);
        const std::string table = NumberTable("nav_count", rows);
        TODBCQuery& stepped = Opened("select id from " + table + " order by id");
        if (rows > 0) {
            // Rows past 4095 were once numbered from 0 again: bookmarks and counts taken there went
            // to rows near the start.
            const int step = rows > 4500 ? 4500 : rows > 2 ? 2 : 0;
            EXPECT_EQ(stepped.MoveBy(step), step);
            const TBookmark mark = stepped.GetBookmark();
            stepped.First();
            stepped.GotoBookmark(mark);
            EXPECT_EQ(stepped.RecordCount(), rows);
            EXPECT_EQ(Id(stepped), step + 1); // the count left the cursor where it was
            stepped.Next();
            EXPECT_EQ(Id(stepped), std::min(step + 2, rows));
        } else {
            EXPECT_EQ(stepped.RecordCount(), 0);
        }
        TODBCQuery& probed = Opened("select id from " + table + " order by id");
        if (rows > 0) {
            probed.Last();
            probed.Prior();
        }
        EXPECT_EQ(probed.GetRecordCountExt(), rows);
        EXPECT_EQ(probed.RecordCount(), rows); // cached
        if (rows > 1) {
            EXPECT_EQ(Id(probed), rows - 1);
            probed.Next();
            EXPECT_EQ(Id(probed), rows);
        }
    }
}

TEST_P(CursorNavigation, ForwardOnlyStepsBackByMovingOnAndFillsARingLargerThanTheResult) {
    const std::string table = NumberTable("nav_forward", 8);
    TODBCQuery& query = Query("select id from " + table + " order by id");
    query.SetUniDirectional(true);
    query.Open();
    query.Next();
    query.Next();
    EXPECT_EQ(Id(query), 3);
    // A statement that has run keeps its cursor type, and its steps keep their fetch call.
    EXPECT_ANY_THROW(query.SetUniDirectional(false));
    // A forward-only cursor cannot go back: the step fetches the next row instead.
    query.Prior();
    EXPECT_EQ(Walk(query), Range(4, 8));
    // Its start is reached by running the statement again; scrolling anywhere else is refused.
    query.First();
    EXPECT_EQ(Walk(query), Range(1, 8));
    EXPECT_EQ(testing::ErrorOf([&] { query.Last(); }), SUniDirectional);

    // Filling a ring that the rows do not fill steps back from the end. A forward-only cursor that has
    // reported its end answers that step itself: the driver manager refuses a fetch after the rowset
    // fetch's SQL_NO_DATA (S1010), which failed the open.
    TODBCQuery& rowsets = Query("select id from " + table + " where id <= 5 order by id");
    rowsets.SetUniDirectional(true);
    rowsets.SetBlockCursor(true);
    rowsets.SetRowSetSize(3);
    LinkedRing ring(rowsets, 20);
    rowsets.Open();
    EXPECT_EQ(WindowIds(ring.Link, rowsets), Range(1, 5));
}

TEST_P(CursorNavigation, LocateWithAndWithoutItsOptions) {
    const std::string table =
        MakeTable("nav_locate", "id integer, name varchar(20), city varchar(20)",
                  "(1, 'Anna', 'Oslo'), (2, 'anders', 'Bergen'), (3, 'Björn', 'Oslo'), (4, 'björk', 'Umeå')");
    TODBCQuery& query = Opened("select * from " + table + " order by id");
    query.Next();
    int scrolled = 0;
    query.AfterScroll = [&](TDataSet*) { ++scrolled; };
    EXPECT_TRUE(query.Locate("id", Variant(1), {}));
    EXPECT_EQ(scrolled, 2); // First's and the one of the successful locate
    query.AfterScroll = nullptr;

    struct Case {
        std::string Fields;
        Variant Values;
        TLocateOptions Options;
        bool Found;
        int Id; // where the cursor stands afterwards: a failed locate leaves it where it was
    };
    // The matching rules themselves are the framework's (LocateTest); here they reach the cursor.
    const Case cases[] = {
        {"name", Variant("BJÖRK"), {}, false, 1},
        {"name", Variant("BJÖRK"), {loCaseInsensitive}, true, 4},
        {"name", Variant("an"), {loCaseInsensitive, loPartialKey}, true, 1},
        {"name;city", VarArrayOf({Variant("Björn"), Variant("Oslo")}), {}, true, 3},
        {"name;city", VarArrayOf({Variant("Björn"), Variant("Bergen")}), {}, false, 3},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(query.Locate(c.Fields, c.Values, c.Options), c.Found) << c.Fields << " " << c.Id;
        EXPECT_EQ(Id(query), c.Id);
    }
    EXPECT_TRUE(query.Locate("id", Variant(2), {}));
    EXPECT_EQ(query.FieldByName("city")->AsString(), "Bergen");
}

TEST_P(CursorNavigation, FindRecordByValuesFromTheStartOrAfterTheCurrentRow) {
    const std::string table = MakeTable("nav_find", "id integer, kind varchar(10), size integer",
                                        "(1, 'a', 1), (2, 'b', 2), (3, 'a', 2), (4, 'a', 1), (5, 'b', 1)");
    TODBCQuery& query = Opened("select * from " + table + " order by id");
    EXPECT_TRUE(query.FindRecordByValues({"kind", "size"}, {Variant("a"), Variant(1)}, true));
    EXPECT_EQ(Id(query), 1);
    EXPECT_TRUE(query.FindRecordByValues({"kind", "size"}, {Variant("a"), Variant(1)}, false));
    EXPECT_EQ(Id(query), 4);
    EXPECT_FALSE(query.FindRecordByValues({"kind", "size"}, {Variant("a"), Variant(1)}, false));
    EXPECT_EQ(Id(query), 4);
    EXPECT_FALSE(query.FindRecordByValues({"kind"}, {Variant("c")}, true));
    EXPECT_EQ(Id(query), 4);
    EXPECT_EQ(testing::ErrorOf([&] {
                  query.FindRecordByValues({"kind", "size"}, {Variant("a")}, true);
              }),
              "ODBC Fields and values are not correct");
}

INSTANTIATE_TEST_SUITE_P(Drivers, CursorNavigation, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda
