#include "progress.h"

#include <cstdio>
#include <unistd.h>

namespace quorda::cli {

Progress::Progress(std::string Verb)
    : FVerb(std::move(Verb)), FEnabled(::isatty(STDERR_FILENO) == 1),
      FStart(std::chrono::steady_clock::now()), FLastPrint(FStart) {}

void Progress::Update(std::int64_t Rows) {
    if (!FEnabled) {
        return;
    }
    const auto now = std::chrono::steady_clock::now();
    if (now - FLastPrint >= std::chrono::milliseconds(250)) {
        FLastPrint = now;
        Print(Rows, false);
    }
}

void Progress::Finish(std::int64_t Rows) {
    if (FEnabled && FLastPrint != FStart) {
        Print(Rows, true);
    }
}

void Progress::Print(std::int64_t Rows, bool Last) {
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - FStart).count();
    const double rate = seconds > 0 ? static_cast<double>(Rows) / seconds : 0.0;
    std::fprintf(stderr, "\r%s %lld rows, %.0f rows/s%s", FVerb.c_str(), static_cast<long long>(Rows), rate,
                 Last ? "\n" : "");
    std::fflush(stderr);
}

} // namespace quorda::cli
