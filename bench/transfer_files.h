#pragma once

// Files of the export and import workloads: where they go, the import file written from the
// generator, and the fold of the ids an export wrote.

#include "checksum.h"

#include <cstdint>
#include <string>

namespace quorda::bench {

// A file of this process in the system's temporary folder, removed by the caller.
std::string TransferFilePath(const std::string& Kind);

// The import file of rows 1..Rows in the export format: a header line, then per row
// id,qty,price,'name','yyyy-mm-dd hh:mm:ss.zzz' with CR LF line ends.
void WriteImportFile(const std::string& Path, std::int64_t Rows);

// Fold of the first value of every line after the header: the ids an export wrote, in order.
std::uint64_t FoldExportedIds(const std::string& Path, std::int64_t* Lines = nullptr);

// What FoldExportedIds gives for an export of rows 1..Rows.
std::uint64_t ExpectedIdChecksum(std::int64_t Rows);

} // namespace quorda::bench
