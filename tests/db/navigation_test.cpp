// Bof/Eof transitions and the scroll events around them.

#include "db_test_support.h"
#include "quorda/rtl/application.h"

#include <gtest/gtest.h>

using namespace quorda;
using namespace quorda::dbtest;

namespace {

using Names = std::vector<std::string>;

TEST(Navigation, AnEmptyDatasetIsAtBothEndsAndStaysThere) {
    TMemDataSet dataSet(nullptr);
    std::vector<std::string> log;
    LogDataSetEvents(dataSet, log);
    FillNumbers(dataSet, 0);
    EXPECT_EQ(Position(dataSet), "bof eof");
    EXPECT_EQ(dataSet.RecordCount(), 0);
    EXPECT_TRUE(dataSet.FieldByName("ID")->IsNull());
    dataSet.Next();
    dataSet.Prior();
    dataSet.Last();
    EXPECT_EQ(Position(dataSet), "bof eof");
    EXPECT_TRUE(dataSet.GetBookmark().IsNil());
    EXPECT_EQ(dataSet.Bookmark(), "");
    // Opening an empty dataset reports no scroll to a record.
    log.clear();
    dataSet.Close();
    dataSet.Open();
    EXPECT_EQ(log, (Names{"BeforeClose", "AfterClose", "BeforeOpen", "AfterOpen"}));
}

TEST(Navigation, OneRowIsBothFirstAndLast) {
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 1);
    std::vector<std::string> log;
    LogDataSetEvents(dataSet, log);
    EXPECT_EQ(Position(dataSet), "bof 1");
    dataSet.Next();
    EXPECT_EQ(Position(dataSet), "1 eof");
    EXPECT_EQ(log, (Names{"BeforeScroll", "AfterScroll"}));
    // At the end a further Next announces the scroll but goes nowhere.
    log.clear();
    dataSet.Next();
    EXPECT_EQ(log, (Names{"BeforeScroll"}));
    dataSet.Prior();
    EXPECT_EQ(Position(dataSet), "bof 1");
}

TEST(Navigation, PriorAtTheFirstAndNextAtTheLastSetTheFlagsOnTheSameRecord) {
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 3);
    dataSet.Next();
    dataSet.Prior();
    EXPECT_EQ(Position(dataSet), "1");
    dataSet.Prior();
    EXPECT_EQ(Position(dataSet), "bof 1");
    dataSet.Last();
    EXPECT_EQ(Position(dataSet), "3 eof");
    dataSet.Prior();
    EXPECT_EQ(Position(dataSet), "2");
    dataSet.First();
    EXPECT_EQ(Position(dataSet), "bof 1");
}

TEST(Navigation, ClosedDatasetsRefuseToMoveAndOpenOnesRefuseStructureChanges) {
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
}

TEST(Navigation, OpeningWhileLoadingWaitsForTheEndOfLoading) {
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 2);
    dataSet.Close();
    dataSet.BeginLoading();
    dataSet.Open();
    EXPECT_FALSE(dataSet.Active());
    dataSet.EndLoading();
    EXPECT_TRUE(dataSet.Active());

    // In the designer a failing deferred open is reported instead of raised.
    std::vector<std::string> reported;
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

TEST(Navigation, RefreshKeepsTheCurrentRecordAndAnnouncesIt) {
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 5);
    dataSet.MoveBy(2);
    int refreshes = 0;
    dataSet.AfterRefresh = [&](TDataSet*) { ++refreshes; };
    dataSet.Refresh();
    EXPECT_EQ(CurrentId(dataSet), 3);
    EXPECT_EQ(refreshes, 1);
}

} // namespace
