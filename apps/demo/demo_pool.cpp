#include "demo_editor.h"
#include "demo_sql.h"
#include "quorda/multidb.h"

#include <cstdio>
#include <iostream>
#include <latch>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quorda::demo {

void ReadThroughPool(const std::string& file, TODBCDatabase& db) {
    std::cout << "\n== A pool of 3 connections serving 4 threads ==\n";
    constexpr int kThreads = 4;
    constexpr int kReads = 25;
    const std::string sql = "select o.id, l.quantity from orders o join order_lines l on l.order_id = o.id";
    const long long expected = Scalar(db, "select sum(o.id * l.quantity) from orders o join order_lines l "
                                          "on l.order_id = o.id");

    TMultiDataBases pool;
    pool.SetConnectStyle(csDriverConnect);
    pool.SetDriverConnectOption(dcoDriverNoPrompt);
    pool.SetConnectStr("Driver=SQLite3;Database=" + file);
    pool.SetStartDataBases(3);
    pool.SetMaxDataBases(3);
    pool.Open();

    struct Result {
        int Connection = -1;
        long long Checksum = 0;
        int Wrong = 0;
        std::string Error;
    };
    std::vector<Result> results(kThreads);
    std::mutex attach;
    // Every thread holds its connection before any starts reading, as long-lived readers would.
    std::latch attached(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            Result& result = results[static_cast<std::size_t>(t)];
            try {
                TODBCMultiQuery query(nullptr);
                query.SetUniDirectional(true);
                query.SQL().SetText(sql);
                {
                    // One at a time, so each thread finds the connection the others left least busy.
                    std::lock_guard<std::mutex> guard(attach);
                    TMultiODBCDataBase* chosen = query.FindDB();
                    for (int i = 0; i < pool.Count(); ++i) {
                        if (pool.DataBases(i) == chosen) {
                            result.Connection = i;
                        }
                    }
                }
                attached.arrive_and_wait();
                for (int read = 0; read < kReads; ++read) {
                    query.Open();
                    long long sum = 0;
                    for (; !query.Eof(); query.Next()) {
                        sum += static_cast<long long>(query.Fields()[0]->AsInteger()) *
                               query.Fields()[1]->AsInteger();
                    }
                    query.Close();
                    result.Checksum = sum;
                    result.Wrong += sum != expected ? 1 : 0;
                }
            } catch (const std::exception& e) {
                if (result.Connection < 0) {
                    attached.count_down();
                }
                result.Error = e.what();
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (int t = 0; t < kThreads; ++t) {
        const Result& result = results[static_cast<std::size_t>(t)];
        std::printf("  thread %d  connection #%d  %d reads  checksum %lld  %s\n", t + 1, result.Connection,
                    kReads, result.Checksum,
                    !result.Error.empty() ? result.Error.c_str()
                    : result.Wrong == 0   ? "ok"
                                          : "WRONG");
    }
    for (int i = 0; i < pool.Count(); ++i) {
        std::printf("  connection #%d locked %d times\n", i, pool.DataBases(i)->GetCounter());
    }
    std::printf("  expected checksum %lld\n", expected);
    pool.Close();
}

} // namespace quorda::demo
