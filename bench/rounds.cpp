// Parent side of a measurement: the children of one group, started one by one, then driven through
// rounds of one timed run each, and reaped for their peak memory.

#include "harness.h"
#include "pipe_io.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <ostream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>

namespace quorda::bench {

namespace {

constexpr int kResultFd = 3;
constexpr int kCommandFd = 4;

// While children run, a command to one that died must fail with EPIPE instead of ending the
// benchmark; the children themselves get the previous disposition back.
class TSigpipeIgnored {
public:
    TSigpipeIgnored() {
        struct sigaction ignore {};
        ignore.sa_handler = SIG_IGN;
        sigaction(SIGPIPE, &ignore, &FPrevious);
    }
    ~TSigpipeIgnored() { sigaction(SIGPIPE, &FPrevious, nullptr); }
    const struct sigaction& Previous() const { return FPrevious; }

private:
    struct sigaction FPrevious {};
};

std::string DescribeStatus(int Status) {
    if (WIFSIGNALED(Status))
        return "signal " + std::to_string(WTERMSIG(Status));
    return "exit code " + std::to_string(WEXITSTATUS(Status));
}

class TChild {
public:
    TChild() = default;
    TChild(const TChild&) = delete;
    TChild& operator=(const TChild&) = delete;
    ~TChild() {
        TMeasurement ignored;
        Finish(ignored);
    }

    bool Alive() const { return FPid > 0; }

    // Starts Program as the child of Config; false with Into.Error set when that is impossible.
    bool Start(const TConfig& Config, int Runs, const std::string& Program, const TSigpipeIgnored& Signals,
               TMeasurement& Into) {
        std::vector<std::string> args = ChildArguments(Config, Runs);
        args.insert(args.begin(), "quorda_bench");
        for (const char* extra : {"--result-fd", "3", "--command-fd", "4"})
            args.emplace_back(extra);
        std::vector<char*> argv;
        for (auto& a : args)
            argv.push_back(a.data());
        argv.push_back(nullptr);

        int results[2], commands[2];
        if (pipe2(results, O_CLOEXEC) != 0)
            return Fail("pipe", Into);
        if (pipe2(commands, O_CLOEXEC) != 0) {
            close(results[0]);
            close(results[1]);
            return Fail("pipe", Into);
        }
        FPid = fork();
        if (FPid == 0) {
            // Only the two ends this child uses survive exec; moved above the targets first, so
            // that neither can overwrite the other.
            sigaction(SIGPIPE, &Signals.Previous(), nullptr);
            const int r = fcntl(results[1], F_DUPFD_CLOEXEC, 10);
            const int c = fcntl(commands[0], F_DUPFD_CLOEXEC, 10);
            if (r >= 0 && c >= 0 && dup2(r, kResultFd) >= 0 && dup2(c, kCommandFd) >= 0)
                execv(Program.c_str(), argv.data());
            _exit(127);
        }
        const int forkError = errno;
        close(results[1]);
        close(commands[0]);
        if (FPid < 0) {
            close(results[0]);
            close(commands[1]);
            errno = forkError;
            return Fail("fork", Into);
        }
        FCommands = commands[1];
        FResults = TLineReader(results[0]);
        return true;
    }

    // Reads the next line, expected to be of kind Expected; on failure the child is finished.
    bool Expect(const std::string& Expected, TMeasurement& Into) {
        std::string line;
        if (!FResults.Next(line)) {
            FSilent = true;
        } else if (ApplyChildLine(line, Expected, Into)) {
            return true;
        }
        Finish(Into);
        return false;
    }

    bool Run(TMeasurement& Into) {
        WriteAll(FCommands, kRunCommand); // a child that is gone shows as end of file below
        return Expect("run", Into);
    }

    // Ends the child: end of file on its commands, its last line, its exit status and peak memory.
    void Finish(TMeasurement& Into) {
        if (!Alive())
            return;
        close(FCommands);
        std::string line;
        if (Into.Error.empty() && !FSilent) {
            if (!FResults.Next(line))
                FSilent = true;
            else
                ApplyChildLine(line, "done", Into);
        }
        close(FResults.Fd());
        int status = 0;
        struct rusage usage {};
        while (wait4(FPid, &status, 0, &usage) < 0 && errno == EINTR) {
        }
        FPid = -1;
        Into.PeakRssMb = static_cast<double>(usage.ru_maxrss) / 1024.0; // kilobytes on Linux
        const bool clean = WIFEXITED(status) && WEXITSTATUS(status) == 0;
        if (Into.Error.empty() && (FSilent || !clean))
            Into.Error = std::string("child process ") + (FSilent ? "ended without a result" : "failed") +
                         " (" + DescribeStatus(status) + ")";
    }

private:
    bool Fail(const char* What, TMeasurement& Into) {
        Into.Error = std::string(What) + ": " + std::strerror(errno);
        FPid = -1;
        return false;
    }

    pid_t FPid = -1;
    int FCommands = -1;
    TLineReader FResults{-1};
    bool FSilent = false; // the result pipe ended before the expected line
};

} // namespace

std::vector<std::vector<std::size_t>> GroupConfigs(const std::vector<TConfig>& Plan) {
    const auto key = [&](std::size_t I) {
        const TConfig& c = Plan[I];
        return std::tie(c.Impl->Workload, c.Context.Source, c.Context.Rows, c.Impl->Mode);
    };
    std::vector<std::vector<std::size_t>> groups;
    for (std::size_t i = 0; i < Plan.size(); ++i) {
        auto group = groups.begin();
        while (group != groups.end() && key(group->front()) != key(i))
            ++group;
        if (group == groups.end())
            groups.push_back({i});
        else
            group->push_back(i);
    }
    return groups;
}

std::vector<TMeasurement> MeasureGroup(const std::vector<TConfig>& Group, int Runs, std::ostream* Progress,
                                       const std::string& Program) {
    const TSigpipeIgnored signals;
    const std::size_t n = Group.size();
    std::vector<TMeasurement> results(n);
    std::vector<TChild> children(n);
    if (Progress && n > 0)
        *Progress << Group[0].Impl->Workload << ' ' << SourceName(Group[0].Context.Source) << ' '
                  << Group[0].Context.Rows << ' ' << Group[0].Impl->Mode << ':' << std::flush;
    // One warm-up at a time: each child is ready before the next one starts.
    for (std::size_t i = 0; i < n; ++i) {
        results[i].Config = Group[i];
        const bool ready = children[i].Start(Group[i], Runs, Program, signals, results[i]) &&
                           children[i].Expect("ready", results[i]);
        if (Progress)
            *Progress << ' ' << Group[i].Impl->Impl << (ready ? "" : " (failed)") << std::flush;
    }
    if (Progress)
        *Progress << ", round" << std::flush;
    for (int round = 0; round < Runs; ++round) {
        for (std::size_t k = 0; k < n; ++k) {
            const std::size_t i = round % 2 ? n - 1 - k : k;
            if (children[i].Alive())
                children[i].Run(results[i]);
        }
        if (Progress)
            *Progress << ' ' << round + 1 << std::flush;
    }
    for (std::size_t i = 0; i < n; ++i) {
        children[i].Finish(results[i]);
        results[i].MedianSeconds = Median(results[i].Seconds);
    }
    if (Progress)
        *Progress << '\n';
    return results;
}

} // namespace quorda::bench
