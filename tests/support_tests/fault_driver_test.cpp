// The fault-injection driver as the library sees it: loaded by the real unixODBC driver manager and
// called with the ODBC 2 functions the library uses.
#include "odbc2_connection.h"
#include "quorda_test/fault_driver.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace quorda_test {
namespace {

TEST(FaultDriverDiagnostics, RecordsReachSQLErrorSortedByStateWithOdbc2States) {
    // The driver manager collects the driver's records and hands them out ordered by SQLSTATE, highest
    // first; records with equal states keep the driver's order. ODBC 3 states become ODBC 2 ones.
    FaultDriver fault("fail:SQLExecDirect|diag:SQLExecDirect:42S02/0/second|diag:SQLExecDirect:HY000/1234/"
                      "first|fail:SQLTransact|diag:SQLTransact:01000/1/a|diag:SQLTransact:01000/2/b");
    Odbc2 db;
    ASSERT_EQ(db.Connect(fault.ConnectionString()), SQL_SUCCESS);

    EXPECT_EQ(db.Exec("select 1"), SQL_ERROR);
    EXPECT_EQ(db.Errors(true), (std::vector<Record>{{"S1000", 1234, "first"}, {"S0002", 0, "second"}}));

    EXPECT_EQ(SQLTransact(db.Env(), db.Dbc(), SQL_COMMIT), SQL_ERROR);
    EXPECT_EQ(db.Errors(false), (std::vector<Record>{{"01000", 1, "a"}, {"01000", 2, "b"}}));
}

TEST(FaultDriverDiagnostics, ScriptedFailureWithoutRecordsCarriesTheDefaultOne) {
    FaultDriver fault("fail:SQLSetConnectOption@2|fail:SQLAllocStmt|diag:SQLAllocStmt:-");
    Odbc2 db;
    ASSERT_EQ(db.Connect(fault.ConnectionString()), SQL_SUCCESS);
    EXPECT_EQ(SQLSetConnectOption(db.Dbc(), SQL_TXN_ISOLATION, SQL_TXN_SERIALIZABLE), SQL_SUCCESS);
    EXPECT_EQ(SQLSetConnectOption(db.Dbc(), SQL_AUTOCOMMIT, SQL_AUTOCOMMIT_OFF), SQL_ERROR);
    EXPECT_EQ(db.Errors(false),
              (std::vector<Record>{{"S1000", 0, "[Quorda][Fault] SQLSetConnectOption failed"}}));

    SQLHSTMT stmt = SQL_NULL_HSTMT;
    EXPECT_EQ(SQLAllocStmt(db.Dbc(), &stmt), SQL_ERROR);
    EXPECT_TRUE(db.Errors(false).empty());
}

TEST(FaultDriverConnection, CancelledDialogFailedDisconnectAndOptionLog) {
    {
        FaultDriver cancelled("nodata:SQLDriverConnect");
        Odbc2 db;
        EXPECT_EQ(db.Connect(cancelled.ConnectionString()), SQL_NO_DATA);
        EXPECT_TRUE(db.Errors(false).empty());
    }

    FaultDriver fault("fail:SQLDisconnect@1|diag:SQLDisconnect:08S01/9/link down");
    Odbc2 db;
    ASSERT_EQ(SQLSetConnectOption(db.Dbc(), SQL_ODBC_CURSORS, SQL_CUR_USE_DRIVER), SQL_SUCCESS);
    ASSERT_EQ(db.Connect(fault.ConnectionString()), SQL_SUCCESS);
    ASSERT_EQ(SQLSetConnectOption(db.Dbc(), SQL_TXN_ISOLATION, SQL_TXN_SERIALIZABLE), SQL_SUCCESS);
    ASSERT_EQ(SQLTransact(db.Env(), db.Dbc(), SQL_ROLLBACK), SQL_SUCCESS);

    EXPECT_EQ(SQLDisconnect(db.Dbc()), SQL_ERROR);
    EXPECT_EQ(db.Errors(false), (std::vector<Record>{{"08S01", 9, "link down"}}));
    EXPECT_EQ(SQLDisconnect(db.Dbc()), SQL_SUCCESS); // still connected after the failed one

    // The cursor-library option stays in the driver manager; the others reach the driver.
    EXPECT_TRUE(fault.Calls("SQLSetConnectOption 110").empty());
    EXPECT_TRUE(fault.Received("SQLSetConnectOption 108 8"));
    EXPECT_TRUE(fault.Received("SQLTransact 1"));
    EXPECT_FALSE(fault.Received("SQLTransact 0")); // a line that was not logged is not found
    EXPECT_EQ(fault.Count("SQLDisconnect"), 2);
}

} // namespace
} // namespace quorda_test
