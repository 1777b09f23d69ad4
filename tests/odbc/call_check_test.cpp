#include "odbc/odbc_api_p.h"
#include "quorda/odbc.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace quorda {
namespace {

// An environment of the test's own, allocated the way the library allocates its one environment.
SQLHENV TestEnv() {
    static SQLHENV env = [] {
        SQLHENV h = nullptr;
        SQLAllocEnv(&h);
        return h;
    }();
    return env;
}

class TraceCapture {
public:
    TraceCapture() {
        FWasEnabled = ODBCTraceEnabled();
        SetODBCTraceEnabled(true);
        FPrevious = SetODBCTraceSink([this](std::string_view line) { FLines.emplace_back(line); });
    }
    ~TraceCapture() {
        SetODBCTraceSink(FPrevious);
        SetODBCTraceEnabled(FWasEnabled);
    }
    const std::vector<std::string>& Lines() const { return FLines; }

private:
    bool FWasEnabled;
    TODBCTraceSink FPrevious;
    std::vector<std::string> FLines;
};

// The message's layout and the handles it carries are pinned through a database by the core suite
// (FaultDiagnostics); here a record the driver manager itself reports, read once.
TEST(CheckODBC, RaisesTheDriverManagersDiagnosticsForTheConnection) {
    TODBCConnectionHandle dbc;
    CheckODBC(SQLAllocConnect(TestEnv(), dbc.Receive()), TestEnv(), nullptr, nullptr, "SQLAllocConnect");
    ASSERT_TRUE(dbc);
    char dsn[] = "QuordaNoSuchDataSource";
    try {
        CheckODBC(SQLConnect(dbc.Get(), reinterpret_cast<SQLCHAR*>(dsn), SQL_NTS, nullptr, 0, nullptr, 0),
                  TestEnv(), dbc.Get(), nullptr, "SQLConnect");
        FAIL() << "connecting to an unknown data source succeeded";
    } catch (const EODBCError& e) {
        EXPECT_EQ(e.SQLState().substr(0, 6), "IM002;");
        EXPECT_NE(e.Message().find("Data source name not found"), std::string::npos) << e.Message();
    }
    // The queue was consumed: a second reading finds nothing more.
    const EODBCError again = CreateODBCError(TestEnv(), dbc.Get(), nullptr);
    EXPECT_EQ(again.SQLState().find("IM002"), std::string::npos) << again.SQLState();
    EXPECT_EQ(dbc.Free(), SQL_SUCCESS);
    EXPECT_FALSE(dbc);
}

// Only errors, invalid handles and SQL_STILL_EXECUTING raise.
TEST(CheckODBC, PassesSuccessAndNoDataThroughAndTracesEveryCall) {
    TraceCapture trace;
    EXPECT_FALSE(RetCodeIsSuccessful(SQL_INVALID_HANDLE));
    EXPECT_EQ(CheckODBC(SQL_NO_DATA_FOUND, nullptr, nullptr, nullptr, "SQLFetch"), SQL_NO_DATA_FOUND);
    EXPECT_EQ(CheckODBC(SQL_NEED_DATA, nullptr, nullptr, nullptr, "SQLExecute"), SQL_NEED_DATA);
    EXPECT_THROW(CheckODBC(SQL_STILL_EXECUTING, nullptr, nullptr, nullptr, "SQLExecDirect"), EODBCError);
    EXPECT_EQ(TraceODBC(SQL_ERROR, "SQLFreeConnect"), SQL_ERROR);
    ASSERT_EQ(trace.Lines().size(), 4u);
    EXPECT_NE(trace.Lines()[0].find("SQLFetch -> 100 SQL_NO_DATA"), std::string::npos) << trace.Lines()[0];
    EXPECT_NE(trace.Lines()[2].find("SQLExecDirect -> 2 SQL_STILL_EXECUTING"), std::string::npos);
    EXPECT_NE(trace.Lines()[3].find("SQLFreeConnect -> -1 SQL_ERROR"), std::string::npos);
}

TEST(ODBCHandles, MoveTransfersOwnershipAndFreeReleasesOnce) {
    TODBCConnectionHandle first;
    ASSERT_EQ(SQLAllocConnect(TestEnv(), first.Receive()), SQL_SUCCESS);
    const SQLHDBC raw = first.Get();
    TODBCConnectionHandle second(std::move(first));
    EXPECT_FALSE(first);
    EXPECT_EQ(second.Get(), raw);

    TODBCConnectionHandle third;
    ASSERT_EQ(SQLAllocConnect(TestEnv(), third.Receive()), SQL_SUCCESS);
    third = std::move(second); // releases the handle third held before
    EXPECT_EQ(third.Get(), raw);
    EXPECT_EQ(third.Free(), SQL_SUCCESS);
    EXPECT_EQ(third.Free(), SQL_SUCCESS); // empty: nothing to release
}

} // namespace
} // namespace quorda
