// Ways out of blocking calls: a cancel from another thread, a query timeout, a login timeout
// against a server that accepts and never answers. Each must come back with an error within a
// bounded time instead of waiting for the server.
#include "odbc_cursor_fixture.h"
#include "quorda/odbc/odbc_error.h"

#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <quorda_test/profiles.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace quorda {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

// A loopback TCP server that accepts connections and never says a word, until it is destroyed.
class SilentServer {
public:
    SilentServer() {
        FListener = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (FListener < 0 || bind(FListener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            listen(FListener, 4) != 0 ||
            getsockname(FListener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
            ADD_FAILURE() << "no loopback listener";
            return;
        }
        FPort = ntohs(address.sin_port);
    }
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;
    // Closing the listener also drops the connections still waiting in its backlog.
    ~SilentServer() { close(FListener); }

    int Port() const { return FPort; }

private:
    int FListener = -1;
    int FPort = 0;
};

class StatementInterrupts : public testing::CursorTest {};

TEST_P(StatementInterrupts, CancelFromAnotherThreadStopsARunningStatement) {
    TODBCQuery& query = Query("select pg_sleep(30)");
    std::atomic<bool> done{false};
    // The cancel is repeated: one that arrives before the statement runs has nothing to stop.
    std::thread canceller([&] {
        while (!done) {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            query.CancelStatement();
        }
    });
    const auto start = Clock::now();
    EXPECT_THROW(query.Open(), EODBCError);
    done = true;
    canceller.join();
    EXPECT_LT(Clock::now() - start, seconds(15));
    EXPECT_FALSE(query.Active());
    // The dataset and its connection stay usable.
    query.SQL().SetText("select 1 as one");
    query.Open();
    EXPECT_EQ(query.Fields()[0]->AsInteger(), 1);
    query.Close();
    query.CancelStatement(); // without a statement: nothing to do
}

TEST_P(StatementInterrupts, QueryTimeoutStopsALongStatement) {
    TODBCQuery& query = Query("select pg_sleep(10)");
    query.SetQueryTimeout(1);
    const auto start = Clock::now();
    EXPECT_THROW(query.Open(), EODBCError);
    EXPECT_LT(Clock::now() - start, seconds(8));
    query.SetQueryTimeout(0);
    query.SQL().SetText("select pg_sleep(1.5)");
    EXPECT_NO_THROW(query.Open());
}

TEST_P(StatementInterrupts, LoginTimeoutGivesUpOnAServerThatNeverAnswers) {
    SilentServer server;
    TODBCDatabase db(nullptr);
    db.SetDriverConnectOption(dcoDriverNoPrompt);
    db.SetConnectStr(std::string("Driver=") +
                     (Profile.Traits.UnicodeDriver ? "PostgreSQL Unicode" : "PostgreSQL ANSI") +
                     ";Servername=127.0.0.1;Port=" + std::to_string(server.Port()) +
                     ";Database=quorda_test;Username=postgres");
    db.SetLoginTimeout(2);
    db.SetConnectionTimeout(2);
    const auto start = Clock::now();
    EXPECT_THROW(db.Open(), EODBCError);
    EXPECT_LT(Clock::now() - start, seconds(20));
    EXPECT_FALSE(db.Connected());
}

INSTANTIATE_TEST_SUITE_P(PostgreSQL, StatementInterrupts, ::testing::Values("pgsql", "pgsql-unicode"),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda
