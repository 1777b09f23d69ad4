// Filtering through OnFilterRecord, and the sequential Locate and Lookup.

#include "db_test_support.h"

#include <gtest/gtest.h>

using namespace quorda;
using namespace quorda::dbtest;

namespace {

using Names = std::vector<std::string>;

TEST(Filter, HidesRejectedRowsFromNavigationCountsAndRecordNumbers) {
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 10);
    std::vector<TDataSetState> states;
    dataSet.OnFilterRecord = [&](TDataSet* ds, bool& Accept) {
        states.push_back(ds->State());
        Accept = ds->FieldByName("ID")->AsInteger() % 3 == 0;
    };
    dataSet.SetFiltered(true);
    EXPECT_EQ(Position(dataSet), "bof 3");
    ASSERT_FALSE(states.empty());
    EXPECT_EQ(states.front(), dsFilter);
    EXPECT_EQ(dataSet.State(), dsBrowse);
    EXPECT_EQ(dataSet.RecordCount(), 3);
    dataSet.Next();
    EXPECT_EQ(dataSet.RecNo(), 2);
    // A posted record that the filter rejects leaves the view.
    dataSet.Edit();
    dataSet.FieldByName("ID")->SetAsInteger(7);
    dataSet.Post();
    EXPECT_EQ(CurrentId(dataSet), 9);
    EXPECT_EQ(dataSet.RecordCount(), 2);

    dataSet.SetFiltered(false);
    EXPECT_EQ(CurrentId(dataSet), 1);
    EXPECT_EQ(dataSet.RecordCount(), 10);
}

class LocateTest : public ::testing::Test {
protected:
    void SetUp() override {
        DataSet.FieldDefs().Add("ID", ftInteger);
        DataSet.FieldDefs().Add("NAME", ftString, 20);
        DataSet.FieldDefs().Add("CITY", ftString, 20);
        DataSet.CreateDataSet();
        DataSet.AppendRecord({1, "Anna", "Oslo"});
        DataSet.AppendRecord({2, "Ånund", "Bergen"});
        DataSet.AppendRecord({3, "anders", Variant::Null()});
        DataSet.AppendRecord({4, "Berit", "Oslo"});
        DataSet.First();
    }

    TMemDataSet DataSet{nullptr};
};

TEST_F(LocateTest, SeveralKeysNullsAndNumbers) {
    EXPECT_TRUE(DataSet.Locate("NAME", "åNUND", {loCaseInsensitive}));
    EXPECT_EQ(CurrentId(DataSet), 2);
    EXPECT_FALSE(DataSet.Locate("NAME", "And", {loPartialKey}));
    EXPECT_EQ(CurrentId(DataSet), 2);
    EXPECT_TRUE(DataSet.Locate("CITY;ID", VarArrayOf({"Oslo", 4}), {}));
    EXPECT_EQ(CurrentId(DataSet), 4);
    EXPECT_TRUE(DataSet.Locate("city", Variant::Null(), {}));
    EXPECT_EQ(CurrentId(DataSet), 3);
    EXPECT_TRUE(DataSet.Locate("ID", 2.0, {}));
    EXPECT_EQ(CurrentId(DataSet), 2);
    EXPECT_THROW(DataSet.Locate("NOPE", 1, {}), EDatabaseError);
}

TEST_F(LocateTest, LinksHearOnlyTheOutcome) {
    TDataSource source(nullptr);
    source.SetDataSet(&DataSet);
    std::vector<std::string> log;
    TRecordingLink link(log, "", 2, &source);
    log.clear();
    EXPECT_TRUE(DataSet.Locate("NAME", "Berit", {}));
    EXPECT_EQ(log, (Names{"CheckBrowseMode", "DataSetChanged"}));
    EXPECT_EQ(link.ActiveValue("ID"), "4");
}

TEST_F(LocateTest, LookupReadsWithoutMoving) {
    DataSet.Next();
    EXPECT_EQ(DataSet.Lookup("ID", 4, "NAME").AsString(), "Berit");
    Variant both = DataSet.Lookup("NAME", "Anna", "ID;CITY");
    EXPECT_EQ(both[0].AsInteger(), 1);
    EXPECT_EQ(both[1].AsString(), "Oslo");
    EXPECT_TRUE(VarIsNull(DataSet.Lookup("ID", 99, "NAME")));
    EXPECT_EQ(CurrentId(DataSet), 2);
}

} // namespace
