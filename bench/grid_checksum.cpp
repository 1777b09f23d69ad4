#include "grid_checksum.h"

#include "row_generator.h"

#include <algorithm>

namespace quorda::bench {

std::uint64_t ExpectedGridChecksum(std::int64_t Rows) {
    const std::int64_t screen = std::min<std::int64_t>(kGridScreenRows, Rows);
    TChecksum sum;
    TBenchRow row;
    for (const std::int64_t first : {std::int64_t{1}, Rows - screen + 1}) {
        for (std::int64_t id = first; id < first + screen; ++id) {
            MakeBenchRow(id, row);
            sum.AddRow(row.View());
        }
    }
    return sum.Value();
}

} // namespace quorda::bench
