// Scripted result sets, statement options and the call log of the fault-injection driver, through
// the real driver manager.
#include "odbc2_connection.h"
#include "quorda_test/fault_driver.h"
#include "quorda_test/raw_odbc.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace quorda_test {
namespace {

TEST(FaultDriverResults, CountedFailuresHitOnlyTheirCall) {
    FaultDriver fault("result:id/4,name/12|rows:3|fail:SQLExtendedFetch@2");
    Odbc2 db;
    ASSERT_EQ(db.Connect(fault.ConnectionString()), SQL_SUCCESS);
    ASSERT_EQ(db.Exec("select id, name from t"), SQL_SUCCESS);
    SQLINTEGER id = 0;
    SQLLEN indicator = 0;
    ASSERT_EQ(SQLBindCol(db.Stmt(), 1, SQL_C_LONG, &id, sizeof id, &indicator), SQL_SUCCESS);
    SQLULEN fetched = 0;
    auto next = [&] { return SQLExtendedFetch(db.Stmt(), SQL_FETCH_NEXT, 0, &fetched, nullptr); };
    EXPECT_EQ(next(), SQL_SUCCESS);
    EXPECT_EQ(id, 1);
    EXPECT_EQ(next(), SQL_ERROR);
    EXPECT_EQ(next(), SQL_SUCCESS);
    EXPECT_EQ(id, 2); // the failed call did not move the cursor
    EXPECT_EQ(fault.Calls("SQLExtendedFetch").size(), 3u);
}

TEST(FaultDriverResults, BlockFetchFillsColumnArraysNullsAndRowStatus) {
    FaultDriver fault("result:id/4,name/12/8|row:1,a|row:2,~|row:3,cdefghijk");
    Odbc2 db;
    ASSERT_EQ(db.Connect(fault.ConnectionString()), SQL_SUCCESS);
    ASSERT_EQ(SQLSetStmtOption(db.Stmt(), SQL_CURSOR_TYPE, SQL_CURSOR_FORWARD_ONLY), SQL_SUCCESS);
    ASSERT_EQ(SQLSetStmtOption(db.Stmt(), SQL_ROWSET_SIZE, 2), SQL_SUCCESS);
    ASSERT_EQ(db.Exec("select id, name from t"), SQL_SUCCESS);

    SQLINTEGER ids[2] = {};
    SQLLEN idIndicators[2] = {};
    char names[2][4] = {};
    SQLLEN nameIndicators[2] = {};
    ASSERT_EQ(SQLBindCol(db.Stmt(), 1, SQL_C_LONG, ids, sizeof ids[0], idIndicators), SQL_SUCCESS);
    ASSERT_EQ(SQLBindCol(db.Stmt(), 2, SQL_C_CHAR, names, sizeof names[0], nameIndicators), SQL_SUCCESS);

    SQLULEN fetched = 0;
    SQLUSMALLINT status[2] = {9, 9};
    ASSERT_EQ(SQLExtendedFetch(db.Stmt(), SQL_FETCH_NEXT, 0, &fetched, status), SQL_SUCCESS);
    EXPECT_EQ(fetched, 2u);
    EXPECT_EQ(ids[0], 1);
    EXPECT_EQ(ids[1], 2);
    EXPECT_STREQ(names[0], "a");
    EXPECT_EQ(nameIndicators[1], SQL_NULL_DATA);
    EXPECT_EQ(status[1], SQL_ROW_SUCCESS);

    // A value longer than its buffer is cut, with its whole length in the indicator.
    ASSERT_EQ(SQLExtendedFetch(db.Stmt(), SQL_FETCH_NEXT, 0, &fetched, status), SQL_SUCCESS_WITH_INFO);
    EXPECT_EQ(fetched, 1u);
    EXPECT_EQ(ids[0], 3);
    EXPECT_STREQ(names[0], "cde");
    EXPECT_EQ(nameIndicators[0], 9);
    EXPECT_EQ(status[1], SQL_ROW_NOROW);
    EXPECT_EQ(db.Errors(true).at(0).State, "01004");

    EXPECT_EQ(SQLExtendedFetch(db.Stmt(), SQL_FETCH_NEXT, 0, &fetched, status), SQL_NO_DATA);
}

TEST(FaultDriverResults, GetDataReadsLongValuesInPiecesWithOrWithoutTheirLength) {
    for (bool noTotal : {false, true}) {
        SCOPED_TRACE(noTotal ? "no total on the probe" : "lengths known");
        FaultDriver fault(std::string("result:memo/-1|row:^150000:ab") +
                          (noTotal ? "|nototal:SQLGetData@1" : ""));
        Odbc2 db;
        ASSERT_EQ(db.Connect(fault.ConnectionString()), SQL_SUCCESS);
        ASSERT_EQ(db.Exec("select memo from t"), SQL_SUCCESS);
        ASSERT_EQ(SQLFetch(db.Stmt()), SQL_SUCCESS);

        char probe[1] = {};
        SQLLEN length = -1;
        EXPECT_EQ(SQLGetData(db.Stmt(), 1, SQL_C_CHAR, probe, 0, &length), SQL_SUCCESS_WITH_INFO);
        EXPECT_EQ(length, noTotal ? SQL_NO_TOTAL : 150000);

        std::vector<char> first(100001);
        EXPECT_EQ(SQLGetData(db.Stmt(), 1, SQL_C_CHAR, first.data(), 100001, &length), SQL_SUCCESS_WITH_INFO);
        EXPECT_EQ(length, 150000);
        EXPECT_EQ(std::strlen(first.data()), 100000u);

        std::vector<char> rest(60000);
        EXPECT_EQ(SQLGetData(db.Stmt(), 1, SQL_C_CHAR, rest.data(), 60000, &length), SQL_SUCCESS);
        EXPECT_EQ(length, 50000);
        EXPECT_EQ(std::string(rest.data(), 2), "ab");
        EXPECT_EQ(SQLGetData(db.Stmt(), 1, SQL_C_CHAR, rest.data(), 60000, &length), SQL_NO_DATA);
    }
}

TEST(FaultDriverResults, StatementOptionsAreLoweredToWhatTheScriptGrants) {
    FaultDriver fault("cursor:static|rowset:10");
    Odbc2 db;
    ASSERT_EQ(db.Connect(fault.ConnectionString()), SQL_SUCCESS);
    EXPECT_EQ(SQLSetStmtOption(db.Stmt(), SQL_CURSOR_TYPE, SQL_CURSOR_KEYSET_DRIVEN), SQL_SUCCESS_WITH_INFO);
    EXPECT_EQ(db.Errors(true).at(0).State, "01S02");
    EXPECT_EQ(SQLSetStmtOption(db.Stmt(), SQL_ROWSET_SIZE, 100), SQL_SUCCESS_WITH_INFO);

    SQLULEN value = 0;
    ASSERT_EQ(SQLGetStmtOption(db.Stmt(), SQL_CURSOR_TYPE, &value), SQL_SUCCESS);
    EXPECT_EQ(value, static_cast<SQLULEN>(SQL_CURSOR_STATIC));
    value = ~SQLULEN{0}; // the rowset size fills all 8 bytes
    ASSERT_EQ(SQLGetStmtOption(db.Stmt(), SQL_ROWSET_SIZE, &value), SQL_SUCCESS);
    EXPECT_EQ(value, 10u);
    EXPECT_TRUE(fault.Received("SQLSetStmtOption 6 1"));
}

TEST(FaultDriverResults, CallLogIsReadableThroughTheBuiltInQuery) {
    // An ODBC 3 application (RawOdbc) reads the log through the built-in query.
    FaultDriver fault;
    RawOdbc raw(fault.ConnectionString());
    auto calls = raw.QueryStrings("select quorda_calls");
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls.front().front()->rfind("SQLDriverConnect 0 Driver=QuordaFault;", 0), 0u);
}

TEST(FaultDriverConnection, DsnConnectionsTakeScriptAndLogFromTheEnvironment) {
    FaultDriver fault("fail:SQLExecDirect|diag:SQLExecDirect:42000/3/scripted");
    fault.ApplyToDsn();
    RawOdbc db = RawOdbc::ConnectDsn(FaultDriver::kDsn, "alice", "secret");
    EXPECT_TRUE(fault.Received("SQLConnect QuordaTestFault alice secret"));
    try {
        db.Exec("select 1");
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "select 1: [42000] (3) scripted");
    }
}

TEST(FaultDriverConnection, MalformedScriptFailsTheConnectNamingTheRule) {
    try {
        RawOdbc db("Driver=QuordaFault;Script=fail:SQLFetch|explode:now");
        FAIL() << "connected";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find("unknown verb 'explode' in rule 'explode:now'"),
                  std::string::npos)
            << error.what();
    }
}

} // namespace
} // namespace quorda_test
