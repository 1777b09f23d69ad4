// Bof/Eof transitions, the scroll events around them, what a closed or loading dataset allows, and
// bookmarks: identity across scrolling, inserts and deletes.

#include "db_test_support.h"
#include "quorda/rtl/application.h"

#include <gtest/gtest.h>

using namespace quorda;
using namespace quorda::dbtest;

namespace {

// Scroll events announce only moves that can happen; closed datasets refuse to move, open ones
// refuse structure changes, and loading defers opening.
TEST(Navigation, ScrollEventsClosedAndLoadingDatasetsAndBookmarks) {
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
    dataSet.Close();
    EXPECT_EQ(MessageOf([&] { dataSet.Next(); }), SInactiveDataset);
    EXPECT_EQ(MessageOf([&] { dataSet.First(); }), SInactiveDataset);
    dataSet.Open();
    // Rows survive closing; fields cannot be attached to an open dataset.
    EXPECT_EQ(dataSet.RecordCount(), 1);
    TIntegerField extra(nullptr);
    extra.SetFieldName("EXTRA");
    EXPECT_THROW(extra.SetDataSet(&dataSet), EDatabaseError);
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
    // Bookmarks survive changes to other rows and die with their own; comparing follows the row order,
    // not the order of creation; the string form round trips.
    TMemDataSet rows(nullptr);
    FillNumbers(rows, 10);
    const TBookmark first = rows.GetBookmark();
    rows.MoveBy(6);
    const TBookmark seventh = rows.GetBookmark();
    ASSERT_FALSE(seventh.IsNil());
    EXPECT_EQ(seventh.Size(), static_cast<std::size_t>(rows.BookmarkSize()));
    rows.Prior();
    const TBookmark sixth = rows.GetBookmark();
    rows.Delete();
    rows.First();
    rows.InsertRecord({100});
    const TBookmark inserted = rows.GetBookmark();
    rows.Last();
    rows.Delete();
    rows.GotoBookmark(seventh);
    EXPECT_EQ(CurrentId(rows), 7);
    EXPECT_EQ(rows.RecNo(), 7);
    EXPECT_TRUE(rows.BookmarkValid(seventh));
    EXPECT_FALSE(rows.BookmarkValid(sixth));
    EXPECT_LT(rows.CompareBookmarks(inserted, first), 0);
    EXPECT_GT(rows.CompareBookmarks(seventh, inserted), 0);
    EXPECT_EQ(rows.CompareBookmarks(first, first), 0);
    EXPECT_EQ(rows.CompareBookmarks(TBookmark(), TBookmark()), 0);
    EXPECT_GT(rows.CompareBookmarks(TBookmark(), first), 0);
    EXPECT_LT(rows.CompareBookmarks(first, TBookmark()), 0);
    const TBookmarkStr asText = rows.Bookmark();
    rows.Last();
    EXPECT_EQ(MessageOf([&] { rows.GotoBookmark(sixth); }), SInvalidBookmark);
    EXPECT_EQ(CurrentId(rows), 9);
    // A nil bookmark goes nowhere.
    rows.GotoBookmark(TBookmark());
    EXPECT_EQ(CurrentId(rows), 9);
    rows.SetBookmark(asText);
    EXPECT_EQ(CurrentId(rows), 7);
    EXPECT_EQ(TBookmark(asText), rows.GetBookmark());
    // A new record has none.
    rows.Append();
    EXPECT_TRUE(rows.GetBookmark().IsNil());
    EXPECT_EQ(rows.Bookmark(), "");
}

} // namespace
