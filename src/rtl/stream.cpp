#include "quorda/rtl/stream.h"

#include <algorithm>
#include <cstring>

namespace quorda {

std::int64_t TStream::Size() {
    const std::int64_t position = Seek(0, soCurrent);
    const std::int64_t size = Seek(0, soEnd);
    Seek(position, soBeginning);
    return size;
}

void TStream::SetSize(std::int64_t NewSize) {
    throw EStreamError(SStreamSetSize);
}

void TStream::ReadBuffer(void* Buffer, std::int64_t Count) {
    if (Count > 0 && Read(Buffer, Count) != Count) {
        throw EReadError(SReadError);
    }
}

void TStream::WriteBuffer(const void* Buffer, std::int64_t Count) {
    if (Count > 0 && Write(Buffer, Count) != Count) {
        throw EWriteError(SWriteError);
    }
}

std::int64_t TStream::CopyFrom(TStream& Source, std::int64_t Count) {
    if (Count == 0) {
        Source.SetPosition(0);
        Count = Source.Size();
    }
    constexpr std::int64_t kChunk = 64 * 1024;
    std::vector<char> buffer(static_cast<std::size_t>(std::min(Count, kChunk)));
    std::int64_t remaining = Count;
    while (remaining > 0) {
        const std::int64_t chunk = std::min(remaining, kChunk);
        Source.ReadBuffer(buffer.data(), chunk);
        WriteBuffer(buffer.data(), chunk);
        remaining -= chunk;
    }
    return Count;
}

namespace {

template <typename T>
T ReadLittleEndian(TStream& Stream) {
    unsigned char bytes[sizeof(T)];
    Stream.ReadBuffer(bytes, sizeof(T));
    T value = 0;
    for (std::size_t i = sizeof(T); i > 0; --i) {
        value = static_cast<T>((value << 8) | bytes[i - 1]);
    }
    return value;
}

template <typename T>
void WriteLittleEndian(TStream& Stream, T Value) {
    unsigned char bytes[sizeof(T)];
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        bytes[i] = static_cast<unsigned char>(Value >> (8 * i));
    }
    Stream.WriteBuffer(bytes, sizeof(T));
}

} // namespace

std::uint8_t TStream::ReadByte() {
    return ReadLittleEndian<std::uint8_t>(*this);
}
std::uint16_t TStream::ReadWord() {
    return ReadLittleEndian<std::uint16_t>(*this);
}
std::uint32_t TStream::ReadDWord() {
    return ReadLittleEndian<std::uint32_t>(*this);
}
std::uint64_t TStream::ReadQWord() {
    return ReadLittleEndian<std::uint64_t>(*this);
}
void TStream::WriteByte(std::uint8_t Value) {
    WriteLittleEndian(*this, Value);
}
void TStream::WriteWord(std::uint16_t Value) {
    WriteLittleEndian(*this, Value);
}
void TStream::WriteDWord(std::uint32_t Value) {
    WriteLittleEndian(*this, Value);
}
void TStream::WriteQWord(std::uint64_t Value) {
    WriteLittleEndian(*this, Value);
}

// --- memory streams ---

void TCustomMemoryStream::SetPointer(void* Ptr, std::int64_t ASize) {
    FMemory = Ptr;
    FSize = ASize;
}

std::int64_t TCustomMemoryStream::Read(void* Buffer, std::int64_t Count) {
    if (Count <= 0 || FPosition >= FSize) {
        return 0;
    }
    const std::int64_t available = std::min(Count, FSize - FPosition);
    std::memcpy(Buffer, static_cast<const char*>(FMemory) + FPosition, static_cast<std::size_t>(available));
    FPosition += available;
    return available;
}

std::int64_t TCustomMemoryStream::Seek(std::int64_t Offset, TSeekOrigin Origin) {
    std::int64_t base = 0;
    switch (Origin) {
    case soBeginning:
        base = 0;
        break;
    case soCurrent:
        base = FPosition;
        break;
    case soEnd:
        base = FSize;
        break;
    }
    // A position before the start is clamped to it; one past the end is kept (a write fills the gap).
    FPosition = std::max<std::int64_t>(0, base + Offset);
    return FPosition;
}

void TCustomMemoryStream::SaveToStream(TStream& Stream) {
    Stream.WriteBuffer(FMemory, FSize);
}

void TCustomMemoryStream::SaveToFile(const std::string& FileName) {
    TFileStream file(FileName, fmCreate);
    SaveToStream(file);
}

void TMemoryStream::SetCapacity(std::int64_t NewCapacity) {
    // One allocation of exactly the capacity asked for, then one copy of the bytes in use.
    std::vector<char> data(static_cast<std::size_t>(NewCapacity));
    const std::int64_t kept = std::min(FSize, NewCapacity);
    if (kept > 0) {
        std::memcpy(data.data(), FData.data(), static_cast<std::size_t>(kept));
    }
    FData.swap(data);
    SetPointer(FData.empty() ? nullptr : FData.data(), kept);
}

void TMemoryStream::SetSize(std::int64_t NewSize) {
    if (NewSize < 0) {
        throw EStreamError(SStreamSetSize);
    }
    const std::int64_t oldSize = FSize;
    if (NewSize > Capacity()) {
        // Geometric growth keeps repeated writes linear.
        SetCapacity(std::max(NewSize, Capacity() + Capacity() / 2 + 64));
    }
    if (NewSize > oldSize) {
        std::memset(static_cast<char*>(FMemory) + oldSize, 0, static_cast<std::size_t>(NewSize - oldSize));
    }
    FSize = NewSize;
    if (FPosition > NewSize) {
        FPosition = NewSize;
    }
}

std::int64_t TMemoryStream::Write(const void* Buffer, std::int64_t Count) {
    if (Count <= 0) {
        return 0;
    }
    const std::int64_t end = FPosition + Count;
    if (end > FSize) {
        const std::int64_t position = FPosition;
        SetSize(end);
        FPosition = position;
    }
    std::memcpy(static_cast<char*>(FMemory) + FPosition, Buffer, static_cast<std::size_t>(Count));
    FPosition = end;
    return Count;
}

void TMemoryStream::Clear() {
    FData.clear();
    FData.shrink_to_fit();
    SetPointer(nullptr, 0);
    FPosition = 0;
}

void TMemoryStream::LoadFromStream(TStream& Stream) {
    Stream.SetPosition(0);
    const std::int64_t size = Stream.Size();
    SetSize(size);
    if (size > 0) {
        Stream.ReadBuffer(FMemory, size);
    }
    FPosition = 0;
}

void TMemoryStream::LoadFromFile(const std::string& FileName) {
    TFileStream file(FileName, fmOpenRead | fmShareDenyWrite);
    LoadFromStream(file);
}

std::string TMemoryStream::DataString() const {
    return FSize > 0 ? std::string(static_cast<const char*>(FMemory), static_cast<std::size_t>(FSize))
                     : std::string();
}

TStringStream::TStringStream(const std::string& S) {
    WriteString(S);
    FPosition = 0;
}

std::string TStringStream::ReadString(std::int64_t Count) {
    std::string result(
        static_cast<std::size_t>(std::max<std::int64_t>(0, std::min(Count, FSize - FPosition))), '\0');
    result.resize(static_cast<std::size_t>(Read(result.data(), static_cast<std::int64_t>(result.size()))));
    return result;
}

} // namespace quorda
