#include "report.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <unistd.h>

namespace quorda::bench {

namespace {

std::string Fixed(double Value, int Digits) {
    std::ostringstream out;
    out << std::fixed << std::setprecision(Digits) << Value;
    return out.str();
}

std::string Grouped(double Value) {
    const std::string digits = std::to_string(static_cast<long long>(Value + 0.5));
    std::string grouped;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0)
            grouped += ',';
        grouped += digits[i];
    }
    return grouped;
}

std::string FirstLineWith(const char* Path, const std::string& Key) {
    std::ifstream in(Path);
    std::string line;
    while (std::getline(in, line))
        if (line.rfind(Key, 0) == 0) {
            const auto colon = line.find(':');
            return colon == std::string::npos ? line : line.substr(line.find_first_not_of(" \t", colon + 1));
        }
    return "unknown";
}

std::vector<std::string> CommandLines(const char* Command) {
    std::vector<std::string> lines;
    if (FILE* pipe = popen(Command, "r")) {
        char buffer[512];
        while (std::fgets(buffer, sizeof buffer, pipe)) {
            std::string line(buffer);
            while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
                line.pop_back();
            if (!line.empty())
                lines.push_back(line);
        }
        pclose(pipe);
    }
    return lines;
}

// What a row's `vs raw` divides by: raw ODBC, except for the grid, whose measure is the same query
// read by TODBCQuery without a grid.
std::string BaselineImpl(const TConfig& Config) {
    return Config.Impl->Impl == "grid" ? "quorda" : "raw";
}

bool SameGroup(const TConfig& A, const TConfig& B) {
    return A.Impl->Workload == B.Impl->Workload && A.Context.Source == B.Context.Source &&
           A.Context.Rows == B.Context.Rows;
}

} // namespace

std::string WithoutFolders(const std::string& ConnectionString) {
    std::string out;
    std::size_t start = 0;
    while (start < ConnectionString.size()) {
        std::size_t end = ConnectionString.find(';', start);
        if (end == std::string::npos)
            end = ConnectionString.size();
        std::string attribute = ConnectionString.substr(start, end - start);
        const std::size_t equals = attribute.find('=');
        if (equals != std::string::npos && attribute.compare(equals + 1, 1, "/") == 0)
            attribute = attribute.substr(0, equals + 1) +
                        std::filesystem::path(attribute.substr(equals + 1)).filename().string();
        out += attribute;
        if (end < ConnectionString.size())
            out += ';';
        start = end + 1;
    }
    return out;
}

TRunInfo DescribeMachine() {
    TRunInfo info;
    const std::time_t now = std::time(nullptr);
    char date[64];
    std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S %Z", std::localtime(&now));
    info.Date = date;
    info.Machine = FirstLineWith("/proc/cpuinfo", "model name") + ", " +
                   std::to_string(sysconf(_SC_NPROCESSORS_ONLN)) + " cores online, " +
                   FirstLineWith("/proc/meminfo", "MemTotal") + " memory";
    info.Versions =
        CommandLines("dpkg-query -W -f='${Package} ${Version}\\n' unixodbc libodbc2 libsqliteodbc "
                     "libsqlite3-0 odbc-postgresql postgresql-15 odbc-mariadb mariadb-server libqt6sql6 "
                     "libqt6sql6-odbc 2>/dev/null");
    return info;
}

std::vector<std::string> TableHeader() {
    return {"workload", "source",      "rows",   "implementation", "mode",    "median s",
            "rows/s",   "peak RSS MB", "vs raw", "QtSql factor",   "spread %"};
}

