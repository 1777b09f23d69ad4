// Rows done and rows per second on standard error, for long exports and imports; silent when
// standard error is not a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace quorda::cli {

class Progress {
public:
    explicit Progress(std::string Verb);
    // Reports now and then (at most a few times a second).
    void Update(std::int64_t Rows);
    // The final count on a line of its own.
    void Finish(std::int64_t Rows);

private:
    void Print(std::int64_t Rows, bool Last);

    std::string FVerb;
    bool FEnabled;
    std::chrono::steady_clock::time_point FStart;
    std::chrono::steady_clock::time_point FLastPrint;
};

} // namespace quorda::cli
