// Edit, insert, append, post, cancel and delete: where records land and the events in order.

#include "db_test_support.h"

#include <gtest/gtest.h>

using namespace quorda;
using namespace quorda::dbtest;

namespace {

class EditingTest : public ::testing::Test {
protected:
    void SetUp() override {
        FillNumbers(DataSet, 5);
        Source.SetDataSet(&DataSet);
        LogDataSetEvents(DataSet, Log);
        DataSet.FieldByName("NAME")->OnChange = [this](TField* Field) {
            Log.push_back("OnChange(" + Field->FieldName() + ")");
        };
        Log.clear();
    }

    std::vector<int> Ids() {
        std::vector<int> ids;
        TBookmark saved = DataSet.GetBookmark();
        DataSet.DisableControls();
        for (DataSet.First(); !DataSet.Eof(); DataSet.Next()) {
            ids.push_back(CurrentId(DataSet));
        }
        DataSet.GotoBookmark(saved);
        DataSet.EnableControls();
        return ids;
    }

    TMemDataSet DataSet{nullptr};
    TDataSource Source{nullptr};
    std::vector<std::string> Log;
    TRecordingLink Link{Log, "link", 3, &Source};
};

TEST_F(EditingTest, EditPostInsertAndCancelRunTheirEventsInOrderAndPlaceRecords) {
    DataSet.Next();
    Log.clear();
    DataSet.Edit();
    DataSet.FieldByName("NAME")->SetAsString("changed");
    Link.PendingName = "from the control";
    DataSet.Post();
    EXPECT_EQ(Log,
              (Names{"link:CheckBrowseMode", "BeforeEdit", "link:EditingChanged(on)",
                     "link:RecordChanged(nil)", "AfterEdit", "OnChange(NAME)", "link:RecordChanged(NAME)",
                     "link:UpdateData", "OnChange(NAME)", "link:CheckBrowseMode", "BeforePost",
                     "link:EditingChanged(off)", "link:DataSetChanged", "AfterPost"}));
    EXPECT_EQ(DataSet.State(), dsBrowse);
    EXPECT_EQ(DataSet.FieldByName("NAME")->AsString(), "from the control");
    EXPECT_EQ(CurrentId(DataSet), 2);
    EXPECT_FALSE(DataSet.Modified());
    // Cancelling an insert returns to the record it was inserted before.
    DataSet.MoveBy(2);
    Log.clear();
    DataSet.Insert();
    EXPECT_EQ(Log, (Names{"link:CheckBrowseMode", "BeforeInsert", "BeforeScroll", "link:EditingChanged(on)",
                          "link:DataSetChanged", "AfterInsert", "AfterScroll"}));
    DataSet.FieldByName("NAME")->SetAsString("never stored");
    Log.clear();
    DataSet.Cancel();
    EXPECT_EQ(Log, (Names{"link:CheckBrowseMode", "BeforeCancel", "BeforeScroll", "link:EditingChanged(off)",
                          "link:DataSetChanged", "AfterCancel", "AfterScroll"}));
    EXPECT_EQ(CurrentId(DataSet), 4);
    EXPECT_EQ(DataSet.RecordCount(), 5);
    // Insert goes before the active record, Append after the last.
    DataSet.Prior();
    DataSet.Insert();
    EXPECT_EQ(DataSet.State(), dsInsert);
    EXPECT_TRUE(DataSet.FieldByName("ID")->IsNull());
    DataSet.FieldByName("ID")->SetAsInteger(30);
    DataSet.Post();
    EXPECT_EQ(CurrentId(DataSet), 30);
    EXPECT_EQ(DataSet.RecNo(), 3);
    DataSet.First();
    DataSet.Append();
    EXPECT_TRUE(DataSet.Eof());
    DataSet.FieldByName("ID")->SetAsInteger(60);
    DataSet.Post();
    EXPECT_EQ(CurrentId(DataSet), 60);
    // The record helpers assign the fields in order.
    DataSet.First();
    DataSet.InsertRecord({7, Variant()});
    EXPECT_EQ(CurrentId(DataSet), 7);
    EXPECT_TRUE(DataSet.FieldByName("NAME")->IsNull());
    DataSet.Edit();
    DataSet.SetFields({Variant(), "seven"});
    DataSet.Post();
    EXPECT_EQ(DataSet.FieldValues("ID;NAME")[1].AsString(), "seven");
    EXPECT_EQ(Ids(), (std::vector<int>{7, 1, 2, 30, 3, 4, 5, 60}));
}

// Cancel and Close discard an edit, moving away posts it; rule violations raise the framework's
// messages; Delete shows the next record or the previous one at the end.
TEST_F(EditingTest, CancelCloseRulesAndDelete) {
    DataSet.Edit();
    TField* name = DataSet.FieldByName("NAME");
    name->SetAsString("temporary");
    EXPECT_TRUE(DataSet.Modified());
    EXPECT_EQ(name->OldValue().AsString(), "name1");
    EXPECT_EQ(name->NewValue().AsString(), "temporary");
    DataSet.Cancel();
    EXPECT_EQ(name->AsString(), "name1");
    EXPECT_FALSE(DataSet.Modified());
    DataSet.Edit();
    name->SetAsString("lost");
    DataSet.Close();
    DataSet.Open();
    name = DataSet.FieldByName("NAME");
    EXPECT_EQ(name->AsString(), "name1");
    DataSet.Edit();
    name->SetAsString("kept");
    DataSet.Next();
    DataSet.Prior();
    EXPECT_EQ(name->AsString(), "kept");
    // An untouched new record is cancelled instead.
    DataSet.Append();
    DataSet.Next();
    EXPECT_EQ(DataSet.RecordCount(), 5);
    EXPECT_EQ(DataSet.State(), dsBrowse);
    EXPECT_EQ(MessageOf([&] { DataSet.Post(); }), "Dataset not in edit or insert mode");
    EXPECT_THROW(DataSet.FieldByName("NAME")->SetAsString("x"), EDatabaseError);
    EXPECT_EQ(MessageOf([&] { DataSet.FieldByName("MISSING"); }), "Field not found: \"MISSING\"");
    EXPECT_THROW(DataSet.InsertRecord({1, "a", 3}), EDatabaseError);
    EXPECT_EQ(DataSet.State(), dsBrowse);
    DataSet.FieldByName("ID")->SetRequired(true);
    DataSet.Append();
    EXPECT_EQ(MessageOf([&] { DataSet.Post(); }), "Field ID is required, but not supplied.");
    EXPECT_EQ(DataSet.State(), dsInsert);
    DataSet.Cancel();
    // New record defaults are no modification; a failing handler leaves browse mode.
    DataSet.OnNewRecord = [](TDataSet* ds) { ds->FieldByName("NAME")->SetAsString("default"); };
    DataSet.Append();
    EXPECT_FALSE(DataSet.Modified());
    EXPECT_EQ(DataSet.FieldByName("NAME")->AsString(), "default");
    DataSet.Cancel();
    DataSet.First();
    DataSet.Next();
    DataSet.OnNewRecord = [](TDataSet*) { throw EDatabaseError("no new records today"); };
    EXPECT_THROW(DataSet.Insert(), EDatabaseError);
    EXPECT_EQ(DataSet.State(), dsBrowse);
    EXPECT_EQ(CurrentId(DataSet), 2);
    DataSet.SetReadOnly(true);
    EXPECT_THROW(DataSet.Edit(), EDatabaseError);
    EXPECT_THROW(DataSet.Append(), EDatabaseError);
    EXPECT_EQ(DataSet.State(), dsBrowse);
    DataSet.SetReadOnly(false);
    DataSet.OnNewRecord = nullptr;
    // Delete shows the next record, or the previous one at the end.
    DataSet.First();
    DataSet.MoveBy(1);
    Log.clear();
    DataSet.Delete();
    EXPECT_EQ(Log, (Names{"link:CheckBrowseMode", "BeforeDelete", "BeforeScroll", "link:DataSetChanged",
                          "AfterDelete", "AfterScroll"}));
    EXPECT_EQ(CurrentId(DataSet), 3);
    DataSet.Last();
    DataSet.Delete();
    EXPECT_EQ(CurrentId(DataSet), 4);
    EXPECT_EQ(Ids(), (std::vector<int>{1, 3, 4}));
    while (!DataSet.IsEmpty()) {
        DataSet.Delete();
    }
    EXPECT_EQ(Position(DataSet), "bof eof");
    EXPECT_EQ(MessageOf([&] { DataSet.Delete(); }), SDatasetEmpty);
    // Edit on an empty dataset appends.
    DataSet.Edit();
    EXPECT_EQ(DataSet.State(), dsInsert);
}

} // namespace
