#include "pipe_io.h"

#include <cerrno>
#include <unistd.h>

namespace quorda::bench {

bool WriteAll(int Fd, const std::string& Text) {
    std::size_t done = 0;
    while (done < Text.size()) {
        const ssize_t n = write(Fd, Text.data() + done, Text.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
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

bool TLineReader::Next(std::string& Line) {
    for (;;) {
        const std::size_t end = FBuffer.find('\n');
        if (end != std::string::npos) {
            Line.assign(FBuffer, 0, end);
            FBuffer.erase(0, end + 1);
            return true;
        }
        if (FFd < 0)
            return false;
        char chunk[512];
        const ssize_t n = read(FFd, chunk, sizeof chunk);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        FBuffer.append(chunk, static_cast<std::size_t>(n));
    }
}

} // namespace quorda::bench
