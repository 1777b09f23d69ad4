// Whole datasets to and from a comma-separated text file: one record a line, every line ending in
// CR LF; integers and floats bare, every other value quoted; quotes, backslashes, NUL, CR and LF
// escaped so that a record stays on one line. Bytes are kept as they are (UTF-8 text survives).
#pragma once

#include "quorda/export.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quorda {

class TDataSet;

// What ImportDataSet does with a row whose key already exists in the table.
enum TImportType {
    itIgnoreExists, // the row is skipped
    itUpdateExists, // the existing row is deleted and the file's row inserted
};

// Called after every record written or line imported with the count so far.
using TTransferProgress = std::function<void(std::int64_t Rows)>;

// Result := Text escaped (Encode) or unescaped. The pairs, tried in this order at each position:
// ' <-> '', \ <-> \\, NUL <-> \x00, CR <-> \x0D, LF <-> \x0A. Any other backslash sequence is kept.
QUORDA_API void ConverString(const std::string& Text, bool Encode, std::string& Result);
QUORDA_API std::string ConverString(const std::string& Text, bool Encode);

// Writes a header line of field names and one line per record, from the current record to the end.
// The file is created or truncated; EInOutError when it cannot be written.
QUORDA_API void ExportDataSet(TDataSet* DataSet, const std::string& FileName,
                              const TTransferProgress& Progress = {});

// Appends a line per record from the current one: LeadText, then "," and the value of field j for
// each j below Fields.size() (fields by position; the entries' texts are not used). Creates the file
// when absent; does nothing at the end of the dataset.
QUORDA_API void SaveQryToFile(const std::string& FileName, const std::string& LeadText, TDataSet* DataSet,
                              const std::vector<std::string>& Fields);

// The file ExportDataSet writes, holding only the records of Bookmarks (a grid's selected rows, for
// instance), in the list's order. The dataset is left on the last of them.
QUORDA_API void ExportBookmarks(TDataSet* DataSet, const std::vector<std::string>& Bookmarks,
                                const std::string& FileName, const TTransferProgress& Progress = {});

// Inserts the rows of a file written by ExportDataSet into TableName over DataBase, in one
// transaction. KeyCondition ("where id = :id", parameters named like the header's columns) finds an
// existing row for ImportType. Any error rolls the transaction back and passes on; an error raised
// while a line is handled also carries that line's number (catch TImportLineInfo). EInOutError when
// the file cannot be read.
QUORDA_API void ImportDataSet(const std::string& FileName, const std::string& TableName,
                              const std::string& KeyCondition, TImportType ImportType,
                              const TTransferProgress& Progress = {});

// Appends every row of a file written by ExportDataSet to TableName over DataBase, in batches of
// rows (TODBCDataSet::ExecSQLBatch) inside one transaction: all rows or, on any error, none. Values
// are read as ImportDataSet reads them; errors carry the failing line's number as there.
QUORDA_API void AppendDataSet(const std::string& FileName, const std::string& TableName,
                              const TTransferProgress& Progress = {});

// Mixed into the exception ImportDataSet re-raises: the exception keeps its class and message, and
// a handler for this type learns the number of the file line (1 is the header) being handled.
class QUORDA_API TImportLineInfo {
public:
    explicit TImportLineInfo(std::int64_t line) : FLine(line) {}
    virtual ~TImportLineInfo() = default;
    std::int64_t Line() const noexcept { return FLine; }

private:
    std::int64_t FLine;
};

} // namespace quorda
