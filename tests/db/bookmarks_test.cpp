// Bookmarks of the in-memory dataset: identity across scrolling, inserts and deletes.

#include "db_test_support.h"

#include <gtest/gtest.h>

using namespace quorda;
using namespace quorda::dbtest;

namespace {

TEST(Bookmarks, SurviveScrollingAndChangesToOtherRows) {
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 10);
    dataSet.MoveBy(6);
    TBookmark seventh = dataSet.GetBookmark();
    ASSERT_FALSE(seventh.IsNil());
    EXPECT_EQ(seventh.Size(), static_cast<std::size_t>(dataSet.BookmarkSize()));

    dataSet.First();
    dataSet.Insert();
    dataSet.FieldByName("ID")->SetAsInteger(100);
    dataSet.Post();
    dataSet.Last();
    dataSet.Delete();
    dataSet.First();
    dataSet.Next();
    dataSet.Delete();

    dataSet.GotoBookmark(seventh);
    EXPECT_EQ(CurrentId(dataSet), 7);
    EXPECT_EQ(dataSet.RecNo(), 7);
    EXPECT_TRUE(dataSet.BookmarkValid(seventh));
}

TEST(Bookmarks, ADeletedRowsBookmarkIsInvalidAndGoingThereRaises) {
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 3);
    dataSet.Next();
    TBookmark second = dataSet.GetBookmark();
    dataSet.Delete();
    EXPECT_FALSE(dataSet.BookmarkValid(second));
    dataSet.Last();
    EXPECT_EQ(MessageOf([&] { dataSet.GotoBookmark(second); }), SInvalidBookmark);
    EXPECT_EQ(CurrentId(dataSet), 3);
    // A nil bookmark goes nowhere.
    dataSet.GotoBookmark(TBookmark());
    EXPECT_EQ(CurrentId(dataSet), 3);
}

TEST(Bookmarks, CompareFollowsTheRowOrderNotTheOrderOfCreation) {
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 3);
    TBookmark first = dataSet.GetBookmark();
    dataSet.Last();
    TBookmark last = dataSet.GetBookmark();
    dataSet.First();
    dataSet.Insert();
    dataSet.FieldByName("ID")->SetAsInteger(0);
    dataSet.Post();
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
