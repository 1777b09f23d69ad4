#include "quorda_test/fault_driver.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace quorda_test {
namespace {

// Longer scripts go to a file, keeping the connection string within a 250-byte buffer.
constexpr size_t kInlineScriptLimit = 100;

bool NeedsFile(const std::string& script) {
    return script.size() > kInlineScriptLimit || script.find_first_of(";{}") != std::string::npos;
}

} // namespace

FaultDriver::FaultDriver(std::string script)
    : FScript(std::move(script)), FLog(UniquePath("fault", "log")),
      FScriptFile(UniquePath("fault", "script")) {
    // The log exists from the start, so that a test can read it before the first call.
    std::ofstream(FLog.Path()).flush();
    FConnectionString = "Driver=QuordaFault;Log=" + FLog.Path().string();
    if (NeedsFile(FScript)) {
        std::ofstream(FScriptFile.Path()) << FScript;
        FConnectionString += ";ScriptFile=" + FScriptFile.Path().string();
    } else if (!FScript.empty()) {
        FConnectionString += ";Script=" + FScript;
    }
}

FaultDriver::~FaultDriver() {
    if (FAppliedToDsn) {
        ::unsetenv("QUORDA_FAULT_SCRIPT");
        ::unsetenv("QUORDA_FAULT_LOG");
    }
}

std::vector<std::string> FaultDriver::Calls() const {
    std::ifstream in(FLog.Path());
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(in, line)) {
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> FaultDriver::Calls(std::initializer_list<std::string_view> functions) const {
    std::vector<std::string> lines;
    for (auto& line : Calls()) {
        for (std::string_view function : functions) {
            if (line.compare(0, function.size(), function) == 0 &&
                (line.size() == function.size() || line[function.size()] == ' ')) {
                lines.push_back(std::move(line));
                break;
            }
        }
    }
    return lines;
}

bool FaultDriver::Received(std::string_view line) const {
    return Count(line) > 0;
}

int FaultDriver::Count(std::string_view line) const {
    auto lines = Calls();
    return static_cast<int>(std::count(lines.begin(), lines.end(), line));
}

void FaultDriver::ClearLog() const {
    std::ofstream(FLog.Path(), std::ios::trunc).flush();
}

void FaultDriver::ApplyToDsn() {
    ::setenv("QUORDA_FAULT_SCRIPT", FScript.c_str(), 1);
    ::setenv("QUORDA_FAULT_LOG", FLog.Path().c_str(), 1);
    FAppliedToDsn = true;
}

} // namespace quorda_test
