#include "transfer_files.h"

#include "row_generator.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <unistd.h>

namespace quorda::bench {

std::string TransferFilePath(const std::string& Kind) {
    const char* folder = std::getenv("TMPDIR");
    return std::string(folder != nullptr ? folder : "/tmp") + "/quorda_bench_" + Kind + "_" +
           std::to_string(::getpid()) + ".txt";
}

void WriteImportFile(const std::string& Path, std::int64_t Rows) {
    std::ofstream out(Path, std::ios::binary | std::ios::trunc);
    out << "id,qty,price,name,created\r\n";
    TBenchRow row;
    char line[200];
    for (std::int64_t id = 1; id <= Rows; ++id) {
        MakeBenchRow(id, row);
        const TBenchTimestamp& t = row.Created;
        // Names are plain letters: nothing to escape.
        std::snprintf(line, sizeof line, "%lld,%lld,%.17g,'%s','%04d-%02d-%02d %02d:%02d:%02d.%03d'\r\n",
                      static_cast<long long>(row.Id), static_cast<long long>(row.Qty), row.Price,
                      row.Name.c_str(), t.Year, t.Month, t.Day, t.Hour, t.Minute, t.Second, t.Millisecond);
        out << line;
    }
    if (!out.flush())
        throw std::runtime_error("cannot write " + Path);
}

std::uint64_t FoldExportedIds(const std::string& Path, std::int64_t* Lines) {
    std::ifstream in(Path, std::ios::binary);
    std::string line;
    std::getline(in, line);
    TChecksum sum;
    std::int64_t count = 0;
    while (std::getline(in, line)) {
        sum.AddInt(std::stoll(line.substr(0, line.find(','))));
        ++count;
    }
    if (Lines)
        *Lines = count;
    return sum.Value();
}

std::uint64_t ExpectedIdChecksum(std::int64_t Rows) {
    TChecksum sum;
    for (std::int64_t id = 1; id <= Rows; ++id)
        sum.AddInt(id);
    return sum.Value();
}

} // namespace quorda::bench
