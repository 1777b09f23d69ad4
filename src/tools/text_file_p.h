// The line files of export and import: lines end in CR LF, bytes are kept as they are.
#pragma once

#include "quorda/db/types.h"

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace quorda {

class TField;

// Writes lines to a file, each followed by CR LF. Every failure raises EInOutError naming the file;
// the file is closed before the error leaves, and by the destructor when Close was not reached.
class TLineWriter {
public:
    // Truncates (or creates) the file, or appends to it.
    TLineWriter(const std::string& FileName, bool Append);
    ~TLineWriter();
    TLineWriter(const TLineWriter&) = delete;
    TLineWriter& operator=(const TLineWriter&) = delete;

    void WriteLine(const std::string& Line);
    // Flushes and closes; raises when the data could not all be written.
    void Close();

private:
    [[noreturn]] void Fail(const char* Action, int ErrorCode);

    static constexpr std::size_t kBufferSize = 1 << 20;

    std::string FFileName;
    std::unique_ptr<char[]> FBuffer; // outlives the stream that writes through it
    std::FILE* FFile = nullptr;
};

// Reads the lines of a file, without their CR LF (or LF) ends.
class TLineReader {
public:
    // Raises EInOutError when the file cannot be opened.
    explicit TLineReader(const std::string& FileName);
    ~TLineReader();
    TLineReader(const TLineReader&) = delete;
    TLineReader& operator=(const TLineReader&) = delete;

    // False at the end of the file; raises EInOutError on a read error.
    bool ReadLine(std::string& Line);

private:
    std::string FFileName;
    std::FILE* FFile = nullptr;
};

// Smallint, integer, float and 64-bit integer values are written without quotes.
bool IsBareType(TFieldType DataType);
// Appends the text escaped as ConverString encodes it.
void AppendEncoded(std::string& Line, std::string_view Text);
// Appends the field's value as the file holds it: bare or quoted, escaped.
void AppendFieldValue(std::string& Line, const TField& Field);

} // namespace quorda
