#include "harness.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <sstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorda::bench {

namespace {

constexpr int kChildFd = 3;

void WriteAll(int Fd, const std::string& Text) {
    std::size_t done = 0;
    while (done < Text.size()) {
        const ssize_t n = write(Fd, Text.data() + done, Text.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return;
        done += static_cast<std::size_t>(n);
    }
}

std::string ReadAll(int Fd) {
    std::string text;
    char buffer[4096];
    for (;;) {
        const ssize_t n = read(Fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        text.append(buffer, static_cast<std::size_t>(n));
    }
    return text;
}

} // namespace

double Median(std::vector<double> Values) {
    if (Values.empty())
        return 0;
    std::sort(Values.begin(), Values.end());
    const std::size_t mid = Values.size() / 2;
    return Values.size() % 2 ? Values[mid] : (Values[mid - 1] + Values[mid]) / 2;
}

std::string FormatResultLine(std::int64_t Rows, std::uint64_t Checksum, const std::vector<double>& Seconds) {
    std::ostringstream out;
    out.precision(9);
    out << "ok " << Rows << ' ' << Checksum;
    for (double s : Seconds)
        out << ' ' << s;
    out << '\n';
    return out.str();
}

std::string FormatErrorLine(const std::string& Message) {
    std::string line = "error " + Message;
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line + '\n';
}

void ParseResultLine(const std::string& Line, TMeasurement& Into) {
    std::istringstream in(Line);
    std::string word;
    in >> word;
    if (word == "error") {
        std::getline(in >> std::ws, Into.Error);
        return;
    }
    if (word != "ok" || !(in >> Into.RowsHandled >> Into.Checksum)) {
        Into.Error = Line.empty() ? "no result from the child process" : "unreadable result: " + Line;
        return;
    }
    Into.Seconds.clear();
    double s = 0;
    while (in >> s)
        Into.Seconds.push_back(s);
    if (Into.Seconds.empty())
        Into.Error = "no timed run in the result";
    Into.MedianSeconds = Median(Into.Seconds);
}

std::vector<std::string> ChildArguments(const TConfig& Config, int Runs) {
    const TBenchContext& c = Config.Context;
    return {"--child",          Config.Impl->Workload,
            Config.Impl->Impl,  Config.Impl->Mode,
            "--source",         SourceName(c.Source),
            "--child-rows",     std::to_string(c.Rows),
            "--table-rows",     std::to_string(c.TableRows),
            "--jumps",          std::to_string(c.Jumps),
            "--runs",           std::to_string(Runs),
            "--stream-connect", c.StreamConnect,
            "--scroll-connect", c.ScrollConnect};
}

TMeasurement MeasureInChild(const TConfig& Config, int Runs) {
    TMeasurement result;
    result.Config = Config;

    std::vector<std::string> args = ChildArguments(Config, Runs);
    args.insert(args.begin(), "quorda_bench");
    args.push_back("--result-fd");
    args.push_back(std::to_string(kChildFd));
    std::vector<char*> argv;
    for (auto& a : args)
        argv.push_back(a.data());
    argv.push_back(nullptr);

    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) {
        result.Error = std::string("pipe: ") + std::strerror(errno);
        return result;
    }
    const pid_t pid = fork();
    if (pid < 0) {
        result.Error = std::string("fork: ") + std::strerror(errno);
        close(fds[0]);
        close(fds[1]);
        return result;
    }
    if (pid == 0) {
        // dup2 clears close-on-exec on the copy; a descriptor that already is kChildFd needs it cleared.
        if (fds[1] == kChildFd)
            fcntl(kChildFd, F_SETFD, 0);
        else
            dup2(fds[1], kChildFd);
        execv("/proc/self/exe", argv.data());
        _exit(127);
    }
    close(fds[1]);
    const std::string output = ReadAll(fds[0]);
    close(fds[0]);

    int status = 0;
    struct rusage usage {};
    while (wait4(pid, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    result.PeakRssMb = static_cast<double>(usage.ru_maxrss) / 1024.0; // kilobytes on Linux
    ParseResultLine(output, result);
    if (result.Error.empty() && !(WIFEXITED(status) && WEXITSTATUS(status) == 0))
        result.Error = "child process failed (status " + std::to_string(status) + ")";
    return result;
}

std::string RunForked(const std::function<std::string()>& Body) {
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0)
        throw TChildError(std::string("pipe: ") + std::strerror(errno));
    const pid_t pid = fork();
    if (pid < 0) {
        close(fds[0]);
        close(fds[1]);
        throw TChildError(std::string("fork: ") + std::strerror(errno));
    }
    if (pid == 0) {
        close(fds[0]);
        int code = 0;
        try {
            WriteAll(fds[1], "ok " + Body());
        } catch (const std::exception& e) {
            WriteAll(fds[1], std::string("error ") + e.what());
            code = 1;
        }
        close(fds[1]);
        std::fflush(nullptr);
        _exit(code); // no exit handlers: they belong to the parent
    }
    close(fds[1]);
    const std::string output = ReadAll(fds[0]);
    close(fds[0]);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (output.rfind("ok ", 0) == 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0)
        return output.substr(3);
    if (output.rfind("error ", 0) == 0)
        throw TChildError(output.substr(6));
    throw TChildError("child process failed (status " + std::to_string(status) + ")");
}

int RunChild(const TConfig& Config, int Runs, int Fd) {
    try {
        auto run = Config.Impl->Create(Config.Context);
        std::vector<double> seconds;
        std::int64_t rows = 0;
        std::uint64_t checksum = 0;
        for (int i = 0; i <= Runs; ++i) { // run 0 is the warm-up
            run->Prepare();
            const auto start = std::chrono::steady_clock::now();
            const std::int64_t handled = run->Execute();
            const double elapsed =
                std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
            const std::uint64_t sum = run->Checksum();
            if (i == 0) {
                rows = handled;
                checksum = sum;
                continue;
            }
            if (handled != rows || sum != checksum)
                throw std::runtime_error("run " + std::to_string(i) +
                                         " read different data than the warm-up");
            seconds.push_back(elapsed);
        }
        run.reset(); // disconnect before reporting, so teardown errors are not lost
        WriteAll(Fd, FormatResultLine(rows, checksum, seconds));
        return 0;
    } catch (const std::exception& e) {
        WriteAll(Fd, FormatErrorLine(e.what()));
        return 1;
    }
}

} // namespace quorda::bench
