// Running work on several threads with a deadline: a test that deadlocks fails instead of hanging.
#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <future>
#include <mutex>
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
