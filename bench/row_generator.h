#pragma once

// The deterministic content of the bench table: row `id` always holds the same values, so that data
// setup can be verified and every workload's checksum can be compared with a value computed here.

#include "checksum.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorda::bench {

struct TBenchRow {
    std::int64_t Id = 0;
    std::int64_t Qty = 0;
    double Price = 0;
    std::string Name; // 5 to 40 ASCII characters
    TBenchTimestamp Created;

    TBenchRowView View() const { return {Id, Qty, Price, Name, Created}; }
};

// Fills Row with the values of row Id (1-based); reuses Row.Name's storage.
void MakeBenchRow(std::int64_t Id, TBenchRow& Row);

// Rows 1..Count, generated ahead of a timed insert.
std::vector<TBenchRow> GenerateRows(std::int64_t Count);

// Fold of rows First..Last in order, as a forward scan reads them.
std::uint64_t ExpectedRangeChecksum(std::int64_t First, std::int64_t Last);

// Row numbers (1-based, within 1..Visited) of the scroll workload's random jumps; the same list for
// every implementation.
std::vector<std::int64_t> ScrollJumpTargets(std::int64_t Visited, int Count);

// Fold of the scroll workload: rows 1..Visited, back down to 1, then the jump targets.
std::uint64_t ExpectedScrollChecksum(std::int64_t Visited, const std::vector<std::int64_t>& Targets);

// Calendar date of a day count since 1970-01-01 (proleptic Gregorian).
void CivilFromDays(std::int64_t Days, int& Year, int& Month, int& Day);

} // namespace quorda::bench
