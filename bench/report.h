#pragma once

// The results table (terminal and markdown) and the description of the machine it was measured on.

#include "harness.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace quorda::bench {

struct TRunInfo {
    std::string Date;
    std::string Machine;                  // CPU model, core count, memory
    std::vector<std::string> Versions;    // packages and drivers
    std::vector<std::string> Connections; // "source (cursor kind): string"
    std::string Options;                  // rows, runs, ...
};

TRunInfo DescribeMachine();

// A connection string as the results show it: an attribute holding an absolute path (the SQLite file)
// keeps only the file name, so that committed results never carry the folders of the machine.
std::string WithoutFolders(const std::string& ConnectionString);

// One row of the table, with the ratios resolved against the other measurements.
struct TTableRow {
    std::vector<std::string> Cells;
    bool Failed = false;
};

std::vector<std::string> TableHeader();
std::vector<TTableRow> BuildTable(const std::vector<TMeasurement>& Results);

void PrintTable(std::ostream& Out, const std::vector<TTableRow>& Rows);
void WriteMarkdown(std::ostream& Out, const TRunInfo& Info, const std::vector<TTableRow>& Rows,
                   const std::vector<std::string>& Problems);

} // namespace quorda::bench
