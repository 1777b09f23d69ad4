// What is worked out per record: calculated fields (in dsCalcFields, refreshed on field changes),
// filtering through OnFilterRecord, and the sequential Locate and Lookup.

#include "db_test_support.h"

#include <gtest/gtest.h>

using namespace quorda;
using namespace quorda::dbtest;

namespace {

class CalcFieldsTest : public ::testing::Test {
protected:
    void SetUp() override {
        DataSet.FieldDefs().Add("ID", ftInteger);
        DataSet.FieldDefs().Add("NAME", ftString, 20);
        for (int i = 0; i < DataSet.FieldDefs().Count(); ++i) {
            DataSet.FieldDefs()[i]->CreateField(&DataSet);
        }
        Label->SetSize(30);
        for (TField* field : {static_cast<TField*>(Label), static_cast<TField*>(Twice)}) {
            field->SetFieldKind(fkCalculated);
            field->SetDataSet(&DataSet);
        }
        DataSet.OnCalcFields = [this](TDataSet* ds) {
            States.push_back(ds->State());
            TField* name = ds->FieldByName("NAME");
            Label->SetAsString(name->IsNull() ? "?" : name->AsString() + "!");
            Twice->SetAsInteger(ds->FieldByName("ID")->AsInteger() * 2);
        };
        DataSet.CreateDataSet();
        DataSet.AppendRecord({1, "one"});
        DataSet.AppendRecord({2, "two"});
        DataSet.First();
    }

    template <typename T>
    T* Named(const char* Name) {
        auto* field = new T(&DataSet);
        field->SetFieldName(Name);
        return field;
    }

    TMemDataSet DataSet{nullptr};
    TStringField* Label = Named<TStringField>("LABEL");
    TIntegerField* Twice = Named<TIntegerField>("TWICE");
    std::vector<TDataSetState> States;
};

TEST_F(CalcFieldsTest, ComputedForEveryFetchedRecordInTheirOwnState) {
    EXPECT_EQ(Label->FieldNo(), -1);
    EXPECT_EQ(Label->AsString(), "one!");
    DataSet.Next();
    EXPECT_EQ(Label->AsString(), "two!");
    EXPECT_EQ(Twice->AsInteger(), 4);
    EXPECT_EQ(States, std::vector<TDataSetState>(States.size(), dsCalcFields));
    EXPECT_FALSE(States.empty());
    EXPECT_EQ(DataSet.State(), dsBrowse);
    // A filter can test a calculated value.
    DataSet.OnFilterRecord = [this](TDataSet*, bool& Accept) { Accept = Label->AsString() == "two!"; };
    DataSet.SetFiltered(true);
    EXPECT_EQ(CurrentId(DataSet), 2);
    EXPECT_EQ(DataSet.RecordCount(), 1);
}

TEST_F(CalcFieldsTest, FollowTheRecordBeingEditedAndCannotWriteDataFields) {
    DataSet.Edit();
    DataSet.FieldByName("NAME")->SetAsString("uno");
    EXPECT_EQ(Label->AsString(), "uno!");
    DataSet.Cancel();
    EXPECT_EQ(Label->AsString(), "one!");
    // A new record has no calculated values until one of its fields changes.
    DataSet.Append();
    EXPECT_TRUE(Label->IsNull());
    DataSet.FieldByName("ID")->SetAsInteger(21);
    EXPECT_EQ(Label->AsString(), "?");
    EXPECT_EQ(Twice->AsInteger(), 42);
    DataSet.Cancel();
    DataSet.OnCalcFields = [](TDataSet* ds) { ds->FieldByName("NAME")->SetAsString("no"); };
    EXPECT_THROW(DataSet.Refresh(), EDatabaseError);
}

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

// Several keys, nulls and numbers; links hear only the outcome; Lookup reads without moving.
TEST_F(LocateTest, LocateMovesToTheMatchAndLookupReadsIt) {
    TDataSource source(nullptr);
    source.SetDataSet(&DataSet);
    std::vector<std::string> log;
    TRecordingLink link(log, "", 2, &source);
    const auto locate = [&](const char* Fields, const Variant& Values, TLocateOptions Options) {
        log.clear();
        const bool found = DataSet.Locate(Fields, Values, Options);
        return std::to_string(found) + "@" + std::to_string(CurrentId(DataSet));
    };
    EXPECT_EQ((Names{locate("NAME", "åNUND", {loCaseInsensitive}), locate("NAME", "And", {loPartialKey}),
                     locate("CITY;ID", VarArrayOf({"Oslo", 4}), {}), locate("city", Variant::Null(), {}),
                     locate("ID", 2.0, {}), locate("NAME", "Berit", {})}),
              (Names{"1@2", "0@2", "1@4", "1@3", "1@2", "1@4"}));
    EXPECT_EQ(log, (Names{"CheckBrowseMode", "DataSetChanged"}));
    EXPECT_EQ(link.ActiveValue("ID"), "4");
    EXPECT_THROW(DataSet.Locate("NOPE", 1, {}), EDatabaseError);
    DataSet.First();
    DataSet.Next();
    EXPECT_EQ(DataSet.Lookup("ID", 4, "NAME").AsString(), "Berit");
    Variant both = DataSet.Lookup("NAME", "Anna", "ID;CITY");
    EXPECT_EQ(both[0].AsInteger(), 1);
    EXPECT_EQ(both[1].AsString(), "Oslo");
    EXPECT_TRUE(VarIsNull(DataSet.Lookup("ID", 99, "NAME")));
    EXPECT_EQ(CurrentId(DataSet), 2);
}

} // namespace
