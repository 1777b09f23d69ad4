// Blob and memo values through the in-memory dataset's blob streams.

#include "db_test_support.h"

#include <gtest/gtest.h>

using namespace quorda;
using namespace quorda::dbtest;

namespace {

// Values are per row, Post keeps them and Cancel discards them; streams copy binary data with its
// zeros and signal the change when done; writes need an edit, a writable field and a live cursor.
TEST(Blob, ValuesLiveInTheirRowAndStreamsWriteOnlyWhileEditing) {
    TMemDataSet dataSet(nullptr);
    dataSet.FieldDefs().Add("ID", ftInteger);
    dataSet.FieldDefs().Add("NOTE", ftMemo);
    dataSet.FieldDefs().Add("DATA", ftBlob);
    dataSet.CreateDataSet();
    dataSet.AppendRecord({1, "first note"});
    dataSet.AppendRecord({2});
    dataSet.First();
    const auto note = [&] { return static_cast<TBlobField*>(dataSet.FieldByName("NOTE")); };
    const auto data = [&] { return static_cast<TBlobField*>(dataSet.FieldByName("DATA")); };
    EXPECT_EQ(note()->BlobSize(), 10);
    EXPECT_TRUE(data()->IsNull());
    EXPECT_EQ(note()->DisplayText(), "(MEMO)");
    EXPECT_EQ(data()->DisplayText(), "(blob)");
    EXPECT_EQ(MessageOf([&] { dataSet.CreateBlobStream(note(), bmWrite); }), SNotEditing);
    EXPECT_THROW(note()->SetAsString("x"), EDatabaseError);
    dataSet.Edit();
    note()->SetAsString("changed");
    EXPECT_TRUE(note()->Modified());
    EXPECT_EQ(note()->AsString(), "changed");
    EXPECT_EQ(note()->OldValue().AsString(), "first note");
    dataSet.Cancel();
    EXPECT_EQ(note()->AsString(), "first note");
    dataSet.Edit();
    note()->SetAsString("second");
    note()->SetAsString("third");
    dataSet.Post();
    dataSet.Next();
    EXPECT_TRUE(VarIsNull(note()->Value()));
    dataSet.Prior();
    EXPECT_EQ(note()->AsString(), "third");

    const std::string bytes("\0\x01\xff\0tail", 8);
    std::vector<std::string> changes;
    data()->OnChange = [&](TField* Field) { changes.push_back(Field->FieldName()); };
    dataSet.Edit();
    {
        auto stream = dataSet.CreateBlobStream(data(), bmWrite);
        stream->WriteBuffer(bytes.data(), 8);
        EXPECT_TRUE(changes.empty());
    }
    EXPECT_EQ(changes, (std::vector<std::string>{"DATA"}));
    EXPECT_TRUE(dataSet.Modified());
    {
        auto stream = dataSet.CreateBlobStream(data(), bmReadWrite);
        stream->Seek(0, soEnd);
        stream->WriteBuffer("!", 1);
    }
    dataSet.Post();
    TMemoryStream target;
    data()->SaveToStream(target);
    EXPECT_EQ(target.DataString(), bytes + "!");
    EXPECT_EQ(data()->AsString(), bytes + "!");

    // A stream outliving the dataset's cursor writes nothing.
    dataSet.Edit();
    auto stream = dataSet.CreateBlobStream(note(), bmWrite);
    stream->WriteBuffer("late", 4);
    dataSet.Close();
    stream.reset();
    dataSet.Open();
    note()->SetReadOnly(true);
    dataSet.Edit();
    EXPECT_THROW(note()->SetAsString("x"), EDatabaseError);
    EXPECT_EQ(note()->AsString(), "third");
    dataSet.Cancel();
    note()->SetReadOnly(false);
    dataSet.Edit();
    note()->Clear();
    dataSet.Post();
    EXPECT_TRUE(note()->IsNull());
}

} // namespace
