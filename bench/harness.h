#pragma once

// Measuring one configuration: a warm-up run, then N timed runs, in a child process of its own so
// that its peak resident memory (ru_maxrss of the child) belongs to that configuration alone.

#include "workload.h"

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace quorda::bench {

struct TConfig {
    const TImplementation* Impl = nullptr;
    TBenchContext Context;
};

struct TMeasurement {
    TConfig Config;
    std::vector<double> Seconds; // one per timed run
    double MedianSeconds = 0;
    std::int64_t RowsHandled = 0;
    std::uint64_t Checksum = 0;
    double PeakRssMb = 0;
    std::string Error; // empty when the child succeeded
};

double Median(std::vector<double> Values);

// Parent side: re-executes this program (/proc/self/exe) with the child arguments.
TMeasurement MeasureInChild(const TConfig& Config, int Runs);

// Runs Body in a forked child (no exec) and returns what it returned; a throw or crash becomes a
// TChildError. Keeps the parent's own memory small: a forked child starts with the parent's resident
// pages counted in its peak.
std::string RunForked(const std::function<std::string()>& Body);

class TChildError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Child side: what `quorda_bench --child ...` runs. Writes one result line to Fd; returns the exit code.
int RunChild(const TConfig& Config, int Runs, int Fd);

// Arguments that make a child run Config (without the program name and result descriptor).
std::vector<std::string> ChildArguments(const TConfig& Config, int Runs);

// Result line protocol between child and parent.
std::string FormatResultLine(std::int64_t Rows, std::uint64_t Checksum, const std::vector<double>& Seconds);
std::string FormatErrorLine(const std::string& Message);
// Fills Rows, Checksum, Seconds and MedianSeconds, or Error.
void ParseResultLine(const std::string& Line, TMeasurement& Into);

} // namespace quorda::bench
