// Bof/Eof transitions, the scroll events around them, what a closed or loading dataset allows, and
// bookmarks: identity across scrolling, inserts and deletes.

#include "db_test_support.h"
#include "quorda/rtl/application.h"

#include <gtest/gtest.h>

using namespace quorda;
using namespace quorda::dbtest;

namespace {

TEST(Navigation, ScrollEventsAnnounceOnlyMovesThatCanHappen) {
    TMemDataSet dataSet(nullptr);
    Names log;
    LogDataSetEvents(dataSet, log);
    FillNumbers(dataSet, 0);
    EXPECT_TRUE(dataSet.FieldByName("ID")->IsNull());
    EXPECT_TRUE(dataSet.GetBookmark().IsNil());
    // Opening an empty dataset reports no scroll to a record.
    log.clear();
    dataSet.Close();
    dataSet.Open();
    EXPECT_EQ(log, (Names{"BeforeClose", "AfterClose", "BeforeOpen", "AfterOpen"}));
    dataSet.AppendRecord({1, "one"});
    dataSet.First();
    log.clear();
    dataSet.Next();
    EXPECT_EQ(log, (Names{"BeforeScroll", "AfterScroll"}));
    // At the end a further Next announces the scroll but goes nowhere.
    log.clear();
    dataSet.Next();
    EXPECT_EQ(log, (Names{"BeforeScroll"}));
}

TEST(Navigation, ClosedDatasetsRefuseToMoveOpenOnesRefuseStructureChangesAndLoadingDefersOpening) {
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 2);
    dataSet.Close();
    EXPECT_EQ(MessageOf([&] { dataSet.Next(); }), SInactiveDataset);
    EXPECT_EQ(MessageOf([&] { dataSet.First(); }), SInactiveDataset);
    dataSet.Open();
    // Rows survive closing; fields cannot be attached to an open dataset.
    EXPECT_EQ(dataSet.RecordCount(), 2);
    TIntegerField extra(nullptr);
    extra.SetFieldName("EXTRA");
    EXPECT_THROW(extra.SetDataSet(&dataSet), EDatabaseError);
    // Opening while loading waits for the end of loading.
    dataSet.Close();
    dataSet.BeginLoading();
    dataSet.Open();
    EXPECT_FALSE(dataSet.Active());
    dataSet.EndLoading();
    EXPECT_TRUE(dataSet.Active());
    // In the designer a failing deferred open is reported instead of raised.
    Names reported;
    TExceptionHandler previous =
        Application::SetExceptionHandler([&](const std::exception& e) { reported.emplace_back(e.what()); });
    dataSet.Close();
    dataSet.FieldDefs().Add("BAD", ftCursor);
    dataSet.SetDesigning(true);
    dataSet.BeginLoading();
    dataSet.Open();
    EXPECT_NO_THROW(dataSet.EndLoading());
    Application::SetExceptionHandler(previous);
    EXPECT_FALSE(dataSet.Active());
    EXPECT_EQ(reported, (Names{"Unknown field type : BAD"}));
}

TEST(Bookmarks, SurviveChangesToOtherRowsAndDieWithTheirOwn) {
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 10);
    dataSet.MoveBy(6);
    TBookmark seventh = dataSet.GetBookmark();
    ASSERT_FALSE(seventh.IsNil());
    EXPECT_EQ(seventh.Size(), static_cast<std::size_t>(dataSet.BookmarkSize()));
    dataSet.Prior();
    TBookmark sixth = dataSet.GetBookmark();
    dataSet.Delete();
    dataSet.First();
    dataSet.InsertRecord({100});
    dataSet.Last();
    dataSet.Delete();
    dataSet.GotoBookmark(seventh);
    EXPECT_EQ(CurrentId(dataSet), 7);
    EXPECT_EQ(dataSet.RecNo(), 7);
    EXPECT_TRUE(dataSet.BookmarkValid(seventh));
    EXPECT_FALSE(dataSet.BookmarkValid(sixth));
    dataSet.Last();
    EXPECT_EQ(MessageOf([&] { dataSet.GotoBookmark(sixth); }), SInvalidBookmark);
    EXPECT_EQ(CurrentId(dataSet), 9);
    // A nil bookmark goes nowhere.
    dataSet.GotoBookmark(TBookmark());
    EXPECT_EQ(CurrentId(dataSet), 9);
}

// Comparing follows the row order, not the order of creation; the string form round trips.
TEST(Bookmarks, CompareFollowRowOrderAndStringsRoundTrip) {
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 4);
    TBookmark first = dataSet.GetBookmark();
    dataSet.Last();
    TBookmark last = dataSet.GetBookmark();
    dataSet.First();
    dataSet.InsertRecord({0});
    TBookmark inserted = dataSet.GetBookmark();
    EXPECT_LT(dataSet.CompareBookmarks(inserted, first), 0);
    EXPECT_GT(dataSet.CompareBookmarks(last, inserted), 0);
    EXPECT_EQ(dataSet.CompareBookmarks(first, first), 0);
    EXPECT_EQ(dataSet.CompareBookmarks(TBookmark(), TBookmark()), 0);
    EXPECT_GT(dataSet.CompareBookmarks(TBookmark(), first), 0);
    EXPECT_LT(dataSet.CompareBookmarks(first, TBookmark()), 0);
    dataSet.MoveBy(3);
    TBookmarkStr third = dataSet.Bookmark();
    dataSet.First();
    dataSet.SetBookmark(third);
    EXPECT_EQ(CurrentId(dataSet), 3);
    EXPECT_EQ(TBookmark(third), dataSet.GetBookmark());
    // A new record has none.
    dataSet.Append();
    EXPECT_TRUE(dataSet.GetBookmark().IsNil());
    EXPECT_EQ(dataSet.Bookmark(), "");
}

} // namespace
