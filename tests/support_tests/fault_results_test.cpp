// Scripted result sets, options and parameters of the fault-injection driver, through the real driver
// manager.
#include "odbc2_connection.h"
#include "quorda_test/fault_driver.h"
#include "quorda_test/raw_odbc.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace quorda_test {
namespace {

class ScrollingCursor : public testing::Test {
protected:
    void Open(const std::string& script) {
        Fault = std::make_unique<FaultDriver>(script);
        ASSERT_EQ(Db.Connect(Fault->ConnectionString()), SQL_SUCCESS);
        ASSERT_EQ(SQLSetStmtOption(Db.Stmt(), SQL_CURSOR_TYPE, SQL_CURSOR_KEYSET_DRIVEN), SQL_SUCCESS);
        ASSERT_EQ(Db.Exec("select id, name from t"), SQL_SUCCESS);
        ASSERT_EQ(SQLBindCol(Db.Stmt(), 1, SQL_C_LONG, &Id, sizeof Id, &IdIndicator), SQL_SUCCESS);
    }
    // The id of the row the fetch landed on, or -1 for SQL_NO_DATA.
    int Fetch(SQLUSMALLINT orientation, SQLLEN offset = 0) {
        SQLULEN fetched = 0;
        SQLUSMALLINT status[4] = {};
        Id = -7;
        SQLRETURN rc = SQLExtendedFetch(Db.Stmt(), orientation, offset, &fetched, status);
        if (rc == SQL_NO_DATA) {
            return -1;
        }
        EXPECT_EQ(rc, SQL_SUCCESS);
        EXPECT_EQ(fetched, 1u);
        return Id;
    }

