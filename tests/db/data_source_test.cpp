// Data sources between datasets and links: state relay, AutoEdit, Enabled and teardown order.

#include "db_test_support.h"

#include <gtest/gtest.h>

using namespace quorda;
using namespace quorda::dbtest;

namespace {

using Names = std::vector<std::string>;

TEST(DataSource, RelaysOpeningAndClosingToLinksAndEvents) {
    TMemDataSet dataSet(nullptr);
    FillNumbers(dataSet, 3);
    dataSet.Close();
    TDataSource source(nullptr);
    std::vector<std::string> log;
    TRecordingLink link(log, "link");
    link.SetDataSource(&source);
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
}

TEST(DataSource, DisablingShowsAnInactiveDatasetAndAutoEditLetsLinksEdit) {
    TLinkedNumbers t(3);
    EXPECT_TRUE(t.Link.Active());
    t.Source.SetEnabled(false);
    EXPECT_FALSE(t.Link.Active());
    t.Log.clear();
    t.DataSet.Next();
    EXPECT_TRUE(t.Log.empty());
    t.Source.SetEnabled(true);
    EXPECT_TRUE(t.Link.Active());
    EXPECT_EQ(CurrentId(*t.Link.DataSet()), 2);

    // AutoEdit lets a link start an edit; a read-only link never edits.
    t.Source.SetAutoEdit(false);
    EXPECT_FALSE(t.Link.Edit());
    EXPECT_EQ(t.DataSet.State(), dsBrowse);
    t.Source.SetAutoEdit(true);
    EXPECT_TRUE(t.Link.Edit());
    EXPECT_EQ(t.DataSet.State(), dsEdit);
    t.Link.SetReadOnly(true);
    EXPECT_FALSE(t.Link.Editing());
    t.DataSet.Cancel();
    EXPECT_FALSE(t.Link.Edit());
    EXPECT_EQ(t.DataSet.State(), dsBrowse);
    // FocusControl on a field reaches the links.
    t.Log.clear();
    t.DataSet.FieldByName("NAME")->FocusControl();
    EXPECT_EQ(t.Log, (Names{"FocusControl(NAME)"}));
}

// A detail dataset whose master is a data source.
class TDetailDataSet : public TMemDataSet {
public:
    using TMemDataSet::TMemDataSet;
    TDataSource* Master = nullptr;
    TDataSource* GetDataSource() const override { return Master; }
};

TEST(DataSource, ACircularChainOfSourcesIsRefused) {
    TDetailDataSet detail(nullptr);
    TDataSource source(nullptr);
    detail.Master = &source;
    EXPECT_EQ(MessageOf([&] { source.SetDataSet(&detail); }), SCircularDataLink);
    EXPECT_EQ(source.DataSet(), nullptr);
}

TEST(DataSource, EitherEndMayBeDestroyedFirst) {
    std::vector<std::string> log;
    TRecordingLink link(log, "");
    {
        auto dataSet = std::make_unique<TMemDataSet>(nullptr);
        FillNumbers(*dataSet, 3);
        auto source = std::make_unique<TDataSource>(nullptr);
        link.SetDataSource(source.get());
        source->SetDataSet(dataSet.get());
        EXPECT_TRUE(link.Active());
        dataSet.reset();
        EXPECT_FALSE(link.Active());
        EXPECT_EQ(source->DataSet(), nullptr);
        EXPECT_EQ(link.DataSet(), nullptr);
        source.reset();
        EXPECT_EQ(link.DataSource(), nullptr);
    }
    {
        TMemDataSet dataSet(nullptr);
        FillNumbers(dataSet, 3);
        {
            TDataSource source(nullptr);
            TRecordingLink inner(log, "", 4);
            inner.SetDataSource(&source);
            source.SetDataSet(&dataSet);
        }
        // The link left before the source, the source before the dataset: the ring is back to one.
        dataSet.Next();
        EXPECT_EQ(CurrentId(dataSet), 2);
    }
}

} // namespace
