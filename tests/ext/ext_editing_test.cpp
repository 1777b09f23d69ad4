// Editing through the update events: values posted by the handlers and seen after the refresh, old
// values, inserts and deletes, retries, handlers that fail, the refused operations, bookmarks, and
// memo and blob values written through the blob stream.

#include "core/odbc_dataset_p.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_query.h"
#include "quorda/db/blob_field.h"
#include "quorda/ext/odbc_ext_dataset.h"
#include "quorda/rtl/messages.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <quorda_test/environment.h>
#include <quorda_test/error_of.h>
#include <quorda_test/profiles.h>
#include <quorda_test/raw_odbc.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace quorda {
namespace {

using testing::ErrorOf;

// A database on one driver profile, a table of order lines, an editable query over it and writers
// for the update events.
class ExtEditing : public quorda_test::ProfileTest {
protected:
    void SetUp() override {
        Db.SetDriverConnectOption(dcoDriverNoPrompt);
        Db.SetConnectStr(Profile.ConnectionString);
        Db.Open();
        Table = quorda_test::UniqueTableName("ext_lines");
        Raw.Exec("create table " + Table + " (id integer primary key, item varchar(20), qty integer, note " +
                 Profile.Sql.LongTextType + ", data " + Profile.Sql.BlobType + ")");
        Raw.Exec("insert into " + Table +
                 " (id, item, qty) values (1, 'bolt', 10), (2, 'nut', 20), (3, 'gear', 30)");
        Query.SetODBCDatabase(&Db);
        Query.SQL().SetText("select id, item, qty, note, data from " + Table + " order by id");
    }

    // A statement on Db with :name parameters, run by the update handlers.
    TODBCQuery& Writer(const std::string& Sql) {
        Writers.push_back(std::make_unique<TODBCQuery>(nullptr));
        Writers.back()->SetODBCDatabase(&Db);
        Writers.back()->SQL().SetText(Sql);
        return *Writers.back();
    }

    // Update handlers that write item and qty (and count their calls).
    void WriteItemsOnUpdate() {
        TODBCQuery& update = Writer("update " + Table + " set item = :item, qty = :qty where id = :id");
        Query.OnUpdateRec = [this, &update](TDataSet* DataSet, TUpdateKind Kind, TUpdateAction& Action) {
            ++Calls;
            update.ParamByName("item")->SetAsString(DataSet->FieldByName("item")->AsString());
            update.ParamByName("qty")->SetAsInteger(DataSet->FieldByName("qty")->AsInteger());
            update.ParamByName("id")->SetAsInteger(DataSet->FieldByName("id")->OldValue().AsInteger());
            update.ExecSQL();
        };
    }

    // "id:item:qty" of every row of the table, read on a connection of its own.
    std::string TableRows() {
        std::string text;
        for (const auto& row : Raw.QueryStrings("select id, item, qty from " + Table + " order by id")) {
            text += (text.empty() ? "" : " ") + row[0].value_or("NULL") + ":" + row[1].value_or("NULL") +
                    ":" + row[2].value_or("NULL");
        }
        return text;
    }
    // The same, as the query shows it.
    std::string QueryRows() {
        std::string text;
        for (Query.First(); !Query.Eof(); Query.Next()) {
            text += (text.empty() ? "" : " ") + Query.FieldByName("id")->AsString() + ":" +
                    Query.FieldByName("item")->AsString() + ":" + Query.FieldByName("qty")->AsString();
        }
        Query.First();
        return text;
    }

