#pragma once

// Command line of quorda_bench, and the plan of configurations it implies.

#include "harness.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorda::bench {

struct TOptions {
    std::int64_t Rows = 1'000'000;  // rows in the bench table
    int Runs = 5;                   // timed runs after the warm-up
    std::vector<std::string> Only;  // workloads; empty means all
    std::vector<std::string> Impls; // implementations; empty means all
    bool Sqlite = true;
    bool Pgsql = true;
    bool Mariadb = true;
    bool Quick = false;
    std::int64_t InsertRows = 100'000;
    std::int64_t Iterations = 100'000; // params
    std::int64_t Visit = 100'000;      // scroll: rows read forward and back
    std::int64_t SmallScan = 100'000;  // scan is measured at this row count too, to show memory is flat
    int Jumps = 1000;
    std::string SqliteDb = "bench.db";
    std::string PgConnect;      // base driver string of the PostgreSQL source
    std::string MariadbConnect; // base driver string of the MariaDB source
    std::string Results;        // markdown file to write, none when empty
    bool List = false;
    std::int64_t InstructionRows = 0; // scan rows counted under callgrind after the timed runs; 0: none

    // Set when this process is a child measuring one configuration.
    bool Child = false;
    std::string ChildWorkload, ChildImpl, ChildMode;
    TBenchContext ChildContext;
    int ResultFd = -1;
    int CommandFd = -1; // none: the child does --runs timed runs by itself
};

// Throws std::invalid_argument with a message for the user.
TOptions ParseOptions(const std::vector<std::string>& Args);
std::string Usage();

// Connection strings of one source: streaming for forward-only reads, defaults otherwise.
struct TSourceStrings {
    std::string Stream;
    std::string Scroll;
};
TSourceStrings SqliteStrings(const std::string& DatabaseFile);
TSourceStrings PgsqlStrings(const std::string& Base);
TSourceStrings MariadbStrings(const std::string& Base);

// Every configuration to measure, in presentation order.
std::vector<TConfig> PlanConfigs(const TOptions& Options, const TSourceStrings& Sqlite,
                                 const TSourceStrings& Pgsql, const TSourceStrings& Mariadb);

// The checksum every implementation of Config must produce, computed from the row generator.
std::uint64_t ExpectedChecksum(const TConfig& Config);

} // namespace quorda::bench
