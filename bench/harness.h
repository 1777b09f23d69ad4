#pragma once

// Measuring configurations. Each configuration runs in a child process of its own, so that its peak
// resident memory (ru_maxrss of the child) belongs to that configuration alone. The configurations
// compared with each other (one group) run side by side: their children connect and warm up one
// after the other, then take turns, one timed run each per round, so that a machine whose speed
// drifts slows all of them alike.

#include "workload.h"

#include <cstdint>
#include <functional>
#include <iosfwd>
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

// The median of the per-round ratios Runs[i] / Baseline[i]: the runs of one round follow each other,
// so a slow spell of the machine shows in both halves of a ratio. Falls back to the ratio of the
// medians when the run counts differ.
double PairedRatio(const std::vector<double>& Runs, const std::vector<double>& Baseline);

// Indices into Plan of the configurations measured side by side: same workload, source, row count
// and mode. Groups in order of first appearance, members in plan order.
std::vector<std::vector<std::size_t>> GroupConfigs(const std::vector<TConfig>& Plan);

// Parent side: one child per configuration of Group (Program re-executed with the child
// arguments), Runs rounds of one timed run per child, in alternating order. Progress, when given,
// shows the children starting and the rounds. A failing child fails its own measurement only.
std::vector<TMeasurement> MeasureGroup(const std::vector<TConfig>& Group, int Runs,
                                       std::ostream* Progress = nullptr,
                                       const std::string& Program = "/proc/self/exe");

// Runs Body in a forked child (no exec) and returns what it returned; a throw or crash becomes a
// TChildError. Keeps the parent's own memory small: a forked child starts with the parent's resident
// pages counted in its peak.
std::string RunForked(const std::function<std::string()>& Body);

class TChildError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Child side: what `quorda_bench --child ...` runs. Connects, warms up and reports "ready" to
// ResultFd; then does one timed run per "run" line read from CommandFd until end of file, or, without
// a command descriptor (CommandFd < 0), Runs timed runs of its own. Disconnects and reports "done".
// Returns the exit code.
int RunChild(const TConfig& Config, int Runs, int ResultFd, int CommandFd);

// Arguments that make a child run Config (without the program name and descriptors).
std::vector<std::string> ChildArguments(const TConfig& Config, int Runs);

// Line protocol between child and parent. Results: "ready <rows> <checksum>", "run <seconds>",
// "done" or "error <message>"; commands: "run".
std::string FormatReadyLine(std::int64_t Rows, std::uint64_t Checksum);
std::string FormatRunLine(double Seconds);
std::string FormatErrorLine(const std::string& Message);
inline constexpr const char* kDoneLine = "done\n";
inline constexpr const char* kRunCommand = "run\n";
// Applies a line (without its newline) expected to be of kind Expected ("ready", "run", "done"):
// ready fills RowsHandled and Checksum, run appends to Seconds. Anything else sets Into.Error (the
// child's message, or why the line is unusable) and returns false.
bool ApplyChildLine(const std::string& Line, const std::string& Expected, TMeasurement& Into);

} // namespace quorda::bench
