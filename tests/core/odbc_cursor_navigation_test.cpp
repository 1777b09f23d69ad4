// Moving the cursor: both directions, the ring of a data link, row numbering from either end,
// bookmarks (also across a refresh and to rows that are gone), record counts, filters and
// forward-only reading.

#include "odbc_cursor_fixture.h"
#include "quorda/db/data_link.h"
#include "quorda/db/data_source.h"
#include "quorda/odbc/odbc_error.h"

namespace quorda {
namespace {

using testing::CursorTest;
using testing::IsSqlite;
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

std::vector<int> Range(int First, int Last) {
    std::vector<int> ids;
    for (int i = First; i <= Last; ++i) {
        ids.push_back(i);
    }
    return ids;
}

class CursorNavigation : public CursorTest {};

TEST_P(CursorNavigation, StepsForwardAndBackAcrossBothEnds) {
    TODBCQuery& query = Query("select id, name from " + NumberTable("nav_steps", 5) + " order by id");
    query.Open();
    EXPECT_TRUE(query.Bof());
    std::vector<int> seen;
    while (!query.Eof()) {
        seen.push_back(Id(query));
        query.Next();
    }
    EXPECT_EQ(seen, Range(1, 5));
    EXPECT_EQ(Id(query), 5);
    seen.clear();
    while (!query.Bof()) {
        seen.push_back(Id(query));
        query.Prior();
    }
    EXPECT_EQ(seen, (std::vector<int>{5, 4, 3, 2, 1}));
    query.Last();
    EXPECT_EQ(Id(query), 5);
    EXPECT_TRUE(query.Eof());
    query.Prior();
    EXPECT_EQ(Id(query), 4);
    query.First();
    EXPECT_EQ(Id(query), 1);
    EXPECT_TRUE(query.Bof());
    query.Next();
    EXPECT_EQ(query.FieldByName("name")->AsString(), "row2");
    EXPECT_EQ(query.RecNo(), -1);
}

TEST_P(CursorNavigation, MoveByCrossesTheRingOfADataLink) {
    TODBCQuery& query = Query("select id from " + NumberTable("nav_ring", 100) + " order by id");
    TDataSource source(nullptr);
    source.SetDataSet(&query);
    TDataLink link;
    link.SetDataSource(&source);
    link.SetBufferCount(20);
    query.Open();
    EXPECT_EQ(WindowIds(link, query), Range(1, 20));

    EXPECT_EQ(query.MoveBy(35), 35);
    EXPECT_EQ(Id(query), 36);
    EXPECT_EQ(WindowIds(link, query), Range(17, 36));
    EXPECT_EQ(query.MoveBy(-30), -30);
    EXPECT_EQ(Id(query), 6);
    EXPECT_EQ(WindowIds(link, query), Range(6, 25));
    query.Last();
    EXPECT_EQ(WindowIds(link, query), Range(81, 100));
    EXPECT_EQ(query.MoveBy(-50), -50);
    EXPECT_EQ(Id(query), 50);
    EXPECT_EQ(query.MoveBy(60), 50);
    EXPECT_TRUE(query.Eof());
    EXPECT_EQ(Id(query), 100);
    query.First();
    EXPECT_EQ(WindowIds(link, query), Range(1, 20));
    link.SetDataSource(nullptr);
}

TEST_P(CursorNavigation, RowsAreNumberedFromTheEndTheyWereReachedFrom) {
    TProbeQuery& query = Query("select id from " + NumberTable("nav_numbers", 6) + " order by id");
    query.Open();
    query.Next();
    query.Next();
    EXPECT_EQ(query.BookmarkPair(), std::make_pair(1, 2)); // the third row read forward
    query.Last();
    EXPECT_EQ(query.BookmarkPair(), std::make_pair(-1, 0));
    query.Prior();
    query.Prior();
    EXPECT_EQ(Id(query), 4);
    EXPECT_EQ(query.BookmarkPair(), std::make_pair(-1, -2));
}

TEST_P(CursorNavigation, BookmarksFromEitherEndSurviveARefresh) {
    TODBCQuery& query = Query("select id from " + NumberTable("nav_bookmarks", 30) + " order by id");
    query.Open();
    query.MoveBy(9);
    const TBookmark forward = query.GetBookmark();
    query.Last();
    query.MoveBy(-4);
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

TEST_P(CursorNavigation, BookmarksBeyondRow4095KeepTheirRow) {
    TODBCQuery& query = Query("select id from " + NumberTable("nav_far", 5000) + " order by id");
    query.Open();
    EXPECT_EQ(query.MoveBy(4500), 4500);
    EXPECT_EQ(Id(query), 4501);
    const TBookmark far = query.GetBookmark();
    query.First();
    query.GotoBookmark(far);
    EXPECT_EQ(Id(query), 4501);
    EXPECT_EQ(query.RecordCount(), 5000);
    query.Next();
    EXPECT_EQ(Id(query), 4502); // the count left the cursor where it was
}

TEST_P(CursorNavigation, BookmarkPastTheEndOfAShorterResultLandsOnTheLastRow) {
    const std::string table = NumberTable("nav_shrink", 10);
    TProbeQuery& query = Query("select id from " + table + " order by id");
    query.Open();
    query.MoveBy(9);
    const TBookmark tenth = query.GetBookmark();
    Raw->Exec("delete from " + table + " where id > 5");
    query.Refresh();
    query.GotoBookmark(tenth);
    EXPECT_EQ(Id(query), 5);
    EXPECT_EQ(query.BookmarkPair(), std::make_pair(-1, 0));
}

TEST_P(CursorNavigation, RowDeletedByAnotherConnection) {
    const std::string table = NumberTable("nav_deleted", 10);
    TODBCQuery& query = Query("select id from " + table + " order by id");
    query.Open();
    query.MoveBy(4);
    const TBookmark fifth = query.GetBookmark();
    query.First();
    Raw->Exec("delete from " + table + " where id = 5");
    // Without a refresh the cursor still numbers the rows it was opened on.
    // Without a refresh the cursor still holds the rows it was opened on: a static cursor is a
    // snapshot, a keyset keeps the deleted row's last values.
    query.GotoBookmark(fifth);
    EXPECT_EQ(Id(query), 5);
    // Re-executed, the fifth row is the old sixth.
    query.Refresh();
    query.GotoBookmark(fifth);
    EXPECT_EQ(Id(query), 6);
}

TEST_P(CursorNavigation, RecordCountsByStepsAndByProbes) {
    for (int rows : {0, 1, 100, 101, 10000}) {
        SCOPED_TRACE(rows);
        const std::string table = NumberTable("nav_count", rows);
        TODBCQuery& stepped = Query("select id from " + table + " order by id");
        stepped.Open();
        if (rows > 2) {
            stepped.MoveBy(2);
        }
        EXPECT_EQ(stepped.RecordCount(), rows);
        if (rows > 2) {
            EXPECT_EQ(Id(stepped), 3);
            stepped.Next();
            EXPECT_EQ(Id(stepped), 4);
        }
        TODBCQuery& probed = Query("select id from " + table + " order by id");
        probed.Open();
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

TEST_P(CursorNavigation, FilterSkipsRowsInBothDirections) {
    TODBCQuery& query = Query("select id from " + NumberTable("nav_filter", 10) + " order by id");
    query.OnFilterRecord = [](TDataSet* DataSet, bool& Accept) {
        Accept = DataSet->FieldByName("id")->AsInteger() % 3 == 0;
    };
    query.SetFiltered(true);
    query.Open();
    std::vector<int> seen;
    while (!query.Eof()) {
        seen.push_back(Id(query));
        query.Next();
    }
    EXPECT_EQ(seen, (std::vector<int>{3, 6, 9}));
    query.Prior();
    EXPECT_EQ(Id(query), 6);

    query.OnFilterRecord = [](TDataSet*, bool& Accept) { Accept = false; };
    query.First();
    EXPECT_TRUE(query.Eof());
    EXPECT_TRUE(query.IsEmpty());
}

TEST_P(CursorNavigation, ForwardOnlyReadsEveryRowAndAStepBackMovesOn) {
    TODBCQuery& query = Query("select id from " + NumberTable("nav_forward", 8) + " order by id");
    query.SetUniDirectional(true);
    query.Open();
    EXPECT_EQ(Id(query), 1);
    query.Next();
    query.Next();
    EXPECT_EQ(Id(query), 3);
    // A forward-only cursor cannot go back: the step fetches the next row instead.
    query.Prior();
    EXPECT_EQ(Id(query), 4);
    std::vector<int> rest;
    while (!query.Eof()) {
        rest.push_back(Id(query));
        query.Next();
    }
    EXPECT_EQ(rest, Range(4, 8));
}

TEST_P(CursorNavigation, RowsetCursorUnderARingLargerThanTheResultCannotStepBack) {
    // Filling a ring that the rows do not fill steps back from the end; a forward-only cursor steps
    // with SQLFetch, which the driver manager refuses after the rowset fetches.
    TODBCQuery& query = Query("select id from " + NumberTable("nav_rowset_ring", 5) + " order by id");
    query.SetUniDirectional(true);
    query.SetBlockCursor(true);
    query.SetRowSetSize(3);
    TDataSource source(nullptr);
    source.SetDataSet(&query);
    TDataLink link;
    link.SetDataSource(&source);
    link.SetBufferCount(20);
    try {
        query.Open();
        FAIL() << "opened";
    } catch (const EODBCError& e) {
        EXPECT_EQ(e.SQLState().substr(0, 5), "S1010");
    }
    EXPECT_FALSE(query.Active());
    link.SetBufferCount(5); // a ring the rows fill opens
    query.Open();
    EXPECT_EQ(WindowIds(link, query), Range(1, 5));
    link.SetDataSource(nullptr);
}

TEST_P(CursorNavigation, LocateWithAndWithoutItsOptions) {
    const std::string table = quorda_test::UniqueTableName("nav_locate");
    Raw->Exec("create table " + table + " (id integer, name varchar(20), city varchar(20))");
    Raw->Exec(
        "insert into " + table +
        " values (1, 'Anna', 'Oslo'), (2, 'anders', 'Bergen'), (3, 'Björn', 'Oslo'), (4, 'björk', 'Umeå')");
    TODBCQuery& query = Query("select * from " + table + " order by id");
    query.Open();
    query.Next();
    int scrolled = 0;
    query.AfterScroll = [&](TDataSet*) { ++scrolled; };
    EXPECT_TRUE(query.Locate("id", Variant(1), {}));
    EXPECT_EQ(scrolled, 2); // First's and the one of the successful locate
    query.AfterScroll = nullptr;

    EXPECT_TRUE(query.Locate("name", Variant("björk"), {}));
    EXPECT_EQ(Id(query), 4);
    EXPECT_FALSE(query.Locate("name", Variant("BJÖRK"), {}));
    EXPECT_EQ(Id(query), 4); // not found: back where it was
    EXPECT_TRUE(query.Locate("name", Variant("BJÖRK"), {loCaseInsensitive}));
    EXPECT_EQ(Id(query), 4);
    EXPECT_TRUE(query.Locate("name", Variant("an"), {loCaseInsensitive, loPartialKey}));
    EXPECT_EQ(Id(query), 1);
    EXPECT_TRUE(query.Locate("name", Variant("an"), {loPartialKey}));
    EXPECT_EQ(Id(query), 2);
    EXPECT_TRUE(query.Locate("name;city", VarArrayOf({Variant("Björn"), Variant("Oslo")}), {}));
    EXPECT_EQ(Id(query), 3);
    EXPECT_FALSE(query.Locate("name;city", VarArrayOf({Variant("Björn"), Variant("Bergen")}), {}));
    EXPECT_EQ(Id(query), 3);
    EXPECT_TRUE(query.Locate("id", Variant(2), {}));
    EXPECT_EQ(query.FieldByName("city")->AsString(), "Bergen");
}

TEST_P(CursorNavigation, FindRecordByValuesFromTheStartOrAfterTheCurrentRow) {
    const std::string table = quorda_test::UniqueTableName("nav_find");
    Raw->Exec("create table " + table + " (id integer, kind varchar(10), size integer)");
    Raw->Exec("insert into " + table +
              " values (1, 'a', 1), (2, 'b', 2), (3, 'a', 2), (4, 'a', 1), (5, 'b', 1)");
    TODBCQuery& query = Query("select * from " + table + " order by id");
    query.Open();
    EXPECT_TRUE(query.FindRecordByValues({"kind", "size"}, {Variant("a"), Variant(1)}, true));
    EXPECT_EQ(Id(query), 1);
    EXPECT_TRUE(query.FindRecordByValues({"kind", "size"}, {Variant("a"), Variant(1)}, false));
    EXPECT_EQ(Id(query), 4);
    EXPECT_FALSE(query.FindRecordByValues({"kind", "size"}, {Variant("a"), Variant(1)}, false));
    EXPECT_EQ(Id(query), 4);
    EXPECT_FALSE(query.FindRecordByValues({"kind"}, {Variant("c")}, true));
    EXPECT_EQ(Id(query), 4);
    try {
        query.FindRecordByValues({"kind", "size"}, {Variant("a")}, true);
        FAIL() << "arrays of different length accepted";
    } catch (const EDatabaseError& e) {
        EXPECT_EQ(e.Message(), "ODBC Fields and values are not correct");
    }
}

INSTANTIATE_TEST_SUITE_P(Drivers, CursorNavigation, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda
