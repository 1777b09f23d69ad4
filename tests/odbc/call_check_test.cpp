#include "diagnostics_p.h"
#include "odbc/odbc_api_p.h"
#include "quorda/odbc.h"

#include <cstdio>
#include <cstring>
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

struct Record {
    const char* State;
    SQLINTEGER Native;
    const char* Message;
};

// The labelling of several records is pinned through the real driver manager by the core suite
// (FaultDiagnostics); here the rules that need records no driver manager hands out. Records are
// played like a driver manager does: one per call, then SQL_NO_DATA.
EODBCError Build(const std::vector<Record>& Records, int& Calls) {
    return detail::BuildODBCError(
        [&](detail::TDiagnosticBuffers& b) -> SQLRETURN {
            if (static_cast<std::size_t>(Calls++) >= Records.size()) {
                return SQL_NO_DATA_FOUND;
            }
            const Record& r = Records[Calls - 1];
            std::snprintf(reinterpret_cast<char*>(b.State), sizeof b.State, "%s", r.State);
            std::snprintf(reinterpret_cast<char*>(b.Message), sizeof b.Message, "%s", r.Message);
            b.Native = r.Native;
            return SQL_SUCCESS;
        },
        nullptr, nullptr, nullptr);
}

// The message's layout and the handles it carries are pinned through a database by the core suite
// (FaultDiagnostics); here a record the driver manager itself reports, read once.
TEST(CheckODBC, RaisesDiagnosticsTracesCallsFreesHandlesAndBuildsBoundedErrors) {
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
    // Only errors, invalid handles and SQL_STILL_EXECUTING raise.
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
    // The native code and message come from the first record that has a code; an empty queue leaves
    // everything empty after one call.
    const struct {
        std::vector<Record> Records;
        SQLINTEGER Native;
        const char* Message;
    } Cases[] = {{{{"01000", 0, "m1"}, {"42601", 1234, "m2"}, {"HY000", 99, "m3"}}, 1234, "m2"},
                 {{{"01000", 7, "m1"}, {"42601", 1234, "m2"}}, 7, "m1"},
                 {{{"01000", 0, "m1"}, {"01000", 0, "m2"}}, 0, "m1"},
                 {{}, 0, ""}};
    for (const auto& c : Cases) {
        int calls = 0;
        const EODBCError e = Build(c.Records, calls);
        EXPECT_EQ(calls, static_cast<int>(c.Records.size()) + 1);
        EXPECT_EQ(e.NativeError(), c.Native);
        EXPECT_EQ(e.NativeMessage(), c.Message);
        if (c.Records.empty()) {
            EXPECT_EQ(e.Message() + e.SQLState(), "");
        }
    }
    // A failing read ends the queue; unterminated buffers and a queue that never ends stay bounded.
    int calls = 0;
    const EODBCError failed = detail::BuildODBCError(
        [&](detail::TDiagnosticBuffers&) {
            ++calls;
            return SQLRETURN(SQL_INVALID_HANDLE);
        },
        nullptr, nullptr, nullptr);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(failed.Message(), "");

    calls = 0;
    const EODBCError e = detail::BuildODBCError(
        [&](detail::TDiagnosticBuffers& b) {
            ++calls;
            std::memset(b.State, 'S', sizeof b.State);
            std::memset(b.Message, 'x', sizeof b.Message);
            b.Native = 0;
            return SQLRETURN(SQL_SUCCESS);
        },
        nullptr, nullptr, nullptr);
    EXPECT_EQ(e.NativeMessage(), std::string(514, 'x'));
    EXPECT_EQ(e.SQLState().substr(0, 7), "SSSSSS;");
    EXPECT_LT(calls, 100000);
}

} // namespace
} // namespace quorda
