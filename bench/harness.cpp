// What parent and child share: the line protocol, the child's arguments; and the forked helper.

#include "harness.h"

#include "pipe_io.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace quorda::bench {

double Median(std::vector<double> Values) {
    if (Values.empty())
        return 0;
    std::sort(Values.begin(), Values.end());
    const std::size_t mid = Values.size() / 2;
    return Values.size() % 2 ? Values[mid] : (Values[mid - 1] + Values[mid]) / 2;
}

double PairedRatio(const std::vector<double>& Runs, const std::vector<double>& Baseline) {
    if (Runs.size() != Baseline.size()) {
        const double base = Median(Baseline);
        return base > 0 ? Median(Runs) / base : 0;
    }
    std::vector<double> ratios;
    for (std::size_t i = 0; i < Runs.size(); ++i)
        if (Baseline[i] > 0)
            ratios.push_back(Runs[i] / Baseline[i]);
    return Median(ratios);
}

std::string FormatReadyLine(std::int64_t Rows, std::uint64_t Checksum) {
    return "ready " + std::to_string(Rows) + ' ' + std::to_string(Checksum) + '\n';
}

std::string FormatRunLine(double Seconds) {
    std::ostringstream out;
    out.precision(9);
    out << "run " << Seconds << '\n';
    return out.str();
}

std::string FormatErrorLine(const std::string& Message) {
    std::string line = "error " + Message;
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line + '\n';
}

bool ApplyChildLine(const std::string& Line, const std::string& Expected, TMeasurement& Into) {
    std::istringstream in(Line);
    std::string word;
    in >> word;
    if (word == "error") {
        std::getline(in >> std::ws, Into.Error);
        if (Into.Error.empty())
            Into.Error = "the child process reported an error without a message";
        return false;
    }
    bool valid = word == Expected;
    if (valid && word == "ready") {
        valid = static_cast<bool>(in >> Into.RowsHandled >> Into.Checksum);
    } else if (valid && word == "run") {
        double seconds = 0;
        valid = static_cast<bool>(in >> seconds);
        if (valid)
            Into.Seconds.push_back(seconds);
    }
    if (!valid)
        Into.Error = Line.empty() ? "empty line from the child process" : "unreadable result: " + Line;
    return valid;
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

} // namespace quorda::bench