    TODBCDatabase Db{nullptr};
    quorda_test::RawOdbc Raw{Profile.ConnectionString};
    std::string Table;
    TODBCExtQuery Query{nullptr};
    std::vector<std::unique_ptr<TODBCQuery>> Writers;
    int Calls = 0;
};

TEST_P(ExtEditing, PostedEditReachesTheTableAndShowsAfterTheRefresh) {
    WriteItemsOnUpdate();
    Query.Open();
    Query.Next();
    Query.Edit();
    Query.FieldByName("item")->SetAsString("washer");
    Query.FieldByName("qty")->SetAsInteger(25);
    Query.FieldByName("qty")->SetAsInteger(26);
    // Two fields changed (the second change of qty keeps the first old value).
    EXPECT_EQ(Query.ModifiedField(), 2);
    EXPECT_EQ(Query.PendingUpdate(), kUpdateModify);
    EXPECT_EQ(Query.FieldByName("qty")->OldValue().AsInteger(), 20);
    EXPECT_EQ(Query.FieldByName("item")->OldValue().AsString(), "nut");
    EXPECT_EQ(Query.FieldByName("id")->OldValue().AsInteger(), 2);
    EXPECT_EQ(Query.FieldByName("qty")->NewValue().AsInteger(), 26);
    Query.Post();
    EXPECT_EQ(Calls, 1);
    EXPECT_EQ(Query.ModifiedField(), 0);
    EXPECT_EQ(Query.State(), dsBrowse);
    // Back on the edited row, showing what the table now holds.
    EXPECT_EQ(Query.FieldByName("id")->AsInteger(), 2);
    EXPECT_EQ(Query.FieldByName("qty")->AsInteger(), 26);
    EXPECT_EQ(TableRows(), "1:bolt:10 2:washer:26 3:gear:30");
    EXPECT_EQ(QueryRows(), TableRows());
}

TEST_P(ExtEditing, InsertAndDeleteRunTheirEvents) {
    TODBCQuery& insert = Writer("insert into " + Table + " (id, item, qty) values (:id, :item, :qty)");
    TODBCQuery& remove = Writer("delete from " + Table + " where id = :id");
    std::vector<std::string> events;
    Query.OnInsertRec = [&](TDataSet* DataSet, TUpdateKind Kind, TUpdateAction&) {
        // An inserted record's blobs read only what was written.
        events.push_back("insert " + std::to_string(Kind == ukInsert) + " " +
                         DataSet->FieldByName("note")->AsString() + "|" +
                         DataSet->FieldByName("data")->AsString());
        EXPECT_EQ(DataSet->FieldByName("qty")->OldValue().IsNull(), true);
        insert.ParamByName("id")->SetAsInteger(DataSet->FieldByName("id")->AsInteger());
        insert.ParamByName("item")->SetAsString(DataSet->FieldByName("item")->AsString());
        insert.ParamByName("qty")->SetAsInteger(DataSet->FieldByName("qty")->AsInteger());
        insert.ExecSQL();
    };
    Query.OnDeleteRec = [&](TDataSet* DataSet, TUpdateKind Kind, TUpdateAction&) {
        events.push_back("delete " + std::to_string(Kind == ukDelete));
        remove.ParamByName("id")->SetAsInteger(DataSet->FieldByName("id")->AsInteger());
        remove.ExecSQL();
    };
    Query.OnUpdateRec = [&](TDataSet*, TUpdateKind, TUpdateAction&) { events.push_back("update"); };
    Query.Open();
    Query.Insert();
    EXPECT_TRUE(Query.FieldByName("qty")->IsNull());
    EXPECT_EQ(Query.FieldByName("note")->AsString(), "");
    Query.FieldByName("note")->SetAsString("fresh");
    Query.FieldByName("id")->SetAsInteger(4);
    Query.FieldByName("item")->SetAsString("spring");
    Query.FieldByName("qty")->SetAsInteger(40);
    EXPECT_EQ(Query.PendingUpdate(), kUpdateInsert);
    Query.Post();
    EXPECT_EQ(TableRows(), "1:bolt:10 2:nut:20 3:gear:30 4:spring:40");
    EXPECT_EQ(QueryRows(), TableRows());
    // Deleting calls its event at once, without a post.
    Query.Next();
    Query.Delete();
    EXPECT_EQ(events, (std::vector<std::string>{"insert 1 fresh|", "delete 1"}));
    EXPECT_EQ(TableRows(), "1:bolt:10 3:gear:30 4:spring:40");
    Query.Refresh();
    EXPECT_EQ(QueryRows(), TableRows());
}

// The handler answers in turn; uaFail and uaAbort end the post without an error of the dataset's own.
TEST_P(ExtEditing, RetryCallsTheHandlerAgainUntilItAnswersOtherwise) {
    Query.Open();
    for (const std::vector<TUpdateAction>& answers : std::vector<std::vector<TUpdateAction>>{
             {uaRetry, uaRetry, uaApplied}, {uaFail}, {uaAbort}, {uaSkip}}) {
        Calls = 0;
        Query.OnUpdateRec = [this, answers](TDataSet*, TUpdateKind, TUpdateAction& Action) {
            Action = answers[std::min<std::size_t>(Calls++, answers.size() - 1)];
        };
        Query.Edit();
        Query.FieldByName("qty")->SetAsInteger(12);
        EXPECT_NO_THROW(Query.Post());
        EXPECT_EQ(Calls, static_cast<int>(answers.size()));
    }
}

TEST_P(ExtEditing, FailingHandlerLeavesNothingPendingAndItsRollbackLeavesTheTable) {
    WriteItemsOnUpdate();
    auto write = Query.OnUpdateRec;
    Query.OnUpdateRec = [&](TDataSet* DataSet, TUpdateKind Kind, TUpdateAction& Action) {
        Db.StartTransaction();
        try {
            write(DataSet, Kind, Action);
            throw std::runtime_error("stock check failed");
        } catch (...) {
            Db.Rollback();
            throw;
        }
    };
    Query.Open();
    Query.Edit();
    Query.FieldByName("qty")->SetAsInteger(99);
    EXPECT_THROW(Query.Post(), std::runtime_error);
    EXPECT_EQ(Calls, 1);
    EXPECT_EQ(Query.ModifiedField(), 0);
    EXPECT_EQ(Query.PendingUpdate(), kUpdateNone);
    EXPECT_EQ(Query.State(), dsEdit);
    Query.Cancel();
    EXPECT_EQ(Query.FieldByName("qty")->AsInteger(), 10);
    EXPECT_EQ(TableRows(), "1:bolt:10 2:nut:20 3:gear:30");
}

TEST_P(ExtEditing, RefusedWritesCarryTheirMessagesAndWithoutAHandlerTheChangeIsDiscarded) {
    Query.Open();
    // Outside an edit the message keeps its placeholder.
    EXPECT_EQ(ErrorOf([&] { Query.FieldByName("item")->SetAsString("x"); }), "ODBC Field %s not editing");
    Query.FieldByName("qty")->SetReadOnly(true);
    Query.FieldByName("qty")->SetDisplayLabel("Quantity");
    Query.Edit();
    EXPECT_EQ(ErrorOf([&] { Query.FieldByName("qty")->SetAsInteger(1); }), "ODBC Field Quantity read only");
    EXPECT_EQ(Query.ModifiedField(), 0);
    Query.FieldByName("item")->SetAsString("lost");
    // Someone else changed another row meanwhile: the refresh shows it.
    Raw.Exec("update " + Table + " set qty = 33 where id = 3");
    Query.Post();
    EXPECT_EQ(Query.FieldByName("item")->AsString(), "bolt");
    EXPECT_EQ(QueryRows(), "1:bolt:10 2:nut:20 3:gear:33");
}

TEST_P(ExtEditing, BookmarksCompareAcrossBothOrigins) {
    Raw.Exec("insert into " + Table + " (id, item, qty) values (4, 'cog', 40), (5, 'pin', 50)");
    Query.Open();
    auto bookmark = [](std::int32_t Origin, std::int32_t Row) {
        const TODBCBookmark data{Origin, Row};
        return TBookmark(&data, sizeof data);
    };
    // Five rows: (1, r) is row r from the first, (-1, -r) row r from the last.
    const struct {
        TBookmark First, Second;
        int Expected;
    } cases[] = {
        {TBookmark(), TBookmark(), 0},
        {TBookmark(), bookmark(1, 0), 1},
        {bookmark(1, 0), TBookmark(), -1},
        {bookmark(1, 3), bookmark(1, 1), 1},
        {bookmark(-1, -3), bookmark(-1, -1), -1},
        {bookmark(-1, -2), bookmark(-1, -2), 0},
        {bookmark(1, 1), bookmark(-1, 0), -1},  // second row before the last
        {bookmark(1, 4), bookmark(-1, 0), 0},   // both the last row
        {bookmark(-1, 0), bookmark(1, 1), 1},   // the last row after the second
        {bookmark(-1, -4), bookmark(1, 0), 0},  // both the first row
        {bookmark(-1, -4), bookmark(1, 2), -1}, // the first row before the third
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Query.CompareBookmarks(c.First, c.Second), c.Expected);
    }
    // Bookmarks the dataset hands out compare the same way.
    Query.Next();
    TBookmark second = Query.GetBookmark();
    Query.Last();
    TBookmark last = Query.GetBookmark();
    EXPECT_EQ(Query.CompareBookmarks(second, last), -1);
    EXPECT_EQ(Query.CompareBookmarks(last, second), 1);
}

TEST_P(ExtEditing, BlobValuesReachTheHandlerAsNewValues) {
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
    EXPECT_EQ(Raw.Scalar("select count(*) from " + Table + " where id = 1 and note is not null"), "1");
}

TEST_P(ExtEditing, OnlyTheLastBlobWriteCallBecomesTheNewValue) {
    Raw.Exec("update " + Table + " set note = 'before' where id = 1");
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

INSTANTIATE_TEST_SUITE_P(Drivers, ExtEditing, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda
