// Eight readers and a writer sharing a pool of three connections: every reader sees every row of
// its table in every cycle, and no connection is used by two threads at once. Databases created,
// named, opened and freed on two threads at once share the session's list.

#include "quorda/core/odbc_database.h"
#include "quorda/core/session.h"
#include "quorda/multidb.h"
#include "quorda/rtl/exception.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <quorda_test/environment.h>
#include <quorda_test/profiles.h>
#include <quorda_test/raw_odbc.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace quorda::testing {

// ThreadSanitizer makes every memory access several times slower.
#if defined(__SANITIZE_THREAD__)
inline constexpr int kSlowdown = 6;
#else
inline constexpr int kSlowdown = 1;
#endif

// Runs each job on a thread of its own and waits for all of them. The first exception of a job is
// rethrown after every thread has ended. When the jobs are not done within Limit the process ends
// at once with a message: a deadlocked thread cannot be joined.
inline void RunThreads(const std::vector<std::function<void()>>& Jobs, std::chrono::seconds Limit) {
    std::vector<std::future<void>> done;
    std::vector<std::thread> threads;
    for (const auto& job : Jobs) {
        std::packaged_task<void()> task(job);
        done.push_back(task.get_future());
        threads.emplace_back(std::move(task));
    }
    const auto deadline = std::chrono::steady_clock::now() + Limit;
    for (std::size_t i = 0; i < done.size(); ++i) {
        if (done[i].wait_until(deadline) != std::future_status::ready) {
            std::fprintf(stderr, "thread %zu of %zu did not finish within %lld s: deadlock or stall\n", i,
                         done.size(), static_cast<long long>(Limit.count()));
            std::fflush(stderr);
            std::_Exit(3);
        }
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (auto& result : done) {
        result.get();
    }
}

} // namespace quorda::testing

namespace quorda {
namespace {

constexpr int kRows = 1000;
constexpr int kReaders = 8;
constexpr int kCycles = 500;
constexpr int kWrites = 200;

class PoolThreads : public quorda_test::ProfileTest {
protected:
    void SetUp() override {
        quorda_test::RawOdbc raw(Profile.ConnectionString);
        if (Profile.Name == "sqlite") {
            // Readers never block the writer, and the writer blocks readers only briefly.
            raw.QueryStrings("pragma journal_mode=wal");
        }
        Table = quorda_test::UniqueTableName("pool_rows");
        Log = quorda_test::UniqueTableName("pool_log");
        raw.Exec("create table " + Table + " (id integer primary key, qty integer, name varchar(20))");
        raw.Exec("create table " + Log + " (n integer)");
        raw.SetAutoCommit(false);
        for (int start = 1; start <= kRows; start += 250) {
            std::string sql = "insert into " + Table + " values ";
            for (int i = start; i < start + 250; ++i) {
                sql += (i == start ? "(" : ",(") + std::to_string(i) + "," + std::to_string(i % 97) +
                       ",'row" + std::to_string(i) + "')";
            }
            raw.Exec(sql);
        }
        raw.Commit();
        Pool.SetConnectStyle(csDriverConnect);
        Pool.SetDriverConnectOption(dcoDriverNoPrompt);
        Pool.SetConnectStr(Profile.ConnectionString);
        Pool.SetMaxDataBases(3);
        Pool.Open();
    }

