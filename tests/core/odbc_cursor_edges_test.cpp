// The cursor's edge cases on real drivers: one-row results, NULL slots, duplicate and
// oversized columns, statements without rows, and reopening the cursor under an open dataset.

#include "core/odbc_dataset_p.h"
#include "odbc_cursor_fixture.h"
#include "quorda/rtl/string_utils.h"

namespace quorda {
namespace {

using testing::CursorTest;
using testing::IsSqlite;
using testing::TProbeQuery;

class CursorEdges : public CursorTest {};

TEST_P(CursorEdges, OneRowResultKeepsItsNumberWhenSteppingBackAndDuplicateNamesGetSuffixes) {
    const std::string table = NumberTable("edge_one", 1);
    TProbeQuery& query = Opened("select id from " + table);
    EXPECT_EQ(query.FCurrentRow, 0);
    TRecordBuffer buffer = query.AllocRecordBuffer();
    EXPECT_EQ(TProbeQuery::RowNumber(buffer), -1);
    EXPECT_EQ(query.GetRecord(buffer, gmNext, true), grEOF);
    EXPECT_EQ(query.FCrack, 1);
    EXPECT_EQ(query.GetRecord(buffer, gmCurrent, true), grEOF);
    EXPECT_EQ(query.GetRecord(buffer, gmPrior, true), grOK);
    EXPECT_EQ(TProbeQuery::RowNumber(buffer), 0);
    EXPECT_EQ(query.GetBookmarkFlag(buffer), bfCurrent);
    EXPECT_EQ(query.GetRecord(buffer, gmPrior, true), grBOF);
    EXPECT_EQ(query.FCrack, -1);
    EXPECT_EQ(query.GetRecord(buffer, gmNext, true), grOK);
    EXPECT_EQ(TProbeQuery::RowNumber(buffer), 0);
    query.FreeRecordBuffer(buffer);
    EXPECT_EQ(buffer, nullptr);

    TODBCQuery& named = Opened("select id, id, id, name as ID_1 from " + table);
    std::vector<std::string> names;
    for (int i = 0; i < named.FieldDefs().Count(); ++i) {
        names.push_back(LowerCase(named.FieldDefs()[i]->Name()));
    }
    // The suffix goes on the column's own name: ID_1 is taken, so it becomes ID_1_1.
    EXPECT_EQ(names, (std::vector<std::string>{"id", "id_1", "id_2", "id_1_1"}));
    EXPECT_EQ(named.Fields()[3]->AsString(), "row1");
}

TEST_P(CursorEdges, NullColumnLeavesItsSlotZeroed) {
    const std::string table =
        MakeTable("edge_null", "id integer, v integer, d double precision, s varchar(10)",
                  "(1, -1, -1.5, 'xxxxxxxxxx'), (2, -1, -1.5, 'yyyyyyyyyy'), (3, NULL, NULL, NULL), (4, "
                  "NULL, NULL, NULL)");
    TProbeQuery& query = Opened("select id, v, d, s from " + table + " order by id");
    query.MoveBy(2);
    for (int row : {3, 4}) {
        EXPECT_EQ(query.FieldByName("id")->AsInteger(), row);
        for (int column = 1; column < 4; ++column) {
            const TFieldValueItem& item = *query.FFieldValues[static_cast<std::size_t>(column)];
            const std::byte* slot = query.ActiveBuffer() + item.RecordOffset;
            for (std::size_t i = 0; i <= item.DataSize; ++i) {
                ASSERT_EQ(slot[i], std::byte{0}) << "row " << row << " column " << column << " byte " << i;
            }
            TField* field = query.Fields()[column];
            EXPECT_TRUE(field->IsNull());
            std::int64_t untouched = 0x5a5a5a5a5a5a5a5a;
            EXPECT_FALSE(query.GetFieldData(field, &untouched));
            EXPECT_EQ(untouched, 0x5a5a5a5a5a5a5a5a);
        }
        query.Next();
    }
}

TEST_P(CursorEdges, LongTextColumnIsCappedAtTheBlobBufferSize) {
    const std::string table =
        MakeTable("edge_long", "v varchar(16000)", "('" + std::string(9000, 'x') + "')");
    TODBCQuery& query = Opened("select v from " + table);
    const TFieldDef* def = query.FieldDefs()[0];
    // SQLite reports VARCHAR(16000) as LONGVARCHAR.
    EXPECT_EQ(def->DataType(), IsSqlite(Profile) ? ftMemo : ftString);
    EXPECT_EQ(def->Size(), 8192);
    if (def->DataType() == ftString) {
        EXPECT_EQ(query.Fields()[0]->AsString(), std::string(8192, 'x'));
    }

    TODBCQuery& small = Query("select v from " + table);
    small.SetBlobBufferSize(100);
    small.Open();
    EXPECT_EQ(small.FieldDefs()[0]->Size(), 100);
}

TEST_P(CursorEdges, StatementWithoutResultSetHasNoDefinitionsAndACursorReopensUnderTheOpenDataset) {
    const std::string table = NumberTable("edge_reopen", 6);
    TProbeQuery& update = Query("update " + table + " set name = 'x' where id = 1");
    update.InternalExecSQL();
    update.InternalInitFieldDefs();
    EXPECT_EQ(update.FieldDefs().Count(), 0);
    EXPECT_TRUE(update.FFieldValues.empty());
    EXPECT_FALSE(update.IsDataSet());

    TProbeQuery& select = Query("select id, name from " + table);
    select.Prepare();
    EXPECT_TRUE(select.IsDataSet());
    // psqlODBC keeps the description of a prepared statement that never ran: run it.
    select.Open();
    select.Close();

    TODBCQuery& query = Query("select id from " + table + " order by id");
    query.ImmediatelyOpen();
    ASSERT_TRUE(query.Active());
    query.MoveBy(3);
    const TBookmark bookmark = query.SilentClose();
    EXPECT_FALSE(bookmark.IsNil());
    Raw->Exec("delete from " + table + " where id = 2");
    query.SilentOpen(bookmark);
    EXPECT_EQ(query.FieldByName("id")->AsInteger(), 5); // the fourth row now

    query.ImmediatelyOpen(); // re-executes under the same fields
    query.First();
    EXPECT_EQ(query.FieldByName("id")->AsInteger(), 1);
    EXPECT_EQ(query.RecordCount(), 5);
}

INSTANTIATE_TEST_SUITE_P(Drivers, CursorEdges, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda
