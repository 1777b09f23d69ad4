#pragma once

// Registry of workload implementations. Each implementation file registers its runs with a static
// TRegisterRun object, so the Quorda side joins the program just by being compiled in.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quorda::bench {

enum class TSource { Sqlite, Pgsql, Mariadb, None };

const char* SourceName(TSource Source);

// What one measured configuration is given. Connection strings are complete driver strings.
struct TBenchContext {
    TSource Source = TSource::None;
    std::string StreamConnect; // forward-only reads: the driver streams rows instead of materialising
    std::string ScrollConnect; // scrollable cursors and writes: the driver's defaults
    std::int64_t Rows = 0;     // rows read, visited, counted or written; iterations for params
    std::int64_t TableRows = 0;
    int Jumps = 0; // bookmark jumps of the scroll workload
};

// One implementation of one workload, alive for the whole measurement of a configuration.
// The constructor (connect, prepare) is not timed.
class TBenchRun {
public:
    virtual ~TBenchRun() = default;
    virtual void Prepare() {}             // untimed, before every run (e.g. empty the insert target)
    virtual std::int64_t Execute() = 0;   // timed; returns the rows handled
    virtual std::uint64_t Checksum() = 0; // untimed, after every run: fold of what Execute read or wrote
};

using TRunFactory = std::function<std::unique_ptr<TBenchRun>(const TBenchContext&)>;

struct TImplementation {
    std::string Workload; // scan, scroll, count, insert, params
    std::string Impl;     // raw, quorda, qtsql
    std::string Mode;     // scrollable, forward, block, loop, probe, ...
    TRunFactory Create;
};

std::vector<TImplementation>& Implementations();

struct TRegisterRun {
    TRegisterRun(std::string Workload, std::string Impl, std::string Mode, TRunFactory Create);
};

// Workloads in presentation order, and the order of modes and implementations inside one.
const std::vector<std::string>& WorkloadNames();
int ModeRank(const std::string& Mode);
int ImplRank(const std::string& Impl);

// Implementations sorted for presentation.
std::vector<const TImplementation*> SortedImplementations();

const TImplementation* FindImplementation(const std::string& Workload, const std::string& Impl,
                                          const std::string& Mode);

} // namespace quorda::bench
