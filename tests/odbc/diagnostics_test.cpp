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

// The native code and message come from the first record that has a code; an empty queue leaves
// everything empty after one call.
TEST(CreateODBCError, NativeCodeComesFromTheFirstRecordThatHasOne) {
    const struct {
        std::vector<Record> Records;
        SQLINTEGER Native;
        const char* Message;
    } Cases[] = {
        {{{"01000", 0, "m1"}, {"42601", 1234, "m2"}, {"HY000", 99, "m3"}}, 1234, "m2"},
        {{{"01000", 7, "m1"}, {"42601", 1234, "m2"}}, 7, "m1"},
        {{{"01000", 0, "m1"}, {"01000", 0, "m2"}}, 0, "m1"},
        {{}, 0, ""},
    };
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
}

// A failing read ends the queue; unterminated buffers and a queue that never ends stay bounded.
TEST(CreateODBCError, FailingReadsUnterminatedBuffersAndEndlessQueuesStayBounded) {
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
