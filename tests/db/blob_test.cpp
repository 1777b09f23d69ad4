// Blob and memo values through the in-memory dataset's blob streams.

#include "db_test_support.h"

#include <gtest/gtest.h>

using namespace quorda;
using namespace quorda::dbtest;

namespace {

class BlobTest : public ::testing::Test {
protected:
    void SetUp() override {
        DataSet.FieldDefs().Add("ID", ftInteger);
        DataSet.FieldDefs().Add("NOTE", ftMemo);
        DataSet.FieldDefs().Add("DATA", ftBlob);
        DataSet.CreateDataSet();
        DataSet.AppendRecord({1, "first note"});
        DataSet.AppendRecord({2});
        DataSet.First();
    }

    TBlobField* Note() { return static_cast<TBlobField*>(DataSet.FieldByName("NOTE")); }
    TBlobField* Data() { return static_cast<TBlobField*>(DataSet.FieldByName("DATA")); }

    TMemDataSet DataSet{nullptr};
};

TEST_F(BlobTest, ValuesArePerRowPostKeepsThemAndCancelDiscardsThem) {
    EXPECT_EQ(Note()->BlobSize(), 10);
    EXPECT_TRUE(Data()->IsNull());
    EXPECT_EQ(Note()->DisplayText(), "(MEMO)");
    EXPECT_EQ(Data()->DisplayText(), "(blob)");
    DataSet.Edit();
    Note()->SetAsString("changed");
    EXPECT_TRUE(Note()->Modified());
    EXPECT_EQ(Note()->AsString(), "changed");
    EXPECT_EQ(Note()->OldValue().AsString(), "first note");
    DataSet.Cancel();
    EXPECT_EQ(Note()->AsString(), "first note");
    DataSet.Edit();
    Note()->SetAsString("second");
    Note()->SetAsString("third");
    DataSet.Post();
    DataSet.Next();
    EXPECT_TRUE(VarIsNull(Note()->Value()));
    DataSet.Prior();
    EXPECT_EQ(Note()->AsString(), "third");
    DataSet.Edit();
    Note()->Clear();
    DataSet.Post();
    EXPECT_TRUE(Note()->IsNull());
}

TEST_F(BlobTest, StreamsCopyBinaryDataWithZerosAndSignalTheChangeWhenDone) {
    const std::string bytes("\0\x01\xff\0tail", 8);
    std::vector<std::string> changes;
    Data()->OnChange = [&](TField* Field) { changes.push_back(Field->FieldName()); };
    DataSet.Edit();
    {
        auto stream = DataSet.CreateBlobStream(Data(), bmWrite);
        stream->WriteBuffer(bytes.data(), 8);
        EXPECT_TRUE(changes.empty());
    }
    EXPECT_EQ(changes, (std::vector<std::string>{"DATA"}));
    EXPECT_TRUE(DataSet.Modified());
    {
        auto stream = DataSet.CreateBlobStream(Data(), bmReadWrite);
        stream->Seek(0, soEnd);
        stream->WriteBuffer("!", 1);
    }
    DataSet.Post();
    TMemoryStream target;
    Data()->SaveToStream(target);
    EXPECT_EQ(target.DataString(), bytes + "!");
    EXPECT_EQ(Data()->AsString(), bytes + "!");
}

TEST_F(BlobTest, WritesNeedAnEditAWritableFieldAndALiveCursor) {
    EXPECT_EQ(MessageOf([&] { DataSet.CreateBlobStream(Note(), bmWrite); }), SNotEditing);
    EXPECT_THROW(Note()->SetAsString("x"), EDatabaseError);
    DataSet.Edit();
    // A stream outliving the dataset's cursor writes nothing.
    auto stream = DataSet.CreateBlobStream(Note(), bmWrite);
    stream->WriteBuffer("late", 4);
    DataSet.Close();
    stream.reset();
    DataSet.Open();
    Note()->SetReadOnly(true);
    DataSet.Edit();
    EXPECT_THROW(Note()->SetAsString("x"), EDatabaseError);
    EXPECT_EQ(Note()->AsString(), "first note");
}

} // namespace
