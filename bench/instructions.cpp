#include "instructions.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <map>
#include <sstream>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>

namespace quorda::bench {

namespace {

const std::vector<std::string> kImpls{"raw", "quorda", "view"};

// Runs Args with standard output and error sent to /dev/null; the exit status.
int RunQuietly(const std::vector<std::string>& Args) {
    std::vector<char*> argv;
    for (const std::string& a : Args)
        argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    const pid_t pid = fork();
    if (pid < 0)
        return -1;
    if (pid == 0) {
        const int null = open("/dev/null", O_WRONLY);
        if (null >= 0) {
            dup2(null, 1);
            dup2(null, 2);
        }
        execvp(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    while (waitpid(pid, &status, 0) < 0)
        if (errno != EINTR)
            return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// The event total of a callgrind output file (its "totals:" or "summary:" line); 0 when absent.
double CallgrindTotal(const std::string& Path) {
    std::ifstream in(Path);
    std::string line;
    double total = 0;
    while (std::getline(in, line))
        for (const char* key : {"totals:", "summary:"})
            if (line.rfind(key, 0) == 0)
                total = std::stod(line.substr(std::string(key).size()));
    return total;
}

std::string Ratio(double Value, double Raw) {
    if (Value <= 0 || Raw <= 0)
        return "-";
    std::ostringstream out;
    out << std::fixed << std::setprecision(3) << Value / Raw;
    return out.str();
}

std::string Count(double Value) {
    return Value > 0 ? std::to_string(static_cast<long long>(Value + 0.5)) : "-";
}

} // namespace

std::vector<TInstructionCount> CountInstructions(const std::vector<TConfig>& Plan, std::int64_t Rows,
                                                 std::ostream& Log) {
    std::vector<TInstructionCount> counts;
    std::error_code error;
    // The program itself: under valgrind /proc/self/exe would name valgrind.
    const std::string program = std::filesystem::read_symlink("/proc/self/exe", error).string();
    const std::string outFile =
        (std::filesystem::temp_directory_path() / ("quorda-bench-" + std::to_string(getpid()) + ".callgrind"))
            .string();
    for (const TConfig& config : Plan) {
        const TImplementation& impl = *config.Impl;
        if (impl.Workload != "scan" || std::find(kImpls.begin(), kImpls.end(), impl.Impl) == kImpls.end())
            continue;
        const bool seen = std::any_of(counts.begin(), counts.end(), [&](const TInstructionCount& c) {
            return c.Config.Context.Source == config.Context.Source && c.Config.Impl == config.Impl;
        });
        if (seen)
            continue;
        TInstructionCount count;
        count.Config = config;
        count.Config.Context.Rows = std::min(Rows, config.Context.TableRows);
        Log << "instructions: scan " << SourceName(config.Context.Source) << ' ' << impl.Impl << ' '
            << impl.Mode << std::flush;
        std::vector<std::string> args{"valgrind", "--tool=callgrind", "--callgrind-out-file=" + outFile,
                                      "--toggle-collect=quorda::bench::*::Execute()", program};
        for (std::string& a : ChildArguments(count.Config, 1))
            args.push_back(std::move(a));
        args.insert(args.end(), {"--result-fd", "1"});
        const int status = RunQuietly(args);
        const double total = status == 0 ? CallgrindTotal(outFile) : 0;
        std::remove(outFile.c_str());
        if (status != 0)
            count.Error = status == 127 ? "valgrind not found" : "exit status " + std::to_string(status);
        else if (total <= 0)
            count.Error = "no count in the callgrind output";
        else // the warm-up and the timed run each read every row
            count.PerRow = total / static_cast<double>(2 * count.Config.Context.Rows);
        Log << ": " << (count.Error.empty() ? Count(count.PerRow) + " per row" : count.Error) << '\n';
        counts.push_back(std::move(count));
    }
    return counts;
}

void PrintInstructions(std::ostream& Out, const std::vector<TInstructionCount>& Counts, std::int64_t Rows,
                       bool Markdown) {
    // Per source and mode, the count of each implementation.
    std::map<std::tuple<int, int, std::string>, std::map<std::string, double>> table;
    for (const TInstructionCount& c : Counts)
        table[{static_cast<int>(c.Config.Context.Source), ModeRank(c.Config.Impl->Mode), c.Config.Impl->Mode}]
             [c.Config.Impl->Impl] = c.PerRow;
    const std::vector<std::string> header{"source", "mode",          "raw",        "quorda",
                                          "view",   "quorda vs raw", "view vs raw"};
    std::vector<std::vector<std::string>> rows;
    for (const auto& [key, impls] : table) {
        const auto at = [&](const std::string& Impl) {
            const auto it = impls.find(Impl);
            return it == impls.end() ? 0.0 : it->second;
        };
        rows.push_back({SourceName(static_cast<TSource>(std::get<0>(key))), std::get<2>(key),
                        Count(at("raw")), Count(at("quorda")), Count(at("view")),
                        Ratio(at("quorda"), at("raw")), Ratio(at("view"), at("raw"))});
    }
    if (Markdown) {
        Out << "\n## Instructions per row\n\n"
            << "Callgrind, scan of " << Rows << " rows (warm-up and one run, the timed `Execute` only): "
            << "`quorda` reads through the classic getters, `view` through the reads that copy nothing.\n\n";
        for (std::size_t i = 0; i < header.size(); ++i)
            Out << "| " << header[i] << ' ';
        Out << "|\n|---|---|---:|---:|---:|---:|---:|\n";
        for (const auto& row : rows) {
            for (const std::string& cell : row)
                Out << "| " << cell << ' ';
            Out << "|\n";
        }
        return;
    }
    Out << "\ninstructions per row (callgrind, " << Rows << " rows)\n";
    rows.insert(rows.begin(), header);
    for (const auto& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            Out << (i < 2 ? std::left : std::right) << std::setw(i < 2 ? 10 : 15) << row[i]
                << (i + 1 < row.size() ? "" : "\n");
}

} // namespace quorda::bench
