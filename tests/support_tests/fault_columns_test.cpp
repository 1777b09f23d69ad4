// Column description, value conversion, driver information and timing of the fault-injection driver,
// through the real driver manager.
#include "odbc2_connection.h"
#include "quorda_test/fault_driver.h"

#include <chrono>
#include <cstring>
#include <future>
#include <gtest/gtest.h>
#include <string>

namespace quorda_test {
namespace {

TEST(FaultDriverColumns, DescriptionCutsNamesAndAttributesNameTheTable) {
    FaultDriver fault("result:id/4,column_name_longer_than_thirty_two_chars/12/20/0/orders|row:1,a");
    Odbc2 db;
    ASSERT_EQ(db.Connect(fault.ConnectionString()), SQL_SUCCESS);
    ASSERT_EQ(db.Exec("select * from orders"), SQL_SUCCESS);

    SQLCHAR name[33] = {};
    SQLSMALLINT nameLength = 0, type = 0, digits = 0, nullable = 0;
    SQLULEN size = 0;
    EXPECT_EQ(SQLDescribeCol(db.Stmt(), 2, name, sizeof name, &nameLength, &type, &size, &digits, &nullable),
              SQL_SUCCESS_WITH_INFO);
    EXPECT_STREQ(reinterpret_cast<char*>(name), "column_name_longer_than_thirty_t");
    EXPECT_EQ(nameLength, 40);
    EXPECT_EQ(type, SQL_VARCHAR);
    EXPECT_EQ(size, 20u);

    char table[33] = {};
    SQLSMALLINT length = 0;
    SQLLEN numeric = 0;
    EXPECT_EQ(SQLColAttributes(db.Stmt(), 2, SQL_COLUMN_TABLE_NAME, table, sizeof table, &length, &numeric),
              SQL_SUCCESS);
    EXPECT_STREQ(table, "orders");
    EXPECT_EQ(SQLColAttributes(db.Stmt(), 1, SQL_COLUMN_TABLE_NAME, table, sizeof table, &length, &numeric),
              SQL_SUCCESS);
    EXPECT_STREQ(table, "");
    EXPECT_EQ(SQLDescribeCol(db.Stmt(), 3, name, sizeof name, &nameLength, &type, &size, &digits, &nullable),
              SQL_ERROR);
    EXPECT_EQ(db.Errors(true).at(0).State, "S1002");
}

TEST(FaultDriverColumns, ValuesConvertToTheBoundCTypes) {
    FaultDriver fault("result:n/5,f/8,ts/11,bin/-3,bad/4|row:7,2.5,2001-02-03 04:05:06.007,a%00b,seven");
    Odbc2 db;
    ASSERT_EQ(db.Connect(fault.ConnectionString()), SQL_SUCCESS);
    ASSERT_EQ(db.Exec("select * from t"), SQL_SUCCESS);
    ASSERT_EQ(SQLFetch(db.Stmt()), SQL_SUCCESS);

    SQLSMALLINT small = 0;
    double real = 0;
    SQL_TIMESTAMP_STRUCT stamp{};
    SQL_DATE_STRUCT date{};
    char bytes[8] = {};
    SQLLEN length = 0;
    EXPECT_EQ(SQLGetData(db.Stmt(), 1, SQL_C_SHORT, &small, 0, &length), SQL_SUCCESS);
    EXPECT_EQ(small, 7);
    EXPECT_EQ(SQLGetData(db.Stmt(), 2, SQL_C_DOUBLE, &real, 0, &length), SQL_SUCCESS);
    EXPECT_EQ(real, 2.5);
    EXPECT_EQ(SQLGetData(db.Stmt(), 3, SQL_C_TIMESTAMP, &stamp, 0, &length), SQL_SUCCESS);
    EXPECT_EQ(length, static_cast<SQLLEN>(sizeof stamp));
    EXPECT_EQ(stamp.year, 2001);
    EXPECT_EQ(stamp.second, 6);
    EXPECT_EQ(stamp.fraction, 7000000u);
    EXPECT_EQ(SQLGetData(db.Stmt(), 3, SQL_C_DATE, &date, 0, &length), SQL_NO_DATA); // fixed size: read once
    EXPECT_EQ(SQLGetData(db.Stmt(), 4, SQL_C_BINARY, bytes, sizeof bytes, &length), SQL_SUCCESS);
    EXPECT_EQ(length, 3);
    EXPECT_EQ(std::string(bytes, 3), std::string("a\0b", 3));
    SQLINTEGER number = 0;
    EXPECT_EQ(SQLGetData(db.Stmt(), 5, SQL_C_LONG, &number, 0, &length), SQL_ERROR);
    EXPECT_EQ(db.Errors(true).at(0).State, "22005"); // 22018 as an ODBC 2 application sees it
}

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
    EXPECT_EQ(SQLGetInfo(db.Dbc(), 9999, text, sizeof text, &length), SQL_ERROR);

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