    std::string Table;
    std::string Log;
    TMultiDataBases Pool;
};

TEST_P(PoolThreads, EightReadersAndAWriterShareThreeConnections) {
    // The sum every complete read of the table adds up to, as a connection of its own counts it.
    quorda_test::RawOdbc raw(Profile.ConnectionString);
    const long long expected =
        std::stoll(*raw.Scalar("select sum(id * 1000 + qty + length(name)) from " + Table));
    std::atomic<int> cycles{0};
    auto reader = [&](int Index) {
        TODBCMultiQuery query(nullptr);
        if (Index % 2 == 0) {
            // Half grow the pool themselves, holding its lock as callers from several threads must.
            Pool.Lock();
            try {
                query.SetMultiODBCDataBase(Pool.FindDataBase());
            } catch (...) {
                Pool.UnLock();
                throw;
            }
            Pool.UnLock();
        }
        // The others attach to the least busy pooled connection of the session on first use.
        query.SetUniDirectional(true);
        query.SQL().SetText("select id, qty, name from " + Table + " order by id");
        for (int cycle = 0; cycle < kCycles; ++cycle) {
            query.Open();
            long long sum = 0;
            int rows = 0;
            for (; !query.Eof(); query.Next()) {
                sum += query.Fields()[0]->AsInteger() * 1000LL + query.Fields()[1]->AsInteger() +
                       static_cast<long long>(query.Fields()[2]->AsString().size());
                ++rows;
            }
            query.Close();
            if (rows != kRows || sum != expected) {
                throw std::runtime_error("reader " + std::to_string(Index) + " cycle " +
                                         std::to_string(cycle) + ": " + std::to_string(rows) +
                                         " rows, checksum " + std::to_string(sum));
            }
            ++cycles;
        }
    };
    auto writer = [&] {
        TODBCMultiQuery insert(nullptr);
        insert.SQL().SetText("insert into " + Log + " (n) values (:n)");
        for (int i = 0; i < kWrites; ++i) {
            insert.ParamByName("n")->SetAsInteger(i);
            insert.ExecSQL();
        }
    };
    std::vector<std::function<void()>> jobs;
    for (int i = 0; i < kReaders; ++i) {
        jobs.emplace_back([&reader, i] { reader(i); });
    }
    jobs.emplace_back(writer);
    testing::RunThreads(jobs, std::chrono::seconds(240 * testing::kSlowdown));
    EXPECT_EQ(cycles.load(), kReaders * kCycles);
    EXPECT_EQ(Pool.Count(), 3);
    EXPECT_EQ(raw.Scalar("select count(*) from " + Log), std::to_string(kWrites));
    raw.Exec("drop table " + Table);
    raw.Exec("drop table " + Log);
}

INSTANTIATE_TEST_SUITE_P(Drivers, PoolThreads, ::testing::Values("sqlite", "pgsql", "mariadb"),
                         quorda_test::ProfileTestName);

class SessionThreads : public quorda_test::ProfileTest {};

TEST_P(SessionThreads, DatabasesComeAndGoOnTwoThreads) {
    const std::string shared = quorda_test::UniqueTableName("shared_name");
    std::atomic<int> sharedHolds{0};
    auto work = [&](int Thread) {
        for (int i = 0; i < 150; ++i) {
            auto db = std::make_unique<TODBCDatabase>(nullptr);
            const std::string own = shared + "_" + std::to_string(Thread) + "_" + std::to_string(i);
            db->SetDatabaseName(own);
            db->SetDriverConnectOption(dcoDriverNoPrompt);
            db->SetConnectStr(Profile.ConnectionString);
            db->Open();
            // Databases that only join and leave, while the other thread looks names up.
            for (int k = 0; k < 20; ++k) {
                TODBCDatabase passing(nullptr);
                if (ODBCSession()->FindDatabase(own) != db.get()) {
                    throw std::runtime_error("the session lost " + own);
                }
            }
            // One name for both threads: whoever holds it keeps it until giving it back.
            try {
                db->Close();
                db->SetDatabaseName(shared);
                ++sharedHolds;
                if (ODBCSession()->FindDatabase(shared) != db.get()) {
                    throw std::runtime_error("two databases named " + shared);
                }
            } catch (const EDatabaseError&) {
                // The other thread holds it.
            }
            db.reset();
        }
    };
    testing::RunThreads({[&] { work(0); }, [&] { work(1); }}, std::chrono::seconds(120 * testing::kSlowdown));
    EXPECT_GT(sharedHolds.load(), 0);
    EXPECT_EQ(ODBCSession()->FindDatabase(shared), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Drivers, SessionThreads, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda
