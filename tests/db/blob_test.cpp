// Blob and memo values through the in-memory dataset's blob streams.

#include "db_test_support.h"

#include <cstdio>
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

TEST_F(BlobTest, ValuesAreKeptPerRowAndNullUntilWritten) {
    EXPECT_EQ(Note()->AsString(), "first note");
    EXPECT_EQ(Note()->BlobSize(), 10);
    EXPECT_TRUE(Data()->IsNull());
    EXPECT_EQ(Note()->DisplayText(), "(MEMO)");
    EXPECT_EQ(Data()->DisplayText(), "(blob)");
    DataSet.Next();
    EXPECT_TRUE(Note()->IsNull());
    EXPECT_TRUE(VarIsNull(Note()->Value()));
}

TEST_F(BlobTest, PostKeepsAndCancelDiscardsWhatTheStreamWrote) {
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
    DataSet.Prior();
    EXPECT_EQ(Note()->AsString(), "third");

    DataSet.Edit();
    Note()->Clear();
    DataSet.Post();
    EXPECT_TRUE(Note()->IsNull());
}

TEST_F(BlobTest, StreamsCopyBinaryDataWithZeros) {
    const std::string bytes("\0\x01\xff\0tail", 8);
    TStringStream source(bytes);
    DataSet.Edit();
    Data()->LoadFromStream(source);
    {
        auto stream = DataSet.CreateBlobStream(Data(), bmReadWrite);
        stream->Seek(0, soEnd);
        stream->WriteBuffer("!", 1);
    }
    DataSet.Post();
    TMemoryStream target;
    Data()->SaveToStream(target);
    EXPECT_EQ(target.DataString(), bytes + "!");
    EXPECT_EQ(Data()->AsBytes().size(), 9u);

    std::string path = ::testing::TempDir() + "quorda_blob_test.bin";
    Data()->SaveToFile(path);
    DataSet.Next();
    DataSet.Edit();
    Data()->LoadFromFile(path);
    DataSet.Post();
    std::remove(path.c_str());
    EXPECT_EQ(Data()->AsString(), bytes + "!");
}

TEST_F(BlobTest, WritingOutsideAnEditRaisesAndReadOnlyFieldsRefuse) {
    EXPECT_EQ(MessageOf([&] { DataSet.CreateBlobStream(Note(), bmWrite); }), SNotEditing);
    EXPECT_THROW(Note()->SetAsString("x"), EDatabaseError);
    Note()->SetReadOnly(true);
    DataSet.Edit();
    EXPECT_THROW(Note()->SetAsString("x"), EDatabaseError);
    EXPECT_EQ(Note()->AsString(), "first note");
}

TEST_F(BlobTest, AStreamOutlivingTheDatasetsCursorWritesNothing) {
    DataSet.Edit();
    auto stream = DataSet.CreateBlobStream(Note(), bmWrite);
    stream->WriteBuffer("late", 4);
    DataSet.Close();
    stream.reset();
    DataSet.Open();
    EXPECT_EQ(Note()->AsString(), "first note");
}

TEST_F(BlobTest, AFieldChangeIsSignalledWhenTheStreamIsDone) {
    std::vector<std::string> changes;
    Note()->OnChange = [&](TField* Field) { changes.push_back(Field->FieldName()); };
    DataSet.Edit();
    {
        auto stream = DataSet.CreateBlobStream(Note(), bmWrite);
        stream->WriteBuffer("abc", 3);
        EXPECT_TRUE(changes.empty());
    }
    EXPECT_EQ(changes, (std::vector<std::string>{"NOTE"}));
    EXPECT_TRUE(DataSet.Modified());
}

} // namespace
