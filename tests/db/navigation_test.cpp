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
TEST(Navigation, ScrollEventsClosedAndLoadingDatasets) {
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
}

// Bookmarks survive changes to other rows and die with their own; comparing follows the row order,
// not the order of creation; the string form round trips.
TEST(Bookmarks, SurviveOtherRowsCompareInRowOrderAndRoundTripAsText) {
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 10);
    const TBookmark first = dataSet.GetBookmark();
    dataSet.MoveBy(6);
    const TBookmark seventh = dataSet.GetBookmark();
    ASSERT_FALSE(seventh.IsNil());
    EXPECT_EQ(seventh.Size(), static_cast<std::size_t>(dataSet.BookmarkSize()));
    dataSet.Prior();
    const TBookmark sixth = dataSet.GetBookmark();
    dataSet.Delete();
    dataSet.First();
    dataSet.InsertRecord({100});
    const TBookmark inserted = dataSet.GetBookmark();
    dataSet.Last();
    dataSet.Delete();
    dataSet.GotoBookmark(seventh);
    EXPECT_EQ(CurrentId(dataSet), 7);
    EXPECT_EQ(dataSet.RecNo(), 7);
    EXPECT_TRUE(dataSet.BookmarkValid(seventh));
    EXPECT_FALSE(dataSet.BookmarkValid(sixth));
    EXPECT_LT(dataSet.CompareBookmarks(inserted, first), 0);
    EXPECT_GT(dataSet.CompareBookmarks(seventh, inserted), 0);
    EXPECT_EQ(dataSet.CompareBookmarks(first, first), 0);
    EXPECT_EQ(dataSet.CompareBookmarks(TBookmark(), TBookmark()), 0);
    EXPECT_GT(dataSet.CompareBookmarks(TBookmark(), first), 0);
    EXPECT_LT(dataSet.CompareBookmarks(first, TBookmark()), 0);
    const TBookmarkStr asText = dataSet.Bookmark();
    dataSet.Last();
    EXPECT_EQ(MessageOf([&] { dataSet.GotoBookmark(sixth); }), SInvalidBookmark);
    EXPECT_EQ(CurrentId(dataSet), 9);
    // A nil bookmark goes nowhere.
    dataSet.GotoBookmark(TBookmark());
    EXPECT_EQ(CurrentId(dataSet), 9);
    dataSet.SetBookmark(asText);
    EXPECT_EQ(CurrentId(dataSet), 7);
    EXPECT_EQ(TBookmark(asText), dataSet.GetBookmark());
    // A new record has none.
    dataSet.Append();
    EXPECT_TRUE(dataSet.GetBookmark().IsNil());
    EXPECT_EQ(dataSet.Bookmark(), "");
}

} // namespace
