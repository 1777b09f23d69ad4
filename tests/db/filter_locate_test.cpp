// What is worked out per record: calculated fields (in dsCalcFields, refreshed on field changes),
// filtering through OnFilterRecord, and the sequential Locate and Lookup.

#include "db_test_support.h"

#include <gtest/gtest.h>

using namespace quorda;
using namespace quorda::dbtest;

namespace {

// Calculated fields are computed for every fetched record in their own state, follow the record
// being edited, can be tested by a filter and cannot write data fields.
TEST(CalcFields, ComputedPerRecordInTheirOwnState) {
    TMemDataSet dataSet(nullptr);
    dataSet.FieldDefs().Add("ID", ftInteger);
    dataSet.FieldDefs().Add("NAME", ftString, 20);
    for (int i = 0; i < dataSet.FieldDefs().Count(); ++i) {
        dataSet.FieldDefs()[i]->CreateField(&dataSet);
    }
    auto* label = new TStringField(&dataSet);
    auto* twice = new TIntegerField(&dataSet);
    label->SetSize(30);
    for (auto [field, name] : {std::pair<TField*, const char*>{label, "LABEL"}, {twice, "TWICE"}}) {
        field->SetFieldName(name);
        field->SetFieldKind(fkCalculated);
        field->SetDataSet(&dataSet);
    }
    std::vector<TDataSetState> states;
    dataSet.OnCalcFields = [&](TDataSet* ds) {
        states.push_back(ds->State());
        TField* name = ds->FieldByName("NAME");
        label->SetAsString(name->IsNull() ? "?" : name->AsString() + "!");
        twice->SetAsInteger(ds->FieldByName("ID")->AsInteger() * 2);
    };
    dataSet.CreateDataSet();
    dataSet.AppendRecord({1, "one"});
    dataSet.AppendRecord({2, "two"});
    dataSet.First();
    EXPECT_EQ(label->FieldNo(), -1);
    EXPECT_EQ(label->AsString(), "one!");
    dataSet.Next();
    EXPECT_EQ(label->AsString(), "two!");
    EXPECT_EQ(twice->AsInteger(), 4);
    EXPECT_EQ(states, std::vector<TDataSetState>(states.size(), dsCalcFields));
    EXPECT_FALSE(states.empty());
    EXPECT_EQ(dataSet.State(), dsBrowse);
    dataSet.Edit();
    dataSet.FieldByName("NAME")->SetAsString("deux");
    EXPECT_EQ(label->AsString(), "deux!");
    dataSet.Cancel();
    EXPECT_EQ(label->AsString(), "two!");
    // A new record has no calculated values until one of its fields changes.
    dataSet.Append();
    EXPECT_TRUE(label->IsNull());
    dataSet.FieldByName("ID")->SetAsInteger(21);
    EXPECT_EQ(label->AsString(), "?");
    EXPECT_EQ(twice->AsInteger(), 42);
    dataSet.Cancel();
    dataSet.OnFilterRecord = [&](TDataSet*, bool& Accept) { Accept = label->AsString() == "two!"; };
    dataSet.SetFiltered(true);
    EXPECT_EQ(CurrentId(dataSet), 2);
    EXPECT_EQ(dataSet.RecordCount(), 1);
    dataSet.OnCalcFields = [](TDataSet* ds) { ds->FieldByName("NAME")->SetAsString("no"); };
    EXPECT_THROW(dataSet.Refresh(), EDatabaseError);
}

TEST(Filter, HidesRejectedRowsAndLocateAndLookupFindThem) {
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
    // Several keys, nulls and numbers; links hear only the outcome; Lookup reads without moving.
    TMemDataSet people(nullptr);
    people.FieldDefs().Add("ID", ftInteger);
    people.FieldDefs().Add("NAME", ftString, 20);
    people.FieldDefs().Add("CITY", ftString, 20);
    people.CreateDataSet();
    people.AppendRecord({1, "Anna", "Oslo"});
    people.AppendRecord({2, "Ånund", "Bergen"});
    people.AppendRecord({3, "anders", Variant::Null()});
    people.AppendRecord({4, "Berit", "Oslo"});
    people.First();
    TDataSource source(nullptr);
    source.SetDataSet(&people);
    std::vector<std::string> log;
    TRecordingLink link(log, "", 2, &source);
    const auto locate = [&](const char* Fields, const Variant& Values, TLocateOptions Options) {
        log.clear();
        const bool found = people.Locate(Fields, Values, Options);
        return std::to_string(found) + "@" + std::to_string(CurrentId(people));
    };
    EXPECT_EQ((Names{locate("NAME", "åNUND", {loCaseInsensitive}), locate("NAME", "And", {loPartialKey}),
                     locate("CITY;ID", VarArrayOf({"Oslo", 4}), {}), locate("city", Variant::Null(), {}),
                     locate("ID", 2.0, {}), locate("NAME", "Berit", {})}),
              (Names{"1@2", "0@2", "1@4", "1@3", "1@2", "1@4"}));
    EXPECT_EQ(log, (Names{"CheckBrowseMode", "DataSetChanged"}));
    EXPECT_EQ(link.ActiveValue("ID"), "4");
    EXPECT_THROW(people.Locate("NOPE", 1, {}), EDatabaseError);
    people.First();
    people.Next();
    EXPECT_EQ(people.Lookup("ID", 4, "NAME").AsString(), "Berit");
    Variant both = people.Lookup("NAME", "Anna", "ID;CITY");
    EXPECT_EQ(both[0].AsInteger(), 1);
    EXPECT_EQ(both[1].AsString(), "Oslo");
    EXPECT_TRUE(VarIsNull(people.Lookup("ID", 99, "NAME")));
    EXPECT_EQ(CurrentId(people), 2);
}

} // namespace
