// The cursor against the fault-injection driver: column types and values no real driver here
// reports, rowsets the driver grants smaller than asked, and failing fetches.

#include "core/odbc_dataset_p.h"
#include "odbc_cursor_fixture.h"
#include "quorda/odbc/odbc_error.h"

#include <algorithm>

namespace quorda {
namespace {

using testing::ErrorOf;
using testing::FaultDatabase;
using testing::Raised;
using testing::TProbeQuery;
using Lines = std::vector<std::string>;

// Unmapped column types (VARBINARY among them: SQLite ODBC and MariaDB report varbinary(n), psqlODBC
// bytea with ByteaAsLongVarBinary=0) and impossible dates fail the open. A second attempt meets the
// same refusal, not a half-open dataset.
TEST(CursorFaultTypes, UnmappedColumnTypesAndImpossibleDatesFailTheOpen) {
    const std::string unmapped = "TODBCDataSet.InternalInitRecord: ODBC This function not implemented";
    const std::string badDate = "Invalid argument to date encode";
    for (const auto& [script, message] :
         std::vector<std::pair<std::string, std::string>>{{"result:id/4,v/-3|rows:1", unmapped},
                                                          {"result:id/4,v/-11|rows:1", unmapped},
                                                          {"result:id/4,v/0|rows:1", unmapped},
                                                          {"result:id/4,v/2004|rows:1", unmapped},
                                                          {"result:d/9|row:2023-02-29", badDate},
                                                          {"result:d/9|row:2023-13-01", badDate}}) {
        SCOPED_TRACE(script);
        FaultDatabase db(script);
        for (int attempt = 0; attempt < 2; ++attempt) {
            EXPECT_EQ(ErrorOf([&] { db.Query->Open(); }), message);
            EXPECT_FALSE(db.Query->Active());
            EXPECT_FALSE(db.Query->HoldsStatement());
        }
    }
}

TEST(CursorFaultTypes, TimeStampFractionsBecomeMilliseconds) {
    FaultDatabase db("result:ts/11|row:2024-02-29 23:59:59.005|row:1899-12-29 06:00:00.123456789|"
                     "row:0001-01-01 00:00:00.999999999");
    db.Query->Open();
    // The first three digits of the fraction, whatever follows them.
    EXPECT_TRUE(testing::SameRows(
        testing::ReadToEnd(*db.Query),
        {{"2024-02-29 23:59:59.005"}, {"1899-12-29 06:00:00.123"}, {"0001-01-01 00:00:00.999"}}));
}

TEST(CursorFaultFetching, RowsetsSmallerThanAskedAreReadWhereTheDriverWroteThem) {
    // Every column type, fixed-size and variable, in rowsets the driver cuts to 7 rows.
    FaultDatabase db("rowset:7|result:id/4,big/-5,sm/5,f/8,name/12/10,d/9,t/10,ts/11,memo/-1/50|rows:20");
    db.Query->SetUniDirectional(true);
    db.Query->SetBlockCursor(true);
    db.Query->SetRowSetSize(100);
    db.Query->Open();
    EXPECT_EQ(db.Query->RowSetSize(), 7);
    std::vector<testing::RowTexts> expected;
    for (int i = 1; i <= 20; ++i) {
        const std::string n = std::to_string(i);
        expected.push_back(
            {n, n, n, n, "r" + n, "2001-02-03", "04:05:06", "2001-02-03 04:05:06.000", "r" + n});
    }
    EXPECT_TRUE(testing::SameRows(testing::ReadToEnd(*db.Query), expected));
    // Three rowsets (7, 7, 6) and the empty one after them.
    EXPECT_EQ(db.Fault.Calls({"SQLExtendedFetch"}), Lines(4, "SQLExtendedFetch 1 0"));
    EXPECT_EQ(db.Fault.Count("SQLFetch"), 0);
}

TEST(CursorFaultFetching, StatementPreparedUnderOtherSettingsFetchesWhatTheBuffersHold) {
    // A prepared statement keeps the rowset size of its handle; the settings may change before it
    // opens, and its rowsets must never outgrow the bound buffers.
    FaultDatabase db("result:id/4,name/12/10|rows:120", "select * from t where id > :id");
    TProbeQuery& query = *db.Query;
    query.ParamByName("id")->SetAsInteger(0);
    auto readsEveryRow = [&query] {
        query.Open();
        int expected = 1;
        for (; !query.Eof(); query.Next(), ++expected) {
            if (query.Fields()[1]->AsString() != "r" + std::to_string(expected)) {
                return false;
            }
        }
        query.Close();
        return expected == 121;
    };
    query.SetUniDirectional(true);
    query.SetBlockCursor(true);
    query.SetRowSetSize(50);
    query.Prepare();
    query.SetRowSetSize(10);
    EXPECT_TRUE(readsEveryRow()) << "smaller rowsets";
    query.SetRowSetSize(50);
    query.Prepare();
    // The driver manager refuses another cursor type for the prepared statement; the setting stays.
    EXPECT_THROW(query.SetUniDirectional(false), EODBCError);
    EXPECT_TRUE(readsEveryRow()) << "single rows, scrollable";
}

TEST(CursorFaultFetching, DriverFailureDuringAFetchRaisesAndKeepsTheRowNumber) {
    FaultDatabase db("result:id/4|rows:5|fail:SQLExtendedFetch@3|diag:SQLExtendedFetch:08S01/7/link down");
    db.Query->Open();
    db.Query->Next();
    const auto e = Raised<EODBCError>([&] { db.Query->Next(); });
    EXPECT_EQ(e ? e->NativeError() : 0, 7);
    EXPECT_EQ(db.Query->FCurrentRow, 1);
    EXPECT_EQ(db.Query->FCrack, 0);
    // The failed step did not move the driver's cursor: the next one reads the third row.
    db.Query->Next();
    EXPECT_EQ(db.Query->Fields()[0]->AsInteger(), 3);
}

// Wide and decimal columns are mapped by the type table (FieldTypeMap) and read back on the real
// drivers (CursorValues); what no driver here reports is a column without a name.
TEST(CursorFaultFetching, OriginsComeFromTheColumnAttributesAndUnnamedColumnsAreCalledUnknown) {
    FaultDatabase db("result:id/4//0/orders,note/12/10//,/4//0/orders,/4|row:1,a,2,3",
                     "select id, note, 1, 2 from orders");
    db.Query->Open();
    EXPECT_EQ(db.Query->Fields()[0]->Origin(), "orders.id");
    EXPECT_EQ(db.Query->Fields()[1]->Origin(), "note");
    EXPECT_EQ(db.Query->Fields()[2]->Origin(), "orders.");
    EXPECT_EQ(db.Query->FieldDefs()[2]->Name(), "unknown");
    EXPECT_EQ(db.Query->FieldDefs()[3]->Name(), "unknown_1");
    EXPECT_EQ(db.Query->Fields()[3]->AsInteger(), 3);
    db.Query->Close();
    db.Db->SetIgnoreOriginInfo(true);
    db.Fault.ClearLog();
    db.Query->Open();
    EXPECT_EQ(db.Query->Fields()[0]->Origin(), "");
    // Only whether the integer columns are unsigned is asked (SQL_COLUMN_UNSIGNED), never an origin.
    EXPECT_EQ(db.Fault.Calls({"SQLColAttributes"}),
              (Lines{"SQLColAttributes 1 8", "SQLColAttributes 3 8", "SQLColAttributes 4 8"}));
}

} // namespace
} // namespace quorda
