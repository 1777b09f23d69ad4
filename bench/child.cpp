// Child side of a measurement: one configuration, connected once, run on command.

#include "harness.h"
#include "pipe_io.h"

#include <chrono>
#include <exception>
#include <memory>

namespace quorda::bench {

namespace {

std::int64_t TimedRun(TBenchRun& Run, double& Seconds) {
    Run.Prepare();
    const auto start = std::chrono::steady_clock::now();
    const std::int64_t handled = Run.Execute();
    Seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return handled;
}

// True for "run", false at end of file: the parent has no more runs for this child.
bool NextCommand(TLineReader& Commands) {
    std::string line;
    if (!Commands.Next(line))
        return false;
    if (line + '\n' != kRunCommand)
        throw std::runtime_error("unknown command '" + line + "'");
    return true;
}

} // namespace

int RunChild(const TConfig& Config, int Runs, int ResultFd, int CommandFd) {
    try {
        auto run = Config.Impl->Create(Config.Context);
        double seconds = 0;
        const std::int64_t rows = TimedRun(*run, seconds); // the warm-up
        const std::uint64_t checksum = run->Checksum();
        WriteAll(ResultFd, FormatReadyLine(rows, checksum));
        TLineReader commands(CommandFd);
        for (int i = 1; CommandFd < 0 ? i <= Runs : NextCommand(commands); ++i) {
            const std::int64_t handled = TimedRun(*run, seconds);
            if (handled != rows || run->Checksum() != checksum)
                throw std::runtime_error("run " + std::to_string(i) +
                                         " read different data than the warm-up");
            WriteAll(ResultFd, FormatRunLine(seconds));
        }
        run.reset(); // disconnect before the last line, so teardown errors are not lost
        WriteAll(ResultFd, kDoneLine);
        return 0;
    } catch (const std::exception& e) {
        WriteAll(ResultFd, FormatErrorLine(e.what()));
        return 1;
    }
}

} // namespace quorda::bench
