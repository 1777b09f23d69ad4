#pragma once

// Instructions per row of the scan configurations, counted by callgrind on a short run: the
// repeatable yardstick beside the wall-clock ratios, which drift with the machine's load.

#include "harness.h"

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace quorda::bench {

struct TInstructionCount {
    TConfig Config;
    double PerRow = 0; // instructions per row of the timed Execute (warm-up and one run)
    std::string Error; // why there is no count
};

// Runs every distinct scan configuration of Plan (one per source, implementation and mode) once
// under callgrind on Rows rows of its table. Progress goes to Log.
std::vector<TInstructionCount> CountInstructions(const std::vector<TConfig>& Plan, std::int64_t Rows,
                                                 std::ostream& Log);

// The counts as a table per source and mode: raw, quorda, view and their ratios to raw.
void PrintInstructions(std::ostream& Out, const std::vector<TInstructionCount>& Counts, std::int64_t Rows,
                       bool Markdown);

} // namespace quorda::bench
