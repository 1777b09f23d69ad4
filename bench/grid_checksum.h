#pragma once

// The grid workload: a query opened and shown a screen at a time, first the top screen, then the
// screen that ends with the last row. Shared by its runs and the plan's expected checksum.

#include <cstdint>

namespace quorda::bench {

// Rows on one screen of the grid (and read on each end by the query alone).
inline constexpr int kGridScreenRows = 25;

// Fold of rows 1..kGridScreenRows, then of the last kGridScreenRows rows of Rows, in order.
std::uint64_t ExpectedGridChecksum(std::int64_t Rows);

} // namespace quorda::bench
