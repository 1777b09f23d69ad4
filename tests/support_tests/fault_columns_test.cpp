// Scripted driver information, info returns and timing of the fault-injection driver, through the real
// driver manager.
#include "odbc2_connection.h"
#include "quorda_test/fault_driver.h"

#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <string>

namespace quorda_test {
namespace {

TEST(FaultDriverColumns, ScriptedInformationCompletedStringAndInfoReturns) {
    FaultDriver fault(
        "connout:DSN=elsewhere%3BUID=bob|getinfo:17/Custom DBMS|cursor:forward|info:SQLExecDirect|"
        "diag:SQLExecDirect:01S07/0/fraction dropped");
    Odbc2 db;
    SQLCHAR out[64] = {};
    SQLSMALLINT outLength = 0;
    ASSERT_EQ(SQLDriverConnect(db.Dbc(), nullptr, Odbc2::Text(fault.ConnectionString()), SQL_NTS, out,
                               sizeof out, &outLength, SQL_DRIVER_NOPROMPT),
              SQL_SUCCESS);
    EXPECT_STREQ(reinterpret_cast<char*>(out), "DSN=elsewhere;UID=bob");

    char text[32] = {};
    SQLSMALLINT length = 0;
    EXPECT_EQ(SQLGetInfo(db.Dbc(), SQL_DBMS_NAME, text, sizeof text, &length), SQL_SUCCESS);
    EXPECT_STREQ(text, "Custom DBMS");
    SQLUINTEGER mask = 0;
    EXPECT_EQ(SQLGetInfo(db.Dbc(), SQL_SCROLL_OPTIONS, &mask, sizeof mask, &length), SQL_SUCCESS);
    EXPECT_EQ(mask, static_cast<SQLUINTEGER>(SQL_SO_FORWARD_ONLY));

    EXPECT_EQ(db.Exec("update t set x = 1"), SQL_SUCCESS_WITH_INFO);
    EXPECT_EQ(db.Errors(true), (std::vector<Record>{{"01S07", 0, "fraction dropped"}}));
}

TEST(FaultDriverColumns, SleepingCallLeavesOtherConnectionsFree) {
    FaultDriver slow("sleep:SQLExecDirect:2000");
    FaultDriver quick;
    Odbc2 first;
    Odbc2 second;
    ASSERT_EQ(first.Connect(slow.ConnectionString()), SQL_SUCCESS);
    ASSERT_EQ(second.Connect(quick.ConnectionString()), SQL_SUCCESS);
    first.Stmt();
    second.Stmt();

    auto started = std::chrono::steady_clock::now();
    auto sleeper = std::async(std::launch::async, [&] { return first.Exec("update t set x = 1"); });
    while (slow.Calls("SQLExecDirect").empty()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(second.Exec("update t set x = 2"), SQL_SUCCESS);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(1000));
    EXPECT_EQ(sleeper.get(), SQL_SUCCESS);
    EXPECT_GE(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(2000));
}

} // namespace
} // namespace quorda_test