std::vector<TTableRow> BuildTable(const std::vector<TMeasurement>& Results) {
    std::vector<TTableRow> table;
    for (const TMeasurement& m : Results) {
        const TConfig& c = m.Config;
        TTableRow row;
        row.Cells = {c.Impl->Workload, SourceName(c.Context.Source),
                     Grouped(static_cast<double>(c.Context.Rows)), c.Impl->Impl, c.Impl->Mode};
        if (!m.Error.empty()) {
            row.Failed = true;
            row.Cells.push_back("FAILED: " + m.Error);
            table.push_back(row);
            continue;
        }
        const double median = m.MedianSeconds;
        const TMeasurement* raw = nullptr;
        const TMeasurement* qt = nullptr;
        for (const TMeasurement& other : Results) {
            if (!other.Error.empty() || !SameGroup(other.Config, c))
                continue;
            if (other.Config.Impl->Impl == BaselineImpl(c) && other.Config.Impl->Mode == c.Impl->Mode)
                raw = &other;
            if (other.Config.Impl->Impl == "qtsql" && !qt)
                qt = &other;
        }
        const auto [low, high] = std::minmax_element(m.Seconds.begin(), m.Seconds.end());
        row.Cells.push_back(Fixed(median, 3));
        row.Cells.push_back(median > 0 ? Grouped(static_cast<double>(m.RowsHandled) / median) : "-");
        row.Cells.push_back(Fixed(m.PeakRssMb, 1));
        const double vsRaw = raw ? PairedRatio(m.Seconds, raw->Seconds) : 0;
        row.Cells.push_back(vsRaw > 0 ? Fixed(vsRaw, 2) : "-");
        row.Cells.push_back(qt && median > 0 ? Fixed(qt->MedianSeconds / median, 2) : "-");
        row.Cells.push_back(median > 0 ? Fixed((*high - *low) / median * 100.0, 0) : "-");
        table.push_back(row);
    }
    return table;
}

void PrintTable(std::ostream& Out, const std::vector<TTableRow>& Rows) {
    const std::vector<std::string> header = TableHeader();
    std::vector<std::size_t> width(header.size());
    for (std::size_t i = 0; i < header.size(); ++i)
        width[i] = header[i].size();
    for (const auto& row : Rows)
        for (std::size_t i = 0; i < row.Cells.size() && i < width.size() && !(row.Failed && i == 5); ++i)
            width[i] = std::max(width[i], row.Cells[i].size());
    const auto line = [&](const std::vector<std::string>& Cells) {
        for (std::size_t i = 0; i < Cells.size(); ++i) {
            const bool number = i == 2 || i >= 5;
            if (i == 5 && Cells.size() == 6) { // a failure message takes the rest of the line
                Out << Cells[i];
                break;
            }
            Out << (number ? std::right : std::left) << std::setw(static_cast<int>(width[i])) << Cells[i]
                << (i + 1 < Cells.size() ? "  " : "");
        }
        Out << '\n';
    };
    line(header);
    std::string previous;
    for (const auto& row : Rows) {
        const std::string group = row.Cells[0] + row.Cells[1] + row.Cells[2];
        if (!previous.empty() && group != previous)
            Out << '\n';
        previous = group;
        line(row.Cells);
    }
}

void WriteMarkdown(std::ostream& Out, const TRunInfo& Info, const std::vector<TTableRow>& Rows,
                   const std::vector<std::string>& Problems) {
    Out << "# Benchmark results\n\n"
        << "Written by `quorda_bench` (see docs/performance.md). Medians of the timed runs, one per round\n"
        << "after one warm-up run; `vs raw` is the median of the per-round ratios to raw ODBC; peak RSS is\n"
        << "the maximum resident size of the child process that ran the configuration.\n\n"
        << "- Date: " << Info.Date << "\n"
        << "- Machine: " << Info.Machine << "\n"
        << "- Options: " << Info.Options << "\n";
    Out << "- Packages and drivers:\n";
    for (const auto& v : Info.Versions)
        Out << "  - " << v << "\n";
    Out << "- Connection strings:\n";
    for (const auto& c : Info.Connections)
        Out << "  - " << c << "\n";
    Out << "\n";
    const std::vector<std::string> header = TableHeader();
    Out << "|";
    for (const auto& h : header)
        Out << ' ' << h << " |";
    Out << "\n|";
    for (std::size_t i = 0; i < header.size(); ++i)
        Out << (i == 2 || i >= 5 ? "---:|" : "---|");
    Out << "\n";
    for (const auto& row : Rows) {
        Out << "|";
        for (std::size_t i = 0; i < header.size(); ++i)
            Out << ' ' << (i < row.Cells.size() ? row.Cells[i] : std::string()) << " |";
        Out << "\n";
    }
    if (!Problems.empty()) {
        Out << "\n## Problems\n\n";
        for (const auto& p : Problems)
            Out << "- " << p << "\n";
    }
}

} // namespace quorda::bench
