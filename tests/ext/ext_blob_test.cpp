// Memo and blob values written through the editable dataset's blob stream: they reach the update
// handler as the new value, the stream reads them back during the edit, and only the last write
// call becomes the new value. (An inserted record's blobs: ExtEditing.InsertAndDeleteRunTheirEvents.)

#include "ext_fixture.h"
#include "quorda/db/blob_field.h"

namespace quorda {
namespace {

class ExtBlob : public testing::ExtTest {};

TEST_P(ExtBlob, WrittenValuesReachTheHandlerAsNewValues) {
    TODBCQuery& update = Writer("update " + Table + " set note = :note, data = :data where id = :id");
    std::string seenNote;
    std::string seenData;
    Query.OnUpdateRec = [&](TDataSet* DataSet, TUpdateKind, TUpdateAction&) {
        seenNote = DataSet->FieldByName("note")->NewValue().AsString();
        seenData = DataSet->FieldByName("data")->NewValue().AsString();
        update.ParamByName("note")->SetAsMemo(seenNote);
        update.ParamByName("data")->SetBlobData(seenData.data(), seenData.size());
        update.ParamByName("id")->SetAsInteger(DataSet->FieldByName("id")->AsInteger());
        update.ExecSQL();
    };
    Query.Open();
    Query.Edit();
    std::string memo;
    for (int i = 0; memo.size() < (1 << 20); ++i) {
        memo += "line " + std::to_string(i) + " Grüße\n";
    }
    std::string binary(70000, '\0');
    for (std::size_t i = 0; i < binary.size(); ++i) {
        binary[i] = static_cast<char>((i * 13 + i / 256) % 256);
    }
    Query.FieldByName("note")->SetAsString(memo);
    Query.FieldByName("data")->SetAsString(binary);
    // During the edit the fields read what was written; the old values are the stored ones.
    EXPECT_TRUE(Query.FieldByName("note")->AsString() == memo);
    EXPECT_TRUE(Query.FieldByName("note")->OldValue().AsString().empty());
    EXPECT_EQ(Query.ModifiedField(), 2);
    Query.Post();
    EXPECT_TRUE(seenNote == memo);
    EXPECT_TRUE(seenData == binary);
    // The refreshed row holds them whole.
    EXPECT_TRUE(Query.FieldByName("note")->AsString() == memo);
    EXPECT_TRUE(Query.FieldByName("data")->AsString() == binary);
    EXPECT_EQ(Raw->Scalar("select count(*) from " + Table + " where id = 1 and note is not null"), "1");
}

TEST_P(ExtBlob, OnlyTheLastWriteCallBecomesTheNewValue) {
    Raw->Exec("update " + Table + " set note = 'before' where id = 1");
    Query.Open();
    Query.Edit();
    auto stream = Query.CreateBlobStream(Query.FieldByName("note"), bmWrite);
    stream->WriteBuffer("first ", 6);
    stream->WriteBuffer("second", 6);
    EXPECT_EQ(stream->Size(), 12);
    EXPECT_EQ(Query.FieldByName("note")->NewValue().AsString(), "second");
    EXPECT_EQ(Query.FieldByName("note")->OldValue().AsString(), "before");
    EXPECT_EQ(Query.PendingUpdate(), kUpdateModify);
    stream.reset();
    // Emptied: the written value goes, the old one stays, and the field reads empty.
    Query.FieldByName("note")->Clear();
    EXPECT_EQ(Query.FieldByName("note")->AsString(), "");
    EXPECT_EQ(Query.FieldByName("note")->OldValue().AsString(), "before");
    Query.Cancel();
    EXPECT_EQ(Query.FieldByName("note")->AsString(), "before");
    EXPECT_EQ(Query.ModifiedField(), 0);
}

INSTANTIATE_TEST_SUITE_P(Drivers, ExtBlob, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda
