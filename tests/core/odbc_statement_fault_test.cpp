// The statement side against the fault-injection driver, whose call log shows exactly what the
// dataset asked of ODBC: prepare or direct execution, bound types and values, data sent at
// execution time, cursor options, and failures on demand.
#include "core_test_support.h"
#include "odbc/odbc_api_p.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/datetime.h"
#include "quorda/rtl/messages.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <quorda_test/fault_driver.h>

namespace quorda {
namespace {

using quorda_test::FaultDriver;
using testing::DatabaseErrorOf;
using testing::MakeQuery;
using testing::OpenDatabase;
using testing::Raised;
using Lines = std::vector<std::string>;

TEST(StatementExecution, WithoutParametersRunsDirectlyOtherwisePrepares) {
    FaultDriver fault;
    auto db = OpenDatabase(fault.ConnectionString());
    auto direct = MakeQuery(db.get(), "delete from t where note = 'a:b'");
    direct->ExecSQL();
    EXPECT_EQ(direct->State(), dsBrowse); // set although no cursor is shown
    EXPECT_EQ(fault.Calls({"SQLPrepare", "SQLExecute", "SQLExecDirect"}),
              Lines{"SQLExecDirect delete from t where note = 'a:b'"});

    fault.ClearLog();
    auto prepared = MakeQuery(db.get(), "update t set a = :a where id = :id");
    prepared->ParamByName("a")->SetAsInteger(5);
    prepared->ParamByName("id")->SetAsInteger(6);
    prepared->ExecSQL();
    prepared->ParamByName("a")->SetAsString("seven");
    prepared->ExecSQL();
    prepared->ParamByName("a")->SetAsString("six");
    prepared->ExecSQL();
    // Prepared and reset once; a binding is kept while its types and buffer stay (a shorter text
    // keeps the larger column size) and made again when the type changes.
    EXPECT_EQ(fault.Calls({"SQLPrepare", "SQLExecute", "SQLExecDirect", "SQLBindParameter"}),
              (Lines{"SQLPrepare update t set a = ? where id = ?", "SQLBindParameter 1 1 4 4 4 0 4",
                     "SQLBindParameter 2 1 4 4 4 0 4", "SQLExecute", "SQLBindParameter 1 1 1 1 5 0 5",
                     "SQLExecute", "SQLExecute"}));
    EXPECT_EQ(fault.Count("SQLFreeStmt 3"), 1);

    // In the designer every statement is prepared, so that it can be described.
    fault.ClearLog();
    auto designed = MakeQuery(db.get(), "delete from t");
    designed->SetDesigning(true);
    designed->ExecSQL();
    EXPECT_EQ(fault.Calls({"SQLPrepare", "SQLExecute", "SQLExecDirect"}),
              (Lines{"SQLPrepare delete from t", "SQLExecute"}));
}

TEST(StatementExecution, EveryParameterTypeIsBoundAsConverted) {
    FaultDriver fault;
    auto db = OpenDatabase(fault.ConnectionString());
    auto query =
        MakeQuery(db.get(), "insert into t values (:s, :i, :f, :c, :d, :t, :ts, :b, :m, :bl, :si, :fm)");
    query->ParamByName("s")->SetAsString("O'Brien \xC3\xA9t\xC3\xA9");
    query->ParamByName("i")->SetAsInteger(-42);
    query->ParamByName("f")->SetAsFloat(2.5);
    query->ParamByName("c")->SetAsCurrency(12.34);
    query->ParamByName("d")->SetAsDate(EncodeDate(2024, 2, 29));
    query->ParamByName("t")->SetAsTime(EncodeTime(13, 45, 10, 0));
    query->ParamByName("ts")->SetAsDateTime(EncodeDateTime(2024, 2, 29, 13, 45, 10, 7));
    query->ParamByName("b")->SetAsBoolean(true);
    query->ParamByName("m")->SetAsMemo("memo text");
    query->ParamByName("bl")->SetBlobData("blob", 4);
    query->ParamByName("si")->SetAsSmallInt(7);
    query->ParamByName("fm")->SetDataType(ftFmtMemo);
    query->ParamByName("fm")->SetText("formatted");
    query->ExecSQL();
    // <n> <C type> <SQL type> <column size> <indicator> <value as the driver read it>
    EXPECT_EQ(fault.Calls({"param"}),
              (Lines{"param 1 1 1 13 13 13:O'Brien %C3%A9t%C3%A9", "param 2 4 4 4 4 -42",
                     "param 3 8 8 8 8 2.5", "param 4 1 1 5 5 5:12.34", "param 5 9 9 6 6 2024-02-29",
                     "param 6 10 10 6 6 13:45:10", "param 7 11 11 23 16 2024-02-29 13:45:10.7000000",
                     "param 8 4 4 4 4 -1", "param 9 1 -1 9 9 9:memo text", "param 10 -2 -4 4 4 4:blob",
                     "param 11 4 4 4 4 7", "param 12 1 -1 9 9 9:formatted"}));
}

TEST(StatementExecution, LongValuesAreSentAtExecutionInPieces) {
    FaultDriver fault;
    auto db = OpenDatabase(fault.ConnectionString());
    auto query = MakeQuery(db.get(), "insert into t values (:long, :short, :blob)");
    const std::string text = std::string(8999, 'x') + "y";
    std::string blob(10000, '\0');
    for (std::size_t i = 0; i < blob.size(); ++i) {
        blob[i] = static_cast<char>('a' + i % 26);
    }
    query->ParamByName("long")->SetAsString(text);
    // Text goes with its byte length, a NUL byte included.
    query->ParamByName("short")->SetAsString(std::string("sh\0rt", 5));
    query->ParamByName("blob")->SetBlobData(blob.data(), blob.size());
    query->ExecSQL();
    // A string beyond ParamAtExecSize becomes long text with twice its length as column size; the
    // value pointer is the item's own index, the buffer length 0.
    EXPECT_EQ(fault.Calls({"SQLBindParameter"}),
              (Lines{"SQLBindParameter 1 1 1 -1 18000 0 0", "SQLBindParameter 2 1 1 1 5 0 5",
                     "SQLBindParameter 3 1 -2 -4 10000 0 0"}));
    // Text pieces of BlobBufferSize, the last one without the terminating zero; binary data whole.
    EXPECT_EQ(fault.Calls({"SQLPutData"}),
              (Lines{"SQLPutData 8192", "SQLPutData 808", "SQLPutData 8192", "SQLPutData 1808"}));
    const Lines params = fault.Calls({"param"});
    ASSERT_EQ(params.size(), 3u);
    EXPECT_EQ(params[0].substr(0, 29), "param 1 1 -1 18000 -9100 9000");
    EXPECT_EQ(params[0].substr(params[0].size() - 4), "xxxx"); // the log shows the first 200 bytes
    EXPECT_EQ(params[1], "param 2 1 1 5 5 5:sh%00rt");
    EXPECT_EQ(params[2].substr(0, 33), "param 3 -2 -4 10000 -10100 10000:");

    // A smaller piece size and a lower threshold: every piece arrives, in order, at its parameter.
    // 9001 bytes of text make three full pieces and a last piece that is only the terminator.
    fault.ClearLog();
    db->SetParamAtExecSize(3);
    query->SetBlobBufferSize(3000);
    query->ParamByName("short")->SetAsString(std::string("abc\0efg", 7));
    query->ExecSQL();
    EXPECT_EQ(fault.Calls({"SQLPutData"}),
              (Lines{"SQLPutData 3000", "SQLPutData 3000", "SQLPutData 3000", "SQLPutData 7",
                     "SQLPutData 3000", "SQLPutData 3000", "SQLPutData 3000", "SQLPutData 1000"}));
    const Lines again = fault.Calls({"param"});
    ASSERT_EQ(again.size(), 3u);
    EXPECT_EQ(again[1], "param 2 1 -1 14 -107 7:abc%00efg");
}

TEST(StatementExecution, RefusedValuesAndTextsFailBeforeAnythingRuns) {
    FaultDriver fault;
    auto db = OpenDatabase(fault.ConnectionString());
    // Parameter numbers are 16-bit in ODBC: the 65536th would have been bound as number 0, the next
    // over the first.
    EXPECT_EQ(DatabaseErrorOf(
                  [&] { testing::QueryWithParams(db.get(), "insert into t values ", 65536)->ExecSQL(); }),
              FormatMessage(LoadStr(SODBCTooManyParams), 65536, 65535));
    EXPECT_EQ(fault.Calls({"SQLPrepare", "SQLBindParameter"}), Lines{});

    auto query = MakeQuery(db.get(), "insert into t values (:amount)");
    query->ParamByName("amount")->SetAsBCD(Currency::FromRaw(123400));
    const auto bcd = Raised<EODBCDatabaseError>([&] { query->ExecSQL(); });
    EXPECT_EQ(bcd ? bcd->Message() : std::string(), "Parameter type not supported");
    // A parameter that was never given a value has no type to bind.
    auto unset = MakeQuery(db.get(), "insert into t values (:nothing)");
    EXPECT_EQ(DatabaseErrorOf([&] { unset->ExecSQL(); }), "ODBC Field nothing undefined type");

    auto tiny = MakeQuery(db.get(), "x");
    EXPECT_EQ(DatabaseErrorOf([&] { tiny->Prepare(); }), "ODBC Empty sql statement");
    EXPECT_FALSE(tiny->Prepared());
    tiny->SQL().SetText("xy");
    tiny->Prepare();
    EXPECT_TRUE(tiny->Prepared());
    // The refused values were found while binding, after preparing; nothing was executed.
    EXPECT_EQ(fault.Calls({"SQLExecute", "SQLExecDirect"}), Lines{});
    EXPECT_TRUE(fault.Received("SQLPrepare xy"));
}

// Whether the driver refuses the statement or warns about data sent at execution (any warning from
// SQLPutData fails it), the failed attempt leaves nothing behind that stops the next one.
TEST(StatementExecution, AFailedExecutionIsRepeatedFromScratch) {
    FaultDriver fault("fail:SQLExecute@1|diag:SQLExecute:23000/19/constraint failed"
                      "|info:SQLPutData@2|diag:SQLPutData:01004/0/String data, right truncated");
    auto db = OpenDatabase(fault.ConnectionString());
    auto query = MakeQuery(db.get(), "insert into t values (:a, :m)");
    query->ParamByName("a")->SetAsInteger(1);
    query->ParamByName("m")->SetAsMemo(std::string(20000, 'm'));
    const auto refused = Raised<EODBCError>([&] { query->ExecSQL(); });
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->NativeError(), 19);
    EXPECT_EQ(refused->Hstmt(), query->StatementHandle());
    EXPECT_EQ(refused->Hdbc(), db->GetDBC());
    EXPECT_EQ(query->State(), dsInactive);

