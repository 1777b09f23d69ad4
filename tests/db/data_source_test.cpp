// Data sources between datasets and links: state relay, AutoEdit, Enabled and teardown order.

#include "db_test_support.h"

#include <gtest/gtest.h>

using namespace quorda;
using namespace quorda::dbtest;

namespace {

using Names = std::vector<std::string>;

TEST(DataSource, RelaysStateToLinksAndEventsAndLetsLinksEditUnderAutoEdit) {
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

// A link outlives its dataset and then its source. (Every fixture tears down in the other order.)
TEST(DataSource, EitherEndMayBeDestroyedFirst) {
    std::vector<std::string> log;
    TRecordingLink link(log, "");
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

} // namespace