    std::unique_ptr<FaultDriver> Fault;
    Odbc2 Db;
    SQLINTEGER Id = 0;
    SQLLEN IdIndicator = 0;
};

TEST_F(ScrollingCursor, EveryOrientationLandsWhereOdbcSays) {
    Open("result:id/4,name/12|rows:5");
    EXPECT_EQ(Fetch(SQL_FETCH_FIRST), 1);
    EXPECT_EQ(Fetch(SQL_FETCH_PRIOR), -1); // before the first row
    EXPECT_EQ(Fetch(SQL_FETCH_NEXT), 1);
    EXPECT_EQ(Fetch(SQL_FETCH_LAST), 5);
    EXPECT_EQ(Fetch(SQL_FETCH_NEXT), -1); // after the last row
    EXPECT_EQ(Fetch(SQL_FETCH_PRIOR), 5);
    EXPECT_EQ(Fetch(SQL_FETCH_ABSOLUTE, 3), 3);
    EXPECT_EQ(Fetch(SQL_FETCH_RELATIVE, -2), 1);
    EXPECT_EQ(Fetch(SQL_FETCH_RELATIVE, 10), -1);
    EXPECT_EQ(Fetch(SQL_FETCH_RELATIVE, -1), 5);
    EXPECT_EQ(Fetch(SQL_FETCH_ABSOLUTE, -2), 4);
    EXPECT_EQ(Fetch(SQL_FETCH_ABSOLUTE, 6), -1);
    EXPECT_EQ(Fetch(SQL_FETCH_ABSOLUTE, 0), -1);
    EXPECT_EQ(Fetch(SQL_FETCH_NEXT), 1);
}

TEST_F(ScrollingCursor, CountedFailuresHitOnlyTheirCall) {
    Open("result:id/4,name/12|rows:3|fail:SQLExtendedFetch@2");
    EXPECT_EQ(Fetch(SQL_FETCH_NEXT), 1);
    SQLULEN fetched = 0;
    EXPECT_EQ(SQLExtendedFetch(Db.Stmt(), SQL_FETCH_NEXT, 0, &fetched, nullptr), SQL_ERROR);
    EXPECT_EQ(Fetch(SQL_FETCH_NEXT), 2); // the failed call did not move the cursor
    EXPECT_EQ(Fault->Calls("SQLExtendedFetch").size(), 3u);
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
    // A forward-only cursor refuses to scroll.
    EXPECT_EQ(SQLExtendedFetch(db.Stmt(), SQL_FETCH_FIRST, 0, &fetched, status), SQL_ERROR);
    EXPECT_EQ(db.Errors(true).at(0).State, "S1106");
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

TEST(FaultDriverResults, ParametersAndDataAtExecutionAreLogged) {
    FaultDriver fault("rowcount:3");
    Odbc2 db;
    ASSERT_EQ(db.Connect(fault.ConnectionString()), SQL_SUCCESS);
    SQLHSTMT stmt = db.Stmt();
    ASSERT_EQ(SQLPrepare(stmt, Odbc2::Text("insert into t values (?, ?)"), SQL_NTS), SQL_SUCCESS);

    SQLINTEGER token = 0;
    SQLLEN atExecution = SQL_LEN_DATA_AT_EXEC(9000);
    SQLINTEGER number = 42;
    SQLLEN numberLength = sizeof number;
    ASSERT_EQ(SQLBindParameter(stmt, 1, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_LONGVARCHAR, 18000, 0, &token, 0,
                               &atExecution),
              SQL_SUCCESS);
    ASSERT_EQ(
        SQLBindParameter(stmt, 2, SQL_PARAM_INPUT, SQL_C_LONG, SQL_INTEGER, 4, 0, &number, 4, &numberLength),
        SQL_SUCCESS);

    ASSERT_EQ(SQLExecute(stmt), SQL_NEED_DATA);
    SQLPOINTER asked = nullptr;
    ASSERT_EQ(SQLParamData(stmt, &asked), SQL_NEED_DATA);
    EXPECT_EQ(asked, &token);
    std::string text(9000, 'x');
    ASSERT_EQ(SQLPutData(stmt, text.data(), 8192), SQL_SUCCESS);
    ASSERT_EQ(SQLPutData(stmt, text.data() + 8192, 808), SQL_SUCCESS);
    ASSERT_EQ(SQLParamData(stmt, &asked), SQL_SUCCESS);
    SQLLEN rows = 0;
    ASSERT_EQ(SQLRowCount(stmt, &rows), SQL_SUCCESS);
    EXPECT_EQ(rows, 3);

    EXPECT_TRUE(fault.Received("SQLBindParameter 1 1 1 -1 18000 0 0"));
    EXPECT_EQ(fault.Calls("SQLPutData"), (std::vector<std::string>{"SQLPutData 8192", "SQLPutData 808"}));
    EXPECT_TRUE(fault.Received("param 1 1 -1 18000 -9100 9000:" + std::string(200, 'x')));
    EXPECT_TRUE(fault.Received("param 2 4 4 4 4 42"));
}

TEST(FaultDriverResults, CallLogQueryAndCatalogRows) {
    FaultDriver fault("table:orders/sales/TABLE/~|table:lines/~/VIEW/notes");
    Odbc2 db;
    ASSERT_EQ(db.Connect(fault.ConnectionString()), SQL_SUCCESS);
    ASSERT_EQ(SQLTables(db.Stmt(), nullptr, 0, nullptr, 0, nullptr, 0, nullptr, 0), SQL_SUCCESS);
    std::vector<std::string> seen;
    while (SQLFetch(db.Stmt()) == SQL_SUCCESS) {
        char owner[16] = {};
        SQLLEN length = 0;
        SQLGetData(db.Stmt(), 2, SQL_C_CHAR, owner, sizeof owner, &length);
        seen.push_back(length == SQL_NULL_DATA ? "NULL" : owner);
    }
    EXPECT_EQ(seen, (std::vector<std::string>{"sales", "NULL"}));
    EXPECT_TRUE(fault.Received("SQLTables null/0 null/0 null/0 null/0"));

    // An ODBC 3 application (RawOdbc) sees the same log through the built-in query.
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
