// Data sources and links: state relay, AutoEdit, Enabled and teardown order; the record ring as links
// see it: sizing by the links, windows following the records while the dataset scrolls,
// resynchronisation, and the cursor work it causes; editing: where records land and the events in
// order.

#include "db_test_support.h"

#include <gtest/gtest.h>
#include <numeric>
#include <tuple>

using namespace quorda;
using namespace quorda::dbtest;

namespace {

// A detail dataset whose master is a data source.
class TDetailDataSet : public TMemDataSet {
public:
    using TMemDataSet::TMemDataSet;
    TDataSource* Master = nullptr;
    TDataSource* GetDataSource() const override { return Master; }
};

class RingTest : public ::testing::Test {
protected:
    void SetUp() override {
        FillNumbers(DataSet, 20);
        Source.SetDataSet(&DataSet);
    }
    // The ring's size, the link's record count, the ID of its active record and the dataset's current
    // ID: "5 5 id5 at5".
    std::string Ring(TRecordingLink& Link) {
        return std::to_string(DataSet.BufferCount()) + " " + std::to_string(Link.RecordCount()) + " id" +
               Link.ActiveValue("ID") + " at" + std::to_string(CurrentId(DataSet));
    }

    TProbeDataSet DataSet{nullptr};
    TDataSource Source{nullptr};
    std::vector<std::string> Log;
};

TEST_F(RingTest, GrowsAndShrinksWithItsLinksAndEnableControlsSendsOneUpdate) {
    EXPECT_EQ(DataSet.BufferCount(), 1);
    DataSet.MoveBy(4);
    {
        TRecordingLink small(Log, "small", 3, &Source);
        EXPECT_EQ(Ring(small), "3 3 id5 at5");
        {
            TRecordingLink large(Log, "large", 5, &Source);
            EXPECT_EQ(Ring(large), "5 5 id5 at5");
            DataSet.MoveBy(3);
        }
        EXPECT_EQ(Ring(small), "3 3 id8 at8");
        // A control that grows while attached (a grid made taller) grows the ring at once.
        small.SetBufferCount(6);
        EXPECT_EQ(Ring(small), "6 6 id8 at8");
    }
    EXPECT_EQ(DataSet.BufferCount(), 1);
    EXPECT_EQ(CurrentId(DataSet), 8);
    TRecordingLink link(Log, "", 1, &Source);
    Log.clear();
    DataSet.DisableControls();
    DataSet.DisableControls();
    DataSet.Next();
    DataSet.Edit();
    DataSet.Last();
    DataSet.EnableControls();
    EXPECT_TRUE(Log.empty());
    DataSet.Edit();
    DataSet.EnableControls();
    EXPECT_EQ(Log, (Names{"EditingChanged(on)", "DataSetChanged"}));
    EXPECT_FALSE(DataSet.ControlsDisabled());
}

TEST_F(RingTest, RingWindowsScansResyncAndTheDataSourcesRelay) {
    TRecordingLink small(Log, "small", 3, &Source);
    TRecordingLink large(Log, "large", 5, &Source);
    EXPECT_EQ(large.Window("ID"), (Names{"1", "2", "3", "4", "5"}));
    EXPECT_EQ(small.Window("ID"), (Names{"1", "2", "3"}));
    // Distance, then the small and the large link's window, active record and scroll distance.
    const std::tuple<int, Names, int, Names, int, std::string, std::string> steps[] = {
        {4, {"3", "4", "5"}, 2, {"1", "2", "3", "4", "5"}, 4, "2", "0"},
        {1, {"4", "5", "6"}, 2, {"2", "3", "4", "5", "6"}, 4, "1", "1"},
        {-3, {"3", "4", "5"}, 0, {"2", "3", "4", "5", "6"}, 1, "-1", "0"},
        {-1, {"2", "3", "4"}, 0, {"2", "3", "4", "5", "6"}, 0, "-1", "0"},
        {-1, {"1", "2", "3"}, 0, {"1", "2", "3", "4", "5"}, 0, "-1", "-1"}};
    for (const auto& [distance, smallWindow, smallActive, largeWindow, largeActive, smallScroll,
                      largeScroll] : steps) {
        Log.clear();
        DataSet.MoveBy(distance);
        SCOPED_TRACE("after MoveBy(" + std::to_string(distance) + ") to ID " +
                     std::to_string(CurrentId(DataSet)));
        EXPECT_EQ(small.Window("ID"), smallWindow);
        EXPECT_EQ(small.ActiveRecord(), smallActive);
        EXPECT_EQ(large.Window("ID"), largeWindow);
        EXPECT_EQ(large.ActiveRecord(), largeActive);
        EXPECT_EQ(Log, (Names{"small:CheckBrowseMode", "large:CheckBrowseMode",
                              "small:DataSetScrolled(" + smallScroll + ")",
                              "large:DataSetScrolled(" + largeScroll + ")"}));
    }
    // A full scan visits every record once: 1-5 are in the ring already, 6-20 are fetched once
    // each, plus the end-of-data answer.
    DataSet.First();
    DataSet.GetRecordCalls = 0;
    DataSet.SetToRecordCalls = 0;
    std::vector<int> seen;
    while (!DataSet.Eof()) {
        seen.push_back(CurrentId(DataSet));
        DataSet.Next();
    }
    std::vector<int> all(20);
    std::iota(all.begin(), all.end(), 1);
    EXPECT_EQ(seen, all);
    EXPECT_EQ(DataSet.GetRecordCalls, 16);
    EXPECT_EQ(DataSet.SetToRecordCalls, 0);
    // GotoBookmark centres the record; a resync near the end refills from before.
    DataSet.First();
    DataSet.MoveBy(9);
    TBookmark tenth = DataSet.GetBookmark();
    DataSet.Last();
    EXPECT_EQ(large.Window("ID"), (Names{"16", "17", "18", "19", "20"}));
    DataSet.GotoBookmark(tenth);
    EXPECT_EQ(large.Window("ID"), (Names{"8", "9", "10", "11", "12"}));
    EXPECT_EQ(large.ActiveRecord(), 2);
    DataSet.Last();
    DataSet.Prior();
    DataSet.Delete();
    // The deleted 19th record is replaced by its successor; the ring still holds five records.
    EXPECT_EQ(CurrentId(DataSet), 20);
    EXPECT_EQ(large.Window("ID"), (Names{"15", "16", "17", "18", "20"}));
    DataSet.Delete();
    EXPECT_EQ(CurrentId(DataSet), 18);
    EXPECT_EQ(large.Window("ID"), (Names{"14", "15", "16", "17", "18"}));
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 3);
    dataSet.Close();
    TDataSource source(nullptr);
    std::vector<std::string> log;
    TRecordingLink link(log, "link", 1, &source);
    source.OnStateChange = [&](TObject*) { log.push_back("StateChange"); };
    source.OnDataChange = [&](TObject*, TField* Field) {
        log.push_back(Field ? "DataChange(field)" : "DataChange");
    };
    source.SetDataSet(&dataSet);
    EXPECT_TRUE(log.empty());
    EXPECT_FALSE(link.Active());
    dataSet.Open();
    EXPECT_EQ(log, (Names{"link:ActiveChanged(on)", "StateChange", "DataChange"}));
    log.clear();
    dataSet.Close();
    EXPECT_EQ(log, (Names{"link:ActiveChanged(off)", "StateChange"}));
    EXPECT_EQ(source.State(), dsInactive);
    // A disabled source shows its links an inactive dataset and tells nobody of moves.
    dataSet.Open();
    source.SetEnabled(false);
    EXPECT_FALSE(link.Active());
    log.clear();
    dataSet.Next();
    EXPECT_TRUE(log.empty());
    source.SetEnabled(true);
    EXPECT_TRUE(link.Active());
    EXPECT_EQ(CurrentId(*link.DataSet()), 2);
    // AutoEdit lets a link start an edit; a read-only link never edits.
    source.SetAutoEdit(false);
    EXPECT_FALSE(link.Edit());
    EXPECT_EQ(dataSet.State(), dsBrowse);
    source.SetAutoEdit(true);
    EXPECT_TRUE(link.Edit());
    EXPECT_EQ(dataSet.State(), dsEdit);
    link.SetReadOnly(true);
    EXPECT_FALSE(link.Editing());
    dataSet.Cancel();
    EXPECT_FALSE(link.Edit());
    EXPECT_EQ(dataSet.State(), dsBrowse);
    // FocusControl on a field reaches the links.
    log.clear();
    dataSet.FieldByName("NAME")->FocusControl();
    EXPECT_EQ(log, (Names{"link:FocusControl(NAME)"}));
    TDetailDataSet detail(nullptr);
    TDataSource master(nullptr);
    detail.Master = &master;
    EXPECT_EQ(MessageOf([&] { master.SetDataSet(&detail); }), SCircularDataLink);
    EXPECT_EQ(master.DataSet(), nullptr);
    // A link outlives its dataset and then its source. (Every fixture tears down in the other order.)
    auto owned = std::make_unique<TMemDataSet>(nullptr);
    FillNumbers(*owned, 3);
    auto ownedSource = std::make_unique<TDataSource>(nullptr);
    ownedSource->SetDataSet(owned.get());
    TRecordingLink survivor(log, "", 1, ownedSource.get());
    EXPECT_TRUE(survivor.Active());
    owned.reset();
    EXPECT_FALSE(survivor.Active());
    EXPECT_EQ(ownedSource->DataSet(), nullptr);
    EXPECT_EQ(survivor.DataSet(), nullptr);
    ownedSource.reset();
    EXPECT_EQ(survivor.DataSource(), nullptr);
}

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
