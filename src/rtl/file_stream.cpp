#include "quorda/rtl/stream.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorda {

namespace {

std::string OsError(int error) {
    return std::strerror(error);
}

// Repeats Call (read or write of Size bytes after the Done already moved) until Count bytes moved,
// the end of the file or an error; a call interrupted by a signal is simply repeated.
template <typename IoCall>
std::int64_t Transfer(std::int64_t Count, IoCall Call) {
    std::int64_t done = 0;
    while (done < Count) {
        const ssize_t n = Call(done, static_cast<std::size_t>(Count - done));
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            break;
        }
        done += n;
    }
    return done;
}

} // namespace

TFileStream::TFileStream(const std::string& FileName, std::uint16_t Mode) : FFileName(FileName) {
    if ((Mode & fmCreate) == fmCreate) {
        FHandle = ::open(FileName.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        if (FHandle < 0) {
            throw EFCreateError(FormatMessage(SFCreateError, FileName, OsError(errno)));
        }
        return;
    }
    int flags = O_RDONLY;
    switch (Mode & 0x0003) {
    case fmOpenWrite:
        flags = O_WRONLY;
        break;
    case fmOpenReadWrite:
        flags = O_RDWR;
        break;
    default:
        break;
    }
    FHandle = ::open(FileName.c_str(), flags | O_CLOEXEC);
    if (FHandle < 0) {
        throw EFOpenError(FormatMessage(SFOpenError, FileName, OsError(errno)));
    }
    struct stat info {};
    if (::fstat(FHandle, &info) == 0 && S_ISDIR(info.st_mode)) {
        ::close(FHandle);
        FHandle = -1;
        throw EFOpenError(FormatMessage(SFOpenError, FileName, OsError(EISDIR)));
    }
}

TFileStream::~TFileStream() {
    if (FHandle >= 0) {
        ::close(FHandle);
    }
}

std::int64_t TFileStream::Read(void* Buffer, std::int64_t Count) {
    return Transfer(Count, [&](std::int64_t Done, std::size_t Size) {
        return ::read(FHandle, static_cast<char*>(Buffer) + Done, Size);
    });
}

std::int64_t TFileStream::Write(const void* Buffer, std::int64_t Count) {
    return Transfer(Count, [&](std::int64_t Done, std::size_t Size) {
        return ::write(FHandle, static_cast<const char*>(Buffer) + Done, Size);
    });
}

std::int64_t TFileStream::Seek(std::int64_t Offset, TSeekOrigin Origin) {
    const int whence = Origin == soBeginning ? SEEK_SET : (Origin == soCurrent ? SEEK_CUR : SEEK_END);
    const off_t result = ::lseek(FHandle, static_cast<off_t>(Offset), whence);
    if (result < 0) {
        // A seek before the start leaves the position where it was, as the OS does.
        return ::lseek(FHandle, 0, SEEK_CUR);
    }
    return result;
}

void TFileStream::SetSize(std::int64_t NewSize) {
    if (NewSize < 0 || ::ftruncate(FHandle, static_cast<off_t>(NewSize)) != 0) {
        throw EStreamError(SStreamSetSize);
    }
    if (Position() > NewSize) {
        Seek(NewSize, soBeginning);
    }
}

} // namespace quorda