    const auto warned = Raised<EODBCError>([&] { query->ExecSQL(); });
    ASSERT_TRUE(warned);
    EXPECT_EQ(warned->SQLState().substr(0, 5), "01004");
    EXPECT_EQ(warned->Hstmt(), query->StatementHandle());
    EXPECT_EQ(warned->Hdbc(), nullptr); // the statement's own diagnostics only
    EXPECT_EQ(fault.Count("SQLPutData 8192"), 2);
    EXPECT_EQ(fault.Calls({"param"}), Lines{}); // the statement never ran

    query->ParamByName("a")->SetAsInteger(2);
    query->ExecSQL();
    const Lines params = fault.Calls({"param"});
    ASSERT_EQ(params.size(), 2u);
    EXPECT_EQ(params[0], "param 1 4 4 4 4 2");
    EXPECT_EQ(fault.Count("SQLPrepare insert into t values (?, ?)"), 1);
}

TEST(StatementHandle, CursorOptionsFollowTheSettings) {
    FaultDriver fault("rowset:20");
    auto db = OpenDatabase(fault.ConnectionString());
    auto keyset = MakeQuery(db.get(), "delete from t");
    keyset->CreateHandle();
    EXPECT_EQ(fault.Calls({"SQLSetStmtOption", "SQLGetStmtOption"}), Lines{"SQLSetStmtOption 6 1"});
    // Applied to the existing statement at once.
    keyset->SetUniDirectional(true);
    keyset->SetUniDirectional(true);
    EXPECT_EQ(fault.Calls({"SQLSetStmtOption", "SQLGetStmtOption"}),
              (Lines{"SQLSetStmtOption 6 1", "SQLSetStmtOption 6 0"}));

    fault.ClearLog();
    auto forward = MakeQuery(db.get(), "delete from t");
    forward->SetUniDirectional(true);
    forward->SetBlockCursor(true);
    forward->ExecSQL();
    // The driver grants fewer rows per block than asked: the dataset takes its word.
    EXPECT_EQ(fault.Calls({"SQLSetStmtOption", "SQLGetStmtOption"}),
              (Lines{"SQLSetStmtOption 9 100", "SQLGetStmtOption 9"}));
    EXPECT_EQ(forward->RowSetSize(), 20);

    // Block cursor without forward-only asks for no row set.
    fault.ClearLog();
    auto block = MakeQuery(db.get(), "delete from t");
    block->SetBlockCursor(true);
    block->ExecSQL();
    EXPECT_EQ(fault.Calls({"SQLSetStmtOption", "SQLGetStmtOption"}), Lines{"SQLSetStmtOption 6 1"});
    EXPECT_EQ(block->RowSetSize(), 100);

    // The executed dataset is active: its block settings only take what they already hold.
    const std::string open = "ODBC This operation is not allowed on open dataset";
    EXPECT_EQ(DatabaseErrorOf([&] { block->SetBlockCursor(false); }), open);
    EXPECT_EQ(DatabaseErrorOf([&] { block->SetRowSetSize(50); }), open);
    block->SetBlockCursor(true);
    block->SetRowSetSize(100);
    block->Close();
    EXPECT_EQ(block->StatementHandle(), nullptr);
    block->SetBlockCursor(false);
    block->SetRowSetSize(50);
}

TEST(StatementHandle, CursorNameAndRelease) {
    FaultDriver fault;
    auto db = OpenDatabase(fault.ConnectionString());
    auto query = MakeQuery(db.get(), "update t set a = 1");
    // A cursor name is given before the statement runs.
    query->Prepare();
    query->SetCursorName("C_ORDERS");
    EXPECT_EQ(query->CursorName(), "C_ORDERS");
    EXPECT_TRUE(fault.Received("SQLGetCursorName 256"));
    query->ExecSQL();

    // Changing the text releases the statement.
    query->SQL().SetText("update t set a = 2");
    EXPECT_EQ(query->StatementHandle(), nullptr);
    EXPECT_EQ(query->State(), dsInactive);

    // Unpreparing only resets the parameters.
    fault.ClearLog();
    query->Prepare();
    query->UnPrepare();
    EXPECT_FALSE(query->Prepared());
    EXPECT_NE(query->StatementHandle(), nullptr);
    EXPECT_EQ(fault.Calls({"SQLFreeStmt"}), Lines{"SQLFreeStmt 3"});
}

TEST(DatabaseDatasets, DatasetsJoinLeaveAndAreReleasedByTheirDatabase) {
    FaultDriver fault;
    auto db = OpenDatabase(fault.ConnectionString());
    auto other = OpenDatabase(fault.ConnectionString());
    auto first = MakeQuery(db.get(), "delete from a");
    auto second = MakeQuery(db.get(), "delete from b where x = :x");
    ASSERT_EQ(db->DatasetCount(), 2);
    EXPECT_EQ(db->Datasets(0), first.get());

    // Moving a dataset releases its statement on the old connection.
    first->ExecSQL();
    SQLHSTMT moved = first->StatementHandle();
    first->SetODBCDatabase(other.get());
    EXPECT_EQ(first->State(), dsInactive);
    EXPECT_EQ(first->StatementHandle(), nullptr);
    EXPECT_NE(moved, nullptr);
    EXPECT_EQ(db->DatasetCount(), 1);
    EXPECT_EQ(other->Datasets(0), first.get());

    // Closing the database closes its datasets and drops the statements they hold.
    second->ParamByName("x")->SetAsInteger(1);
    second->Prepare();
    first->ExecSQL();
    db->Close();
    EXPECT_EQ(second->StatementHandle(), nullptr);
    EXPECT_FALSE(second->Prepared());
    EXPECT_NE(first->StatementHandle(), nullptr); // on the other database

    // Freeing the database detaches what is still attached.
    other.reset();
    EXPECT_EQ(first->ODBCDatabase(), nullptr);
    EXPECT_EQ(first->StatementHandle(), nullptr);
    EXPECT_EQ(first->State(), dsInactive);
    db.reset();
    EXPECT_EQ(second->ODBCDatabase(), nullptr);
    // Both datasets outlive their databases and are freed afterwards without touching them.
}

// Components of one owner, which frees them last first: either may go before the other; a database
// taken from its owner leaves the dataset detached.
TEST(DatabaseDatasets, DatabaseAndDatasetOfOneOwnerGoInEitherOrderOrApart) {
    FaultDriver fault;
    enum { DatasetCreatedFirst, DatabaseCreatedFirst, DatabaseTakenAway };
    for (int variant : {DatasetCreatedFirst, DatabaseCreatedFirst, DatabaseTakenAway}) {
        TComponent owner(nullptr);
        TODBCQuery* query = variant == DatasetCreatedFirst ? new TODBCQuery(&owner) : nullptr;
        auto* database = new TODBCDatabase(&owner);
        query = query != nullptr ? query : new TODBCQuery(&owner);
        database->SetDriverConnectOption(dcoDriverNoPrompt);
        database->SetConnectStr(fault.ConnectionString());
        database->Open();
        query->SetODBCDatabase(database);
        query->SQL().SetText("delete from t where id = :id");
        query->ParamByName("id")->SetAsInteger(3);
        query->ExecSQL();
        if (variant == DatabaseTakenAway) {
            owner.RemoveComponent(database);
            std::unique_ptr<TODBCDatabase> released(database);
            EXPECT_EQ(query->ODBCDatabase(), nullptr);
            EXPECT_EQ(database->DatasetCount(), 0);
        }
    }
}

} // namespace
} // namespace quorda
