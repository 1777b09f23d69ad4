// Calculated fields: computed per record in dsCalcFields, refreshed on field changes.

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

} // namespace
