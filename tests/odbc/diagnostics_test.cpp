#include "diagnostics_p.h"
#include "odbc/odbc_api_p.h"
#include "quorda/odbc.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace quorda {
namespace {

struct Record {
    std::string state;
    SQLINTEGER native;
    std::string message;
};

// The labelling of several records is pinned through the real driver manager by the core suite
// (FaultDiagnostics); here the rules that need records no driver manager hands out.
// Plays the records like a driver manager does: one per call, then SQL_NO_DATA.
class ScriptedDiagnostics {
public:
    explicit ScriptedDiagnostics(std::vector<Record> records) : FRecords(std::move(records)) {}

    SQLRETURN operator()(detail::TDiagnosticBuffers& b) {
        ++FCalls;
        if (FNext >= FRecords.size()) {
            return SQL_NO_DATA_FOUND;
        }
        Fill(b, FRecords[FNext++]);
        return SQL_SUCCESS;
    }
    int Calls() const { return FCalls; }

private:
    static void Fill(detail::TDiagnosticBuffers& b, const Record& r) {
        std::memset(b.State, 0, sizeof b.State);
        std::memcpy(b.State, r.state.data(), std::min(r.state.size(), sizeof b.State - 1));
        b.Native = r.native;
        std::memset(b.Message, 0, sizeof b.Message);
        std::memcpy(b.Message, r.message.data(), std::min(r.message.size(), sizeof b.Message - 1));
    }
    std::vector<Record> FRecords;
    size_t FNext = 0;
    int FCalls = 0;
};

EODBCError Build(ScriptedDiagnostics& script) {
    return detail::BuildODBCError(std::ref(script), nullptr, nullptr, nullptr);
}

TEST(CreateODBCError, NativeCodeComesFromTheFirstRecordThatHasOne) {
    struct Case {
        std::vector<Record> records;
        SQLINTEGER native;
        const char* message;
    };
    for (const Case& c : {Case{{{"01000", 0, "m1"}, {"42601", 1234, "m2"}, {"HY000", 99, "m3"}}, 1234, "m2"},
                          Case{{{"01000", 7, "m1"}, {"42601", 1234, "m2"}}, 7, "m1"},
                          Case{{{"01000", 0, "m1"}, {"01000", 0, "m2"}}, 0, "m1"}}) {
        ScriptedDiagnostics script(c.records);
        const EODBCError e = Build(script);
        EXPECT_EQ(e.NativeError(), c.native);
        EXPECT_EQ(e.NativeMessage(), c.message);
    }
}

TEST(CreateODBCError, EmptyQueueAndFailingReadsYieldWhatTheFirstCallLeft) {
    ScriptedDiagnostics empty({});
    const EODBCError e = Build(empty);
    EXPECT_EQ(empty.Calls(), 1);
    EXPECT_EQ(e.Message(), "");
    EXPECT_EQ(e.SQLState(), "");

    int calls = 0;
    const EODBCError failed = detail::BuildODBCError(
        [&](detail::TDiagnosticBuffers&) {
            ++calls;
            return SQLRETURN(SQL_INVALID_HANDLE);
        },
        nullptr, nullptr, nullptr);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(failed.Message(), "");
}

TEST(CreateODBCError, UnterminatedBuffersAndEndlessQueuesStayBounded) {
    int calls = 0;
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
