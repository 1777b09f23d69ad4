// quorda_bench: measures every registered workload implementation on the configured data sources and
// prints medians, throughput, peak memory and the ratios to raw ODBC and to QtSql.

#include "data_setup.h"
#include "harness.h"
#include "instructions.h"
#include "options.h"
#include "raw_odbc.h"
#include "report.h"

#include <cstdlib>
#include <fstream>
#include <iostream>

using namespace quorda::bench;

namespace {

int RunAsChild(const TOptions& Options) {
    const TImplementation* impl =
        FindImplementation(Options.ChildWorkload, Options.ChildImpl, Options.ChildMode);
    if (!impl || Options.ResultFd < 0) {
        std::cerr << "quorda_bench: no implementation " << Options.ChildWorkload << '/' << Options.ChildImpl
                  << '/' << Options.ChildMode << '\n';
        return 2;
    }
    TConfig config{impl, Options.ChildContext};
    return RunChild(config, Options.Runs, Options.ResultFd, Options.CommandFd);
}

std::string DescribeOptions(const TOptions& o) {
    return "rows " + std::to_string(o.Rows) + ", runs " + std::to_string(o.Runs) +
           " (+1 warm-up), insert rows " + std::to_string(o.InsertRows) + ", params iterations " +
           std::to_string(o.Iterations) + ", scroll visit " + std::to_string(o.Visit) + " and " +
           std::to_string(o.Jumps) + " jumps" + (o.Quick ? ", quick" : "");
}

// Fills or verifies the bench table of one source; records its driver version and strings.
void SetUpSource(const char* Name, const TSourceStrings& Strings, std::int64_t Rows, TRunInfo& Info) {
    std::cerr << "setting up " << Name << "\n";
    // In a child, so that the drivers' buffers of the verifying read never count in a measured peak.
    const std::string version = RunForked([&] {
        EnsureBenchTable(Strings.Scroll, Rows, std::cerr);
        return TRawConnection(Strings.Scroll).DriverVersion();
    });
    Info.Versions.push_back(std::string(Name) + " driver: " + version);
    Info.Connections.push_back(std::string(Name) + " forward-only reads: `" + WithoutFolders(Strings.Stream) +
                               "`");
    Info.Connections.push_back(std::string(Name) + " scrollable cursors and inserts: `" +
                               WithoutFolders(Strings.Scroll) + "`");
}

int RunBenchmark(TOptions& Options) {
    if (Options.Pgsql && Options.PgConnect.empty()) {
        if (const char* env = std::getenv("QUORDA_BENCH_PG"))
            Options.PgConnect = env;
    }
    if (Options.Mariadb && Options.MariadbConnect.empty()) {
        if (const char* env = std::getenv("QUORDA_BENCH_MARIADB"))
            Options.MariadbConnect = env;
    }
    const bool needsData = Options.Only.empty() || Options.Only.size() > 1 || Options.Only[0] != "params";
    if (needsData && Options.Pgsql && Options.PgConnect.empty()) {
        std::cerr << "quorda_bench: no PostgreSQL connection string: pass --pg-connect, set QUORDA_BENCH_PG, "
                     "or use --source sqlite\n";
        return 2;
    }
    if (needsData && Options.Mariadb && Options.MariadbConnect.empty()) {
        std::cerr << "quorda_bench: no MariaDB connection string: pass --mariadb-connect, set "
                     "QUORDA_BENCH_MARIADB, or use --source sqlite\n";
        return 2;
    }

    const TSourceStrings sqlite = SqliteStrings(Options.SqliteDb);
    const TSourceStrings pgsql = PgsqlStrings(Options.PgConnect);
    const TSourceStrings mariadb = MariadbStrings(Options.MariadbConnect);
    TRunInfo info = DescribeMachine();
    info.Options = DescribeOptions(Options);
    if (needsData) {
        if (Options.Sqlite)
            SetUpSource("sqlite", sqlite, Options.Rows, info);
        if (Options.Pgsql)
            SetUpSource("pgsql", pgsql, Options.Rows, info);
        if (Options.Mariadb)
            SetUpSource("mariadb", mariadb, Options.Rows, info);
    }

    const std::vector<TConfig> plan = PlanConfigs(Options, sqlite, pgsql, mariadb);
    std::vector<TMeasurement> results(plan.size());
    for (const std::vector<std::size_t>& members : GroupConfigs(plan)) {
        std::vector<TConfig> group;
        for (std::size_t i : members)
            group.push_back(plan[i]);
        std::vector<TMeasurement> measured = MeasureGroup(group, Options.Runs, &std::cerr);
        for (std::size_t k = 0; k < members.size(); ++k) {
            TMeasurement& m = measured[k];
            if (m.Error.empty() && m.Checksum != ExpectedChecksum(m.Config))
                m.Error = "checksum mismatch: the values read or written differ from the generated rows";
            std::cerr << "  " << m.Config.Impl->Impl << ' ';
            if (m.Error.empty())
                std::cerr << m.MedianSeconds << " s\n";
            else
                std::cerr << "FAILED: " << m.Error << '\n';
            results[members[k]] = std::move(m);
        }
    }
    std::vector<std::string> problems;
    for (const TMeasurement& m : results)
        if (!m.Error.empty())
            problems.push_back(m.Config.Impl->Workload + ' ' + SourceName(m.Config.Context.Source) + ' ' +
                               m.Config.Impl->Impl + ' ' + m.Config.Impl->Mode + ": " + m.Error);

    std::vector<TInstructionCount> instructions;
    if (Options.InstructionRows > 0) {
        instructions = CountInstructions(plan, Options.InstructionRows, std::cerr);
        for (const TInstructionCount& c : instructions)
            if (!c.Error.empty())
                std::cerr << "instructions: scan " << SourceName(c.Config.Context.Source) << ' '
                          << c.Config.Impl->Impl << ' ' << c.Config.Impl->Mode << " not counted: " << c.Error
                          << '\n';
    }

    const std::vector<TTableRow> table = BuildTable(results);
    std::cout << '\n';
    PrintTable(std::cout, table);
    if (!instructions.empty())
        PrintInstructions(std::cout, instructions, Options.InstructionRows, false);
    if (!Options.Results.empty()) {
        std::ofstream out(Options.Results);
        WriteMarkdown(out, info, table, problems);
        if (!instructions.empty())
            PrintInstructions(out, instructions, Options.InstructionRows, true);
        if (!out) {
            std::cerr << "quorda_bench: cannot write " << Options.Results << '\n';
            return 1;
        }
    }
    if (!problems.empty()) {
        std::cerr << '\n' << problems.size() << " configuration(s) failed\n";
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    TOptions options;
    try {
        options = ParseOptions(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::invalid_argument& e) {
        if (*e.what())
            std::cerr << "quorda_bench: " << e.what() << '\n';
        std::cerr << Usage();
        return 2;
    }
    if (options.Child)
        return RunAsChild(options);
    if (options.List) {
        for (const TImplementation* impl : SortedImplementations())
            std::cout << impl->Workload << ' ' << impl->Impl << ' ' << impl->Mode << '\n';
        return 0;
    }
    try {
        return RunBenchmark(options);
    } catch (const std::exception& e) {
        std::cerr << "quorda_bench: " << e.what() << '\n';
        return 1;
    }
}
