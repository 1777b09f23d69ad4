// Rows on standard output: an aligned table for people, CSV for programs.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace quorda::cli {

using Cell = std::optional<std::string>; // nullopt is NULL
using Row = std::vector<Cell>;

// Columns as wide as their widest value, a rule under the header, NULL shown as "NULL".
void PrintAligned(std::ostream& Out, const std::vector<std::string>& Header, const std::vector<Row>& Rows);
// RFC 4180: fields with a comma, quote, CR or LF are quoted (quotes doubled); NULL is an empty field.
void PrintCsvLine(std::ostream& Out, const Row& Values);

} // namespace quorda::cli
