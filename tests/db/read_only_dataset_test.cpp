// The framework over a minimal read-only cursor without bookmarks, scrollable or forward-only: the
// shape of a dataset that only reads rows from somewhere else.

#include "db_test_support.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

using namespace quorda;
using namespace quorda::dbtest;

namespace {

// Rows are the numbers 1..Count in one integer column N. A record buffer holds the row index.
class TNumbersDataSet : public TDataSet {
public:
    TNumbersDataSet(int Count, bool ForwardOnly) : TDataSet(nullptr), FCount(Count) {
        SetUniDirectional(ForwardOnly);
    }
    ~TNumbersDataSet() override { CloseForDestroy(); }

    int Opens = 0;
    using TDataSet::GetFieldData;
    bool GetFieldData(TField*, void* Buffer) override {
        if (!ActiveBuffer() || IsEmpty()) {
            return false;
        }
        if (Buffer) {
            std::int32_t value;
            std::memcpy(&value, ActiveBuffer(), sizeof(value));
            ++value;
            std::memcpy(Buffer, &value, sizeof(value));
        }
        return true;
    }

protected:
    TRecordBuffer AllocRecordBuffer() override { return new std::byte[sizeof(std::int32_t)](); }
    void FreeRecordBuffer(TRecordBuffer& Buffer) override {
        delete[] Buffer;
        Buffer = nullptr;
    }
    bool GetCanModify() override { return false; }
    TGetResult GetRecord(TRecordBuffer Buffer, TGetMode GetMode, bool) override {
        FCursor = std::clamp(FCursor + (GetMode == gmNext ? 1 : GetMode == gmPrior ? -1 : 0), -1, FCount);
        if (FCursor < 0 || FCursor == FCount) {
            return FCursor < 0 ? grBOF : grEOF;
        }
        std::memcpy(Buffer, &FCursor, sizeof(FCursor));
        return grOK;
    }
    void InternalFirst() override { FCursor = -1; }
    void InternalLast() override { FCursor = FCount; }
    void InternalSetToRecord(TRecordBuffer Buffer) override {
        std::memcpy(&FCursor, Buffer, sizeof(FCursor));
    }
    void InternalInitFieldDefs() override {
        FieldDefs().Clear();
        FieldDefs().Add("N", ftInteger);
    }
    void InternalOpen() override {
        ++Opens;
        FCursor = -1;
        InternalInitFieldDefs();
        CreateFields(); // no persistent fields here
        BindFields(true);
        FOpen = true;
    }
    void InternalClose() override {
        BindFields(false);
        DestroyFields();
        FOpen = false;
    }
    bool IsCursorOpen() override { return FOpen; }

private:
    int FCount;
    std::int32_t FCursor = -1;
    bool FOpen = false;
};

int N(TDataSet& DataSet) {
    return DataSet.FieldByName("N")->AsInteger();
}

TEST(ReadOnlyDataSet, RefusesEditsLocatesWithoutBookmarksAndForwardOnlyStartsOverByReopening) {
    TNumbersDataSet dataSet(10, false);
    dataSet.Open();
    for (auto edit : {&TDataSet::Edit, &TDataSet::Insert, &TDataSet::Append, &TDataSet::Delete}) {
        EXPECT_EQ(MessageOf([&] { (dataSet.*edit)(); }), SDatasetReadOnly);
    }
    EXPECT_EQ(dataSet.State(), dsBrowse);
    EXPECT_THROW(dataSet.FieldByName("N")->SetAsInteger(1), EDatabaseError);
    // Without bookmarks Locate still finds rows.
    EXPECT_TRUE(dataSet.GetBookmark().IsNil());
    EXPECT_TRUE(dataSet.Locate("N", 7, {}));
    EXPECT_EQ(N(dataSet), 7);
    dataSet.Last();
    dataSet.MoveBy(-2);
    EXPECT_EQ(N(dataSet), 8);
    TNumbersDataSet forward(4, true);
    TDataSource source(nullptr);
    source.SetDataSet(&forward);
    std::vector<std::string> log;
    TRecordingLink grid(log, "", 5, &source);
    forward.Open();
    EXPECT_EQ(grid.RecordCount(), 1) << "a forward-only ring holds one record";
    std::vector<int> seen;
    for (; !forward.Eof(); forward.Next()) {
        seen.push_back(N(forward));
    }
    EXPECT_EQ(seen, (std::vector<int>{1, 2, 3, 4}));
    EXPECT_THROW(forward.Prior(), EDatabaseError);
    EXPECT_THROW(forward.Last(), EDatabaseError);
    EXPECT_THROW(forward.Locate("N", 1, {}), EDatabaseError);
    EXPECT_EQ(forward.Opens, 1);
    forward.First();
    EXPECT_EQ(forward.Opens, 2);
    EXPECT_EQ(N(forward), 1);
    forward.Next();
    EXPECT_EQ(N(forward), 2);
    forward.First();
    forward.First();
    EXPECT_EQ(forward.Opens, 3) << "at the first record First does not reopen";
}

} // namespace
