// Bookmarks of the in-memory dataset: identity across scrolling, inserts and deletes.

#include "db_test_support.h"

#include <gtest/gtest.h>

using namespace quorda;
using namespace quorda::dbtest;

namespace {

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

TEST(Bookmarks, CompareFollowsTheRowOrderNotTheOrderOfCreation) {
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 3);
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
}

TEST(Bookmarks, StringsOfTheBytesRoundTripAndANewRecordHasNone) {
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 4);
    dataSet.MoveBy(2);
    TBookmarkStr third = dataSet.Bookmark();
    dataSet.First();
    dataSet.SetBookmark(third);
    EXPECT_EQ(CurrentId(dataSet), 3);
    EXPECT_EQ(TBookmark(third), dataSet.GetBookmark());
    dataSet.Append();
    EXPECT_TRUE(dataSet.GetBookmark().IsNil());
    EXPECT_EQ(dataSet.Bookmark(), "");
}

} // namespace
