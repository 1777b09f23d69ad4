#pragma once

// Blocking reads and writes on the pipes between the benchmark and its child processes.

#include <string>

namespace quorda::bench {

// Writes all of Text; false when the other end is gone.
bool WriteAll(int Fd, const std::string& Text);

// Everything until end of file.
std::string ReadAll(int Fd);

// Reads newline-terminated lines from a descriptor it does not own.
class TLineReader {
public:
    explicit TLineReader(int Fd) : FFd(Fd) {}
    int Fd() const { return FFd; }
    // The next line without its newline; false at end of file before a complete line.
    bool Next(std::string& Line);

private:
    int FFd;
    std::string FBuffer;
};

} // namespace quorda::bench
